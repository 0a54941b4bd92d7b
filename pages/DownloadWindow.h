#pragma once

#include "pages/DownloadSettings.h"
#include "pages/TabWinBase.h"

#include <QList>

#include <memory>

class DownloadSession;
class SysButton;
class SysCheckBox;
class SysComboBox;
class SysFileSelect;
class SysGroupBox;
class SysLineEdit;
class SysSerialComboBox;
class SysTab;
class SysTable;

// The first tab: port and rates above two ways to download, a stub with a list of single
// files, or one all-in-one image. The start buttons run the download on a thread of its own;
// the page's controls are off while it runs.
class DownloadWindow : public TabWinBase {
    Q_OBJECT
public:
    explicit DownloadWindow(QWidget* parent);
    ~DownloadWindow() override;

    static constexpr int kFileRows = 30;

    // One line of the file list: its widgets live in the table.
    struct FileRow {
        SysCheckBox* select;
        SysCheckBox* toRam;
        SysFileSelect* file;
        SysLineEdit* addr;
    };

    int portNumber() const;
    bool validateList();
    bool collectEntries(QVector<AioEntry>& out);
    // The page's values as a run takes them, for run mode 0 or 1.
    DownloadSettings settings(int mode) const;
    // Starts a run as the start button of that mode does.
    void startRun(int mode);

    // Actions of the file list's menu box, by index.
    void importSetting();
    void exportSetting();
    void clearList();
    void createAllInOne();

    // The folder of the last .setting file, kept between sessions.
    static QString settingDir();
    static void setSettingDir(const QString& dir);

    SysSerialComboBox* portBox = nullptr;
    SysComboBox* bootBaudBox = nullptr;
    SysComboBox* dlBaudBox = nullptr;
    SysCheckBox* uartBootCheck = nullptr;
    SysCheckBox* bigBlockCheck = nullptr;
    SysLineEdit* startupAddrEdit = nullptr;
    SysFileSelect* stubSelect = nullptr;
    SysFileSelect* aioSelect = nullptr;
    SysGroupBox* settingsBox = nullptr;
    SysTab* dlTabs = nullptr;
    SysTable* fileTable = nullptr;
    SysComboBox* actionBox = nullptr;
    SysButton* singleStartButton = nullptr;
    SysButton* aioStartButton = nullptr;
    QList<FileRow*> fileRows;
    int runMode = 0;

private:
    void buildSettings();
    QWidget* buildAioTab();
    QWidget* buildSingleTab();
    void buildFileTable(QWidget* parent);
    void setUpRun();
    DownloadSettings::Log pageLog();
    void fillRowFromPath(FileRow* row, const QString& path);

    std::shared_ptr<DownloadSession> session_;
};
