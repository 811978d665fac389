// Reads a recording and does nothing else, for comparisons with other readers: read_recording FILE. Without a file it
// only starts. scripts/bench-tool runs it. With --transform it prints T, the time of FFTW's transform that
// performance.md counts in.

#include <fftw3.h>

#include <cstdio>
#include <cstring>
#include <vector>

#include "reading/recording_reader.h"
#include "timing.h"

namespace {

void printTransformTime() {
    constexpr int n = 10000;
    constexpr std::size_t rounds = 501;
    std::vector<double> x(n, 1.0);
    std::vector<fftw_complex> bins(n / 2 + 1);
    fftw_plan plan = fftw_plan_dft_r2c_1d(n, x.data(), bins.data(), FFTW_ESTIMATE);
    std::vector<double> times;
    for (std::size_t i = 0; i < rounds; ++i) {
        const double start = processorSeconds();
        fftw_execute(plan);
        times.push_back(processorSeconds() - start);
    }
    fftw_destroy_plan(plan);
    std::printf("%g\n", median(times));
}

}  // namespace

int main(int count, char** arguments) {
    if (count == 2 && std::strcmp(arguments[1], "--transform") == 0) {
        printTransformTime();
        return 0;
    }
    if (count > 2) {
        std::fputs("usage: read_recording [FILE | --transform]\n", stderr);
        return 2;
    }
    return count == 1 || rt305::readRecording(arguments[1]).length > 0 ? 0 : 1;
}
