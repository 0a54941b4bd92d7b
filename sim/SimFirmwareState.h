#pragma once

#include <QByteArray>
#include <QString>

#include <array>
#include <chrono>
#include <cstdint>
#include <map>
#include <vector>

// Everything the simulated firmware knows. The first part lives in flash and efuse and
// outlasts every restart; the second part is the running firmware's and starts afresh each
// time the firmware starts.
struct SimFirmwareState {
    using Clock = std::chrono::steady_clock;

    static constexpr int kEfuseBytes = 128;
    // The NV stores by index: 0 AMT, 1 DEVELOP, 2 CUSTOMER.
    enum Store { Amt = 0, Develop = 1, Customer = 2 };

    struct EfuseWord {
        int offset = 0;
        uint32_t word = 0;
    };

    struct WifiTx {
        bool running = false;
        bool singleTone = false; // "amt_tx_1M": a tone, not packets
        int mode = 0, rate = 0, channel = 0, bandwidth = 0, ruLocation = 0, duty = 0,
            continuesType = 0;
    };

    struct BleTx {
        bool running = false;
        bool singleTone = false;
        int phy = 0, channel = 0, pkgType = 0, pduLength = 0, powerLevel = 0;
    };

    // A receive test: it counts from `since` on, and reports once when stopped.
    struct Rx {
        bool running = false;
        int channel = 0, bandwidth = 0, phy = 0;
        Clock::time_point since;
        int lastCount = -1; // the count of the last stop, -1 before the first
    };

    // Kept across restarts.
    std::array<std::map<QString, QString>, 3> nv;
    std::map<int, QString> macs; // by location
    QByteArray efuse = QByteArray(kEfuseBytes, '\0');
    uint32_t freqOffset = 0;  // the trim word: third << 12 | first << 8 | second
    uint32_t txGain = 0x1234; // gain in the bits above 8
    bool freqOffsetFlag = false;
    bool txGainFlag = false;
    bool finishFlag = false;
    // What the production measurements of the QZ4410 firmware find.
    int freqOffsetReading = 27;       // "amt_phy_tx_freqoffset_test"
    uint32_t txPowerReading = 0x2a2a; // "amt_txpower_cal", given as 8 hex digits
    int dutLost = 0, sigLost = 0;     // "sigdsend": packets each side missed
    int rssi = 200, dutRssi = 190;    // and the strengths, offset by 255

    // Started afresh with the firmware.
    int versionState = 0;
    bool echo = true;
    std::map<uint32_t, uint32_t> registers; // a register never written reads 0
    std::vector<EfuseWord> efusePending;    // burnt by "efuse write_confirmation"
    WifiTx wifiTx;
    Rx wifiRx;
    int dcI = 0, dcQ = 0;
    int cfoFine = 0, cfoCoarse = 0;
    int paBias = 0;
    int apcIndex = -1;
    std::map<int, uint32_t> loLeakage; // by channel
    BleTx bleTx;
    Rx bleRx;
    int bleDcI = 0, bleDcQ = 0;
    int bleTxStep = 0;
    int rfBandwidth = 0; // "rf bw_set"
    bool phyTx = false;
    std::vector<int> phyTxArgs; // the six numbers of the last "amt_phy_tx_test"
    Rx phyRx;

    // The efuse word at a byte offset (little-endian).
    uint32_t efuseWord(int offset) const;
    // The running part back to what a freshly started firmware has.
    void startAfresh(int state, bool echoOn);
};
