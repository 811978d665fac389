#ifndef RT305_HOST_BASE_TEXT_ENCODING_H
#define RT305_HOST_BASE_TEXT_ENCODING_H

#include <string>
#include <string_view>

namespace rt305 {

/// Converts a text to valid UTF-8. Valid UTF-8 is unchanged; other text is decoded from `encoding` (a name that iconv
/// knows). Invalid bytes become U+FFFD. Fails only when the encoding is unknown.
std::string toUtf8(std::string_view bytes, const std::string& encoding = "");

/// The warning that a file has text for which `encoding` is needed.
std::string undecodedText(const std::string& source);

/// A text from a file or its name as people may see it: control characters and bytes that are not UTF-8 are written as
/// \n, \t, \r or \x1B, so that they command no terminal and begin no line. Longer texts end with "..." after `most`
/// bytes.
std::string shown(std::string_view text, std::size_t most = std::string_view::npos);

bool isUtf8(std::string_view bytes);

/// Fails with a message about --encoding unless iconv knows the encoding.
void requireEncoding(const std::string& encoding);

/// Any bytes as ASCII, as in a URL: "%", control characters and bytes above 0x7E as %XX. The second gets them back.
std::string percentEscaped(std::string_view bytes);
std::string withoutPercentEscapes(std::string_view text);

/// Converts UTF-16 to UTF-8: text with a byte order mark, or of an encoding whose name begins with "UTF-16". Leaves any
/// other text as it is.
void convertUtf16(std::string& bytes, const std::string& encoding = "");

}  // namespace rt305

#endif
