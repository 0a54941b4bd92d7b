#include "shell/VersionHistory.h"

#include "shell/HostTextService.h"

namespace {

struct Version {
    const char* name;
    int lines;
};

// Every release with its count of change lines, oldest first.
const Version kVersions[] = {
    {"v_1_0", 1},   {"v_1_3", 1},    {"v_1_4_6", 2},  {"v_1_4_7", 2}, {"v_1_4_8", 1},
    {"v_1_4_9", 2}, {"v_1_5_0", 1},  {"v_1_5_1", 2},  {"v_1_5_2", 2}, {"v_1_5_3", 2},
    {"v_1_5_4", 3}, {"v_1_5_5", 3},  {"v_1_5_6", 2},  {"v_1_5_7", 4}, {"v_1_5_8", 4},
    {"v_1_5_9", 2}, {"v_1_5_10", 2}, {"v_1_6_0", 2},  {"v_1_6_1", 2}, {"v_1_6_2", 1},
    {"v_1_6_3", 1}, {"v_1_6_4", 2},  {"v_1_6_5", 1},  {"v_1_6_6", 1}, {"v_1_6_7", 1},
    {"v_1_6_8", 1}, {"v_1_6_9", 1},  {"v_1_6_10", 1}, {"v_1_7_0", 1}, {"v_1_7_1", 3},
    {"v_1_7_2", 1}, {"v_1_7_3", 1},  {"v_1_7_4", 1},  {"v_1_7_5", 1}, {"v_1_7_6", 1},
    {"v_1_7_7", 3},
};

} // namespace

QString VersionHistory::html(HostTextService* texts) {
    QString out;
    for (const Version& v : kVersions) {
        const QString key = QStringLiteral("version/") + QLatin1String(v.name);
        out += QStringLiteral("<p class=\"versionLog\"><span class=\"versionTitle\">%1</span>"
                              "<ol class=\"versionLogContent\">")
                   .arg(texts->text(key));
        for (int i = 1; i <= v.lines; ++i)
            out += QStringLiteral("<li class=\"versionLogContentItem\">%1;</li>")
                       .arg(texts->text(key + QStringLiteral("/log_%1").arg(i)));
        out += QStringLiteral("</ol></p>");
    }
    return out;
}
