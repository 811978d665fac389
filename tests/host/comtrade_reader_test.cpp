#include "reading/comtrade_reader.h"

#include <gtest/gtest.h>

#include <cmath>

#include "base/failure.h"
#include "reading/comtrade_file.h"

namespace {

using rt305::ComtradeParts;
using rt305::Recording;

/// A configuration with two analog channels, or with other lines in their places.
struct Configuration {
    std::string station = "Feeder,7,1999";
    std::string counts = "3,2A,1D";
    std::string first = "1,Ua,A,,V,0.5,-1,0,-32767,32767,100,1,S";
    std::string second = "2,Ia,A,,A,2,0,0,-32767,32767,100,1,p";
    std::string rates = "1\n1000,3";
    std::string dates = "01/02/2020,00:00:00.000000\n01/02/2020,00:00:00.000000";
    std::string form = "ASCII\n1";

    std::string text() const {
        return station + "\n" + counts + "\n" + first + "\n" + second + "\n1,Trip,,,0\n50\n" + rates + "\n" + dates +
               "\n" + form + "\n";
    }
};

Recording read(const Configuration& configuration, const std::string& data) {
    const std::string text = configuration.text();
    return rt305::readComtrade({"rec.cfg", text, "rec.dat", data, {}, {}});
}

std::string failureOf(const Configuration& configuration, const std::string& data) {
    try {
        read(configuration, data);
    } catch (const rt305::Failure& failure) {
        EXPECT_EQ(failure.code(), rt305::ExitCode::unreadable);
        return failure.what();
    }
    return {};
}

const std::string threeRows = "1,0,2,10,0\n2,1000,4,20,0\n3,2000,6,30,1\n";

TEST(ComtradeReader, ReadsTheWaysInWhichRecordersWrite) {
    struct Case {
        const char* what;
        Configuration configuration;
        std::string data;
        std::vector<double> ua;
    };
    const std::vector<double> plain{0.0, 1.0, 2.0};
    const Case cases[] = {
        {"as the standard says", {}, threeRows, plain},
        {"1991: ten fields, no year, two-digit year first month",
         {.station = "Feeder,7", .first = "1,Ua,A,,V,0.5,-1,0,0,0", .second = "2,Ia,A,,A,2,0,0,0,0"},
         threeRows,
         plain},
        {"an unknown year, blanks, an empty skew and offset",
         {.station = "Feeder,7,1997", .counts = "  3 , 2A, 1D ", .first = " 1, Ua ,A ,, V, 0.5, -1,, -9,9, 1, 1 ,S "},
         threeRows,
         plain},
        {"a comma in a name", {.first = "1,Ua, bus 1,A,,V,0.5,-1,0,-1,1,100,1,S"}, threeRows, plain},
        {"a negative multiplier", {.first = "1,Ua,A,,V,-1,0,0,0,0"}, threeRows, {-2.0, -4.0, -6.0}},
        {"impossible dates", {.dates = "09/44/2025,25 : 99\nnever"}, threeRows, plain},
        {"no dates at all, no factor of the stamps", {.dates = "", .form = "ascii  "}, threeRows, plain},
        {"empty lines, signs, leading zeros, a comma and an end-of-file mark at the end",
         {},
         "0,0,+000002,10,0,\r\n\r\n1,1000,0004,20,0,\r\n\r\n2,2000,6,30,0,\r\n\x1A",
         plain},
        {"missing values", {}, "1,0,99999,10,0\n2,1000,,20,0\n3,2000,6,30,0\n", {NAN, NAN, 2.0}},
        {"beyond 16 bits, not whole", {}, "1,0,83061,1,0\n2,1000,2.5,2,0\n3,2000,-1e3,3,0\n", {41529.5, 0.25, -501.0}},
        {"no stamps", {}, "1,,2,10,0\n2,,4,20,0\n3,,6,30,1\n", plain},
        {"stamps only", {.rates = "0\n0,3"}, threeRows, plain},
        {"end-of-file mark behind the configuration", {.form = "ASCII\n1\n\x1A"}, threeRows, plain},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const Recording recording = read(c.configuration, c.data);
        EXPECT_TRUE(recording.warnings.empty()) << recording.warnings[0];
        ASSERT_EQ(recording.columns.size(), 2U);
        EXPECT_EQ(recording.columns[0].unit, "V");
        ASSERT_EQ(recording.segments.size(), 1U);
        EXPECT_NEAR(recording.segments[0].rateHz, 1000.0, 1e-9);
        const auto& found = recording.columns[0].samples;
        ASSERT_EQ(found.size(), c.ua.size());
        for (std::size_t k = 0; k < found.size(); ++k) {
            EXPECT_TRUE(found[k] == c.ua[k] || (std::isnan(found[k]) && std::isnan(c.ua[k]))) << found[k];
        }
    }
}

TEST(ComtradeReader, ReadsBinaryForms) {
    const std::string head1("\x01\0\0\0\0\0\0\0", 8);
    const std::string head2("\x02\0\0\0\xE8\x03\0\0", 8);
    const std::string status("\xFF\xFF", 2);
    struct Case {
        const char* form;
        std::string first;  // samples of both channels
        std::string second;
    };
    const Case cases[] = {
        {"BINARY", std::string("\x04\0\xFE\xFF", 4), std::string("\x00\x80\x01\0", 4)},
        {"binary32 ", std::string("\x04\0\0\0\xFE\xFF\xFF\xFF", 8), std::string("\0\0\0\x80\x01\0\0\0", 8)},
        {"Float32", std::string("\0\0\x80\x40\0\0\0\xC0", 8), std::string("\xFF\xFF\x7F\xFF\0\0\x80\x3F", 8)},
        {"FLOAT32", std::string("\0\0\x80\x40\0\0\0\xC0", 8), std::string("\0\0\xC0\x7F\0\0\x80\x3F", 8)},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.form);
        const Configuration configuration{.rates = "1\n1000,2", .form = std::string(c.form) + "\n1"};
        const std::string data = head1 + c.first + status + head2 + c.second + status;
        const Recording recording = read(configuration, data);
        EXPECT_TRUE(recording.warnings.empty());
        ASSERT_EQ(recording.length, 2U);
        EXPECT_EQ(recording.columns[0].samples[0], 1.0);
        EXPECT_TRUE(std::isnan(recording.columns[0].samples[1]));
        EXPECT_EQ(recording.columns[1].samples, (std::vector<double>{-4.0, 2.0}));

        const Recording cut = read(configuration, data.substr(0, data.size() - 1));
        EXPECT_EQ(cut.length, 1U);
        ASSERT_EQ(cut.warnings.size(), 2U);
        const std::size_t size = data.size() / 2;
        EXPECT_EQ(cut.warnings[0], "rec.dat: byte " + std::to_string(size) + ": the last " + std::to_string(size - 1) +
                                       " bytes are not a whole record of " + std::to_string(size) +
                                       " bytes and are ignored");
        EXPECT_EQ(cut.warnings[1], "rec.dat: holds 1 samples, but the configuration announces 2");
        EXPECT_NE(failureOf(configuration, "123").find("rec.dat: holds 3 bytes"), std::string::npos);
    }
}

TEST(ComtradeReader, SaysWhereItFails) {
    struct Case {
        Configuration configuration;
        std::string data;
        std::string message;
    };
    const Case cases[] = {
        {{.counts = "3,2,1"}, threeRows, "rec.cfg:2: \"3,2,1\" is not a line of channel counts such as 10,6A,4D"},
        {{.counts = "3,999999A,1D"},
         threeRows,
         "rec.cfg:2: announces 999999 analog and 1 status channels, but the configuration has only 13 lines"},
        {{.counts = "1,0A,3D"}, threeRows, "rec.cfg:2: there are no analog channels"},
        {{.counts = "12,2A,10D"}, threeRows, "rec.cfg:12: the configuration ends here, before the last status channel"},
        {{.first = "1,Ua,A,,V,0.5"}, threeRows, "rec.cfg:3: 6 fields; an analog channel has 10 or 13"},
        {{.first = "1,Ua,A,,V,half,-1,0,0,0"}, threeRows, "rec.cfg:3: the multiplier \"half\" is not a number"},
        {{.rates = "many"}, threeRows, "rec.cfg:7: \"many\" is not a number of rates"},
        {{.rates = "1\n-5,3"}, threeRows, "rec.cfg:8: \"-5,3\" is not a rate with the number of its last sample"},
        {{.rates = "2\n50,30\n50,3"},
         threeRows,
         "rec.cfg:9: \"50,3\" is not a rate with the number of its last sample"},
        {{.form = "PACKED"}, threeRows, "rec.cfg: found no line with ASCII, BINARY, BINARY32 or FLOAT32"},
        {{}, "", "rec.dat: found no lines of samples"},
        {{}, "1,0,2,10,0\n2,1000,four,20,0\n", "rec.dat:2: field 3, \"four\", is not a number"},
        {{}, "1,0,2\n2,1000,4,20,0\n", "rec.dat:1: 3 fields, but the configuration announces 5"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(failureOf(c.configuration, c.data), c.message);
    }
}

TEST(ComtradeReader, TimeGoesByRatesAndStamps) {
    struct Case {
        const char* what;
        std::string rates;
        std::vector<double> stamps;  // empty field when negative
        std::string tail;            // behind the rates
        std::vector<std::size_t> segments;
        std::vector<double> seconds;  // of the segments' first samples
        std::size_t warnings;
    };
    const std::string plain = "x\nx\nASCII\n1\n";
    const Case cases[] = {
        {"two rates", "2\n1000,3\n50,5", {0, 1000, 2000, 3000, 23000}, plain, {3, 2}, {0.0, 0.003}, 0},
        {"nearly the same rates", "2\n1000,3\n1001,6", {0, 1000, 2000, 3000, 4000, 5000}, plain, {6}, {0.0}, 1},
        {"a jump between equal rates",
         "2\n1000,3\n1000,6",
         {0, 1000, 2000, 5000, 6000, 7000},
         plain,
         {3, 3},
         {0.0, 0.005},
         1},
        {"a jump inside one rate", "1\n1000,6", {0, 1000, 2000, 9000, 10000, 11000}, plain, {3, 3}, {0.0, 0.009}, 1},
        {"stamps in units of their own", "1\n1000,4", {0, 7, 14, 21}, plain, {4}, {0.0}, 0},
        {"stamps only, with a factor", "0\n0,4", {0, 50, 100, 150}, "x\nx\nASCII\n20\n", {4}, {0.0}, 0},
        {"stamps only, in ns", "0\n0,3", {0, 1e6, 2e6}, "1/1/2020,0:0:0.123456789\nx\nASCII\n1\n", {3}, {0.0}, 0},
        {"stamps that wrap", "0\n0,4", {4294965296.0, 4294966296.0, 0, 1000}, plain, {4}, {0.0}, 0},
        {"announced too many", "1\n1000,9", {0, 1000, 2000}, plain, {3}, {0.0}, 1},
        {"announced too few", "1\n1000,1", {0, 1000, 2000}, plain, {3}, {0.0}, 1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        std::string data;
        for (const double stamp : c.stamps) {
            data += "1," + std::to_string(static_cast<long long>(stamp)) + ",1\n";
        }
        const std::string text = "s,r,1999\n1,1A,0D\n1,Ua,A,,V,1,0,0,0,0\n\n" + c.rates + "\n" + c.tail;
        const Recording recording = rt305::readComtrade({"rec.cfg", text, "rec.dat", data, {}, {}});
        EXPECT_EQ(recording.warnings.size(), c.warnings);
        ASSERT_EQ(recording.segments.size(), c.segments.size());
        for (std::size_t i = 0; i < c.segments.size(); ++i) {
            EXPECT_EQ(recording.segments[i].count, c.segments[i]);
            EXPECT_NEAR(recording.seconds[recording.segments[i].first], c.seconds[i], 1e-9);
        }
        EXPECT_NEAR(recording.segments[0].rateHz, 1000.0, 0.5);
    }
}

TEST(ComtradeReader, ChannelsKeepTheirTransformersAndDelays) {
    const Recording recording = read({.second = "2,I(kA),A,,,2,0,841,0,0,0,1,P"}, threeRows);
    EXPECT_EQ(recording.columns[0].transformer.side, rt305::Transformer::Side::secondary);
    EXPECT_EQ(recording.columns[0].transformer.primary, 100.0);
    EXPECT_EQ(recording.columns[1].transformer.side, rt305::Transformer::Side::primary);
    EXPECT_EQ(recording.columns[1].transformer.primary, 1.0) << "a ratio of 0 is none";
    EXPECT_EQ(recording.columns[1].unit, "kA") << "from the name";
    EXPECT_NEAR(recording.columns[1].delaySeconds, 841e-6, 1e-15);
}

TEST(ComtradeReader, SuspectsPeaksThatTheHeaderQuotesAsRms) {
    const std::string text = Configuration().text();
    for (const auto& [header, warnings] :
         {std::pair{"Ua = 2\nIa = 59\nFREQ = 50", 1U}, std::pair{"Ua = 1.4\nIa = 42", 0U}, std::pair{"Ua = 2", 0U},
          std::pair{"", 0U}}) {
        EXPECT_EQ(rt305::readComtrade({"rec.cfg", text, "rec.dat", threeRows, {}, header}).warnings.size(), warnings);
    }
}

TEST(ComtradeFile, IsCutIntoSections) {
    const std::string bytes = "--- file type: CFG ---\n";  // sample bytes may look like a heading
    struct Case {
        const char* what;
        std::string text;
        std::string data;
    };
    const Case cases[] = {
        {"as the standard says", "--- file type: CFG ---\nc\n--- file type: DAT ASCII ---\n1,2\n", "1,2\n"},
        {"without colon and with two dashes", "--- file type  CFG ---\r\nc\n-- file type  DAT ---\r\n1,2\n", "1,2\n"},
        {"binary of known length",
         "--- file type: CFG ---\nc\n--- file type: DAT BINARY: 23 ---\n" + bytes + "\n--- file type: HDR ---\nh\n",
         bytes},
        {"binary to the end", "--- file type: CFG ---\nc\n--- file type: DAT FLOAT32\n" + bytes, bytes},
    };
    for (const Case& c : cases) {
        EXPECT_TRUE(rt305::isComtradeFile(c.text));
        const ComtradeParts parts = rt305::splitComtradeFile(c.text, "rec.cff");
        EXPECT_EQ(parts.configuration, "c\n") << c.what;
        EXPECT_EQ(parts.data, c.data) << c.what;
    }
    EXPECT_THROW(rt305::splitComtradeFile("--- file type: CFG ---\nc\n", "rec.cff"), rt305::Failure);
    EXPECT_FALSE(rt305::isComtradeFile("time,Ua\n0,1\n"));
}

}  // namespace
