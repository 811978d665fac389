#ifndef RT305_4_BENCH_RATIO_REPORT_H
#define RT305_4_BENCH_RATIO_REPORT_H

#include <functional>
#include <string>

/// The name of a peer that serves as the unit of time, not as a rival.
inline constexpr const char* unitOfTime = "T";

/// A contender of a row of a table. The first of a row is ours; the others are the peers it is compared with.
void addContender(const std::string& table, const std::string& row, const std::string& name,
                  std::function<void()> work);

/// Upper limits of a figure, such as a ratio to the first peer: the required one and the goal.
struct Limit {
    double required;
    double goal;
};

/// Names of rows that mean all rows of their table.
inline constexpr const char* geometricMean = "geometric mean";
inline constexpr const char* worst = "worst";

/// Checks a row against a limit.
void addLimit(const std::string& table, const std::string& row, Limit limit);

/// Prints the limit and whether the figure meets the goal, the requirement, or neither.
void printVerdict(double measured, Limit limit);

/// Runs the rows and prints each table as ratios ours/peer. A round runs the contenders of a row one after another,
/// short ones several times, and gives one ratio to each peer. The median of the rounds is printed, because clock rates
/// change and only neighbouring runs see the same one. Our time in microseconds is for information. Options of Google
/// Benchmark override the defaults.
int printRatios(int argc, char** argv);

// The same in steps, for a program that prints more about its rows.
int runContenders(int argc, char** argv);
void printTable(const std::string& title);
double ratioToFirstPeer(const std::string& table, const std::string& row);  // NaN for a row that was not run

#endif
