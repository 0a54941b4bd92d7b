#pragma once

#include "base/ComPort.h"
#include "pages/PageSession.h"

// The download page's session: a run keeps the page's port open across its steps.
class DownloadSession : public PageSession {
public:
    using PageSession::PageSession;

    ComPort port;
};
