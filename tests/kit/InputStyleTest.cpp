#include "SheetProbe.h"

#include "kit/SysButton.h"
#include "kit/SysCheckBox.h"
#include "kit/SysComboBox.h"
#include "kit/SysFileSelect.h"
#include "kit/SysLabel.h"
#include "kit/SysLineEdit.h"
#include "kit/SysList.h"
#include "kit/SysMenu.h"
#include "kit/SysNumberEdit.h"
#include "kit/SysRadioButton.h"
#include "kit/SysSerialComboBox.h"
#include "kit/SysSlider.h"
#include "kit/SysStateButton.h"
#include "kit/SysTextBrowser.h"
#include "kit/SysTextEdit.h"
#include "kit/SysTree.h"
#include "kit/SysVLayout.h"
#include "kit/SysWidget.h"

#include <QIcon>
#include <QPixmap>
#include <QScrollBar>
#include <QTreeWidgetItem>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

std::vector<std::string> styleWarnings;

void collectWarnings(QtMsgType, const QMessageLogContext&, const QString& text) {
    styleWarnings.push_back(text.toStdString());
}

} // namespace

// Qt drops a sheet it cannot parse, or a property it does not know, with no more than a
// warning; painting every control with its whole sheet brings such mistakes out.
TEST(KitInputStyle, EverySheetIsUnderstoodByQt) {
    SysWidget page;
    auto* layout = new SysVLayout(&page);
    auto* combo = new SysComboBox(&page, {"a", "b"});
    combo->setPlaceholder("Actions");
    auto* list = new SysList(&page);
    list->addItems({"one", "two"});
    auto* tree = new SysTree(&page);
    tree->makeItems({"x", "y"});
    auto* menu = new SysMenu(&page);
    menu->addAction("entry");
    menu->setRadius(0.5f);
    const QList<QWidget*> controls = {new SysLabel(&page, "label"),
                                      new SysLineEdit(&page),
                                      new SysTextEdit(&page),
                                      new SysTextBrowser(&page),
                                      new SysButton(&page, "b"),
                                      combo,
                                      new SysCheckBox(&page, "c"),
                                      new SysRadioButton(&page, "r"),
                                      new SysSlider(&page),
                                      new SysNumberEdit(&page, 1),
                                      list,
                                      tree,
                                      new SysFileSelect(&page),
                                      new SysStateButton(&page),
                                      new SysSerialComboBox(&page)};
    for (QWidget* w : controls)
        layout->addWidget(w);
    page.resize(400, 1200);

    styleWarnings.clear();
    const QtMessageHandler previous = qInstallMessageHandler(collectWarnings);
    page.grab();
    combo->view()->grab();
    menu->grab();
    qInstallMessageHandler(previous);
    EXPECT_TRUE(styleWarnings.empty()) << styleWarnings.front();
}

TEST(KitInputStyle, DefaultsFollowTheBaseSheetInOrder) {
    SysLabel label(nullptr, "Port");
    EXPECT_TRUE(
        label.styleSheet().startsWith(QString::fromUtf8("\tQLabel {\t\tfont-family: '微软雅黑';")));
    EXPECT_TRUE(sheetEndsWith(label, "\tQLabel {\t\tcolor: #000;\t}"
                                     "\tQLabel {\t\tfont-size: 18px;\t}"
                                     "\tQLabel {\t\tbackground-color: transparent;\t}"));
    EXPECT_EQ(label.alignment(), Qt::AlignCenter);

    SysLineEdit edit;
    EXPECT_TRUE(sheetEndsWith(edit, "\tQLineEdit:focus {\t\tborder-color: #409eff;\t}"
                                    "\tQLineEdit QMenu {\t\tborder: 1px solid #409eff;\t}"
                                    "\tQLineEdit QMenu::item:selected {\t\tcolor: #fff;"
                                    "\t\tbackground-color: #409eff;\t}"
                                    "\tQLineEdit {\t\tfont-size: 18px;\t}"
                                    "\tQLineEdit {\t\tborder-radius: 0.63em;\t}"));
    // The sheet is real Qt style: the read-only state greys the text.
    edit.setReadOnly(true);
    edit.ensurePolished();
    EXPECT_EQ(edit.palette().color(QPalette::Text), QColor("#A0A0A0"));

    SysButton button(nullptr, "Start");
    EXPECT_EQ(button.text().toStdString(), "Start");
    EXPECT_TRUE(sheetEndsWith(button, "\tQPushButton {\t\tborder-radius: 0.75em;\t}"));
    EXPECT_EQ(button.cursor().shape(), Qt::PointingHandCursor);

    SysNumberEdit number(nullptr, 7);
    EXPECT_EQ(number.value(), 7);
    EXPECT_TRUE(sheetEndsWith(number, "\tQSpinBox {\t\tfont-size: 18px;\t}"
                                      "\tQSpinBox {\t\tborder-radius: 0.63em;\t}"
                                      "\tQSpinBox {\t\tborder-width: 1px;\t}"));

    SysList list;
    EXPECT_TRUE(sheetEndsWith(list, "\tQListWidget::item {\t\tborder-bottom-style: solid;\t}"
                                    "\tQListWidget::item {\t\tborder-bottom-color: #f0f0f0;\t}"));

    SysMenu menu;
    EXPECT_TRUE(sheetEndsWith(menu, "\tQMenu::item {\t\tpadding: 0.25em 0.75em;\t}"));

    SysTextEdit text;
    // Scroll bars take the light grey base colour and its shades.
    EXPECT_TRUE(text.styleSheet().contains(
        "\tQTextEdit QScrollBar {\t\tbackground-color: #eeeeee;\t\tborder: 1px solid #ddd;\t}"
        "\tQTextEdit QScrollBar:hover {\t\tborder: 1px solid #ddd;\t}"
        "\tQTextEdit QScrollBar::handle {\t\tbackground-color: #a6a6a6;\t}"
        "\tQTextEdit QScrollBar::handle:hover {\t\tbackground-color: #6f6f6f;\t}"));
    EXPECT_TRUE(sheetEndsWith(text, "\tQTextEdit {\t\tborder-radius: 0.75em;\t}"));
}

TEST(KitInputStyle, ThemeColoursAndTheirShades) {
    SysButton button;
    EXPECT_EQ(appendedBy(button, [&] { button.setThemeColor("#409eff"); }),
              "\tQPushButton {\t\tbackground-color: #409eff;\t\tborder-color: #cfe7ff;\t}"
              "\tQPushButton:hover {\t\tbackground-color: #58aaff;\t}"
              "\tQPushButton:pressed {\t\tbackground-color: #70b6ff;\t}"
              "\tQToolTip {\t\tcolor: #FFF;\t\tbackground-color: #70b6ff;"
              "\t\tborder: 1px solid #70b6ff;\t}");

    SysComboBox combo;
    EXPECT_EQ(
        appendedBy(combo, [&] { combo.setThemeColor("#000"); }),
        "\tQComboBox {\t\tborder-color: #000;\t}"
        "\tQComboBox::drop-down {\t\tborder-left-color: #404040;\t}"
        "\tQComboBox::down-arrow {\t\tborder-top-color: #000;\t\tborder-bottom-color: #000;\t}"
        "\tQComboBox QAbstractItemView {\t\tborder-left: 1px solid #000;"
        "\t\tborder-right: 1px solid #000;\t\tborder-bottom: 1px solid #000;\t}"
        "\tQComboBox QAbstractItemView::item:hover {\t\tbackground-color: #808080;\t}"
        "\tQComboBox QAbstractItemView::item:selected {\t\tbackground-color: #000;\t}");

    SysNumberEdit number;
    const std::string numberTheme = appendedBy(number, [&] { number.setThemeColor("#fff"); });
    EXPECT_NE(numberTheme.find("\tQSpinBox::up-arrow:hover {\t\tborder-bottom-color: #bfbfbf;\t}"),
              std::string::npos);
    EXPECT_NE(numberTheme.find("\tQSpinBox {\t\tcolor: #000;\t\tborder-color: #fff;"),
              std::string::npos);

    SysList list;
    EXPECT_EQ(appendedBy(list, [&] { list.setThemeColor("#000"); }),
              "\tQListWidget::item:hover {\t\tbackground-color: #404040;\t}"
              "\tQListWidget::item:selected {\t\tbackground-color: #000;\t}"
              "\tQListWidget::item:selected:!active {\t\tbackground-color: #000;\t}"
              "\tQListWidget {\t\tborder-color: #000;\t}");

    // The slider's theme rewrites its whole sheet and keeps the colour.
    SysSlider slider;
    slider.setStyleSheet(slider.styleSheet() + "QSlider { margin: 9px; }");
    slider.setThemeColor("#000");
    EXPECT_EQ(slider.themeColor(), "#000");
    EXPECT_FALSE(slider.styleSheet().contains("margin: 9px"));
    EXPECT_TRUE(slider.styleSheet().contains("\tQSlider::add-page:horizontal {\t\tborder: 1px "
                                             "solid #808080;\t\tbackground-color: #fff;"));
    EXPECT_TRUE(slider.styleSheet().endsWith("QLabel{font-size: 18px;}"));
}

TEST(KitInputStyle, SetterFragments) {
    SysLineEdit edit;
    const std::string left = "\tQLineEdit {\t\ttext-align: left;\t}";
    const std::string right = "\tQLineEdit {\t\ttext-align: right;\t}";
    const std::string center = "\tQLineEdit {\t\ttext-align: center;\t}";
    EXPECT_EQ(appendedBy(edit, [&] { edit.setTextAlign(Qt::AlignLeft); }), left);
    EXPECT_EQ(appendedBy(edit, [&] { edit.setTextAlign(Qt::AlignRight); }), right);
    EXPECT_EQ(appendedBy(edit, [&] { edit.setTextAlign(Qt::AlignHCenter); }), center);
    EXPECT_EQ(appendedBy(edit, [&] { edit.setTextAlign(Qt::AlignVCenter); }), center);
    EXPECT_EQ(appendedBy(edit, [&] { edit.setTextAlign(Qt::AlignCenter); }), center);
    EXPECT_EQ(appendedBy(edit, [&] { edit.setTextAlign(Qt::AlignJustify); }), "");
    EXPECT_EQ(appendedBy(edit, [&] { edit.setTextAlign(Qt::AlignLeft | Qt::AlignVCenter); }), "");
    EXPECT_EQ(appendedBy(edit, [&] { edit.setFixedWidthEm(12.5f); }),
              "\tQLineEdit {\t\tmin-width: 12.50em;\t\tmax-width: 12.50em;\t}");
    EXPECT_EQ(appendedBy(edit, [&] { edit.setBorderWidths(1, 2, 3, 4); }),
              "\tQLineEdit {\t\tborder-left-width: 1px;\t\tborder-top-width: 2px;"
              "\t\tborder-right-width: 3px;\t\tborder-bottom-width: 4px;\t}");

    SysButton button;
    // Two-value paddings take the horizontal value first and print the vertical one first.
    EXPECT_EQ(appendedBy(button, [&] { button.setPadding(1.0f, 0.25f); }),
              "\tQPushButton {\t\tpadding: 0.25em 1.00em;\t}");
    EXPECT_EQ(appendedBy(button, [&] { button.setFlatColor("#123"); }),
              "\tQPushButton {\t\tbackground-color: #123;\t}"
              "\tQPushButton:hover {\t\tbackground-color: #123;\t}"
              "\tQPushButton:pressed {\t\tbackground-color: #123;\t}");
    QPixmap pixmap(8, 8);
    pixmap.fill(Qt::red);
    EXPECT_EQ(appendedBy(button, [&] { button.setIconOnly(QIcon(pixmap), QSize(16, 16)); }),
              "QPushButton, QPushButton:hover, QPushButton:pressed{background: transparent;"
              "padding: 0px;border: none;}");
    EXPECT_EQ(button.iconSize(), QSize(16, 16));
    EXPECT_FALSE(button.icon().isNull());

    SysComboBox combo;
    EXPECT_EQ(appendedBy(combo, [&] { combo.setItemPadding(0.5f, 0.125f); }),
              "\tQComboBox QAbstractItemView::item {\t\tpadding: 0.13em 0.50em;\t}");
    EXPECT_EQ(appendedBy(combo, [&] { combo.setFontSize(12); }),
              "\tQComboBox {\t\tfont-size: 12px;\t}\tQComboBox::drop-down {\t\tfont-size: 12px;\t}"
              "\tQComboBox QAbstractItemView::item {\t\tfont-size: 12px;\t}");
    EXPECT_EQ(
        appendedBy(combo, [&] { combo.setArrowColor("#FFF"); }),
        "\tQComboBox::drop-down {\t\tborder-left-color: #FFF;\t}"
        "\tQComboBox::down-arrow {\t\tborder-top-color: #FFF;\t\tborder-bottom-color: #FFF;\t}");

    SysTextEdit text;
    EXPECT_EQ(
        appendedBy(text, [&] { text.setFocusColors("#111", "#222"); }),
        "\tQTextEdit {\t\tborder-color: #111;\t}\tQTextEdit:focus {\t\tborder-color: #222;\t}");

    SysMenu menu;
    EXPECT_EQ(appendedBy(menu, [&] { menu.setRadius(0.5f); }),
              "\tQMenu {\t\tborder-radius: 0.50em;\t}"
              "\tQMenu::item:first {\t\tborder-top-left-radius: 0.50em;"
              "\t\tborder-top-right-radius: 0.50em;\t}"
              "\tQMenu::item:last {\t\tborder-bottom-left-radius: 0.50em;"
              "\t\tborder-bottom-right-radius: 0.50em;\t}");

    SysLabel label;
    EXPECT_EQ(appendedBy(label, [&] { label.setPlain(); }),
              "\tQLabel {\t\tbackground-color: transparent;\t\tborder: none;\t}");

    // A later rule wins over the default before it.
    label.setFontSize(24);
    label.ensurePolished();
    EXPECT_EQ(label.font().pixelSize(), 24);
}

// Scroll-bar colours given after construction reach the bars on screen.
TEST(KitInputStyle, LaterScrollBarRulesReachTheScreen) {
    auto trackPixels = [](QAbstractScrollArea& w) {
        w.resize(200, 80);
        const QImage bar = w.verticalScrollBar()->grab().toImage();
        int n = 0;
        for (int y = 0; y < bar.height(); ++y)
            for (int x = 0; x < bar.width(); ++x)
                n += bar.pixelColor(x, y) == QColor("#ff8080"); // the track: red lightened 0.5
        return n;
    };
    SysTextEdit edit;
    edit.setPlainText(QString("line\n").repeated(200));
    edit.setScrollBarColor("#ff0000");
    EXPECT_GT(trackPixels(edit), 100);
    SysTextBrowser browser;
    browser.setPlainText(QString("line\n").repeated(200));
    browser.setScrollBarColor("#ff0000");
    EXPECT_GT(trackPixels(browser), 100);
    SysList list;
    for (int i = 0; i < 100; ++i)
        list.addItem("item");
    list.setScrollBarColor("#ff0000");
    EXPECT_GT(trackPixels(list), 100);
    SysTree tree;
    for (int i = 0; i < 100; ++i)
        tree.addTopLevelItem(new QTreeWidgetItem({"item"}));
    tree.setScrollBarColor("#ff0000");
    EXPECT_GT(trackPixels(tree), 100);
}
