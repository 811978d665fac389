#ifndef RT305_HOST_BASE_CSV_FIELD_H
#define RT305_HOST_BASE_CSV_FIELD_H

#include <string>

namespace rt305 {

/// A field of a CSV line, quoted if necessary (RFC 4180). A text that a spreadsheet would compute, as its first
/// character is =, +, - or @, begins with an apostrophe.
std::string csvField(const std::string& text);

}  // namespace rt305

#endif
