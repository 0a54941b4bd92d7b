#pragma once

#include <QDialog>

#include <string>

// Dialog of the kit: white, the kit's font, minimise, maximise and close buttons.
class SysDialog : public QDialog {
    Q_OBJECT

public:
    explicit SysDialog(QWidget* parent = nullptr);

    void setFontSize(int px);
    void setBackgroundColor(std::string color);
    void setPadding(float em);

    // Size as a fraction of `reference`, or of the screen when there is none.
    void resizeRelative(float ratio, QWidget* reference = nullptr);
};
