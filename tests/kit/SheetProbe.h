#pragma once

#include <QString>
#include <QWidget>
#include <gtest/gtest.h>

#include <string>

// Runs `change` on `w` and gives back the text it appended to the style sheet. A change that
// altered what the sheet held before fails the calling test.
template <class Change> std::string appendedBy(QWidget& w, Change&& change) {
    const QString before = w.styleSheet();
    change();
    const QString after = w.styleSheet();
    EXPECT_TRUE(after.startsWith(before)) << "sheet was rewritten: " << after.toStdString();
    return after.mid(before.size()).toStdString();
}

inline bool sheetEndsWith(const QWidget& w, const char* tail) {
    return w.styleSheet().endsWith(QString::fromUtf8(tail));
}
