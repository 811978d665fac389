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

/// What a figure may be at most, such as a ratio to the first peer, and what it should be at most.
struct Limit {
    double required;
    double goal;
};

/// Rows that stand for all rows of their table.
inline constexpr const char* geometricMean = "geometric mean";
inline constexpr const char* worst = "worst";

/// Holds a row against a limit.
void addLimit(const std::string& table, const std::string& row, Limit limit);

/// Prints the limit, and whether its goal is met, what it requires, or neither.
void printVerdict(double measured, Limit limit);

/// Runs the rows in turn and prints each table as the ratios ours/peer. A round runs the contenders of a row one after
/// another, short ones several times, and gives one ratio to each peer; the median of the rounds is printed: clocks
/// change while they run, and what runs side by side sees the same clock. Microseconds of ours stand beside the ratios
/// for orientation only. Options of Google Benchmark override the defaults.
int printRatios(int argc, char** argv);

// The same in steps, for a program that has more to say about its rows.
int runContenders(int argc, char** argv);
void printTable(const std::string& title);
double ratioToFirstPeer(const std::string& table, const std::string& row);  // NaN for a row that was not run

#endif
