#include "pages/PingServerThread.h"

#include <QDeadlineTimer>
#include <QHostAddress>
#include <QMutexLocker>
#include <QTcpSocket>

#include <utility>

PingServerThread::PingServerThread(QTcpSocket* socket) : socket_(socket), peer_(peerText(socket)) {
    // Lines cross to the interface thread queued, which needs the level's type known.
    qRegisterMetaType<SYS_LOG_LEVEL>("SYS_LOG_LEVEL");
    // The server parents the sockets it accepts; a socket moves between threads only alone.
    socket_->setParent(nullptr);
    socket_->setReadBufferSize(kReadRoomBytes);
    socket_->moveToThread(this);
}

PingServerThread::~PingServerThread() {
    stop();
    delete socket_;
}

void PingServerThread::setInterval(int ms) {
    QMutexLocker lock(&mutex_);
    intervalMs = ms;
}

void PingServerThread::setMessage(QString text) {
    QMutexLocker lock(&mutex_);
    message = std::move(text);
}

QTcpSocket* PingServerThread::socket() const {
    QMutexLocker lock(&mutex_);
    return socket_;
}

void PingServerThread::requestStop() {
    QMutexLocker lock(&mutex_);
    running = false;
    stopped_ = true;
    wake_.wakeAll();
}

void PingServerThread::stop() {
    requestStop();
    wait();
}

QString PingServerThread::peerText(const QTcpSocket* socket) {
    const QString address =
        socket->peerAddress().toString().toLower().remove(QStringLiteral("::ffff:"));
    return QStringLiteral("%1:%2").arg(address).arg(socket->peerPort());
}

QString PingServerThread::loggedText(const QByteArray& bytes) {
    if (bytes.size() <= kLoggedBytes)
        return QString::fromLocal8Bit(bytes);
    return QString::fromLocal8Bit(bytes.left(kLoggedBytes)) + QStringLiteral("...");
}

void PingServerThread::run() {
    QMutexLocker lock(&mutex_);
    running = !stopped_;
    while (running) {
        const QString text = message;
        const int pauseMs = intervalMs;
        lock.unlock();
        if (exchange(text))
            log(SYS_LOG_INFO, QStringLiteral("客户端测试成功!"));
        else
            log(SYS_LOG_ERROR, QStringLiteral("客户端测试失败!"));
        lock.relock();
        const QDeadlineTimer pause(pauseMs);
        while (running && !pause.hasExpired())
            wake_.wait(&mutex_, pause);
    }
    // The socket lives on this thread, so it is closed here; closing a connection that still
    // stands tells the panel through its disconnected signal.
    QTcpSocket* socket = std::exchange(socket_, nullptr);
    lock.unlock();
    socket->close();
    delete socket;
}

// One message out and its answer back. Bytes that arrived since the last exchange (a late
// answer to it) are taken in first, so they stay ahead of this answer and the two compare
// together, as they would had a reader collected them meanwhile. Each step keeps room for
// kReadRoomBytes (or the message, if longer) so a client that floods costs bounded memory,
// and the 100 ms wait never finds the buffer full, which would make it spin.
bool PingServerThread::exchange(const QString& text) {
    const QByteArray bytes = text.toLocal8Bit();
    const qint64 room = qMax<qint64>(kReadRoomBytes, bytes.size());
    socket_->setReadBufferSize(room);
    while (socket_->waitForReadyRead(0)) {
        // Each round takes in what has arrived, until nothing more has or the room is full.
    }
    if (socket_->write(bytes) != bytes.size()) {
        log(SYS_LOG_ERROR, QStringLiteral("发送数据失败: ") + text);
        return false;
    }
    socket_->flush();
    socket_->setReadBufferSize(socket_->bytesAvailable() + room);
    if (!socket_->waitForReadyRead(kAnswerWaitMs)) {
        log(SYS_LOG_ERROR, QStringLiteral("读数据超时: ") + text);
        return false;
    }
    const QByteArray answer = socket_->readAll();
    if (QString::fromLocal8Bit(answer) != text) {
        log(SYS_LOG_ERROR, QStringLiteral("接收数据与发送不匹配: ") + loggedText(answer));
        return false;
    }
    return true;
}

void PingServerThread::log(SYS_LOG_LEVEL level, const QString& line) {
    emit addTestLog(level, QStringLiteral("%1 -- %2").arg(peer_, line));
}
