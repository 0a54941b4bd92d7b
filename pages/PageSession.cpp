#include "pages/PageSession.h"

#include "pages/TabWinBase.h"

PageSession::PageSession(TabWinBase* page) : page_(page) {}

PageSession::PageSession(Sink sink) : sink_(std::move(sink)) {}

void PageSession::detach() {
    std::lock_guard<std::mutex> lock(mutex_);
    page_ = nullptr;
    sink_ = nullptr;
}

void PageSession::log(SYS_LOG_LEVEL level, const std::function<QString()>& line) {
    std::lock_guard<std::mutex> lock(mutex_);
    if (page_)
        page_->addLog(level, line());
    else if (sink_)
        sink_(level, line());
}

void PageSession::sendMsg(int id, const QVariant& value) {
    std::lock_guard<std::mutex> lock(mutex_);
    if (page_)
        page_->sendMsg(id, value);
}

void PageSession::hookEngine(AppImpleBase* engine) {
    qRegisterMetaType<SYS_LOG_LEVEL>("SYS_LOG_LEVEL");
    QObject::disconnect(engine, &AppImpleBase::sendLog, engine, nullptr);
    QObject::connect(
        engine, &AppImpleBase::sendLog, engine,
        [this](SYS_LOG_LEVEL level, QString line) { log(level, [&line] { return line; }); },
        Qt::DirectConnection);
}
