// The first call of a process compared with later ones, and the peak of its memory.

#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <vector>

#include "ratio_report.h"
#include "requests.h"
#include "timing.h"

namespace {

using support::Call;

struct Observation {
    double firstOverLater;    // times of calls
    double laterOverSettled;  // times of calls, the second ones on a settled heap
    double memory;            // MiB that the first call took at most, its texts included
};

double peakMiB() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) / 1024.0;
}

double secondsOf(Call& call, support::Process process) {
    const double start = processorSeconds();
    if (!call.run(process)) {
        std::abort();
    }
    return processorSeconds() - start;
}

Observation observe(Call& call, std::size_t laterCalls) {
    const double before = peakMiB();
    const support::Process process = support::loadProcess(RT305_4_LIBRARY_FILE);
    const double first = secondsOf(call, process);
    const double memory = peakMiB() - before;
    const auto timeOfLater = [&] {
        std::vector<double> times(laterCalls);
        std::generate(times.begin(), times.end(), [&] { return secondsOf(call, process); });
        return median(times);
    };
    const double later = timeOfLater();
    settleHeap();
    return {first / later, later / timeOfLater(), memory};
}

/// Only child processes load the library, so each starts fresh. It returns its figures in shared memory.
Observation observeInFreshProcess(const Recipe& recipe, std::size_t laterCalls, Observation* shared) {
    const std::unique_ptr<Call> call = makeCall(recipe);
    std::fflush(stdout);
    const pid_t child = fork();
    if (child == 0) {
        *shared = observe(*call, laterCalls);
        _exit(0);
    }
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child || status != 0) {
        std::fputs("a fresh process failed\n", stderr);
        std::exit(1);
    }
    return *shared;
}

void printFirstCalls(Observation* shared) {
    std::printf("\nCalls of a fresh process that makes no others, type 21, 10000 samples\n");
    for (std::uint32_t operation = 0; operation < 4; ++operation) {
        Recipe recipe;
        recipe.operation = operation;
        std::vector<double> first;
        std::vector<double> later;
        for (int run = 0; run < 41; ++run) {
            const Observation seen = observeInFreshProcess(recipe, 7, shared);
            first.push_back(seen.firstOverLater);
            later.push_back(seen.laterOverSettled);
        }
        std::printf("operation %u: later ones %.2f of those on a settled heap, first over later %.2f", operation,
                    median(later), median(first));
        printVerdict(median(first), operation == 0 || operation == 3 ? Limit{2.0, 1.5} : Limit{1.5, 1.3});
        std::printf("\n");
    }
}

void printMemory(Observation* shared) {
    constexpr std::size_t n = 1000000;
    constexpr double inputMiB = 6.0 * n * sizeof(double) / 1024.0 / 1024.0;
    constexpr std::optional<Limit> limits[] = {Limit{110, 110}, {}, Limit{600, 420}, {}};
    std::printf("\nPeak memory above the input of %.1f MiB, texts included, type 21, %zu samples\n", inputMiB, n);
    for (std::uint32_t operation = 0; operation < 4; ++operation) {
        Recipe recipe;
        recipe.operation = operation;
        recipe.n = n;
        const double memory = observeInFreshProcess(recipe, 0, shared).memory;
        std::printf("operation %u %8.1f MiB, %5.1f inputs", operation, memory, memory / inputMiB);
        if (limits[operation]) {
            printVerdict(memory, *limits[operation]);
        }
        std::printf("\n");
    }
}

}  // namespace

int main() {
    void* const shared = mmap(nullptr, sizeof(Observation), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (shared == MAP_FAILED) {
        std::perror("mmap");
        return 1;
    }
    printFirstCalls(static_cast<Observation*>(shared));
    printMemory(static_cast<Observation*>(shared));
    return 0;
}
