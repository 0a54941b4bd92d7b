#pragma once

#include <QLayout>

// Base for kit layouts that manage their items themselves. Like QLayout it stays abstract: a
// subclass supplies addItem, count, itemAt and takeAt.
class SysLayout : public QLayout {
    Q_OBJECT

public:
    explicit SysLayout(QWidget* parent = nullptr);
};
