#include "pages/SerialRecvThread.h"

#include "base/ComPort.h"
#include "pages/CmdWindow.h"

#include <QElapsedTimer>
#include <QTextCodec>
#include <QTextDecoder>

#include <algorithm>

namespace {

// A batch goes on this long after its first byte came.
constexpr qint64 kBatchMs = 50;
// Between two reads of a busy port the driver gathers this long; it holds about 4 KB, which
// lasts 20 ms at 2 Mbaud.
constexpr unsigned long kGatherMs = 2;
constexpr int kReadChunk = 64 * 1024;

} // namespace

SerialRecvThread::SerialRecvThread(QObject* parent)
    : QThread(parent), decoder_(QTextCodec::codecForName("UTF-8")->makeDecoder()) {}

SerialRecvThread::~SerialRecvThread() {
    stop();
}

void SerialRecvThread::begin() {
    running = true;
    start();
}

void SerialRecvThread::stop() {
    running = false;
    wait();
}

void SerialRecvThread::taken() {
    inFlight_ = false;
}

void SerialRecvThread::run() {
    inFlight_ = false;
    ComPort* port = cmdWindowInstance->port();
    QByteArray batch;
    QElapsedTimer since; // the first byte of the batch
    while (running) {
        // An empty batch waits for its first byte (and looks at `running` now and then); a
        // started one waits no longer than its time, and one kept back for the receiver
        // looks again shortly.
        qint64 left = batch.isEmpty() ? kBatchMs : kBatchMs - since.elapsed();
        if (left <= 0)
            left = qint64(kGatherMs);
        port->waitForInput(left);
        const int waiting = port->available();
        if (waiting > 0) {
            if (batch.isEmpty())
                since.start();
            const int at = batch.size();
            batch.resize(at + std::min(waiting, kReadChunk));
            const int got = port->readRaw(batch.data() + at, unsigned(batch.size() - at));
            batch.resize(at + std::max(got, 0));
        }
        if (!batch.isEmpty() && since.elapsed() >= kBatchMs && !inFlight_)
            handOn(batch);
        else if (waiting > 0)
            msleep(kGatherMs); // let the driver gather rather than read a few bytes at a time
    }
    if (!batch.isEmpty())
        handOn(batch);
}

void SerialRecvThread::handOn(QByteArray& batch) {
    // Bytes behind a zero byte are not shown.
    const int zero = batch.indexOf('\0');
    const QString text = decoder_->toUnicode(batch.constData(), zero < 0 ? batch.size() : zero);
    batch.clear();
    inFlight_ = true;
    emit recvMessage(text);
}
