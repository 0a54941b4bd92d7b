#include "pages/PingServer.h"

#include "kit/SysHLayout.h"
#include "kit/SysLineEdit.h"
#include "kit/SysNumberEdit.h"
#include "kit/SysStateButton.h"
#include "kit/SysVLayout.h"
#include "pages/PingServerThread.h"
#include "shell/MainWindow.h"

#include <QCoreApplication>
#include <QPointer>
#include <QTcpSocket>

namespace {

const QString kOff = QStringLiteral("OFF");
const QString kOn = QStringLiteral("ON");

} // namespace

PingServer::PingServer(QWidget* parent) : SysGroupBox(parent, QStringLiteral("PING包")) {
    auto* column = new SysVLayout(this);

    auto* messageRow = new SysHLayout(nullptr);
    const QList<QWidget*> message = sysMakeLineRow(QStringLiteral("消息"), -1, -1, this);
    messageEdit = qobject_cast<SysLineEdit*>(message.at(1));
    messageEdit->setFixedWidthEm(10);
    messageRow->addWidget(message.at(0));
    column->addLayout(messageRow);

    auto* controlRow = new SysHLayout(nullptr);
    controlRow->addStretch();
    const QList<QWidget*> interval = sysMakeNumberRow(QStringLiteral("定时(MS)"), 100, 65535, this);
    intervalEdit = qobject_cast<SysNumberEdit*>(interval.at(1));
    intervalEdit->setMinWidth(3);
    intervalEdit->setMaxWidth(3);
    intervalEdit->setValue(1000);
    controlRow->addWidget(interval.at(0));
    const QList<QWidget*> port = sysMakeNumberRow(QStringLiteral("监听端口"), 100, 65535, this);
    portEdit = qobject_cast<SysNumberEdit*>(port.at(1));
    portEdit->setMinWidth(3);
    portEdit->setMaxWidth(3);
    portEdit->setValue(8080);
    controlRow->addWidget(port.at(0));
    startButton = new SysStateButton(this);
    startButton->addState(kOff, {QStringLiteral("开始"), QStringLiteral("#409eff"), true}, true);
    startButton->addState(kOn, {QStringLiteral("停止"), QStringLiteral("#FF0000"), true});
    controlRow->addWidget(startButton);
    column->addLayout(controlRow);

    connect(startButton, &QPushButton::clicked, this, &PingServer::onStartClicked);
    connect(&tcpServer, &QTcpServer::newConnection, this, &PingServer::acceptConnection);
}

PingServer::~PingServer() {
    for (PingServerThread* thread : qAsConst(threads)) {
        thread->disconnect(this);
        thread->requestStop();
    }
    qDeleteAll(threads);
    threads.clear();
}

void PingServer::onStartClicked() {
    if (startButton->isState(kOff))
        startServer();
    else
        stopServer();
}

void PingServer::startServer() {
    if (messageEdit->text().trimmed().isEmpty()) {
        MainWindow::instance()->logError("请输入发送内容!");
        return;
    }
    const int port = portEdit->value();
    if (!tcpServer.listen(QHostAddress::Any, quint16(port))) {
        MainWindow::instance()->logError("监听失败, 端口: %d", port);
        return;
    }
    setControlsEnabled(false);
    startButton->setState(kOn);
}

void PingServer::stopServer() {
    // All threads are asked first, so their exchanges under way end together rather than one
    // after another.
    const QList<PingServerThread*> open = threads;
    for (PingServerThread* thread : open)
        thread->requestStop();
    for (PingServerThread* thread : open)
        dropConnection(thread);
    tcpServer.close();
    setControlsEnabled(true);
    startButton->setState(kOff);
}

void PingServer::acceptConnection() {
    QTcpSocket* socket = tcpServer.nextPendingConnection();
    if (!socket) {
        MainWindow::instance()->logInfo("连接建立失败!");
        return;
    }
    MainWindow::instance()->logInfo("连接已建立: %s",
                                    PingServerThread::peerText(socket).toUtf8().constData());
    auto* thread = new PingServerThread(socket);
    thread->setInterval(intervalEdit->value());
    thread->setMessage(messageEdit->text().trimmed());
    threads.append(thread);
    // The socket signals from the thread's side; the clean-up runs here, and not at all once
    // the panel or the thread is gone.
    const QPointer<PingServer> self(this);
    connect(
        socket, &QTcpSocket::disconnected, thread,
        [self, thread] {
            if (self)
                self->dropConnection(thread);
        },
        Qt::QueuedConnection);
    connect(
        thread, &PingServerThread::addTestLog, this,
        [](SYS_LOG_LEVEL level, QString line) { MainWindow::instance()->addTestLog(level, line); },
        Qt::QueuedConnection);
    thread->start();
}

void PingServer::dropConnection(PingServerThread* thread) {
    if (!threads.contains(thread))
        return;
    const QString peer = thread->peer();
    thread->stop();
    threads.removeOne(thread);
    thread->deleteLater();
    // The thread's last lines are still queued for this panel; they go before its end line.
    QCoreApplication::sendPostedEvents(this, QEvent::MetaCall);
    MainWindow::instance()->logInfo("连接断开: %s", peer.toUtf8().constData());
}

void PingServer::setControlsEnabled(bool enabled) {
    messageEdit->setEnabled(enabled);
    intervalEdit->setEnabled(enabled);
    portEdit->setEnabled(enabled);
}
