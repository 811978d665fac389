// Many short calls: the resident memory may not grow after the first thousand. soak LIBRARY CALLS

#include <dlfcn.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "rt305_4/rt305_4.h"

namespace {

constexpr std::size_t n = 64;

long residentKiB() {
    std::ifstream statm("/proc/self/statm");
    long size = 0;
    long resident = 0;
    statm >> size >> resident;
    return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fputs("usage: soak LIBRARY CALLS\n", stderr);
        return 2;
    }
    void* const library = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        std::fprintf(stderr, "%s\n", dlerror());
        return 2;
    }
    const auto process = reinterpret_cast<std::int32_t (*)(DataProcessRequest)>(dlsym(library, "dataProccess"));

    double samples[6][n];
    ChannelData channels[6];
    for (std::uint32_t c = 0; c < 6; ++c) {
        for (std::size_t i = 0; i < n; ++i) {
            samples[c][i] = 100.0 * std::sin(0.0314159 * static_cast<double>(i) + c);
        }
        channels[c] = {static_cast<std::int32_t>(c / 3), c % 3, samples[c], n, 1.0, 1.0, 0.0};
    }
    const char* texts[8] = {};
    DataProcessRequest request = {channels,  6,         n,         10000.0,   0.0,       5,
                                  0,         {0, 0},    0,         texts,     texts + 1, texts + 2,
                                  texts + 3, texts + 4, texts + 5, texts + 6, texts + 7};
    const std::uint32_t types[] = {4, 8, 21, 0};
    long before = 0;
    const long calls = std::atol(argv[2]);
    for (long call = 0; call < calls; ++call) {
        request.inputType = types[call % 4];
        request.operation = static_cast<std::uint32_t>(call / 4 % 4);
        request.options.measurementFlags = static_cast<std::uint32_t>(call / 16 % 8) << 16U | 0x101U;
        request.options.spectrumFlags = static_cast<std::uint32_t>(call / 128 % 4) << 24U |  // windows
                                        static_cast<std::uint32_t>(call / 512 % 2) << 28U |  // padding
                                        static_cast<std::uint32_t>(call / 1024 % 2) << 1U;   // levels
        if (process(request) != 1) {
            std::fprintf(stderr, "call %ld failed: %s\n", call, texts[7]);
            return 1;
        }
        // Read twice: the first reading itself touches memory.
        before = call == 998 || call == 999 ? residentKiB() : before;
    }
    const long after = residentKiB();
    std::printf("resident after 1,000 calls: %ld KiB, after %ld: %ld KiB\n", before, calls, after);
    // The heap settles by a page or two; a leak of a single byte per call would be a megabyte.
    return after > before + 64 ? 1 : 0;
}
