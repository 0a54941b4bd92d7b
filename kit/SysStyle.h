#pragma once

// Free helpers of the widget kit: colour shades derived from a theme colour, and the small
// factories that pages use to put widgets into splitters and box layouts.

#include <QList>
#include <QString>
#include <QStringList>
#include <Qt>

#include <functional>
#include <string>

class QBoxLayout;
class QWidget;
class SysSplitter;
class SysWidget;

// Shade of a "#rgb" or "#rrggbb" colour towards white (lighten) or black (darken) by a factor
// in [0, 1]. Any other input gives the empty string, which a style rule then simply ignores.
std::string sysLighten(std::string color, float factor);
std::string sysDarken(std::string color, float factor);

// A splitter owned by `parent` holding `widgets` in order. `stretchSpec` lists
// "index:factor" pieces joined by ";"; pieces that are not exactly two parts are skipped.
SysSplitter* sysMakeSplitter(QWidget* parent, QList<QWidget*> widgets, bool horizontal,
                             QString stretchSpec = QString());

// A new plain widget owned by `parent` with a margin-less box layout holding `widgets`, each
// with stretch 0 and `align`; `addStretch` puts a stretch of factor 1 after them.
SysWidget* sysMakeBoxWidget(QWidget* parent, QList<QWidget*> widgets, bool horizontal,
                            bool addStretch, Qt::Alignment align = Qt::Alignment());

// The same box layout without the wrapping widget; the layout is made with `parent` and the
// widgets are added without alignment.
QBoxLayout* sysMakeBoxLayout(QWidget* parent, QList<QWidget*> widgets, bool horizontal,
                             bool addStretch);

// Resizes `w` to `ratio` times the size of `reference`, or of the primary screen's available
// area when there is no reference.
void sysResizeRelative(QWidget* w, QWidget* reference, float ratio);

// The texts of the values from `from` to `to`, both included, going by `step` (negative walks
// downwards). A step of 0 yields nothing.
QStringList sysRangeStrings(int from, int to, std::function<QString(int)> format, int step = 1);

// The scroll-bar rules of a scrolling widget whose selector is `scope` (e.g. "QTextEdit"),
// shaded from one colour: track, border, handle and their hover states.
QString sysScrollBarRules(const char* scope, std::string color);
