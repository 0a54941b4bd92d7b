#pragma once

#include <cstdint>

namespace serial {

// Driver time-outs in milliseconds. All zero: a read waits for every byte asked for and a
// write for every byte given.
struct Timeout {
    uint32_t inter_byte_timeout = 0;
    uint32_t read_timeout_constant = 0;
    uint32_t read_timeout_multiplier = 0;
    uint32_t write_timeout_constant = 0;
    uint32_t write_timeout_multiplier = 0;
};

// Fixed to int, so a value from outside the lists is still a value that the port can refuse.
enum bytesize_t : int { fivebits = 5, sixbits = 6, sevenbits = 7, eightbits = 8 };
enum parity_t : int {
    parity_none = 0,
    parity_odd = 1,
    parity_even = 2,
    parity_mark = 3,
    parity_space = 4
};
enum stopbits_t : int { stopbits_one = 1, stopbits_two = 2, stopbits_one_point_five = 3 };
enum flowcontrol_t : int {
    flowcontrol_none = 0,
    flowcontrol_software = 1,
    flowcontrol_hardware = 2
};

} // namespace serial
