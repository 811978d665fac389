#include "measuring/text_reader.h"

#include <algorithm>
#include <charconv>
#include <limits>

#include "base/failure.h"

namespace rt305 {

std::string_view TextReader::string() {
    expect('"');
    const std::size_t begin = at_;
    at_ = std::min(text_.find_first_of("\"\\", at_), text_.size());
    expect('"');
    return text_.substr(begin, at_ - 1 - begin);
}

double TextReader::number() {
    if (text_.substr(at_, 4) == "null") {
        at_ += 4;
        return std::numeric_limits<double>::quiet_NaN();
    }
    double value = 0.0;
    const auto [end, error] = std::from_chars(text_.data() + at_, text_.data() + text_.size(), value);
    if (error != std::errc{}) {
        fail();
    }
    at_ = static_cast<std::size_t>(end - text_.data());
    return value;
}

void TextReader::skip() {
    switch (next()) {
        case '{':
            return object([this](std::string_view) { skip(); });
        case '[':
            return array([this] { skip(); });
        case '"':
            string();
            return;
        default:
            number();
    }
}

void TextReader::end() {
    if (at_ != text_.size()) {
        fail();
    }
}

void TextReader::fail() const {
    failEnvironment("the library's text cannot be read from byte " + std::to_string(at_) + " on");
}

}  // namespace rt305
