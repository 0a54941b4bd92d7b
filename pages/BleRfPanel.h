#pragma once

#include "pages/RfPanel.h"

// The command page's BLE RF tab: starts and stops the BLE transmit, receive and single-tone
// tests, sets DC and the power step, resets the BLE radio, and switches the FCC power limit
// over a running transmit test.
class BleRfPanel : public RfPanel {
    Q_OBJECT
public:
    BleRfPanel(CmdWindow* page, QWidget* parent);

    // Handlers, on the interface thread.
    void txClicked();
    void rxClicked() override;
    void toneClicked();
    void setDc() override;
    void adjustPower();
    void resetBle();
    // Sets the power limit register for FCC or back to plain; false when the write failed.
    bool setBleFcc(bool enable);
    bool setFcc(bool enable) override { return setBleFcc(enable); }

    SysComboBox* phyBox = nullptr;
    SysNumberEdit* channelEdit = nullptr;
    SysButton* resetButton = nullptr;
    SysComboBox* powerLevelBox = nullptr;
    SysComboBox* pkgTypeBox = nullptr;
    SysNumberEdit* pduLengthEdit = nullptr;
    SysComboBox* tonePowerLevelBox = nullptr;
    SysStateButton* toneButton = nullptr;

private:
    QWidget* buildParamGroup();
    QWidget* buildTxGroup();
    QWidget* buildToneGroup();
};
