#pragma once

#include "pages/DownloadSettings.h"

#include <QString>
#include <QVector>

// A ".setting" file of the download page: the stub with the software's start address, and the
// file list. Reading takes the file's elements in order and stops at the first one it does not
// know, keeping what came before it, so that the page shows what the file could give.
class DownloadSettingFile {
public:
    enum class Outcome {
        Read,        // the whole file was taken
        OpenFailed,  // no file, or not XML
        RootInvalid, // the root element is not "Root"
        NodeInvalid  // an element of another name stopped the reading; see badNode
    };

    bool hasStub = false; // a "Stub" element was read; the two fields below are its
    QString stubPath;
    QString startupAddr;
    // The list's rows as the file fills them from the top. A second "FileList" fills them
    // again from the top.
    QVector<DownloadRow> rows;
    QString badNode;

    // Reads path, filling at most maxRows rows; entries beyond them are passed by.
    Outcome read(const QString& path, int maxRows);
    // Writes the stub and every row in GBK, attributes in their fixed order.
    bool write(const QString& path) const;
};
