#pragma once

#include "pages/RfPanel.h"

#include <cstdint>

// The command page's Wi-Fi RF tab: starts and stops the transmit, receive and single-tone
// tests and trims DC, CFO, PA bias and power while an engineer watches an instrument. The
// rate, bandwidth and channel lists follow the mode, and the FCC box lays a register patch
// over a running transmit test and takes it off again from the registers' backups.
class WifiRfPanel : public RfPanel {
    Q_OBJECT
public:
    WifiRfPanel(CmdWindow* page, QWidget* parent);

    // Handlers, on the interface thread.
    void txClicked();
    void rxClicked() override;
    void startSingleTone();
    void setDc() override;
    void setCfo();
    void setPaBias();
    void adjustPower();
    // Lays the FCC patch over the radio or takes it off; false at the first failed register.
    bool setWifiFcc(bool enable);
    bool setFcc(bool enable) override { return setWifiFcc(enable); }

    // The transmit power limit register, with its FCC and its plain setting.
    static constexpr unsigned kPowerLimit = 0x2030C0;
    static constexpr unsigned kPowerLimitFcc = 0x3F2D3F2D;
    static constexpr unsigned kPowerLimitPlain = 0x3F263F26;

    // Register access that words its own failure; the BLE tab's FCC patch uses it too.
    bool writeRegister(unsigned address, unsigned value);
    bool readRegister(unsigned address, unsigned& value);

    SysComboBox* modeBox = nullptr;
    SysComboBox* rateBox = nullptr;
    SysComboBox* bandwidthBox = nullptr;
    SysNumberEdit* channelEdit = nullptr;
    SysNumberEdit* ruLocationEdit = nullptr;
    SysNumberEdit* dutyEdit = nullptr;
    SysComboBox* continuesTypeBox = nullptr;
    SysButton* singleToneButton = nullptr;
    SysComboBox* cfoFineBox = nullptr;
    SysComboBox* cfoCoarseBox = nullptr;
    SysButton* cfoButton = nullptr;
    SysNumberEdit* paBiasEdit = nullptr;
    SysButton* paBiasButton = nullptr;

private:
    QWidget* buildParamGroup();
    QWidget* buildTxGroup();
    QWidget* buildSingleToneGroup();
    QWidget* buildCfoGroup();
    QWidget* buildPaBiasGroup();
    void modeChanged(int mode);
    void bandwidthChanged(int bandwidth);
    // The backup key: the present mode, rate, channel and bandwidth over the address.
    uint64_t fccKey(unsigned address) const;
    // Scales the gain byte of the gain register by `factor`, then by `second`.
    bool scaleGain(double factor, double second = 1.0);
};
