#pragma once

#include "sim/SimFault.h"
#include "sim/SimFrame.h"
#include "sim/SimPty.h"

#include <QByteArray>
#include <QString>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

// A QZ4410/QZ4420 board behind a pseudo terminal: the boot ROM with its raw dialogue, the stub
// that speaks request and reply frames, and a hook for the firmware's text channel. A thread of
// its own serves the pty master and sleeps in ppoll() between events, so an idle board costs
// no processor time. Every public operation is thread-safe.
//
// The board keeps a rate of its own (baud()). It reads the rate the host has set on the slave;
// bytes that the host sends while the two differ are garbled on the line and lost, and a reply
// only goes out once the host runs at the board's rate.
class BoardSim {
public:
    struct Options {
        uint32_t flashSize = 4 * 1024 * 1024;
        uint32_t flashBase = 0;   // flash addresses run from flashBase to flashBase + flashSize
        uint8_t syncAnswer = 1;   // 1: the ROM's raw dialogue; 51: the board already speaks frames
        int rawBlockSize = 1024;  // bytes per data block of the raw dialogue
        bool paceAtBaud = false;  // bytes take 10 bit times at baud() in both directions
        bool resetOnOpen = false; // the board restarts in the ROM each time the host opens
        // The board's own software speaks frames from power-up and after each reset, as the
        // stub does: no ROM stage, no sync needed.
        bool framesFromStart = false;
        uint32_t initialBaud = 115200;
        int followMs = 1000; // how long a reply waits for the host to take the board's rate
    };

    enum class Stage { Rom, Stub, Firmware };

    // Gets the bytes that reach the board in Firmware stage, on the board's thread. It may
    // answer with send() and use every other operation of the board.
    using FirmwareHandler = std::function<void(BoardSim& board, const QByteArray& bytes)>;
    // Gets each text line that reaches the ROM while it waits for a sync word (the bytes before
    // a CR or LF), on the board's thread. After a reset the firmware in flash listens on the
    // line for a moment: a handler that takes the line for it calls startFirmware().
    using RomLineHandler = std::function<void(BoardSim& board, const QByteArray& line)>;
    // Told each time the firmware starts, on the thread that started it.
    using FirmwareStartHandler = std::function<void(BoardSim& board)>;
    // Gets one line for each thing the board does, on the thread that did it.
    using EventLog = std::function<void(const QString& line)>;

    BoardSim(); // default Options
    explicit BoardSim(Options options);
    ~BoardSim(); // stops the thread, removes a published link
    BoardSim(const BoardSim&) = delete;
    BoardSim& operator=(const BoardSim&) = delete;

    // False when the pty or the thread could not be made.
    bool isValid() const;
    // The slave device that the host opens.
    std::string devicePath() const;

    // Makes the symbolic link PortTable::virtualPortDir()/name -> devicePath(), replacing a
    // link of that name; false when the folder or the link cannot be made, or something that
    // is not a link has the name.
    bool publish(const QString& name);
    // Removes the published link, if it still points at this board.
    void unpublish();
    QString publishedLink() const;

    Stage stage() const;
    // Back to the ROM, as a pulse on the reset line: RAM cleared, flash kept, rate back to
    // initialBaud, half-received input and unsent replies gone.
    void reset();
    uint32_t baud() const;
    // The host's rate as the board last saw it.
    uint32_t hostBaud() const;
    // Sleeps until the board has seen the host take `rate`, or timeoutMs passed.
    bool waitForHostBaud(uint32_t rate, int timeoutMs) const;

    // Absolute addresses. flash() gives the part of the range that lies in the flash.
    QByteArray flash(uint32_t addr, uint32_t len) const;
    void setFlash(uint32_t addr, const QByteArray& bytes);
    // The next flash write that covers addr stores that byte with every bit flipped: a board
    // that stores a block wrong.
    void flipNextStore(uint32_t addr);
    // RAM is sparse: bytes never written read 0.
    QByteArray ram(uint32_t addr, uint32_t len) const;
    // The address of the last start-software request, 0 before the first.
    uint32_t startedAt() const;

    // What came in. Every request frame received in Stub stage.
    std::vector<SimFrame> frames() const;
    // The bytes received in Rom stage, one entry for each unit the ROM acted on: a sync word
    // "cnys", a 12-byte header, a single 0 byte of a resync, a data block.
    std::vector<QByteArray> rawWrites() const;
    // All bytes received in Firmware stage.
    QByteArray firmwareInput() const;
    void clearRecord(); // the three records and the counters below

    int blockWrites() const;    // data blocks written to RAM or flash (raw and framed)
    int repeatedBlocks() const; // blocks with the retry mark acknowledged without a write
    int garbledBytes() const;   // bytes lost because the host's rate was not the board's
    int strayBytes() const;     // bytes in Stub stage that belonged to no frame
    int lostReplies() const;    // replies not sent: nobody had the port, or the rate never met
    int hostOpens() const;      // times the port went from closed to open
    // The host's turns: from the last byte of a reply put on the line to the next bytes from
    // the host, averaged over every turn since clearRecord.
    std::chrono::nanoseconds meanHostTurn() const;

    // Queues a one-shot fault (see SimFault). Each reply takes the oldest waiting fault of
    // each kind that matches it.
    void inject(const SimFault& fault);
    int pendingFaults() const;
    void clearFaults();

    void setFirmwareHandler(FirmwareHandler handler);
    void setRomLineHandler(RomLineHandler handler);
    void setFirmwareStartHandler(FirmwareStartHandler handler);
    // The ROM starts the firmware in flash: Firmware stage, as after a start-software request.
    void startFirmware();
    // Sends bytes from the board after holdMs, behind any reply still going out.
    void send(const QByteArray& bytes, int holdMs = 0);
    void setEventLog(EventLog log);

private:
    using Clock = std::chrono::steady_clock;
    using TimePoint = Clock::time_point;
    using Lock = std::lock_guard<std::recursive_mutex>;

    enum class RomState { Sync, Header, Data, Resync };

    struct InChunk {
        QByteArray bytes;
        TimePoint due; // when the line has carried its last byte
    };

    struct OutChunk {
        QByteArray bytes;
        int holdMs = 0;    // wait after the chunk before it, or after the reply was made
        TimePoint madeAt;  // when the board made it: the end of the request it answers
        bool head = false; // first in the queue: readyAt is set
        TimePoint readyAt; // when it may start
        bool started = false;
        TimePoint lineStart; // when its first bit went on the line
        int sent = 0;
    };

    // A raw transfer that the ROM has taken the header of.
    struct RawTransfer {
        uint32_t type = 0, addr = 0, len = 0, got = 0;
    };

    // The stub's download of type 1 (RAM) or 2 (flash).
    struct Download {
        bool active = false;
        int type = 0;
        uint32_t addr = 0, len = 0, got = 0;
        QByteArray header;        // payload of the last header taken
        int blocks = 0;           // blocks written since that header
        int largestBlock = 0;     // data bytes of the largest of them
        bool lastWritten = false; // the last frame of the download was a block that was written
        QByteArray lastData;      // its data
    };

    void run();
    void wake();
    bool nextWake(TimePoint now, TimePoint& when) const;
    void learnWakeLead(std::chrono::nanoseconds late);

    // Input.
    void hostOpened();
    void refreshHostBaud();
    void accept(const std::vector<QByteArray>& chunks, TimePoint now);
    void service(TimePoint now);
    void feed(const QByteArray& bytes, TimePoint now);
    int feedRom(const char* p, int n);
    void answerSync();
    void rawHeader();
    void rawBlock();
    void finishRaw();
    void parseFrames();
    void handleFrame(const QByteArray& frame);
    uint8_t download(int type, const QByteArray& payload);
    bool looksLikeHeader(int type, const QByteArray& payload) const;
    bool repeatsLastBlock(int type, const QByteArray& payload) const;
    void toFirmware(const QByteArray& bytes);
    void romLineByte(char c);
    void enterFirmware();

    // Replies and output.
    std::vector<SimFault> takeFaults(SimFault::Target reply, int type);
    void byteReply(uint8_t byte, const std::vector<SimFault>& faults);
    void frameReply(uint8_t type, const QByteArray& payload, uint8_t state,
                    const std::vector<SimFault>& faults);
    void replyBytes(const QByteArray& bytes, const std::vector<SimFault>& faults);
    void queueOut(const QByteArray& bytes, int holdMs);
    void pumpOutput(TimePoint now);
    std::chrono::nanoseconds byteTime() const;

    // Memory.
    bool inFlash(uint32_t addr, uint32_t len) const;
    void writeFlash(uint32_t addr, const QByteArray& bytes);
    void writeRam(uint32_t addr, const QByteArray& bytes);

    void resetLocked();
    void log(const QString& line) const;

    const Options opt_;
    mutable std::recursive_mutex mutex_;
    mutable std::condition_variable_any hostBaudChanged_;
    SimPty pty_;
    int wakeFd_ = -1;
    std::atomic<bool> stopping_{false};
    std::thread thread_;
    QString link_;
    // How much later than asked this thread's timed waits end, learnt as it runs; it wakes
    // that much early. Touched by the thread only.
    std::chrono::nanoseconds wakeLead_{0};

    // The line.
    uint32_t baud_;
    uint32_t hostBaud_;
    uint32_t hostBaudBefore_; // the host's rate at the look before the last
    std::deque<InChunk> in_;
    TimePoint inLineFree_;
    // While bytes are fed to the board: when the line carried the last of them. A reply made
    // then starts from that moment, not from when this thread got round to it.
    bool feeding_ = false;
    TimePoint feedDue_;
    // When the line carried the last byte of the chunk sent before.
    TimePoint outLineFree_;
    std::deque<OutChunk> out_;
    bool outBlocked_ = false;

    // The board.
    Stage stage_ = Stage::Rom;
    RomState rom_ = RomState::Sync;
    QByteArray romBuf_;
    QByteArray syncWindow_;
    QByteArray romLine_;
    RawTransfer raw_;
    int resyncZeros_ = -1;
    int resyncCount_ = 0;
    QByteArray frameBuf_;
    TimePoint frameLast_;
    Download dl_;
    QByteArray flash_;
    int64_t flipAt_ = -1; // see flipNextStore
    std::map<uint32_t, QByteArray> ram_; // pages of kRamPage bytes by page address
    uint32_t startedAt_ = 0;
    std::deque<SimFault> faults_;
    FirmwareHandler firmware_;
    RomLineHandler romLineHandler_;
    FirmwareStartHandler firmwareStart_;
    EventLog eventLog_;

    // The record.
    std::vector<SimFrame> frames_;
    std::vector<QByteArray> rawWrites_;
    QByteArray firmwareInput_;
    int blockWrites_ = 0;
    int repeatedBlocks_ = 0;
    int garbledBytes_ = 0;
    int strayBytes_ = 0;
    int lostReplies_ = 0;
    int hostOpens_ = 0;
    bool replyOut_ = false; // the line is quiet after a reply, waiting for the host
    TimePoint replyOutAt_;
    std::chrono::nanoseconds hostTurnTotal_{0};
    int hostTurns_ = 0;
};
