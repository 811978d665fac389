// Calls with unusual samples compared with an ordinary one of the same type, operation and size: all NaN, infinite,
// zero, equal, denormal, huge, alternating, an impulse; and the shortest records. Times are the minimum of interleaved
// runs.

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <functional>
#include <memory>

#include "support/request.h"

namespace {

constexpr int repetitions = 9;

using support::Call;
using Signal = std::function<double(std::size_t)>;

struct Hostile {
    const char* name;
    Signal at;
};
const Hostile hostile[]{
    {"NaN", [](std::size_t) { return std::nan(""); }},
    {"infinite", [](std::size_t) { return HUGE_VAL; }},
    {"zero", [](std::size_t) { return 0.0; }},
    {"equal", [](std::size_t) { return 1.5; }},
    {"denormal", [](std::size_t i) { return 4.9e-324 * static_cast<double>(1 + i % 7); }},
    {"nearly denormal", [](std::size_t i) { return 1e-300 * std::sin(0.1 * static_cast<double>(i)); }},
    {"huge", [](std::size_t i) { return 1e300 * std::sin(0.1 * static_cast<double>(i)); }},
    {"alternating", [](std::size_t i) { return i % 2 == 0 ? 1e300 : -1e-300; }},
    {"impulse", [](std::size_t i) { return i == 3 ? 1.0 : 0.0; }},  // all frequencies alike
    {"one NaN", [](std::size_t i) { return i == 7 ? std::nan("") : std::sin(0.1 * static_cast<double>(i)); }},
};
constexpr std::size_t contenders = std::size(hostile) + 1;

std::vector<double> samplesOf(std::size_t contender, std::size_t n) {
    if (contender == 0) {
        return signals::wave(signals::noise(n, 1, 0.0, 0.5), {{300.0, 50.0}});
    }
    std::vector<double> x(n);
    for (std::size_t i = 0; i < n; ++i) {
        x[i] = hostile[contender - 1].at(i);
    }
    return x;
}

std::unique_ptr<Call> prepared(std::uint32_t type, std::uint32_t operation, const std::vector<double>& samples) {
    auto call = std::make_unique<Call>(type, operation, support::sixChannels([&](std::uint32_t) { return samples; }));
    call->request.auxMode = 20;
    call->request.options = {RT305_4_SPECTRUM_LEVEL_DB | RT305_4_SPECTRUM_WINDOW_HANN,
                             RT305_4_FOUR_WIRE | RT305_4_POWER_THREE_WATTMETER_COMPLEX |
                                 (operation == RT305_4_OPERATION_PARAMETERS ? RT305_4_FREQUENCY_CONTROL : 0)};
    call->run();
    return call;
}

double seconds(Call& call, int calls) {
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < calls; ++i) {
        call.run();
    }
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count() / calls;
}

using Times = std::array<double, contenders>;

Times times(std::uint32_t type, std::uint32_t operation, std::size_t n) {
    std::array<std::unique_ptr<Call>, contenders> calls;
    for (std::size_t i = 0; i < contenders; ++i) {
        calls[i] = prepared(type, operation, samplesOf(i, n));
    }
    const int each = std::max(1, static_cast<int>(1e-3 / seconds(*calls[0], 1)));
    Times least;
    least.fill(HUGE_VAL);
    for (int repetition = 0; repetition < repetitions; ++repetition) {
        for (std::size_t i = 0; i < contenders; ++i) {
            least[i] = std::min(least[i], seconds(*calls[i], each));
        }
    }
    return least;
}

}  // namespace

int main() {
    double worst = 0.0;
    std::printf("Hostile calls beside an ordinary one of the same size\n%-26s %10s", "type, operation, samples", "us");
    for (const Hostile& signal : hostile) {
        std::printf(" %15s", signal.name);
    }
    for (const std::size_t n : {1U, 2U, 5U, 16U, 40U, 1000U, 10000U}) {
        for (const std::uint32_t type : {4U, 21U}) {
            for (std::uint32_t operation = 0; operation < 4; ++operation) {
                const Times measured = times(type, operation, n);
                std::printf("\n%6u %6u %12zu %10.1f", type, operation, n, measured[0] * 1e6);
                for (std::size_t i = 1; i < contenders; ++i) {
                    const double ratio = measured[i] / measured[0];
                    worst = std::max(worst, ratio);
                    std::printf(" %15.2f", ratio);
                }
            }
        }
    }
    std::printf("\nThe slowest takes %.2f times as long as the ordinary call.\n", worst);
    return 0;
}
