#include "pages/RfPanel.h"

#include "kit/SysButton.h"
#include "kit/SysComboBox.h"
#include "kit/SysGroupBox.h"
#include "kit/SysHLayout.h"
#include "kit/SysNumberEdit.h"
#include "kit/SysStateButton.h"
#include "kit/SysVLayout.h"
#include "pages/CmdWindow.h"

RfPanel::RfPanel(CmdWindow* page, QWidget* parent, const char* startFirstKey)
    : SysWidget(parent), page_(page), startFirstKey_(startFirstKey) {}

SysStateButton* RfPanel::runButton(QWidget* parent, const char* startKey, const char* stopKey) {
    auto* button = new SysStateButton(parent);
    button->addState(QStringLiteral("OFF"), {TabWinBase::word(startKey), "#409eff", true}, true);
    button->addState(QStringLiteral("ON"), {TabWinBase::word(stopKey), "#FF0000", true});
    return button;
}

void RfPanel::toggleRun(SysStateButton* button, const std::function<bool()>& start,
                        const std::function<bool()>& stop) {
    const bool off = button->isState(QStringLiteral("OFF"));
    if (off ? start() : stop())
        button->setState(off ? QStringLiteral("ON") : QStringLiteral("OFF"));
}

bool RfPanel::report(bool ok, const char* failedKey, const char* successKey) {
    if (ok)
        page_->infoLine(successKey);
    else
        page_->errorLine(failedKey);
    return ok;
}

bool RfPanel::txStarted(bool ok, const char* failedKey, const char* successKey) {
    if (!ok) {
        page_->errorLine(failedKey);
        return false;
    }
    // The setting follows the firmware's "OK"; the test runs whether or not it took.
    if (fccBox->currentIndex() == 1)
        setFcc(true);
    page_->infoLine(successKey);
    return true;
}

bool RfPanel::rxStopped(bool ok, int count, const char* failedKey, const char* successKey,
                        const char* countKey) {
    if (!report(ok, failedKey, successKey))
        return false;
    page_->infoLine(countKey, count);
    return true;
}

void RfPanel::setDcWith(bool (AppQZ4420Imple::*set)(ComPort&, int), const char* closedKey,
                        const char* failedKey, const char* successKey) {
    if (!page_->comPort.isOpen()) {
        page_->errorLine(closedKey);
        return;
    }
    const int value = dcValueEdit->value();
    if ((page_->engine.*set)(page_->comPort, value))
        page_->infoLine(successKey, value);
    else
        page_->errorLine(failedKey, value);
}

QWidget* RfPanel::rxGroup(const QByteArray& key) {
    auto* group = new SysGroupBox(this, TabWinBase::word(key));
    auto* column = new SysVLayout(group);
    rxButton = runButton(group, key + "/start", key + "/stop");
    column->addWidget(rxButton);
    column->addStretch(1);
    connect(rxButton, &QPushButton::clicked, this, &RfPanel::rxClicked);
    return group;
}

QWidget* RfPanel::dcGroup(const QByteArray& key) {
    auto* group = new SysGroupBox(this, TabWinBase::word(key));
    auto* row = new SysHLayout(group);
    const QList<QWidget*> value =
        sysMakeNumberRow(TabWinBase::word(key + "/value"), 0, 0xFFF, group);
    dcValueEdit = qobject_cast<SysNumberEdit*>(value.at(1));
    dcButton = TabWinBase::button(group, key + "/exec", this, &RfPanel::setDc);
    row->addWidget(value.at(0));
    row->addWidget(dcButton);
    return group;
}

void RfPanel::watchFccBox() {
    connect(fccBox, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            &RfPanel::fccChanged);
}

void RfPanel::fccChanged(int index) {
    if (index < 0)
        return;
    if (txButton->isState(QStringLiteral("OFF"))) {
        // The box keeps the choice; the next start applies it.
        page_->errorLine(startFirstKey_);
        return;
    }
    if (!setFcc(index == 1)) {
        // Back to off without another round of writes: what was done stays.
        const bool was = fccBox->blockSignals(true);
        fccBox->setCurrentIndex(0);
        fccBox->blockSignals(was);
    }
}
