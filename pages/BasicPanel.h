#pragma once

#include "kit/SysWidget.h"

class CmdWindow;
class PingServer;
class SysButton;
class SysComboBox;
class SysLineEdit;

// The command page's first tab: the everyday firmware controls (version state, echo, restart,
// registers, MAC and NV entries), each button one engine call on the page's port and one
// outcome line, and the ping test group beside them.
class BasicPanel : public SysWidget {
    Q_OBJECT
public:
    BasicPanel(CmdWindow* page, QWidget* parent);

    // Button handlers, on the interface thread.
    void switchVersion();
    void switchEcho();
    void hardwareRestart();
    void softwareRestart();
    void readRegister();
    void writeRegister();
    void writeMac();
    void readMac();
    void writeNv();
    void readNv();
    void removeNv();
    void readAllNv();
    void readVersionState();

    SysComboBox* versionBox = nullptr;
    SysButton* versionButton = nullptr;
    SysComboBox* echoBox = nullptr;
    SysButton* echoButton = nullptr;
    SysButton* hardRestartButton = nullptr;
    SysButton* softRestartButton = nullptr;
    SysLineEdit* regAddrEdit = nullptr;
    SysLineEdit* regValueEdit = nullptr;
    SysButton* regReadButton = nullptr;
    SysButton* regWriteButton = nullptr;
    SysLineEdit* macEdit = nullptr;
    SysComboBox* macLocationBox = nullptr;
    SysButton* macWriteButton = nullptr;
    SysButton* macReadButton = nullptr;
    SysLineEdit* nvNameEdit = nullptr;
    SysLineEdit* nvValueEdit = nullptr;
    SysComboBox* nvTypeBox = nullptr;
    SysButton* nvWriteButton = nullptr;
    SysButton* nvReadButton = nullptr;
    SysButton* nvRemoveButton = nullptr;
    SysButton* nvReadAllButton = nullptr;
    // Asks the firmware for its version state; it has no place on the tab.
    SysButton* versionStateButton = nullptr;
    PingServer* pingServer = nullptr;

private:
    // A list of states with its button: the version and echo groups.
    QWidget* buildSwitchGroup(const char* titleKey, const char* listKey, const char* execKey,
                              void (BasicPanel::*handler)(), SysComboBox** box, SysButton** exec);
    QWidget* buildRestartGroup();
    QWidget* buildRegisterGroup();
    QWidget* buildMacGroup();
    QWidget* buildNvGroup();
    // False, with the page's line, when the port is closed.
    bool portOpen();
    // Turns echo off after a restart, once the board has had time to come back.
    void echoOffAfter(int ms);

    CmdWindow* page_;
};
