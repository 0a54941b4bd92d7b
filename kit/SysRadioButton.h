#pragma once

#include <QRadioButton>

#include <string>

// Radio button of the kit: black text in the kit's font.
class SysRadioButton : public QRadioButton {
    Q_OBJECT

public:
    explicit SysRadioButton(QWidget* parent = nullptr, const QString& text = QString());

    void setFontSize(int px);
    void setFontWeight(int weight);
    void setTextColor(std::string color);
};
