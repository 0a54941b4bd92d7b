#pragma once

#include "engines/AppImpleUtils.h"
#include "engines/NvItem.h"
#include "pages/TabWinBase.h"

#include <QList>

#include <functional>

class SysComboBox;
class SysLabel;
class SysLineEdit;
class SysNumberEdit;
class SysTable;

// The fourth tab: a table of up to 100 NV items edited by hand, loaded from and saved to conf
// files and binary NV images of either type ("partition" or "nv") and any size from 4 to 24
// KB. Everything runs on the interface thread; every outcome is one line in the process log.
class BlendWindow : public TabWinBase {
    Q_OBJECT
public:
    explicit BlendWindow(QWidget* parent);

    static constexpr int kRows = 100;

    // One row of the table. Its texts live here; the widgets are made when the row is first
    // shown (see row()).
    struct Row {
        SysLabel* number = nullptr;
        SysLineEdit* name = nullptr;
        SysLineEdit* value = nullptr;
        SysLineEdit* desc = nullptr;
        NvItem texts;
    };

    // The row with its widgets made.
    Row& row(int index);
    // The filled rows (a trimmed name that is not empty), trimmed, in table order.
    QList<NvItem> readTable() const;
    // Empties every row, then puts item i into row i; false, with nothing changed, for a list
    // longer than the table.
    bool fillTable(const QList<NvItem>& items);
    void clearTable();

    // The action boxes' items.
    void loadConf();
    void loadImage();
    void saveConf();
    void saveImage();
    // Partition images hold their key items first, lower-cased; false after its line when the
    // list does not hold each key item once.
    bool partitionCheck(QList<NvItem>& items);

    AppImpleUtils utils;
    SysComboBox* typeBox = nullptr;
    SysNumberEdit* sizeEdit = nullptr;
    SysComboBox* importBox = nullptr;
    SysComboBox* exportBox = nullptr;
    SysComboBox* otherBox = nullptr;
    SysTable* table = nullptr;

private:
    void buildSettings();
    void buildTable();
    void makeRow(int index);
    void setRowTexts(int index, const NvItem& texts);
    SysComboBox* actionBox(QWidget* parent, const char* key, const QStringList& items,
                           const QList<void (BlendWindow::*)()>& actions);
    // A path from the open or the save dialog; empty, after the cancel line, when none.
    QString openPath(const QString& filter);
    QString savePath(const QString& filter, const QString& suggested);
    // Writes `path` through a file beside it that takes its place only when `save` succeeded,
    // so that a failed save leaves neither a half-written file nor a lost old one.
    static bool saveReplacing(const QString& path, const std::function<bool(const QString&)>& save);

    QList<Row> rows_;
};
