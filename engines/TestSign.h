#pragma once

#include <QString>

class AppImpleBase;
class ComPort;

// The production test sign that firmware of both chips keeps under TEST_SIGN: a text of
// station marks, one character a station, "0", "1" or "2". Its commands answer "SUCCESS" and
// "value:[...]" instead of "OK", so they are read with a timed read. Each engine offers these
// operations as its own and logs through itself.
class TestSign {
public:
    // The sign of a board that was never signed.
    static constexpr const char* kUnsigned = "0000000000";

    static bool set(AppImpleBase& engine, ComPort& port, const QString& sign);
    static bool get(AppImpleBase& engine, ComPort& port, QString& sign);
    // A mark as 0, 1 or 2; 3 for any other character.
    static bool getStation(AppImpleBase& engine, ComPort& port, int index, int& state);
    static bool setStation(AppImpleBase& engine, ComPort& port, int index, int state);
};
