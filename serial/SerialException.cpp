#include "serial/SerialException.h"

namespace serial {

SerialException::SerialException(const std::string& description)
    : what_("SerialException " + description + " failed.") {}

} // namespace serial
