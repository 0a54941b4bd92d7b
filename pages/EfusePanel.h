#pragma once

#include "kit/SysWidget.h"

#include <QList>
#include <QString>

#include <functional>

class CmdWindow;
class SysButton;
class SysComboBox;
class SysTable;

// The command page's second tab: one table row for each efuse field, read or burnt by row or
// all at once. Burns go out exactly as the row's widget holds them, without asking again; an
// efuse bit once burnt stays burnt.
class EfusePanel : public SysWidget {
    Q_OBJECT
public:
    EfusePanel(CmdWindow* page, QWidget* parent);

    enum Kind { LabelRow = 0, OptionRow = 1, KeyRow = 2 };
    using ReadWrite = std::function<void(bool isWrite, QString title, QWidget* value)>;
    using Action = std::function<void(QString title, QWidget* value)>;

    struct Row {
        QString title;
        QString desc;
        Kind kind = LabelRow;
        // A SysLabel, a SysComboBox or a SysLineEdit, by kind.
        QWidget* value = nullptr;
        ReadWrite readWrite;
        // Label and option rows, and key rows without actions.
        SysButton* readButton = nullptr;
        SysButton* writeButton = nullptr;
        // Key rows with actions: read, burn, then the actions.
        SysComboBox* actionBox = nullptr;
        QList<Action> actions;
    };

    // Every row from top to bottom, read or burnt as its widgets stand; a failed row does not
    // stop the walk.
    void readAll();
    void writeAll();

    SysButton* readAllButton = nullptr;
    SysButton* writeAllButton = nullptr;
    SysTable* table = nullptr;
    QList<Row> rows;

private:
    void buildTable();
    void addRow(const char* titleKey, Kind kind, ReadWrite readWrite, QList<Action> actions = {});
    QWidget* rowControls(Row& row, int index, const QStringList& actionTexts);

    // The read-and-write functions of the three kinds.
    void optionField(int offset, bool isWrite, const QString& title, QWidget* value);
    void counterField(bool isWrite, const QString& title, QWidget* value);
    void keyField(int offset, int bytes, bool isWrite, const QString& title, QWidget* value);
    // The key rows' actions.
    void loadKeyFile(const QString& title, QWidget* value);
    void randomKey(const QString& title, QWidget* value);

    CmdWindow* page_;
};
