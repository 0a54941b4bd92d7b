#include "kit/SysTree.h"

#include "kit/SysSheet.h"
#include "kit/SysStyle.h"

#include <QDrag>
#include <QDropEvent>
#include <QKeyEvent>
#include <QMimeData>
#include <QStyle>
#include <QStyleFactory>
#include <QTreeWidgetItemIterator>

namespace {

// The format under which the tree carries the dragged item; only this tree reads it.
const char kItemFormat[] = "application/x-qabstractitemmodeldatalist";

void expandSubtree(QTreeWidgetItem* item) {
    for (int i = 0; i < item->childCount(); ++i) {
        item->child(i)->setExpanded(true);
        expandSubtree(item->child(i));
    }
}

} // namespace

SysTree::SysTree(QWidget* parent) : QTreeWidget(parent) {
    setColumnCount(1);
    setHeaderItem(new QTreeWidgetItem(QStringList{QString()}));
    setHeaderHidden(true);
    if (QStyle* style = QStyleFactory::create(QStringLiteral("windows"))) {
        style->setParent(this);
        setStyle(style);
    }
    setDefaultDropAction(Qt::MoveAction);
    setDragDropMode(QAbstractItemView::InternalMove);
    setSelectionMode(QAbstractItemView::SingleSelection);
    SysSheet::set(
        this,
        QStringLiteral(
            "\tQTreeWidget {\t\tfont-family: '微软雅黑';\t\tbackground-color: #fff;"
            "\t\tborder: none;\t\toutline: 0px;\t\tmargin: 0px;\t}"
            "\tQTreeWidget::item:selected {\t\tcolor: #FFF;\t}"
            "\tQTreeWidget QMenu {\t\tfont-family: '微软雅黑';\t}"
            "\tQTreeWidget QScrollBar:vertical {\t\twidth: 8px;\t\tborder-radius: 4px;"
            "\t\tpadding: 1px;\t}"
            "\tQTreeWidget QScrollBar:horizontal {\t\theight: 8px;\t\tborder-radius: 4px;"
            "\t\tpadding: 1px;\t}"
            "\tQTreeWidget QScrollBar::handle {\t\tborder-radius: 2px;\t}"
            "\tQTreeWidget QScrollBar::handle:vertical {\t\tmin-height: 7px;\t}"
            "\tQTreeWidget QScrollBar::handle:horizontal {\t\tmin-width: 7px;\t}"
            "\tQTreeWidget QScrollBar::add-line, QTreeWidget QScrollBar::sub-line {\t\twidth: 0px;"
            "\t\theight: 0px;\t\tborder: none;\t\tbackground: transparent;\t}"
            "\tQTreeWidget QScrollBar::add-page, QTreeWidget QScrollBar::sub-page {\t\twidth: 0px;"
            "\t\theight: 0px;\t\tbackground: transparent;\t}"));
    setSelectionColor("#409eff");
    setFontSize(18);
    setTextColor("#000");
    setScrollBarColor("#ddd");
}

void SysTree::setFontSize(int px) {
    SysSheet::append(this, QString::asprintf("\tQTreeWidget {\t\tfont-size: %dpx;\t}"
                                             "\tQTreeWidget::item {\t\tfont-size: %dpx;\t}",
                                             px, px));
}

void SysTree::setTextColor(std::string color) {
    SysSheet::append(this, QString::asprintf("\tQTreeWidget {\t\tcolor: %s;\t}"
                                             "\tQTreeWidget::item {\t\tcolor: %s;\t}",
                                             color.c_str(), color.c_str()));
}

void SysTree::setFontWeight(int weight) {
    SysSheet::append(this, QString::asprintf("\tQTreeWidget {\t\tfont-weight: %d;\t}", weight));
}

void SysTree::setRadius(float em) {
    SysSheet::append(this, QString::asprintf("\tQTreeWidget {\t\tborder-radius: %.2fem;\t}", em));
}

void SysTree::setBorderWidth(int px) {
    SysSheet::append(this, QString::asprintf("\tQTreeWidget {\t\tborder-width: %dpx;"
                                             "\t\tborder-style: solid;\t}",
                                             px));
}

void SysTree::setBorderColor(std::string color) {
    SysSheet::append(this,
                     QString::asprintf("\tQTreeWidget {\t\tborder-color: %s;\t}", color.c_str()));
}

void SysTree::setPadding(float em) {
    SysSheet::append(this, QString::asprintf("\tQTreeWidget {\t\tpadding: %.2fem;\t}", em));
}

void SysTree::setBackgroundColor(std::string color) {
    SysSheet::append(
        this, QString::asprintf("\tQTreeWidget {\t\tbackground-color: %s;\t}", color.c_str()));
}

void SysTree::setScrollBarColor(std::string color) {
    SysSheet::append(this, sysScrollBarRules("QTreeWidget", color));
}

void SysTree::setSelectionColor(std::string color) {
    SysSheet::append(this, QString::asprintf("\tQTreeWidget::item:selected {"
                                             "\t\tbackground-color: %s;\t}",
                                             color.c_str()));
}

void SysTree::setDragging(bool enabled) {
    setDragEnabled(enabled);
    setAcceptDrops(enabled);
}

void SysTree::expandAllBelow(QTreeWidgetItem* item, bool expand) {
    if (!item)
        return;
    item->setExpanded(expand);
    expandSubtree(item);
}

QTreeWidgetItem* SysTree::cloneItem(QTreeWidgetItem* item, QTreeWidgetItem* parent) {
    auto* copy = new QTreeWidgetItem(parent);
    *copy = *item;
    for (int i = 0; i < item->childCount(); ++i)
        cloneItem(item->child(i), copy);
    return copy;
}

QList<QTreeWidgetItem*> SysTree::makeItems(const QStringList& texts) {
    QList<QTreeWidgetItem*> items;
    for (const QString& text : texts)
        items << new QTreeWidgetItem(QStringList{text});
    insertTopLevelItems(0, items);
    return items;
}

void SysTree::keyPressEvent(QKeyEvent* event) {
    emit keyDown(event);
}

void SysTree::keyReleaseEvent(QKeyEvent* event) {
    emit keyUp(event);
}

QTreeWidgetItem* SysTree::dropTarget(QDropEvent* event, int phase) {
    if (!event->mimeData()->hasFormat(QString::fromLatin1(kItemFormat)))
        return nullptr;
    QTreeWidgetItem* item = itemAt(event->pos());
    if (!item)
        return nullptr;
    if (dragHook && !dragHook(item, phase))
        return nullptr;
    return item;
}

void SysTree::dragEnterEvent(QDragEnterEvent* event) {
    if (dropTarget(event, DragMove))
        event->accept();
    else
        event->ignore();
}

void SysTree::dragMoveEvent(QDragMoveEvent* event) {
    QTreeWidgetItem* item = dropTarget(event, DragMove);
    if (!item) {
        event->ignore();
        return;
    }
    if (hoverItem && hoverItem != dragItem)
        hoverItem->setSelected(false);
    hoverItem = item;
    item->setSelected(true);
    event->setDropAction(Qt::MoveAction);
    event->accept();
}

void SysTree::dropEvent(QDropEvent* event) {
    if (!event->mimeData()->hasFormat(QString::fromLatin1(kItemFormat)))
        return;
    QTreeWidgetItem* target = itemAt(event->pos());
    if (!target)
        return;
    if (dragHook && dragHook(target, DragDrop) && dragItem) {
        // The hook has moved the item; the selection follows it to its new place.
        for (QTreeWidgetItemIterator it(this); *it; ++it)
            (*it)->setSelected(*it == dragItem);
        emit currentItemChanged(dragItem, currentItem());
    }
    dragItem = nullptr;
    hoverItem = nullptr;
    event->setDropAction(Qt::MoveAction);
    event->accept();
}

void SysTree::startDrag(Qt::DropActions /*supportedActions*/) {
    QTreeWidgetItem* item = currentItem();
    if (!item)
        return;
    if (dragHook && !dragHook(item, DragStart))
        return;
    dragItem = item;
    hoverItem = item;
    auto* data = new QMimeData;
    data->setData(QString::fromLatin1(kItemFormat),
                  QByteArray::number(reinterpret_cast<quintptr>(item)));
    auto* drag = new QDrag(this);
    drag->setMimeData(data);
    drag->exec(Qt::MoveAction);
    // A drag that ended outside the tree leaves no drop to clear these.
    dragItem = nullptr;
    hoverItem = nullptr;
}
