#include "serial/PortNotOpenedException.h"

namespace serial {

PortNotOpenedException::PortNotOpenedException(const std::string& description)
    : what_("PortNotOpenedException " + description + " failed.") {}

} // namespace serial
