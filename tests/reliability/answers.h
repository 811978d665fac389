#ifndef RT305_4_TESTS_RELIABILITY_ANSWERS_H
#define RT305_4_TESTS_RELIABILITY_ANSWERS_H

#include <algorithm>
#include <cmath>
#include <functional>
#include <random>
#include <stdexcept>

#include "adapter/nlohmann/json.h"
#include "plugin/plugin_host.h"

using Texts = std::vector<std::string>;

inline Texts textsOf(const Call& call) {
    Texts texts;
    for (const Call::Text text : call.made()) {
        texts.emplace_back(call.texts[text]);
    }
    return texts;
}

/// Twelve and a half cycles of 50 Hz with noise, so that no line of the spectra is rounding alone.
inline std::vector<double> noisySine(std::size_t n, std::uint32_t channel) {
    std::mt19937 random(channel);
    std::uniform_real_distribution<double> noise(-1.0, 1.0);
    std::vector<double> x = sine(n, 100.0, 50.0, channel);
    std::transform(x.begin(), x.end(), x.begin(), [&](double value) { return value + noise(random); });
    return x;
}

inline constexpr std::size_t ordinarySize = 2500;

/// One call of every input type and operation, on channels that make(channel) gives, and what it answered.
inline std::vector<Texts> answers(const std::function<std::vector<double>(std::uint32_t)>& make) {
    std::vector<Texts> all;
    for (const std::uint32_t type : {4U, 8U, 21U, 0U}) {
        for (std::uint32_t operation = 0; operation < 4; ++operation) {
            Call call;
            for (std::uint32_t channel = 0; channel < 6; ++channel) {
                call.add(static_cast<std::int32_t>(channel / 3), channel % 3, make(channel));
            }
            call.request.samplesNumber = call.samples[0].size();
            call.request.inputType = type;
            call.request.operation = operation;
            call.request.auxMode = 5;
            call.request.options.measurementFlags = RT305_4_FOUR_WIRE | RT305_4_POWER_THREE_WATTMETER_COMPLEX;
            if (call.run() != 1) {
                throw std::runtime_error(call.texts[Call::error]);
            }
            all.push_back(textsOf(call));
        }
    }
    return all;
}

inline std::vector<Texts> ordinaryAnswers() {
    return answers([](std::uint32_t channel) { return noisySine(ordinarySize, channel); });
}

/// The largest difference of two texts' numbers relative to 1 or to the number; infinite when anything else differs.
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

inline double difference(const std::string& a, const std::string& b) {
    return difference(nlohmann::json::parse(a), nlohmann::json::parse(b));
}

#endif
