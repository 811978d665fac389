// The whole computation: which stage fills which record, and at what sample rate.

#include "calc/calc_modul_K9_web.h"

#include <gtest/gtest.h>

#include "calc/channel_kind.h"
#include "extras/stage_names.h"
#include "support/plain.h"
#include "support/signals.h"

namespace calc_modul_K9_web_ns {
namespace {

using signals::Samples;

constexpr double inf = std::numeric_limits<double>::infinity();
constexpr std::size_t n = 500;

struct SetOfRecords {
    coder::b_table signals;
    coder::f_table spectrum;
    coder::c_table distortion;

    SetRecords all() { return {&signals, &spectrum, &distortion}; }
};

/// Simulated channels that all hold the same, at first a line at a tenth of the sample rate, and all records.
struct Computed {
    coder::d_table parameters;
    SetOfRecords voltages;
    SetOfRecords currents;
    Samples x = signals::wave(Samples(n), {{5.0, 0.1}, {0.01, 0.318}}, 1.0);
    Measurement measurement;

    Computed(double type, std::uint32_t mode, double rate) {
        fill(x);
        measurement.samplesNumber = n;
        measurement.sampleRate = rate;
        measurement.auxMode = 2;
        measurement.inputType = type;
        measurement.measurementFlags = 0x20000000U;
        measurement.processingMode = mode;
    }
    void fill(const Samples& samples) {
        for (std::size_t phase = 0; phase < 3; ++phase) {
            measurement.voltages[phase].samples = measurement.currents[phase].samples = samples;
        }
    }
    Computed& run() {
        calc_modul_K9_web(measurement, {&parameters, voltages.all(), currents.all()});
        return *this;
    }
};

int lengthOf(const coder::SharedRow& row) {
    return row != nullptr ? static_cast<int>(row->size()) : 0;
}

void expectSpectrum(const coder::f_table& spectrum, double rate, double limit, int factor) {
    const int padded = factor * static_cast<int>(n);
    const std::vector<double>& f = *spectrum.frequencies;
    const int kept = std::min(static_cast<int>(limit * padded / rate), padded / 2) + 1;
    for (std::size_t phase = 0; phase < 3; ++phase) {
        ASSERT_EQ(lengthOf(spectrum.spectra[phase]), kept);
        ASSERT_EQ(static_cast<int>(f.size()), kept);
        EXPECT_NEAR(f.back(), (kept - 1) * rate / padded, 1e-12 * rate);
        ASSERT_EQ(spectrum.maxima[phase].frequencies.numel(), 2);
        if (0.1 * rate < limit) {
            EXPECT_NEAR(spectrum.maxima[phase].frequencies[0], 0.1 * rate, 1e-12 * rate);
            EXPECT_NEAR(spectrum.maxima[phase].magnitudes[0], 5.0, 0.01);
        }
    }
}

void expectSet(const SetOfRecords& records, const Computed& call, int ownType, int padding) {
    const auto type = static_cast<int>(call.measurement.inputType);
    const std::uint32_t mode = type == ownType || type == 21 ? call.measurement.processingMode : 0;
    const double rate = mode != 2 ? call.measurement.sampleRate : type == 21 ? 10000.0 : 500.0;
    expectSpectrum(records.spectrum, rate, rate == 500.0 ? 250.0 : 1000.0, padding);
    EXPECT_EQ(records.distortion.levels[2].size(), mode != 3 ? 0U : type == 21 ? 40U : 5U);
    EXPECT_EQ(lengthOf(records.signals.variables.signals[0]), mode == 1 ? static_cast<int>(n) : 1);
    EXPECT_EQ(std::isnan(records.signals.variables.statistics[1].values[1]), mode != 1);
}

TEST(Computation, EveryTypeAndModeFillsItsRecords) {
    for (const double type : {0.0, 4.0, 8.0, 21.0, -4.0, 4.9, 21.9, 22.0}) {
        for (const std::uint32_t mode : {0U, 1U, 2U, 3U, 7U}) {
            for (const double rate : {500.0, 10000.0, 1000.0, 7001.0}) {
                SCOPED_TRACE(testing::Message() << "type " << type << ", mode " << mode << ", " << rate << " Hz");
                const Computed call = Computed(type, mode, rate).run();
                expectSet(call.voltages, call, 4, 4);
                expectSet(call.currents, call, 8, 16);
                EXPECT_EQ(std::isnan(call.parameters[coder::Parameter::Uda]), std::floor(type) != 21.0);
            }
        }
    }
}

TEST(Computation, RecordsAreNamedWithoutTheirStages) {
    Computed call(4.0, 7, 500.0);
    call.run();
    EXPECT_EQ(call.parameters.names[15], "Udab") << "names are cut to their own width";
    EXPECT_EQ(call.parameters.units[34], "-");
    EXPECT_EQ(call.voltages.distortion.labels[1], "Vb");
    EXPECT_EQ(call.voltages.distortion.verticalAxis[2], "Amp, dB");
    EXPECT_EQ(call.currents.spectrum.labels[0], "Ia");
    EXPECT_EQ(call.currents.spectrum.verticalAxis[2], "I, A");
    EXPECT_EQ(call.currents.signals.variables.labels[2], "Ic");
    EXPECT_EQ(call.currents.signals.variables.verticalAxis[0], "Current, A");
    calc_modul_K9_web(call.measurement, {nullptr, {}, {}});
    EXPECT_TRUE(isInitialized_calc_modul_K9_web());
    calc_modul_K9_web_terminate();
    EXPECT_FALSE(isInitialized_calc_modul_K9_web());
}

TEST(StageNames, EndInIForCurrents) {
    const ChannelSet set{coder::row(Samples(n, 1.0)), coder::row(Samples(n, 2.0)), coder::row(Samples(n, 3.0))};
    const SpectrumRequest request{n, 0.0, 2, SpectrumOptions(0)};
    const auto expectStages = [&](char letter, double limit, auto signals, auto spectrum, auto distortion) {
        SetOfRecords records;
        distortion(set, records.distortion);
        spectrum(set, request, records.spectrum);
        signals(set, records.signals);
        for (const auto& labels :
             {records.distortion.labels, records.spectrum.labels, records.signals.variables.labels}) {
            EXPECT_EQ(labels[0][0], letter);
        }
        EXPECT_EQ(records.distortion.levels[2].size(), 5U);
        EXPECT_DOUBLE_EQ(records.spectrum.frequencies->back(), limit);
        EXPECT_EQ(records.signals.variables.statistics[2].values[0], 3.0);
    };
    coder::b_table empty;
    TimeSignalData_mo_305_4(ChannelSet{}, empty);
    EXPECT_TRUE(std::isnan(empty.variables.statistics[0].values[3])) << "no samples have no range";
    const auto at500 = [](auto&... arguments) { SpectrumParam_fn_mo_305_4(arguments...); };
    expectStages('V', 250.0, TimeSignalData_mo_305_4, at500, paramData_thd_mo_305_4);
    expectStages('V', 1000.0, TimeSignalData_mo_305_4, b_SpectrumParam_fn_mo_305_4, paramData_thd_mo_305_4);
    const auto currentsAt500 = [](auto&... arguments) { SpectrumParam_fn_mo_305_4I(arguments...); };
    expectStages('I', 250.0, TimeSignalData_mo_305_4I, currentsAt500, paramData_thd_mo_305_4I);
    expectStages('I', 1000.0, TimeSignalData_mo_305_4I, b_SpectrumParam_fn_mo_305_4I, paramData_thd_mo_305_4I);
}

TEST(Spectrum, OddRatesCutTheRowAndTheAxis) {
    const struct {
        double rate;
        int bins;  // of the voltages
        int frequencies;
        double first;
    } cases[]{
        {NAN, 1, 1, NAN},   {inf, 1, 1, NAN},          {-inf, 1, 1, NAN},      {-1.0, 1, 1, 0.0},
        {1e300, 1, 1, 0.0}, {1e-300, 1001, 1001, 0.0}, {5e-324, 1001, 0, 0.0}, {0.0, 1001, 0, 0.0},
    };
    for (const auto& c : cases) {
        const coder::f_table spectrum = Computed(0.0, 0, c.rate).run().voltages.spectrum;
        ASSERT_EQ(lengthOf(spectrum.spectra[0]), c.bins) << c.rate;
        ASSERT_EQ(static_cast<int>(spectrum.frequencies->size()), c.frequencies) << c.rate;
        EXPECT_TRUE(c.frequencies == 0 || plain::same(spectrum.frequencies->front(), c.first)) << c.rate;
        const coder::column& maxima = spectrum.maxima[0].frequencies;
        ASSERT_EQ(maxima.numel(), c.bins > 1 ? 2 : 0) << c.rate;
        EXPECT_TRUE(c.frequencies > 0 || std::isnan(maxima[0])) << "a line beyond the axis has no frequency";
    }
}

TEST(Spectrum, AChannelOfAnotherLengthRunsNone) {
    for (const double samplesNumber : {n - 1.0, n + 1.0, 0.0, 1e18, double(NAN)}) {
        Computed call(0.0, 2, 500.0);
        call.measurement.samplesNumber = samplesNumber;
        EXPECT_EQ(lengthOf(call.run().voltages.spectrum.spectra[0]), 0) << samplesNumber;
    }
    Computed call(0.0, 2, 500.0);
    call.measurement.currents[1].samples = coder::samples(call.x).first(n - 1);
    call.run();
    EXPECT_EQ(lengthOf(call.voltages.spectrum.spectra[1]), 2 * static_cast<int>(n) + 1)
        << "the other set is not affected";
    for (std::size_t phase = 0; phase < 3; ++phase) {
        EXPECT_EQ(lengthOf(call.currents.spectrum.spectra[phase]), 0);
        EXPECT_EQ(call.currents.spectrum.maxima[phase].frequencies.numel(), 0);
    }
}

}  // namespace
}  // namespace calc_modul_K9_web_ns
