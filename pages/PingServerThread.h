#pragma once

#include "shell/SysLogLevel.h"

#include <QByteArray>
#include <QMutex>
#include <QString>
#include <QThread>
#include <QWaitCondition>

class QTcpSocket;

// One client of the ping test panel: on a thread of its own, sends the panel's message to the
// client at a fixed period and expects the same bytes back within 100 ms, one log line per
// exchange. The socket is moved to this thread when the thread is made and is used, closed and
// deleted here only; other threads end the exchanges with stop().
class PingServerThread : public QThread {
    Q_OBJECT

public:
    // Takes the socket of a connection just accepted: out of its server and onto this thread.
    explicit PingServerThread(QTcpSocket* socket);
    // Stops the thread; a socket that never reached run() is deleted here.
    ~PingServerThread() override;

    void setInterval(int ms);
    void setMessage(QString message);
    // The connection's socket while the thread has not ended; null after. It belongs to this
    // thread: other threads may only hand it to connect().
    QTcpSocket* socket() const;
    // "<address>:<port>" of the client, taken when the thread was made.
    QString peer() const { return peer_; }

    // Asks the thread to end without waiting for it: the pause between exchanges ends at once
    // and no exchange starts after the one under way.
    void requestStop();
    // requestStop(), then waits for the thread to close its socket and end. Callable more than
    // once, and before start().
    void stop();

    // "<address>:<port>" of a socket's far end, with IPv4 shown plainly rather than mapped
    // into IPv6.
    static QString peerText(const QTcpSocket* socket);
    // A received text as it goes into a log line: long ones cut after kLoggedBytes bytes.
    static QString loggedText(const QByteArray& bytes);

    // How long the client has to answer a message.
    static constexpr int kAnswerWaitMs = 100;
    // Received bytes kept per exchange for what came before the message and for the answer
    // each, at least; a client that sends more waits in the network until the next exchange.
    static constexpr int kReadRoomBytes = 64 * 1024;
    static constexpr int kLoggedBytes = 1024;

signals:
    void addTestLog(SYS_LOG_LEVEL level, QString strLog);

protected:
    void run() override;

private:
    bool exchange(const QString& message);
    void log(SYS_LOG_LEVEL level, const QString& line);

    // running, stopped_, message, intervalMs and socket_ are shared with the interface
    // thread under this lock; the pause between exchanges waits on wake_.
    mutable QMutex mutex_;
    QWaitCondition wake_;
    bool running = false;
    // stop() came, so a run() that starts late does not start exchanging.
    bool stopped_ = false;
    QString message;
    int intervalMs = 1000;
    QTcpSocket* socket_;
    const QString peer_;
};
