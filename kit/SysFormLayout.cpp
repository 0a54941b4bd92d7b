#include "kit/SysFormLayout.h"

SysFormLayout::SysFormLayout(QWidget* parent) : QFormLayout(parent), labelColor("#000") {
    setLabelAlignment(Qt::AlignRight);
}
