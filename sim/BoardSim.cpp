#include "sim/BoardSim.h"

#include "base/PortTable.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>

namespace {

using std::chrono::milliseconds;
using std::chrono::nanoseconds;

constexpr uint32_t kRamPage = 4096;
// A frame whose bytes stop coming for this long is given up, so that a broken frame cannot
// swallow the next one.
constexpr milliseconds kFrameGap(200);
// The shortest sleep while bytes are paced out: they leave in bursts of about a millisecond.
constexpr milliseconds kPaceStep(1);

const QByteArray kSyncWord("cnys");
constexpr uint8_t kFrameSyncAnswer = 51;
constexpr uint8_t kRequestStart = 0xA5;
constexpr uint8_t kReplyStart = 0x5A;
constexpr uint8_t kOutOfStep = 0xFF;

enum FrameType : uint8_t {
    kPing = 0,
    kToRam = 1,
    kToFlash = 2,
    kReadFlash = 3,
    kEraseRange = 4,
    kEraseAll = 5,
    kStartSoftware = 6,
    kChangeBaud = 7
};

uint32_t u32At(const QByteArray& b, int at) {
    const auto* p = reinterpret_cast<const uint8_t*>(b.constData()) + at;
    return uint32_t(p[0]) | uint32_t(p[1]) << 8 | uint32_t(p[2]) << 16 | uint32_t(p[3]) << 24;
}

uint8_t sum8(const QByteArray& b, int count) {
    uint8_t s = 0;
    for (int i = 0; i < count; ++i)
        s = uint8_t(s + uint8_t(b[i]));
    return s;
}

QString hex(uint32_t v) {
    return QStringLiteral("0x%1").arg(v, 0, 16);
}

} // namespace

BoardSim::BoardSim() : BoardSim(Options()) {}

BoardSim::BoardSim(Options options)
    : opt_(options), pty_(options.initialBaud), baud_(options.initialBaud),
      hostBaud_(options.initialBaud), hostBaudBefore_(options.initialBaud),
      flash_(int(options.flashSize), char(0xFF)) {
    stage_ = opt_.framesFromStart ? Stage::Stub : Stage::Rom;
    if (!pty_.isValid())
        return;
    hostBaud_ = hostBaudBefore_ = pty_.hostBaud();
    wakeFd_ = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (wakeFd_ >= 0)
        thread_ = std::thread(&BoardSim::run, this);
}

BoardSim::~BoardSim() {
    stopping_ = true;
    if (thread_.joinable()) {
        wake();
        thread_.join();
    }
    if (wakeFd_ >= 0)
        ::close(wakeFd_);
    unpublish();
}

bool BoardSim::isValid() const {
    return thread_.joinable();
}

std::string BoardSim::devicePath() const {
    return pty_.slavePath();
}

bool BoardSim::publish(const QString& name) {
    const QString dir = PortTable::virtualPortDir();
    if (name.isEmpty() || name.contains('/') || !QDir().mkpath(dir))
        return false;
    const QString link = dir + '/' + name;
    const QFileInfo existing(link);
    if (existing.isSymLink()) {
        if (!QFile::remove(link))
            return false;
    } else if (existing.exists()) {
        return false;
    }
    if (!QFile::link(QString::fromStdString(pty_.slavePath()), link))
        return false;
    Lock lock(mutex_);
    if (!link_.isEmpty() && link_ != link)
        unpublish();
    link_ = link;
    log(QStringLiteral("published %1 -> %2").arg(link, QString::fromStdString(pty_.slavePath())));
    return true;
}

void BoardSim::unpublish() {
    Lock lock(mutex_);
    if (link_.isEmpty())
        return;
    // Leave a link alone that someone has pointed elsewhere since.
    if (QFileInfo(link_).symLinkTarget() == QString::fromStdString(pty_.slavePath()))
        QFile::remove(link_);
    link_.clear();
}

QString BoardSim::publishedLink() const {
    Lock lock(mutex_);
    return link_;
}

BoardSim::Stage BoardSim::stage() const {
    Lock lock(mutex_);
    return stage_;
}

void BoardSim::reset() {
    {
        Lock lock(mutex_);
        resetLocked();
    }
    wake();
}

uint32_t BoardSim::baud() const {
    Lock lock(mutex_);
    return baud_;
}

uint32_t BoardSim::hostBaud() const {
    Lock lock(mutex_);
    return hostBaud_;
}

bool BoardSim::waitForHostBaud(uint32_t rate, int timeoutMs) const {
    std::unique_lock<std::recursive_mutex> lock(mutex_);
    return hostBaudChanged_.wait_for(lock, milliseconds(std::max(timeoutMs, 0)),
                                     [&] { return hostBaud_ == rate; });
}

QByteArray BoardSim::flash(uint32_t addr, uint32_t len) const {
    Lock lock(mutex_);
    if (addr < opt_.flashBase)
        return {};
    const uint64_t from = addr - opt_.flashBase;
    if (from >= opt_.flashSize)
        return {};
    const uint64_t count = std::min<uint64_t>(len, opt_.flashSize - from);
    return flash_.mid(int(from), int(count));
}

void BoardSim::setFlash(uint32_t addr, const QByteArray& bytes) {
    Lock lock(mutex_);
    writeFlash(addr, bytes);
}

QByteArray BoardSim::ram(uint32_t addr, uint32_t len) const {
    Lock lock(mutex_);
    QByteArray out(int(len), '\0');
    for (uint32_t i = 0; i < len;) {
        const uint32_t at = addr + i;
        const uint32_t page = at - at % kRamPage;
        const uint32_t off = at - page;
        const uint32_t count = std::min(len - i, kRamPage - off);
        const auto it = ram_.find(page);
        if (it != ram_.end())
            std::memcpy(out.data() + i, it->second.constData() + off, count);
        i += count;
    }
    return out;
}

uint32_t BoardSim::startedAt() const {
    Lock lock(mutex_);
    return startedAt_;
}

std::vector<SimFrame> BoardSim::frames() const {
    Lock lock(mutex_);
    return frames_;
}

std::vector<QByteArray> BoardSim::rawWrites() const {
    Lock lock(mutex_);
    return rawWrites_;
}

QByteArray BoardSim::firmwareInput() const {
    Lock lock(mutex_);
    return firmwareInput_;
}

void BoardSim::clearRecord() {
    Lock lock(mutex_);
    frames_.clear();
    rawWrites_.clear();
    firmwareInput_.clear();
    blockWrites_ = repeatedBlocks_ = garbledBytes_ = strayBytes_ = lostReplies_ = hostOpens_ = 0;
    hostTurnTotal_ = nanoseconds(0);
    hostTurns_ = 0;
}

int BoardSim::blockWrites() const {
    Lock lock(mutex_);
    return blockWrites_;
}

int BoardSim::repeatedBlocks() const {
    Lock lock(mutex_);
    return repeatedBlocks_;
}

int BoardSim::garbledBytes() const {
    Lock lock(mutex_);
    return garbledBytes_;
}

int BoardSim::strayBytes() const {
    Lock lock(mutex_);
    return strayBytes_;
}

int BoardSim::lostReplies() const {
    Lock lock(mutex_);
    return lostReplies_;
}

int BoardSim::hostOpens() const {
    Lock lock(mutex_);
    return hostOpens_;
}

nanoseconds BoardSim::meanHostTurn() const {
    Lock lock(mutex_);
    return hostTurns_ ? hostTurnTotal_ / hostTurns_ : nanoseconds(0);
}

void BoardSim::inject(const SimFault& fault) {
    Lock lock(mutex_);
    faults_.push_back(fault);
}

int BoardSim::pendingFaults() const {
    Lock lock(mutex_);
    return int(faults_.size());
}

void BoardSim::clearFaults() {
    Lock lock(mutex_);
    faults_.clear();
}

void BoardSim::setFirmwareHandler(FirmwareHandler handler) {
    Lock lock(mutex_);
    firmware_ = std::move(handler);
}

void BoardSim::setRomLineHandler(RomLineHandler handler) {
    Lock lock(mutex_);
    romLineHandler_ = std::move(handler);
}

void BoardSim::setFirmwareStartHandler(FirmwareStartHandler handler) {
    Lock lock(mutex_);
    firmwareStart_ = std::move(handler);
}

void BoardSim::startFirmware() {
    {
        Lock lock(mutex_);
        frameBuf_.clear(); // an unfinished frame to the stub goes nowhere now
        enterFirmware();
    }
    wake();
}

void BoardSim::send(const QByteArray& bytes, int holdMs) {
    {
        Lock lock(mutex_);
        queueOut(bytes, holdMs);
    }
    wake();
}

void BoardSim::setEventLog(EventLog log) {
    Lock lock(mutex_);
    eventLog_ = std::move(log);
}

// ---- The thread ----

void BoardSim::wake() {
    const uint64_t one = 1;
    if (wakeFd_ >= 0 && ::write(wakeFd_, &one, sizeof one) < 0) {
        // The counter is full, so a wake-up is pending anyway.
    }
}

void BoardSim::run() {
    // Bytes are paced in microseconds at the higher rates: the default timer slack of the
    // system (50 microseconds) would add itself to every wake-up of the board.
    prctl(PR_SET_TIMERSLACK, 1UL, 0UL, 0UL, 0UL);
    for (;;) {
        pollfd fds[3];
        nfds_t count = 0;
        fds[count++] = {wakeFd_, POLLIN, 0};
        int watchAt = -1;
        int masterAt = -1;
        timespec wait{};
        timespec* waitPtr = nullptr;
        TimePoint target; // when a timed wait should end
        {
            Lock lock(mutex_);
            const TimePoint now = Clock::now();
            if (pty_.watchFd() >= 0) {
                watchAt = int(count);
                fds[count++] = {pty_.watchFd(), POLLIN, 0};
            }
            // A master whose slave nobody holds reports a hang-up for ever: it is only
            // listened to while it does not (the open events say when to look again).
            const bool held = !pty_.hungUp();
            if (held) {
                masterAt = int(count);
                fds[count++] = {pty_.masterFd(), short(POLLIN | (outBlocked_ ? POLLOUT : 0)), 0};
            }
            TimePoint when;
            bool timed = nextWake(now, when);
            if (pty_.watchFd() < 0 && !held) {
                // Without open events, look at the hang-up state now and then.
                const TimePoint look = now + milliseconds(100);
                when = timed ? std::min(when, look) : look;
                timed = true;
            }
            if (timed) {
                target = when - wakeLead_;
                const auto ns = std::max<int64_t>(
                    0, std::chrono::duration_cast<nanoseconds>(target - now).count());
                wait.tv_sec = time_t(ns / 1000000000);
                wait.tv_nsec = long(ns % 1000000000);
                waitPtr = &wait;
            }
        }

        const int ready = ::ppoll(fds, count, waitPtr, nullptr);
        const TimePoint woke = Clock::now();
        if (ready == 0 && waitPtr)
            learnWakeLead(woke - target);
        if (fds[0].revents & POLLIN) {
            uint64_t v;
            if (::read(wakeFd_, &v, sizeof v) < 0) {
                // Nothing to take: another wake-up took it.
            }
        }
        if (stopping_)
            return;

        Lock lock(mutex_);
        // Bytes came when the thread woke; what falls due is served as at the moment the
        // thread would have woken had it not woken early.
        const TimePoint now = woke + wakeLead_;
        if (watchAt >= 0 && pty_.takeOpenEvents() > 0)
            hostOpened();
        const short masterEvents = masterAt >= 0 ? fds[masterAt].revents : 0;
        SimPty::Input in;
        if (masterEvents & (POLLIN | POLLPRI) || !pty_.hungUp())
            in = pty_.readAll();
        // An open that came with these bytes is older than they are: reset before they count.
        if (watchAt >= 0 && pty_.takeOpenEvents() > 0)
            hostOpened();
        if (in.settingsChanged)
            refreshHostBaud();
        accept(in.data, woke);
        if ((masterEvents & POLLHUP) && pty_.hungUp()) {
            pty_.noteHangUp();
            log(QStringLiteral("host closed the port"));
        }
        if (masterEvents & POLLOUT)
            outBlocked_ = false;
        service(now);
    }
}

void BoardSim::learnWakeLead(nanoseconds late) {
    // A timed wait on a quiet machine ends later than asked (a tenth of a millisecond and more
    // on a virtual machine, where an idle processor is slow to wake). A board answering that
    // much late would charge its simulator's wake-ups to the host, so the thread wakes early by
    // what it has seen lately.
    constexpr nanoseconds kMostLead = milliseconds(1);
    wakeLead_ += (late - wakeLead_) / 8;
    wakeLead_ = std::clamp(wakeLead_, nanoseconds(0), kMostLead);
}

bool BoardSim::nextWake(TimePoint now, TimePoint& when) const {
    bool timed = false;
    auto consider = [&](TimePoint t) {
        when = timed ? std::min(when, t) : t;
        timed = true;
    };
    if (!in_.empty())
        consider(in_.front().due);
    if (stage_ == Stage::Stub && !frameBuf_.isEmpty())
        consider(frameLast_ + kFrameGap);
    if (!out_.empty() && !outBlocked_) {
        const OutChunk& c = out_.front();
        if (!c.head || !pty_.hostHolds()) {
            consider(now);
        } else if (!c.started) {
            // Waiting to start, then for the host to take the board's rate (a change of the
            // host's settings wakes the thread by itself).
            consider(now < c.readyAt      ? c.readyAt
                     : hostBaud_ != baud_ ? c.readyAt + milliseconds(opt_.followMs)
                                          : now);
        } else {
            const nanoseconds bt = byteTime();
            const TimePoint next = c.lineStart + bt * (c.sent + 1);
            const TimePoint last = c.lineStart + bt * c.bytes.size();
            consider(std::min(last, std::max(next, now + kPaceStep)));
        }
    }
    return timed;
}

// ---- Input ----

void BoardSim::hostOpened() {
    ++hostOpens_;
    log(QStringLiteral("host opened the port"));
    if (opt_.resetOnOpen)
        resetLocked();
}

void BoardSim::refreshHostBaud() {
    const uint32_t rate = pty_.hostBaud();
    if (rate == hostBaud_)
        return;
    hostBaud_ = rate;
    log(QStringLiteral("host rate now %1").arg(rate));
    hostBaudChanged_.notify_all();
}

void BoardSim::accept(const std::vector<QByteArray>& chunks, TimePoint now) {
    if (replyOut_ && !chunks.empty()) {
        replyOut_ = false;
        hostTurnTotal_ += now - replyOutAt_;
        ++hostTurns_;
    }
    for (const QByteArray& bytes : chunks) {
        // The bytes were sent at some rate the host had since the look before this one: a
        // change that came with them may be younger than they are.
        if (baud_ != hostBaud_ && baud_ != hostBaudBefore_) {
            garbledBytes_ += bytes.size();
            log(QStringLiteral("%1 bytes garbled: host at %2, board at %3")
                    .arg(bytes.size())
                    .arg(hostBaud_)
                    .arg(baud_));
            continue;
        }
        TimePoint due = now;
        if (opt_.paceAtBaud) {
            due = std::max(now, inLineFree_) + byteTime() * bytes.size();
            inLineFree_ = due;
        }
        in_.push_back({bytes, due});
    }
    hostBaudBefore_ = hostBaud_;
}

void BoardSim::service(TimePoint now) {
    while (!in_.empty() && in_.front().due <= now) {
        const QByteArray bytes = in_.front().bytes;
        feeding_ = true;
        feedDue_ = in_.front().due;
        in_.pop_front();
        feed(bytes, now);
        feeding_ = false;
    }
    if (stage_ == Stage::Stub && !frameBuf_.isEmpty() && now - frameLast_ >= kFrameGap) {
        strayBytes_ += frameBuf_.size();
        log(QStringLiteral("%1 bytes of an unfinished frame dropped").arg(frameBuf_.size()));
        frameBuf_.clear();
    }
    pumpOutput(now);
}

void BoardSim::feed(const QByteArray& bytes, TimePoint now) {
    int at = 0;
    while (at < bytes.size()) {
        if (stage_ == Stage::Rom) {
            at += feedRom(bytes.constData() + at, bytes.size() - at);
            continue;
        }
        const QByteArray rest = bytes.mid(at);
        if (stage_ == Stage::Stub) {
            frameBuf_ += rest;
            frameLast_ = now;
            parseFrames();
        } else {
            toFirmware(rest);
        }
        return;
    }
}

// Takes bytes in Rom stage up to the end of the unit they belong to; gives back how many.
int BoardSim::feedRom(const char* p, int n) {
    switch (rom_) {
    case RomState::Sync:
        syncWindow_ += p[0];
        if (syncWindow_.size() > kSyncWord.size())
            syncWindow_.remove(0, 1);
        if (syncWindow_ == kSyncWord) {
            syncWindow_.clear();
            romLine_.clear();
            answerSync();
        } else {
            romLineByte(p[0]);
        }
        return 1;
    case RomState::Resync:
        if (p[0] == 0) {
            rawWrites_.emplace_back(1, '\0');
            ++resyncCount_;
            if (resyncZeros_ > 0 && resyncCount_ == resyncZeros_) {
                // The zeros have filled up the header the ROM was waiting for: it is back in
                // step, says so, and waits for the host's header again.
                queueOut(QByteArray(1, char(kOutOfStep)), 0);
                log(QStringLiteral("back in step after %1 zero bytes").arg(resyncCount_));
                rom_ = RomState::Header;
            }
            return 1;
        }
        rom_ = RomState::Header; // the host gave up on the zeros: a header starts
        return 0;
    case RomState::Header: {
        const int take = std::min(n, 12 - romBuf_.size());
        for (int i = 0; i < take; ++i) {
            romBuf_ += p[i];
            // The host may still be polling with sync words when the header is due.
            if (romBuf_.size() == kSyncWord.size() && romBuf_ == kSyncWord) {
                romBuf_.clear();
                answerSync();
                return i + 1;
            }
        }
        if (romBuf_.size() == 12)
            rawHeader();
        return take;
    }
    case RomState::Data: {
        const int block =
            int(std::min<uint32_t>(uint32_t(std::max(opt_.rawBlockSize, 1)), raw_.len - raw_.got));
        const int take = std::min(n, block - romBuf_.size());
        romBuf_.append(p, take);
        if (romBuf_.size() == block)
            rawBlock();
        return take;
    }
    }
    return n;
}

void BoardSim::answerSync() {
    const std::vector<SimFault> faults = takeFaults(SimFault::Target::Sync, -1);
    uint8_t answer = opt_.syncAnswer;
    for (const SimFault& f : faults)
        if (f.kind == SimFault::Kind::SyncAnswer)
            answer = uint8_t(f.value);
    byteReply(answer, faults);
    log(QStringLiteral("sync word answered %1").arg(answer));
    if (stage_ != Stage::Rom)
        return;
    rawWrites_.push_back(kSyncWord);
    if (opt_.syncAnswer == kFrameSyncAnswer) {
        stage_ = Stage::Stub;
        log(QStringLiteral("speaking frames"));
    } else {
        rom_ = RomState::Header;
    }
}

void BoardSim::rawHeader() {
    const QByteArray header = romBuf_;
    romBuf_.clear();
    rawWrites_.push_back(header);
    const uint32_t type = u32At(header, 0);
    const uint32_t addr = u32At(header, 4);
    const uint32_t len = u32At(header, 8);
    if (type == 0 && addr == 0 && len == 0) {
        // The end of a whole raw download: nothing is answered.
        log(QStringLiteral("raw download finished"));
        return;
    }
    std::vector<SimFault> faults = takeFaults(SimFault::Target::RawHeader, -1);
    const auto outOfStep = std::find_if(faults.begin(), faults.end(), [](const SimFault& f) {
        return f.kind == SimFault::Kind::OutOfStep;
    });
    if (outOfStep != faults.end()) {
        resyncZeros_ = outOfStep->value;
        resyncCount_ = 0;
        rom_ = RomState::Resync;
        faults.erase(outOfStep);
        log(QStringLiteral("raw header refused: out of step"));
        byteReply(kOutOfStep, faults);
        return;
    }
    raw_ = {type, addr, len, 0};
    log(QStringLiteral("raw header: type %1, address %2, %3 bytes")
            .arg(type)
            .arg(hex(addr))
            .arg(len));
    byteReply(0, faults);
    if (len == 0)
        finishRaw();
    else
        rom_ = RomState::Data;
}

void BoardSim::rawBlock() {
    rawWrites_.push_back(romBuf_);
    const uint32_t at = raw_.addr + raw_.got;
    const int n = romBuf_.size();
    writeRam(at, romBuf_);
    ++blockWrites_;
    raw_.got += uint32_t(n);
    romBuf_.clear();
    byteReply(0, takeFaults(SimFault::Target::RawBlock, -1));
    if (eventLog_) // a line a block costs a bulk transfer nothing while nobody listens
        log(QStringLiteral("raw block of %1 bytes at %2").arg(n).arg(hex(at)));
    if (raw_.got == raw_.len)
        finishRaw();
}

void BoardSim::finishRaw() {
    if (raw_.type == 1) {
        stage_ = Stage::Stub;
        frameBuf_.clear();
        log(QStringLiteral("stub runs at %1").arg(hex(raw_.addr)));
    } else {
        rom_ = RomState::Header;
    }
}

void BoardSim::parseFrames() {
    while (stage_ == Stage::Stub) {
        // Bytes before a start byte belong to no frame. A board that answers sync with 51
        // answers a sync word there too.
        int start = frameBuf_.indexOf(char(kRequestStart));
        if (start < 0)
            start = frameBuf_.size();
        for (int i = 0; i < start; ++i) {
            syncWindow_ += frameBuf_[i];
            if (syncWindow_.size() > kSyncWord.size())
                syncWindow_.remove(0, 1);
            if (syncWindow_ == kSyncWord && opt_.syncAnswer == kFrameSyncAnswer) {
                syncWindow_.clear();
                answerSync();
            }
        }
        strayBytes_ += start;
        frameBuf_.remove(0, start);
        if (frameBuf_.size() < 4)
            return;
        const int n = uint8_t(frameBuf_[2]) | uint8_t(frameBuf_[3]) << 8;
        if (frameBuf_.size() < 5 + n)
            return;
        const QByteArray frame = frameBuf_.left(5 + n);
        frameBuf_.remove(0, 5 + n);
        syncWindow_.clear();
        handleFrame(frame);
    }
    if (stage_ == Stage::Firmware && !frameBuf_.isEmpty()) {
        const QByteArray rest = frameBuf_;
        frameBuf_.clear();
        toFirmware(rest);
    }
}

void BoardSim::handleFrame(const QByteArray& frame) {
    const int n = frame.size() - 5;
    const uint8_t type = uint8_t(frame[1]);
    SimFrame record;
    record.raw = frame;
    record.type = type;
    record.payload = frame.mid(4, n);
    record.checkOk = sum8(frame, 4 + n) == uint8_t(frame[4 + n]);
    frames_.push_back(record);
    const QByteArray& payload = record.payload;

    const std::vector<SimFault> faults = takeFaults(SimFault::Target::Frame, type);
    if (!record.checkOk) {
        // The stub refuses what it cannot trust.
        dl_.lastWritten = false;
        log(QStringLiteral("frame type %1 refused: wrong check byte").arg(type));
        frameReply(type, {}, 1, faults);
        return;
    }
    for (const SimFault& f : faults) {
        if (f.kind == SimFault::Kind::State) {
            if (type == kToRam || type == kToFlash)
                dl_.lastWritten = false;
            log(QStringLiteral("frame type %1 refused with state %2").arg(type).arg(f.value));
            frameReply(type, {}, uint8_t(f.value), faults);
            return;
        }
    }

    QByteArray out;
    uint8_t state = 0;
    switch (type) {
    case kPing:
        log(QStringLiteral("ping"));
        break;
    case kToRam:
    case kToFlash:
        state = download(type, payload);
        break;
    case kReadFlash:
    case kEraseRange: {
        const uint32_t addr = payload.size() == 8 ? u32At(payload, 0) : 0;
        const uint32_t size = payload.size() == 8 ? u32At(payload, 4) : 0;
        if (payload.size() != 8 || !inFlash(addr, size) || (type == kReadFlash && size > 0xFFFF)) {
            state = 1;
        } else if (type == kReadFlash) {
            out = flash_.mid(int(addr - opt_.flashBase), int(size));
        } else {
            writeFlash(addr, QByteArray(int(size), char(0xFF)));
        }
        log(QStringLiteral("%1 %2 bytes at %3: state %4")
                .arg(type == kReadFlash ? "read" : "erase")
                .arg(size)
                .arg(hex(addr))
                .arg(state));
        break;
    }
    case kEraseAll:
        flash_.fill(char(0xFF));
        log(QStringLiteral("flash erased"));
        break;
    case kStartSoftware:
        if (payload.size() != 4) {
            state = 1;
            break;
        }
        startedAt_ = u32At(payload, 0);
        break;
    case kChangeBaud: {
        const uint32_t rate = payload.size() == 4 ? u32At(payload, 0) : 0;
        if (rate == 0) {
            state = 1;
            break;
        }
        // The board takes the new rate at once; its reply waits for the host to follow.
        baud_ = rate;
        log(QStringLiteral("board rate now %1").arg(rate));
        break;
    }
    default:
        state = 1;
        log(QStringLiteral("frame type %1 unknown").arg(type));
        break;
    }
    frameReply(type, out, state, faults);
    if (type == kStartSoftware && state == 0) {
        log(QStringLiteral("software started at %1").arg(hex(startedAt_)));
        enterFirmware();
    }
}

// A download frame of type 1 or 2: a header, a block, or a block again after a lost reply.
uint8_t BoardSim::download(int type, const QByteArray& payload) {
    if (payload.size() == 8 && looksLikeHeader(type, payload)) {
        const uint32_t addr = u32At(payload, 0);
        const uint32_t len = u32At(payload, 4);
        dl_ = Download();
        if (type == kToFlash && !inFlash(addr, len)) {
            log(QStringLiteral("download of %1 bytes to %2: flash not enough")
                    .arg(len)
                    .arg(hex(addr)));
            return 2;
        }
        if (type == kToRam && uint64_t(addr) + len > (uint64_t(1) << 32))
            return 1;
        dl_.active = true;
        dl_.type = type;
        dl_.addr = addr;
        dl_.len = len;
        dl_.header = payload;
        log(QStringLiteral("download to %1: %2 bytes at %3")
                .arg(type == kToRam ? "RAM" : "flash")
                .arg(len)
                .arg(hex(addr)));
        return 0;
    }
    if (repeatsLastBlock(type, payload)) {
        ++repeatedBlocks_;
        log(QStringLiteral("block repeated: acknowledged, not written"));
        return 0;
    }
    const bool inProgress = dl_.active && dl_.type == type && dl_.got < dl_.len;
    const int n = payload.size() - 1;
    if (!inProgress || n < 1 || uint8_t(payload[0]) > 1 || uint32_t(n) > dl_.len - dl_.got) {
        dl_.lastWritten = false;
        log(QStringLiteral("block refused"));
        return 1;
    }
    const QByteArray data = payload.mid(1);
    if (type == kToRam)
        writeRam(dl_.addr + dl_.got, data);
    else
        writeFlash(dl_.addr + dl_.got, data);
    ++blockWrites_;
    if (eventLog_)
        log(QStringLiteral("block of %1 bytes at %2").arg(n).arg(hex(dl_.addr + dl_.got)));
    dl_.got += uint32_t(n);
    ++dl_.blocks;
    dl_.largestBlock = std::max(dl_.largestBlock, n);
    dl_.lastWritten = true;
    dl_.lastData = data;
    return 0;
}

// Header and blocks share a frame type; the order tells them apart. An 8-byte payload is a
// header unless a download is under way and it fits as its next block; a header sent again
// because its reply was lost is the same 8 bytes before any block has come.
bool BoardSim::looksLikeHeader(int type, const QByteArray& payload) const {
    const bool inProgress = dl_.active && dl_.type == type && dl_.got < dl_.len;
    if (!inProgress)
        return !repeatsLastBlock(type, payload);
    if (dl_.blocks == 0 && payload == dl_.header)
        return true;
    if (uint8_t(payload[0]) > 1) // no retry mark
        return true;
    const uint32_t remaining = dl_.len - dl_.got;
    if (remaining < 7) // more data than the download has left
        return true;
    // Only the last block of a download is shorter than the others.
    return dl_.largestBlock > 7 && remaining != 7;
}

bool BoardSim::repeatsLastBlock(int type, const QByteArray& payload) const {
    return dl_.type == type && dl_.lastWritten && payload.size() > 1 && payload[0] == 1 &&
           payload.mid(1) == dl_.lastData;
}

void BoardSim::romLineByte(char c) {
    // A line longer than any command is noise: it is given up.
    constexpr int kLongestLine = 256;
    if (c != '\r' && c != '\n') {
        if (romLine_.size() <= kLongestLine)
            romLine_ += c;
        return;
    }
    const QByteArray line = romLine_;
    romLine_.clear();
    if (!line.isEmpty() && line.size() <= kLongestLine && romLineHandler_)
        romLineHandler_(*this, line);
}

void BoardSim::enterFirmware() {
    stage_ = Stage::Firmware;
    romLine_.clear();
    log(QStringLiteral("firmware running"));
    if (firmwareStart_)
        firmwareStart_(*this);
}

void BoardSim::toFirmware(const QByteArray& bytes) {
    firmwareInput_ += bytes;
    if (firmware_)
        firmware_(*this, bytes);
}

// ---- Replies and output ----

std::vector<SimFault> BoardSim::takeFaults(SimFault::Target reply, int type) {
    std::vector<SimFault> taken;
    for (auto it = faults_.begin(); it != faults_.end();) {
        const bool kindTaken = std::any_of(taken.begin(), taken.end(),
                                           [&](const SimFault& f) { return f.kind == it->kind; });
        if (!kindTaken && it->matches(reply, type)) {
            taken.push_back(*it);
            it = faults_.erase(it);
        } else {
            ++it;
        }
    }
    return taken;
}

void BoardSim::byteReply(uint8_t byte, const std::vector<SimFault>& faults) {
    QByteArray bytes(1, char(byte));
    for (const SimFault& f : faults)
        if (f.kind == SimFault::Kind::WrongStart)
            bytes[0] = char(f.value);
    replyBytes(bytes, faults);
}

void BoardSim::frameReply(uint8_t type, const QByteArray& payload, uint8_t state,
                          const std::vector<SimFault>& faults) {
    QByteArray r;
    r += char(kReplyStart);
    r += char(type);
    r += char(payload.size() & 0xFF);
    r += char(payload.size() >> 8 & 0xFF);
    r += payload;
    r += char(state);
    for (const SimFault& f : faults) {
        if (f.kind == SimFault::Kind::WrongStart)
            r[0] = char(f.value);
        if (f.kind == SimFault::Kind::WrongType)
            r[1] = char(type + 1);
    }
    // The check stays right for every fault but the one that spoils it, so that each fault
    // is the only thing wrong with the reply.
    r += char(sum8(r, r.size()));
    for (const SimFault& f : faults)
        if (f.kind == SimFault::Kind::CorruptCheck)
            r[r.size() - 1] = char(uint8_t(r[r.size() - 1]) + 1);
    replyBytes(r, faults);
}

void BoardSim::replyBytes(const QByteArray& bytes, const std::vector<SimFault>& faults) {
    int hold = 0;
    std::vector<int> cuts;
    int pause = 0;
    for (const SimFault& f : faults) {
        switch (f.kind) {
        case SimFault::Kind::Drop:
            log(QStringLiteral("reply dropped"));
            return;
        case SimFault::Kind::Delay:
            hold += f.ms;
            break;
        case SimFault::Kind::Split:
            cuts = f.cuts;
            pause = f.ms;
            break;
        default:
            break;
        }
    }
    int from = 0;
    for (int cut : cuts) {
        if (cut <= from || cut >= bytes.size())
            continue;
        queueOut(bytes.mid(from, cut - from), from == 0 ? hold : pause);
        from = cut;
    }
    queueOut(bytes.mid(from), from == 0 ? hold : pause);
}

void BoardSim::queueOut(const QByteArray& bytes, int holdMs) {
    if (bytes.isEmpty() && holdMs <= 0)
        return;
    OutChunk c;
    c.bytes = bytes;
    c.holdMs = std::max(holdMs, 0);
    c.madeAt = feeding_ ? feedDue_ : Clock::now();
    out_.push_back(c);
}

void BoardSim::pumpOutput(TimePoint now) {
    while (!out_.empty()) {
        OutChunk& c = out_.front();
        if (!c.head) {
            c.head = true;
            c.readyAt = std::max(c.madeAt, outLineFree_) + milliseconds(c.holdMs);
        }
        if (now < c.readyAt)
            return;
        if (!c.started) {
            if (c.bytes.isEmpty()) { // a pause only
                out_.pop_front();
                continue;
            }
            if (!pty_.hostHolds()) {
                // Nobody listens: the bytes are lost on the line.
                ++lostReplies_;
                log(QStringLiteral("%1 bytes lost: the port is closed").arg(c.bytes.size()));
                out_.pop_front();
                continue;
            }
            if (hostBaud_ != baud_) {
                if (now < c.readyAt + milliseconds(opt_.followMs))
                    return;
                ++lostReplies_;
                log(QStringLiteral("%1 bytes lost: host at %2, board at %3")
                        .arg(c.bytes.size())
                        .arg(hostBaud_)
                        .arg(baud_));
                out_.pop_front();
                continue;
            }
            c.started = true;
            // The bytes leave when they are ready; a start that came later only by this
            // thread's own wake-up is not the host's time to pay.
            c.lineStart = now - c.readyAt < milliseconds(1) ? c.readyAt : now;
        }
        int due = c.bytes.size();
        if (opt_.paceAtBaud)
            due = int(std::min<int64_t>(due, (now - c.lineStart) / byteTime()));
        while (c.sent < due) {
            const int w = pty_.write(c.bytes.constData() + c.sent, due - c.sent);
            if (w < 0) {
                c.sent = c.bytes.size(); // the port went away under the bytes
                ++lostReplies_;
                break;
            }
            if (w == 0) {
                outBlocked_ = true;
                return;
            }
            c.sent += w;
        }
        if (c.sent < c.bytes.size())
            return;
        outLineFree_ = opt_.paceAtBaud ? c.lineStart + byteTime() * c.bytes.size() : now;
        out_.pop_front();
        replyOut_ = out_.empty();
        replyOutAt_ = Clock::now();
    }
}

std::chrono::nanoseconds BoardSim::byteTime() const {
    // One start bit, eight data bits, one stop bit.
    return nanoseconds(int64_t(10) * 1000000000 / std::max<uint32_t>(baud_, 1));
}

// ---- Memory ----

bool BoardSim::inFlash(uint32_t addr, uint32_t len) const {
    return addr >= opt_.flashBase && uint64_t(addr - opt_.flashBase) + len <= opt_.flashSize;
}

void BoardSim::flipNextStore(uint32_t addr) {
    Lock lock(mutex_);
    flipAt_ = addr;
}

void BoardSim::writeFlash(uint32_t addr, const QByteArray& bytes) {
    for (int i = 0; i < bytes.size(); ++i) {
        const uint64_t at = uint64_t(addr) + uint64_t(i);
        if (at < opt_.flashBase || at - opt_.flashBase >= opt_.flashSize)
            continue;
        char byte = bytes[i];
        if (int64_t(at) == flipAt_) {
            byte = char(~byte);
            flipAt_ = -1;
        }
        flash_[int(at - opt_.flashBase)] = byte;
    }
}

void BoardSim::writeRam(uint32_t addr, const QByteArray& bytes) {
    for (int i = 0; i < bytes.size();) {
        const uint32_t at = addr + uint32_t(i);
        const uint32_t page = at - at % kRamPage;
        const uint32_t off = at - page;
        const int count = int(std::min<uint32_t>(uint32_t(bytes.size() - i), kRamPage - off));
        QByteArray& p = ram_[page];
        if (p.isEmpty())
            p = QByteArray(int(kRamPage), '\0');
        std::memcpy(p.data() + off, bytes.constData() + i, size_t(count));
        i += count;
    }
}

void BoardSim::resetLocked() {
    stage_ = opt_.framesFromStart ? Stage::Stub : Stage::Rom;
    rom_ = RomState::Sync;
    romBuf_.clear();
    syncWindow_.clear();
    romLine_.clear();
    raw_ = RawTransfer();
    resyncZeros_ = -1;
    resyncCount_ = 0;
    frameBuf_.clear();
    dl_ = Download();
    ram_.clear();
    baud_ = opt_.initialBaud;
    in_.clear();
    inLineFree_ = TimePoint();
    out_.clear();
    outBlocked_ = false;
    replyOut_ = false;
    log(QStringLiteral("board reset"));
}

void BoardSim::log(const QString& line) const {
    if (eventLog_)
        eventLog_(line);
}
