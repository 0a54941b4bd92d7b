#include "sim/SimFirmware.h"

#include <QRegularExpression>

#include <algorithm>

namespace {

using Clock = SimFirmwareState::Clock;

// A line longer than any command is noise: it is given up whole.
constexpr int kLongestLine = 1024;
// Where the AES key lies in the efuse, and how many bytes it has.
constexpr int kAesOffset = 0x24;
constexpr int kAesBytes = 16;

const QByteArray kOk("OK\r\n");
const QByteArray kError("ERROR\r\n");

QByteArray comma(const QByteArray& value) {
    return value + ",\r\nOK\r\n";
}

QByteArray hex(uint32_t v) {
    return "0x" + QByteArray::number(v, 16);
}

bool toInt(const QString& s, int& v) {
    bool ok = false;
    v = s.toInt(&ok, 10);
    return ok;
}

// Hexadecimal with or without "0x".
bool toHex(const QString& s, uint32_t& v) {
    bool ok = false;
    v = s.toUInt(&ok, 16);
    return ok;
}

bool in(int v, int low, int high) {
    return v >= low && v <= high;
}

// The numbers behind the command word, exactly n of them.
bool numbers(const QStringList& words, int n, std::vector<int>& out) {
    if (words.size() != n + 1)
        return false;
    out.assign(size_t(n), 0);
    for (int i = 0; i < n; ++i)
        if (!toInt(words[i + 1], out[size_t(i)]))
            return false;
    return true;
}

// A flag argument: "1" or "0".
bool flagArgument(const QStringList& words, bool& flag) {
    std::vector<int> v;
    if (!numbers(words, 1, v) || !in(v[0], 0, 1))
        return false;
    flag = v[0] == 1;
    return true;
}

bool isMac(const QString& s) {
    static const QRegularExpression mac(
        QRegularExpression::anchoredPattern(QStringLiteral("[0-9a-fA-F]{2}(:[0-9a-fA-F]{2}){5}")));
    return mac.match(s).hasMatch();
}

// The text of the line from its n-th word on, inner blanks kept.
QString wordsFrom(const QString& line, int n) {
    return line.section(QLatin1Char(' '), n, -1, QString::SectionSkipEmpty);
}

// A Wi-Fi mode as "amt_tx_start" numbers it, with the rates it has.
bool wifiRateFits(int mode, int rate) {
    switch (mode) {
    case 0:
        return in(rate, 0, 3);
    case 1:
    case 2:
        return in(rate, 0, 7);
    case 5:
    case 8:
        return in(rate, 0, 11);
    default:
        return false;
    }
}

// The QZ4410 numbers its modes 1 (11b), 0 (non-HT) and 3 (HT).
bool phyModeKnown(int mode) {
    return mode == 0 || mode == 1 || mode == 3;
}

} // namespace

SimFirmware::SimFirmware(BoardSim& board) : SimFirmware(board, Options()) {}

SimFirmware::SimFirmware(BoardSim& board, Options options)
    : board_(board), opt_(std::move(options)), random_(opt_.seed) {
    state_.startAfresh(opt_.startState, opt_.echoAtStart);
    board_.setFirmwareStartHandler([this](BoardSim&) { onStart(); });
    board_.setRomLineHandler([this](BoardSim& b, const QByteArray& line) { onRomLine(b, line); });
    board_.setFirmwareHandler([this](BoardSim& b, const QByteArray& bytes) { onBytes(b, bytes); });
}

SimFirmware::~SimFirmware() {
    // Each setter waits for a hook that runs now to return.
    board_.setFirmwareHandler({});
    board_.setRomLineHandler({});
    board_.setFirmwareStartHandler({});
}

SimFirmware::State SimFirmware::state() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return state_;
}

void SimFirmware::change(const std::function<void(State&)>& edit) {
    std::lock_guard<std::mutex> lock(mutex_);
    edit(state_);
}

int SimFirmware::starts() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return starts_;
}

void SimFirmware::inject(const SimLineFault& fault) {
    std::lock_guard<std::mutex> lock(mutex_);
    faults_.push_back(fault);
}

int SimFirmware::pendingFaults() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return int(faults_.size());
}

void SimFirmware::clearFaults() {
    std::lock_guard<std::mutex> lock(mutex_);
    faults_.clear();
}

void SimFirmware::sendText(const QByteArray& bytes, int holdMs) {
    // No lock of ours is held here: the board's thread takes the board's lock before ours.
    board_.send(bytes, holdMs);
}

QStringList SimFirmware::lines() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return lines_;
}

void SimFirmware::clearLines() {
    std::lock_guard<std::mutex> lock(mutex_);
    lines_.clear();
}

bool SimFirmware::waitForLines(int count, int timeoutMs) const {
    std::unique_lock<std::mutex> lock(mutex_);
    return linesChanged_.wait_for(lock, std::chrono::milliseconds(std::max(timeoutMs, 0)),
                                  [&] { return lines_.size() >= count; });
}

// ---- The line ----

void SimFirmware::onStart() {
    std::lock_guard<std::mutex> lock(mutex_);
    state_.startAfresh(opt_.startState, opt_.echoAtStart);
    pending_.clear();
    deafUntil_ = Clock::time_point();
    ++starts_;
}

void SimFirmware::onRomLine(BoardSim& board, const QByteArray& line) {
    const QStringList words = QString::fromUtf8(line).split(QLatin1Char(' '), Qt::SkipEmptyParts);
    int state = -1;
    if (words.size() != 2 || words[0] != QLatin1String("amt_start") || !toInt(words[1], state) ||
        !in(state, 0, opt_.stateCount - 1))
        return; // the firmware did not hear its word in time: the board stays in the ROM
    board.startFirmware();
    std::lock_guard<std::mutex> lock(mutex_);
    noteLine(line);
    state_.versionState = state;
    answer(board, kOk, takeFaults(QString::fromUtf8(line)));
    restartAfter(board, {false, state, opt_.bannerMs});
}

void SimFirmware::onBytes(BoardSim& board, const QByteArray& bytes) {
    std::lock_guard<std::mutex> lock(mutex_);
    for (const char c : bytes) {
        if (Clock::now() < deafUntil_) {
            pending_.clear();
            return; // the firmware is starting: what comes now is lost
        }
        if (c != '\r' && c != '\n') {
            if (pending_.size() <= kLongestLine)
                pending_ += c;
            continue;
        }
        const QByteArray raw = pending_;
        pending_.clear();
        if (raw.size() <= kLongestLine && !QString::fromUtf8(raw).trimmed().isEmpty())
            readLine(board, raw); // a CR LF pair ends one line
    }
}

void SimFirmware::noteLine(const QByteArray& raw) {
    lines_ << QString::fromUtf8(raw);
    linesChanged_.notify_all();
}

void SimFirmware::readLine(BoardSim& board, const QByteArray& raw) {
    noteLine(raw);
    if (state_.echo)
        board.send(raw + "\r\n");
    const QString line = QString::fromUtf8(raw).trimmed();
    const std::vector<SimLineFault> faults = takeFaults(line);
    const auto refuse = std::find_if(faults.begin(), faults.end(), [](const SimLineFault& f) {
        return f.kind == SimLineFault::Kind::Refuse;
    });
    Restart restart;
    QByteArray text;
    if (refuse != faults.end())
        text = (refuse->text.isEmpty() ? QByteArray() : refuse->text + ' ') + kError;
    else
        text = execute(line, restart);
    answer(board, text, faults);
    if (restart.wanted)
        restartAfter(board, restart);
}

std::vector<SimLineFault> SimFirmware::takeFaults(const QString& line) {
    std::vector<SimLineFault> taken;
    for (auto it = faults_.begin(); it != faults_.end();) {
        const bool kindTaken = std::any_of(
            taken.begin(), taken.end(), [&](const SimLineFault& f) { return f.kind == it->kind; });
        if (!kindTaken && it->matches(line)) {
            taken.push_back(*it);
            it = faults_.erase(it);
        } else {
            ++it;
        }
    }
    return taken;
}

void SimFirmware::answer(BoardSim& board, QByteArray text,
                         const std::vector<SimLineFault>& faults) {
    int hold = 0;
    int pause = 0;
    std::vector<int> cuts;
    for (const SimLineFault& f : faults) {
        switch (f.kind) {
        case SimLineFault::Kind::Withhold:
            return;
        case SimLineFault::Kind::Delay:
            hold += f.ms;
            break;
        case SimLineFault::Kind::Split:
            cuts = f.cuts;
            pause = f.ms;
            break;
        case SimLineFault::Kind::Replace:
            text = f.text;
            break;
        case SimLineFault::Kind::Refuse:
            break;
        }
    }
    int from = 0;
    for (const int cut : cuts) {
        if (cut <= from || cut >= text.size())
            continue;
        board.send(text.mid(from, cut - from), from == 0 ? hold : pause);
        from = cut;
    }
    if (from < text.size())
        board.send(text.mid(from), from == 0 ? hold : pause);
}

// The firmware starts again behind the answer: deaf for a moment, then its banner. The NV
// stores, MACs, efuse and calibration stay; the radio and the registers start afresh.
void SimFirmware::restartAfter(BoardSim& board, const Restart& restart) {
    if (restart.wanted) {
        state_.startAfresh(restart.state, opt_.echoAtStart);
        ++starts_;
    }
    deafUntil_ = Clock::now() + std::chrono::milliseconds(restart.deafMs);
    pending_.clear();
    board.send(opt_.banner, restart.deafMs);
}

QByteArray SimFirmware::execute(const QString& line, Restart& restart) {
    Command c{line, line.split(QLatin1Char(' '), Qt::SkipEmptyParts), &restart};
    const auto& table = handlers();
    const auto it = table.find(c.words.value(0));
    return it == table.end() ? kError : (this->*(it->second))(c);
}

const std::map<QString, SimFirmware::Handler>& SimFirmware::handlers() {
    static const std::map<QString, Handler> table = {
        {"get_version_type", &SimFirmware::versionType},
        {"amt_start", &SimFirmware::amtStart},
        {"echoclose", &SimFirmware::echoClose},
        {"reboot", &SimFirmware::reboot},
        {"amt_set_mac", &SimFirmware::setMac},
        {"amt_get_mac", &SimFirmware::getMac},
        {"anvs", &SimFirmware::nvCommand},
        {"anvg", &SimFirmware::nvCommand},
        {"anvd", &SimFirmware::nvCommand},
        {"dnvs", &SimFirmware::nvCommand},
        {"dnvg", &SimFirmware::nvCommand},
        {"dnvd", &SimFirmware::nvCommand},
        {"cnvs", &SimFirmware::nvCommand},
        {"cnvg", &SimFirmware::nvCommand},
        {"cnvd", &SimFirmware::nvCommand},
        {"nvsamt", &SimFirmware::nvSetAmt},
        {"nvgamt", &SimFirmware::nvGetAmt},
        {"amt_set", &SimFirmware::setRegister},
        {"amt_get", &SimFirmware::getRegister},
        {"efuse", &SimFirmware::efuse},
        {"amt_tx_start", &SimFirmware::txStart},
        {"amt_tx_stop", &SimFirmware::txStop},
        {"amt_tx_1M", &SimFirmware::txTone},
        {"amt_rx_start", &SimFirmware::rxStart},
        {"amt_rx_stop", &SimFirmware::rxStop},
        {"amt_tx_dc", &SimFirmware::txDc},
        {"amt_set_cfo", &SimFirmware::setCfo},
        {"amt_set_pa_bias", &SimFirmware::setPaBias},
        {"amt_set_apcindex", &SimFirmware::setApcIndex},
        {"amt_get_freqoffset", &SimFirmware::getFreqOffset},
        {"amt_set_freqoffset", &SimFirmware::setFreqOffset},
        {"amt_get_freqoffset_flag", &SimFirmware::getFlag},
        {"amt_set_freqoffset_flag", &SimFirmware::setFlag},
        {"amt_get_txgain", &SimFirmware::getTxGain},
        {"amt_set_txgain", &SimFirmware::setTxGain},
        {"amt_get_txgain_flag", &SimFirmware::getFlag},
        {"amt_set_txgain_flag", &SimFirmware::setFlag},
        {"amt_get_finish_flag", &SimFirmware::getFlag},
        {"amt_set_finish_flag", &SimFirmware::setFlag},
        {"amt_set_lo_leakage", &SimFirmware::setLoLeakage},
        {"amtBleTxToneStart", &SimFirmware::bleTone},
        {"amtBleTxStart", &SimFirmware::bleTxStart},
        {"amtBleTxStop", &SimFirmware::bleTxStop},
        {"amtBleRxStart", &SimFirmware::bleRxStart},
        {"amtBleRxStop", &SimFirmware::bleRxStop},
        {"amtBleReset", &SimFirmware::bleReset},
        {"amtBleDumpDc", &SimFirmware::bleDc},
        {"bletxstep", &SimFirmware::bleTxStep},
        {"sigdsend", &SimFirmware::signalReport},
        {"get_mac", &SimFirmware::macByLocation},
        {"amt_nv_set", &SimFirmware::amtNvSet},
        {"resystem", &SimFirmware::resystem},
        {"rf", &SimFirmware::rfCommand},
        {"amt_phy_tx_test", &SimFirmware::phyTx},
        {"amt_phy_tx_freqoffset_test", &SimFirmware::freqOffsetTest},
        {"amt_txpower_cal", &SimFirmware::txPowerCal},
        {"amt_phy_rx_test", &SimFirmware::phyRx},
    };
    return table;
}

// Packets counted since the start of a receive test; the test stops.
int SimFirmware::rxCount(State::Rx& rx) const {
    const auto ms =
        std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - rx.since).count();
    rx.running = false;
    rx.lastCount = int(int64_t(ms) * opt_.packetsPerSecond / 1000);
    return rx.lastCount;
}

// ---- The channel ----

QByteArray SimFirmware::versionType(const Command& c) {
    if (c.words.size() != 1)
        return kError;
    return comma(QByteArray::number(state_.versionState));
}

// Sent to a running firmware, the line restarts it in the state asked for.
QByteArray SimFirmware::amtStart(const Command& c) {
    std::vector<int> v;
    if (!numbers(c.words, 1, v) || !in(v[0], 0, opt_.stateCount - 1))
        return kError;
    *c.restart = {true, v[0], opt_.bannerMs};
    return kOk;
}

QByteArray SimFirmware::echoClose(const Command& c) {
    bool on = false;
    if (!flagArgument(c.words, on))
        return kError;
    state_.echo = on;
    return kOk;
}

QByteArray SimFirmware::reboot(const Command& c) {
    if (c.words.size() != 1)
        return kError;
    *c.restart = {true, state_.versionState, opt_.rebootMs};
    return QByteArray();
}

// ---- Board parameters ----

QByteArray SimFirmware::setMac(const Command& c) {
    int location = 0;
    if (c.words.size() != 3 || !toInt(c.words[1], location) || !in(location, 0, 1) ||
        !isMac(c.words[2]))
        return kError;
    state_.macs[location] = c.words[2];
    return kOk;
}

QByteArray SimFirmware::getMac(const Command& c) {
    if (c.words.size() != 1)
        return kError;
    QByteArray text;
    for (const auto& [location, mac] : state_.macs)
        text += "mac" + QByteArray::number(location) + ": " + mac.toUtf8() + "\r\n";
    return (text.isEmpty() ? QByteArray("mac: not set\r\n") : text) + kOk;
}

// anvs/anvg/anvd, dnv* and cnv*: set, get and delete in the AMT, DEVELOP and CUSTOMER stores.
// The name "all" gets or deletes the whole store.
QByteArray SimFirmware::nvCommand(const Command& c) {
    const QString& word = c.words[0];
    auto& store = state_.nv[word[0] == 'a'   ? State::Amt
                            : word[0] == 'd' ? State::Develop
                                             : State::Customer];
    const QChar action = word[3];
    const QString name = c.words.value(1);
    const bool all = name == QLatin1String("all");
    if (action == 's') {
        if (c.words.size() < 3 || all)
            return kError;
        store[name] = wordsFrom(c.line, 2);
        return kOk;
    }
    if (c.words.size() != 2)
        return kError;
    if (action == 'g') {
        if (!all) {
            const auto it = store.find(name);
            return it == store.end() ? kError : "value: " + it->second.toUtf8() + "\r\n" + kOk;
        }
        QByteArray text;
        for (const auto& [key, value] : store)
            text += key.toUtf8() + '=' + value.toUtf8() + "\r\n";
        return text + kOk;
    }
    if (all)
        store.clear();
    else if (store.erase(name) == 0)
        return kError;
    return kOk;
}

// "nvsamt <key> <value>" and "nvgamt <key>" reach the AMT store by key: the test sign is its
// entry TEST_SIGN.
QByteArray SimFirmware::nvSetAmt(const Command& c) {
    if (c.words.size() < 3)
        return kError;
    state_.nv[State::Amt][c.words[1]] = wordsFrom(c.line, 2);
    return "SUCCESS\r\n" + kOk;
}

QByteArray SimFirmware::nvGetAmt(const Command& c) {
    if (c.words.size() != 2)
        return kError;
    const auto& store = state_.nv[State::Amt];
    const auto it = store.find(c.words[1]);
    return it == store.end() ? kError : "value:[" + it->second.toUtf8() + "]\r\n" + kOk;
}

// Registers are words at addresses that are a multiple of 4.
QByteArray SimFirmware::setRegister(const Command& c) {
    uint32_t address = 0;
    uint32_t value = 0;
    if (c.words.size() != 3 || !toHex(c.words[1], address) || address % 4 != 0 ||
        !toHex(c.words[2], value))
        return kError;
    state_.registers[address] = value;
    return kOk;
}

QByteArray SimFirmware::getRegister(const Command& c) {
    uint32_t address = 0;
    if (c.words.size() != 2 || !toHex(c.words[1], address) || address % 4 != 0)
        return kError;
    const auto it = state_.registers.find(address);
    return comma(hex(it == state_.registers.end() ? 0 : it->second));
}

// ---- Efuse ----

QByteArray SimFirmware::efuse(const Command& c) {
    const QString sub = c.words.value(1);
    if (sub == QLatin1String("read"))
        return efuseRead(c);
    if (sub == QLatin1String("write"))
        return efuseWrite(c);
    if (sub == QLatin1String("write_confirmation") && c.words.size() == 2)
        return efuseConfirm();
    if (sub == QLatin1String("write_AES_TRNG") && c.words.size() == 2)
        return efuseAesFromTrng();
    return kError;
}

// "efuse read <offset, hex> <bytes, decimal>": whole words from a word offset, each written as
// 0x and 8 digits and followed by a comma, four to a line.
QByteArray SimFirmware::efuseRead(const Command& c) {
    uint32_t offset = 0;
    int bytes = 0;
    if (c.words.size() != 4 || !toHex(c.words[2], offset) || !toInt(c.words[3], bytes) ||
        offset % 4 != 0 || bytes < 1 || offset + uint32_t(bytes) > uint32_t(State::kEfuseBytes))
        return kError;
    QByteArray text;
    const int words = (bytes + 3) / 4;
    for (int i = 0; i < words; ++i) {
        text += QString::asprintf("0x%08x,", state_.efuseWord(int(offset) + 4 * i)).toLatin1();
        text += (i % 4 == 3 || i == words - 1) ? "\r\n" : " ";
    }
    return text + kOk;
}

// "efuse write <offset> 0x<word, 8 digits> 0x<complement, 8 wide, blank padded>": the word
// waits for "efuse write_confirmation". A complement that does not match refuses the write.
QByteArray SimFirmware::efuseWrite(const Command& c) {
    static const QRegularExpression form(QRegularExpression::anchoredPattern(
        QStringLiteral("efuse\\s+write\\s+(\\S+)\\s+(\\S+)\\s+0x *([0-9a-fA-F]{1,8})")));
    const QRegularExpressionMatch m = form.match(c.line);
    uint32_t offset = 0;
    uint32_t word = 0;
    uint32_t complement = 0;
    if (!m.hasMatch() || !toHex(m.captured(1), offset) || !toHex(m.captured(2), word) ||
        !toHex(m.captured(3), complement))
        return kError;
    if (offset % 4 != 0 || offset + 4 > uint32_t(State::kEfuseBytes) || complement != ~word)
        return kError;
    state_.efusePending = {{int(offset), word}};
    return kOk;
}

// Burns what waits: bits can only be set, so each word is ORed into the area.
QByteArray SimFirmware::efuseConfirm() {
    if (state_.efusePending.empty())
        return kError;
    for (const State::EfuseWord& w : state_.efusePending)
        for (int i = 0; i < 4; ++i)
            state_.efuse[w.offset + i] =
                char(uint8_t(state_.efuse[w.offset + i]) | uint8_t(w.word >> (8 * i)));
    state_.efusePending.clear();
    return kOk;
}

// The chip's generator makes an AES key, which waits for the confirmation like a write.
QByteArray SimFirmware::efuseAesFromTrng() {
    state_.efusePending.clear();
    for (int at = kAesOffset; at < kAesOffset + kAesBytes; at += 4)
        state_.efusePending.push_back({at, random_.generate()});
    return kOk;
}

// ---- Wi-Fi ----

// "amt_tx_start mode rate channel bandwidth ruLocation duty continuesType"; only 11n has 40M,
// on channels 3 to 11.
QByteArray SimFirmware::txStart(const Command& c) {
    std::vector<int> v;
    if (!numbers(c.words, 7, v))
        return kError;
    const int mode = v[0], rate = v[1], channel = v[2], bandwidth = v[3];
    const bool wide = bandwidth == 1;
    if (!wifiRateFits(mode, rate) || !in(bandwidth, 0, 1) || (wide && mode != 2) ||
        !in(channel, wide ? 3 : 1, wide ? 11 : 14) || !in(v[4], 0, 16) || !in(v[5], 0, 100) ||
        !in(v[6], 0, 3))
        return kError;
    state_.wifiTx = {true, false, mode, rate, channel, bandwidth, v[4], v[5], v[6]};
    return kOk;
}

QByteArray SimFirmware::txStop(const Command& c) {
    if (c.words.size() != 1)
        return kError;
    state_.wifiTx.running = false;
    return kOk;
}

QByteArray SimFirmware::txTone(const Command& c) {
    if (c.words.size() != 1)
        return kError;
    state_.wifiTx = State::WifiTx();
    state_.wifiTx.running = true;
    state_.wifiTx.singleTone = true;
    return kOk;
}

QByteArray SimFirmware::rxStart(const Command& c) {
    std::vector<int> v;
    if (!numbers(c.words, 2, v) || !in(v[0], 1, 14) || !in(v[1], 0, 1))
        return kError;
    State::Rx& rx = state_.wifiRx;
    rx.running = true;
    rx.channel = v[0];
    rx.bandwidth = v[1];
    rx.since = Clock::now();
    return kOk;
}

// The count comes only with the stop; without a running test there is none.
QByteArray SimFirmware::rxStop(const Command& c) {
    if (c.words.size() != 1 || !state_.wifiRx.running)
        return kError;
    return comma(QByteArray::number(rxCount(state_.wifiRx)));
}

// The DC value carries I in the bits above 12 and Q in the 12 below.
QByteArray SimFirmware::txDc(const Command& c) {
    uint32_t v = 0;
    if (c.words.size() != 2 || !toHex(c.words[1], v) || v > 0xFFFFFF)
        return kError;
    state_.dcI = int(v >> 12);
    state_.dcQ = int(v & 0xFFF);
    return kOk;
}

QByteArray SimFirmware::setCfo(const Command& c) {
    std::vector<int> v;
    if (!numbers(c.words, 2, v))
        return kError;
    state_.cfoFine = v[0];
    state_.cfoCoarse = v[1];
    return kOk;
}

QByteArray SimFirmware::setPaBias(const Command& c) {
    std::vector<int> v;
    if (!numbers(c.words, 1, v))
        return kError;
    state_.paBias = v[0];
    return kOk;
}

// The power index applies to a running transmitter; a refusal says why before "ERROR".
QByteArray SimFirmware::setApcIndex(const Command& c) {
    std::vector<int> v;
    if (!numbers(c.words, 1, v))
        return kError;
    if (!state_.wifiTx.running || state_.wifiTx.singleTone)
        return "tx test not running " + kError;
    if (!in(v[0], 0, 127))
        return "apc index " + QByteArray::number(v[0]) + " out of range " + kError;
    state_.apcIndex = v[0];
    return kOk;
}

QByteArray SimFirmware::getFreqOffset(const Command& c) {
    if (c.words.size() != 1)
        return kError;
    return comma(hex(state_.freqOffset));
}

// "amt_set_freqoffset first second third", each 0 to 15, into the trim word; bits 4 to 7 of
// the word belong to something else and stay.
QByteArray SimFirmware::setFreqOffset(const Command& c) {
    std::vector<int> v;
    if (!numbers(c.words, 3, v) || !in(v[0], 0, 15) || !in(v[1], 0, 15) || !in(v[2], 0, 15))
        return kError;
    state_.freqOffset = (state_.freqOffset & 0xFFFF00F0u) | uint32_t(v[2]) << 12 |
                        uint32_t(v[0]) << 8 | uint32_t(v[1]);
    return kOk;
}

QByteArray SimFirmware::getFlag(const Command& c) {
    if (c.words.size() != 1)
        return kError;
    const QString& w = c.words[0];
    const bool flag = w.contains(QLatin1String("freqoffset")) ? state_.freqOffsetFlag
                      : w.contains(QLatin1String("txgain"))   ? state_.txGainFlag
                                                              : state_.finishFlag;
    return comma(flag ? "1" : "0");
}

QByteArray SimFirmware::setFlag(const Command& c) {
    bool on = false;
    if (!flagArgument(c.words, on))
        return kError;
    const QString& w = c.words[0];
    (w.contains(QLatin1String("freqoffset")) ? state_.freqOffsetFlag
     : w.contains(QLatin1String("txgain"))   ? state_.txGainFlag
                                             : state_.finishFlag) = on;
    return kOk;
}

// The gain word holds the gain above bit 8 and a fine part below it, given in decimal.
QByteArray SimFirmware::getTxGain(const Command& c) {
    if (c.words.size() != 1)
        return kError;
    return comma(QByteArray::number(state_.txGain));
}

QByteArray SimFirmware::setTxGain(const Command& c) {
    std::vector<int> v;
    if (!numbers(c.words, 1, v) || !in(v[0], 0, 0xFFFF))
        return kError;
    state_.txGain = uint32_t(v[0]) << 8 | (state_.txGain & 0xFF);
    return kOk;
}

QByteArray SimFirmware::setLoLeakage(const Command& c) {
    int channel = 0;
    uint32_t value = 0;
    if (c.words.size() != 3 || !toInt(c.words[1], channel) || !in(channel, 1, 14) ||
        !toHex(c.words[2], value))
        return kError;
    state_.loLeakage[channel] = value;
    return kOk;
}

// ---- BLE ----

QByteArray SimFirmware::bleTone(const Command& c) {
    std::vector<int> v;
    if (!numbers(c.words, 3, v) || !in(v[0], 0, 3) || !in(v[1], 0, 39) || !in(v[2], 0, 7))
        return kError;
    state_.bleTx = {true, true, v[0], v[1], 0, 0, v[2]};
    return kOk;
}

// "amtBleTxStart phy channel pkgType pduLength powerLevel".
QByteArray SimFirmware::bleTxStart(const Command& c) {
    std::vector<int> v;
    if (!numbers(c.words, 5, v) || !in(v[0], 0, 3) || !in(v[1], 0, 39) || !in(v[2], 0, 7) ||
        !in(v[3], 0, 255) || !in(v[4], 0, 7))
        return kError;
    state_.bleTx = {true, false, v[0], v[1], v[2], v[3], v[4]};
    return kOk;
}

QByteArray SimFirmware::bleTxStop(const Command& c) {
    if (c.words.size() != 1)
        return kError;
    state_.bleTx.running = false;
    return kOk;
}

QByteArray SimFirmware::bleRxStart(const Command& c) {
    std::vector<int> v;
    if (!numbers(c.words, 2, v) || !in(v[0], 0, 3) || !in(v[1], 0, 39))
        return kError;
    State::Rx& rx = state_.bleRx;
    rx.running = true;
    rx.phy = v[0];
    rx.channel = v[1];
    rx.since = Clock::now();
    return kOk;
}

QByteArray SimFirmware::bleRxStop(const Command& c) {
    if (c.words.size() != 1 || !state_.bleRx.running)
        return kError;
    return comma(QByteArray::number(rxCount(state_.bleRx)));
}

QByteArray SimFirmware::bleReset(const Command& c) {
    if (c.words.size() != 1)
        return kError;
    state_.bleTx = State::BleTx();
    state_.bleRx.running = false;
    state_.bleDcI = state_.bleDcQ = 0;
    state_.bleTxStep = 0;
    return kOk;
}

QByteArray SimFirmware::bleDc(const Command& c) {
    uint32_t v = 0;
    if (c.words.size() != 2 || !toHex(c.words[1], v) || v > 0xFFFFFF)
        return kError;
    state_.bleDcI = int(v >> 12);
    state_.bleDcQ = int(v & 0xFFF);
    return kOk;
}

QByteArray SimFirmware::bleTxStep(const Command& c) {
    std::vector<int> v;
    if (!numbers(c.words, 1, v))
        return kError;
    state_.bleTxStep = v[0];
    return kOk;
}

// ---- Production commands of the QZ4410 firmware ----

// "sigdsend <count>": the board and the tester each send count packets (at most 250 count)
// and report what they received, with nothing behind the last comma.
QByteArray SimFirmware::signalReport(const Command& c) {
    std::vector<int> v;
    if (!numbers(c.words, 1, v) || v[0] < 1)
        return kError;
    const int sent = std::min(v[0], 250);
    return QString::asprintf("DUTR:%d,SIGR:%d,RSSI:%d,DUT_RSSI:%d,",
                             std::max(sent - state_.dutLost, 0), std::max(sent - state_.sigLost, 0),
                             state_.rssi, state_.dutRssi)
        .toLatin1();
}

// "get_mac <location>": 1 is the one-time-programmed MAC, 0 the AMT one; both are told as
// "OTP MAC:".
QByteArray SimFirmware::macByLocation(const Command& c) {
    std::vector<int> v;
    if (!numbers(c.words, 1, v))
        return kError;
    const auto it = state_.macs.find(v[0]);
    return it == state_.macs.end() ? kError : "OTP MAC:" + it->second.toUtf8() + "\r\n" + kOk;
}

QByteArray SimFirmware::amtNvSet(const Command& c) {
    if (c.words.size() < 3)
        return kError;
    state_.nv[State::Amt][c.words[1]] = wordsFrom(c.line, 2);
    return "SUCCESS\r\n";
}

QByteArray SimFirmware::resystem(const Command& c) {
    if (c.words.size() != 1)
        return kError;
    *c.restart = {true, state_.versionState, opt_.rebootMs};
    return "resystem success\r\n";
}

// "rf bw_set <0|1>".
QByteArray SimFirmware::rfCommand(const Command& c) {
    int bandwidth = 0;
    if (c.words.size() != 3 || c.words[1] != QLatin1String("bw_set") ||
        !toInt(c.words[2], bandwidth) || !in(bandwidth, 0, 1))
        return kError;
    state_.rfBandwidth = bandwidth;
    return kOk;
}

// "amt_phy_tx_test channel bandwidth mode rate limit on": the last number starts (1) or
// stops (0) the transmitter.
QByteArray SimFirmware::phyTx(const Command& c) {
    std::vector<int> v;
    if (!numbers(c.words, 6, v) || !in(v[0], 1, 14) || !in(v[1], 0, 1) || !phyModeKnown(v[2]) ||
        v[3] < 0 || v[4] < 0 || !in(v[5], 0, 1))
        return kError;
    state_.phyTx = v[5] == 1;
    state_.phyTxArgs = v;
    return kOk;
}

// "amt_phy_tx_freqoffset_test channel bandwidth mode rate limit 1 sixth": a transmission whose
// frequency offset the firmware measures.
QByteArray SimFirmware::freqOffsetTest(const Command& c) {
    std::vector<int> v;
    if (!numbers(c.words, 7, v) || !in(v[0], 1, 14) || !in(v[1], 0, 1) || !phyModeKnown(v[2]) ||
        v[4] < 0 || v[5] != 1)
        return kError;
    return "freqoffset:" + QByteArray::number(state_.freqOffsetReading) + "\r\n" + kOk;
}

// "amt_txpower_cal channel mode": the power register found, as 8 hex digits.
QByteArray SimFirmware::txPowerCal(const Command& c) {
    std::vector<int> v;
    if (!numbers(c.words, 2, v) || !in(v[0], 1, 14) || !phyModeKnown(v[1]))
        return kError;
    return QString::asprintf("txpower:%08x\r\n", state_.txPowerReading).toLatin1() + kOk;
}

// "amt_phy_rx_test channel 1" starts counting (the count starts at 0), "... 0" stops and tells.
QByteArray SimFirmware::phyRx(const Command& c) {
    std::vector<int> v;
    if (!numbers(c.words, 2, v) || !in(v[0], 1, 14) || !in(v[1], 0, 1))
        return kError;
    State::Rx& rx = state_.phyRx;
    if (v[1] == 1) {
        rx.running = true;
        rx.channel = v[0];
        rx.since = Clock::now();
        return "reccount 0 end\r\n" + kOk;
    }
    if (!rx.running)
        return kError;
    return "reccount " + QByteArray::number(rxCount(rx)) + " end\r\n" + kOk;
}
