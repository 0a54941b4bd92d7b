#include "kit/AppTimer.h"

AppTimer::AppTimer(QObject* parent) : QTimer(parent) {}
