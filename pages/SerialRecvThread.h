#pragma once

#include <QByteArray>
#include <QThread>

#include <atomic>
#include <memory>

class QTextDecoder;

// Reads the command page's port for the terminal while its tab is current. The driver is
// drained as bytes come, so that a board printing at 2 Mbaud loses nothing to the system's
// small input buffer; what came is handed on about every 50 ms as one batch. A batch waits
// while the one before it has not been taken, and grows meanwhile: the screen may fall
// behind, but no byte is dropped.
class SerialRecvThread : public QThread {
    Q_OBJECT
public:
    explicit SerialRecvThread(QObject* parent = nullptr);
    ~SerialRecvThread() override;

    // Starts the loop; `running` holds from here, so a stop right behind it is not missed.
    void begin();
    // Ends the loop and waits for the thread; what it had read is still handed on.
    void stop();
    // The receiver took the last batch: the next may go.
    void taken();

    // The loop runs while this holds.
    std::atomic<bool> running{false};

signals:
    // A batch of text; a zero byte ends what a batch shows.
    void recvMessage(QString text);

protected:
    void run() override;

private:
    void handOn(QByteArray& batch);

    std::atomic<bool> inFlight_{false};
    std::unique_ptr<QTextDecoder> decoder_;
};
