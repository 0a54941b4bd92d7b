#pragma once

#include <exception>
#include <string>

namespace serial {

// A misuse of the port, such as opening it twice.
class SerialException : public std::exception {
public:
    explicit SerialException(const std::string& description);
    const char* what() const noexcept override { return what_.c_str(); }

private:
    std::string what_;
};

} // namespace serial
