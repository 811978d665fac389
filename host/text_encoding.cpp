#include "text_encoding.h"

#include <iconv.h>

#include <array>
#include <cerrno>
#include <memory>

#include "failure.h"
#include "text.h"

namespace rt305 {

namespace {

constexpr std::string_view replacement = "\xEF\xBF\xBD";

/// The length of the valid UTF-8 character at the start of a text that is not empty; 0 when there is none.
std::size_t characterLength(std::string_view text) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char first = byte(0);
    const std::size_t length = first < 0x80   ? 1
                               : first < 0xC2 ? 0
                               : first < 0xE0 ? 2
                               : first < 0xF0 ? 3
                               : first < 0xF5 ? 4
                                              : 0;
    if (length > text.size()) {
        return 0;
    }
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0) != 0x80) {
            return 0;
        }
    }
    // overlong forms, surrogates and what lies beyond U+10FFFF
    const bool invalid = length > 2 && ((first == 0xE0 && byte(1) < 0xA0) || (first == 0xED && byte(1) > 0x9F) ||
                                        (first == 0xF0 && byte(1) < 0x90) || (first == 0xF4 && byte(1) > 0x8F));
    return invalid ? 0 : length;
}

std::string withReplacements(std::string_view bytes) {
    std::string text;
    while (!bytes.empty()) {
        const std::size_t length = characterLength(bytes);
        text += length == 0 ? replacement : bytes.substr(0, length);
        bytes.remove_prefix(length == 0 ? 1 : length);
    }
    return text;
}

bool isUtf8(std::string_view bytes) {
    while (!bytes.empty()) {
        const std::size_t length = characterLength(bytes);
        if (length == 0) {
            return false;
        }
        bytes.remove_prefix(length);
    }
    return true;
}

struct CloseConversion {
    void operator()(void* conversion) const { iconv_close(conversion); }
};

std::string decoded(std::string_view bytes, const std::string& encoding) {
    const auto opened = iconv_open("UTF-8", encoding.c_str());
    if (opened == reinterpret_cast<iconv_t>(-1)) {
        failUsage("--encoding: " + inQuotes(encoding) + " is no known text encoding; iconv -l lists them");
    }
    const std::unique_ptr<void, CloseConversion> conversion(opened);
    std::string source(bytes);
    std::string text;
    char* in = source.data();
    std::size_t left = source.size();
    while (left > 0) {
        std::array<char, 4096> block;
        char* out = block.data();
        std::size_t room = block.size();
        const std::size_t result = iconv(conversion.get(), &in, &left, &out, &room);
        text.append(block.data(), block.size() - room);
        if (result == static_cast<std::size_t>(-1) && errno != E2BIG) {
            text += replacement;
            ++in;
            --left;
        }
    }
    return text;
}

}  // namespace

std::string toUtf8(std::string_view bytes, const std::string& encoding) {
    if (isUtf8(bytes)) {
        return std::string(bytes);
    }
    return encoding.empty() ? withReplacements(bytes) : withReplacements(decoded(bytes, encoding));
}

}  // namespace rt305
