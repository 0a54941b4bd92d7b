#include "kit/SysSheet.h"

#include <QStyle>
#include <QWidget>
#include <private/qwidget_p.h>

#include <vector>

namespace {

bool offScreen(QWidget* w) {
    return !w->isVisible();
}

bool hasChildWidgets(const QWidget* w) {
    for (const QObject* child : w->children())
        if (child->isWidgetType())
            return true;
    return false;
}

// The sheet style keeps each widget's sheet parsed, for the widget's own rules and for those of
// the widgets under it, and reads it again only when it polishes a widget whose rules it has on
// record. A widget with children puts its rules on record before its first stored text, so that
// its children never go on with a parse of an older text.
void putRulesOnRecord(QWidget* w) {
    if (!w->testAttribute(Qt::WA_StyleSheet) && hasChildWidgets(w) &&
        w->style()->inherits("QStyleSheetStyle"))
        w->style()->styleHint(QStyle::SH_EtchDisabledText, nullptr, w);
}

} // namespace

SysSheet* SysSheet::instance() {
    static SysSheet sheet;
    return &sheet;
}

// The next show (or size query) polishes each widget of the tree with the rules that hold then.
// A widget polished before still has its rules on record with the sheet style, and the sheet
// style drops the widget's parsed sheet when it polishes such a widget, so a text stored since
// is read afresh. Children read their ancestors' parsed sheets too: a child polished before a
// changed ancestor has the ancestor's sheet read afresh first.
void SysSheet::markUnpolished(QWidget* w) {
    SysSheet* sheet = instance();
    if (!sheet->stale_.contains(w)) {
        sheet->stale_.insert(w);
        connect(w, &QObject::destroyed, sheet,
                [sheet](QObject* gone) { sheet->stale_.remove(gone); });
    }
    const QList<QWidget*> tree = w->findChildren<QWidget*>() << w;
    for (QWidget* each : tree) {
        QWidgetPrivate::get(each)->polished = nullptr;
        each->installEventFilter(sheet);
    }
}

bool SysSheet::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::Polish)
        return false;
    watched->removeEventFilter(this);
    stale_.remove(watched);
    QList<QWidget*> changed; // ancestors with a changed sheet, nearest first
    for (QWidget* p = static_cast<QWidget*>(watched)->parentWidget(); p; p = p->parentWidget()) {
        if (stale_.contains(p))
            changed << p;
    }
    for (auto it = changed.crbegin(); it != changed.crend(); ++it) {
        stale_.remove(*it);
        (*it)->style()->polish(*it); // reads its sheet afresh; its own polish still comes
    }
    return false;
}

void SysSheet::set(QWidget* w, const QString& text) {
    if (!offScreen(w)) {
        w->setStyleSheet(text); // repolished at once, which is what a user then sees
        return;
    }
    // Unpolished, Qt only stores the text (or, the first time, gives the widget a sheet style).
    putRulesOnRecord(w);
    markUnpolished(w);
    w->setStyleSheet(text);
}

void SysSheet::append(QWidget* w, const QString& fragment) {
    set(w, w->styleSheet() + fragment);
}

void SysSheet::move(QWidget* w, const std::function<void()>& move) {
    if (!offScreen(w)) {
        move();
        return;
    }
    // Without a sheet and unpolished, a widget simply takes its new parent's sheet style: the
    // sheets are put aside for the move and put back after it.
    struct Held {
        QWidget* widget;
        QString sheet;
    };
    std::vector<Held> held;
    const QList<QWidget*> tree = w->findChildren<QWidget*>() << w;
    for (QWidget* each : tree) {
        QWidgetPrivate* d = QWidgetPrivate::get(each);
        d->polished = nullptr; // so that the move polishes none of them
        if (d->extra && !d->extra->styleSheet.isEmpty()) {
            held.push_back({each, d->extra->styleSheet});
            d->extra->styleSheet.clear();
        }
    }
    move();
    for (const Held& h : held)
        QWidgetPrivate::get(h.widget)->extra->styleSheet = h.sheet;
    for (const Held& h : held) {
        // A parent without a sheet style leaves a widget with a sheet of its own but without
        // the style that reads it: it gets one the ordinary way.
        if (!h.widget->style()->inherits("QStyleSheetStyle"))
            h.widget->setStyleSheet(h.sheet);
    }
    // The style change of the move may have polished some of them without their sheets.
    markUnpolished(w);
}
