#pragma once

#include <cstdarg>

#include "kit/SysButton.h"
#include "kit/SysSplitter.h"
#include "shell/MainWindow.h"
#include "shell/SysLogLevel.h"

#include <QVariant>

#include <functional>
#include <map>

class SysLabel;

// Base of the four tool pages. Worker threads reach the page's widgets only through
// sendMsg: the handler registered under the id runs on the interface thread. Pages log into
// the process log through addLog, logError and logInfo, from any thread.
class TabWinBase : public SysSplitter {
    Q_OBJECT
public:
    explicit TabWinBase(QWidget* parent);

    // Stores fn under id; a later call for the same id replaces it.
    void registerMsg(int id, std::function<void(QVariant)> fn);
    // Runs the handler of id on the interface thread with a copy of value; unknown ids are
    // dropped. From the interface thread the handler runs at once.
    void sendMsg(int id, QVariant value);

    void addLog(SYS_LOG_LEVEL level, QString strLog);
    void logError(const char* format, ...) __attribute__((format(printf, 2, 3)));
    void logInfo(const char* format, ...) __attribute__((format(printf, 2, 3)));
    // The host's word for a key, as it stands.
    static QString word(const char* key) { return MainWindow::text(QString::fromLatin1(key)); }
    // The host's word for a key cut into items at `separator`, empty items kept.
    static QStringList wordList(const char* key, QChar separator = '/') {
        return word(key).split(separator, Qt::KeepEmptyParts);
    }
    // A table's row number: grey on a light shade of grey, centred.
    static SysLabel* rowNumber(QWidget* parent, int number);
    // A kit button showing the word of `key`, its clicks going to `handler`.
    template <typename T>
    static SysButton* button(QWidget* parent, const char* key, T* receiver, void (T::*handler)()) {
        auto* b = new SysButton(parent, word(key));
        QObject::connect(b, &QPushButton::clicked, receiver, handler);
        return b;
    }
    // The host's word for key, filled with args like every logged line, as an error or
    // information line. Strings go in as 8-bit text; a QString goes in as its UTF-8 bytes.
    template <typename... Args> void errorLine(const char* key, const Args&... args) {
        addLog(SYS_LOG_ERROR, filled(key, carried(args)...));
    }
    template <typename... Args> void infoLine(const char* key, const Args&... args) {
        addLog(SYS_LOG_INFO, filled(key, carried(args)...));
    }

    // Routes an engine's log lines into the process log, on the engine's own thread.
    template <typename Engine> void hookEngineLog(Engine* engine) {
        qRegisterMetaType<SYS_LOG_LEVEL>("SYS_LOG_LEVEL");
        QObject::disconnect(engine, &Engine::sendLog, engine, nullptr);
        TabWinBase* page = this;
        QObject::connect(
            engine, &Engine::sendLog, engine,
            [page](SYS_LOG_LEVEL level, QString line) { page->addLog(level, line); },
            Qt::DirectConnection);
    }

signals:
    void msgSig(int id, QVariant value);

private:
    // A QString is carried as its bytes for as long as the line is being filled.
    static QByteArray carried(const QString& text) { return text.toUtf8(); }
    template <typename T> static const T& carried(const T& value) { return value; }
    static const char* passed(const QByteArray& text) { return text.constData(); }
    template <typename T> static T passed(const T& value) { return value; }
    template <typename... Args> static QString filled(const char* key, const Args&... args) {
        return MainWindow::formatText(key, passed(args)...);
    }

    // Formats and logs one line; logError and logInfo share it.
    void logV(SYS_LOG_LEVEL level, const char* format, va_list args);
    std::map<int, std::function<void(QVariant)>> handlers_;
};
