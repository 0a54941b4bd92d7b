#pragma once

#include "kit/SysSerialComboBox.h"
#include "kit/SysTable.h"
#include "pages/BasicPanel.h"
#include "pages/CmdWindow.h"
#include "shell/MainWindow.h"
#include "shell/PluginEntry.h"
#include "sim/BoardSim.h"
#include "sim/SimFirmware.h"
#include "support/HostWords.h"

#include <gtest/gtest.h>

#include <QPushButton>
#include <QTest>

#include <functional>

// The real main window; tests drive its command page.
class CmdPage : public ::testing::Test {
protected:
    void SetUp() override {
        window = static_cast<MainWindow*>(Create());
        window->setTextService(&words);
        window->init();
        page = window->findChild<CmdWindow*>();
        ASSERT_NE(page, nullptr);
        panel = page->basicPanel;
        log = window->logTable();
    }
    void TearDown() override { Release(); }

    void choose(const QString& name) {
        QMetaObject::invokeMethod(page->portCombo, "onTimerTimeout");
        page->portCombo->setCurrentText(name);
        ASSERT_EQ(page->portCombo->currentText(), name);
    }
    // Runs `act` and gives the lines it wrote (every handler runs on this thread); with
    // `levels`, each line's level too.
    QStringList during(const std::function<void()>& act, QStringList* levels = nullptr) {
        const int before = log->nextRow;
        act();
        QCoreApplication::processEvents(); // rows are written through the event loop
        QStringList out;
        for (int r = before; r < log->nextRow; ++r) {
            out << log->item(r, 2)->text();
            if (levels)
                *levels << log->item(r, 1)->text();
        }
        return out;
    }
    QStringList click(QPushButton* button) {
        return during([button] { QTest::mouseClick(button, Qt::LeftButton); });
    }
    // Opens a published board with running firmware and forgets the lines read so far.
    void open(BoardSim& board, SimFirmware& firmware, const QString& name) {
        board.startFirmware();
        ASSERT_TRUE(board.publish(name));
        choose(name);
        ASSERT_EQ(click(page->portButton), QStringList{w("cmd/openPortSuccess")});
        firmware.clearLines();
    }
    QString w(const char* key) { return words.text(key); }
    template <typename... Args> QString f(const char* key, Args... args) {
        return QString::asprintf(w(key).toStdString().c_str(), args...);
    }

    HostWords words;
    MainWindow* window = nullptr;
    CmdWindow* page = nullptr;
    BasicPanel* panel = nullptr;
    SysTable* log = nullptr;
};
