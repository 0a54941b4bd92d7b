#pragma once

#include "base/ComPort.h"
#include "engines/AppQZ4420Imple.h"
#include "pages/TabWinBase.h"

#include <cstdint>
#include <map>

class BasicPanel;
class BleRfPanel;
class EfusePanel;
class SerialTool;
class WifiRfPanel;
class SysComboBox;
class SysSerialComboBox;
class SysStateButton;
class SysTab;

// The third tab: drives running firmware through its text commands. Above, the port, its rate
// and one open/close button; below, five panels (basic operations, efuse, Wi-Fi RF, BLE RF,
// serial terminal) that share the page's one port and engine. Panels work on the interface
// thread; each handler checks the port itself, and the page is told when it opens or closes.
class CmdWindow : public TabWinBase {
    Q_OBJECT
public:
    explicit CmdWindow(QWidget* parent);
    ~CmdWindow() override;

    ComPort* port() { return &comPort; }
    SysTab* tabWidget() const { return tabs; }

    // Opens the chosen port at the chosen rate, turns echo off and tells the panels.
    bool openPort(ComPort* port);
    bool closePort(ComPort* port);

    // What every RF test start checks first: an open port and a mode the radio offers. False
    // with the reason's line.
    bool checkRfReady();

    ComPort comPort;
    AppQZ4420Imple engine;
    BasicPanel* basicPanel = nullptr;
    EfusePanel* efusePanel = nullptr;
    WifiRfPanel* wifiPanel = nullptr;
    BleRfPanel* blePanel = nullptr;
    SerialTool* serialTool = nullptr;
    SysSerialComboBox* portCombo = nullptr;
    SysComboBox* baudCombo = nullptr;
    SysStateButton* portButton = nullptr;
    SysTab* tabs = nullptr;
    // Register contents from before the Wi-Fi panel's FCC patch, by settings and address.
    std::map<uint64_t, unsigned> rfTestStates;

signals:
    void portOpenedSig(bool opened);

private:
    void buildSettings();
    void buildTabs();
    void portButtonClicked();
    void baudChanged(const QString& text);
};

// The one command page of the process; the terminal's parts reach the page through it.
extern CmdWindow* cmdWindowInstance;
