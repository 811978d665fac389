#ifndef RT305_4_TESTS_RELIABILITY_ANSWERS_H
#define RT305_4_TESTS_RELIABILITY_ANSWERS_H

#include <algorithm>
#include <cmath>

#include "adapter/nlohmann/json.h"
#include "support/request.h"

constexpr std::uint32_t allTypes[]{4, 8, 21, 0};

/// 100 V of 50 Hz with noise, so that no line of a spectrum is rounding alone.
inline signals::Samples noisySine(std::size_t n, std::uint32_t channel) {
    return signals::wave(signals::noise(n, channel), {{100.0, 50.0, 1.0 * channel}});
}

/// The texts of one call of every input type and operation on six channels, made by make(channel).
template <class Make>
std::vector<std::string> answers(Make make) {
    std::vector<std::string> all;
    for (const std::uint32_t type : allTypes) {
        for (std::uint32_t operation = 0; operation < 4; ++operation) {
            support::Call call(type, operation, support::sixChannels(make));
            call.request.options.measurementFlags = RT305_4_FOUR_WIRE | RT305_4_POWER_THREE_WATTMETER_COMPLEX;
            if (!call.run()) {
                throw std::runtime_error(call.texts.errorString);
            }
            const auto made = call.madeTexts();
            all.insert(all.end(), made.begin(), made.end());
        }
    }
    return all;
}

inline std::vector<std::string> ordinaryAnswers() {
    return answers([](std::uint32_t channel) { return noisySine(2500, channel); });
}

/// The largest difference between numbers, relative to 1 or to the number; infinite when anything else differs.
inline double difference(const nlohmann::json& a, const nlohmann::json& b) {
    if (a.is_number() && b.is_number()) {
        return std::abs(a.get<double>() - b.get<double>()) / std::max(1.0, std::abs(a.get<double>()));
    }
    if (!a.is_structured() || a.type() != b.type() || a.size() != b.size()) {
        return a == b ? 0.0 : HUGE_VAL;
    }
    double largest = 0.0;
    for (auto x = a.begin(), y = b.begin(); x != a.end(); ++x, ++y) {
        largest = std::max(largest, difference(*x, *y));
    }
    return largest;
}

#endif
