#include "pages/TabWinBase.h"

#include "kit/SysLabel.h"
#include "kit/SysStyle.h"
#include "shell/MainWindow.h"

#include <cstdarg>

TabWinBase::TabWinBase(QWidget* parent) : SysSplitter(parent) {
    connect(
        this, &TabWinBase::msgSig, this,
        [this](int id, QVariant value) {
            const auto it = handlers_.find(id);
            if (it != handlers_.end())
                it->second(value);
        },
        Qt::AutoConnection);
}

void TabWinBase::registerMsg(int id, std::function<void(QVariant)> fn) {
    handlers_[id] = std::move(fn);
}

void TabWinBase::sendMsg(int id, QVariant value) {
    emit msgSig(id, value);
}

void TabWinBase::addLog(SYS_LOG_LEVEL level, QString strLog) {
    MainWindow::instance()->addTestLog(level, strLog);
}

void TabWinBase::logError(const char* format, ...) {
    va_list args;
    va_start(args, format);
    logV(SYS_LOG_ERROR, format, args);
    va_end(args);
}

void TabWinBase::logInfo(const char* format, ...) {
    va_list args;
    va_start(args, format);
    logV(SYS_LOG_INFO, format, args);
    va_end(args);
}

void TabWinBase::logV(SYS_LOG_LEVEL level, const char* format, va_list args) {
    addLog(level, QString::vasprintf(format, args));
}

SysLabel* TabWinBase::rowNumber(QWidget* parent, int number) {
    auto* label = new SysLabel(parent, QString::number(number));
    label->setTextColor("#888");
    label->setBackgroundColor(sysLighten("#C0C0C0", 0.75f));
    label->setAlignment(Qt::AlignCenter);
    return label;
}
