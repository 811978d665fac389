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
    for (const rt305::Remark& warning : recording.warnings) {
        remarks += warning.text + "\n";
    }
    return text.str();
} catch (const rt305::Failure& failure) {
    EXPECT_EQ(failure.code(), rt305::ExitCode::unreadable);
    remarks = failure.what();
    return {};
}

/// Expects what is described, and remarks with all of the words with "; " between them, or none.
inline void expectRead(const std::string& shown, const std::function<rt305::Recording()>& read,
                       const std::string& recording, const std::string& says) {
    std::string remarks;
    EXPECT_EQ(described(read, remarks), recording) << shown;
    EXPECT_EQ(says.empty(), remarks.empty()) << shown << remarks;
    for (std::size_t at = 0, end = 0; at < says.size(); at = end + 2) {
        end = std::min(says.find("; ", at), says.size());
        EXPECT_NE(remarks.find(says.substr(at, end - at)), std::string::npos) << shown << says << "\n" << remarks;
    }
}

#endif
