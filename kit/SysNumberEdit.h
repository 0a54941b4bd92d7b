#pragma once

#include <QList>
#include <QSpinBox>

#include <string>

// Integer field of the kit with flat arrows in the theme colour. QSpinBox::valueChanged is
// overloaded, so the value is re-emitted under a name of its own that pages connect to.
class SysNumberEdit : public QSpinBox {
    Q_OBJECT

public:
    explicit SysNumberEdit(QWidget* parent = nullptr, int value = 0);

    void setMinWidth(float em);
    void setMaxWidth(float em);
    void setRadius(float em);
    void setBorderWidth(int px);
    void setFontSize(int px);
    // Border, focus border, selection, arrows and the context menu in `color`; arrows darker
    // when hovered.
    void setThemeColor(std::string color);

signals:
    void valueChangedPrivPriv(int value);

public slots:
    void valueChangedPriv(int v);
};

// A form row "<label>:" with a number field limited to `minimum` .. `maximum`; the field
// starts at 0 brought into that range. Gives back the row widget, then the number field.
QList<QWidget*> sysMakeNumberRow(QString label, int minimum, int maximum, QWidget* parent);
