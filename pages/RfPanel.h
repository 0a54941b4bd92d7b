#pragma once

#include "kit/SysWidget.h"

#include <functional>

class CmdWindow;
class ComPort;
class AppQZ4420Imple;
class SysButton;
class SysComboBox;
class SysNumberEdit;
class SysStateButton;

// What the Wi-Fi and BLE RF tabs share: start/stop buttons whose state follows the firmware's
// answers, the FCC box that works only over a running transmit test, the DC button and the
// outcome lines.
class RfPanel : public SysWidget {
    Q_OBJECT
public:
    // Lays the FCC setting over the radio or takes it off; false after the failure's line.
    virtual bool setFcc(bool enable) = 0;
    // The receive test's button and the DC button.
    virtual void rxClicked() = 0;
    virtual void setDc() = 0;

    SysComboBox* fccBox = nullptr;
    SysStateButton* txButton = nullptr;
    SysStateButton* rxButton = nullptr;
    SysNumberEdit* dcValueEdit = nullptr;
    SysButton* dcButton = nullptr;
    SysNumberEdit* txGainEdit = nullptr;
    SysButton* adjustButton = nullptr;

protected:
    // `startFirstKey` is the line for an FCC choice while no transmit test runs.
    RfPanel(CmdWindow* page, QWidget* parent, const char* startFirstKey);

    // A start/stop button in state "OFF" with the start text, "ON" with the stop text.
    static SysStateButton* runButton(QWidget* parent, const char* startKey, const char* stopKey);
    // Starts in state "OFF", stops in "ON"; the state changes only when the call succeeded.
    static void toggleRun(SysStateButton* button, const std::function<bool()>& start,
                          const std::function<bool()>& stop);
    // Logs the failure or the success key by `ok` and gives `ok` back.
    bool report(bool ok, const char* failedKey, const char* successKey);
    // After a transmit start: the FCC setting when the box asks for it (its outcome aside),
    // then the start's line.
    bool txStarted(bool ok, const char* failedKey, const char* successKey);
    // After a receive stop: its line, then the packets counted.
    bool rxStopped(bool ok, int count, const char* failedKey, const char* successKey,
                   const char* countKey);
    // The DC button: the port must be open, then `set` with the field's value.
    void setDcWith(bool (AppQZ4420Imple::*set)(ComPort&, int), const char* closedKey,
                   const char* failedKey, const char* successKey);
    // Follows the FCC box from now on; call once the box and the TX button are made.
    void watchFccBox();
    // The receive group under `key` with its start/stop button, and the DC group with its
    // value and button.
    QWidget* rxGroup(const QByteArray& key);
    QWidget* dcGroup(const QByteArray& key);

    CmdWindow* page_;

private:
    void fccChanged(int index);
    const char* startFirstKey_;
};
