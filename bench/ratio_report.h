#ifndef RT305_4_BENCH_RATIO_REPORT_H
#define RT305_4_BENCH_RATIO_REPORT_H

#include <functional>
#include <string>

/// A contender of one case of one table. Of each case the first registered contender is ours.
void addContender(const std::string& table, const std::string& row, const std::string& name,
                  std::function<void()> work);

/// Runs all contenders, repeatedly and in random order, and prints a table of the ratios ours/peer of the median times,
/// with their geometric means. Microseconds of ours stand beside them for orientation only: clocks change while they
/// run. Options of Google Benchmark override the defaults.
int printRatios(int argc, char** argv);

#endif
