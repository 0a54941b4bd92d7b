#pragma once

#include <QLabel>
#include <Qt>

#include <string>

class SysWidget;

// Label of the kit: centred text on a transparent ground that also acts as a click target.
class SysLabel : public QLabel {
    Q_OBJECT

public:
    explicit SysLabel(QWidget* parent = nullptr, const QString& text = QString());

    void setFontSize(int px);
    void setFontWeight(int weight);
    void setRadius(float em);
    void setTextColor(std::string color);
    void setBackgroundColor(std::string color);
    // No ground and no border, for a label inside a coloured container.
    void setPlain();

signals:
    void clicked();

protected:
    // Every press is a click; the label itself does nothing with it.
    void mousePressEvent(QMouseEvent* event) override;
};

// A form row owned by `parent`: a plain widget with a horizontal layout holding a label
// "<label>:" aligned right, then `control` aligned left. `vertical` is added to both
// alignments; the typed row factories centre their rows vertically.
SysWidget* sysMakeWidgetRow(QString label, QWidget* control, QWidget* parent,
                            Qt::Alignment vertical = Qt::Alignment());
