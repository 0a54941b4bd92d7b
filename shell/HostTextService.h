#pragma once

#include <QString>

// The host's service for words and its configuration folder. The host owns the object and
// hands it to the plug-in before init(); Bramble asks it for every word it shows or logs.
class HostTextService {
public:
    virtual ~HostTextService() = default;

    // Folder where the plug-in keeps its own files (the terminal's serial.config).
    virtual QString configDir() = 0;

    // The text behind a slash-path key, in the host's interface language.
    virtual QString text(QString key) = 0;
};
