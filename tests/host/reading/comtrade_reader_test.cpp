#include "reading/comtrade_reader.h"

#include "reading/comtrade_file.h"
#include "reading/described.h"

namespace {

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

void expectRead(const std::string& configuration, const std::string& data, const std::string& recording,
                const std::string& says, const std::string& header = "") {
    const auto read = [&] { return rt305::readComtrade({"rec.cfg", configuration, "rec.dat", data, {}, header}); };
    ::expectRead(configuration + data, read, recording, says);
}

const std::string threeRows = "1,0,2,10,0\n2,1000,4,20,0\n3,2000,6,30,1\n";
const std::string plain = "1000 Hz: Ua V 0 1 2";

TEST(ComtradeReader, ReadsTheWaysInWhichRecordersWrite) {
    struct Case {
        Configuration configuration;
        std::string data = threeRows;
        std::string recording = plain;
        std::string says{};
    };
    const Case cases[] = {
        {},
        {{.station = "Feeder,7", .first = "1,Ua,A,,V,0.5,-1,0,0,0", .second = "2,Ia,A,,A,2,0,0,0,0"}},  // 1991
        {{.station = "F,7,1997", .counts = "  3 , 2A, 1D ", .first = " 1, Ua ,A ,, V, 0.5, -1,, -9,9, 1, 1 ,S "}},
        {{.first = "1,Ua, bus 1,A,,V,0.5,-1,0,-1,1,100,1,S"}},  // a comma in the name
        {{.first = "1,Ua,A,,V,-1,0,0,0,0"}, threeRows, "1000 Hz: Ua V -2 -4 -6"},
        {{.dates = "09/44/2025,25 : 99\nnever"}},
        {{.dates = "", .form = "ascii  "}},
        {{.rates = "0\n0,3"}},
        {{.form = "ASCII\n1\n\x1A"}},
        {{}, "0,0,+000002,10,0,\r\n\r\n1,1000,0004,20,0,\r\n\r\n2,2000,6,30,0,\r\n\x1A"},
        {{}, "1,0,99999,10,0\n2,1000,,20,0\n3,2000,6,30,0\n", "1000 Hz: Ua V nan nan 2"},
        {{}, "1,0,83061,1,0\n2,1000,2.5,2,0\n3,2000,-1e3,3,0\n", "1000 Hz: Ua V 41529.5 0.25 -501"},
        {{}, "1,,2,10,0\n2,,4,20,0\n3,,6,30,1\n"},
        {{}, "1,0,2,10,0\n2,1000,4,20,0\n3,2000\n", "1000 Hz: Ua V 0 1", "rec.dat:3: ; 2; 3"},
        {{.counts = "3,2,1"}, threeRows, "", "rec.cfg:2: \"3,2,1\""},
        {{.counts = "3,999999A,1D"}, threeRows, "", "rec.cfg:2: ; 999999; 13"},
        {{.counts = "1,0A,3D"}, threeRows, "", "rec.cfg:2: ; analog"},
        {{.counts = "12,2A,10D"}, threeRows, "", "rec.cfg:12: ; status"},
        {{.first = "1,Ua,A,,V,0.5"}, threeRows, "", "rec.cfg:3: 6"},
        {{.first = "1,Ua,A,,V,half,-1,0,0,0"}, threeRows, "", "rec.cfg:3: ; \"half\""},
        {{.rates = "many"}, threeRows, "", "rec.cfg:7: \"many\""},
        {{.rates = "1\n-5,3"}, threeRows, "", "rec.cfg:8: \"-5,3\""},
        {{.rates = "2\n50,30\n50,3"}, threeRows, "", "rec.cfg:9: \"50,3\""},
        {{.form = "PACKED"}, threeRows, "", "rec.cfg: ; FLOAT32"},
        {{}, "", "", "rec.dat: "},
        {{}, "1,0,2,10,0\n2,1000,four,20,0\n", "", "rec.dat:2: field 3; \"four\""},
        {{}, "1,0,2\n2,1000,4,20,0\n", "", "rec.dat:1: 3; 5"},
    };
    for (const Case& c : cases) {
        expectRead(c.configuration.text(), c.data, c.recording, c.says);
    }
}

TEST(ComtradeReader, ReadsBinaryForms) {
    const std::string heads[] = {std::string("\x01\0\0\0\0\0\0\0", 8), std::string("\x02\0\0\0\xE8\x03\0\0", 8)};
    struct Case {
        const char* form;
        std::string first, second;  // samples of both channels
    };
    const Case cases[] = {
        {"BINARY", std::string("\x04\0\xFE\xFF", 4), std::string("\x00\x80\x01\0", 4)},
        {"binary32 ", std::string("\x04\0\0\0\xFE\xFF\xFF\xFF", 8), std::string("\0\0\0\x80\x01\0\0\0", 8)},
        {"Float32", std::string("\0\0\x80\x40\0\0\0\xC0", 8), std::string("\xFF\xFF\x7F\xFF\0\0\x80\x3F", 8)},
        {"FLOAT32", std::string("\0\0\x80\x40\0\0\0\xC0", 8), std::string("\0\0\xC0\x7F\0\0\x80\x3F", 8)},
    };
    for (const Case& c : cases) {
        const Configuration configuration{.rates = "1\n1000,2", .form = std::string(c.form) + "\n1"};
        const std::string data = heads[0] + c.first + "\xFF\xFF" + heads[1] + c.second + "\xFF\xFF";
        expectRead(configuration.text(), data, "1000 Hz: Ua V 1 nan", "");
        const auto recording = rt305::readComtrade({"rec.cfg", configuration.text(), "rec.dat", data, {}, {}});
        EXPECT_EQ(recording.columns[1].samples, (std::vector<double>{-4.0, 2.0}));
        const std::string size = std::to_string(data.size() / 2);
        expectRead(configuration.text(), data.substr(0, data.size() - 1), ": Ua V 1",
                   "rec.dat: byte " + size + "; " + size + " bytes; holds 1 sample,");
        expectRead(configuration.text(), "123", "", "rec.dat: ; 3 bytes; " + size);
    }
}

TEST(ComtradeReader, TakesTimeFromRatesAndStamps) {
    struct Case {
        std::string rates, stamps, recording;
        std::string says{};
        std::string tail = "x\nx\nASCII\n1\n";
    };
    const Case cases[] = {
        {"2\n1000,3\n50,5", "0 1000 2000 3000 23000", "3 at 1000 Hz from 0, 2 at 50 Hz from 0.003"},
        {"2\n1000,3\n1001,6", "0 1000 2000 3000 4000 5000", "1000.4 Hz", "1000; 1001"},
        {"2\n1000,3\n1000,6", "0 1000 2000 5000 6000 7000", "3 at 1000 Hz from 0, 3 at 1000 Hz from 0.005", "sample 4"},
        {"1\n1000,6", "0 1000 2000 9000 10000 11000", "3 at 1000 Hz from 0, 3 at 1000 Hz from 0.009", "sample 4"},
        {"1\n1000,4", "0 7 14 21", "1000 Hz"},  // stamps in units of their own
        {"0\n0,4", "0 50 100 150", "1000 Hz", "", "x\nx\nASCII\n20\n"},
        {"0\n0,3", "0 1000000 2000000", "1000 Hz", "", "1/1/2020,0:0:0.123456789\nx\nASCII\n1\n"},
        {"0\n0,4", "4294965296 4294966296 0 1000", "1000 Hz"},  // stamps that wrap
        {"1\n1000,9", "0 1000 2000", "1000 Hz", "3; 9"},
        {"1\n1000,1", "0 1000 2000", "1000 Hz", "3; 1"},
    };
    for (const Case& c : cases) {
        std::istringstream stamps(c.stamps);
        std::string data;
        std::string samples = ": Ua V";
        for (std::string stamp; stamps >> stamp; samples += " 1") {
            data += "1," + stamp + ",1\n";
        }
        expectRead("s,r,1999\n1,1A,0D\n1,Ua,A,,V,1,0,0,0,0\n\n" + c.rates + "\n" + c.tail, data, c.recording + samples,
                   c.says);
    }
}

TEST(ComtradeReader, KeepsTransformersAndDelays) {
    const Configuration configuration{.second = "2,I(kA),A,,,2,0,841,0,0,0,1,P"};
    const auto current =
        rt305::readComtrade({"rec.cfg", configuration.text(), "rec.dat", threeRows, {}, {}}).columns[1];
    EXPECT_EQ(current.transformer.primary, 1.0) << "a ratio of 0 is none";
    EXPECT_EQ(current.unit, "kA") << "from the name";
    EXPECT_NEAR(current.delaySeconds, 841e-6, 1e-15);
    for (const char* const skew : {"1e30", "-60001", "inf", "x"}) {
        const Configuration wrong{.second = std::string("2,I,A,,A,2,0,") + skew + ",0,0,0,1,P"};
        const auto read = rt305::readComtrade({"rec.cfg", wrong.text(), "rec.dat", threeRows, {}, {}});
        EXPECT_EQ(read.columns[1].delaySeconds, 0.0);
        EXPECT_NE(read.warnings.at(0).text.find(std::string("channel I: the skew \"") + skew), std::string::npos);
    }
}

TEST(ComtradeReader, ReportsPeaksThatTheHeaderQuotesAsRms) {
    const std::string text = Configuration().text();
    expectRead(text, threeRows, plain, "--sqrt2", "Ua = 2\nIa = 59\nFREQ = 50");
    expectRead(text, threeRows, plain, "", "Ua = 1.4\nIa = 42");
    expectRead(text, threeRows, plain, "", "Ua = 2");
}

TEST(ComtradeFile, IsCutIntoSections) {
    const std::string bytes = "--- file type: CFG ---\n";  // sample bytes may look like a heading
    const std::pair<std::string, std::string> cases[] = {
        {"--- file type: CFG ---\nc\n--- file type: DAT ASCII ---\n1,2\n", "1,2\n"},
        {"--- file type  CFG ---\r\nc\n-- file type  DAT ---\r\n1,2\n", "1,2\n"},
        {bytes + "c\n--- file type: DAT BINARY: 23 ---\n" + bytes + "\n--- file type: HDR ---\nh\n", bytes},
        {bytes + "c\n--- file type: DAT FLOAT32\n" + bytes, bytes},
    };
    for (const auto& [text, data] : cases) {
        EXPECT_TRUE(rt305::isComtradeFile(text));
        const rt305::ComtradeParts parts = rt305::splitComtradeFile(text, "rec.cff");
        EXPECT_EQ(parts.configuration, "c\n") << text;
        EXPECT_EQ(parts.data, data) << text;
    }
    EXPECT_THROW(rt305::splitComtradeFile("--- file type: CFG ---\nc\n", "rec.cff"), rt305::Failure);
    EXPECT_FALSE(rt305::isComtradeFile("time,Ua\n0,1\n"));
}

}  // namespace
