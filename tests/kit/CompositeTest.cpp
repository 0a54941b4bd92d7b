#include "DialogAnswers.h"
#include "SheetProbe.h"
#include "support/QtPrinters.h"

#include "base/PortTable.h"
#include "kit/SysButton.h"
#include "kit/SysFileDialog.h"
#include "kit/SysFileSelect.h"
#include "kit/SysLineEdit.h"
#include "kit/SysMainWindow.h"
#include "kit/SysMessageBox.h"
#include "kit/SysSerialComboBox.h"
#include "kit/SysStateButton.h"
#include "kit/SysTree.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QKeyEvent>
#include <QKeySequence>
#include <QMimeData>
#include <QSignalSpy>
#include <QTest>
#include <gtest/gtest.h>

#include <string>
#include <vector>

TEST(KitStateButton, StatesShowTheirRecordAndReportOnlyChanges) {
    SysStateButton button;
    std::vector<QString> reported;
    button.onStateChanged([&](QString key) { reported.push_back(key); });
    const QString blankSheet = button.styleSheet();

    // Stored but not shown.
    button.addState("OFF", {"Start", "#409eff", true})->addState("ON", {"Stop", "#FF0000", true});
    EXPECT_TRUE(button.text().isEmpty());
    EXPECT_TRUE(button.state().isEmpty());
    EXPECT_EQ(button.styleSheet(), blankSheet);
    EXPECT_TRUE(reported.empty());

    button.setState("OFF");
    EXPECT_EQ(button.text().toStdString(), "Start");
    EXPECT_TRUE(button.isState("OFF"));
    EXPECT_TRUE(sheetEndsWith(button, "\tQPushButton:pressed {\t\tbackground-color: #70b6ff;\t}"
                                      "\tQToolTip {\t\tcolor: #FFF;\t\tbackground-color: #70b6ff;"
                                      "\t\tborder: 1px solid #70b6ff;\t}"));

    // A click changes nothing by itself; the page decides.
    QObject::connect(&button, &SysButton::clicked, [&] {
        button.setState(button.isState("OFF") ? QStringLiteral("ON") : QStringLiteral("OFF"));
    });
    QTest::mouseClick(&button, Qt::LeftButton);
    EXPECT_EQ(button.text().toStdString(), "Stop");
    EXPECT_TRUE(button.styleSheet().contains("\tQPushButton {\t\tbackground-color: #FF0000;"));

    // The same state again is applied again but is no change.
    const QString before = button.styleSheet();
    button.setText("edited");
    button.setState("ON");
    EXPECT_EQ(button.text().toStdString(), "Stop");
    EXPECT_GT(button.styleSheet().size(), before.size());

    // Unknown keys are ignored.
    const QString known = button.styleSheet();
    button.setState("PAUSE");
    EXPECT_TRUE(button.isState("ON"));
    EXPECT_EQ(button.styleSheet(), known);

    // Replacing the current record and showing it again: a disabled state takes effect.
    button.addState("ON", {"Busy", "#c0c0c0", false}, true);
    EXPECT_EQ(button.text().toStdString(), "Busy");
    EXPECT_FALSE(button.isEnabled());
    QTest::mouseClick(&button, Qt::LeftButton);
    EXPECT_TRUE(button.isState("ON"));

    button.addState("IDLE", {"Idle", "#409eff", true}, true);
    EXPECT_TRUE(button.isEnabled());
    EXPECT_EQ(reported, (std::vector<QString>{"OFF", "ON", "IDLE"}));
}

TEST(KitFileSelect, BrowseFillsThePathAndTellsOnlyAboutAChoice) {
    DialogAnswers dialog;
    SysFileSelect select(nullptr, "Browse", {"*.bin", "*.img"});
    select.setCaption("Firmware");
    QSignalSpy chosen(&select, &SysFileSelect::selected);
    EXPECT_EQ(select.browseButton->text().toStdString(), "Browse");
    EXPECT_TRUE(select.pathEdit->isReadOnly());

    dialog.reply = "/boards/app.bin";
    QTest::mouseClick(select.browseButton, Qt::LeftButton);
    ASSERT_EQ(dialog.asked.size(), 1u);
    EXPECT_EQ(dialog.asked[0].kind, SysFileDialog::OpenFile);
    EXPECT_EQ(dialog.asked[0].caption.toStdString(), "Firmware");
    EXPECT_EQ(dialog.asked[0].filter.toStdString(), "*.bin;*.img");
    EXPECT_EQ(select.pathEdit->text().toStdString(), "/boards/app.bin");
    ASSERT_EQ(chosen.count(), 1);
    EXPECT_EQ(chosen.at(0).at(0).toString().toStdString(), "/boards/app.bin");

    // A cancel keeps the path, and the next dialog starts in the default folder again.
    dialog.reply.clear();
    QTest::mouseClick(select.browseButton, Qt::LeftButton);
    EXPECT_EQ(select.pathEdit->text().toStdString(), "/boards/app.bin");
    EXPECT_EQ(chosen.count(), 1);
    EXPECT_TRUE(dialog.asked.back().dir.isEmpty());

    select.setMode(SysFileSelect::ExistingDirectory);
    dialog.reply = "/boards";
    QTest::mouseClick(select.browseButton, Qt::LeftButton);
    EXPECT_EQ(dialog.asked.back().kind, SysFileDialog::ExistingDirectory);
    EXPECT_EQ(select.pathEdit->text().toStdString(), "/boards");

    select.setMode(SysFileSelect::SaveFile);
    select.setFilters({"*.bin"});
    dialog.reply = "/dumps/flash.bin";
    QTest::mouseClick(select.browseButton, Qt::LeftButton);
    EXPECT_EQ(dialog.asked.back().kind, SysFileDialog::SaveFile);
    EXPECT_EQ(dialog.asked.back().filter.toStdString(), "*.bin");
    EXPECT_EQ(chosen.count(), 3);

    // A mode the widget does not know asks nothing.
    select.setMode(5);
    QTest::mouseClick(select.browseButton, Qt::LeftButton);
    EXPECT_EQ(dialog.asked.size(), 4u);

    select.setEditable(true);
    select.clear();
    QTest::keyClicks(select.pathEdit, "/x.bin");
    EXPECT_EQ(select.pathEdit->text().toStdString(), "/x.bin");
}

TEST(KitFileSelect, TheWholeAndItsPartsAreStyledTogether) {
    SysFileSelect select;
    EXPECT_EQ(select.browseButton->text().toStdString(), "...");
    EXPECT_EQ(select.orientation(), Qt::Horizontal);
    EXPECT_FALSE(select.childrenCollapsible());
    EXPECT_TRUE(
        select.styleSheet().endsWith("QLineEdit{margin: 1px;}QLineEdit:read-only {color: #333;}"
                                     "QLineEdit:disabled{color: #c0c0c0;}"));

    EXPECT_EQ(appendedBy(select, [&] { select.setRadius(1.0f); }),
              "\tQSplitter {\t\tborder-radius: 1.00em;\t}");
    EXPECT_TRUE(sheetEndsWith(*select.pathEdit, "\tQLineEdit {\t\tborder-radius: 0.69em;\t}"));
    EXPECT_TRUE(
        sheetEndsWith(*select.browseButton, "\tQPushButton {\t\tborder-radius: 0.69em;\t}"));

    EXPECT_EQ(appendedBy(select, [&] { select.setBorderColor("#000"); }),
              "\tQSplitter {\t\tborder-color: #000;\t}");
    EXPECT_TRUE(select.browseButton->styleSheet().contains(
        "\tQPushButton {\t\tbackground-color: #000;\t\tborder-color: #bfbfbf;\t}"));
    EXPECT_TRUE(
        select.pathEdit->styleSheet().contains("\tQLineEdit:focus {\t\tborder-color: #000;"));

    EXPECT_EQ(appendedBy(select, [&] { select.setNoBorder(); }),
              "\tQSplitter {\t\tborder-width: 0px;\t}\tQSplitter {\t\tborder-radius: 0.00em;\t}");
    EXPECT_TRUE(sheetEndsWith(*select.pathEdit, "\tQLineEdit {\t\tborder-width: 0px;\t}"
                                                "\tQLineEdit {\t\tborder-radius: -0.31em;\t}"));
}

namespace {

// Publishes virtual ports as links in the per-user port folder and removes them at the end.
class PortFolder {
public:
    PortFolder() : dir(PortTable::virtualPortDir()) { QDir().mkpath(dir); }
    ~PortFolder() {
        for (const QString& name : published)
            QFile::remove(dir + '/' + name);
    }
    void publish(const QString& name) {
        // Any existing file will do as the target; the box only lists names.
        ASSERT_TRUE(QFile::link(QCoreApplication::applicationFilePath(), dir + '/' + name));
        published << name;
    }
    void remove(const QString& name) {
        ASSERT_TRUE(QFile::remove(dir + '/' + name));
        published.removeAll(name);
    }

private:
    QString dir;
    QStringList published;
};

// One refresh of the port list, as the poll timer would run it.
void tick(SysSerialComboBox& box) {
    ASSERT_TRUE(QMetaObject::invokeMethod(&box, "onTimerTimeout"));
}

// Chooses a port the way a user does with the keyboard on the closed box: arrow keys step
// from the current row to the port's row.
void choose(SysSerialComboBox& box, const QString& name) {
    const int target = box.findText(name);
    ASSERT_GE(target, 0) << name.toStdString();
    while (box.currentIndex() < target)
        QTest::keyClick(&box, Qt::Key_Down);
    while (box.currentIndex() > target)
        QTest::keyClick(&box, Qt::Key_Up);
}

} // namespace

TEST(KitSerialComboBox, KeepsTheChoiceByNameAndReportsALostPortOnce) {
    PortFolder folder;
    folder.publish("qprobe-b");
    SysSerialComboBox box;
    std::vector<std::pair<QString, QString>> changes;
    QObject::connect(&box, &SysSerialComboBox::currentPortChanged,
                     [&](const QString& port, const QString& previous) {
                         changes.emplace_back(port, previous);
                     });
    using Changes = std::vector<std::pair<QString, QString>>;

    // Nothing is chosen by itself, and nothing is reported while nothing was chosen.
    tick(box);
    tick(box);
    EXPECT_TRUE(box.foundPorts().endsWith("qprobe-b"));
    EXPECT_EQ(box.items(), box.foundPorts());
    EXPECT_EQ(box.currentIndex(), -1);
    EXPECT_TRUE(changes.empty());

    choose(box, "qprobe-b");
    ASSERT_EQ(box.currentText().toStdString(), "qprobe-b");
    tick(box);
    EXPECT_EQ(changes, (Changes{{"qprobe-b", ""}}));

    // A new port listed before the chosen one moves its row, not the choice.
    folder.publish("qprobe-a");
    tick(box);
    EXPECT_EQ(box.currentText().toStdString(), "qprobe-b");
    EXPECT_EQ(box.currentIndex(), box.findText("qprobe-b"));
    EXPECT_EQ(box.findText("qprobe-a") + 1, box.findText("qprobe-b"));
    EXPECT_EQ(changes.size(), 1u);

    // Unplugged: the box empties at once, the loss is told on the next refresh, and once.
    folder.remove("qprobe-b");
    tick(box);
    EXPECT_EQ(box.currentIndex(), -1);
    EXPECT_TRUE(box.currentText().isEmpty());
    EXPECT_EQ(box.findText("qprobe-b"), -1);
    EXPECT_EQ(changes.size(), 1u);
    tick(box);
    tick(box);
    EXPECT_EQ(changes, (Changes{{"qprobe-b", ""}, {"", "qprobe-b"}}));

    // Back again: listed, not chosen by itself, and choosing it again is no change.
    folder.publish("qprobe-b");
    tick(box);
    EXPECT_GE(box.findText("qprobe-b"), 0);
    EXPECT_EQ(box.currentIndex(), -1);
    choose(box, "qprobe-b");
    tick(box);
    EXPECT_EQ(changes.size(), 2u);

    // Another port is a change from the last one reported.
    choose(box, "qprobe-a");
    ASSERT_EQ(box.currentText().toStdString(), "qprobe-a");
    tick(box);
    EXPECT_EQ(changes.back(), std::make_pair(QString("qprobe-a"), QString("qprobe-b")));
    EXPECT_EQ(changes.size(), 3u);

    // A second loss after a choice is told again.
    folder.remove("qprobe-a");
    tick(box);
    tick(box);
    EXPECT_EQ(changes.back(), std::make_pair(QString(), QString("qprobe-a")));
    EXPECT_EQ(changes.size(), 4u);
}

TEST(KitSerialComboBox, PollingRefreshesOnItsOwn) {
    PortFolder folder;
    SysSerialComboBox box;
    box.setPollInterval(20);
    box.startPolling();
    EXPECT_TRUE(box.isPolling());
    folder.publish("qprobe-t");
    EXPECT_TRUE(QTest::qWaitFor([&] { return box.findText("qprobe-t") >= 0; }, 2000));
    box.stopPolling();
    EXPECT_FALSE(box.isPolling());
}

namespace {

// Answers the message dialogs for the life of the object and records what they showed.
struct MessageAnswer {
    struct Call {
        SysMessageBox::Kind kind;
        QString title, text;
        QStringList buttons;
    };
    std::vector<Call> calls;
    int reply = -1;

    MessageAnswer() {
        SysMessageBox::setAnswer([this](SysMessageBox::Kind kind, const QString& title,
                                        const QString& text, const QStringList& buttons) {
            calls.push_back({kind, title, text, buttons});
            return reply;
        });
    }
    ~MessageAnswer() { SysMessageBox::setAnswer(nullptr); }
};

} // namespace

TEST(KitMessageBox, DialogsShowTheirTextAndAskYesFirst) {
    MessageAnswer user;
    sysShowError("Flash", "erase of %d blocks at 0x%x failed", 3, 0x1000);
    ASSERT_EQ(user.calls.size(), 1u);
    EXPECT_EQ(user.calls[0].kind, SysMessageBox::Error);
    EXPECT_EQ(user.calls[0].title.toStdString(), "Flash");
    EXPECT_EQ(user.calls[0].text.toStdString(), "erase of 3 blocks at 0x1000 failed");
    EXPECT_EQ(user.calls[0].buttons, QStringList{QString::fromUtf8("确定")});

    sysShowInfo("Flash", "%s", "done");
    EXPECT_EQ(user.calls[1].kind, SysMessageBox::Info);
    EXPECT_EQ(user.calls[1].text.toStdString(), "done");

    // Escape, the second button, and the first.
    user.reply = -1;
    EXPECT_FALSE(sysAsk("Efuse", "burn %s?", "key"));
    EXPECT_EQ(user.calls[2].kind, SysMessageBox::Question);
    EXPECT_EQ(user.calls[2].text.toStdString(), "burn key?");
    EXPECT_EQ(user.calls[2].buttons,
              (QStringList{QString::fromUtf8("是"), QString::fromUtf8("否")}));
    user.reply = 1;
    EXPECT_FALSE(sysAsk("Efuse", "burn?"));
    user.reply = 0;
    EXPECT_TRUE(sysAsk("Efuse", "burn?"));

    SysMainWindow window;
    window.setWindowTitle("Bramble");
    window.showError("port %s busy", "ttyUSB0");
    window.showInfo("saved");
    EXPECT_EQ(user.calls[5].kind, SysMessageBox::Error);
    EXPECT_EQ(user.calls[5].title.toStdString(), "Bramble");
    EXPECT_EQ(user.calls[5].text.toStdString(), "port ttyUSB0 busy");
    EXPECT_EQ(user.calls[6].kind, SysMessageBox::Info);
    EXPECT_EQ(user.calls[6].title.toStdString(), "Bramble");
}

TEST(KitTree, ItemsAreMadeClonedAndExpandedAsAWhole) {
    SysTree tree;
    tree.makeItems({"old"});
    const QList<QTreeWidgetItem*> made = tree.makeItems({"boot", "app"});
    ASSERT_EQ(made.size(), 2);
    ASSERT_EQ(tree.topLevelItemCount(), 3);
    EXPECT_EQ(tree.topLevelItem(0)->text(0).toStdString(), "boot");
    EXPECT_EQ(tree.topLevelItem(1)->text(0).toStdString(), "app");
    EXPECT_EQ(tree.topLevelItem(2)->text(0).toStdString(), "old");

    QTreeWidgetItem* boot = made[0];
    auto* stage = new QTreeWidgetItem(boot, QStringList{"stage"});
    auto* deep = new QTreeWidgetItem(stage, QStringList{"deep"});
    deep->setData(0, Qt::UserRole, 42);

    QTreeWidgetItem* copy = tree.cloneItem(boot, made[1]);
    EXPECT_EQ(copy->parent(), made[1]);
    EXPECT_EQ(copy->text(0).toStdString(), "boot");
    ASSERT_EQ(copy->childCount(), 1);
    ASSERT_EQ(copy->child(0)->childCount(), 1);
    EXPECT_NE(copy->child(0)->child(0), deep);
    EXPECT_EQ(copy->child(0)->child(0)->data(0, Qt::UserRole).toInt(), 42);
    deep->setText(0, "changed");
    EXPECT_EQ(copy->child(0)->child(0)->text(0).toStdString(), "deep");

    tree.expandAllBelow(boot, true);
    EXPECT_TRUE(boot->isExpanded());
    EXPECT_TRUE(stage->isExpanded());
    // Collapsing the item keeps what is below it open for the next time.
    tree.expandAllBelow(boot, false);
    EXPECT_FALSE(boot->isExpanded());
    EXPECT_TRUE(stage->isExpanded());
    EXPECT_FALSE(made[1]->isExpanded());
}

TEST(KitTree, KeysGoToTheOwnerNotTheSelection) {
    SysTree tree;
    tree.makeItems({"a", "b"});
    tree.setCurrentItem(tree.topLevelItem(0));
    std::vector<std::string> keys;
    QObject::connect(&tree, &SysTree::keyDown, [&](QKeyEvent* ev) {
        keys.push_back("down " + QKeySequence(ev->key()).toString().toStdString());
    });
    QObject::connect(&tree, &SysTree::keyUp, [&](QKeyEvent* ev) {
        keys.push_back("up " + QKeySequence(ev->key()).toString().toStdString());
    });
    QTest::keyClick(&tree, Qt::Key_Down);
    QTest::keyClick(&tree, Qt::Key_Delete);
    EXPECT_EQ(keys, (std::vector<std::string>{"down Down", "up Down", "down Del", "up Del"}));
    EXPECT_EQ(tree.currentItem(), tree.topLevelItem(0));
}

namespace {

// Sends a drag step of `data` at the centre of `item` to the tree, as a drag in progress would.
template <class Event> bool dragOver(SysTree& tree, QTreeWidgetItem* item, const QMimeData& data) {
    Event event(tree.visualItemRect(item).center(), Qt::MoveAction, &data, Qt::LeftButton,
                Qt::NoModifier);
    event.ignore();
    QApplication::sendEvent(tree.viewport(), &event);
    return event.isAccepted();
}

} // namespace

TEST(KitTree, DragStepsAskTheHookAndTheDropSelectsTheDraggedItem) {
    SysTree tree;
    tree.resize(300, 300);
    const QList<QTreeWidgetItem*> items = tree.makeItems({"a", "b", "c"});
    tree.show();

    std::vector<std::pair<QString, int>> asked;
    bool allow = true;
    tree.dragHook = [&](QTreeWidgetItem* item, int phase) {
        asked.emplace_back(item->text(0), phase);
        return allow;
    };
    QMimeData data;
    data.setData("application/x-qabstractitemmodeldatalist", "1");
    QMimeData foreign;
    foreign.setText("a");

    // As the drag of "a" would have begun.
    tree.dragItem = tree.hoverItem = items[0];
    items[0]->setSelected(true);

    EXPECT_TRUE(dragOver<QDragEnterEvent>(tree, items[1], data));
    EXPECT_FALSE(dragOver<QDragMoveEvent>(tree, items[1], foreign));
    EXPECT_TRUE(dragOver<QDragMoveEvent>(tree, items[1], data));
    EXPECT_EQ(tree.hoverItem, items[1]);
    EXPECT_TRUE(items[1]->isSelected());
    EXPECT_TRUE(dragOver<QDragMoveEvent>(tree, items[2], data));
    EXPECT_FALSE(items[1]->isSelected());
    EXPECT_TRUE(items[2]->isSelected());

    allow = false;
    EXPECT_FALSE(dragOver<QDragMoveEvent>(tree, items[1], data));
    EXPECT_EQ(tree.hoverItem, items[2]);

    // A refused drop changes no selection but ends the drag.
    dragOver<QDropEvent>(tree, items[2], data);
    EXPECT_TRUE(items[2]->isSelected());
    EXPECT_EQ(tree.dragItem, nullptr);
    EXPECT_EQ(tree.hoverItem, nullptr);

    // An allowed drop leaves the dragged item the only one selected. A new drag enters first:
    // Qt hands moves and drops only to the widget that accepted the entry.
    allow = true;
    tree.dragItem = items[0];
    EXPECT_TRUE(dragOver<QDragEnterEvent>(tree, items[2], data));
    QTreeWidgetItem* announced = nullptr;
    QObject::connect(&tree, &QTreeWidget::currentItemChanged,
                     [&](QTreeWidgetItem* item) { announced = item; });
    dragOver<QDropEvent>(tree, items[2], data);
    EXPECT_TRUE(items[0]->isSelected());
    EXPECT_FALSE(items[1]->isSelected());
    EXPECT_FALSE(items[2]->isSelected());
    EXPECT_EQ(announced, items[0]);
    EXPECT_EQ(tree.dragItem, nullptr);

    // The foreign move asked nothing: the hook sees only tree items.
    const std::vector<std::pair<QString, int>> expected = {{"b", 1}, {"b", 1}, {"c", 1}, {"b", 1},
                                                           {"c", 2}, {"c", 1}, {"c", 2}};
    EXPECT_EQ(asked, expected);
}
