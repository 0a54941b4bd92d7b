#include "kit/SysSplitter.h"

#include "kit/SysSheet.h"

#include <QEvent>

SysSplitter::SysSplitter(QWidget* parent) : QSplitter(parent) {
    setChildrenCollapsible(false);
    SysSheet::set(this, QStringLiteral("\tQSplitter {\t\tfont-family: '微软雅黑';\t\tpadding: 0px;"
                                       "\t\tmargin: 0px;\t\tbackground: transparent;\t}"
                                       "\tQSplitter::handle {\t\tbackground: transparent;\t}"));
}

void SysSplitter::setBackgroundColor(std::string color) {
    SysSheet::append(this,
                     QString::asprintf("\tQSplitter {\t\tbackground-color: %s;\t}", color.c_str()));
}

void SysSplitter::setPadding(float em) {
    SysSheet::append(this, QString::asprintf("\tQSplitter {\t\tpadding: %.2fem;\t}", em));
}

void SysSplitter::setHandleWidth(int px) {
    SysSheet::append(this, QString::asprintf("\tQSplitter::handle {\t\twidth: %dpx;\t}", px));
}

void SysSplitter::setRadius(float em) {
    SysSheet::append(this, QString::asprintf("\tQSplitter {\t\tborder-radius: %.2fem;\t}", em));
}

void SysSplitter::setHorizontal(bool horizontal) {
    setOrientation(horizontal ? Qt::Horizontal : Qt::Vertical);
}

void SysSplitter::clearWidgets() {
    while (count() > 0) {
        QWidget* w = widget(0);
        // Unparenting drops the widget from the splitter's list at once.
        w->setParent(nullptr);
        delete w;
    }
}

QSize SysSplitter::sizeHint() const {
    return sizeDeferred ? QSize(0, 0) : QSplitter::sizeHint();
}

QSize SysSplitter::minimumSizeHint() const {
    return sizeDeferred ? QSize(0, 0) : QSplitter::minimumSizeHint();
}

bool SysSplitter::event(QEvent* event) {
    // Unlike a layout, a splitter measures its children on a layout request even while it is
    // not shown; its first show measures them anyway.
    if (sizeDeferred && event->type() == QEvent::LayoutRequest)
        return true;
    return QSplitter::event(event);
}
