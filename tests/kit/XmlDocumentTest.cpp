#include "kit/SysXmlDocument.h"

#include "support/TestFiles.h"
#include <QFile>
#include <QTemporaryDir>
#include <QTextCodec>
#include <QTextStream>

#include <gtest/gtest.h>

TEST(XmlDocument, AttributesKeepTheOrderInWhichTheyWereSet) {
    QTemporaryDir dir;
    const QString path = dir.filePath("serial.config");
    SysXmlDocument xml;
    xml.createDocument("GBK");
    const QDomElement root = xml.createRoot("Root");
    const QDomElement setting = xml.createChild(root, "setting");
    // Eight names: a writer that follows Qt's hash order would hardly ever hit this one.
    const QStringList names = {"cycleValue", "isHexSend", "isHexRecv", "isBackspace",
                               "isReturn",   "isDTR",     "isRTS",     "isTimestamp"};
    for (int i = 0; i < names.size(); ++i)
        xml.setAttribute(setting, names[i], QString::number(i));
    xml.setAttribute(setting, "isHexSend", "9"); // set again: keeps its place
    // Set straight on the element: behind the others, by name.
    QDomElement direct = xml.createChild(root, "cmdList");
    direct.setAttribute("zz", "1");
    direct.setAttribute("aa", "2");
    xml.setAttribute(direct, "mid", "3");
    QDomElement loose = xml.createElement("item");
    xml.setAttribute(loose, "cmd", QString::fromUtf8("中文"));
    xml.setAttribute(loose, "isHex", "0");
    xml.append(direct, loose);

    const QByteArray want = "<?xml version = \"1.0\" encoding = \"GBK\"?>\n"
                            "<Root>\n"
                            " <setting cycleValue=\"0\" isHexSend=\"9\" isHexRecv=\"2\" "
                            "isBackspace=\"3\" isReturn=\"4\" isDTR=\"5\" isRTS=\"6\" "
                            "isTimestamp=\"7\"/>\n"
                            " <cmdList mid=\"3\" aa=\"2\" zz=\"1\">\n"
                            "  <item cmd=\"\xD6\xD0\xCE\xC4\" isHex=\"0\"/>\n"
                            " </cmdList>\n"
                            "</Root>\n";
    ASSERT_TRUE(xml.saveAs(path));
    EXPECT_EQ(readFile(path), want);
    EXPECT_EQ(xml.toText(), QTextCodec::codecForName("GBK")->toUnicode(want));
    EXPECT_EQ(xml.root().tagName(), "Root");
    EXPECT_TRUE(xml.path().isEmpty()); // saving does not set the path
}

TEST(XmlDocument, LoadKeepsTheFileOrderAndThePath) {
    QTemporaryDir dir;
    const QString first = dir.filePath("first.xml");
    const QByteArray text = "<?xml version = \"1.0\" encoding = \"GBK\"?>\n"
                            "<Root>\n"
                            " <setting zeta=\"1\" alpha=\"\xD6\xB5\" mid=\"3\"/>\n"
                            " <x b=\"1\" a=\"2\"/>\n"
                            "</Root>\n";
    writeFile(first, text);
    SysXmlDocument xml;
    EXPECT_FALSE(xml.save()); // no path yet
    ASSERT_TRUE(xml.load(first));
    EXPECT_EQ(xml.path(), first);
    const QDomElement setting = xml.root().firstChildElement("setting");
    EXPECT_EQ(setting.attribute("alpha"), QString::fromUtf8("值"));

    // Saved back in the file's order (the parser hands the declaration over in its own
    // spelling); a new attribute goes behind the file's ones.
    ASSERT_TRUE(xml.save());
    QByteArray saved = text;
    saved.replace("version = \"1.0\" encoding = \"GBK\"", "version='1.0' encoding='GBK'");
    EXPECT_EQ(readFile(first), saved);
    xml.setAttribute(setting, "added", "4");
    const QString second = dir.filePath("second.xml");
    ASSERT_TRUE(xml.saveAs(second));
    saved.replace("mid=\"3\"", "mid=\"3\" added=\"4\"");
    EXPECT_EQ(readFile(second), saved);

    // Failed loads change neither the path nor the document.
    const QString notXml = dir.filePath("not.xml");
    writeFile(notXml, "this is not xml");
    const QString empty = dir.filePath("empty.xml");
    writeFile(empty, "");
    for (const QString& bad : {dir.filePath("missing.xml"), notXml, empty}) {
        EXPECT_FALSE(xml.load(bad)) << bad.toStdString();
        EXPECT_EQ(xml.path(), first);
        EXPECT_EQ(xml.root().firstChildElement().tagName(), "setting");
    }
    EXPECT_FALSE(xml.saveAs(dir.filePath("no/such/dir/x.xml")));
}

TEST(XmlDocument, LayoutAndEscapingFollowQtsWriter) {
    // With at most one attribute per element Qt's own writer has no order to lose, so its
    // output is the reference for everything else: indent, line breaks, text, comments, CDATA.
    SysXmlDocument xml;
    xml.createDocument("UTF-8");
    QDomDocument& doc = xml.document();
    doc.appendChild(doc.createProcessingInstruction("style", "href=\"a.css\""));
    QDomElement root = xml.createRoot("Root");
    root.appendChild(doc.createComment(" note "));
    QDomElement a = xml.createChild(root, "a");
    a.setAttribute("v", "<&\"> ]]> \t\r\n é 中");
    QDomElement b = xml.createChild(a, "b");
    b.appendChild(doc.createTextNode("text <&> ]]> \"q\" \r\n\t"));
    QDomElement mixed = xml.createChild(root, "mixed");
    mixed.appendChild(doc.createTextNode("lead "));
    xml.createChild(mixed, "inner");
    mixed.appendChild(doc.createComment("c"));
    mixed.appendChild(doc.createTextNode(" tail"));
    xml.createChild(root, "c").appendChild(doc.createCDATASection("raw <x>"));
    xml.createChild(xml.createChild(root, "deep"), "deeper").setAttribute("k", "");

    QString reference;
    QTextStream stream(&reference);
    doc.save(stream, 1, QDomNode::EncodingFromDocument);
    stream.flush();
    EXPECT_EQ(xml.toText(), reference);

    QTemporaryDir dir;
    ASSERT_TRUE(xml.saveAs(dir.filePath("utf8.xml")));
    EXPECT_EQ(readFile(dir.filePath("utf8.xml")), reference.toUtf8()); // no byte order mark

    // GBK: what it cannot encode becomes a character reference; a character beyond U+FFFF
    // becomes the references of its two halves, which Qt's reader joins again.
    SysXmlDocument gbk;
    gbk.createDocument("GBK");
    const QString value = QString::fromUtf8("é\t😀");
    gbk.setAttribute(gbk.createRoot("Root"), "v", value);
    const QString path = dir.filePath("gbk.xml");
    ASSERT_TRUE(gbk.saveAs(path));
    EXPECT_EQ(readFile(path), QByteArray("<?xml version = \"1.0\" encoding = \"GBK\"?>\n"
                                         "<Root v=\"\xA8\xA6&#x9;&#xd83d;&#xde00;\"/>\n"));
    SysXmlDocument back;
    ASSERT_TRUE(back.load(path));
    EXPECT_EQ(back.root().attribute("v"), value);

    // No declaration, or a name no codec knows: UTF-8.
    for (bool declared : {false, true}) {
        SysXmlDocument plain;
        if (declared)
            plain.createDocument("no-such-codec");
        plain.setAttribute(plain.createRoot("R"), "v", QString::fromUtf8("中"));
        EXPECT_TRUE(plain.toText().endsWith(QString::fromUtf8("<R v=\"中\"/>\n")));
        ASSERT_TRUE(plain.saveAs(path));
        EXPECT_TRUE(readFile(path).endsWith("<R v=\"\xE4\xB8\xAD\"/>\n"));
    }
}
