#ifndef RT305_HOST_WRITING_NUMBER_TEXT_H
#define RT305_HOST_WRITING_NUMBER_TEXT_H

#include <array>
#include <charconv>
#include <string>

namespace rt305 {

/// The shortest text that gives the same double when read.
inline std::string exactText(double value) {
    std::array<char, 32> text{};
    return {text.data(), std::to_chars(text.data(), text.data() + text.size(), value).ptr};
}

/// The same without an exponent.
inline std::string plainText(double value) {
    std::array<char, 400> text{};
    return {text.data(), std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed).ptr};
}

}  // namespace rt305

#endif
