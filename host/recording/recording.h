#ifndef RT305_HOST_RECORDING_RECORDING_H
#define RT305_HOST_RECORDING_RECORDING_H

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "recording/remark.h"

namespace rt305 {

/// The instrument transformer between grid and recorder, and the side that the values in the file refer to.
struct Transformer {
    enum class Side { unknown, primary, secondary };

    double primary = 1.0;
    double secondary = 1.0;
    Side side = Side::unknown;
};

/// One column of a recording, as in the file.
struct Column {
    std::string name;
    std::string unit;             // as written in the file; empty when not given
    std::vector<double> samples;  // in `unit`; NaN where one is missing
    std::string fault;            // why the column has no samples; empty when it has
    std::string phase{};          // as written in the file: "A", "R", "L1"; empty when not given
    Transformer transformer{};
    double delaySeconds = 0.0;  // of its samples, relative to the times of the recording
};

/// A run of evenly spaced samples.
struct Segment {
    std::size_t first = 0;
    std::size_t count = 0;
    double rateHz = 0.0;

    double durationSeconds() const { return static_cast<double>(count) / rateHz; }
};

/// A file of a recording.
struct SourceFile {
    std::string name;        // "-": stdin
    std::string checksum{};  // SHA-256 of the bytes that were read; empty unless wanted

    bool isStdin() const { return name == "-"; }
};

/// The content of a file of any format, in its own units. Every reader makes one; the rest of the tool uses nothing
/// else.
struct Recording {
    std::string source;  // file name, for messages
    std::vector<Column> columns{};
    std::size_t length = 0;                                    // samples in every column without a fault
    std::vector<double> seconds{};                             // time of each sample; empty when unknown
    std::vector<Segment> segments{};                           // all samples in order; empty when the rate is unknown
    double nominalHz = 0.0;                                    // of the grid, as the file says; 0 when it does not
    std::string rateOrigin{};                                  // "from column ..." and the like
    std::string format{};                                      // "CSV", "COMTRADE, BINARY" and the like
    std::vector<std::pair<std::string, std::string>> facts{};  // other information in the file: label, text
    std::vector<Remark> warnings{};                            // problems that did not prevent reading
    std::vector<SourceFile> files{};                           // all files read

    /// The information with that label; empty when the file has none.
    std::string fact(std::string_view label) const;

    /// Makes the recording one segment of evenly spaced samples from time zero.
    void setRate(double rateHz, std::string origin);
};

/// A path without its folders; "stdin" for "-".
std::string baseNameOf(const std::string& path);

/// A message with the names of the recording's files without their folders.
std::string withoutFolders(std::string message, const Recording& recording);

/// Evenly spaced times: row k of a run has the time start + k * period.
struct EvenTimes {
    double start;
    double period;
};

/// The straight line closest to the times of `count` rows, 2 or more, from `first` on, by least squares. Where stamps
/// were rounded so that most repeat, it goes through the middles of the rows with equal stamps, without the first and
/// last stamp, whose rows may be incomplete: 1 ms stamps at 10 kHz give 0.1 ms.
EvenTimes evenTimesOf(const std::vector<double>& seconds, std::size_t first, std::size_t count);

/// The segment that is measured by default: the longest of those within 1 % of the highest rate. The recording must
/// have a segment.
std::size_t mainSegment(const Recording& recording);

/// The time stamp of the first sample of a segment, which has a number from 1 on, or of the main one, in ns since 1970
/// or, without a date, since midnight; nothing when the file does not say it.
std::optional<std::int64_t> clockOf(const Recording& recording, std::optional<std::size_t> segment);

/// The part of a segment that begins `startSeconds` after its first sample and lasts `durationSeconds` (0: to the end
/// of the segment), with its own mean rate. Fails when it is empty or not inside the segment.
Segment partOf(const Recording& recording, const Segment& segment, double startSeconds, double durationSeconds);

/// Counts samples that seem clipped: runs of three or more at the largest or smallest value, not at an end of the
/// column, that begin or end with a step of more than twice the smallest step in the column. A rounded crest has no
/// such step.
std::size_t countClipped(const std::vector<double>& samples);

/// Counts missing samples (NaN).
std::size_t countMissing(std::span<const double> samples);

/// The mean of the samples that are not missing; NaN when there are none.
double meanOf(const std::vector<double>& samples);

/// The largest absolute value. NaN is ignored; 0 when there are no samples.
double largestMagnitude(const std::vector<double>& samples);

/// Converts samples in a unit to V or A. Samples of an unknown unit are unchanged.
void convertToBaseUnit(std::vector<double>& samples, const std::string& unit);

/// Keeps `count` samples from `first` on, in place.
void keepPart(std::vector<double>& samples, std::size_t first, std::size_t count);

}  // namespace rt305

#endif
