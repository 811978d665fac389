#ifndef RT305_HOST_BASE_TEXT_ENCODING_H
#define RT305_HOST_BASE_TEXT_ENCODING_H

#include <string>
#include <string_view>

namespace rt305 {

/// The text as valid UTF-8, whatever the file's encoding: valid UTF-8 as it stands, else decoded from `encoding` (a
/// name that iconv knows), and what remains invalid as U+FFFD. Fails only when there is no such encoding.
std::string toUtf8(std::string_view bytes, const std::string& encoding = "");

}  // namespace rt305

#endif
