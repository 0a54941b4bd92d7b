#pragma once

#include "sim/BoardSim.h"
#include "sim/SimFirmwareState.h"
#include "sim/SimLineFault.h"

#include <QByteArray>
#include <QRandomGenerator>
#include <QString>
#include <QStringList>

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <vector>

// The firmware of a simulated board: the text command channel of a running QZ4420 (and the
// production commands of a QZ4410). It hooks itself into a BoardSim for its life:
//
//     BoardSim board;
//     SimFirmware firmware(board);
//
// It starts when the stub starts the software, and after a reset when the line
// "amt_start N" reaches the board in its ROM: a reset pulse cannot be seen on a pty, and a
// real board's firmware takes that line first thing after a reset. It then runs in state N
// and answers "OK". A running firmware takes the same line as a restart into state N;
// "reboot" and "resystem" restart it in its state. Every start keeps the NV stores, MACs,
// efuse and calibration values, and starts the radio, the registers and echo (on) afresh.
//
// Command lines end in a CR or an LF; each gets one answer, in the shapes the tool reads:
//   "<value>,\r\nOK\r\n"          get_version_type, amt_get, amt_rx_stop, amtBleRxStop,
//                                 amt_get_freqoffset (0x hex), amt_get_txgain, the flags
//   "value: <v>\r\nOK\r\n"        anvg/dnvg/cnvg <name>
//   "<name>=<value>\r\n"... "OK\r\n"  anvg/dnvg/cnvg all
//   "mac<location>: <mac>\r\n"... "OK\r\n"  amt_get_mac, locations 0 and 1 in order
//   "0x%08x, 0x%08x,...\r\nOK\r\n"  efuse read (every word followed by a comma)
//   "value:[<sign>]\r\nOK\r\n"    nvgamt <key>; "SUCCESS\r\nOK\r\n" for nvsamt
//   "OTP MAC:<mac>\r\nOK\r\n"     get_mac <location>
//   "DUTR:n,SIGR:n,RSSI:n,DUT_RSSI:n,"  sigdsend, with nothing behind the last comma
//   "freqoffset:<n>\r\nOK\r\n", "txpower:<8 hex>\r\nOK\r\n", "reccount <n> end\r\nOK\r\n"
//   "SUCCESS\r\n" for amt_nv_set, "resystem success\r\n" for resystem, nothing for reboot,
//   "OK\r\n" for the other commands
// and "ERROR\r\n" (no "OK") for a command it does not know or refuses; "amt_set_apcindex"
// puts its reason in front: "<reason> ERROR\r\n". With echo on, each line comes back first,
// followed by CR LF, as on a real board. The NV stores are one map each; nvsamt, nvgamt and
// amt_nv_set reach the AMT store by key, so the test sign is its entry TEST_SIGN.
//
// Every public operation is thread-safe. The hooks run on the board's thread.
class SimFirmware {
public:
    using State = SimFirmwareState;

    struct Options {
        int stateCount = 4; // version states 0 to stateCount - 1
        int startState = 0; // the state after a start by the stub
        bool echoAtStart = true;
        int rebootMs = 100;          // "reboot" and "resystem": deaf this long, then the banner
        int bannerMs = 30;           // "amt_start": deaf this long after the "OK", then the banner
        int packetsPerSecond = 1000; // what a receive test counts
        QByteArray banner = "\r\nQZ4420 AMT firmware\r\nready\r\n";
        quint32 seed = 4420; // for the AES key that "efuse write_AES_TRNG" makes
    };

    explicit SimFirmware(BoardSim& board);
    SimFirmware(BoardSim& board, Options options);
    ~SimFirmware(); // unhooks itself from the board
    SimFirmware(const SimFirmware&) = delete;
    SimFirmware& operator=(const SimFirmware&) = delete;

    State state() const;
    // Changes the state in place, e.g. to give a board a sign or burnt efuse bits.
    void change(const std::function<void(State&)>& edit);
    // Times the firmware has started (by the stub, "amt_start", "reboot", "resystem").
    int starts() const;

    // Test controls. A fault changes the answer to the next line it matches.
    void inject(const SimLineFault& fault);
    int pendingFaults() const;
    void clearFaults();
    // Sends bytes from the board unasked after holdMs: a late "OK", a banner, noise.
    void sendText(const QByteArray& bytes, int holdMs = 0);

    // The command lines the firmware read, in order, without their line ends.
    QStringList lines() const;
    void clearLines();
    // Sleeps until at least count lines were read, or timeoutMs passed.
    bool waitForLines(int count, int timeoutMs) const;

private:
    // What a command does beyond its answer: the firmware starts again.
    struct Restart {
        bool wanted = false;
        int state = 0;
        int deafMs = 0; // input dropped, then the banner
    };

    struct Command {
        QString line;      // trimmed
        QStringList words; // blank-separated, the command word first
        Restart* restart;
    };

    using Handler = QByteArray (SimFirmware::*)(const Command&);

    void onBytes(BoardSim& board, const QByteArray& bytes);
    void onRomLine(BoardSim& board, const QByteArray& line);
    void onStart();
    void readLine(BoardSim& board, const QByteArray& raw);
    void answer(BoardSim& board, QByteArray text, const std::vector<SimLineFault>& faults);
    void restartAfter(BoardSim& board, const Restart& restart);
    std::vector<SimLineFault> takeFaults(const QString& line);
    void noteLine(const QByteArray& raw);
    QByteArray execute(const QString& line, Restart& restart);
    static const std::map<QString, Handler>& handlers();
    int rxCount(State::Rx& rx) const;

    // The channel.
    QByteArray versionType(const Command& c);
    QByteArray amtStart(const Command& c);
    QByteArray echoClose(const Command& c);
    QByteArray reboot(const Command& c);
    // Board parameters.
    QByteArray setMac(const Command& c);
    QByteArray getMac(const Command& c);
    QByteArray nvCommand(const Command& c);
    QByteArray nvSetAmt(const Command& c);
    QByteArray nvGetAmt(const Command& c);
    QByteArray setRegister(const Command& c);
    QByteArray getRegister(const Command& c);
    // Efuse.
    QByteArray efuse(const Command& c);
    QByteArray efuseRead(const Command& c);
    QByteArray efuseWrite(const Command& c);
    QByteArray efuseConfirm();
    QByteArray efuseAesFromTrng();
    // Wi-Fi.
    QByteArray txStart(const Command& c);
    QByteArray txStop(const Command& c);
    QByteArray txTone(const Command& c);
    QByteArray rxStart(const Command& c);
    QByteArray rxStop(const Command& c);
    QByteArray txDc(const Command& c);
    QByteArray setCfo(const Command& c);
    QByteArray setPaBias(const Command& c);
    QByteArray setApcIndex(const Command& c);
    QByteArray getFreqOffset(const Command& c);
    QByteArray setFreqOffset(const Command& c);
    QByteArray getFlag(const Command& c);
    QByteArray setFlag(const Command& c);
    QByteArray getTxGain(const Command& c);
    QByteArray setTxGain(const Command& c);
    QByteArray setLoLeakage(const Command& c);
    // BLE.
    QByteArray bleTone(const Command& c);
    QByteArray bleTxStart(const Command& c);
    QByteArray bleTxStop(const Command& c);
    QByteArray bleRxStart(const Command& c);
    QByteArray bleRxStop(const Command& c);
    QByteArray bleReset(const Command& c);
    QByteArray bleDc(const Command& c);
    QByteArray bleTxStep(const Command& c);
    // Production commands of the QZ4410 firmware.
    QByteArray signalReport(const Command& c);
    QByteArray macByLocation(const Command& c);
    QByteArray amtNvSet(const Command& c);
    QByteArray resystem(const Command& c);
    QByteArray rfCommand(const Command& c);
    QByteArray phyTx(const Command& c);
    QByteArray freqOffsetTest(const Command& c);
    QByteArray txPowerCal(const Command& c);
    QByteArray phyRx(const Command& c);

    BoardSim& board_;
    const Options opt_;
    mutable std::mutex mutex_;
    mutable std::condition_variable linesChanged_;
    State state_;
    QRandomGenerator random_;
    QByteArray pending_; // the line being received
    State::Clock::time_point deafUntil_;
    std::deque<SimLineFault> faults_;
    QStringList lines_;
    int starts_ = 0;
};
