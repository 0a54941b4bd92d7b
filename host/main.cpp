// bramble-host: a stand-in for the host application. It loads the plug-in, serves it words
// from host/texts, shows its window with an About entry for the version history, and
// releases the plug-in at exit.
//
//   bramble-host [--lang en|zh] [--plugin PATH] [--screenshot FILE] [--quit-after MS]
//   bramble-host --help

#include "host/DemoDownload.h"
#include "host/HostTextFiles.h"
#include "host/PluginHost.h"
#include "shell/PluginUIBase.h"
#include "shell/SysLogLevel.h"

#include <QAction>
#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QMenuBar>
#include <QMessageBox>
#include <QScreen>
#include <QTabWidget>
#include <QTextBrowser>
#include <QTimer>

#include <cstdio>
#include <memory>
#include <utility>

namespace {

// Beside the build folder's program folders, or in lib/bramble of an installed prefix.
QString defaultPluginPath() {
    const QDir programs(QCoreApplication::applicationDirPath());
    const QString installed =
        programs.filePath(QStringLiteral("../lib/bramble/" BRAMBLE_PLUGIN_NAME));
    if (QFileInfo::exists(installed))
        return installed;
    return programs.filePath(QStringLiteral("../" BRAMBLE_PLUGIN_NAME));
}

void showAbout(PluginUIBase* window) {
    QMessageBox box(window);
    box.setWindowTitle(window->pluginTitle());
    box.setTextFormat(Qt::RichText);
    box.setText(window->versionLog());
    box.exec();
}

// The host knows the window only as a PluginUIBase; the log entry is reached through the
// window's meta-object, as the plug-in's own code is not linked into the host.
void logDemoLines(PluginUIBase* window) {
    const std::pair<SYS_LOG_LEVEL, const char*> lines[] = {
        {SYS_LOG_ERROR, "DL_TRUNK: no reply to block 3 of app.bin"},
        {SYS_LOG_WARN, "CHG_BAUD: board answered late, keeping 115200"},
        {SYS_LOG_INFO, "Download finished: 3 files, 1048576 bytes"},
    };
    for (const auto& line : lines)
        QMetaObject::invokeMethod(window, "addTestLog", Qt::DirectConnection,
                                  Q_ARG(SYS_LOG_LEVEL, line.first),
                                  Q_ARG(QString, QString::fromLatin1(line.second)));
}

// True when the command line only asks for the help or the version, which need no display.
bool onlyAsksForHelp(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        const QByteArray arg(argv[i]);
        if (arg == "-h" || arg == "--help" || arg == "-?" || arg == "--help-all" || arg == "-v" ||
            arg == "--version")
            return true;
    }
    return false;
}

} // namespace

int main(int argc, char** argv) {
    QElapsedTimer sinceMain;
    sinceMain.start();
    // The help is printed without a window system, so that it works where there is no display.
    std::unique_ptr<QCoreApplication> app(onlyAsksForHelp(argc, argv)
                                              ? new QCoreApplication(argc, argv)
                                              : new QApplication(argc, argv));
    QCoreApplication::setOrganizationName(QStringLiteral("Mosswood"));
    QCoreApplication::setApplicationName(QStringLiteral("Bramble"));

    QCommandLineParser parser;
    parser.addHelpOption();
    QCommandLineOption lang(QStringLiteral("lang"), QStringLiteral("Interface language: en or zh."),
                            QStringLiteral("lang"));
    QCommandLineOption plugin(QStringLiteral("plugin"), QStringLiteral("Path of libbramble.so."),
                              QStringLiteral("path"), defaultPluginPath());
    QCommandLineOption screenshot(QStringLiteral("screenshot"),
                                  QStringLiteral("Save a picture of the window and quit."),
                                  QStringLiteral("file"));
    QCommandLineOption quitAfter(QStringLiteral("quit-after"),
                                 QStringLiteral("Quit after this many milliseconds."),
                                 QStringLiteral("ms"));
    // Not in the help: writes one process log line of each level after start, so that a
    // screenshot shows how the levels look.
    QCommandLineOption demoLog(QStringLiteral("demo-log"),
                               QStringLiteral("Log one line of each level after start."));
    demoLog.setFlags(QCommandLineOption::HiddenFromHelp);
    QCommandLineOption downloadPort(QStringLiteral("download-port"),
                                    QStringLiteral("Download an all-in-one image through this "
                                                   "port, print the process log and quit."),
                                    QStringLiteral("port"));
    QCommandLineOption downloadImage(QStringLiteral("download-image"),
                                     QStringLiteral("The all-in-one image for --download-port."),
                                     QStringLiteral("file"));
    // Not in the help: prints how long the start took, once the window is shown, and quits.
    QCommandLineOption startupReport(QStringLiteral("startup-report"),
                                     QStringLiteral("Print the start-up times and quit."));
    startupReport.setFlags(QCommandLineOption::HiddenFromHelp);
    parser.addOptions(
        {lang, plugin, screenshot, quitAfter, demoLog, downloadPort, downloadImage, startupReport});
    parser.process(*app);

    QString language = parser.value(lang);
    if (language.isEmpty())
        language = QLocale::system().name().startsWith(QLatin1String("zh")) ? QStringLiteral("zh")
                                                                            : QStringLiteral("en");
    HostTextFiles texts;
    QString error;
    if (!texts.load(QStringLiteral(":/texts/%1.tsv").arg(language), &error)) {
        std::fprintf(stderr, "bramble-host: %s\n", qPrintable(error));
        return 1;
    }

    PluginHost host;
    if (!host.start(parser.value(plugin), &texts, &error)) {
        std::fprintf(stderr, "bramble-host: %s\n", qPrintable(error));
        return 1;
    }
    PluginUIBase* window = host.window();
    window->setWindowTitle(window->pluginTitle());
    QAction* about = window->menuBar()->addAction(QStringLiteral("About"));
    QObject::connect(about, &QAction::triggered, window, [window] { showAbout(window); });
    window->resize(1280, 900);
    const double beforeShowMs = double(sinceMain.nsecsElapsed()) / 1e6;
    window->show();
    const double showMs = double(sinceMain.nsecsElapsed()) / 1e6 - beforeShowMs;
    if (parser.isSet(startupReport)) {
        // Posted events, the first paint among them, come before a zero timer.
        QTimer::singleShot(0, window, [&] {
            std::printf("startup: load %.1f ms, Create %.1f ms, init %.1f ms, show %.1f ms, "
                        "main to shown and painted %.1f ms\n",
                        host.loadMs(), host.createMs(), host.initMs(), showMs,
                        double(sinceMain.nsecsElapsed()) / 1e6);
            std::fflush(stdout);
            QApplication::quit();
        });
    }

    // Tell a terminal user what came up, so a run without a display still shows something.
    if (auto* tabs = window->findChild<QTabWidget*>(); tabs && !parser.isSet(startupReport)) {
        QStringList labels;
        for (int i = 0; i < tabs->count(); ++i)
            labels << tabs->tabText(i);
        std::printf("%s: %s\n", qPrintable(window->pluginTitle()), qPrintable(labels.join(" | ")));
        std::fflush(stdout);
    }

    if (parser.isSet(demoLog))
        logDemoLines(window);

    DemoDownload* demo = nullptr;
    if (parser.isSet(downloadPort)) {
        demo = new DemoDownload(window, parser.value(downloadPort), parser.value(downloadImage),
                                texts.text(QStringLiteral("download/dlTab/download/success")),
                                texts.text(QStringLiteral("download/dlTab/download/failed")),
                                parser.value(screenshot));
        demo->start();
    } else if (parser.isSet(screenshot)) {
        const QString file = parser.value(screenshot);
        QTimer::singleShot(parser.value(quitAfter).toInt() > 0 ? parser.value(quitAfter).toInt()
                                                               : 500,
                           window, [window, file] {
                               window->grab().save(file);
                               std::printf("screenshot: %s\n", qPrintable(file));
                               QApplication::quit();
                           });
    } else if (parser.isSet(quitAfter)) {
        QTimer::singleShot(parser.value(quitAfter).toInt(), app.get(), &QApplication::quit);
    }

    const int rc = app->exec();
    delete demo;
    host.release();
    return rc;
}
