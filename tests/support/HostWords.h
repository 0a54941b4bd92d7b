#pragma once

#include "host/HostTextFiles.h"

// The host's English words, read from the source tree, for tests that build real windows.
class HostWords : public HostTextFiles {
public:
    HostWords();
};

// A word service that answers every key with the key itself, to check which keys are asked.
class EchoWords : public HostTextService {
public:
    QString configDir() override { return QString(); }
    QString text(QString key) override { return key; }
};
