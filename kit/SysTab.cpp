#include "kit/SysTab.h"

#include "kit/SysSheet.h"
#include "kit/SysSplitter.h"
#include "kit/SysStyle.h"
#include "kit/SysWidget.h"

#include <QCoreApplication>
#include <QEvent>
#include <private/qwidget_p.h>

SysTab::SysTab(QWidget* parent) : QTabWidget(parent) {
    SysSheet::set(
        this, QStringLiteral(
                  "\tQTabWidget {\t\tfont-family: '微软雅黑';\t}"
                  "\tQTabWidget::pane {\t\tborder: 1px solid transparent;\t\tborder-radius: .75em;"
                  "\t\tpadding: .75em;\t}"
                  "\tQTabWidget::tab-bar {\t\tleft: 1em;\t}"
                  "\tQTabWidget QTabBar {\t\tbackground: transparent;\t}"
                  "\tQTabWidget QTabBar::tab {\t\tpadding: .25em .75em;\t\tmargin-right: .25em;"
                  "\t\tborder-bottom: none;\t}"
                  "\tQTabWidget QTabBar::tab:selected {\t\tcolor: #fff;\t}"));
    setThemeColor("#409eff");
    setRadius(0.5f);
    setFontSize(18);
    // One connection serves every hook, so that all hooks compare against the same previous
    // index before it moves on.
    connect(this, &QTabWidget::currentChanged, this, &SysTab::tabChanged);
}

void SysTab::setFontSize(int px) {
    SysSheet::append(this, QString::asprintf("\tQTabWidget {\t\tfont-size: %dpx;\t}"
                                             "\tQTabWidget QTabBar {\t\tfont-size: %dpx;\t}"
                                             "\tQTabWidget QTabBar::tab {\t\tfont-size: %dpx;\t}",
                                             px, px, px));
}

void SysTab::setRadius(float em) {
    SysSheet::append(this, QString::asprintf("\tQTabWidget {\t\tborder-top-left-radius: %.2fem;"
                                             "\t\tborder-top-right-radius: %.2fem;\t}"
                                             "\tQTabWidget QTabBar::tab {"
                                             "\t\tborder-top-left-radius: %.2fem;"
                                             "\t\tborder-top-right-radius: %.2fem;\t}"
                                             "\tQTabWidget::pane {\t\tborder-radius: %.2fem;\t}",
                                             em, em, em, em, em));
}

void SysTab::setPaneBorderWidth(int px) {
    SysSheet::append(this, QString::asprintf("\tQTabWidget::pane {\t\tborder-width: %dpx;\t}", px));
}

void SysTab::setPaneRadius(float em) {
    SysSheet::append(this,
                     QString::asprintf("\tQTabWidget::pane {\t\tborder-radius: %.2fem;\t}", em));
}

void SysTab::setPaneBorderColor(std::string color) {
    SysSheet::append(
        this, QString::asprintf("\tQTabWidget::pane {\t\tborder-color: %s;\t}", color.c_str()));
}

void SysTab::setPanePadding(float em) {
    SysSheet::append(this, QString::asprintf("\tQTabWidget::pane {\t\tpadding: %.2fem;\t}", em));
}

void SysTab::setPaneBackgroundColor(std::string color) {
    SysSheet::append(
        this, QString::asprintf("\tQTabWidget::pane {\t\tbackground-color: %s;\t}", color.c_str()));
}

void SysTab::setTabTextColor(std::string color) {
    SysSheet::append(
        this, QString::asprintf("\tQTabWidget QTabBar::tab {\t\tcolor: %s;\t}", color.c_str()));
}

void SysTab::setTabBackgroundColor(std::string color) {
    SysSheet::append(this,
                     QString::asprintf("\tQTabWidget QTabBar::tab {\t\tbackground-color: %s;\t}",
                                       color.c_str()));
}

void SysTab::setTabHoverColor(std::string color) {
    SysSheet::append(
        this, QString::asprintf("\tQTabWidget QTabBar::tab:hover {\t\tbackground-color: %s;\t}",
                                color.c_str()));
}

void SysTab::setTabSelectedColor(std::string color) {
    SysSheet::append(
        this, QString::asprintf("\tQTabWidget QTabBar::tab:selected {\t\tbackground-color: %s;"
                                "\t\tborder-color: %s;\t}",
                                color.c_str(), color.c_str()));
}

void SysTab::setThemeColor(std::string color) {
    const std::string light = sysLighten(color, 0.75f);
    SysSheet::append(
        this, QString::asprintf("\tQTabWidget::pane {\t\tborder-color: %s;\t}"
                                "\tQTabWidget QTabBar::tab:hover {\t\tbackground-color: %s;\t}"
                                "\tQTabWidget QTabBar::tab:selected {\t\tbackground-color: %s;"
                                "\t\tborder-color: %s;\t}",
                                light.c_str(), light.c_str(), color.c_str(), color.c_str()));
}

void SysTab::fitTabCorners(float radius) {
    const QString r = QString::asprintf("%.2fem", radius);
    const QString zero = QStringLiteral("0px");
    // Corners in the order top left, top right, bottom left, bottom right.
    QString corners[4] = {zero, zero, zero, zero};
    switch (tabPosition()) {
    case QTabWidget::North:
        corners[0] = corners[1] = r;
        break;
    case QTabWidget::South:
        corners[2] = corners[3] = r;
        break;
    case QTabWidget::West:
        corners[0] = corners[2] = r;
        break;
    case QTabWidget::East:
        corners[1] = corners[3] = r;
        break;
    }
    SysSheet::append(
        this, QString::asprintf("\tQTabWidget QTabBar::tab {"
                                "\t\tborder-top-left-radius: %s;"
                                "\t\tborder-top-right-radius: %s;"
                                "\t\tborder-bottom-left-radius: %s;"
                                "\t\tborder-bottom-right-radius: %s;\t}",
                                corners[0].toUtf8().constData(), corners[1].toUtf8().constData(),
                                corners[2].toUtf8().constData(), corners[3].toUtf8().constData()));
}

void SysTab::onTabActive(int index, std::function<void(bool)> cb) {
    tabHooks.emplace_back(index, std::move(cb));
}

void SysTab::tabChanged(int index) {
    // The first tab appearing in an empty widget is the initial state, not a change.
    if (lastIndex >= 0) {
        // Indexed, with a copy of each hook, so that a callback may add hooks of its own.
        for (size_t i = 0; i < tabHooks.size(); ++i) {
            const auto [hookIndex, cb] = tabHooks[i];
            if (index == hookIndex && lastIndex != hookIndex)
                cb(true);
            else if (index != hookIndex && lastIndex == hookIndex)
                cb(false);
        }
    }
    lastIndex = index;
}

int SysTab::addTab(QWidget* page, const QString& label) {
    int index = -1;
    SysSheet::move(page, [&] { index = QTabWidget::addTab(page, label); });
    if (index > 0 && page != currentWidget())
        defer(page);
    return index;
}

void SysTab::setSizeDeferred(QWidget* page, bool deferred) {
    if (auto* widget = qobject_cast<SysWidget*>(page))
        widget->sizeDeferred = deferred;
    else if (auto* splitter = qobject_cast<SysSplitter*>(page))
        splitter->sizeDeferred = deferred;
}

void SysTab::defer(QWidget* page) {
    setSizeDeferred(page, true);
    // Qt styles a window's whole tree the first time it styles the window, and it does not go
    // below a widget it takes as styled already: the page is taken as styled until it shows.
    QWidgetPrivate::get(page)->polished = page->metaObject();
    // Each new widget has also asked to be styled at the next turn of the event loop; showing
    // the page answers that.
    const QList<QWidget*> tree = page->findChildren<QWidget*>() << page;
    for (QWidget* w : tree)
        QCoreApplication::removePostedEvents(w, QEvent::PolishRequest);
    page->installEventFilter(this);
}

bool SysTab::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Show) {
        auto* page = static_cast<QWidget*>(watched);
        page->removeEventFilter(this);
        setSizeDeferred(page, false);
        // Its children styled themselves on the way to the screen; now the page itself.
        QWidgetPrivate::get(page)->polished = nullptr;
        page->ensurePolished();
        page->updateGeometry();
    }
    return QTabWidget::eventFilter(watched, event);
}
