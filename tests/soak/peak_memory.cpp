// Peak resident memory of one spectrum call on six channels, at most 12 times their size beside the texts:
// peak_memory SAMPLES [SPECTRUM_FLAGS]

#include <sys/resource.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "plugin/plugin_host.h"

namespace {

constexpr double MiB = 1024.0 * 1024.0;

double peakMiB() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) / 1024.0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fputs("usage: peak_memory SAMPLES [SPECTRUM_FLAGS]\n", stderr);
        return 2;
    }
    const std::size_t n = std::strtoull(argv[1], nullptr, 10);
    Call call;
    for (std::uint32_t channel = 0; channel < 6; ++channel) {
        call.add(static_cast<std::int32_t>(channel / 3), channel % 3, sine(n, 100.0, 50.0 + channel));
    }
    call.request.samplesNumber = n;
    call.request.inputType = RT305_4_INPUT_VOLTAGES_AND_CURRENTS;
    call.request.operation = RT305_4_OPERATION_SPECTRUM;
    call.request.options.spectrumFlags = argc > 2 ? static_cast<std::uint32_t>(std::strtoul(argv[2], nullptr, 0)) : 0;
    call.request.auxMode = 20;
    const double before = peakMiB();
    if (call.run() != 1) {
        std::fprintf(stderr, "%s\n", call.texts[Call::error]);
        return 1;
    }
    const double inputs = static_cast<double>(6 * n * sizeof(double)) / MiB;
    const double texts =
        static_cast<double>(std::strlen(call.texts[Call::spectrumU]) + std::strlen(call.texts[Call::spectrumI])) / MiB;
    const double used = peakMiB() - before;
    const double ratio = (used - texts) / inputs;
    std::printf("%zu samples: inputs %.1f MiB, texts %.1f MiB, used beside the inputs %.1f MiB: texts + %.1f inputs\n",
                n, inputs, texts, used, ratio);
    return ratio < 12.0 ? 0 : 1;
}
