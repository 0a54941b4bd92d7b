#pragma once

#include <exception>
#include <string>

namespace serial {

// A failure of the operating system's port driver.
class IOException : public std::exception {
public:
    IOException(const std::string& file, int line, const std::string& description);
    const char* what() const noexcept override { return what_.c_str(); }

private:
    std::string what_;
};

} // namespace serial
