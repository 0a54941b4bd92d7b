#include "pages/DownloadSession.h"

#include "pages/TabWinBase.h"

DownloadSession::DownloadSession(TabWinBase* page) : page_(page) {}

void DownloadSession::detach() {
    std::lock_guard<std::mutex> lock(mutex_);
    page_ = nullptr;
}

void DownloadSession::log(SYS_LOG_LEVEL level, const std::function<QString()>& line) {
    std::lock_guard<std::mutex> lock(mutex_);
    if (page_)
        page_->addLog(level, line());
}

void DownloadSession::sendMsg(int id, const QVariant& value) {
    std::lock_guard<std::mutex> lock(mutex_);
    if (page_)
        page_->sendMsg(id, value);
}

void DownloadSession::hookEngine(AppImpleBase* engine) {
    qRegisterMetaType<SYS_LOG_LEVEL>("SYS_LOG_LEVEL");
    QObject::disconnect(engine, &AppImpleBase::sendLog, engine, nullptr);
    QObject::connect(
        engine, &AppImpleBase::sendLog, engine,
        [this](SYS_LOG_LEVEL level, QString line) { log(level, [&line] { return line; }); },
        Qt::DirectConnection);
}
