#ifndef RT305_HOST_RECORDING_RECORDING_H
#define RT305_HOST_RECORDING_RECORDING_H

#include <string>
#include <utility>
#include <vector>

namespace rt305 {

/// The instrument transformer between the grid and a recorder, and which side of it a file's values are of.
struct Transformer {
    enum class Side { unknown, primary, secondary };

    double primary = 1.0;
    double secondary = 1.0;
    Side side = Side::unknown;
};

/// One column of a recording as its file holds it.
struct Column {
    std::string name;
    std::string unit;             // as written in the file; empty when the file does not say
    std::vector<double> samples;  // in `unit`; NaN where one is missing
    std::string fault;            // why the column holds no samples; empty when it does
    std::string phase{};          // as written in the file: "A", "R", "L1"; empty when the file does not say
    Transformer transformer{};
    double delaySeconds = 0.0;  // by which its samples were taken later than the recording's time says
};

/// A run of samples that are evenly spaced in time.
struct Segment {
    std::size_t first = 0;
    std::size_t count = 0;
    double rateHz = 0.0;
};

/// What every file reader makes, and all that the rest of the tool knows of a file.
struct Recording {
    std::string source;  // the file's name, for messages
    std::vector<Column> columns{};
    std::size_t length = 0;           // samples in every column without a fault
    std::vector<double> seconds{};    // when each sample was taken; empty when the file does not say
    std::vector<Segment> segments{};  // all samples in order; empty when the rate is unknown
    std::string rateOrigin{};         // "from column ..." and the like
    std::string format{};             // "CSV", "COMTRADE, BINARY" and the like
    std::vector<std::pair<std::string, std::string>> facts{};  // what else the file says of itself: label, text
    std::vector<std::string> warnings{};                       // what a reader found odd but could read
    std::vector<std::string> files{};                          // that were read; none when it was stdin

    /// Evenly spaced samples from time zero on, all one segment.
    void setRate(double rateHz, std::string origin);
};

/// The segment that is measured when nobody chooses: among those with the highest rate, within 1 %, the longest.
/// The recording has one.
std::size_t mainSegment(const Recording& recording);

/// The samples of a segment from `startSeconds` after its first on, as many as last `durationSeconds` (0: to its end),
/// with the rate that they have. Fails when there are none.
Segment partOf(const Recording& recording, const Segment& segment, double startSeconds, double durationSeconds);

/// How many samples seem cut off: those in runs of three or more at the largest or the smallest value, not at the ends
/// of the column, that begin or end with a step greater than twice its smallest, which a rounded crest does not have.
std::size_t countClipped(const std::vector<double>& samples);

/// How many samples are missing.
std::size_t countMissing(const std::vector<double>& samples);

/// The samples of a column in V or A, whatever the prefix of its unit. Units that are not known count as V or A.
std::vector<double> samplesInBaseUnit(const Column& column);

}  // namespace rt305

#endif
