#include "kit/SysFormLayout.h"

#include "kit/SysComboBox.h"
#include "kit/SysLabel.h"
#include "kit/SysLineEdit.h"
#include "kit/SysTable.h"

SysFormLayout::SysFormLayout(QWidget* parent) : QFormLayout(parent), labelColor("#000") {
    setLabelAlignment(Qt::AlignRight);
}

void SysFormLayout::addFormRow(QString label, QWidget* field) {
    auto* caption = new SysLabel(parentWidget(), label);
    caption->setTextColor(labelColor);
    caption->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    addRow(caption, field);
}

SysLineEdit* SysFormLayout::addLineRow(QString label, int minLength, int maxLength, QString text) {
    auto* edit = new SysLineEdit(parentWidget());
    edit->setMinLength(minLength);
    edit->setMaxLength(maxLength);
    edit->setText(text);
    addFormRow(label, edit);
    return edit;
}

SysComboBox* SysFormLayout::addComboRow(QString label, QStringList items) {
    auto* combo = new SysComboBox(parentWidget(), items);
    addFormRow(label, combo);
    return combo;
}

SysTable* SysFormLayout::addTableRow(QString label, QStringList headers) {
    auto* table = new SysTable(parentWidget(), headers);
    addFormRow(label, table);
    return table;
}
