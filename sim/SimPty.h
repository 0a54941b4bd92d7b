#pragma once

#include <QByteArray>

#include <cstdint>
#include <string>
#include <vector>

// The board's end of a pseudo terminal. The master side is read in packet mode with the
// slave's EXTPROC flag set, so that every change the host makes to the line settings (a new
// rate, an open) reaches the reader as a status byte and wakes it. The host's opens and closes
// of the slave are watched with inotify; whether anybody holds the slave is told by the
// master's hang-up state.
class SimPty {
public:
    explicit SimPty(uint32_t baud);
    ~SimPty();
    SimPty(const SimPty&) = delete;
    SimPty& operator=(const SimPty&) = delete;

    // False when no pty could be made; then nothing else works.
    bool isValid() const { return master_ >= 0; }
    const std::string& slavePath() const { return slavePath_; }
    int masterFd() const { return master_; }
    // -1 when inotify is not available: opens are then not seen.
    int watchFd() const { return watch_; }

    // The rate the host has set on the slave (the slave's termios, read through the master).
    uint32_t hostBaud() const;

    struct Input {
        std::vector<QByteArray> data; // in the order read
        bool settingsChanged = false; // a status byte came: the host changed the line
    };
    // Reads everything the master has now, without waiting.
    Input readAll();

    // Takes the open and close events that are waiting and gives back how many times the
    // slave went from held by nobody to held by somebody.
    int takeOpenEvents();
    // Whether some process holds the slave now: it has been opened, and the master shows no
    // hang-up.
    bool hostHolds() const;
    // Called when the master reports a hang-up: nobody holds the slave.
    void noteHangUp() { holders_ = 0; }
    // True when nobody holds the slave right now (checked on the master, without waiting).
    bool hungUp() const;

    // Writes what the master takes now: the count, 0 when it is full, -1 on an error.
    int write(const char* p, int n);

private:
    // Puts the slave into raw 8N1 at baud with EXTPROC.
    void setSlaveSettings(uint32_t baud);

    int master_ = -1;
    int watch_ = -1;
    std::string slavePath_;
    int holders_ = 0;
    bool everOpened_ = false;
};
