#include "reading/recording_reader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <numbers>
#include <numeric>

#include "base/failure.h"
#include "base/text_encoding.h"
#include "measuring/measurement.h"
#include "output/recording_summary.h"

namespace {

using rt305::Measurement;
using rt305::MeasurementSettings;
using rt305::ReadOptions;
using rt305::Recording;
using Side = rt305::Transformer::Side;

const std::string folder = DATA_FOLDER "/";

double meanProduct(std::vector<double> x, std::vector<double> y) {
    for (auto* const row : {&x, &y}) {
        const double mean = std::accumulate(row->begin(), row->end(), 0.0) / static_cast<double>(row->size());
        std::for_each(row->begin(), row->end(), [mean](double& value) { value -= mean; });
    }
    return std::inner_product(x.begin(), x.end(), y.begin(), 0.0) / static_cast<double>(x.size());
}

bool holds(const std::vector<std::string>& texts, const std::string& words) {
    return std::any_of(texts.begin(), texts.end(),
                       [&](const std::string& text) { return text.find(words) != std::string::npos; });
}

TEST(RecordingReader, EveryRecorderTellsTheSameLoad) {
    struct Case {
        const char* file;
        ReadOptions options;
        std::optional<std::size_t> segment;
        double voltageFactor;
        double currentFactor;
        std::vector<std::string> readWarnings;
        std::vector<std::string> measureWarnings;
    };
    const double stored = 1.0 / std::sqrt(2.0);
    const Case cases[] = {
        {"relay.cfg", {.storedAsRms = true}, {}, 1.0, 1.0, {}, {}},
        {"relay.dat", {}, {}, stored, stored, {"multiply them with --sqrt2"}, {}},
        {"swing.CFG",
         {.encoding = "windows-1251"},
         {},
         1.0,
         1.0,
         {"holds 312 samples, but the configuration announces 311"},
         {"\"Ia_\xD1\x88\xD0\xB8\xD0\xBD\xD0\xB0_110",  // in Cyrillic

          "up to 65 us apart"}},
        {"segments.dat", {}, {}, 1.0, 1.0, {}, {}},
        {"segments.cfg", {.side = Side::primary}, 1, 1100.0, 120.0, {}, {}},
        {"segments.cfg", {.side = Side::secondary}, 3, 1.0, 1.0, {}, {}},
        {"single.cff", {}, {}, 1.0, 1.0, {}, {}},
        {"single.cff", {.gains = {{"hv ir", 2.0}, {"5", 2.0}, {"6", 2.0}}}, {}, 1.0, 2.0, {}, {}},
        {"logger.csv", {}, {}, 1.0, 1.0, {"logger.csv:56: the time step before this row is 0.5"}, {}},
        {"sound.wav",
         {.columns = {"Ua", "Ub", "Uc", "Ia", "Ib", "Ic"},
          .gains = {{"Ua", 100.0}, {"Ub", 100.0}, {"Uc", 100.0}, {"Ia", 2.0}, {"Ib", 2.0}, {"Ic", 2.0}}},
         {},
         1.0,
         1.0,
         {},
         {}},
        {"sound.wav", {}, {}, 0.01, 0.5, {"relative to full scale"}, {"assuming the order Ua, Ub, Uc, Ia, Ib, Ic"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.file);
        const Recording recording = rt305::readRecording(folder + c.file, c.options);
        ASSERT_EQ(recording.warnings.size(), c.readWarnings.size());
        for (const std::string& words : c.readWarnings) {
            EXPECT_TRUE(holds(recording.warnings, words)) << words << "\n" << recording.warnings[0];
        }
        MeasurementSettings settings;
        settings.segment = c.segment;
        const Measurement measurement = makeMeasurement(recording, settings);
        ASSERT_EQ(measurement.warnings.size(), c.measureWarnings.size());
        for (const std::string& words : c.measureWarnings) {
            EXPECT_TRUE(holds(measurement.warnings, words)) << words << "\n" << measurement.warnings[0];
        }
        for (std::size_t phase = 0; phase < rt305::phaseTotal; ++phase) {
            const auto& u = measurement.samples[phase];
            const auto& i = measurement.samples[rt305::phaseTotal + phase];
            EXPECT_NEAR(std::sqrt(meanProduct(u, u)) / c.voltageFactor, 57.7260, 0.01);
            EXPECT_NEAR(std::sqrt(meanProduct(i, i)) / c.currentFactor, 1.2, 2e-4);
            const bool isSampledLate = std::string(c.file) == "swing.CFG";
            EXPECT_NEAR(meanProduct(u, i) / c.voltageFactor / c.currentFactor, 59.9636, isSampledLate ? 0.5 : 0.02);
        }
    }
}

TEST(RecordingReader, MissingSamplesAreSaid) {
    MeasurementSettings settings;
    settings.segment = 1;
    const auto warnings = makeMeasurement(rt305::readRecording(folder + "logger.csv"), settings).warnings;
    ASSERT_EQ(warnings.size(), 1U);
    EXPECT_TRUE(holds(warnings, "samples of Ia are missing, the first after 0.01")) << warnings[0];
}

TEST(RecordingReader, SaysWhatIsWrongWithAFile) {
    const auto place = std::filesystem::path(testing::TempDir()) / "rt305_recording_reader_test";
    std::filesystem::remove_all(place);
    std::filesystem::create_directories(place);
    const auto put = [&place](const char* name, const std::string& content) {
        std::ofstream(place / name, std::ios::binary) << content;
    };
    put("lonely.cfg", "s,r,1999\n1,1A,0D\n");
    put("alone.dat", std::string(5, '\0'));
    put("damaged.wav", "RIFF1234");
    put("named.txt", "s,r,1999\n2,1A,1D\n");
    const std::pair<const char*, const char*> cases[] = {
        {"nothing.csv", "nothing.csv: No such file or directory"},
        {"lonely.cfg", "lonely.cfg: there is no lonely.dat in its folder"},
        {"alone.dat",
         "alone.dat: byte 0: unrecognised binary file; a COMTRADE record needs its .cfg file in the same folder"},
        {"named.txt", "named.txt: there is no named.dat in its folder"},
        {"damaged.wav", "damaged.wav: "},
        {"", "Is a directory"},
    };
    for (const auto& [name, words] : cases) {
        try {
            rt305::readRecording((place / name).string());
            ADD_FAILURE() << name;
        } catch (const rt305::Failure& failure) {
            EXPECT_NE(std::string(failure.what()).find(words), std::string::npos) << failure.what();
        }
    }
    std::filesystem::remove_all(place);
}

TEST(RecordingReport, ShowsSegmentsGapsAndReasons) {
    const std::string report = rt305::reportRecording(rt305::readRecording(folder + "logger.csv"), {});
    for (const char* const line : {"Format     CSV\n", "measured by default\n", "      2     51      560",
                                   "  4  Ia      mA", "                Ia       by its name\n"}) {
        EXPECT_NE(report.find(line), std::string::npos) << line << "\n" << report;
    }
}

TEST(Recording, CountsClippedSamples) {
    const auto sine = [](double limit, double step) {
        std::vector<double> x(200);
        for (std::size_t k = 0; k < x.size(); ++k) {
            x[k] = std::clamp(std::sin(0.1 * static_cast<double>(k)), -limit, limit);
            x[k] = step == 0.0 ? x[k] : std::round(x[k] / step) * step;
        }
        return x;
    };
    EXPECT_EQ(rt305::countClipped(sine(2.0, 0.0)), 0U);
    EXPECT_EQ(rt305::countClipped(sine(2.0, 0.01)), 0U) << "a rounded crest of a coarse converter";
    EXPECT_EQ(rt305::countClipped(std::vector<double>(9, 1.0)), 0U);
    EXPECT_NEAR(static_cast<double>(rt305::countClipped(sine(0.8, 0.0))),
                200.0 * 2.0 * std::acos(0.8) / std::numbers::pi, 10.0);
}

TEST(TextEncoding, EveryTextBecomesValid) {
    struct Case {
        std::string bytes;
        std::string encoding;
        std::string text;
    };
    const std::string bad = "\xEF\xBF\xBD";
    const Case cases[] = {
        {"Ua \xC2\xB5", "", "Ua \xC2\xB5"},
        {"\xE2\x84\xA6 \xF0\x9F\x98\x80", "cp866", "\xE2\x84\xA6 \xF0\x9F\x98\x80"},
        {"I\xA2", "", "I" + bad},
        {"I\xA2", "cp866", "I\xD0\xB2"},
        {"\xC4\xB8\xCF\xDF", "GB18030", "\xE6\xAF\x8D\xE7\xBA\xBF"},
        {"\xC0\x80 \xED\xA0\x80 \xF5 \xE2\x84", "", bad + bad + " " + bad + bad + bad + " " + bad + " " + bad + bad},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(rt305::toUtf8(c.bytes, c.encoding), c.text);
    }
    EXPECT_THROW(rt305::toUtf8("\xFF", "no such"), rt305::Failure);
}

}  // namespace
