#include "kit/SysStateButton.h"

#include <utility>

SysStateButton::SysStateButton(QWidget* parent) : SysButton(parent, QString()) {}

SysStateButton* SysStateButton::addState(const QString& key, const StateRecord& record,
                                         bool makeCurrent) {
    states.insert(key, record);
    if (makeCurrent)
        setState(key);
    return this;
}

void SysStateButton::setState(const QString& key) {
    const auto found = states.constFind(key);
    if (found == states.constEnd())
        return;
    setText(found->text);
    setThemeColor(found->color.toStdString());
    setEnabled(found->enabled);
    const bool changed = currentState != key;
    currentState = key;
    if (changed)
        emit stateChanged(key);
}

bool SysStateButton::isState(const QString& key) const {
    return currentState == key;
}

QString SysStateButton::state() const {
    return currentState;
}

void SysStateButton::onStateChanged(std::function<void(QString)> cb) {
    connect(this, &SysStateButton::stateChanged, this, std::move(cb));
}
