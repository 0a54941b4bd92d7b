#pragma once

#include <QDomDocument>
#include <QDomElement>
#include <QHash>
#include <QString>
#include <QStringList>

class QTextCodec;

// The program's XML files in one shape: a declaration that names the encoding, one root
// element, children with attributes. The wrapper knows nothing of the formats themselves; it
// remembers the path a document was loaded from and writes documents in the codec that the
// declaration names.
//
// Attribute order: Qt's own writer lists an element's attributes in hash order, which changes
// from run to run. Here each element keeps a list of attribute names: those read by load(), in
// the file's order, then those set through setAttribute() below, in the order of their first
// setting. The writer lists these first and any others (set straight on a QDomElement) behind
// them in name order. Owners that want a fixed order in their files set attributes through
// setAttribute().
class SysXmlDocument {
public:
    SysXmlDocument() = default;

    // Reads and parses file (no namespace processing). On failure nothing changes.
    bool load(const QString& file);
    // saveAs(path()); false while nothing has been loaded.
    bool save();
    // Writes the whole document with one space of indent per level, in the declared codec
    // (UTF-8 when the document declares none). The file's directory must exist.
    bool saveAs(const QString& file);

    QDomElement root() const { return doc_.documentElement(); }
    // The text that saveAs writes, before it is encoded.
    QString toText() const;

    // Appends the declaration "version = "1.0" encoding = "<encoding>"", spaces included.
    void createDocument(const QString& encoding);
    // A new element appended to the document.
    QDomElement createRoot(const QString& name);
    // A new element appended to parent.
    QDomElement createChild(QDomElement parent, const QString& name);
    void append(QDomElement parent, QDomElement child) { parent.appendChild(child); }
    // A new element, not yet placed.
    QDomElement createElement(const QString& name) { return doc_.createElement(name); }

    // Sets an attribute of element and keeps its place among the element's attributes: a
    // new name goes behind those set before it, a name set again keeps its place.
    void setAttribute(QDomElement element, const QString& name, const QString& value);

    QDomDocument& document() { return doc_; }
    const QDomDocument& document() const { return doc_; }
    // Path of the last successful load; empty until then.
    const QString& path() const { return path_; }

private:
    class NodeKey;
    struct AttributeOrder {
        QDomElement element; // keeps the node, and so its key, alive
        QStringList names;
    };
    using OrderMap = QHash<quintptr, AttributeOrder>;

    static OrderMap fileOrder(const QByteArray& bytes, const QDomDocument& doc);
    QTextCodec* declaredCodec() const;
    QString serialize(QTextCodec* codec) const;
    void writeNode(QString& out, const QDomNode& node, int depth, QTextCodec* codec) const;
    void writeElement(QString& out, const QDomElement& element, int depth, QTextCodec* codec) const;
    QStringList attributeNames(const QDomElement& element) const;

    QDomDocument doc_;
    QString path_;
    OrderMap order_;
};
