// Holds the digits of numbers against the JSON library's formatter, and stops at the first difference:
// number_digits MILLIONS [SEED]

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "table/number_cases.h"

namespace {

/// Both signs; false at a difference.
bool agree(double value) {
    for (const double x : {value, -value}) {
        char written[roomForJsonNumber];
        char expected[32] = {};
        const char* const end = writeJsonNumber(written, x);
        const char* const expectedEnd =
            std::isfinite(x) ? libraryNumber(expected, x) : std::strcpy(expected, "null") + 4;
        if (std::string_view(written, end) != std::string_view(expected, expectedEnd)) {
            std::printf("%a: %s, and %s by the library\n", x, number_cases::writtenText(x).c_str(),
                        number_cases::expectedText(x).c_str());
            return false;
        }
    }
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fputs("usage: number_digits MILLIONS [SEED]\n", stderr);
        return 2;
    }
    long long count = 0;
    bool same = true;
    number_cases::visitBoundaries([&](double value) {
        same = same && agree(value);
        count += 2;
    });
    std::printf("%-18s %13lld\n", "boundaries", count);
    const long long perKind = std::atoll(argv[1]) * 1000000 / static_cast<long long>(2 * number_cases::kinds.size());
    number_cases::Random random(argc > 2 ? std::strtoull(argv[2], nullptr, 10) : 1);
    for (const number_cases::Kind& kind : number_cases::kinds) {
        for (long long i = 0; i < perKind && same; ++i) {
            same = agree(kind.draw(random));
        }
        if (!same) {
            return 1;
        }
        std::printf("%-18s %13lld\n", kind.name, 2 * perKind);
        static_cast<void>(std::fflush(stdout));
        count += 2 * perKind;
    }
    std::printf("%-18s %13lld, all the same\n", "numbers", count);
    return 0;
}
