// Many short calls: the resident memory must not grow after the first thousand. soak CALLS

#include <unistd.h>

#include <cstdio>
#include <fstream>

#include "support/request.h"

static long residentKiB() {
    std::ifstream statm("/proc/self/statm");
    long size = 0;
    long resident = 0;
    statm >> size >> resident;
    return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

int main(int argc, char** argv) {
    const long calls = argc > 1 ? std::atol(argv[1]) : 1000000;
    support::Call call(
        0, 0, support::sixChannels([](std::uint32_t channel) { return signals::cosine(64, 100.0, 50.0, channel); }));
    constexpr std::uint32_t types[]{4, 8, 21, 0};
    long before = 0;
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
        // Read twice: the first reading itself takes memory.
        before = i == 998 || i == 999 ? residentKiB() : before;
    }
    const long after = residentKiB();
    std::printf("resident after 1,000 calls: %ld KiB, after %ld: %ld KiB\n", before, calls, after);
    // The heap settles within a few pages; a leak of one byte per call would be a megabyte.
    return after > before + 64 ? 1 : 0;
}
