#include "base/text_encoding.h"

#include <iconv.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <memory>

#include "base/failure.h"
#include "base/text.h"

namespace rt305 {

namespace {

constexpr std::string_view replacement = "\xEF\xBF\xBD";

/// The length of the valid UTF-8 character at the start of a text that is not empty; 0 when there is none.
std::size_t characterLength(std::string_view text) {
    // first bytes, and the second ones that make no overlong form, no surrogate and nothing beyond U+10FFFF
    struct Form {
        unsigned char firstTo, secondFrom, secondTo;
        std::size_t length;
    };
    static constexpr Form forms[] = {{0x7F, 0, 0, 1},       {0xC1, 0, 0, 0},       {0xDF, 0x80, 0xBF, 2},
                                     {0xE0, 0xA0, 0xBF, 3}, {0xEC, 0x80, 0xBF, 3}, {0xED, 0x80, 0x9F, 3},
                                     {0xEF, 0x80, 0xBF, 3}, {0xF0, 0x90, 0xBF, 4}, {0xF3, 0x80, 0xBF, 4},
                                     {0xF4, 0x80, 0x8F, 4}, {0xFF, 0, 0, 0}};
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const Form& form =
        *std::find_if(std::begin(forms), std::end(forms), [&](const Form& f) { return byte(0) <= f.firstTo; });
    if (form.length < 2 || form.length > text.size()) {
        return form.length < 2 ? form.length : 0;
    }
    const bool second = form.secondFrom <= byte(1) && byte(1) <= form.secondTo;
    const auto continues = [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U; };
    return second && std::all_of(text.begin() + 2, text.begin() + static_cast<std::ptrdiff_t>(form.length), continues)
               ? form.length
               : 0;
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
    if (opened == reinterpret_cast<iconv_t>(-1)) {  // NOLINT(performance-no-int-to-ptr): iconv's own convention
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
