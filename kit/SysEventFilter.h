#pragma once

#include <QObject>

// Watches the Return key of the object it is installed on and tells about it without
// swallowing it: the key still reaches the object. Enter on the keypad is not Return.
class SysEventFilter : public QObject {
    Q_OBJECT

public:
    explicit SysEventFilter(QObject* parent = nullptr);

    bool eventFilter(QObject* watched, QEvent* event) override;

signals:
    // Every Return press.
    void returnPressed();
    // A Return press with Control held, right after its returnPressed().
    void ctrlAndReturnPressed();
};
