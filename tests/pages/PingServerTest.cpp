#include "pages/PingServer.h"
#include "kit/SysLineEdit.h"
#include "kit/SysNumberEdit.h"
#include "kit/SysStateButton.h"
#include "kit/SysTable.h"
#include "pages/PingServerThread.h"
#include "support/MainWindowTest.h"
#include "support/QtPrinters.h"

#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QPointer>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>
#include <QTimer>

#include <functional>

namespace {

// A board's client on 127.0.0.1, run by the test's event loop: keeps what it receives and
// when each piece came, and answers each piece through `answer`.
class Client {
public:
    explicit Client(std::function<void(Client&, const QByteArray&)> answer = {})
        : answer_(std::move(answer)) {
        clock.start();
        QObject::connect(&socket, &QTcpSocket::readyRead, [this] {
            const QByteArray piece = socket.readAll();
            received += piece;
            arrivals << clock.elapsed();
            if (answer_)
                answer_(*this, piece);
        });
    }
    bool open(quint16 port) {
        socket.connectToHost(QHostAddress::LocalHost, port);
        return socket.waitForConnected(3000);
    }
    QString peer() const { return QStringLiteral("127.0.0.1:%1").arg(socket.localPort()); }
    // Shortest time between two pieces, or -1 with fewer than two.
    qint64 shortestGap() const {
        qint64 gap = -1;
        for (int i = 1; i < arrivals.size(); ++i)
            if (gap < 0 || arrivals[i] - arrivals[i - 1] < gap)
                gap = arrivals[i] - arrivals[i - 1];
        return gap;
    }

    QTcpSocket socket;
    QByteArray received;
    QList<qint64> arrivals;
    QElapsedTimer clock;

private:
    std::function<void(Client&, const QByteArray&)> answer_;
};

void echo(Client& c, const QByteArray& piece) {
    c.socket.write(piece);
}

// The real main window, and a ping panel of its own on it (no page holds one yet), set to a
// port that was free a moment ago.
class PingPanel : public MainWindowTest {
protected:
    void SetUp() override {
        MainWindowTest::SetUp();
        panel = new PingServer(window);
        QTcpServer probe;
        ASSERT_TRUE(probe.listen(QHostAddress::LocalHost, 0));
        port = probe.serverPort();
        probe.close();
        panel->portEdit->setValue(port);
        panel->intervalEdit->setValue(100);
    }
    void click() { QTest::mouseClick(panel->startButton, Qt::LeftButton); }
    // Types `message`, starts, and checks that the panel is on.
    void start(const QString& message) {
        panel->messageEdit->clear();
        QTest::keyClicks(panel->messageEdit, message);
        click();
        ASSERT_TRUE(panel->startButton->isState("ON"));
        ASSERT_TRUE(panel->tcpServer.isListening());
    }
    // Connects a client and waits until the panel has given it a thread.
    void connectClient(Client& client) {
        const int before = panel->threads.size();
        ASSERT_TRUE(client.open(quint16(port)));
        ASSERT_TRUE(QTest::qWaitFor([&] { return panel->threads.size() == before + 1; }, 3000));
    }

    QString lastLine() const { return linesFrom(log->nextRow - 1).value(0); }
    QString lastLevel() const { return log->item(log->nextRow - 1, 1)->text(); }
    // Lines of one client's thread from `row` on, without the "<peer> -- " prefix.
    QStringList clientLines(const Client& client, int row) const {
        const QString prefix = client.peer() + " -- ";
        QStringList out;
        for (const QString& line : linesFrom(row))
            if (line.startsWith(prefix))
                out << line.mid(prefix.size());
        return out;
    }
    bool waitClientLines(const Client& client, int row, int count, int ms = 5000) {
        return QTest::qWaitFor([&] { return clientLines(client, row).size() >= count; }, ms);
    }

    PingServer* panel = nullptr;
    int port = 0;
};

} // namespace

TEST_F(PingPanel, StartNeedsAMessageAndAPortItCanListenOn) {
    panel->messageEdit->setText(" \t ");
    click();
    EXPECT_EQ(lastLine(), "请输入发送内容!");
    EXPECT_EQ(lastLevel(), "ERROR");
    EXPECT_TRUE(panel->startButton->isState("OFF"));
    EXPECT_FALSE(panel->tcpServer.isListening());

    QTcpServer holder;
    ASSERT_TRUE(holder.listen(QHostAddress::Any, quint16(port)));
    panel->messageEdit->setText("ping");
    click();
    EXPECT_EQ(lastLine(), QString::asprintf("监听失败, 端口: %d", port));
    EXPECT_EQ(lastLevel(), "ERROR");
    EXPECT_TRUE(panel->startButton->isState("OFF"));
    EXPECT_TRUE(panel->messageEdit->isEnabled());

    // A new-connection signal with nothing to take.
    emit panel->tcpServer.newConnection();
    EXPECT_EQ(lastLine(), "连接建立失败!");
    EXPECT_EQ(lastLevel(), "INFO");
    EXPECT_TRUE(panel->threads.isEmpty());
}

// An echoing client passes at the period with the trimmed message on the wire; the controls
// are locked while the panel is on, and stopping closes the connection.
TEST_F(PingPanel, EchoingClientPassesEachPeriodUntilStopped) {
    start("  hello there ");
    EXPECT_EQ(panel->startButton->text(), "停止");
    EXPECT_FALSE(panel->messageEdit->isEnabled());
    EXPECT_FALSE(panel->intervalEdit->isEnabled());
    EXPECT_FALSE(panel->portEdit->isEnabled());

    Client client(echo);
    const int row = log->nextRow;
    connectClient(client);
    EXPECT_EQ(linesFrom(row).value(0), "连接已建立: " + client.peer());
    EXPECT_EQ(levelOf("连接已建立: " + client.peer(), row), "INFO");
    ASSERT_TRUE(waitClientLines(client, row, 3));
    EXPECT_EQ(clientLines(client, row).mid(0, 3),
              QStringList({"客户端测试成功!", "客户端测试成功!", "客户端测试成功!"}));
    EXPECT_EQ(levelOf(client.peer() + " -- 客户端测试成功!", row), "INFO");
    EXPECT_EQ(client.received, QByteArray("hello there").repeated(client.received.size() / 11));
    EXPECT_GE(client.shortestGap(), 80);

    click(); // how stopping ends each client's thread is ClientsComeAndGo's
    EXPECT_EQ(lastLine(), "连接断开: " + client.peer());
    EXPECT_EQ(lastLevel(), "INFO");
    EXPECT_TRUE(panel->startButton->isState("OFF"));
    EXPECT_EQ(panel->startButton->text(), "开始");
    EXPECT_FALSE(panel->tcpServer.isListening());
    EXPECT_TRUE(panel->messageEdit->isEnabled());
    EXPECT_TRUE(panel->intervalEdit->isEnabled());
    EXPECT_TRUE(panel->portEdit->isEnabled());
    EXPECT_TRUE(QTest::qWaitFor(
        [&] { return client.socket.state() == QAbstractSocket::UnconnectedState; }, 3000));
    // Nothing more from it, and the port is free to listen on again.
    const int after = log->nextRow;
    QTest::qWait(250);
    EXPECT_EQ(log->nextRow, after) << linesFrom(after).join('\n').toStdString();
    start("hello there");
}

// A client that never answers times out each period, the 100 ms wait plus the pause apart.
TEST_F(PingPanel, SilentClientTimesOutEachPeriod) {
    start("abc");
    Client client;
    const int row = log->nextRow;
    connectClient(client);
    ASSERT_TRUE(waitClientLines(client, row, 4));
    EXPECT_EQ(
        clientLines(client, row).mid(0, 4),
        QStringList({"读数据超时: abc", "客户端测试失败!", "读数据超时: abc", "客户端测试失败!"}));
    EXPECT_EQ(levelOf(client.peer() + " -- 读数据超时: abc", row), "ERROR");
    EXPECT_EQ(levelOf(client.peer() + " -- 客户端测试失败!", row), "ERROR");
    EXPECT_GE(client.shortestGap(), 170);
}

// Wrong answers are logged as received, long ones cut; an answer later than 100 ms is a
// timeout, and since it is still waiting when the next message goes out, that exchange
// receives both answers.
TEST_F(PingPanel, WrongAndLateAnswersFail) {
    panel->intervalEdit->setValue(200);
    start("abc");
    int pieces = 0;
    Client client([&pieces](Client& c, const QByteArray& piece) {
        switch (pieces++) {
        case 0:
            c.socket.write("abd");
            break;
        case 1:
            c.socket.write(QByteArray(3000, 'z'));
            break;
        case 2:
            QTimer::singleShot(150, &c.socket, [&c, piece] { c.socket.write(piece); });
            break;
        default:
            c.socket.write(piece);
        }
    });
    const int row = log->nextRow;
    connectClient(client);
    ASSERT_TRUE(waitClientLines(client, row, 9, 8000)) << linesFrom(row).join('\n').toStdString();
    const QStringList lines = clientLines(client, row);
    EXPECT_EQ(lines.mid(0, 9),
              QStringList({"接收数据与发送不匹配: abd", "客户端测试失败!",
                           "接收数据与发送不匹配: " + QString(1024, 'z') + "...", "客户端测试失败!",
                           "读数据超时: abc", "客户端测试失败!", "接收数据与发送不匹配: abcabc",
                           "客户端测试失败!", "客户端测试成功!"}));
    EXPECT_EQ(levelOf(client.peer() + " -- 接收数据与发送不匹配: abd", row), "ERROR");
    EXPECT_EQ(client.received, QByteArray("abc").repeated(client.received.size() / 3));
}

// Each client has its own thread and lines; one that leaves by itself is cleaned up, the
// others are closed in order by stopping; a window closed with clients on ends their threads.
TEST_F(PingPanel, ClientsComeAndGo) {
    start("ping");
    Client a(echo), b(echo), c(echo);
    const int row = log->nextRow;
    connectClient(a);
    connectClient(b);
    connectClient(c);
    ASSERT_TRUE(waitClientLines(a, row, 1));
    ASSERT_TRUE(waitClientLines(b, row, 1));
    ASSERT_TRUE(waitClientLines(c, row, 1));
    EXPECT_EQ(clientLines(b, row).value(0), "客户端测试成功!");

    QPointer<PingServerThread> left = panel->threads.value(2);
    const QString leftPeer = c.peer();
    c.socket.close();
    ASSERT_TRUE(QTest::qWaitFor([&] { return left.isNull(); }, 3000));
    EXPECT_EQ(panel->threads.size(), 2);
    EXPECT_TRUE(linesFrom(row).contains("连接断开: " + leftPeer))
        << linesFrom(row).join('\n').toStdString();

    QList<QPointer<PingServerThread>> stopped{panel->threads.value(0), panel->threads.value(1)};
    click();
    EXPECT_TRUE(panel->threads.isEmpty());
    const QStringList lines = linesFrom(row);
    EXPECT_EQ(lines.mid(lines.size() - 2),
              QStringList({"连接断开: " + a.peer(), "连接断开: " + b.peer()}));
    for (const auto& t : stopped)
        EXPECT_TRUE(t && t->isFinished());
    EXPECT_TRUE(QTest::qWaitFor([&] { return stopped[0].isNull() && stopped[1].isNull(); }, 3000));

    // Open connections, both in the longest pause, when the window closes: their threads end
    // at once.
    panel->intervalEdit->setValue(65535);
    start("ping");
    Client d(echo), e(echo);
    const int again = log->nextRow;
    connectClient(d);
    connectClient(e);
    ASSERT_TRUE(waitClientLines(d, again, 1));
    ASSERT_TRUE(waitClientLines(e, again, 1));
    QList<QPointer<PingServerThread>> open{panel->threads.value(0), panel->threads.value(1)};
    QPointer<PingServer> gone(panel);
    QElapsedTimer closing;
    closing.start();
    Release();
    EXPECT_LT(closing.elapsed(), 1500);
    EXPECT_TRUE(gone.isNull());
    EXPECT_TRUE(open[0].isNull());
    EXPECT_TRUE(open[1].isNull());
    EXPECT_TRUE(QTest::qWaitFor(
        [&] {
            return d.socket.state() == QAbstractSocket::UnconnectedState &&
                   e.socket.state() == QAbstractSocket::UnconnectedState;
        },
        3000));
}
