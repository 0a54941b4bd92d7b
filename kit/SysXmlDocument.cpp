#include "kit/SysXmlDocument.h"

#include <QFile>
#include <QRegularExpression>
#include <QTextCodec>
#include <QTextStream>
#include <QXmlStreamReader>

// Identity of a DOM node: every handle of one node shares its private pointer.
class SysXmlDocument::NodeKey : public QDomNode {
public:
    explicit NodeKey(const QDomNode& node) : QDomNode(node) {}
    quintptr value() const { return quintptr(impl); }
};

namespace {

QString charRef(uint code) {
    return QStringLiteral("&#x") + QString::number(code, 16) + QLatin1Char(';');
}

// Markup characters become entities, as Qt's writer does: '<' and '&' always, '>' behind "]]",
// '"' where asked; in attribute values tab, LF and CR (a reader would fold them into spaces),
// in text CR (a reader would turn it into LF). Characters that the codec cannot encode become
// character references. A surrogate pair becomes two references, not one: Qt 5's DOM reader
// reads a reference beyond U+FFFF wrongly but joins two surrogate references into the
// character, and that reader is the one that reads these files back.
QString escaped(const QString& text, QTextCodec* codec, bool quotes, bool attribute) {
    const bool encodable = codec->canEncode(text);
    QString out;
    out.reserve(text.size());
    for (int i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (c == QLatin1Char('<')) {
            out += QLatin1String("&lt;");
        } else if (c == QLatin1Char('&')) {
            out += QLatin1String("&amp;");
        } else if (quotes && c == QLatin1Char('"')) {
            out += QLatin1String("&quot;");
        } else if (c == QLatin1Char('>') && i >= 2 && text.at(i - 1) == QLatin1Char(']') &&
                   text.at(i - 2) == QLatin1Char(']')) {
            out += QLatin1String("&gt;");
        } else if (c == QLatin1Char('\r') ||
                   (attribute && (c == QLatin1Char('\n') || c == QLatin1Char('\t')))) {
            out += charRef(c.unicode());
        } else if (encodable) {
            out += c;
        } else {
            // A surrogate pair is one character and is tested as one.
            const bool pair =
                c.isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate();
            const QString unit = text.mid(i, pair ? 2 : 1);
            if (codec->canEncode(unit)) {
                out += unit;
            } else {
                for (const QChar half : unit)
                    out += charRef(half.unicode());
            }
            if (pair)
                ++i;
        }
    }
    return out;
}

// The element after element in document order, or a null element.
QDomElement nextInDocumentOrder(const QDomElement& element) {
    const QDomElement child = element.firstChildElement();
    if (!child.isNull())
        return child;
    for (QDomNode node = element; !node.isNull() && !node.isDocument(); node = node.parentNode()) {
        const QDomElement sibling = node.nextSiblingElement();
        if (!sibling.isNull())
            return sibling;
    }
    return QDomElement();
}

bool isDeclaration(const QDomNode& node) {
    return node.isProcessingInstruction() && node.nodeName() == QLatin1String("xml");
}

// Qt's own writer, for node kinds that carry no attributes and that these files do not use.
QString qtText(const QDomNode& node, QTextCodec* codec) {
    QString text;
    QTextStream stream(&text);
    stream.setCodec(codec);
    node.save(stream, 1);
    stream.flush();
    return text;
}

} // namespace

bool SysXmlDocument::load(const QString& file) {
    QFile in(file);
    if (!in.open(QIODevice::ReadOnly | QIODevice::Text))
        return false;
    const QByteArray bytes = in.readAll();
    in.close();

    QDomDocument parsed;
    if (!parsed.setContent(bytes, false) || parsed.isNull())
        return false;
    order_ = fileOrder(bytes, parsed);
    doc_ = parsed;
    path_ = file;
    return true;
}

bool SysXmlDocument::save() {
    return saveAs(path_);
}

bool SysXmlDocument::saveAs(const QString& file) {
    if (file.isEmpty())
        return false;
    QFile out(file);
    if (!out.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Text))
        return false;
    QTextCodec* codec = declaredCodec();
    const QByteArray bytes = codec->fromUnicode(serialize(codec));
    return out.write(bytes) == bytes.size() && out.flush();
}

QString SysXmlDocument::toText() const {
    return serialize(declaredCodec());
}

void SysXmlDocument::createDocument(const QString& encoding) {
    doc_.appendChild(doc_.createProcessingInstruction(
        QStringLiteral("xml"),
        QStringLiteral("version = \"1.0\" encoding = \"%1\"").arg(encoding)));
}

QDomElement SysXmlDocument::createRoot(const QString& name) {
    QDomElement element = doc_.createElement(name);
    doc_.appendChild(element);
    return element;
}

QDomElement SysXmlDocument::createChild(QDomElement parent, const QString& name) {
    QDomElement element = doc_.createElement(name);
    parent.appendChild(element);
    return element;
}

void SysXmlDocument::setAttribute(QDomElement element, const QString& name, const QString& value) {
    if (element.isNull())
        return;
    element.setAttribute(name, value);
    AttributeOrder& order = order_[NodeKey(element).value()];
    order.element = element;
    if (!order.names.contains(name))
        order.names.append(name);
}

// The attribute order of the elements of a freshly parsed file. The stream reader walks the same
// bytes and meets the elements in the order of a depth-first walk of the DOM. Where the two
// parsers part (the stream reader is the stricter one), the elements from there on keep no file
// order.
SysXmlDocument::OrderMap SysXmlDocument::fileOrder(const QByteArray& bytes,
                                                   const QDomDocument& doc) {
    OrderMap order;
    QXmlStreamReader reader(bytes);
    reader.setNamespaceProcessing(false);
    QDomElement next = doc.documentElement();
    while (!reader.atEnd()) {
        if (reader.readNext() != QXmlStreamReader::StartElement)
            continue;
        if (next.isNull() || next.nodeName() != reader.qualifiedName())
            break;
        QStringList names;
        const QXmlStreamAttributes attributes = reader.attributes();
        for (const QXmlStreamAttribute& attribute : attributes)
            names.append(attribute.qualifiedName().toString());
        if (!names.isEmpty())
            order.insert(NodeKey(next).value(), AttributeOrder{next, names});
        next = nextInDocumentOrder(next);
    }
    return order;
}

// The codec named by the declaration's encoding; UTF-8 without a declaration or for an unknown
// name.
QTextCodec* SysXmlDocument::declaredCodec() const {
    const QDomNode first = doc_.firstChild();
    if (isDeclaration(first)) {
        static const QRegularExpression encoding(
            QString::fromLatin1(R"re(encoding\s*=\s*(?:"([^"]*)"|'([^']*)'))re"));
        const QRegularExpressionMatch match = encoding.match(first.nodeValue());
        const QString name = match.captured(1).isEmpty() ? match.captured(2) : match.captured(1);
        if (QTextCodec* codec =
                name.isEmpty() ? nullptr : QTextCodec::codecForName(name.toLatin1()))
            return codec;
    }
    return QTextCodec::codecForName("UTF-8");
}

QString SysXmlDocument::serialize(QTextCodec* codec) const {
    QString out;
    bool doctypeWritten = false;
    for (QDomNode node = doc_.firstChild(); !node.isNull(); node = node.nextSibling()) {
        // A document type stands behind the declaration, before everything else.
        if (!doctypeWritten && !isDeclaration(node)) {
            if (!doc_.doctype().name().isEmpty())
                out += qtText(doc_.doctype(), codec);
            doctypeWritten = true;
        }
        writeNode(out, node, 0, codec);
    }
    return out;
}

void SysXmlDocument::writeNode(QString& out, const QDomNode& node, int depth,
                               QTextCodec* codec) const {
    switch (node.nodeType()) {
    case QDomNode::ElementNode:
        writeElement(out, node.toElement(), depth, codec);
        break;
    case QDomNode::TextNode:
        out += escaped(node.nodeValue(), codec, !node.parentNode().isElement(), false);
        break;
    case QDomNode::CDATASectionNode:
        out += QLatin1String("<![CDATA[") + node.nodeValue() + QLatin1String("]]>");
        break;
    case QDomNode::CommentNode:
        // No indent or line break next to text, which would change the text.
        if (!node.previousSibling().isText())
            out += QString(depth, QLatin1Char(' '));
        out += QLatin1String("<!--") + node.nodeValue();
        if (node.nodeValue().endsWith(QLatin1Char('-')))
            out += QLatin1Char(' ');
        out += QLatin1String("-->");
        if (!node.nextSibling().isText())
            out += QLatin1Char('\n');
        break;
    case QDomNode::ProcessingInstructionNode:
        out += QLatin1String("<?") + node.nodeName() + QLatin1Char(' ') + node.nodeValue() +
               QLatin1String("?>\n");
        break;
    case QDomNode::EntityReferenceNode:
        out += QLatin1Char('&') + node.nodeName() + QLatin1Char(';');
        break;
    default:
        out += qtText(node, codec);
        break;
    }
}

// One space of indent per level; the line layout is that of QDomNode::save with an indent of 1.
void SysXmlDocument::writeElement(QString& out, const QDomElement& element, int depth,
                                  QTextCodec* codec) const {
    const QString indent(depth, QLatin1Char(' '));
    if (!element.previousSibling().isText())
        out += indent;
    out += QLatin1Char('<') + element.nodeName();
    const QStringList names = attributeNames(element);
    for (const QString& name : names) {
        out += QLatin1Char(' ') + name + QLatin1String("=\"") +
               escaped(element.attribute(name), codec, true, true) + QLatin1Char('"');
    }
    if (element.hasChildNodes()) {
        out += QLatin1Char('>');
        if (!element.firstChild().isText())
            out += QLatin1Char('\n');
        for (QDomNode child = element.firstChild(); !child.isNull(); child = child.nextSibling())
            writeNode(out, child, depth + 1, codec);
        if (!element.lastChild().isText())
            out += indent;
        out += QLatin1String("</") + element.nodeName() + QLatin1Char('>');
    } else {
        out += QLatin1String("/>");
    }
    if (!element.nextSibling().isText())
        out += QLatin1Char('\n');
}

// The names of element's attributes in the order they are written: the noted order first, the
// rest by name.
QStringList SysXmlDocument::attributeNames(const QDomElement& element) const {
    QStringList names;
    const auto noted = order_.constFind(NodeKey(element).value());
    if (noted != order_.constEnd()) {
        for (const QString& name : noted->names) {
            if (element.hasAttribute(name))
                names.append(name);
        }
    }
    QStringList rest;
    const QDomNamedNodeMap attributes = element.attributes();
    for (int i = 0; i < attributes.count(); ++i) {
        const QString name = attributes.item(i).nodeName();
        if (!names.contains(name) && !rest.contains(name))
            rest.append(name);
    }
    rest.sort();
    return names + rest;
}
