#pragma once

#include <QString>

class HostTextService;

// The plug-in's change history as an HTML fragment, worded by the host: one block per
// version, oldest first, each with its numbered change lines.
class VersionHistory {
public:
    static QString html(HostTextService* texts);
};
