#pragma once

#include "kit/SysButton.h"

#include <QMap>
#include <QString>

#include <functional>

// What a SysStateButton shows in one of its states.
struct StateRecord {
    QString text;
    // Theme colour of the button.
    QString color;
    bool enabled = true;
};

// A button with named states, each with its own text, colour and enabled state. A click
// changes nothing by itself: the page connects clicked() and picks the next state.
class SysStateButton : public SysButton {
    Q_OBJECT

public:
    explicit SysStateButton(QWidget* parent = nullptr);

    // Stores `record` under `key`, replacing one that is there, and with `makeCurrent` shows
    // it at once. Returns this so that calls chain.
    SysStateButton* addState(const QString& key, const StateRecord& record,
                             bool makeCurrent = false);
    // Shows the state stored under `key`; an unknown key is ignored. stateChanged() comes
    // only when the key differs from the current one, but the look is applied again anyway.
    void setState(const QString& key);
    bool isState(const QString& key) const;
    // The current key; empty until a state was first shown.
    QString state() const;

signals:
    void stateChanged(QString key);

public slots:
    void onStateChanged(std::function<void(QString)> cb);

private:
    QMap<QString, StateRecord> states;
    QString currentState;
};
