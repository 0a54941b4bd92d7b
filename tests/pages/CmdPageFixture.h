#pragma once

#include "kit/SysSerialComboBox.h"
#include "pages/BasicPanel.h"
#include "pages/CmdWindow.h"
#include "sim/BoardSim.h"
#include "sim/SimFirmware.h"
#include "support/MainWindowTest.h"

// The real main window; tests drive its command page.
class CmdPage : public PageTest<CmdWindow> {
protected:
    void SetUp() override {
        PageTest::SetUp();
        panel = page->basicPanel;
    }

    void choose(const QString& name) {
        QMetaObject::invokeMethod(page->portCombo, "onTimerTimeout");
        page->portCombo->setCurrentText(name);
        ASSERT_EQ(page->portCombo->currentText(), name);
    }
    // Opens a published board with running firmware and forgets the lines read so far.
    void open(BoardSim& board, SimFirmware& firmware, const QString& name) {
        board.startFirmware();
        ASSERT_TRUE(board.publish(name));
        choose(name);
        ASSERT_EQ(click(page->portButton), QStringList{w("cmd/openPortSuccess")});
        firmware.clearLines();
    }

    BasicPanel* panel = nullptr;
};
