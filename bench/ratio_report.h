#ifndef RT305_4_BENCH_RATIO_REPORT_H
#define RT305_4_BENCH_RATIO_REPORT_H

#include <functional>
#include <string>

/// The name of a peer that is a unit of time and no rival.
inline constexpr const char* unitOfTime = "T";

/// A contender of one row of one table. The first contender of a row is ours, the others are the peers it is measured
/// against.
void addContender(const std::string& table, const std::string& row, const std::string& name,
                  std::function<void()> work);

/// What the ratio to the first peer has to be, and what it should be.
struct Limit {
    double required;
    double goal;
};

/// Holds a row against a limit. The rows "geometric mean" and "worst" stand for all rows of the table.
void addLimit(const std::string& table, const std::string& row, Limit limit);

/// "goal met", "met" or "MISSED".
const char* verdict(double measured, Limit limit);

/// Runs the rows in turn and prints each table as the ratios ours/peer. A round runs the contenders of a row one after
/// another, short ones several times, and gives one ratio to each peer; the median of the rounds is printed: clocks
/// change while they run, and what runs side by side sees the same clock. Microseconds of ours stand beside the ratios
/// for orientation only. Options of Google Benchmark override the defaults.
int printRatios(int argc, char** argv);

#endif
