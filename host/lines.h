#ifndef RT305_HOST_LINES_H
#define RT305_HOST_LINES_H

#include <algorithm>
#include <string_view>

#include "text.h"

namespace rt305 {

/// Hands out the lines of a text, and knows the number of the present one. A byte order mark before the first line and
/// the end-of-file character of DOS (0x1A) behind the last are no part of the text.
class Lines {
public:
    explicit Lines(std::string_view text) : _rest(text) {
        if (_rest.substr(0, 3) == "\xEF\xBB\xBF") {
            _rest.remove_prefix(3);
        }
        while (!_rest.empty() && _rest.back() == '\x1A') {
            _rest.remove_suffix(1);
        }
    }

    bool next() {
        if (_rest.empty()) {
            return false;
        }
        const std::size_t end = std::min(_rest.find('\n'), _rest.size());
        _line = _rest.substr(0, end);
        _rest.remove_prefix(std::min(end + 1, _rest.size()));
        ++_number;
        return true;
    }

    /// The next line that is not blank.
    bool nextWithText() {
        while (next()) {
            if (!trimmed(_line).empty()) {
                return true;
            }
        }
        return false;
    }

    bool areAllRead() const { return trimmed(_rest).find_first_not_of('\n') == std::string_view::npos; }
    std::string_view line() const { return _line; }
    std::size_t number() const { return _number; }

private:
    std::string_view _rest;
    std::string_view _line;
    std::size_t _number = 0;
};

}  // namespace rt305

#endif
