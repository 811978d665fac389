#ifndef RT305_4_BENCH_REQUESTS_H
#define RT305_4_BENCH_REQUESTS_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "support/request.h"

/// The settings of a request and its signals. The default is typical work: clean signals of six channels, one second at
/// 10 kHz, in V and A, four-wire.
struct Recipe {
    std::uint32_t inputType = RT305_4_INPUT_VOLTAGES_AND_CURRENTS;
    std::uint32_t operation = RT305_4_OPERATION_PARAMETERS;
    std::size_t n = 10000;
    std::uint32_t measurementFlags = RT305_4_FOUR_WIRE | RT305_4_SIMULATED_SOURCE_MASK;
    std::uint32_t spectrumFlags = 0;
    double sampleRate = 10000.0;  // Hz
    std::int16_t peaks = 20;
    double criterion = 0.0;        // V, A or dB
    const char* signal = "clean";  // one of those in requests.cpp
    double frequency = 50.013;     // Hz; neither on the grid of a search nor on that of a transform
};

/// The settings in one line.
std::string describe(const Recipe& recipe);

/// Makes the request. Its samples are cached, because many long requests share them.
std::unique_ptr<support::Call> makeCall(const Recipe& recipe);

/// Random requests that vary all settings, the same in every run.
std::vector<Recipe> mixedRequests(std::size_t count);

/// Requests to time, by the name of their row.
struct NamedRecipe {
    std::string name;
    Recipe recipe;
};

/// Every operation of the three input types on the given lengths.
std::vector<NamedRecipe> operationsOfLength(std::size_t n);

/// Type 21, 10,000 samples: both frequency modes with every power mode.
std::vector<NamedRecipe> parameterVariants();

/// Type 21, 10,000 samples: every window, linear and in dB, in both transform modes.
std::vector<NamedRecipe> spectrumVariants();

#endif
