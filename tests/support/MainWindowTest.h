#pragma once

#include "kit/SysTable.h"
#include "shell/MainWindow.h"
#include "shell/PluginEntry.h"
#include "support/HostWords.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QPushButton>
#include <QTest>

#include <functional>

// The real main window with its four pages above the process log, built afresh for each test
// with the host's English words, and the log's rows as the tests read them.
class MainWindowTest : public ::testing::Test {
protected:
    void SetUp() override {
        window = static_cast<MainWindow*>(Create());
        window->setTextService(&words);
        window->init();
        log = window->logTable();
        ASSERT_NE(log, nullptr);
    }
    void TearDown() override { Release(); }

    // The message column of the rows from `row` on.
    QStringList linesFrom(int row) const {
        QStringList out;
        for (int r = row; r < log->nextRow; ++r)
            out << (log->item(r, 2) ? log->item(r, 2)->text() : QString());
        return out;
    }
    // The level of the first row from `row` on that holds `line`.
    QString levelOf(const QString& line, int row = 0) const {
        for (int r = row; r < log->nextRow; ++r)
            if (log->item(r, 2) && log->item(r, 2)->text() == line)
                return log->item(r, 1)->text();
        return QString();
    }
    // Runs `act` and gives the lines it wrote once the queued rows are in; with `levels`,
    // each line's level too.
    QStringList during(const std::function<void()>& act, QStringList* levels = nullptr) {
        const int before = log->nextRow;
        act();
        QCoreApplication::processEvents();
        if (levels)
            for (int r = before; r < log->nextRow; ++r)
                *levels << log->item(r, 1)->text();
        return linesFrom(before);
    }
    QStringList click(QPushButton* button) {
        return during([button] { QTest::mouseClick(button, Qt::LeftButton); });
    }

    QString w(const char* key) { return words.text(key); }
    // A format word filled as printf fills it; text goes in as qUtf8Printable(...).
    template <typename... Args> QString f(const char* key, Args... args) {
        return QString::asprintf(w(key).toStdString().c_str(), args...);
    }

    HostWords words;
    MainWindow* window = nullptr;
    SysTable* log = nullptr;
};

// The same, with the window's page of type Page found for the test.
template <class Page> class PageTest : public MainWindowTest {
protected:
    void SetUp() override {
        MainWindowTest::SetUp();
        page = window->findChild<Page*>();
        ASSERT_NE(page, nullptr);
    }

    Page* page = nullptr;
};
