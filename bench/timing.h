#ifndef RT305_4_BENCH_TIMING_H
#define RT305_4_BENCH_TIMING_H

#include <malloc.h>

#include <algorithm>
#include <ctime>
#include <limits>
#include <vector>

/// Processor time of this process in seconds. Unlike wall time it does not advance while other programs run.
inline double processorSeconds() {
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

/// Makes the heap keep freed memory, as it does in a process after a few large calls. Otherwise the time of a short
/// call depends on the calls before it: a heap without large calls returns its pages to the system after each call, and
/// the system clears them again in the next.
inline void settleHeap() {
    mallopt(M_MMAP_THRESHOLD, 32 << 20);
    mallopt(M_TRIM_THRESHOLD, 1 << 30);
}

/// The upper one of two middle values; NaN of no values.
inline double median(std::vector<double> values) {
    if (values.empty()) {
        return std::numeric_limits<double>::quiet_NaN();
    }
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

#endif
