#include "pages/DownloadWindow.h"

#include "base/PortTable.h"
#include "kit/SysButton.h"
#include "kit/SysCheckBox.h"
#include "kit/SysComboBox.h"
#include "kit/SysFileDialog.h"
#include "kit/SysFileSelect.h"
#include "kit/SysGroupBox.h"
#include "kit/SysHLayout.h"
#include "kit/SysLineEdit.h"
#include "kit/SysSerialComboBox.h"
#include "kit/SysStyle.h"
#include "kit/SysTab.h"
#include "kit/SysTable.h"
#include "kit/SysVLayout.h"
#include "kit/SysWidget.h"
#include "pages/DownloadRun.h"
#include "pages/DownloadSession.h"
#include "pages/DownloadSettingFile.h"
#include "shell/MainWindow.h"

#include <QDir>
#include <QFileInfo>
#include <QHeaderView>
#include <QRegExp>
#include <QSettings>

namespace {

std::string fmt(const char* key) {
    return TabWinBase::word(key).toStdString();
}

const char* const kTheme = "#409eff";

} // namespace

DownloadWindow::DownloadWindow(QWidget* parent)
    : TabWinBase(parent), session_(std::make_shared<DownloadSession>(this)) {
    // Turned before anything is in it: turning a full splitter lays out and styles it anew.
    setHorizontal(false);
    buildSettings();
    dlTabs = new SysTab(this);
    addWidget(dlTabs);
    dlTabs->addTab(buildSingleTab(), word("download/dlTab/singleFileDL"));
    dlTabs->addTab(buildAioTab(), word("download/dlTab/allinoneFileDL"));
    dlTabs->setCurrentIndex(1);
    setStretchFactor(1, 1);
    setUpRun();
}

DownloadWindow::~DownloadWindow() {
    // A run that is still going keeps the port and engine; it no longer reaches this page.
    session_->detach();
    qDeleteAll(fileRows);
}

void DownloadWindow::buildSettings() {
    settingsBox = new SysGroupBox(this, word("download/commSetting/title"));
    addWidget(settingsBox);
    auto* row = new SysHLayout(settingsBox);

    const QList<QWidget*> portRow =
        sysMakeSerialRow(word("download/commSetting/port"), true, settingsBox);
    portBox = qobject_cast<SysSerialComboBox*>(portRow.at(1));
    portBox->setObjectName(QStringLiteral("downloadPort"));
    const QList<QWidget*> bootRow =
        sysMakeComboRow(word("download/commSetting/bootBaud"), sysBaudRates(), settingsBox);
    bootBaudBox = qobject_cast<SysComboBox*>(bootRow.at(1));
    bootBaudBox->setCurrentText(QStringLiteral("115200"));
    const QList<QWidget*> dlRow =
        sysMakeComboRow(word("download/commSetting/dlBaud"), sysBaudRates(), settingsBox);
    dlBaudBox = qobject_cast<SysComboBox*>(dlRow.at(1));
    dlBaudBox->setCurrentIndex(dlBaudBox->count() - 1);
    uartBootCheck = new SysCheckBox(settingsBox, word("download/commSetting/uartBoot"));
    uartBootCheck->setChecked(true);
    bigBlockCheck = new SysCheckBox(settingsBox, word("download/commSetting/useBigBlock"));
    bigBlockCheck->setChecked(true);

    for (QWidget* w : {portRow.at(0), bootRow.at(0), dlRow.at(0)})
        row->addWidget(w);
    row->addWidget(uartBootCheck);
    row->addWidget(bigBlockCheck);
}

QWidget* DownloadWindow::buildAioTab() {
    auto* tab = new SysWidget(dlTabs);
    auto* column = new SysVLayout(tab);
    column->setContentsMargins(0, 0, 0, 0);
    auto* line = new SysHLayout(nullptr);
    aioSelect = new SysFileSelect(tab, word("download/dlTab/allinoneFileDL/allinoneFilePath"),
                                  {QStringLiteral("*.bin")});
    aioSelect->setCaption(word("download/dlTab/allinoneFileDL/allinoneFilePath"));
    aioSelect->setBorderColor(kTheme);
    aioSelect->pathEdit->setObjectName(QStringLiteral("downloadImage"));
    aioStartButton = new SysButton(tab, word("download/dlTab/allinoneFileDL/start"));
    aioStartButton->setObjectName(QStringLiteral("downloadImageStart"));
    aioStartButton->setThemeColor(kTheme);
    line->addWidget(aioSelect);
    line->addWidget(aioStartButton);
    column->addLayout(line);
    column->addStretch(100);
    connect(aioStartButton, &QPushButton::clicked, this, [this] { startRun(1); });
    return tab;
}

QWidget* DownloadWindow::buildSingleTab() {
    auto* tab = new SysWidget(dlTabs);
    auto* column = new SysVLayout(tab);
    column->setContentsMargins(0, 0, 0, 0);
    auto* top = new SysHLayout(nullptr);

    stubSelect = new SysFileSelect(tab, word("download/dlTab/singleFileDL/stubSel"),
                                   {QStringLiteral("*.bin")});
    stubSelect->setCaption(word("download/dlTab/singleFileDL/stubSel"));
    stubSelect->setBorderColor(kTheme);
    top->addWidget(stubSelect, 1, Qt::AlignVCenter);

    const QList<QWidget*> addrRow =
        sysMakeLineRow(word("download/dlTab/singleFileDL/startupAddr"), 0, 10, tab);
    startupAddrEdit = qobject_cast<SysLineEdit*>(addrRow.at(1));
    startupAddrEdit->setMinWidth(4);
    startupAddrEdit->setMaxWidth(4);
    startupAddrEdit->setText(QStringLiteral("0x10000"));
    top->addWidget(addrRow.at(0));

    singleStartButton = new SysButton(tab, word("download/dlTab/singleFileDL/start"));
    singleStartButton->setThemeColor(kTheme);
    top->addWidget(singleStartButton);
    connect(singleStartButton, &QPushButton::clicked, this, [this] { startRun(0); });

    actionBox = new SysComboBox(
        tab, word("download/dlTab/singleFileDL/otherFunc/list").split('/', Qt::KeepEmptyParts));
    actionBox->setPlaceholder(word("download/dlTab/singleFileDL/otherFunc"));
    actionBox->setMinWidth(5);
    actionBox->setMaxWidth(5);
    top->addWidget(actionBox);
    connect(actionBox, QOverload<int>::of(&QComboBox::activated), this, [this](int index) {
        switch (index) {
        case 0:
            importSetting();
            break;
        case 1:
            exportSetting();
            break;
        case 2:
            clearList();
            break;
        case 3:
            createAllInOne();
            break;
        default:
            break;
        }
    });

    column->addLayout(top);
    buildFileTable(tab);
    column->addWidget(fileTable);
    return tab;
}

void DownloadWindow::buildFileTable(QWidget* parent) {
    fileTable = new SysTable(
        parent, word("download/dlTab/singleFileDL/fileList/header").split('/', Qt::KeepEmptyParts));
    fileTable->setEditable(false);
    fileTable->setColumnWidth(0, 150);
    fileTable->setColumnWidth(1, 120);
    fileTable->setColumnWidth(3, 150);
    fileTable->flexColumns.insert(2);
    fileTable->setSelectionBehavior(QAbstractItemView::SelectItems);
    fileTable->setColumnAlign(0, Qt::AlignCenter);
    fileTable->setHeaderVerticalPadding(0.25f);
    fileTable->setItemVerticalPadding(0);
    fileTable->setHeaderBackgroundColor(kTheme);
    fileTable->setHeaderTextColor("#FFF");
    fileTable->setSelectionBackgroundColor("#fff");

    fileTable->ensureRow(kFileRows - 1);
    for (int i = 0; i < kFileRows; ++i) {
        auto* row = new FileRow;
        row->select = new SysCheckBox(fileTable);
        row->toRam = new SysCheckBox(fileTable);
        row->file =
            new SysFileSelect(fileTable, word("download/dlTab/singleFileDL/fileList/select"),
                              {QStringLiteral("*.bin")});
        row->file->setCaption(word("download/dlTab/singleFileDL/fileList/select"));
        row->file->setNoBorder();
        row->file->setRadius(0);
        row->file->browseButton->setThemeColor(sysLighten("#C0C0C0", 0.625f));
        row->file->browseButton->setDisabledBackgroundColor(sysLighten("#C0C0C0", 0.75f));
        row->file->browseButton->setTextColor("#666");
        row->file->browseButton->setDisabledTextColor("#999");
        row->addr = new SysLineEdit(fileTable);
        row->addr->setBorderWidth(0);
        row->addr->setRadius(0);
        fileTable->setCellWidgetBox(i, 0, row->select, Qt::AlignCenter);
        fileTable->setCellWidgetBox(i, 1, row->toRam, Qt::AlignCenter);
        fileTable->setCellWidget(i, 2, row->file);
        fileTable->setCellWidget(i, 3, row->addr);
        connect(row->file, &SysFileSelect::selected, this,
                [this, row](const QString& path) { fillRowFromPath(row, path); });
        fileRows.append(row);
    }
}

void DownloadWindow::fillRowFromPath(FileRow* row, const QString& path) {
    QRegExp address(QStringLiteral("(0x|0X){1,1}[a-fA-F0-9]{1,100}"));
    if (address.indexIn(path) < 0)
        return;
    row->addr->setText(address.cap(0));
    row->select->setChecked(true);
}

void DownloadWindow::setUpRun() {
    session_->engine.setLogProgress(true);
    session_->hookEngine(&session_->engine);
    registerMsg(0, [this](QVariant) {
        settingsBox->setDisabled(true);
        dlTabs->setDisabled(true);
    });
    registerMsg(1, [this](QVariant) {
        settingsBox->setDisabled(false);
        dlTabs->setDisabled(false);
    });
}

DownloadSettings::Log DownloadWindow::pageLog() {
    return
        [this](SYS_LOG_LEVEL level, const DownloadSettings::Line& line) { addLog(level, line()); };
}

int DownloadWindow::portNumber() const {
    return PortTable::numberOf(portBox->currentText());
}

DownloadSettings DownloadWindow::settings(int mode) const {
    DownloadSettings s;
    s.runMode = mode;
    s.portNumber = portNumber();
    s.uartBoot = uartBootCheck->isChecked();
    s.bigBlock = bigBlockCheck->isChecked();
    s.bootBaud = bootBaudBox->currentText();
    s.dlBaud = dlBaudBox->currentText();
    s.startupAddr = startupAddrEdit->text();
    s.stubPath = stubSelect->pathEdit->text();
    s.aioPath = aioSelect->pathEdit->text();
    for (const FileRow* row : fileRows)
        s.rows.append({row->select->isChecked(), row->toRam->isChecked(),
                       row->file->pathEdit->text(), row->addr->text()});
    return s;
}

bool DownloadWindow::validateList() {
    return settings(0).validateList(pageLog());
}

bool DownloadWindow::collectEntries(QVector<AioEntry>& out) {
    return settings(0).collectEntries(out, pageLog());
}

void DownloadWindow::startRun(int mode) {
    runMode = mode;
    DownloadRun::start(session_, settings(mode));
}

void DownloadWindow::clearList() {
    for (FileRow* row : fileRows) {
        row->select->setChecked(false);
        row->toRam->setChecked(false);
        row->addr->clear();
        row->file->clear();
    }
}

QString DownloadWindow::settingDir() {
    return QSettings(QStringLiteral("Mosswood"), QStringLiteral("Bramble"))
        .value(QStringLiteral("settingDir"))
        .toString();
}

void DownloadWindow::setSettingDir(const QString& dir) {
    QSettings(QStringLiteral("Mosswood"), QStringLiteral("Bramble"))
        .setValue(QStringLiteral("settingDir"), dir);
}

void DownloadWindow::exportSetting() {
    const QString path = SysFileDialog::getSaveFileName(this, windowTitle(), settingDir(),
                                                        QStringLiteral("*.setting"));
    if (path.isEmpty())
        return;
    setSettingDir(QFileInfo(path).absolutePath());
    const std::string p = path.toStdString();
    const DownloadSettings now = settings(0);
    DownloadSettingFile file;
    file.stubPath = now.stubPath;
    file.startupAddr = now.startupAddr;
    file.rows = now.rows;
    if (!file.write(path))
        logError(fmt("download/dlTab/singleFileDL/saveFileFailedFmt").c_str(), p.c_str());
    else
        logInfo(fmt("download/dlTab/singleFileDL/exportSettingSuccessFmt").c_str(), p.c_str());
}

void DownloadWindow::importSetting() {
    const QString path = SysFileDialog::getOpenFileName(this, windowTitle(), settingDir(),
                                                        QStringLiteral("*.setting"));
    if (path.isEmpty())
        return;
    setSettingDir(QFileInfo(path).absolutePath());
    const std::string p = path.toStdString();
    DownloadSettingFile file;
    const DownloadSettingFile::Outcome outcome = file.read(path, fileRows.size());
    if (outcome == DownloadSettingFile::Outcome::OpenFailed) {
        logError(fmt("download/dlTab/singleFileDL/openSettingFileFailedFmt").c_str(), p.c_str());
        return;
    }
    if (outcome == DownloadSettingFile::Outcome::RootInvalid) {
        logError(fmt("download/dlTab/singleFileDL/rootNodeInvalid").c_str());
        return;
    }
    // What came before an element the reader does not know is shown all the same.
    if (file.hasStub) {
        stubSelect->pathEdit->setText(file.stubPath);
        startupAddrEdit->setText(file.startupAddr);
    }
    for (int n = 0; n < file.rows.size(); ++n) {
        const DownloadRow& from = file.rows[n];
        FileRow* row = fileRows[n];
        row->select->setChecked(from.selected);
        row->toRam->setChecked(from.toRam);
        row->file->pathEdit->setText(from.path);
        row->addr->setText(from.addr);
    }
    if (outcome == DownloadSettingFile::Outcome::NodeInvalid) {
        logError(fmt("download/dlTab/singleFileDL/fileNodeInvalidFmt").c_str(),
                 file.badNode.toStdString().c_str());
        return;
    }
    logInfo(fmt("download/dlTab/singleFileDL/importSettingSuccessFmt").c_str(), p.c_str());
}

void DownloadWindow::createAllInOne() {
    if (!validateList())
        return;
    QVector<AioEntry> entries;
    if (!collectEntries(entries))
        return;
    const QString outPath =
        SysFileDialog::getSaveFileName(this, word("download/dlTab/singleFileDL/otherFunc/saveFile"),
                                       QDir::currentPath(), QStringLiteral("*.bin"));
    if (outPath.isEmpty())
        return;
    const uint32_t stubAddr = startupAddrEdit->text().toUInt(nullptr, 16);
    // Plain words go through the formatter like every logged line, so "%%" shows as "%".
    if (session_->engine.createAio(stubSelect->pathEdit->text(), entries, outPath, stubAddr))
        addLog(SYS_LOG_INFO,
               MainWindow::formatText(
                   "download/dlTab/singleFileDL/otherFunc/createAllInOneFileSuccess"));
    else
        addLog(SYS_LOG_ERROR,
               MainWindow::formatText(
                   "download/dlTab/singleFileDL/otherFunc/createAllInOneFileFailed"));
}
