#include "kit/SysLabel.h"

#include "kit/SysHLayout.h"
#include "kit/SysSheet.h"
#include "kit/SysWidget.h"

#include <QMouseEvent>

SysLabel::SysLabel(QWidget* parent, const QString& text) : QLabel(text, parent) {
    SysSheet::set(
        this,
        QStringLiteral(
            "\tQLabel {\t\tfont-family: '微软雅黑';\t\tmin-height: 1em;\t\tline-height: 1em;\t}"
            "\tQLabel:disabled {\t\tcolor: #c0c0c0;\t\tbackground-color: #fafafa;"
            "\t\tborder-color: #c0c0c0;\t}"));
    setTextColor("#000");
    setFontSize(18);
    setBackgroundColor("transparent");
    setAlignment(Qt::AlignCenter);
}

void SysLabel::setFontSize(int px) {
    SysSheet::append(this, QString::asprintf("\tQLabel {\t\tfont-size: %dpx;\t}", px));
}

void SysLabel::setFontWeight(int weight) {
    SysSheet::append(this, QString::asprintf("\tQLabel {\t\tfont-weight: %d;\t}", weight));
}

void SysLabel::setRadius(float em) {
    SysSheet::append(this, QString::asprintf("\tQLabel {\t\tborder-radius: %.2fem;\t}", em));
}

void SysLabel::setTextColor(std::string color) {
    SysSheet::append(this, QString::asprintf("\tQLabel {\t\tcolor: %s;\t}", color.c_str()));
}

void SysLabel::setBackgroundColor(std::string color) {
    SysSheet::append(this,
                     QString::asprintf("\tQLabel {\t\tbackground-color: %s;\t}", color.c_str()));
}

void SysLabel::setPlain() {
    SysSheet::append(this, QString::asprintf("\tQLabel {\t\tbackground-color: transparent;"
                                             "\t\tborder: none;\t}"));
}

void SysLabel::mousePressEvent(QMouseEvent* event) {
    event->accept();
    emit clicked();
}

SysWidget* sysMakeWidgetRow(QString label, QWidget* control, QWidget* parent,
                            Qt::Alignment vertical) {
    auto* row = new SysWidget(parent);
    auto* layout = new SysHLayout(row);
    auto* caption = new SysLabel(row, label + QLatin1Char(':'));
    layout->addWidget(caption, 0, Qt::AlignRight | vertical);
    // The control moves from its own parent into the row.
    SysSheet::move(control, [&] { layout->addWidget(control, 0, Qt::AlignLeft | vertical); });
    return row;
}
