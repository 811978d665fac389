#include "output/full_document.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <numbers>

#include "base/failure.h"
#include "recording/generator.h"

namespace {

using rt305::GeneratorSettings;
using rt305::MeasurementSettings;
using rt305::Recording;
using rt305::ResultDocument;

const rt305::Library& library() {
    static const rt305::Library opened(LIBRARY);
    return opened;
}

ResultDocument measured(const Recording& recording, const MeasurementSettings& settings = {}) {
    const auto full = prepare(recording, settings);
    return fullDocument(recording, full, measureAll(full, library()));
}

/// A figure by its names in JSON; NaN when it is missing or not there.
double figure(const ResultDocument& document, const std::string& table, const std::string& row,
              const std::string& column) {
    for (const auto& t : document.tables) {
        for (std::size_t r = 0; t.name == table && r < t.rows.size(); ++r) {
            for (std::size_t c = 0; t.rows[r].key == row && c < t.columns.size(); ++c) {
                if (t.columns[c].key == column && t.cells[r][c]) {
                    return *t.cells[r][c];
                }
            }
        }
    }
    return NAN;
}

/// The line voltages ab, bc, ca in place of the phase voltages.
Recording withLineVoltages(Recording recording) {
    const auto phase = recording.columns;
    for (std::size_t k = 0; k < recording.length; ++k) {
        for (std::size_t p = 0; p < 3; ++p) {
            recording.columns[p].samples[k] = phase[p].samples[k] - phase[(p + 1) % 3].samples[k];
        }
    }
    return recording;
}

// The waveform of IEEE 1459-2010, Annex B, with the voltage phases 141 and -34 degrees that its powers need.
const GeneratorSettings published{.voltage = 100.0,
                                  .current = 100.0,
                                  .angleDegrees = 30.0,
                                  .voltageHarmonics = {{3, 8.0, -70.0}, {5, 15.0, 141.0}, {7, 5.0, -34.0}},
                                  .currentHarmonics = {{3, 20.0, -165.0}, {5, 15.0, 234.0}, {7, 10.0, 234.0}}};

TEST(FullMeasurement, GivesThePublishedPowersByEveryMethod) {
    const ResultDocument document = measured(rt305::generate(published));
    struct Case {
        const char* table;
        const char* row;
        const char* column;
        double expected;
        double tolerance;
    };
    const Case cases[] = {
        {"parameters", "phase_voltage", "a", 101.557865, 1e-5},
        {"parameters", "current", "b", 103.561576, 1e-5},
        {"parameters", "thd_voltage", "c", 17.72005, 1e-4},
        {"parameters", "thd_current", "a", 26.92582, 1e-4},
        {"power", "Pa", "three-wattmeter", 8632.7886, 1e-3},
        {"power", "Sa", "three-wattmeter", 10517.4926, 1e-3},
        {"power", "Qa", "three-wattmeter", 6007.7127, 1e-3},
        {"power", "Pb", "three-wattmeter-complex", 8632.7886, 1e-3},
        {"power", "Qb", "three-wattmeter-complex", 4984.6690, 1e-3},
        {"power", "Sb", "three-wattmeter-complex", 9968.5487, 1e-3},
        {"derived", "power_factor", "total", 0.820803, 1e-6},
        {"derived", "current_lag", "c", 30.0, 1e-3},
        {"derived", "fine_frequency", "a", 50.0, 1e-3},
        {"highest_harmonics", "1", "Ia_order", 3.0, 0.0},
        {"highest_harmonics", "1", "Ia_percent", 20.0, 1e-2},
        {"highest_harmonics", "3", "Va_order", 7.0, 0.0},
    };
    for (const Case& c : cases) {
        EXPECT_NEAR(figure(document, c.table, c.row, c.column), c.expected, c.tolerance) << c.row << " " << c.column;
    }
}

/// Whatever voltages a recording holds, each method is fed those that it takes.
TEST(FullMeasurement, MethodsAgreeOnSinesInFourAndThreeWires) {
    for (const double lag : {-45.0, 30.0, 60.0}) {
        const GeneratorSettings generator{.angleDegrees = lag};
        MeasurementSettings threeWire;
        threeWire.flags = RT305_4_SIMULATED_SOURCE_MASK;
        for (const auto& document : {measured(rt305::generate(generator)),
                                     measured(withLineVoltages(rt305::generate(generator)), threeWire)}) {
            const double apparent = 3.0 * 230.0 * 5.0;
            const double active = apparent * std::cos(lag * std::numbers::pi / 180.0);
            const double reactive = apparent * std::sin(lag * std::numbers::pi / 180.0);
            EXPECT_NEAR(figure(document, "parameters", "line_voltage", "b"), 230.0 * std::sqrt(3.0), 1e-3);
            for (const char* const method :
                 {"three-wattmeter-complex", "three-wattmeter", "two-wattmeter", "two-wattmeter-phase"}) {
                EXPECT_NEAR(figure(document, "power", "P", method), active, 0.01) << method << lag;
                const bool isSigned =
                    method == std::string("three-wattmeter-complex") || method == std::string("two-wattmeter");
                EXPECT_NEAR(figure(document, "power", "Q", method), isSigned ? reactive : std::fabs(reactive), 0.01)
                    << method << lag;
            }
            EXPECT_EQ(document.remarks[0], "Wiring: nothing odd in the order and the angles.");
        }
    }
}

TEST(FullMeasurement, MeasuresWhatIsThere) {
    struct Case {
        const char* what;
        GeneratorSettings generator;
        std::size_t columns;
        MeasurementSettings settings;
        const char* table;
        const char* row;
        const char* column;
        double expected;
    };
    MeasurementSettings scaled;
    scaled.coefficients = {2.0, 2.0, 2.0, 10.0, 10.0, 10.0};
    const Case cases[] = {
        {"60 Hz", {.frequencyHz = 59.9}, 6, {}, "power", "P", "two-wattmeter", 3450.0},
        {"voltages at their own rate",
         {.voltageHarmonics = {{11, 30.0, 0.0}}},
         3,
         {},
         "signals",
         "rms",
         "Vb",
         230.0 * std::hypot(1.0, 0.3)},
        {"harmonics of voltages",
         {.voltageHarmonics = {{3, 5.0, 0.0}}},
         3,
         {},
         "highest_harmonics",
         "1",
         "Vc_percent",
         5.0},
        {"coefficients", {}, 6, scaled, "power", "P", "two-wattmeter", 20.0 * 3450.0},
        {"coefficients", {}, 6, scaled, "parameters", "current", "c", 50.0},
        {"a current of zero sequence",
         {.factors = {1.0, 1.0, 1.0, 1.0, 1.0, 0.0}},
         6,
         {},
         "derived",
         "sum_of_currents",
         "total",
         5.0},
        {"a current of zero sequence",
         {.factors = {1.0, 1.0, 1.0, 1.0, 1.0, 0.0}},
         6,
         {},
         "derived",
         "current_unbalance_i0",
         "total",
         50.0},
    };
    for (const Case& c : cases) {
        Recording recording = rt305::generate(c.generator);
        recording.columns.resize(c.columns);
        const double found = figure(measured(recording, c.settings), c.table, c.row, c.column);
        EXPECT_NEAR(found, c.expected, 1e-3 * c.expected) << c.what;
    }
    MeasurementSettings all;
    all.inputType = RT305_4_INPUT_VOLTAGES_AND_CURRENTS;
    Recording voltages = rt305::generate({});
    voltages.columns.resize(3);
    EXPECT_THROW(prepare(voltages, all), rt305::Failure);
}

TEST(FullMeasurement, JudgesNoWiringWithoutVoltages) {
    const auto first = [](const GeneratorSettings& generator) {
        return measured(rt305::generate(generator)).remarks[0];
    };
    EXPECT_EQ(first({.factors = {0.0, 1.0, 1.0, 1.0, 1.0, 1.0}}),
              "Wiring: not judged, as the voltages have no common fundamental.");
    EXPECT_EQ(first({.factors = {1.0, 1.0, 1.0, 1.0, -1.0, 1.0}}), "Wiring: Ib seems to be reversed.");
}

TEST(FullMeasurement, WindowsAreMeasuredAsPartsAre) {
    const Recording recording = rt305::generate({.durationSeconds = 1.0, .voltageHarmonics = {{5, 4.0, 0.0}}});
    MeasurementSettings part;
    part.startSeconds = 0.4;
    part.durationSeconds = 0.3;
    const auto window = windowOf(rt305::prepare(recording, {}), 0.4, 0.3);
    const ResultDocument document = fullDocument(recording, window, measureAll(window, library()));
    EXPECT_EQ(document.rawTexts, measured(recording, part).rawTexts);
    EXPECT_EQ(document.startSeconds, 0.4);
    EXPECT_THROW(windowOf(rt305::prepare(recording, {}), 0.8, 0.3), rt305::Failure);
}

}  // namespace
