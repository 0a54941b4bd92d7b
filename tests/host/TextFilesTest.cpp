#include "host/HostTextFiles.h"
#include "support/QtPrinters.h"
#include "support/TestFiles.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QHash>
#include <QRegularExpression>
#include <QSet>
#include <QTemporaryDir>
#include <QTextStream>

#include <ostream>

// Qt texts in gtest's failure messages.
std::ostream& operator<<(std::ostream& os, const QString& text) {
    return os << text.toStdString();
}
std::ostream& operator<<(std::ostream& os, const QStringList& texts) {
    return os << '[' << texts.join(QStringLiteral(" | ")) << ']';
}

namespace {

QString sourcePath(const QString& relative) {
    QString root = qEnvironmentVariable("BRAMBLE_SOURCE_DIR");
    if (root.isEmpty())
        root = QStringLiteral(BRAMBLE_SOURCE_FALLBACK);
    return root + QLatin1Char('/') + relative;
}

// The rows of a tab-separated data file; empty lines and '#' lines are skipped.
QList<QStringList> readRows(const QString& path) {
    QList<QStringList> rows;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        ADD_FAILURE() << "cannot read " << path;
        return rows;
    }
    QTextStream in(&file);
    in.setCodec("UTF-8");
    while (!in.atEnd()) {
        const QString line = in.readLine();
        if (!line.isEmpty() && !line.startsWith(QLatin1Char('#')))
            rows.append(line.split(QLatin1Char('\t')));
    }
    return rows;
}

struct ListShape {
    QString separator;
    int count = 0;
};

// What the code asks of the words: every key, the printf conversions that each format's call
// passes, and the items that each list must split into.
struct Contract {
    QStringList keys;
    QHash<QString, QStringList> formats;
    QHash<QString, ListShape> lists;
};

Contract loadContract() {
    Contract contract;
    for (const QStringList& row : readRows(sourcePath(QStringLiteral("tests/data/text-keys.txt"))))
        contract.keys.append(row.first());
    for (const QStringList& row :
         readRows(sourcePath(QStringLiteral("tests/data/text-formats.tsv")))) {
        EXPECT_EQ(row.size(), 2) << "text-formats.tsv: " << row;
        contract.formats.insert(row.first(), row.value(1).split(' ', Qt::SkipEmptyParts));
    }
    for (const QStringList& row :
         readRows(sourcePath(QStringLiteral("tests/data/text-lists.tsv")))) {
        EXPECT_EQ(row.size(), 3) << "text-lists.tsv: " << row;
        contract.lists.insert(row.first(), {row.value(1), row.value(2).toInt()});
    }
    return contract;
}

// A word as printf reads it: the conversions it takes arguments for, each as written ("%s",
// "%.1f", "%02x"), and the percent signs that start no conversion at all. "%%" is neither.
struct FormatScan {
    QStringList conversions;
    QStringList strays;
};

FormatScan scanFormat(const QString& text) {
    // flags, width, precision, length modifier, conversion character
    static const QRegularExpression conversion(
        QStringLiteral("%(?:%|[-+ #0]*(?:[0-9]+|\\*)?(?:\\.(?:[0-9]+|\\*)?)?"
                       "(?:hh|h|ll|l|L|q|j|z|t)?[diouxXeEfFgGaAcspn])"));
    FormatScan scan;
    int done = 0;
    const auto collectStrays = [&](int end) {
        for (int at = text.indexOf(QLatin1Char('%'), done); at >= 0 && at < end;
             at = text.indexOf(QLatin1Char('%'), at + 1))
            scan.strays.append(text.mid(at, 3));
    };
    for (auto matches = conversion.globalMatch(text); matches.hasNext();) {
        const QRegularExpressionMatch match = matches.next();
        collectStrays(match.capturedStart());
        if (match.captured() != QLatin1String("%%"))
            scan.conversions.append(match.captured());
        done = match.capturedEnd();
    }
    collectStrays(text.size());
    return scan;
}

// Everything in a word that does not fit the call filling it; empty when the word is safe.
QStringList formatFaults(const QString& text, const QStringList& callConversions) {
    const FormatScan scan = scanFormat(text);
    QStringList faults;
    for (const QString& stray : scan.strays)
        faults.append(QStringLiteral("percent sign that starts no conversion: \"%1\"").arg(stray));
    if (scan.conversions != callConversions)
        faults.append(QStringLiteral("conversions [%1] where the call passes [%2]")
                          .arg(scan.conversions.join(' '), callConversions.join(' ')));
    return faults;
}

TEST(FormatChecker, FindsConversionsAndCatchesBrokenWords) {
    EXPECT_EQ(scanFormat(QStringLiteral("Row %d: %s at 0x%08x, %.1f%% done")).conversions,
              (QStringList{"%d", "%s", "%08x", "%.1f"}));
    EXPECT_EQ(scanFormat(QStringLiteral("%-12s|%+5d|%lld|%hhu|%*d|%.*f")).conversions,
              (QStringList{"%-12s", "%+5d", "%lld", "%hhu", "%*d", "%.*f"}));
    const FormatScan literal = scanFormat(QStringLiteral("100%% sure, 50%%%% twice"));
    EXPECT_TRUE(literal.conversions.isEmpty());
    EXPECT_TRUE(literal.strays.isEmpty());

    // A single percent sign before a blank and a letter is a conversion to printf ("% d").
    EXPECT_EQ(scanFormat(QStringLiteral("Duty 100% done")).conversions, QStringList{"% d"});
    // One before anything else starts nothing printf can read.
    EXPECT_EQ(scanFormat(QStringLiteral("Duty (%)")).strays, QStringList{"%)"});
    EXPECT_EQ(scanFormat(QStringLiteral("at 50%")).strays, QStringList{"%"});

    const QStringList call{"%d", "%.1f", "%s"};
    EXPECT_TRUE(formatFaults(QStringLiteral("Gain %d (%.1f): %s"), call).isEmpty());
    EXPECT_TRUE(formatFaults(QStringLiteral("增益 %d（%.1f）：%s，100%%"), call).isEmpty());
    EXPECT_FALSE(formatFaults(QStringLiteral("Gain %s (%.1f): %d"), call).isEmpty());
    EXPECT_FALSE(formatFaults(QStringLiteral("Gain %d: %s"), call).isEmpty());
    EXPECT_FALSE(formatFaults(QStringLiteral("Gain %d (%.1f): %s %s"), call).isEmpty());
    EXPECT_FALSE(formatFaults(QStringLiteral("Gain %d (%f): %s"), call).isEmpty());
    EXPECT_FALSE(formatFaults(QStringLiteral("Gain %d (%.1f): %s at 5%"), call).isEmpty());
    EXPECT_FALSE(formatFaults(QStringLiteral("Port %s closed."), {}).isEmpty());
    EXPECT_FALSE(formatFaults(QStringLiteral("Duty (%)"), {}).isEmpty());
    EXPECT_TRUE(formatFaults(QStringLiteral("Duty (%%)"), {}).isEmpty());
}

TEST(HostTextFiles, ReadsEscapesAndAnswersUnknownKeysWithTheKey) {
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString good = dir.filePath(QStringLiteral("good.tsv"));
    writeFile(good, "# a comment\n\nlines\tone\\ntwo\\tthree\\\\four\nspaced\t  two blanks\n"
                    "chinese\t串口已打开。\n");
    HostTextFiles words;
    QString error;
    ASSERT_TRUE(words.load(good, &error)) << error;
    EXPECT_EQ(words.text(QStringLiteral("lines")), QStringLiteral("one\ntwo\tthree\\four"));
    EXPECT_EQ(words.text(QStringLiteral("spaced")), QStringLiteral("  two blanks"));
    EXPECT_EQ(words.text(QStringLiteral("chinese")), QString::fromUtf8("串口已打开。"));
    EXPECT_EQ(words.keys().size(), 3);
    EXPECT_FALSE(words.contains(QStringLiteral("no/such/key")));
    EXPECT_EQ(words.text(QStringLiteral("no/such/key")), QStringLiteral("no/such/key"));

    const QString missing = dir.filePath(QStringLiteral("missing.tsv"));
    HostTextFiles none;
    EXPECT_FALSE(none.load(missing, &error));
    EXPECT_TRUE(error.contains(missing)) << error;
    EXPECT_TRUE(none.keys().isEmpty());

    const QString broken = dir.filePath(QStringLiteral("broken.tsv"));
    writeFile(broken, "fine\tyes\nno tab on this line\n");
    EXPECT_FALSE(none.load(broken, &error));
    EXPECT_TRUE(error.contains(QStringLiteral(":2:"))) << error;
    EXPECT_FALSE(none.contains(QStringLiteral("fine")));
}

TEST(TextContract, AgreesWithTheKeyList) {
    const Contract contract = loadContract();
    ASSERT_FALSE(contract.keys.isEmpty());
    const QSet<QString> keys(contract.keys.cbegin(), contract.keys.cend());
    EXPECT_EQ(keys.size(), contract.keys.size()) << "a key is listed twice";

    for (const QString& key : contract.keys) {
        EXPECT_TRUE(!key.endsWith(QLatin1String("Fmt")) || contract.formats.contains(key))
            << "no conversions for " << key;
    }
    for (auto it = contract.formats.cbegin(); it != contract.formats.cend(); ++it) {
        EXPECT_TRUE(keys.contains(it.key()) && it.key().endsWith(QLatin1String("Fmt")))
            << "conversions for a key that is no format of the system: " << it.key();
        for (const QString& conversion : it.value())
            EXPECT_EQ(scanFormat(conversion).conversions, QStringList{conversion}) << it.key();
    }
    for (auto it = contract.lists.cbegin(); it != contract.lists.cend(); ++it) {
        EXPECT_TRUE(keys.contains(it.key())) << "list shape for an unknown key: " << it.key();
        EXPECT_TRUE(it->separator == QLatin1String("/") || it->separator == QLatin1String(","))
            << it.key();
        EXPECT_GE(it->count, 1) << it.key();
    }
}

// Each language's word file against the contract.
class WordFile : public ::testing::TestWithParam<const char*> {
protected:
    void SetUp() override {
        path_ = sourcePath(QStringLiteral("host/texts/%1.tsv").arg(QLatin1String(GetParam())));
        QString error;
        ASSERT_TRUE(words_.load(path_, &error)) << error;
        contract_ = loadContract();
        ASSERT_FALSE(contract_.keys.isEmpty());
    }

    QString path_;
    HostTextFiles words_;
    Contract contract_;
};

TEST_P(WordFile, HoldsEveryKeyOnceAndNoOther) {
    QStringList missing;
    for (const QString& key : contract_.keys) {
        if (!words_.contains(key))
            missing.append(key);
        else
            EXPECT_FALSE(words_.text(key).trimmed().isEmpty()) << "empty word for " << key;
    }
    EXPECT_TRUE(missing.isEmpty()) << missing;

    const QSet<QString> known(contract_.keys.cbegin(), contract_.keys.cend());
    QStringList extra;
    for (const QString& key : words_.keys()) {
        if (!known.contains(key))
            extra.append(key);
    }
    EXPECT_TRUE(extra.isEmpty()) << extra;

    // The loader keeps the last of two lines with one key; the file must not have two.
    QSet<QString> seen;
    for (const QStringList& row : readRows(path_)) {
        EXPECT_FALSE(seen.contains(row.first())) << "key given twice: " << row.first();
        seen.insert(row.first());
    }
}

TEST_P(WordFile, FormatsTakeExactlyWhatTheirCallPasses) {
    // Every word goes through printf: words of keys ending in Fmt hold their call's
    // conversions, all other words hold none.
    for (const QString& key : contract_.keys) {
        const QStringList faults = formatFaults(words_.text(key), contract_.formats.value(key));
        EXPECT_TRUE(faults.isEmpty()) << key << ": " << faults;
    }
}

TEST_P(WordFile, ListsSplitIntoTheItemsTheirWidgetsNeed) {
    for (auto it = contract_.lists.cbegin(); it != contract_.lists.cend(); ++it) {
        const QStringList items = words_.text(it.key()).split(it->separator);
        EXPECT_EQ(items.size(), it->count) << it.key() << ": " << items;
        for (const QString& item : items)
            EXPECT_FALSE(item.trimmed().isEmpty()) << "empty item in " << it.key();
    }
}

TEST_P(WordFile, VersionHistoryIsSafeInsideHtml) {
    int versionTexts = 0;
    for (const QString& key : contract_.keys) {
        if (!key.startsWith(QLatin1String("version/")))
            continue;
        ++versionTexts;
        const QString text = words_.text(key);
        for (const QChar markup : {QLatin1Char('<'), QLatin1Char('>'), QLatin1Char('&')})
            EXPECT_FALSE(text.contains(markup)) << key << ": " << text;
    }
    EXPECT_GT(versionTexts, 0);
}

INSTANTIATE_TEST_SUITE_P(Languages, WordFile, ::testing::Values("en", "zh"));

} // namespace
