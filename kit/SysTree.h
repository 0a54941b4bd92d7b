#pragma once

#include <QStringList>
#include <QTreeWidget>

#include <functional>
#include <string>

// One-column tree of the kit with guarded drag and drop: an item may be dragged only onto
// other items of the same tree, and a hook decides at each step whether that is allowed. The
// tree moves nothing itself; on a drop the hook does the moving. Key presses are handed to
// the owner as signals instead of moving the selection.
class SysTree : public QTreeWidget {
    Q_OBJECT

public:
    // Phases given to the drag hook.
    enum DragPhase { DragStart = 0, DragMove = 1, DragDrop = 2 };

    explicit SysTree(QWidget* parent = nullptr);

    // Tree and items.
    void setFontSize(int px);
    // Tree and items.
    void setTextColor(std::string color);
    void setFontWeight(int weight);
    void setRadius(float em);
    void setBorderWidth(int px);
    void setBorderColor(std::string color);
    void setPadding(float em);
    void setBackgroundColor(std::string color);
    void setScrollBarColor(std::string color);
    void setSelectionColor(std::string color);

    // Dragging from and dropping onto the tree, both at once.
    void setDragging(bool enabled);
    // Expands or collapses `item`, and expands every item below it.
    void expandAllBelow(QTreeWidgetItem* item, bool expand);
    // A deep copy of `item` and all its descendants, made a child of `parent`.
    QTreeWidgetItem* cloneItem(QTreeWidgetItem* item, QTreeWidgetItem* parent);
    // One top-level item for each text, inserted together before the existing ones.
    QList<QTreeWidgetItem*> makeItems(const QStringList& texts);

    // Asked with the item concerned and a DragPhase: the dragged item at the start, the item
    // under the cursor while moving and at the drop. False refuses the step; on a true drop
    // the hook moves the item. Empty means every step is allowed and drops do nothing.
    std::function<bool(QTreeWidgetItem*, int)> dragHook;
    // The item being dragged and the one last hovered; null between drags.
    QTreeWidgetItem* dragItem = nullptr;
    QTreeWidgetItem* hoverItem = nullptr;

signals:
    void keyDown(QKeyEvent* ev);
    void keyUp(QKeyEvent* ev);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void startDrag(Qt::DropActions supportedActions) override;

private:
    // The item under `pos` if the drag carries a tree item and the hook allows it there.
    QTreeWidgetItem* dropTarget(QDropEvent* event, int phase);
};
