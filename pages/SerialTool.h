#pragma once

#include "kit/SysSplitter.h"
#include "pages/SerialConfig.h"
#include "pages/SerialRecvThread.h"

#include <QList>
#include <QString>
#include <QTimer>

class ComPort;
class SysButton;
class SysCheckBox;
class SysNumberEdit;
class SysStateButton;
class SysTable;
class SysTextEdit;

// The command page's terminal on the page's port: a line or a hex byte list sent once or
// every N ms, what comes back shown with time stamps beside what was sent, and a table of
// saved commands sent with one click. Every setting and table entry goes to serial.config the
// moment it changes. Reading runs on its own thread, only while the tab is current and the
// port open.
class SerialTool : public SysSplitter {
    Q_OBJECT
public:
    explicit SerialTool(QWidget* parent);
    ~SerialTool() override;

    static constexpr int kCmdItems = SerialConfig::kCmdItems;

    // serial.config in the host's configuration folder.
    static QString configPath();
    // Reads serial.config over the defaults (see SerialConfig::read).
    void loadConfig();
    void saveConfig();

    // Sends a line or a hex byte list with the chosen line ends and shows it; false after the
    // failure's line.
    bool sendText(QString text, bool isHex);
    bool sendBytes(QString text, bool isHex, bool withLf, bool withCr);
    void sendInput();
    // Shows text under a stamped head: green for sent, red for received. One call costs the
    // same however much text is shown already.
    void appendOutput(QString text, bool sent, bool stamped);

    // A saved command's widgets, made now if its row was not shown yet.
    SysCheckBox* rowHexBox(int row);
    SysButton* rowSendButton(int row);

    SerialConfig config;

    SysTextEdit* outputEdit = nullptr;
    SysTextEdit* inputEdit = nullptr;
    SysCheckBox* rtsBox = nullptr;
    SysCheckBox* dtrBox = nullptr;
    SysCheckBox* hexSendBox = nullptr;
    SysCheckBox* hexRecvBox = nullptr;
    SysCheckBox* backspaceBox = nullptr;
    SysCheckBox* returnBox = nullptr;
    SysButton* clearButton = nullptr;
    SysNumberEdit* cycleEdit = nullptr;
    SysStateButton* cycleButton = nullptr;
    SysButton* sendButton = nullptr;
    SysTable* cmdTable = nullptr;
    SerialRecvThread recvThread;
    QTimer cycleTimer;

private:
    QWidget* buildOutputGroup(QWidget* parent);
    QWidget* buildInputGroup(QWidget* parent);
    QWidget* buildCmdTable();
    void makeRow(int row);
    // A flag box that writes its setting and saves.
    SysCheckBox* flagBox(QWidget* parent, const QString& text, bool* flag);
    // RTS and DTR reach the board only with the port open; otherwise the box goes back.
    void lineBoxToggled(SysCheckBox* box, bool on, bool* flag, void (ComPort::*set)(bool));
    void cycleClicked();
    // Restarts reading (the tab is current and the port open) or stops it and the cycle.
    void restartReading();
    void stopReading();
    void received(QString text);

    QList<SysCheckBox*> rowHexBoxes_;
    QList<SysButton*> rowSendButtons_;
};
