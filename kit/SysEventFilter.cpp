#include "kit/SysEventFilter.h"

#include <QKeyEvent>

SysEventFilter::SysEventFilter(QObject* parent) : QObject(parent) {}

bool SysEventFilter::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::KeyPress) {
        const auto* key = static_cast<QKeyEvent*>(event);
        if (key->key() == Qt::Key_Return) {
            emit returnPressed();
            if (key->modifiers() & Qt::ControlModifier)
                emit ctrlAndReturnPressed();
        }
    }
    return QObject::eventFilter(watched, event);
}
