// Peak memory of one spectrum call on six channels, texts not counted: at most 12 times their size. peak_memory SAMPLES

#include <sys/resource.h>

#include <cstdio>

#include "support/request.h"

static double peakBytes() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return 1024.0 * static_cast<double>(usage.ru_maxrss);
}

int main(int argc, char** argv) {
    const std::size_t n = argc > 1 ? std::stoul(argv[1]) : 100000;
    support::Call call(RT305_4_INPUT_VOLTAGES_AND_CURRENTS, RT305_4_OPERATION_SPECTRUM,
                       support::sixChannels([n](std::uint32_t c) { return signals::cosine(n, 100.0, 50.0 + c); }));
    const double before = peakBytes();
    const bool accepted = call.run();
    const double used = peakBytes() - before;
    const auto texts =
        static_cast<double>(call.text(RT305_4_TEXT_SPECTRUM_U).size() + call.text(RT305_4_TEXT_SPECTRUM_I).size());
    const double ratio = (used - texts) / static_cast<double>(6 * n * sizeof(double));
    std::printf("%zu samples: texts %.1f MB, working memory %.1f times the inputs\n", n, texts / 1e6, ratio);
    return accepted && ratio < 12.0 ? 0 : 1;
}
