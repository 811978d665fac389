// Where the time of a call goes: type 21, operation 1, 1,000,000 samples per channel, stage by stage. Medians of a few
// runs, as shares of their sum.

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>

#include "calc/electrical_parameters.h"
#include "calc/input_conditioning.h"
#include "calc/options.h"
#include "calc/time_signal.h"
#include "results/rt305_4_i_signal_table.h"
#include "results/rt305_4_u_signal_table.h"

namespace calc_modul_K9_web_ns {
namespace {

constexpr int sampleCount = 1000000;
constexpr int runs = 5;
constexpr std::array stages{"conditioning", "harmonics", "other parameters", "signal statistics", "tables", "texts"};
using Times = std::array<double, stages.size()>;  // ms

class Stopwatch {
public:
    explicit Stopwatch(Times& times) : times_(times) {}

    /// Books the time since the last call on the next stage.
    void next() {
        const auto now = Clock::now();
        times_[stage_++] = std::chrono::duration<double, std::milli>(now - last_).count();
        last_ = Clock::now();
    }

private:
    using Clock = std::chrono::steady_clock;
    Times& times_;
    std::size_t stage_ = 0;
    Clock::time_point last_ = Clock::now();
};

std::vector<double> samplesOf(double phase) {
    std::vector<double> x(sampleCount);
    for (std::size_t i = 0; i < x.size(); ++i) {
        const double t = static_cast<double>(i) * 1e-4;
        x[i] = 325.0 * std::sin(314.2 * t + phase) + 9.0 * std::sin(1571.3 * t) +
               1e-3 * static_cast<double>(i * 7919 % 1000);
    }
    return x;
}

Times timedRun(const RawChannelSet& rawVoltages, const RawChannelSet& rawCurrents) {
    Times times{};
    Stopwatch watch(times);
    ChannelSet voltages;
    ChannelSet currents;
    data_305_4(rawVoltages, sampleCount, option::sourceSimulated, voltages);
    data_305_4(rawCurrents, sampleCount, option::sourceSimulated, currents);
    watch.next();
    const Harmonics harmonics = measureHarmonics(voltages, currents);
    watch.next();
    calc_modul_K9_web_ns::coder::d_table parameters;
    parameters.prefill();
    ParamData_mo_305_4(voltages, currents, sampleCount, MeasurementOptions(0), harmonics, parameters);
    watch.next();
    calc_modul_K9_web_ns::coder::b_table signalsU;
    calc_modul_K9_web_ns::coder::b_table signalsI;
    TimeSignalData_mo_305_4(std::move(voltages), signalsU);
    TimeSignalData_mo_305_4I(std::move(currents), signalsI);
    watch.next();
    RT305_4_USignalTable tableU;
    RT305_4_ISignalTable tableI;
    tableU.init(signalsU);
    tableI.init(signalsI);
    watch.next();
    const std::string textU = tableU.toJsonText();
    const std::string textI = tableI.toJsonText();
    watch.next();
    return times;
}

void printShares() {
    std::vector<std::vector<double>> samples;
    RawChannelSet voltages;
    RawChannelSet currents;
    for (int channel = 0; channel < 6; ++channel) {
        samples.push_back(samplesOf(channel));
    }
    for (std::size_t phase = 0; phase < coder::phases; ++phase) {
        voltages[phase].samples = samples[phase];
        currents[phase].samples = samples[phase + 3];
    }
    std::array<Times, runs> measured;
    std::generate(measured.begin(), measured.end(), [&] { return timedRun(voltages, currents); });
    Times medians{};
    double total = 0.0;
    for (std::size_t stage = 0; stage < stages.size(); ++stage) {
        std::array<double, runs> ordered{};
        std::transform(measured.begin(), measured.end(), ordered.begin(), [=](const Times& t) { return t[stage]; });
        std::sort(ordered.begin(), ordered.end());
        medians[stage] = ordered[runs / 2];
        total += medians[stage];
    }
    std::printf("\nOne call, type 21, operation 1, %d samples per channel\n", sampleCount);
    for (std::size_t stage = 0; stage < stages.size(); ++stage) {
        std::printf("%18s %8.1f ms %5.1f %%\n", stages[stage], medians[stage], 100.0 * medians[stage] / total);
    }
}

}  // namespace
}  // namespace calc_modul_K9_web_ns

int main() {
    calc_modul_K9_web_ns::printShares();
    return 0;
}
