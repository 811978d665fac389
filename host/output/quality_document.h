#ifndef RT305_HOST_OUTPUT_QUALITY_DOCUMENT_H
#define RT305_HOST_OUTPUT_QUALITY_DOCUMENT_H

#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "output/document.h"
#include "output/quality_limits.h"
#include "quality/results.h"

namespace rt305 {

/// What a line of CSV or JSON holds: half a cycle, an interval of cycles, of 3 s or of 10 minutes.
enum class QualityRows { halfCycles, cycles, threeSeconds, tenMinutes };

/// The power quality of one recording.
struct QualityDocument {
    RecordingFacts recording{};
    GivenOptions options{};
    std::string content{};         // "voltages and currents"
    bool isDeclaredKnown = false;  // the user gave the declared voltage
    QualityResults results{};
    LimitSet limits{};  // without limits: none were asked for
    std::vector<Verdict> verdicts{};
    std::vector<std::string> remarks{};
    std::vector<Remark> warnings{};
};

/// One event in words: "dip of Ua to 40.0 % for 0.100 s at 0.450 s".
std::string describe(const Event& event);

/// What `rt305 measure` says when there were events: the first dip, swell or interruption and how many others; empty
/// without events.
std::string remarkOnEvents(const QualityResults& results);

/// The events as texts, with a heading; nothing without events.
std::vector<std::vector<std::string>> eventCells(const QualityResults& results);

/// Lowest, mean, 95 % and highest of each quantity; empty without intervals.
ResultTable statisticsTable(const QualityResults& results);

/// The verdicts as texts, with a heading.
std::vector<std::vector<std::string>> verdictCells(const QualityDocument& document);

/// What the recording is too short for, and whether all limits are kept.
std::vector<std::string> qualityRemarks(const QualityDocument& document);

/// Tables for people, or one JSON document.
void writeQuality(const QualityDocument& document, OutputForm form, bool styled, std::ostream& out);

/// Writes rows while they are measured, as CSV with a heading or as JSON lines with the events among them.
class QualityRowWriter {
public:
    /// Of the document only the recording and the options are used.
    QualityRowWriter(const QualityDocument& document, QualityRows rows, OutputForm form,
                     const QualitySettings& settings, std::ostream& out);
    QualityListener listener();

    /// The lines that are known at the end: the verdicts.
    void finish(const QualityDocument& document);

private:
    void writeLine(const std::string& kind, const std::string& values);
    void writeRow(const std::string& kind, double start, double duration, const std::vector<double>& values,
                  const Interval* interval);
    void write(const HalfCycle& cycle);
    void write(const Interval& interval);

    std::string file_;
    std::string origin_;  // how each line of JSON begins
    QualityRows rows_;
    bool isCsv_;
    QualitySettings settings_;
    std::vector<std::string> keys_{};
    std::ostream& out_;
};

}  // namespace rt305

#endif
