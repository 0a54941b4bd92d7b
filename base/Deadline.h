#pragma once

#include <chrono>
#include <cstdint>

// Millisecond countdown behind every wait. It starts when it is made.
class Deadline {
public:
    explicit Deadline(uint32_t ms);

    // Milliseconds left; below zero once the time is over.
    int64_t remaining() const;

    // True once fewer than 1 ms are left, so a Deadline of 0 ms has expired at once.
    bool expired() const { return started_ && remaining() < 1; }

private:
    uint32_t spanMs_;
    std::chrono::steady_clock::time_point start_;
    bool started_;
};
