#include "sim/SimFirmwareState.h"

uint32_t SimFirmwareState::efuseWord(int offset) const {
    uint32_t w = 0;
    for (int i = 3; i >= 0; --i) {
        const int at = offset + i;
        w = w << 8 | (at >= 0 && at < efuse.size() ? uint8_t(efuse[at]) : 0u);
    }
    return w;
}

void SimFirmwareState::startAfresh(int state, bool echoOn) {
    const SimFirmwareState fresh;
    versionState = state;
    echo = echoOn;
    registers = fresh.registers;
    efusePending = fresh.efusePending;
    wifiTx = fresh.wifiTx;
    wifiRx = fresh.wifiRx;
    dcI = fresh.dcI;
    dcQ = fresh.dcQ;
    cfoFine = fresh.cfoFine;
    cfoCoarse = fresh.cfoCoarse;
    paBias = fresh.paBias;
    apcIndex = fresh.apcIndex;
    loLeakage = fresh.loLeakage;
    bleTx = fresh.bleTx;
    bleRx = fresh.bleRx;
    bleDcI = fresh.bleDcI;
    bleDcQ = fresh.bleDcQ;
    bleTxStep = fresh.bleTxStep;
    rfBandwidth = fresh.rfBandwidth;
    phyTx = fresh.phyTx;
    phyTxArgs = fresh.phyTxArgs;
    phyRx = fresh.phyRx;
}
