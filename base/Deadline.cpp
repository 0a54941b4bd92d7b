#include "base/Deadline.h"

Deadline::Deadline(uint32_t ms)
    : spanMs_(ms), start_(std::chrono::steady_clock::now()), started_(true) {}

int64_t Deadline::remaining() const {
    const auto used = std::chrono::duration_cast<std::chrono::milliseconds>(
                          std::chrono::steady_clock::now() - start_)
                          .count();
    return int64_t(spanMs_) - used;
}
