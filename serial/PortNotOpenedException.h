#pragma once

#include <exception>
#include <string>

namespace serial {

// An operation that needs an open port was called on a closed one.
class PortNotOpenedException : public std::exception {
public:
    explicit PortNotOpenedException(const std::string& description);
    const char* what() const noexcept override { return what_.c_str(); }

private:
    std::string what_;
};

} // namespace serial
