#ifndef RT305_TESTS_HOST_READING_DESCRIBED_H
#define RT305_TESTS_HOST_READING_DESCRIBED_H

#include <gtest/gtest.h>

#include <functional>
#include <sstream>

#include "base/failure.h"
#include "recording/recording.h"

/// A recording as a text, such as "1000 Hz: Ua V 1 2" or "3 at 1 Hz from 0, 4 at 1 Hz from 3: 2 -1": its rate or
/// segments, then name, unit and samples of its first column. What is said of it follows in `remarks`; a recording that
/// is refused has no other text.
inline std::string described(const std::function<rt305::Recording()>& read, std::string& remarks) try {
    const rt305::Recording recording = read();
    std::ostringstream text;
    const auto& segments = recording.segments;
    for (const rt305::Segment& segment : segments) {
        text << (&segment == &segments[0] ? "" : ", ");
        text << (segments.size() == 1 ? "" : std::to_string(segment.count) + " at ") << segment.rateHz << " Hz";
        if (segments.size() > 1) {
            text << " from " << recording.seconds[segment.first];
        }
    }
    const rt305::Column& column = recording.columns[0];
    text << ": " << column.name << (column.unit.empty() ? "" : " ") << column.unit;
    for (const double x : column.samples) {
        text << ' ' << x;
    }
    for (const std::string& warning : recording.warnings) {
        remarks += warning + "\n";
    }
    return text.str();
} catch (const rt305::Failure& failure) {
    EXPECT_EQ(failure.code(), rt305::ExitCode::unreadable);
    remarks = failure.what();
    return {};
}

/// Whether all of the words, with "; " between them, are in the remarks; there are none when nothing is expected.
inline bool areSaid(const std::string& words, const std::string& remarks) {
    const std::size_t end = std::min(words.find("; "), words.size());
    return words.empty() ? remarks.empty()
                         : remarks.find(words.substr(0, end)) != std::string::npos &&
                               (end == words.size() || areSaid(words.substr(end + 2), remarks));
}

#endif
