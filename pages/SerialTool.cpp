#include "pages/SerialTool.h"

#include "base/ComPort.h"
#include "kit/SysButton.h"
#include "kit/SysCheckBox.h"
#include "kit/SysGroupBox.h"
#include "kit/SysHLayout.h"
#include "kit/SysNumberEdit.h"
#include "kit/SysStateButton.h"
#include "kit/SysStyle.h"
#include "kit/SysTab.h"
#include "kit/SysTable.h"
#include "kit/SysTextEdit.h"
#include "kit/SysVLayout.h"
#include "kit/SysWidget.h"
#include "pages/CmdWindow.h"
#include "shell/HostTextService.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QHeaderView>
#include <QPointer>
#include <QTextBlock>
#include <QTextCursor>

namespace {

constexpr int kTerminalTab = 4;

} // namespace

// The page's tab takes the terminal in; until then it has no parent.
SerialTool::SerialTool(QWidget*) : SysSplitter(nullptr) {
    loadConfig();

    // Turned before anything is in it: turning a full splitter lays out and styles it anew.
    setHorizontal(true);
    auto* left = new SysWidget(this);
    auto* column = new SysVLayout(left);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(buildOutputGroup(left), 1);
    column->addWidget(buildInputGroup(left), 0);
    addWidget(left);
    addWidget(buildCmdTable());
    setStretchFactor(1, 1);

    connect(&cycleTimer, &QTimer::timeout, this, &SerialTool::sendInput);
    connect(&recvThread, &SerialRecvThread::recvMessage, this, &SerialTool::received);
    CmdWindow* page = cmdWindowInstance;
    // The tab keeps its hooks longer than the terminal lives.
    QPointer<SerialTool> self(this);
    page->tabWidget()->onTabActive(kTerminalTab, [this, self, page](bool active) {
        // Tabs change while the page takes its panels down, too.
        if (!self || cmdWindowInstance != page || !page->comPort.isOpen())
            return;
        if (active)
            restartReading();
        else
            stopReading();
    });
    connect(page, &CmdWindow::portOpenedSig, this, [this, page](bool opened) {
        if (page->tabWidget()->currentIndex() != kTerminalTab)
            return;
        if (opened)
            restartReading();
        else
            stopReading();
    });
}

SerialTool::~SerialTool() {
    cycleTimer.stop();
    recvThread.stop();
}

QWidget* SerialTool::buildOutputGroup(QWidget* parent) {
    auto* group = new SysGroupBox(parent, TabWinBase::word("cmd/oper/serial/output"));
    auto* row = new SysHLayout(group);
    outputEdit = new SysTextEdit(group);
    outputEdit->setReadOnly(true);
    // A terminal keeps no undo history: it would hold a second copy of all it shows.
    outputEdit->setUndoRedoEnabled(false);
    outputEdit->setScrollBarColor("#409eff");
    row->addWidget(outputEdit);
    return group;
}

QWidget* SerialTool::buildInputGroup(QWidget* parent) {
    auto* group = new SysGroupBox(parent, TabWinBase::word("cmd/oper/serial/input"));
    auto* column = new SysVLayout(group);
    inputEdit = new SysTextEdit(group);
    inputEdit->setFixedHeight(72);
    inputEdit->setScrollBarColor("#409eff");
    inputEdit->setFontWeight(1);
    connect(inputEdit->returnFilter(), &SysEventFilter::ctrlAndReturnPressed, this,
            &SerialTool::sendInput);

    auto* controls = new SysHLayout(nullptr);
    controls->setContentsMargins(0, 0, 0, 0);
    controls->addStretch(1);
    rtsBox = new SysCheckBox(group, QStringLiteral("RTS"));
    rtsBox->setChecked(config.isRTS);
    dtrBox = new SysCheckBox(group, QStringLiteral("DTR"));
    dtrBox->setChecked(config.isDTR);
    hexSendBox =
        flagBox(group, TabWinBase::word("cmd/oper/serial/input/isHexSend"), &config.isHexSend);
    hexRecvBox =
        flagBox(group, TabWinBase::word("cmd/oper/serial/input/isHexRecv"), &config.isHexRecv);
    backspaceBox =
        flagBox(group, TabWinBase::word("cmd/oper/serial/input/isBackspace"), &config.isBackspace);
    returnBox =
        flagBox(group, TabWinBase::word("cmd/oper/serial/input/isReturn"), &config.isReturn);
    clearButton = TabWinBase::button(group, "cmd/oper/serial/input/clearRecvArea",
                                     static_cast<QTextEdit*>(outputEdit), &QTextEdit::clear);
    clearButton->setPadding(0.75f, 0.25f);
    cycleEdit = new SysNumberEdit(group, 0);
    cycleEdit->setRange(0, 65535);
    cycleEdit->setValue(config.cycleValue);
    cycleEdit->setMinWidth(3);
    cycleEdit->setMaxWidth(3);
    cycleButton = new SysStateButton(group);
    cycleButton->addState(
        QStringLiteral("ON"),
        {TabWinBase::word("cmd/oper/serial/input/cycleSend/start"), "#409eff", true}, true);
    cycleButton->addState(
        QStringLiteral("OFF"),
        {TabWinBase::word("cmd/oper/serial/input/cycleSend/stop"), "#FF0000", true});
    cycleButton->setPadding(0.75f, 0.25f);
    sendButton =
        TabWinBase::button(group, "cmd/oper/serial/input/send", this, &SerialTool::sendInput);
    sendButton->setPadding(0.75f, 0.25f);
    for (QWidget* w : {static_cast<QWidget*>(rtsBox), static_cast<QWidget*>(dtrBox),
                       static_cast<QWidget*>(hexSendBox), static_cast<QWidget*>(hexRecvBox),
                       static_cast<QWidget*>(backspaceBox), static_cast<QWidget*>(returnBox),
                       static_cast<QWidget*>(clearButton), static_cast<QWidget*>(cycleEdit),
                       static_cast<QWidget*>(cycleButton), static_cast<QWidget*>(sendButton)})
        controls->addWidget(w);
    column->addWidget(inputEdit);
    column->addLayout(controls);

    // Hooked once the boxes show the file's state, so loading sets no line.
    connect(rtsBox, &QCheckBox::toggled, this,
            [this](bool on) { lineBoxToggled(rtsBox, on, &config.isRTS, &ComPort::setRts); });
    connect(dtrBox, &QCheckBox::toggled, this,
            [this](bool on) { lineBoxToggled(dtrBox, on, &config.isDTR, &ComPort::setDtr); });
    connect(cycleEdit, &SysNumberEdit::valueChangedPrivPriv, this, [this](int value) {
        config.cycleValue = value;
        saveConfig();
    });
    connect(cycleButton, &QPushButton::clicked, this, &SerialTool::cycleClicked);
    connect(cycleButton, &SysStateButton::stateChanged, this, [this](const QString& state) {
        // "OFF" is the state in which the cycle runs: the button offers to stop it.
        const bool cycling = state == QLatin1String("OFF");
        if (cycling)
            cycleTimer.start(cycleEdit->value());
        else
            cycleTimer.stop();
        cycleEdit->setEnabled(!cycling);
    });
    return group;
}

SysCheckBox* SerialTool::flagBox(QWidget* parent, const QString& text, bool* flag) {
    auto* box = new SysCheckBox(parent, text);
    box->setChecked(*flag);
    connect(box, &QCheckBox::toggled, this, [this, flag](bool on) {
        *flag = on;
        saveConfig();
    });
    return box;
}

QWidget* SerialTool::buildCmdTable() {
    auto* group = new SysGroupBox(this, TabWinBase::word("cmd/oper/serial/cmdTable"));
    auto* row = new SysHLayout(group);
    cmdTable = new SysTable(group, TabWinBase::wordList("cmd/oper/serial/cmdTable/header"));
    cmdTable->setColumnWidth(1, 60);
    cmdTable->setColumnWidth(2, 60);
    cmdTable->flexColumns.insert(0);
    cmdTable->horizontalHeader()->setStretchLastSection(false);
    cmdTable->ensureRow(config.cmdList.size() - 1);
    cmdTable->setEditable(true);
    cmdTable->setHeaderBackgroundColor("#409eff");
    cmdTable->setHeaderTextColor("#FFF");
    cmdTable->setGridColor("#409eff");
    cmdTable->setSelectionBackgroundColor(sysLighten("#409eff", 0.95f));
    cmdTable->setScrollBarColor(sysLighten("#409eff", 0.25f));
    for (int i = 0; i < config.cmdList.size(); ++i)
        cmdTable->setCellText(i, 0, config.cmdList[i].cmd);
    for (int i = 0; i < config.cmdList.size(); ++i) {
        rowHexBoxes_.append(nullptr);
        rowSendButtons_.append(nullptr);
    }
    // A hundred rows of a box and a button each would cost the start of the whole program
    // more than the rest of the page: a row's widgets are made when it is first shown.
    cmdTable->setRowWidgetMaker([this](int r) { makeRow(r); });
    connect(cmdTable, &QTableWidget::itemChanged, this, [this](QTableWidgetItem* item) {
        if (item->column() != 0 || item->row() >= config.cmdList.size())
            return;
        config.cmdList[item->row()].cmd = item->text();
        saveConfig();
    });
    row->addWidget(cmdTable);
    return group;
}

void SerialTool::makeRow(int r) {
    auto* hex = new SysCheckBox(cmdTable);
    hex->setChecked(config.cmdList[r].isHex);
    auto* send = new SysButton(cmdTable, TabWinBase::word("cmd/oper/serial/cmdTable/send"));
    send->setPadding(0, 0);
    send->setRadius(0);
    cmdTable->setCellWidgetBox(r, 1, hex, Qt::AlignCenter);
    cmdTable->setCellWidget(r, 2, send);
    rowHexBoxes_[r] = hex;
    rowSendButtons_[r] = send;
    connect(hex, &QCheckBox::toggled, this, [this, r](bool on) {
        config.cmdList[r].isHex = on;
        saveConfig();
    });
    connect(send, &QPushButton::clicked, this, [this, r, send, hex] {
        send->setEnabled(false);
        const QTableWidgetItem* item = cmdTable->item(r, 0);
        sendText(item ? item->text() : QString(), hex->isChecked());
        send->setEnabled(true);
    });
}

SysCheckBox* SerialTool::rowHexBox(int row) {
    cmdTable->makeRowWidgets(row);
    return rowHexBoxes_.value(row);
}

SysButton* SerialTool::rowSendButton(int row) {
    cmdTable->makeRowWidgets(row);
    return rowSendButtons_.value(row);
}

QString SerialTool::configPath() {
    return QStringLiteral("%1/serial.config")
        .arg(MainWindow::instance()->textService()->configDir());
}

void SerialTool::saveConfig() {
    const QString path = configPath();
    QDir().mkpath(QFileInfo(path).absolutePath());
    config.write(path); // a settings file that cannot be written costs nothing but the memory
}

void SerialTool::loadConfig() {
    config.read(configPath());
}

bool SerialTool::sendText(QString text, bool isHex) {
    CmdWindow* page = cmdWindowInstance;
    if (!page->comPort.isOpen()) {
        page->errorLine("cmd/pleaseOpenPort");
        return false;
    }
    if (text.isEmpty()) {
        page->errorLine("cmd/oper/serial/cmdCanNotEmpty");
        return false;
    }
    if (!sendBytes(text, isHex, returnBox->isChecked(), backspaceBox->isChecked())) {
        page->errorLine("cmd/oper/serial/cmdSend/failedFmt", text);
        return false;
    }
    appendOutput(text, true, true);
    page->infoLine("cmd/oper/serial/cmdSend/successFmt", text);
    return true;
}

bool SerialTool::sendBytes(QString text, bool isHex, bool withLf, bool withCr) {
    ComPort& port = cmdWindowInstance->comPort;
    text = text.trimmed();
    if (isHex) {
        ByteBuffer bytes;
        // One blank between bytes; two in a row make an empty byte, sent as 0x00.
        for (const QString& part : text.split(' ', Qt::KeepEmptyParts))
            bytes.appendByte(static_cast<unsigned char>(part.trimmed().toUInt(nullptr, 16)));
        if (withCr)
            bytes.appendByte('\r');
        if (withLf)
            bytes.appendByte('\n');
        return port.write(bytes);
    }
    if (withCr)
        text += QLatin1Char('\r');
    if (withLf)
        text += QLatin1Char('\n');
    return port.write(text.toStdString());
}

void SerialTool::sendInput() {
    inputEdit->setEnabled(false);
    sendText(inputEdit->toPlainText(), hexSendBox->isChecked());
    inputEdit->setEnabled(true);
    inputEdit->setFocus();
}

void SerialTool::cycleClicked() {
    if (!cycleButton->isState(QStringLiteral("ON"))) {
        cycleButton->setState(QStringLiteral("ON"));
        return;
    }
    CmdWindow* page = cmdWindowInstance;
    if (!page->comPort.isOpen()) {
        page->errorLine("cmd/pleaseOpenPort");
        return;
    }
    if (inputEdit->toPlainText().isEmpty()) {
        page->errorLine("cmd/oper/serial/cmdCanNotEmpty");
        return;
    }
    cycleButton->setState(QStringLiteral("OFF"));
}

void SerialTool::lineBoxToggled(SysCheckBox* box, bool on, bool* flag, void (ComPort::*set)(bool)) {
    CmdWindow* page = cmdWindowInstance;
    if (!page->comPort.isOpen()) {
        const bool was = box->blockSignals(true);
        box->setChecked(!on);
        box->blockSignals(was);
        page->errorLine("cmd/pleaseOpenPort");
        return;
    }
    (page->comPort.*set)(on);
    *flag = on;
    saveConfig();
}

void SerialTool::restartReading() {
    recvThread.stop();
    recvThread.begin();
}

void SerialTool::stopReading() {
    recvThread.stop();
    cycleButton->setState(QStringLiteral("ON"));
}

void SerialTool::received(QString text) {
    recvThread.taken();
    appendOutput(text, false, true);
}

void SerialTool::appendOutput(QString text, bool sent, bool stamped) {
    QString head;
    if (stamped) {
        const QDateTime now = QDateTime::currentDateTime();
        const QString stamp = QString::asprintf(
            "%04d-%02d-%02d %02d:%02d:%02d", now.date().year(), now.date().month(),
            now.date().day(), now.time().hour(), now.time().minute(), now.time().second());
        head = QStringLiteral("<span style=\"font-weight: bold; color: %1;\">[%2]:</span><br/>")
                   .arg(sent ? QStringLiteral("green") : QStringLiteral("red"), stamp);
    }
    if (hexRecvBox->isChecked()) {
        if (!sent)
            text = QString::fromLatin1(text.toLocal8Bit().toHex().toUpper());
    } else {
        text.replace(QLatin1String("\r\n"), QLatin1String("<br/>"));
        text.replace(QLatin1Char('\r'), QLatin1String("<br/>"));
        text.replace(QLatin1Char('\n'), QLatin1String("<br/>"));
    }
    // Each piece is a paragraph of its own behind the last, as if the whole document were
    // written again with the piece behind it, but only the piece is parsed and laid out.
    // Written again, a document keeps its blanks (the first piece's collapse) and drops a
    // line break that ends a paragraph; so does this.
    QTextDocument* doc = outputEdit->document();
    QTextCursor cursor(doc);
    cursor.movePosition(QTextCursor::End);
    const bool first = doc->isEmpty();
    if (!first)
        cursor.insertBlock();
    cursor.insertHtml(first ? head + text
                            : QStringLiteral("<span style=\"white-space: pre-wrap;\">") + head +
                                  text + QStringLiteral("</span>"));
    if (cursor.block().text().endsWith(QChar::LineSeparator))
        cursor.deletePreviousChar();
    // The view follows the new text.
    outputEdit->moveCursor(QTextCursor::End);
    outputEdit->ensureCursorVisible();
}
