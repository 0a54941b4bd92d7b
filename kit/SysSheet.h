#pragma once

// The one way the kit changes a widget's style sheet. The sheet text is always set at once, so
// styleSheet() reads exactly what the kit's rules made it. What Qt does with a new text is kept
// to once per widget: Qt parses a polished widget's sheet again and polishes the widget and
// everything under it on every new text, and on every re-parenting of a widget with a sheet.
// A widget that is not on screen (it sits in a page still being built, or in a tab not shown)
// instead gets its text stored and is marked unpolished, it and what lies under it, so that
// Qt polishes each of them once when they are shown. A widget on screen changes the ordinary
// way.

#include <QObject>
#include <QSet>
#include <QString>

#include <functional>

class QWidget;

class SysSheet : public QObject {
    Q_OBJECT

public:
    // Replaces the widget's sheet with `text`.
    static void set(QWidget* w, const QString& text);
    // Adds `fragment` behind what the widget's sheet holds.
    static void append(QWidget* w, const QString& fragment);
    // Runs `move`, which gives `w` a new parent, without Qt styling w's tree again on the way.
    static void move(QWidget* w, const std::function<void()>& move);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    SysSheet() = default;
    static SysSheet* instance();
    // Marks `w` and everything under it as not polished (see the source).
    static void markUnpolished(QWidget* w);

    // Widgets whose sheet changed since Qt last parsed it for them, as far as the kit knows.
    QSet<const QObject*> stale_;
};
