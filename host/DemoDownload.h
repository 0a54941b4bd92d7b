#pragma once

#include <QObject>
#include <QString>
#include <QTimer>

class QWidget;

// Drives the download page as a user would, for a run without anybody at the screen: picks
// the port, names the all-in-one image, presses start, waits for the run's last line, prints
// the process log and quits with 0 for a finished download and 1 for anything else.
class DemoDownload : public QObject {
    Q_OBJECT
public:
    DemoDownload(QWidget* window, QString port, QString image, QString successLine,
                 QString failedLine, QString screenshot);
    void start();

private:
    void step();
    void printLog() const;
    void end(int code);

    QWidget* window_;
    QString port_;
    QString image_;
    QString successLine_;
    QString failedLine_;
    QString screenshot_;
    QTimer timer_;
    int phase_ = 0;
    int ticks_ = 0;
};
