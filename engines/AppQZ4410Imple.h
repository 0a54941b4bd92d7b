#pragma once

#include "engines/AioItem.h"
#include "engines/AppImpleBase.h"

#include <QList>

#include <cstdint>

class ComPort;

// The QZ4410 engine: the raw dialogue of the boot ROM. A word for sync, single bytes for
// answers, bare 12-byte headers and unframed data blocks; no retries, only the resync of a
// header that the board did not take in step. It also reads the "beno" all-in-one image.
class AppQZ4410Imple : public AppImpleBase {
    Q_OBJECT
public:
    AppQZ4410Imple();
    ~AppQZ4410Imple() override;

    void setBlockSize(int size) { blockSize = size; }
    void setLogProgress(bool on) { logProgress = on; }

    // One sync try: writes "cnys", hands back the first byte of the answer in *mode.
    bool syncBoard(ComPort& port, int* mode, uint32_t timeoutMs);
    bool changeBaud(ComPort& port, uint32_t baud, int timeoutMs);
    bool downloadUboot(ComPort& port, const QString& path, uint32_t address, bool syncAfter);
    bool downloadUbootData(ComPort& port, const ByteBuffer& data, uint32_t address,
                           bool syncAfter);
    bool downloadTrunk(ComPort& port, uint32_t type, uint32_t address, const ByteBuffer& data);
    bool downloadEntry(ComPort& port, const AioItem& item);
    bool sendFinish(ComPort& port);
    static QString modeText(int mode);

    // Appends the whole file to out.
    bool readFile(const QString& path, ByteBuffer& out);
    bool parseAio(const QString& path, QList<AioItem>& items);

    // The code the ROM knows a rate by, 0 for a rate it does not know.
    static int baudCode(uint32_t baud);

private:
    int blockSize = 1024;
    bool logProgress = false;
};
