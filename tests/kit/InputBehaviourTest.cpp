#include "support/QtPrinters.h"

#include "kit/SysCheckBox.h"
#include "kit/SysComboBox.h"
#include "kit/SysFormLayout.h"
#include "kit/SysLabel.h"
#include "kit/SysLineEdit.h"
#include "kit/SysNumberEdit.h"
#include "kit/SysSerialComboBox.h"
#include "kit/SysSlider.h"
#include "kit/SysTable.h"
#include "kit/SysTextEdit.h"
#include "kit/SysWidget.h"

#include <QApplication>
#include <QLayout>
#include <QListView>
#include <QMouseEvent>
#include <QSignalSpy>
#include <QTest>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

// Counts the mouse presses that reach a widget.
class PressCounter : public QObject {
public:
    int presses = 0;
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::MouseButtonPress)
            ++presses;
        return false;
    }
};

} // namespace

TEST(KitLabel, APressIsAClickAndGoesNoFurther) {
    SysWidget parent;
    PressCounter counter;
    parent.installEventFilter(&counter);
    auto* label = new SysLabel(&parent, "Clear");
    QSignalSpy clicks(label, &SysLabel::clicked);
    QTest::mouseClick(label, Qt::LeftButton);
    QTest::mouseClick(label, Qt::RightButton);
    EXPECT_EQ(clicks.count(), 2);
    // A plain QLabel ignores the press and lets it climb to the parent.
    EXPECT_EQ(counter.presses, 0);
}

TEST(KitTextEdit, ReturnIsReportedAndStillBreaksTheLine) {
    SysTextEdit edit;
    std::vector<std::string> seen;
    QObject::connect(edit.returnFilter(), &SysEventFilter::returnPressed,
                     [&] { seen.push_back("return"); });
    QObject::connect(edit.returnFilter(), &SysEventFilter::ctrlAndReturnPressed,
                     [&] { seen.push_back("ctrl"); });

    QTest::keyClicks(&edit, "ab");
    QTest::keyClick(&edit, Qt::Key_Return);
    EXPECT_EQ(seen, std::vector<std::string>{"return"});
    QTest::keyClicks(&edit, "cd");
    EXPECT_EQ(edit.toPlainText().toStdString(), "ab\ncd");

    seen.clear();
    QTest::keyClick(&edit, Qt::Key_Return, Qt::ControlModifier);
    EXPECT_EQ(seen, (std::vector<std::string>{"return", "ctrl"}));

    seen.clear();
    QTest::keyClick(&edit, Qt::Key_Return, Qt::ShiftModifier);
    EXPECT_EQ(seen, std::vector<std::string>{"return"});

    // Enter on the keypad is another key.
    seen.clear();
    QTest::keyClick(&edit, Qt::Key_Enter, Qt::KeypadModifier);
    QTest::keyClick(&edit, Qt::Key_Enter, Qt::KeypadModifier | Qt::ControlModifier);
    EXPECT_TRUE(seen.empty());
}

TEST(KitComboBox, PlaceholderStaysTheCaptionAfterEveryChoice) {
    SysComboBox combo(nullptr, {"Import conf", "Import image"});
    auto* view = qobject_cast<QListView*>(combo.view());
    ASSERT_NE(view, nullptr);
    QSignalSpy activated(&combo, QOverload<int>::of(&QComboBox::activated));

    // Without a placeholder a choice stays.
    QTest::keyClick(&combo, Qt::Key_Down);
    EXPECT_EQ(combo.currentIndex(), 1);

    combo.setPlaceholder("Import");
    EXPECT_EQ(combo.items(), (QStringList{"Import conf", "Import image", "Import"}));
    EXPECT_EQ(combo.currentText(), "Import");
    EXPECT_TRUE(view->isRowHidden(2));
    EXPECT_FALSE(view->isRowHidden(0));
    // The caption is drawn on the theme colour.
    EXPECT_TRUE(combo.styleSheet().endsWith(
        "\tQComboBox {\t\tborder-color: #409eff;\t}\tQComboBox {\t\tbackground-color: #409eff;\t}"
        "\tQComboBox {\t\tcolor: #FFF;\t}\tQComboBox::drop-down {\t\tborder-left-color: #FFF;\t}"
        "\tQComboBox::down-arrow {\t\tborder-top-color: #FFF;\t\tborder-bottom-color: #FFF;\t}"));

    QTest::keyClick(&combo, Qt::Key_Up);
    ASSERT_EQ(activated.count(), 2);
    EXPECT_EQ(activated.last().at(0).toInt(), 1);
    EXPECT_EQ(combo.currentText(), "Import");
    QTest::keyClick(&combo, Qt::Key_Home);
    EXPECT_EQ(activated.last().at(0).toInt(), 0);
    EXPECT_EQ(combo.currentIndex(), 2);

    // A second caption renames the first.
    combo.setPlaceholder("Load");
    EXPECT_EQ(combo.count(), 3);
    EXPECT_EQ(combo.currentText(), "Load");
    EXPECT_TRUE(view->isRowHidden(2));

    // A new theme recolours the caption too.
    combo.setThemeColor("#ff0000");
    EXPECT_TRUE(combo.styleSheet().endsWith(
        "\tQComboBox {\t\tborder-color: #ff0000;\t}\tQComboBox {\t\tbackground-color: #ff0000;\t}"
        "\tQComboBox {\t\tcolor: #FFF;\t}\tQComboBox::drop-down {\t\tborder-left-color: #FFF;\t}"
        "\tQComboBox::down-arrow {\t\tborder-top-color: #FFF;\t\tborder-bottom-color: #FFF;\t}"));

    combo.setItems({"x", "y"});
    EXPECT_EQ(combo.items(), (QStringList{"x", "y"}));
}

TEST(KitComboBox, ItemsHiddenBeforeThePopupIsMadeStayHiddenInIt) {
    // The popup is made when it first opens; hiding items before that must still take.
    QWidget page;
    auto* combo = new SysComboBox(&page, {"a", "b", "c", "d"});
    combo->hideItem(1);
    combo->setPlaceholder("Pick");
    page.show();
    combo->showPopup();
    auto* view = qobject_cast<QListView*>(combo->view());
    ASSERT_NE(view, nullptr);
    EXPECT_TRUE(view->isVisible());
    EXPECT_EQ(view->itemDelegate()->metaObject()->className(), QByteArray("QStyledItemDelegate"));
    for (int row = 0; row < combo->count(); ++row)
        EXPECT_EQ(view->isRowHidden(row), row == 1 || row == 4) << row;
    combo->hidePopup();
    // Hidden once the popup exists, and kept across another opening.
    combo->hideItem(3);
    combo->showPopup();
    EXPECT_EQ(combo->view(), view);
    EXPECT_TRUE(view->isRowHidden(3));
    combo->hidePopup();
}

TEST(KitSlider, ValueLabelFollowsTheHeldHandle) {
    SysSlider slider;
    slider.resize(220, 40);
    slider.setValue(40);
    QLabel* label = slider.valueLabel;
    EXPECT_TRUE(label->isHidden());
    EXPECT_EQ(label->pos(), QPoint(0, 3));

    QTest::mousePress(&slider, Qt::LeftButton, Qt::NoModifier, QPoint(110, 20));
    EXPECT_FALSE(label->isHidden());
    EXPECT_EQ(label->text().toStdString(), "40");

    const int held = slider.value();
    QMouseEvent move(QEvent::MouseMove, QPointF(150, 20), Qt::NoButton, Qt::LeftButton,
                     Qt::NoModifier);
    QApplication::sendEvent(&slider, &move);
    EXPECT_EQ(label->text(), QString::number(held));
    EXPECT_EQ(label->pos(), QPoint((slider.width() - label->width()) * held / 100, -3));

    QTest::mouseRelease(&slider, Qt::LeftButton, Qt::NoModifier, QPoint(150, 20));
    EXPECT_TRUE(label->isHidden());

    // With no range to walk, the label stays where it is.
    SysSlider fixed;
    fixed.resize(220, 40);
    fixed.setRange(5, 5);
    QTest::mousePress(&fixed, Qt::LeftButton, Qt::NoModifier, QPoint(110, 20));
    QApplication::sendEvent(&fixed, &move);
    EXPECT_EQ(fixed.valueLabel->text().toStdString(), "5");
    EXPECT_EQ(fixed.valueLabel->pos(), QPoint(0, 3));
    QTest::mouseRelease(&fixed, Qt::LeftButton, Qt::NoModifier, QPoint(150, 20));
}

TEST(KitNumberEdit, ValueChangesComeUnderTheKitName) {
    SysNumberEdit edit(nullptr, 3);
    QSignalSpy spy(&edit, &SysNumberEdit::valueChangedPrivPriv);
    QTest::keyClick(&edit, Qt::Key_Up);
    QTest::keyClick(&edit, Qt::Key_Up);
    ASSERT_EQ(spy.count(), 2);
    EXPECT_EQ(spy.at(1).at(0).toInt(), 5);
}

TEST(KitCheckBox, OnCheckedGetsTheNewState) {
    SysCheckBox box(nullptr, "Reset");
    std::vector<bool> states;
    box.onChecked([&](bool on) { states.push_back(on); });
    QTest::keyClick(&box, Qt::Key_Space);
    QTest::keyClick(&box, Qt::Key_Space);
    box.setChecked(true);
    EXPECT_EQ(states, (std::vector<bool>{true, false, true}));
}

namespace {

// The label and the control of a row, with the alignment each was laid out with.
struct RowParts {
    SysLabel* label = nullptr;
    Qt::Alignment labelAlign;
    QWidget* control = nullptr;
    Qt::Alignment controlAlign;
};

RowParts partsOf(QWidget* row) {
    RowParts parts;
    QLayout* layout = row->layout();
    if (!layout || layout->count() != 2)
        return parts;
    parts.label = qobject_cast<SysLabel*>(layout->itemAt(0)->widget());
    parts.labelAlign = layout->itemAt(0)->alignment();
    parts.control = layout->itemAt(1)->widget();
    parts.controlAlign = layout->itemAt(1)->alignment();
    return parts;
}

} // namespace

TEST(KitRowFactories, RowsHoldALabelAndTheControlTheyGiveBack) {
    SysWidget page;
    const Qt::Alignment labelAlign = Qt::AlignRight | Qt::AlignVCenter;
    const Qt::Alignment controlAlign = Qt::AlignLeft | Qt::AlignVCenter;

    const QList<QWidget*> line = sysMakeLineRow("Address", 1, 4, &page);
    ASSERT_EQ(line.size(), 2);
    EXPECT_NE(qobject_cast<SysWidget*>(line[0]), nullptr);
    EXPECT_EQ(line[0]->parentWidget(), &page);
    RowParts parts = partsOf(line[0]);
    ASSERT_NE(parts.label, nullptr);
    EXPECT_EQ(parts.label->text().toStdString(), "Address:");
    EXPECT_EQ(parts.labelAlign, labelAlign);
    EXPECT_EQ(parts.control, line[1]);
    EXPECT_EQ(parts.controlAlign, controlAlign);
    auto* edit = qobject_cast<SysLineEdit*>(line[1]);
    ASSERT_NE(edit, nullptr);
    EXPECT_EQ(edit->minLength, 1);
    QTest::keyClicks(edit, "0x12345");
    EXPECT_EQ(edit->text().toStdString(), "0x12");

    // The value 0 is clamped by the range set after it.
    const QList<QWidget*> number = sysMakeNumberRow("Count", 5, 10, &page);
    auto* spin = qobject_cast<SysNumberEdit*>(number.value(1));
    ASSERT_NE(spin, nullptr);
    EXPECT_EQ(spin->value(), 5);
    EXPECT_EQ(spin->maximum(), 10);
    EXPECT_EQ(partsOf(number[0]).control, spin);
    EXPECT_EQ(partsOf(number[0]).label->text().toStdString(), "Count:");

    const QList<QWidget*> combo = sysMakeComboRow("Rate", {"9600", "115200"}, &page);
    auto* box = qobject_cast<SysComboBox*>(combo.value(1));
    ASSERT_NE(box, nullptr);
    EXPECT_EQ(box->items(), (QStringList{"9600", "115200"}));
    EXPECT_EQ(partsOf(combo[0]).controlAlign, controlAlign);

    const QList<QWidget*> polled = sysMakeSerialRow("Port", true, &page);
    auto* ports = qobject_cast<SysSerialComboBox*>(polled.value(1));
    ASSERT_NE(ports, nullptr);
    EXPECT_TRUE(ports->isPolling());
    EXPECT_EQ(partsOf(polled[0]).label->text().toStdString(), "Port:");
    const QList<QWidget*> idle = sysMakeSerialRow("Port", false, &page);
    EXPECT_FALSE(qobject_cast<SysSerialComboBox*>(idle.value(1))->isPolling());

    // A row around a ready control is not centred vertically.
    auto* own = new SysLineEdit(&page);
    SysWidget* plain = sysMakeWidgetRow("Name", own, &page);
    parts = partsOf(plain);
    EXPECT_EQ(parts.labelAlign, Qt::AlignRight);
    EXPECT_EQ(parts.control, own);
    EXPECT_EQ(parts.controlAlign, Qt::AlignLeft);
}

TEST(KitFormLayout, FormRowsUseTheLabelColour) {
    SysWidget page;
    auto* form = new SysFormLayout(&page);
    form->labelColor = "#123456";

    SysLineEdit* edit = form->addLineRow("MAC", 12, 12, "a0b1c2d3e4f5");
    EXPECT_EQ(edit->text().toStdString(), "a0b1c2d3e4f5");
    EXPECT_EQ(edit->maxLength(), 12);
    EXPECT_EQ(edit->minLength, 12);
    SysComboBox* combo = form->addComboRow("Mode", {"a", "b"});
    EXPECT_EQ(combo->count(), 2);
    SysTable* table = form->addTableRow("Items", {"name", "value"});
    EXPECT_EQ(table->columnCount(), 2);
    ASSERT_EQ(form->rowCount(), 3);

    auto* label = qobject_cast<SysLabel*>(form->itemAt(0, QFormLayout::LabelRole)->widget());
    ASSERT_NE(label, nullptr);
    EXPECT_EQ(label->text().toStdString(), "MAC");
    EXPECT_EQ(label->alignment(), Qt::AlignRight | Qt::AlignVCenter);
    EXPECT_TRUE(label->styleSheet().endsWith("\tQLabel {\t\tcolor: #123456;\t}"));
    EXPECT_EQ(form->itemAt(0, QFormLayout::FieldRole)->widget(), edit);
    EXPECT_EQ(form->itemAt(2, QFormLayout::FieldRole)->widget(), table);
    EXPECT_EQ(edit->parentWidget(), &page);
}
