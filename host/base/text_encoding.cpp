#include "base/text_encoding.h"

#include <iconv.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <memory>

#include "base/failure.h"
#include "base/text.h"

namespace rt305 {

namespace {

constexpr std::string_view replacement = "\xEF\xBF\xBD";

/// What may follow a range of first bytes in UTF-8. The second byte excludes overlong forms, surrogates and characters
/// beyond U+10FFFF; the third and fourth are 0x80 to 0xBF.
struct Utf8Sequence {
    unsigned char lastFirstByte;  // the range begins where that of the previous entry ends
    unsigned char secondFrom, secondTo;
    std::size_t length;  // bytes; 0: no character begins with these bytes
};

/// The Unicode Standard, table 3-7 "Well-formed UTF-8 byte sequences".
constexpr Utf8Sequence utf8Sequences[] = {{0x7F, 0, 0, 1},       {0xC1, 0, 0, 0},       {0xDF, 0x80, 0xBF, 2},
                                          {0xE0, 0xA0, 0xBF, 3}, {0xEC, 0x80, 0xBF, 3}, {0xED, 0x80, 0x9F, 3},
                                          {0xEF, 0x80, 0xBF, 3}, {0xF0, 0x90, 0xBF, 4}, {0xF3, 0x80, 0xBF, 4},
                                          {0xF4, 0x80, 0x8F, 4}, {0xFF, 0, 0, 0}};

/// The length in bytes of the valid UTF-8 character at the start of a non-empty text; 0 when there is none.
std::size_t characterLength(std::string_view text) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const Utf8Sequence& sequence =
        *std::find_if(std::begin(utf8Sequences), std::end(utf8Sequences),
                      [first = byte(0)](const Utf8Sequence& s) { return first <= s.lastFirstByte; });
    if (sequence.length < 2) {
        return sequence.length;
    }
    if (sequence.length > text.size() || byte(1) < sequence.secondFrom || byte(1) > sequence.secondTo) {
        return 0;
    }
    for (std::size_t i = 2; i < sequence.length; ++i) {
        if ((byte(i) & 0xC0U) != 0x80U) {
            return 0;
        }
    }
    return sequence.length;
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

/// A control character or a byte that is not UTF-8.
std::string escapeOf(unsigned char code) {
    switch (code) {
        case '\n':
            return "\\n";
        case '\r':
            return "\\r";
        case '\t':
            return "\\t";
        default:
            constexpr const char* digits = "0123456789ABCDEF";
            return std::string("\\x") + digits[code / 16] + digits[code % 16];
    }
}

struct CloseConversion {
    void operator()(void* conversion) const { iconv_close(conversion); }
};

std::unique_ptr<void, CloseConversion> conversionFrom(const std::string& encoding) {
    const auto opened = iconv_open("UTF-8", encoding.c_str());
    if (opened == reinterpret_cast<iconv_t>(-1)) {  // NOLINT(performance-no-int-to-ptr): as iconv defines it
        failUsage("--encoding: " + inQuotes(encoding) + " is not a known text encoding; iconv -l lists them");
    }
    return std::unique_ptr<void, CloseConversion>(opened);
}

std::string decoded(std::string_view bytes, const std::string& encoding) {
    const auto conversion = conversionFrom(encoding);
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

std::string shown(std::string_view text, std::size_t most) {
    const auto isPlain = [](char c) { return c >= 0x20 && c < 0x7F; };
    if (text.size() <= most && std::all_of(text.begin(), text.end(), isPlain)) {
        return std::string(text);  // as nearly always
    }
    std::string result;
    while (!text.empty()) {
        const std::size_t length = std::max<std::size_t>(characterLength(text), 1);
        const auto first = static_cast<unsigned char>(text[0]);
        const auto last = static_cast<unsigned char>(text[length - 1]);
        const bool isControl = (length == 1 && (first < 0x20 || first >= 0x7F)) ||
                               (length == 2 && first == 0xC2 && last < 0xA0);  // U+0080 to U+009F
        const std::string next = isControl ? escapeOf(last) : std::string(text.substr(0, length));
        if (result.size() + next.size() > most) {
            return result + "...";
        }
        result += next;
        text.remove_prefix(length);
    }
    return result;
}

void requireEncoding(const std::string& encoding) {
    conversionFrom(encoding);
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

std::string percentEscaped(std::string_view bytes) {
    constexpr const char* digits = "0123456789ABCDEF";
    std::string text;
    for (const char c : bytes) {
        if (const auto code = static_cast<unsigned char>(c); c == '%' || code < ' ' || code > '~') {
            text += {'%', digits[code / 16], digits[code % 16]};
        } else {
            text += c;
        }
    }
    return text;
}

std::string withoutPercentEscapes(std::string_view text) {
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        unsigned char code = 0;
        const char* const digits = text.data() + i + 1;
        if (text[i] == '%' && i + 2 < text.size() && std::from_chars(digits, digits + 2, code, 16).ptr == digits + 2) {
            bytes += static_cast<char>(code);
            i += 2;
        } else {
            bytes += text[i];
        }
    }
    return bytes;
}

std::string undecodedText(const std::string& source) {
    return source +
           ": some text is not UTF-8 and partly replaced; --encoding decodes it, such as --encoding windows-1252";
}

void convertUtf16(std::string& bytes, const std::string& encoding) {
    const std::string_view mark = std::string_view(bytes).substr(0, 2);
    if (mark == "\xFF\xFE" || mark == "\xFE\xFF") {
        bytes = decoded(bytes, "UTF-16");
    } else if (lowerCase(encoding).rfind("utf-16", 0) == 0 && bytes.find('\0') != std::string::npos) {
        bytes = decoded(bytes, encoding);
    }
}

std::string toUtf8(std::string_view bytes, const std::string& encoding) {
    if (isUtf8(bytes)) {
        return std::string(bytes);
    }
    return encoding.empty() ? withReplacements(bytes) : withReplacements(decoded(bytes, encoding));
}

}  // namespace rt305
