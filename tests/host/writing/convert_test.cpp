#include <cmath>
#include <limits>
#include <random>

#include "reading/recording_reader.h"
#include "tool.h"
#include "writing/comtrade_writer.h"
#include "writing/conversion.h"
#include "writing/sample_writers.h"

namespace {

using namespace rt305;

/// Columns of every size, with gaps, zeros and names that need care.
Recording difficult() {
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    Recording recording{
        .source = "made", .nominalHz = 60.0, .facts = {{"Station", "A, b"}, {"Start", "2020-02-29T23:59:59.5"}}};
    recording.length = 500;
    recording.setRate(7678.4834, "");
    std::mt19937_64 random;
    for (const double size : {0.0, 1e-9, 1.0, 325.27, 1e9}) {
        Column column{"U, \"" + std::to_string(recording.columns.size()) + "\"", "kV", {}, ""};
        for (std::size_t k = 0; k < recording.length; ++k) {
            column.samples.push_back(size * (static_cast<double>(random()) / 9.3e18 - 1.0));
        }
        column.samples[7] = nan;
        recording.columns.push_back(column);
    }
    recording.columns[2].transformer = {100.0, 1.0, Transformer::Side::secondary};
    return recording;
}

struct Form {
    const char* file;
    void (*write)(const Recording& recording, std::ostream& out);
    double counts;  // from zero to the largest sample; 0: exact
};
template <SampleForm form>
void writeCff(const Recording& recording, std::ostream& out) {
    writeComtradeFile(recording, form, out);
}
constexpr Form forms[] = {{"a.cff", writeCff<SampleForm::ascii>, 99998.0},
                          {"b.cff", writeCff<SampleForm::binary32>, 2147483647.0},
                          {"f.cff", writeCff<SampleForm::float32>, 8388608.0},
                          {"t.csv", writeSampleTable, 0.0},
                          {"w.wav",
                           [](const Recording& recording, std::ostream& out) {
                               Recording whole = recording;
                               whole.setRate(7678.0, "");
                               out << soundFile(whole);
                           },
                           0.0}};

TEST(Convert, RoundTripsToHalfACount) {
    const Recording original = difficult();
    for (const auto& [file, write, counts] : forms) {
        SCOPED_TRACE(file);
        std::ofstream stream(workFolder() + "/" + file, std::ios::binary);
        write(original, stream);
        stream.close();
        const Recording copy = readRecording(workFolder() + "/" + file, {});
        ASSERT_EQ(copy.columns.size(), original.columns.size());
        ASSERT_EQ(copy.length, original.length);
        EXPECT_NEAR(copy.segments.at(0).rateHz, *file == 'w' ? 7678.0 : 7678.4834, 1e-3);
        EXPECT_EQ(copy.columns[2].transformer.side == Transformer::Side::secondary, counts > 0.0);
        EXPECT_EQ(copy.fact("Start"), counts > 0.0 ? "2020-02-29T23:59:59.500000" : "");
        EXPECT_EQ(copy.columns[1].unit, *file == 'w' ? "" : "kV");
        for (std::size_t i = 0; i < copy.columns.size(); ++i) {
            const auto& expected = original.columns[i].samples;
            const double most = counts > 0.0 ? 0.5000001 * largestMagnitude(expected) / counts : 0.0;
            for (std::size_t k = 0; k < expected.size(); ++k) {
                ASSERT_TRUE(k == 7 ? std::isnan(copy.columns[i].samples[k])
                                   : std::fabs(copy.columns[i].samples[k] - expected[k]) <= most)
                    << i << " " << k << " " << copy.columns[i].samples[k] << " " << expected[k];
            }
        }
    }
}

TEST(Convert, CutsRenamesAndResamples) {
    expectShown({
        {"rt305 convert $sample --only Ia,Ua --rename Ua=V1,2=x --start 0.1s --duration 0.2s --resample 4.8k -o p.cfg; "
         "cat p.cfg; "
         "rt305 info p.dat",
         "1,Ia,,,A,; 2,V1,,,V,; Nominal frequency 50; Samples 960; Rate 4800 Hz; !Start"},
        {"rt305 convert $data/swing.CFG --start 0.1 --to cff | rt305 info --json -",
         "\"start\": \"2016-08-22T16:04:22.100000\""},
        {"cp $data/relay.* .; rt305 convert relay.cfg -o relay.dat", "would be lost", 2},
        {"rt305 convert $sample --to csv | measure - | sed s/.*parameters// > a; measure $sample | sed "
         "s/.*parameters// | cmp - a",
         ""},
        {"rt305 convert $sample -o n.npy; head -c 6 n.npy | tail -c 5; wc -c n.npy; strings n.npy | head -2",
         "NUMPY; 'Ua (V)', '<f8'; 560256 n.npy"},
        {"rt305 convert $data/segments.cfg -o s.csv", "note: one of"},
        {"sed 's/0:0:0/9:5:1.000000001/' $data/segments.cfg > g.cfg; cp $data/segments.dat g.dat; rt305 convert g.cfg "
         "-o "
         "h.cff; rt305 info --json h.cff",
         "\"start\": \"2020-01-01T09:05:01.160000001\"; \"rate\": 3200.0"},
        {"rt305 convert $data/swing.CFG -o d.csv", "note: the channels were sampled up to 104 us apart"},
        {"rt305 convert $data/swing.CFG --to cff | rt305 info -", "Skew, us"},
        {"rt305 convert --gain 1=1e308 $sample -o i.cff; ls i.cff", "column \"Ua\" has infinite samples; No such file",
         2},
    });
}

}  // namespace
