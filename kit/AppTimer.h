#pragma once

#include <QTimer>

// Timer of the application, with nothing beyond the Qt timer.
class AppTimer : public QTimer {
    Q_OBJECT

public:
    explicit AppTimer(QObject* parent = nullptr);
};
