#include "pages/EfusePanel.h"

#include "kit/SysButton.h"
#include "kit/SysComboBox.h"
#include "kit/SysFileDialog.h"
#include "kit/SysGroupBox.h"
#include "kit/SysHLayout.h"
#include "kit/SysLabel.h"
#include "kit/SysLineEdit.h"
#include "kit/SysStyle.h"
#include "kit/SysTable.h"
#include "kit/SysVLayout.h"
#include "pages/CmdWindow.h"

#include <QHeaderView>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <iterator>

namespace {

// The flash encryption counter burns one more bit for each encryption pass.
constexpr unsigned char kCounterCodes[] = {0x00, 0x01, 0x03, 0x07, 0x0F, 0x1F, 0x3F, 0x7F, 0xFF};
constexpr int kCounterOffset = 8;
constexpr int kCounterWidth = 8;

// The two JTAG bits are burnt together: option 1 is both bits.
constexpr int kJtagOffset = 0;
constexpr unsigned char kJtagBurnt = 3;

} // namespace

EfusePanel::EfusePanel(CmdWindow* page, QWidget* parent) : SysWidget(parent), page_(page) {
    auto* column = new SysVLayout(this);
    auto* group = new SysGroupBox(this, TabWinBase::word("cmd/oper/efuse/oper"));
    auto* row = new SysHLayout(group);
    row->addStretch(1);
    readAllButton = new SysButton(group, TabWinBase::word("cmd/oper/efuse/oper/readAll"));
    writeAllButton = new SysButton(group, TabWinBase::word("cmd/oper/efuse/oper/writeAll"));
    row->addWidget(readAllButton);
    row->addWidget(writeAllButton);
    connect(readAllButton, &QPushButton::clicked, this, &EfusePanel::readAll);
    connect(writeAllButton, &QPushButton::clicked, this, &EfusePanel::writeAll);
    column->addWidget(group);
    buildTable();
    column->addWidget(table);
}

void EfusePanel::buildTable() {
    table = new SysTable(this, TabWinBase::wordList("cmd/oper/efuse/table/header"));
    table->setEditable(false);
    table->setColumnWidth(0, 60);
    table->setColumnWidth(1, 200);
    table->setColumnWidth(2, 450);
    table->setColumnWidth(4, 150);
    table->flexColumns.insert(3);
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->setHeaderBackgroundColor("#409eff");
    table->setHeaderTextColor("#FFF");
    // Rows tall enough for the buttons and boxes in them.
    table->verticalHeader()->setDefaultSectionSize(34);

    using namespace std::placeholders;
    const auto option = [this](int offset) {
        return [this, offset](bool isWrite, QString title, QWidget* value) {
            optionField(offset, isWrite, title, value);
        };
    };
    const auto key = [this](int offset, int bytes) {
        return [this, offset, bytes](bool isWrite, QString title, QWidget* value) {
            keyField(offset, bytes, isWrite, title, value);
        };
    };
    addRow("cmd/oper/efuse/table/JTagControl", OptionRow, option(kJtagOffset));
    addRow("cmd/oper/efuse/table/safeBootMode", OptionRow, option(2));
    addRow("cmd/oper/efuse/table/flashEncryptEnabled", OptionRow, option(3));
    addRow("cmd/oper/efuse/table/aesPrivateKeyReadable", OptionRow, option(5));
    addRow("cmd/oper/efuse/table/aesPrivateKeyWritable", OptionRow, option(6));
    addRow("cmd/oper/efuse/table/frequency", OptionRow, option(16));
    addRow("cmd/oper/efuse/table/bootromLogOutput", OptionRow, option(17));
    addRow("cmd/oper/efuse/table/bootromStartupType", OptionRow, option(19));
    addRow("cmd/oper/efuse/table/flashEcryptCount", LabelRow,
           std::bind(&EfusePanel::counterField, this, _1, _2, _3));
    addRow("cmd/oper/efuse/table/aesPrivateKey", KeyRow,
           key(AppQZ4420Imple::kEfuseAesOffset, AppQZ4420Imple::kEfuseAesBytes),
           {std::bind(&EfusePanel::randomKey, this, _1, _2)});
    addRow("cmd/oper/efuse/table/eccPublicKey", KeyRow,
           key(AppQZ4420Imple::kEfuseEccOffset, AppQZ4420Imple::kEfuseEccBytes),
           {std::bind(&EfusePanel::loadKeyFile, this, _1, _2)});
    addRow("cmd/oper/efuse/table/reservedArea", KeyRow,
           key(AppQZ4420Imple::kEfuseReservedOffset, AppQZ4420Imple::kEfuseReservedBytes));
}

void EfusePanel::addRow(const char* titleKey, Kind kind, ReadWrite readWrite,
                        QList<Action> actions) {
    const QByteArray base = titleKey;
    Row row;
    row.title = TabWinBase::word(titleKey);
    row.desc = TabWinBase::word(base + "/desc");
    row.kind = kind;
    row.readWrite = std::move(readWrite);
    row.actions = std::move(actions);
    switch (kind) {
    case LabelRow: {
        auto* label = new SysLabel(table);
        label->setAlignment(Qt::AlignCenter);
        row.value = label;
        break;
    }
    case OptionRow:
        row.value = new SysComboBox(table, TabWinBase::wordList(base + "/optionList"));
        break;
    case KeyRow:
        row.value = new SysLineEdit(table);
        break;
    }

    const int index = rows.size();
    table->ensureRow(index);
    table->setCellWidget(index, 0, TabWinBase::rowNumber(table, index + 1));
    table->setCellText(index, 1, row.title);
    table->setCellText(index, 2, row.desc);
    table->setCellWidget(index, 3, row.value);
    QStringList actionTexts;
    if (!row.actions.isEmpty())
        actionTexts = TabWinBase::wordList(base + "/action/optionList");
    table->setCellWidget(index, 4, rowControls(row, index, actionTexts));
    rows.append(row);
}

QWidget* EfusePanel::rowControls(Row& row, int index, const QStringList& actionTexts) {
    if (row.actions.isEmpty()) {
        row.readButton = new SysButton(table, TabWinBase::word("cmd/oper/efuse/read"));
        row.writeButton = new SysButton(table, TabWinBase::word("cmd/oper/efuse/write"));
        // Two to a 150-pixel cell.
        row.readButton->setPadding(0.25f, 0.125f);
        row.writeButton->setPadding(0.25f, 0.125f);
        connect(row.readButton, &QPushButton::clicked, this, [this, index] {
            const Row& r = rows[index];
            r.readWrite(false, r.title, r.value);
        });
        connect(row.writeButton, &QPushButton::clicked, this, [this, index] {
            const Row& r = rows[index];
            r.readWrite(true, r.title, r.value);
        });
        return sysMakeBoxWidget(table, {row.readButton, row.writeButton}, true, false);
    }
    row.actionBox = new SysComboBox(
        table, TabWinBase::wordList("cmd/oper/efuse/table/procOption/optionList") + actionTexts);
    row.actionBox->setPlaceholder(TabWinBase::word("cmd/oper/efuse/table/procOption"));
    // Index 0 reads, 1 burns, and 2 on are the row's actions, of which only the first does
    // anything.
    connect(row.actionBox, QOverload<int>::of(&QComboBox::activated), this, [this, index](int i) {
        const Row& r = rows[index];
        if (i == 0 || i == 1)
            r.readWrite(i == 1, r.title, r.value);
        else if (i == 2)
            r.actions.first()(r.title, r.value);
    });
    return row.actionBox;
}

void EfusePanel::readAll() {
    for (const Row& row : rows)
        row.readWrite(false, row.title, row.value);
}

void EfusePanel::writeAll() {
    for (const Row& row : rows)
        row.readWrite(true, row.title, row.value);
}

void EfusePanel::optionField(int offset, bool isWrite, const QString& title, QWidget* value) {
    auto* box = static_cast<SysComboBox*>(value);
    const int width = offset == kJtagOffset ? 2 : 1;
    if (isWrite) {
        const int index = box->currentIndex();
        const unsigned char bits = offset == kJtagOffset ? (index == 1 ? kJtagBurnt : 0)
                                                         : static_cast<unsigned char>(index);
        const QString text = box->currentText();
        if (page_->engine.writeStateBits(page_->comPort, offset, width, bits))
            page_->infoLine("cmd/oper/efuse/table/writeKeySuccessFmt", title, text);
        else
            page_->errorLine("cmd/oper/efuse/table/writeKeyFailedFmt", title, text);
        return;
    }
    unsigned char bits = 0;
    if (!page_->engine.readStateBits(page_->comPort, offset, width, bits)) {
        page_->errorLine("cmd/oper/efuse/table/readKeyFailedFmt", title);
        return;
    }
    // Half-burnt JTAG bits (1 or 2) do not lock JTAG: they show as not burnt.
    box->setCurrentIndex(offset == kJtagOffset ? (bits == kJtagBurnt ? 1 : 0) : bits);
    page_->infoLine("cmd/oper/efuse/table/readKeySuccessFmt", title, box->currentText());
}

void EfusePanel::counterField(bool isWrite, const QString& title, QWidget* value) {
    const QStringList texts =
        TabWinBase::wordList("cmd/oper/efuse/table/flashEcryptCount/optionList", ',');
    QString result;
    unsigned char code = 0;
    if (page_->engine.readStateBits(page_->comPort, kCounterOffset, kCounterWidth, code)) {
        const auto* at = std::find(std::begin(kCounterCodes), std::end(kCounterCodes), code);
        const int last = static_cast<int>(std::size(kCounterCodes)) - 1;
        int position = static_cast<int>(at - std::begin(kCounterCodes));
        if (position > last) {
            page_->errorLine("cmd/oper/efuse/table/flashEcryptCount/readInvalidValueFmt",
                             unsigned(code));
        } else if (!isWrite) {
            result = texts.value(position);
        } else {
            // One step up, and a full counter is written as it stands.
            position = std::min(position + 1, last);
            if (page_->engine.writeStateBits(page_->comPort, kCounterOffset, kCounterWidth,
                                             kCounterCodes[position]))
                result = texts.value(position);
        }
    } else if (isWrite) {
        page_->errorLine("cmd/oper/efuse/table/readKeyFailedFmt", title);
    }
    if (result.isNull()) {
        page_->errorLine(isWrite ? "cmd/oper/efuse/table/writeKeyFailedFmt"
                                 : "cmd/oper/efuse/table/readKeyFailedFmt",
                         title);
        return;
    }
    static_cast<SysLabel*>(value)->setText(result);
    page_->infoLine(isWrite ? "cmd/oper/efuse/table/writeKeySuccessFmt"
                            : "cmd/oper/efuse/table/readKeySuccessFmt",
                    title, result);
}

void EfusePanel::keyField(int offset, int bytesInField, bool isWrite, const QString& title,
                          QWidget* value) {
    auto* edit = static_cast<SysLineEdit*>(value);
    if (isWrite) {
        // An empty field is one empty item: the word 0.
        const QStringList items = edit->text().trimmed().split(',', Qt::KeepEmptyParts);
        if (items.size() * 4 > bytesInField) {
            page_->errorLine("cmd/oper/efuse/table/inputItemsMaxFmt", title, bytesInField / 4);
            return;
        }
        QList<unsigned> words;
        for (const QString& item : items)
            words.append(item.toUInt(nullptr, 16));
        if (page_->engine.writeEfuseWords(page_->comPort, offset, words))
            page_->infoLine("cmd/oper/efuse/table/writeKeySuccessFmt", title);
        else
            page_->errorLine("cmd/oper/efuse/table/writeKeyFailedFmt", title);
        return;
    }
    QList<unsigned> words;
    if (!page_->engine.readEfuse(page_->comPort, offset, bytesInField, words)) {
        page_->errorLine("cmd/oper/efuse/table/readKeyFailedFmt", title);
        return;
    }
    QStringList texts;
    for (unsigned word : words)
        texts.append(QString::asprintf("0x%08x", word));
    edit->setText(texts.join(','));
    page_->infoLine("cmd/oper/efuse/table/readKeySuccessFmt", title);
}

void EfusePanel::loadKeyFile(const QString& title, QWidget* value) {
    const QString path =
        SysFileDialog::getOpenFileName(this, title, QString(), QStringLiteral("*.key"));
    if (path.isEmpty()) {
        page_->errorLine("cmd/oper/efuse/table/eccPublicKey/userCancelledFmt", title);
        return;
    }
    QList<unsigned> words;
    if (!page_->engine.loadEccKeyFile(path, words)) {
        page_->errorLine("cmd/oper/efuse/table/eccPublicKey/parseFailedFmt", title);
        return;
    }
    QStringList texts;
    for (unsigned word : words)
        texts.append(QString::asprintf("0x%08X", word));
    static_cast<SysLineEdit*>(value)->setText(texts.join(','));
    page_->infoLine("cmd/oper/efuse/table/eccPublicKey/parseSuccessFmt", title);
}

void EfusePanel::randomKey(const QString& title, QWidget* value) {
    // Each byte from the C library's generator, seeded anew per byte.
    QStringList words;
    QString word;
    for (int i = 0; i < AppQZ4420Imple::kEfuseAesBytes; ++i) {
        std::srand(static_cast<unsigned>(std::time(nullptr) + i));
        word += QString::asprintf("%02X", std::rand() % 256);
        if (i % 4 == 3) {
            words.append(QStringLiteral("0x") + word);
            word.clear();
        }
    }
    static_cast<SysLineEdit*>(value)->setText(words.join(','));
    page_->infoLine("cmd/oper/efuse/table/aesPrivateKey/randomGenerateSuccess", title);
}
