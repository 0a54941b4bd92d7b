#pragma once

#include "pages/FlashRun.h"
#include "pages/TabWinBase.h"

#include <memory>

class PageSession;
class SysButton;
class SysComboBox;
class SysFileSelect;
class SysGroupBox;
class SysLineEdit;
class SysSerialComboBox;

// The second tab: reads a range of a board's flash to a file, erases a range or the whole
// flash, or erases the OTA status that the board's NV sector points at. The board must already
// speak frames (a stub brought up by the download tab, or its own software). Each action runs
// on a thread of its own with a port of its own; the page is off while it runs.
class CRUDWindow : public TabWinBase {
    Q_OBJECT
public:
    explicit CRUDWindow(QWidget* parent);
    ~CRUDWindow() override;

    // The page's values as a worker takes them at a click.
    FlashSettings settings(const SysLineEdit* addrEdit, const SysLineEdit* lenEdit) const;

    // The four buttons' handlers.
    void uploadClicked();
    void eraseClicked();
    void eraseAllClicked();
    void eraseOtaClicked();

    SysSerialComboBox* portBox = nullptr;
    SysComboBox* workBaudBox = nullptr;
    SysComboBox* uploadBaudBox = nullptr;
    SysGroupBox* settingsGroup = nullptr;
    SysGroupBox* operGroup = nullptr;
    SysGroupBox* uploadGroup = nullptr;
    SysGroupBox* eraseGroup = nullptr;
    SysLineEdit* uploadAddrEdit = nullptr;
    SysLineEdit* uploadLenEdit = nullptr;
    SysFileSelect* savePathSelect = nullptr;
    SysButton* uploadButton = nullptr;
    SysLineEdit* eraseAddrEdit = nullptr;
    SysLineEdit* eraseLenEdit = nullptr;
    SysButton* eraseAllButton = nullptr;
    SysButton* eraseButton = nullptr;
    SysButton* eraseOtaButton = nullptr;

private:
    void buildSettings();
    void buildOperations();
    void buildUploadGroup();
    void buildEraseGroup();
    SysButton* makeButton(QWidget* parent, const char* key);
    SysLineEdit* addLineRow(QWidget* parent, QLayout* layout, const char* key);
    void start(FlashSettings settings, FlashRun::Action action);

    std::shared_ptr<PageSession> session_;
};
