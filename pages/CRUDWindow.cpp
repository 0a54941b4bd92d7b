#include "pages/CRUDWindow.h"

#include "base/PortTable.h"
#include "kit/SysButton.h"
#include "kit/SysComboBox.h"
#include "kit/SysFileSelect.h"
#include "kit/SysGroupBox.h"
#include "kit/SysHLayout.h"
#include "kit/SysLineEdit.h"
#include "kit/SysSerialComboBox.h"
#include "kit/SysVLayout.h"
#include "kit/SysWidget.h"
#include "pages/PageSession.h"
#include "shell/MainWindow.h"

namespace {

const char* const kTheme = "#409eff";
const char* const kOperColor = "#FF0000";
// Flash is read in trunks of this size.
constexpr int kTrunkBytes = 1024;

} // namespace

CRUDWindow::CRUDWindow(QWidget* parent)
    : TabWinBase(parent), session_(std::make_shared<PageSession>(this)) {
    session_->engine.setBlockSize(kTrunkBytes);
    session_->hookEngine(&session_->engine);
    buildSettings();
    buildOperations();
    addWidget(new SysWidget(this));
    setStretchFactor(2, 1);
    const auto setDisabledFromWorker = [this](QVariant on) { setDisabled(on.toBool()); };
    registerMsg(FlashRun::kUploadMsg, setDisabledFromWorker);
    registerMsg(FlashRun::kEraseMsg, setDisabledFromWorker);
}

CRUDWindow::~CRUDWindow() {
    // A worker that is still going keeps the engine; it no longer reaches this page.
    session_->detach();
}

void CRUDWindow::buildSettings() {
    settingsGroup = new SysGroupBox(this, word("crud/setting"));
    addWidget(settingsGroup);
    auto* row = new SysHLayout(settingsGroup);
    const QList<QWidget*> portRow =
        sysMakeSerialRow(word("crud/setting/port"), true, settingsGroup);
    portBox = qobject_cast<SysSerialComboBox*>(portRow.at(1));
    portBox->setObjectName(QStringLiteral("flashPort"));
    const QList<QWidget*> workRow =
        sysMakeComboRow(word("crud/setting/workBaud"), sysBaudRates(), settingsGroup);
    workBaudBox = qobject_cast<SysComboBox*>(workRow.at(1));
    workBaudBox->setCurrentText(QStringLiteral("115200"));
    const QList<QWidget*> uploadRow =
        sysMakeComboRow(word("crud/setting/uploadBaud"), sysBaudRates(), settingsGroup);
    uploadBaudBox = qobject_cast<SysComboBox*>(uploadRow.at(1));
    uploadBaudBox->setCurrentIndex(uploadBaudBox->count() - 1);
    for (QWidget* w : {portRow.at(0), workRow.at(0), uploadRow.at(0)})
        row->addWidget(w);
}

void CRUDWindow::buildOperations() {
    operGroup = new SysGroupBox(this, word("crud/flashOper"));
    operGroup->setThemeColor(kOperColor);
    addWidget(operGroup);
    auto* column = new SysVLayout(operGroup);
    buildUploadGroup();
    buildEraseGroup();
    column->addWidget(uploadGroup);
    column->addWidget(eraseGroup);
    column->addStretch(1);
}

SysButton* CRUDWindow::makeButton(QWidget* parent, const char* key) {
    auto* button = new SysButton(parent, TabWinBase::word(key));
    button->setThemeColor(kTheme);
    return button;
}

SysLineEdit* CRUDWindow::addLineRow(QWidget* parent, QLayout* layout, const char* key) {
    const QList<QWidget*> row = sysMakeLineRow(TabWinBase::word(key), 1, 20, parent);
    layout->addWidget(row.at(0));
    return qobject_cast<SysLineEdit*>(row.at(1));
}

void CRUDWindow::buildUploadGroup() {
    uploadGroup = new SysGroupBox(operGroup, word("crud/flashOper/uploadFlash"));
    auto* column = new SysVLayout(uploadGroup);
    uploadAddrEdit = addLineRow(uploadGroup, column, "crud/flashOper/uploadFlash/startAddr");
    uploadLenEdit = addLineRow(uploadGroup, column, "crud/flashOper/uploadFlash/readLen");
    savePathSelect = new SysFileSelect(uploadGroup, word("crud/flashOper/uploadFlash/savePath"),
                                       {QStringLiteral("*.bin")});
    savePathSelect->setCaption(word("crud/flashOper/uploadFlash/savePath"));
    savePathSelect->setMode(SysFileSelect::SaveFile);
    savePathSelect->setEditable(true);
    savePathSelect->setBorderColor(kTheme);
    column->addWidget(savePathSelect);
    uploadButton = makeButton(uploadGroup, "crud/flashOper/uploadFlash/start");
    column->addWidget(uploadButton);
    connect(uploadButton, &QPushButton::clicked, this, &CRUDWindow::uploadClicked);
}

void CRUDWindow::buildEraseGroup() {
    eraseGroup = new SysGroupBox(operGroup, word("crud/flashOper/eraseFlash"));
    auto* column = new SysVLayout(eraseGroup);
    eraseAddrEdit = addLineRow(eraseGroup, column, "crud/flashOper/eraseFlash/startAddr");
    eraseLenEdit = addLineRow(eraseGroup, column, "crud/flashOper/eraseFlash/eraseLen");
    auto* buttons = new SysHLayout(nullptr);
    eraseAllButton = makeButton(eraseGroup, "crud/flashOper/eraseFlash/eraseAll");
    eraseButton = makeButton(eraseGroup, "crud/flashOper/eraseFlash/start");
    eraseOtaButton = makeButton(eraseGroup, "crud/flashOper/eraseFlash/eraseOtaStatus");
    for (SysButton* b : {eraseAllButton, eraseButton, eraseOtaButton})
        buttons->addWidget(b);
    column->addLayout(buttons);
    connect(eraseAllButton, &QPushButton::clicked, this, &CRUDWindow::eraseAllClicked);
    connect(eraseButton, &QPushButton::clicked, this, &CRUDWindow::eraseClicked);
    connect(eraseOtaButton, &QPushButton::clicked, this, &CRUDWindow::eraseOtaClicked);
}

FlashSettings CRUDWindow::settings(const SysLineEdit* addrEdit, const SysLineEdit* lenEdit) const {
    FlashSettings s;
    s.portText = portBox->currentText();
    s.portNumber = PortTable::numberOf(s.portText);
    s.workBaud = workBaudBox->currentText();
    s.uploadBaud = uploadBaudBox->currentText();
    if (addrEdit)
        s.address = FlashSettings::hexField(addrEdit->text());
    if (lenEdit)
        s.length = FlashSettings::hexField(lenEdit->text());
    s.path = savePathSelect->pathEdit->text().trimmed();
    return s;
}

void CRUDWindow::start(FlashSettings settings, FlashRun::Action action) {
    FlashRun::start(session_, std::move(settings), action);
}

void CRUDWindow::uploadClicked() {
    if (uploadAddrEdit->text().isEmpty() || uploadLenEdit->text().isEmpty() ||
        savePathSelect->pathEdit->text().isEmpty()) {
        addLog(SYS_LOG_ERROR,
               MainWindow::formatText("crud/flashOper/uploadFlash/anyItemCanNotBeEmptyFmt",
                                      uploadGroup->title().toStdString().c_str()));
        return;
    }
    start(settings(uploadAddrEdit, uploadLenEdit), FlashRun::Action::Upload);
}

void CRUDWindow::eraseClicked() {
    if (eraseAddrEdit->text().isEmpty() || eraseLenEdit->text().isEmpty()) {
        addLog(SYS_LOG_ERROR,
               MainWindow::formatText("crud/flashOper/eraseFlash/anyItemCanNotBeEmptyFmt",
                                      eraseGroup->title().toStdString().c_str()));
        return;
    }
    start(settings(eraseAddrEdit, eraseLenEdit), FlashRun::Action::Erase);
}

void CRUDWindow::eraseAllClicked() {
    start(settings(nullptr, nullptr), FlashRun::Action::EraseAll);
}

void CRUDWindow::eraseOtaClicked() {
    start(settings(nullptr, nullptr), FlashRun::Action::EraseOta);
}
