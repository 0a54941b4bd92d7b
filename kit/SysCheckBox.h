#pragma once

#include <QCheckBox>

#include <functional>
#include <string>

// Check box of the kit: black text in the kit's font.
class SysCheckBox : public QCheckBox {
    Q_OBJECT

public:
    explicit SysCheckBox(QWidget* parent = nullptr, const QString& text = QString());

    void setFontSize(int px);
    void setFontWeight(int weight);
    void setTextColor(std::string color);

public slots:
    // Calls `cb` with the new checked state on every change of state.
    void onChecked(std::function<void(bool)> cb);
};
