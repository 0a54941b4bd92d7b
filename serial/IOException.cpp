#include "serial/IOException.h"

namespace serial {

IOException::IOException(const std::string& file, int line, const std::string& description)
    : what_("IO Exception: " + description + ", file " + file + ", line " + std::to_string(line) +
            ".") {}

} // namespace serial
