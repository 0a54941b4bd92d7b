#pragma once

#include <QFormLayout>
#include <QStringList>

#include <string>

class SysComboBox;
class SysLineEdit;
class SysTable;

// Form layout of the kit: labels right-aligned and drawn in `labelColor`.
class SysFormLayout : public QFormLayout {
    Q_OBJECT

public:
    explicit SysFormLayout(QWidget* parent = nullptr);

    // A row of a label (the text as given, no colon) and `field`.
    void addFormRow(QString label, QWidget* field);
    // A row with a line edit for `minLength` to `maxLength` characters, showing `text`.
    SysLineEdit* addLineRow(QString label, int minLength, int maxLength, QString text);
    SysComboBox* addComboRow(QString label, QStringList items);
    SysTable* addTableRow(QString label, QStringList headers);

    std::string labelColor;
};
