#include "kit/SysProgressBar.h"

#include "kit/SysSheet.h"

SysProgressBar::SysProgressBar(QWidget* parent) : QProgressBar(parent) {
    // Qt style sheets know no overflow property, so the chunk is kept inside the rounded bar
    // by giving it the bar's radius (setRadius) rather than by clipping.
    SysSheet::set(
        this,
        QStringLiteral(
            "\tQProgressBar {\t\tfont-family: '微软雅黑';\t\tcolor: #fff;\t\ttext-align: center;"
            "\t\tbackground-color: #FFFFFF;\t\tborder: 1px solid transparent;"
            "\t\tmin-width: 4em;\t}"
            "\tQProgressBar:disabled {\t\tcolor: #fafafa;\t}"
            "\tQProgressBar::chunk:disabled {\t\tbackground-color: #c0c0c0;\t}"));
    setRadius(0.625f);
    setFontSize(18);
    setTextColors("#fff");
    setThemeColor("#409eff");
}

void SysProgressBar::setRadius(float em) {
    SysSheet::append(this, QString::asprintf("\tQProgressBar {\t\tborder-radius: %fem;\t}"
                                             "\tQProgressBar::chunk {\t\tborder-radius: %fem;\t}",
                                             em, em));
}

void SysProgressBar::setBorderWidth(int px) {
    SysSheet::append(this, QString::asprintf("\tQProgressBar {\t\tborder-width: %dpx;\t}", px));
}

void SysProgressBar::setBorderColor(std::string color) {
    SysSheet::append(this,
                     QString::asprintf("\tQProgressBar {\t\tborder-color: %s;\t}", color.c_str()));
}

void SysProgressBar::setFontSize(int px) {
    SysSheet::append(this, QString::asprintf("\tQProgressBar {\t\tfont-size: %dpx;\t}"
                                             "\tQProgressBar::chunk {\t\tfont-size: %dpx;\t}",
                                             px, px));
}

void SysProgressBar::setTextColors(std::string color) {
    textColor = color;
    SysSheet::append(this, QString::asprintf("\tQProgressBar {\t\tcolor: %s;\t}"
                                             "\tQProgressBar::chunk {\t\tcolor: %s;\t}",
                                             color.c_str(), color.c_str()));
}

void SysProgressBar::setNoBorder() {
    SysSheet::append(this, QString::asprintf("\tQProgressBar {\t\tborder: none;\t}"));
}

void SysProgressBar::setChunkGradient(QStringList colors) {
    QStringList stops;
    const int n = colors.size();
    for (int i = 0; i < n; ++i)
        stops << QString::asprintf("stop: %.2f %s", static_cast<float>(i) / static_cast<float>(n),
                                   colors[i].toUtf8().constData());
    SysSheet::append(this, QString::asprintf("QProgressBar::chunk{background:qlineargradient("
                                             "spread:pad,x1:0,y1:0,x2:1,y2:0,%s);}",
                                             stops.join(',').toUtf8().constData()));
}

void SysProgressBar::setBarHeight(int px) {
    SysSheet::append(this, QString::asprintf("\tQProgressBar {\t\tmin-height: %dpx;"
                                             "\t\tmax-height: %dpx;\t}",
                                             px, px));
}

void SysProgressBar::setTextFormat(std::string format, int mode) {
    QString text = QString::fromLocal8Bit(format.c_str(), static_cast<int>(format.size()));
    if (mode == 0)
        text.replace(QStringLiteral("{}"), QStringLiteral("%p%"));
    else if (mode == 1)
        text.replace(QStringLiteral("{}"), QStringLiteral("%v/%m"));
    setFormat(text);
}

void SysProgressBar::setThemeColor(std::string color) {
    themeColor = color;
    SysSheet::append(this, QString::asprintf("\tQProgressBar {\t\tborder-color: %s;\t}"
                                             "\tQProgressBar::chunk {\t\tbackground-color: %s;\t}",
                                             color.c_str(), color.c_str()));
}
