#pragma once

#include "kit/SysGroupBox.h"

#include <QList>
#include <QTcpServer>

class PingServerThread;
class SysLineEdit;
class SysNumberEdit;
class SysStateButton;

// The ping test of the basic operations panel: tests a network path to a board. The tool
// listens on a TCP port; each client that connects gets a thread that sends it the message at
// the period and expects the same bytes back, with a process log line per exchange.
class PingServer : public SysGroupBox {
    Q_OBJECT

public:
    explicit PingServer(QWidget* parent);
    // Stops and deletes the threads of the clients still connected, without log lines: the
    // window may be going away with the panel.
    ~PingServer() override;

    QTcpServer tcpServer;
    // One thread per open connection, in the order the connections came.
    QList<PingServerThread*> threads;
    SysLineEdit* messageEdit = nullptr;
    SysNumberEdit* intervalEdit = nullptr;
    SysNumberEdit* portEdit = nullptr;
    SysStateButton* startButton = nullptr;

private:
    void onStartClicked();
    void startServer();
    void stopServer();
    void acceptConnection();
    // Ends a connection's thread and logs the disconnection; nothing for a thread already
    // ended.
    void dropConnection(PingServerThread* thread);
    void setControlsEnabled(bool enabled);
};
