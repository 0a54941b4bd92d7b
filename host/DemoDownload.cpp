#include "host/DemoDownload.h"

#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QWidget>

#include <cstdio>

namespace {
constexpr int kTickMs = 100;
constexpr int kPortWaitTicks = 50;  // the port box looks for ports once a second
constexpr int kRunWaitTicks = 1200; // two minutes for the whole download
} // namespace

DemoDownload::DemoDownload(QWidget* window, QString port, QString image, QString successLine,
                           QString failedLine, QString screenshot)
    : window_(window), port_(std::move(port)), image_(std::move(image)),
      successLine_(std::move(successLine)), failedLine_(std::move(failedLine)),
      screenshot_(std::move(screenshot)) {
    timer_.setInterval(kTickMs);
    connect(&timer_, &QTimer::timeout, this, &DemoDownload::step);
}

void DemoDownload::start() {
    timer_.start();
}

void DemoDownload::step() {
    ++ticks_;
    auto* portBox = window_->findChild<QComboBox*>(QStringLiteral("downloadPort"));
    auto* imageEdit = window_->findChild<QLineEdit*>(QStringLiteral("downloadImage"));
    auto* startButton = window_->findChild<QPushButton*>(QStringLiteral("downloadImageStart"));
    auto* log = window_->findChild<QTableWidget*>(QStringLiteral("processLog"));
    if (!portBox || !imageEdit || !startButton || !log) {
        std::fprintf(stderr, "bramble-host: the download page is not there\n");
        end(1);
        return;
    }
    if (phase_ == 0) {
        if (portBox->findText(port_) < 0) {
            if (ticks_ > kPortWaitTicks) {
                std::fprintf(stderr, "bramble-host: no port %s\n", qPrintable(port_));
                end(1);
            }
            return;
        }
        portBox->setCurrentText(port_);
        imageEdit->setText(image_);
        std::printf("Downloading %s through %s\n", qPrintable(image_), qPrintable(port_));
        std::fflush(stdout);
        startButton->click();
        phase_ = 1;
        ticks_ = 0;
        return;
    }
    for (int row = 0; row < log->rowCount(); ++row) {
        const QTableWidgetItem* item = log->item(row, 2);
        if (item && (item->text() == successLine_ || item->text() == failedLine_)) {
            printLog();
            end(item->text() == successLine_ ? 0 : 1);
            return;
        }
    }
    if (ticks_ > kRunWaitTicks) {
        printLog();
        std::fprintf(stderr, "bramble-host: the download did not end\n");
        end(1);
    }
}

void DemoDownload::printLog() const {
    const auto* log = window_->findChild<QTableWidget*>(QStringLiteral("processLog"));
    for (int row = 0; row < log->rowCount(); ++row) {
        QStringList cells;
        for (int col = 0; col < log->columnCount(); ++col)
            cells << (log->item(row, col) ? log->item(row, col)->text() : QString());
        if (!cells.join(QString()).isEmpty())
            std::printf("%s\n", qPrintable(cells.join(QStringLiteral("  "))));
    }
    std::fflush(stdout);
}

void DemoDownload::end(int code) {
    timer_.stop();
    // Let the last queued messages (controls back on) land before the picture is taken.
    QTimer::singleShot(200, this, [this, code] {
        if (!screenshot_.isEmpty()) {
            window_->grab().save(screenshot_);
            std::printf("screenshot: %s\n", qPrintable(screenshot_));
        }
        // The last line a script reads: the download's own result, whatever the display's
        // wrapper returns as it cleans up.
        std::printf("download: %s\n", code == 0 ? "succeeded" : "failed");
        std::fflush(stdout);
        QApplication::exit(code);
    });
}
