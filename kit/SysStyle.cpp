#include "kit/SysStyle.h"

#include "kit/SysHLayout.h"
#include "kit/SysSplitter.h"
#include "kit/SysVLayout.h"
#include "kit/SysWidget.h"

#include <QGuiApplication>
#include <QScreen>

#include <cctype>
#include <cmath>
#include <cstdio>

namespace {

// Parses "#rgb" or "#rrggbb" into three channel values; false for anything else.
bool parseHexColor(const std::string& color, int channels[3]) {
    if (color.empty() || color[0] != '#')
        return false;
    std::string digits = color.substr(1);
    if (digits.size() == 3)
        digits = {digits[0], digits[0], digits[1], digits[1], digits[2], digits[2]};
    else if (digits.size() != 6)
        return false;
    for (char ch : digits) {
        if (!std::isxdigit(static_cast<unsigned char>(ch)))
            return false;
    }
    for (int i = 0; i < 3; ++i)
        channels[i] = std::stoi(digits.substr(i * 2, 2), nullptr, 16);
    return true;
}

std::string formatHexColor(const int channels[3]) {
    char text[8];
    std::snprintf(text, sizeof text, "#%02x%02x%02x", channels[0], channels[1], channels[2]);
    return text;
}

bool validFactor(float factor) {
    // Written so that a NaN factor is rejected as well.
    return factor >= 0.0f && factor <= 1.0f;
}

} // namespace

std::string sysLighten(std::string color, float factor) {
    int channels[3];
    if (!parseHexColor(color, channels) || !validFactor(factor))
        return std::string();
    for (int& c : channels)
        c = c + static_cast<int>(std::roundf(static_cast<float>(255 - c) * factor));
    return formatHexColor(channels);
}

std::string sysDarken(std::string color, float factor) {
    int channels[3];
    if (!parseHexColor(color, channels) || !validFactor(factor))
        return std::string();
    for (int& c : channels)
        c = static_cast<int>(std::roundf(static_cast<float>(c) * (1.0f - factor)));
    return formatHexColor(channels);
}

SysSplitter* sysMakeSplitter(QWidget* parent, QList<QWidget*> widgets, bool horizontal,
                             QString stretchSpec) {
    auto* splitter = new SysSplitter(parent);
    for (QWidget* w : widgets)
        splitter->addWidget(w);
    splitter->setHorizontal(horizontal);
    const QStringList pieces = stretchSpec.split(';');
    for (const QString& piece : pieces) {
        if (piece.isEmpty())
            continue;
        const QStringList parts = piece.split(':');
        if (parts.size() != 2)
            continue;
        splitter->setStretchFactor(parts[0].toInt(), parts[1].toInt());
    }
    return splitter;
}

namespace {

void fillBox(QBoxLayout* layout, const QList<QWidget*>& widgets, bool addStretch,
             Qt::Alignment align) {
    for (QWidget* w : widgets)
        layout->addWidget(w, 0, align);
    layout->setContentsMargins(0, 0, 0, 0);
    if (addStretch)
        layout->addStretch(1);
}

} // namespace

SysWidget* sysMakeBoxWidget(QWidget* parent, QList<QWidget*> widgets, bool horizontal,
                            bool addStretch, Qt::Alignment align) {
    auto* box = new SysWidget(parent);
    QBoxLayout* layout = horizontal ? static_cast<QBoxLayout*>(new SysHLayout(box))
                                    : static_cast<QBoxLayout*>(new SysVLayout(box));
    fillBox(layout, widgets, addStretch, align);
    return box;
}

QBoxLayout* sysMakeBoxLayout(QWidget* parent, QList<QWidget*> widgets, bool horizontal,
                             bool addStretch) {
    QBoxLayout* layout = horizontal ? static_cast<QBoxLayout*>(new SysHLayout(parent))
                                    : static_cast<QBoxLayout*>(new SysVLayout(parent));
    fillBox(layout, widgets, addStretch, Qt::Alignment());
    return layout;
}

void sysResizeRelative(QWidget* w, QWidget* reference, float ratio) {
    QSize base;
    if (reference) {
        base = reference->size();
    } else if (QScreen* screen = QGuiApplication::primaryScreen()) {
        base = screen->availableGeometry().size();
    }
    w->resize(static_cast<int>(static_cast<float>(base.width()) * ratio),
              static_cast<int>(static_cast<float>(base.height()) * ratio));
}

QStringList sysRangeStrings(int from, int to, std::function<QString(int)> format, int step) {
    QStringList texts;
    if (step == 0)
        return texts;
    auto text = [&format](int v) { return format ? format(v) : QString::number(v); };
    // The walk runs in 64 bits so that a range ending near the int limits cannot overflow.
    if (step > 0) {
        for (long long v = from; v <= to; v += step)
            texts << text(static_cast<int>(v));
    } else {
        for (long long v = from; v >= to; v += step)
            texts << text(static_cast<int>(v));
    }
    return texts;
}

QString sysScrollBarRules(const char* scope, std::string color) {
    const std::string track = sysLighten(color, 0.5f);
    const std::string handle = sysDarken(color, 0.25f);
    const std::string handleHover = sysDarken(color, 0.5f);
    return QString::asprintf(
        "\t%s QScrollBar {\t\tbackground-color: %s;\t\tborder: 1px solid %s;\t}"
        "\t%s QScrollBar:hover {\t\tborder: 1px solid %s;\t}"
        "\t%s QScrollBar::handle {\t\tbackground-color: %s;\t}"
        "\t%s QScrollBar::handle:hover {\t\tbackground-color: %s;\t}",
        scope, track.c_str(), color.c_str(), scope, color.c_str(), scope, handle.c_str(), scope,
        handleHover.c_str());
}
