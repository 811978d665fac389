#ifndef RT305_HOST_BASE_LINES_H
#define RT305_HOST_BASE_LINES_H

#include <algorithm>
#include <string_view>

#include "base/text.h"

namespace rt305 {

/// Iterates over the lines of a text and counts them. Skips a byte order mark at the start and the DOS end-of-file
/// character (0x1A) at the end.
class Lines {
public:
    explicit Lines(std::string_view text) : rest_(text) {
        if (rest_.substr(0, 3) == "\xEF\xBB\xBF") {
            rest_.remove_prefix(3);
        }
        while (!rest_.empty() && rest_.back() == '\x1A') {
            rest_.remove_suffix(1);
        }
    }

    bool next() {
        if (rest_.empty()) {
            return false;
        }
        const std::size_t end = std::min(rest_.find('\n'), rest_.size());
        line_ = rest_.substr(0, end);
        rest_.remove_prefix(std::min(end + 1, rest_.size()));
        ++number_;
        return true;
    }

    /// The next line that is not blank.
    bool nextWithText() {
        while (next()) {
            if (!trimmed(line_).empty()) {
                return true;
            }
        }
        return false;
    }

    bool areAllRead() const { return trimmed(rest_).find_first_not_of('\n') == std::string_view::npos; }
    std::string_view line() const { return line_; }
    std::size_t number() const { return number_; }

private:
    std::string_view rest_;
    std::string_view line_;
    std::size_t number_ = 0;
};

}  // namespace rt305

#endif
