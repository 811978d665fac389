// Many short calls must not increase the memory after the first 2048; then one call on a million samples must not take
// more than 12 times their size, texts not counted. soak CALLS

#include <sys/resource.h>

#include <cstdio>

#include "support/request.h"

static double peakKiB() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss);
}

int main(int argc, char** argv) {
    const long calls = argc > 1 ? std::atol(argv[1]) : 1000000;
    support::Call call(0, 0, support::sixChannels([](std::uint32_t c) { return signals::cosine(64, 100.0, 50.0, c); }));
    constexpr std::uint32_t types[]{4, 8, 21, 0};
    double before = 0.0;
    for (long i = 0; i < calls; ++i) {
        const auto bits = static_cast<std::uint32_t>(i);
        call.request.inputType = types[bits % 4];
        call.request.operation = bits / 4 % 4;
        call.request.options.measurementFlags = bits / 16 % 8 << 16U | 0x101U;
        call.request.options.spectrumFlags =
            bits / 128 % 4 << 24U | bits / 512 % 2 << 28U | bits / 1024 % 2 << 1U;  // window, mode, levels
        if (!call.run()) {
            std::fprintf(stderr, "call %ld failed: %s\n", i, call.texts.errorString);
            return 1;
        }
        before = i == 2048 ? peakKiB() : before;  // every option was used
    }
    const double growth = peakKiB() - before;
    std::printf("%ld calls: memory grew by %.0f KiB\n", calls, growth);

    constexpr std::size_t n = 1000000;
    support::Call spectrum(RT305_4_INPUT_VOLTAGES_AND_CURRENTS, RT305_4_OPERATION_SPECTRUM,
                           support::sixChannels([](std::uint32_t c) { return signals::cosine(n, 100.0, 50.0 + c); }));
    const double inputs = 6.0 * n * sizeof(double) / 1024.0;
    before = peakKiB();
    const bool accepted = spectrum.run();
    const std::size_t texts =
        spectrum.text(RT305_4_TEXT_SPECTRUM_U).size() + spectrum.text(RT305_4_TEXT_SPECTRUM_I).size();
    const double ratio = (peakKiB() - before - static_cast<double>(texts) / 1024.0) / inputs;
    std::printf("%zu samples: working memory %.1f times the inputs, and %zu bytes of texts\n", n, ratio, texts);
    // The heap settles within a few pages; a leak of one byte per call would be a megabyte.
    return accepted && growth <= 64.0 && ratio < 12.0 ? 0 : 1;
}
