// The time of each stage of a call of type 21, and of the frequency search alone. Medians.

#include <algorithm>
#include <array>
#include <cstdio>
#include <memory>
#include <numeric>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "calc/distortion.h"
#include "calc/electrical_parameters.h"
#include "calc/frequency.h"
#include "calc/options.h"
#include "calc/spectrum.h"
#include "calc/time_signal.h"
#include "requests.h"
#include "results/distortion_tables.h"
#include "results/parameter_tables.h"
#include "results/signal_tables.h"
#include "results/spectrum_tables.h"
#include "timing.h"

namespace calc_modul_K9_web_ns {
namespace {

enum Stage { conditioning, harmonics, parameters, signals, spectra, distortion, tables, texts, stageCount };
constexpr std::array<const char*, stageCount> stageNames{
    "conditioning", "harmonics", "other parameters", "signal statistics", "spectra", "distortion", "tables", "texts"};
using Times = std::array<double, stageCount>;  // s

class Stopwatch {
public:
    /// Adds the time since the last call of this function to a stage.
    void book(Stage stage) {
        const double now = processorSeconds();
        times_[stage] += now - last_;
        last_ = now;
    }
    const Times& times() const { return times_; }

private:
    Times times_{};
    double last_ = processorSeconds();
};

template <class Table, class Record>
void makeText(Record& record, Stopwatch& watch) {
    Table table;
    table.init(record);
    record = Record();
    watch.book(tables);
    const std::string text = table.toJsonText();
    watch.book(texts);
}

/// The stages of a call, in order. Samples are conditioned where a stage needs them: "conditioning" is the search for
/// zeros, the offsets and the sums.
Times timedCall(std::uint32_t operation, const RawChannelSet& rawVoltages, const RawChannelSet& rawCurrents, double n) {
    namespace records = calc_modul_K9_web_ns::coder;
    Stopwatch watch;
    const ConditionedSet voltages(rawVoltages, n, option::sourceSimulated);
    const ConditionedSet currents(rawCurrents, n, option::sourceSimulated);
    const SumsOfBoth sums(voltages, currents);
    watch.book(conditioning);
    const HarmonicsOfBoth measured = measureHarmonics(voltages, currents, sums);
    watch.book(harmonics);
    records::d_table parameterRecord;
    parameterRecord.prefill();
    ParamData_mo_305_4(voltages, currents, sums, n, MeasurementOptions(RT305_4_FOUR_WIRE), measured, parameterRecord);
    watch.book(parameters);
    makeText<RT305_4_ParamTable>(parameterRecord, watch);
    if (operation == RT305_4_OPERATION_SIGNALS) {
        std::array<records::b_table, 2> made;
        measureTimeSignals(voltages, voltage, made[0]);
        measureTimeSignals(currents, current, made[1]);
        watch.book(signals);
        makeText<RT305_4_USignalTable>(made[0], watch);
        makeText<RT305_4_ISignalTable>(made[1], watch);
    } else if (operation == RT305_4_OPERATION_SPECTRUM) {
        const SpectrumRequest request{n, 0.0, 20, SpectrumOptions(0)};
        std::array<records::f_table, 2> made;
        measureSpectrum(voltages, voltage, band10000, request, made[0]);
        measureSpectrum(currents, current, band10000, request, made[1]);
        watch.book(spectra);
        makeText<RT305_4_USpectrumTable>(made[0], watch);
        makeText<RT305_4_ISpectrumTable>(made[1], watch);
    } else if (operation == RT305_4_OPERATION_DISTORTION) {
        std::array<records::c_table, 2> made;
        assembleDistortion(measured.voltages, voltage, made[0]);
        assembleDistortion(measured.currents, current, made[1]);
        watch.book(distortion);
        makeText<RT305_4_UDistortionTable>(made[0], watch);
        makeText<RT305_4_IDistortionTable>(made[1], watch);
    }
    return watch.times();
}

/// The six channels of a typical request of n samples.
struct Raw {
    explicit Raw(std::size_t n) {
        Recipe recipe;
        recipe.n = n;
        call = makeCall(recipe);
        for (std::size_t c = 0; c < call->channels.size(); ++c) {
            const ChannelData& descriptor = call->channels[c];
            RawChannel& channel = (c < coder::phases ? voltages : currents)[c % coder::phases];
            channel.samples = ::coder::samples(descriptor.samples, descriptor.count);
        }
    }
    std::unique_ptr<support::Call> call;
    RawChannelSet voltages;
    RawChannelSet currents;
};

void printShares(std::size_t n, int runs) {
    const Raw raw(n);
    std::array<std::array<std::vector<double>, stageCount>, 4> booked;
    for (int run = 0; run < runs; ++run) {
        for (std::uint32_t operation = 0; operation < booked.size(); ++operation) {
            const Times times = timedCall(operation, raw.voltages, raw.currents, static_cast<double>(n));
            for (std::size_t stage = 0; stage < stageCount; ++stage) {
                booked[operation][stage].push_back(times[stage]);
            }
        }
    }
    std::array<Times, booked.size()> medians{};
    for (std::size_t operation = 0; operation < booked.size(); ++operation) {
        std::transform(booked[operation].begin(), booked[operation].end(), medians[operation].begin(), median);
    }
    std::printf("\nShare of the stages, type 21, %zu samples, operations 0 to 3\n", n);
    for (std::size_t stage = 0; stage < stageCount; ++stage) {
        std::printf("%-18s", stageNames[stage]);
        for (const Times& times : medians) {
            const double total = std::accumulate(times.begin(), times.end(), 0.0);
            std::printf(" %7.1f %%", 100.0 * times[stage] / total);
        }
        std::printf("\n");
    }
}

void printSearch(std::string_view mode) {
    constexpr std::size_t n = 10000;
    constexpr int runs = 101;
    const Raw raw(n);
    std::vector<double> times;
    for (int run = 0; run < runs; ++run) {
        const double start = processorSeconds();
        const FrequencySearch search(static_cast<double>(n), mode);
        double sum = 0.0;
        for (const RawChannel& channel : raw.voltages) {
            sum += search.frequency(channel.samples);
        }
        const double nanoseconds = (processorSeconds() - start) * 1e9;
        times.push_back(sum > 0.0 ? nanoseconds / static_cast<double>(coder::phases * n) : 0.0);
    }
    std::printf("%-18.*s %6.2f ns per sample and channel\n", static_cast<int>(mode.size()), mode.data(), median(times));
}

}  // namespace
}  // namespace calc_modul_K9_web_ns

int main() {
    using namespace calc_modul_K9_web_ns;
    settleHeap();
    printShares(500, 501);
    printShares(2000, 201);
    printShares(10000, 51);
    printShares(1000000, 5);
    std::printf("\nFrequency search, three channels of 10000 samples\n");
    printSearch(option::frequencyFixed);
    printSearch(option::frequencyControl);
    return 0;
}
