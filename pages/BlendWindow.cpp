#include "pages/BlendWindow.h"

#include "kit/SysComboBox.h"
#include "kit/SysFileDialog.h"
#include "kit/SysGroupBox.h"
#include "kit/SysHLayout.h"
#include "kit/SysLabel.h"
#include "kit/SysLineEdit.h"
#include "kit/SysNumberEdit.h"
#include "kit/SysTable.h"

#include <QFile>

namespace {

constexpr int kPartitionType = 0;
constexpr int kNvType = 1;

} // namespace

BlendWindow::BlendWindow(QWidget* parent) : TabWinBase(parent) {
    hookEngineLog(&utils);
    // Turned before anything is in it: turning a full splitter lays out and styles it anew.
    setHorizontal(false);
    buildSettings();
    buildTable();
    setStretchFactor(1, 1);
}

void BlendWindow::buildSettings() {
    auto* group = new SysGroupBox(this, word("blend/setting/title"));
    addWidget(group);
    auto* row = new SysHLayout(group);
    const QList<QWidget*> type = sysMakeComboRow(
        word("blend/setting/typeSel"), wordList("blend/setting/typeSel/optionList"), group);
    typeBox = qobject_cast<SysComboBox*>(type.at(1));
    typeBox->setCurrentIndex(kNvType);
    typeBox->setMinWidth(2);
    typeBox->setMaxWidth(4);
    const QList<QWidget*> size = sysMakeNumberRow(word("blend/setting/exportSize"), 4, 24, group);
    sizeEdit = qobject_cast<SysNumberEdit*>(size.at(1));
    sizeEdit->setSingleStep(4);
    sizeEdit->setValue(4);
    sizeEdit->setMinWidth(2);
    sizeEdit->setMaxWidth(4);
    importBox = actionBox(group, "blend/setting/importAction",
                          wordList("blend/setting/importAction/optionList"),
                          {&BlendWindow::loadConf, &BlendWindow::loadImage});
    exportBox = actionBox(group, "blend/setting/exportAction",
                          wordList("blend/setting/exportAction/optionList"),
                          {&BlendWindow::saveConf, &BlendWindow::saveImage});
    otherBox = actionBox(group, "blend/setting/otherAction",
                         {word("blend/setting/otherAction/clearList")}, {&BlendWindow::clearTable});
    for (QWidget* w : {type.at(0), size.at(0), static_cast<QWidget*>(importBox),
                       static_cast<QWidget*>(exportBox), static_cast<QWidget*>(otherBox)})
        row->addWidget(w);
}

SysComboBox* BlendWindow::actionBox(QWidget* parent, const char* key, const QStringList& items,
                                    const QList<void (BlendWindow::*)()>& actions) {
    auto* box = new SysComboBox(parent, items);
    box->setPlaceholder(word(key));
    // The placeholder is the last item and has no action.
    connect(box, QOverload<int>::of(&QComboBox::activated), this, [this, actions](int index) {
        if (index >= 0 && index < actions.size())
            (this->*actions[index])();
    });
    return box;
}

void BlendWindow::buildTable() {
    table = new SysTable(this, wordList("blend/editTable/header"));
    addWidget(table);
    table->setEditable(false);
    table->setColumnWidth(0, 60);
    table->setColumnWidth(1, 250);
    table->setColumnWidth(2, 350);
    table->setSelectionBehavior(QAbstractItemView::SelectItems);
    table->setHeaderBackgroundColor("#409eff");
    table->setHeaderTextColor("#FFF");
    table->setSelectionBackgroundColor("#fff");
    table->ensureRow(kRows - 1);
    for (int i = 0; i < kRows; ++i)
        rows_.append(Row());
    // A hundred rows of a label and three fields each would cost the start of the whole
    // program more than every other page: a row's widgets are made when it is first shown.
    table->setRowWidgetMaker([this](int index) { makeRow(index); });
}

void BlendWindow::makeRow(int index) {
    Row& r = rows_[index];
    r.number = rowNumber(table, index + 1);
    table->setCellWidget(index, 0, r.number);
    QString NvItem::*const fields[] = {&NvItem::name, &NvItem::value, &NvItem::desc};
    SysLineEdit* Row::*const edits[] = {&Row::name, &Row::value, &Row::desc};
    for (int column = 0; column < 3; ++column) {
        auto* edit = new SysLineEdit(table);
        edit->setBorderWidth(0);
        edit->setRadius(0);
        edit->setAlignment(Qt::AlignCenter);
        edit->setText(r.texts.*fields[column]);
        QString NvItem::*field = fields[column];
        connect(edit, &QLineEdit::textChanged, this,
                [this, index, field](const QString& text) { rows_[index].texts.*field = text; });
        r.*edits[column] = edit;
        table->setCellWidget(index, column + 1, edit);
    }
}

BlendWindow::Row& BlendWindow::row(int index) {
    table->makeRowWidgets(index);
    return rows_[index];
}

void BlendWindow::setRowTexts(int index, const NvItem& texts) {
    Row& r = rows_[index];
    r.texts = texts;
    if (r.name) {
        r.name->setText(texts.name);
        r.value->setText(texts.value);
        r.desc->setText(texts.desc);
    }
}

QList<NvItem> BlendWindow::readTable() const {
    QList<NvItem> items;
    for (const Row& r : rows_) {
        const NvItem item{r.texts.name.trimmed(), r.texts.value.trimmed(), r.texts.desc.trimmed()};
        if (!item.name.isEmpty())
            items.append(item);
    }
    return items;
}

bool BlendWindow::fillTable(const QList<NvItem>& items) {
    if (items.size() > kRows)
        return false;
    for (int i = 0; i < kRows; ++i)
        setRowTexts(i, i < items.size() ? items[i] : NvItem());
    return true;
}

void BlendWindow::clearTable() {
    fillTable({});
}

QString BlendWindow::openPath(const QString& filter) {
    const QString path =
        SysFileDialog::getOpenFileName(this, word("blend/setting/selectFile"), QString(), filter);
    if (path.isEmpty())
        errorLine("blend/setting/userCancelled");
    return path;
}

QString BlendWindow::savePath(const QString& filter, const QString& suggested) {
    const QString path = SysFileDialog::getSaveFileName(this, windowTitle(), suggested, filter);
    if (path.isEmpty())
        errorLine("blend/setting/userCancelled");
    return path;
}

bool BlendWindow::saveReplacing(const QString& path,
                                const std::function<bool(const QString&)>& save) {
    const QString part = path + QStringLiteral(".part");
    QFile::remove(part);
    if (!save(part)) {
        QFile::remove(part);
        return false;
    }
    QFile::remove(path);
    return QFile::rename(part, path);
}

void BlendWindow::loadConf() {
    const QString path = openPath(QStringLiteral("*.conf"));
    if (path.isEmpty())
        return;
    QList<NvItem> items;
    if (!utils.loadConfFile(path, items)) {
        errorLine("blend/setting/nvSetting/loadFailedFmt", path);
        return;
    }
    if (!fillTable(items)) {
        errorLine("blend/setting/tooManyItemsFmt", path, QString::number(items.size()),
                  QString::number(kRows));
        return;
    }
    infoLine("blend/setting/nvSetting/loadSuccessFmt", path);
}

void BlendWindow::loadImage() {
    const QString path = openPath(QStringLiteral("*.bin"));
    if (path.isEmpty())
        return;
    QList<NvItem> items;
    int type = -1;
    if (!utils.loadNvFile(path, items, type)) {
        errorLine("blend/setting/nvBin/loadFailedFmt", path);
        return;
    }
    if (items.size() > kRows) {
        errorLine("blend/setting/tooManyItemsFmt", path, QString::number(items.size()),
                  QString::number(kRows));
        return;
    }
    typeBox->setCurrentIndex(type);
    fillTable(items);
    infoLine("blend/setting/nvBin/loadSuccessFmt", typeBox->currentText(), path);
}

void BlendWindow::saveConf() {
    const QString path = savePath(QStringLiteral("*.conf"), QString());
    if (path.isEmpty())
        return;
    const QList<NvItem> items = readTable();
    if (saveReplacing(path, [&](const QString& to) { return utils.saveConfFile(items, to); }))
        infoLine("blend/setting/nvSetting/saveSuccessFmt", path);
    else
        errorLine("blend/setting/nvSetting/saveFailedFmt", path);
}

void BlendWindow::saveImage() {
    QList<NvItem> items = readTable();
    const int type = typeBox->currentIndex();
    QString suggested;
    if (type == kPartitionType) {
        if (!partitionCheck(items))
            return;
        suggested = QStringLiteral("partition");
    } else if (type == kNvType) {
        suggested = QStringLiteral("nv");
    } else {
        errorLine("blend/setting/invalidNVBinTypeFmt", QString::number(type));
        return;
    }
    const QString path = savePath(QStringLiteral("*.bin"), suggested + QStringLiteral(".bin"));
    if (path.isEmpty())
        return;
    const int bytes = sizeEdit->value() * 1024;
    if (saveReplacing(path,
                      [&](const QString& to) { return utils.saveNvFile(items, type, to, bytes); }))
        infoLine("blend/setting/saveFileSuccessFmt", typeBox->currentText(), path);
    else
        errorLine("blend/setting/saveFileFailedFmt", typeBox->currentText(), path);
}

bool BlendWindow::partitionCheck(QList<NvItem>& items) {
    if (AppImpleUtils::orderPartitionItems(items))
        return true;
    errorLine("blend/setting/partitionNeedIncludeItemFmt", AppImpleUtils::keyNames().join(','));
    return false;
}
