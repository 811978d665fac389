#include "reading/csv_reader.h"

#include <gtest/gtest.h>

#include <cmath>

#include "base/failure.h"
#include "recording/channel_assignment.h"

namespace {

using rt305::readCsv;
using rt305::Recording;

/// What reading the text fails with; empty when it does not.
std::string failureOf(const std::string& text, std::optional<double> rateHz = std::nullopt) {
    try {
        rt305::assignColumns(readCsv(text, "rec.csv", {.rateHz = rateHz}));
    } catch (const rt305::Failure& failure) {
        EXPECT_EQ(failure.code(), rt305::ExitCode::unreadable);
        return failure.what();
    }
    return {};
}

TEST(CsvReader, ReadsTheWaysInWhichLoggersWrite) {
    struct Case {
        const char* what;
        std::string text;
        double rateHz;
        std::vector<double> firstColumn;
        std::string firstUnit;
    };
    const Case cases[] = {
        {"comma", "time,Ua,Ub\n0,1.5,2\n0.001,-2.5E+03,3\n", 1000.0, {1.5, -2500.0}, ""},
        {"semicolon, decimal comma", "Ua [kV];t [ms]\n1,5;0,0\n+2,25;0,5\n", 2000.0, {1.5, 2.25}, "kV"},
        {"semicolon, decimal point", "Ua;time\n1.5;0\n2;0.001\n", 1000.0, {1.5, 2.0}, ""},
        {"tab, micro sign", "Time (\xC2\xB5s)\tUa(V)\n0\t1\n50\t2\n", 20000.0, {1.0, 2.0}, "V"},
        {"BOM, CRLF, comments, quotes, blank last line",
         "\xEF\xBB\xBF# logger 7\r\n; site 3\r\n\"time\",\"Ua (mV)\"\r\n0,\"4\"\r\n0.5,5\r\n\r\n",
         2.0,
         {4.0, 5.0},
         "mV"},
        {"no time column", "Ua,Ia\n1,2\n", 0.0, {1.0}, ""},
        {"separator at the end of every row", "time,Ua_V\n0,1,\n1,2,\n", 1.0, {1.0, 2.0}, "V"},
        {"missing samples", "time,Ua\n0,NaN\n1,\n2,4\n3,-\n4,n/a\n", 1.0, {NAN, NAN, 4.0, NAN, NAN}, ""},
        {"preamble, names, units",
         "Device;Logger\nSerial;12\nChannels;6\n\nt;Ua;Ia\nms;kV;A\n0;1,5;2\n1;2;3\n2;3;4\n3;3;4\n",
         1000.0,
         {1.5, 2.0, 3.0, 3.0},
         "kV"},
        {"names in a comment", "# logger\n# time,Ua (V)\n0,1\n0.5,2\n", 2.0, {1.0, 2.0}, "V"},
        {"blanks between", "time   Ua\n0.0    1.5\n0.25   -2\n", 4.0, {1.5, -2.0}, ""},
        {"phases, not units", "time,U_A,U_B\n0,1,2\n1,2,3\n", 1.0, {1.0, 2.0}, ""},
        {"no names, time advances", "0.00,5\n0.02,6\n0.04,7\n0.06,9\n", 50.0, {5.0, 6.0, 7.0, 9.0}, ""},
        {"no names, rows are numbered", "0,5\n1,6\n2,7\n", 0.0, {0.0, 1.0, 2.0}, ""},
        {"rate above the rows", "Sample rate: 12.8 kHz\nUa,Ub\n1,2\n3,4\n", 12800.0, {1.0, 3.0}, ""},
        {"interval above the rows", "Sampling interval [us];100\nUa;Ub\n1;2\n3;4\n", 10000.0, {1.0, 3.0}, ""},
        {"settings beside the samples",
         "Record Length,4,,0.0,1.0\nSample Interval,2e-1,,0.2,2.0\nUnits,V,,0.4,3.0\n,,,0.6,2.0\n,,,0.8,1.0\n",
         5.0,
         {1.0, 2.0, 3.0, 2.0, 1.0},
         ""},
        {"dates with the day first", "time,Ua\n31.12.2020 23:59:59.5,1\n01.01.2021 00:00:00,2\n", 2.0, {1.0, 2.0}, ""},
        {"a late stamp is no gap", "time,Ua\n0,1\n1,1\n2.7,1\n3,1\n4,1\n", 1.0, {1.0, 1.0, 1.0, 1.0, 1.0}, ""},
        {"date and time over midnight and a leap day",
         "Time_UTC,Ua\n2020-02-29 23:59:59.9999,1\n2020-03-01T00:00:00Z,2\n",
         10000.0,
         {1.0, 2.0},
         ""},
        {"jitter of stamps in ns",
         "timestamp,Ua\n18:15:21.499998208,1\n18:15:21.500018208,2\n18:15:21.500038208,3\n",
         50000.0,
         {1.0, 2.0, 3.0},
         ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const Recording recording = readCsv(c.text, "rec.csv");
        EXPECT_NEAR(recording.segments.empty() ? 0.0 : recording.segments[0].rateHz, c.rateHz, 1e-9 * c.rateHz);
        EXPECT_EQ(recording.length, c.firstColumn.size());
        ASSERT_FALSE(recording.columns.empty());
        EXPECT_EQ(recording.columns[0].unit, c.firstUnit);
        EXPECT_TRUE(recording.warnings.empty());
        ASSERT_EQ(recording.columns[0].samples.size(), c.firstColumn.size()) << recording.columns[0].fault;
        for (std::size_t i = 0; i < c.firstColumn.size(); ++i) {
            const double x = recording.columns[0].samples[i];
            EXPECT_TRUE(x == c.firstColumn[i] || (std::isnan(x) && std::isnan(c.firstColumn[i]))) << x;
        }
    }
}

TEST(CsvReader, SaysWhereItFails) {
    const std::pair<std::string, std::string> cases[] = {
        {"", "rec.csv: found no rows of numbers"},
        {"# only a comment\n", "rec.csv: found no rows of numbers"},
        {"time,Ua\n", "rec.csv: found no rows of numbers"},
        {"# c\nUa,Ub\n1,2\n\n1,2,3\n1,2\n", "rec.csv:5: 3 cells, but the rows have 2"},
        {"Ua,Ub\n1,2\n1,2\n7\n1,2\n", "rec.csv:4: 1 cells, but the rows have 2"},
        {"Ua;Ub\n1;2\n1;12,x\n", "rec.csv:3: column \"Ub\": \"12,x\" is not a number"},
        {"Ua;Ub\n1.234,5;2\n", "rec.csv:2: column \"Ua\": \"1.234,5\" is not a number"},
        {"Ua,Ub\n1,\n2,NaN\n", "rec.csv: column \"Ub\": all samples are missing"},
        {"Ua,Ub\n1,inf\n", "rec.csv:2: column \"Ub\": \"inf\" is not a number"},
        {"Ua,Ub\n1,1e999\n", "rec.csv:2: column \"Ub\": \"1e999\" is not a number"},
        {"Ua,Ub\n1,+-2\n", "rec.csv:2: column \"Ub\": \"+-2\" is not a number"},
        {"time,Ua\n0,1\nsoon,2\n", "rec.csv:3: column \"time\": \"soon\" is not a time"},
        {"time,Ua\n2021-02-29 00:00:00,1\n", "rec.csv:2: column \"time\": \"2021-02-29 00:00:00\" is not a time"},
        {"time,Ua\n4040-02-24 00:00:00,1\n", "rec.csv:2: column \"time\": \"4040-02-24 00:00:00\" is not a time"},
        {"time,Ua\n24:00:00,1\n", "rec.csv:2: column \"time\": \"24:00:00\" is not a time"},
        {"time,Ua\n1,1\n1,2\n",
         "rec.csv: column \"time\" does not increase from the first row to the last, so the sample rate is unknown; "
         "give it with --rate"},
        {"V1,MODAQ_Va_V\n1,1\n",
         "rec.csv: columns \"V1\" and \"MODAQ_Va_V\" both match Ua; choose one by name or number with --map Ua=COLUMN"},
    };
    for (const auto& [text, message] : cases) {
        EXPECT_EQ(failureOf(text), message);
    }
    EXPECT_EQ(failureOf("time,Ua,note\nsoon,1,ok\n", 50.0), "") << "neither time nor note is needed";
}

TEST(CsvReader, TimeThatJumpsBeginsASegment) {
    struct Case {
        const char* times;
        std::vector<std::size_t> segments;  // lengths
        std::string warning;
    };
    const Case cases[] = {
        {"0 1 2.4 3.4", {4}, ""},
        {"0 1 4 5 6",
         {2, 3},
         "rec.csv:4: the time step before this row is 3 s instead of the usual 1 s (1 such steps in total)"},
        {"0 1 2 1 2 3 4",
         {3, 4},
         "rec.csv:5: the time step before this row is -1 s instead of the usual 1 s (1 such steps in total)"},
        {"0 1 0.5 1.5 2.5 2.5",
         {6},
         "rec.csv: column \"time\" has uneven steps; the samples are treated as evenly spaced"},
        {"0 0 0 3 3 3 6", {7}, "rec.csv: column \"time\" has uneven steps; the samples are treated as evenly spaced"},
    };
    for (const Case& c : cases) {
        std::string text = "time,Ua\n";
        for (const char* time = c.times; *time != '\0'; ++time) {
            text += *time == ' ' ? ",1\n" : std::string(1, *time);
        }
        const Recording recording = readCsv(text + ",1\n", "rec.csv");
        std::vector<std::size_t> lengths;
        for (const rt305::Segment& segment : recording.segments) {
            lengths.push_back(segment.count);
            EXPECT_NEAR(segment.rateHz, recording.warnings.empty() || lengths.size() > 1 ? 1.0 : segment.rateHz, 0.2);
        }
        EXPECT_EQ(lengths, c.segments) << c.times;
        EXPECT_EQ(recording.warnings, c.warning.empty() ? std::vector<std::string>{} : std::vector{c.warning});
    }
}

TEST(CsvReader, AShortLastRowIsLeftOut) {
    const Recording recording = readCsv("time,Ua\n0,1\n1,2\n2\n", "rec.csv");
    EXPECT_EQ(recording.length, 2U);
    EXPECT_EQ(recording.warnings,
              std::vector<std::string>{"rec.csv:4: 1 cells, but the rows have 2; this last row is ignored"});
}

TEST(CsvReader, TheUserNamesTheColumns) {
    const Recording recording = readCsv("0,1,2\n0.5,3,4\n", "rec.csv", {.columns = {"t(s)", "Ua (kV)", "Ia"}});
    ASSERT_EQ(recording.columns.size(), 2U);
    EXPECT_EQ(recording.columns[0].name + recording.columns[0].unit, "UakV");
    EXPECT_EQ(recording.segments[0].rateHz, 2.0);
    EXPECT_THROW(readCsv("0,1,2\n", "rec.csv", {.columns = {"a"}}), rt305::Failure);
}

TEST(CsvReader, FindsTheColumnsOfTheChannels) {
    struct Case {
        std::string names;
        std::string map;
        std::vector<int> columns;  // of Ua..Ic, -1: none
    };
    const Case cases[] = {
        {"Ic,Ib,Ia,UC,UB,UA", "", {5, 4, 3, 2, 1, 0}},
        {"t,MODAQ_Va_V,MODAQ_Vb_V,MODAQ_Vc_V,MODAQ_Ia_I,MODAQ_Ib_I,MODAQ_Ic_I", "", {0, 1, 2, 3, 4, 5}},
        {"V1 [V],V2 [V],V3 [V],I1 [A],I2 [A],I3 [A]", "", {0, 1, 2, 3, 4, 5}},
        {"Valve,Uac,Iab,x", "", {-1, -1, -1, -1, -1, -1}},
        {"left,Right (kV),Ua,Ub", "ua=RIGHT, Ub=1,Ic=4", {1, 0, -1, -1, -1, 3}},
        {"LV IR,LV IS,LV IT,HV VR,HV VS,HV VT,VN", "", {3, 4, 5, 0, 1, 2}},
        {"UL1,UL2,UL3,I_L1,IL2,IL3", "", {0, 1, 2, -1, 4, 5}},
        {"Voltage A,Voltage B,Voltage C,Current L1", "", {0, 1, 2, 3, -1, -1}},
        {"bus1 Ua,bus1 Ub,bus2 Ua,bus2 Ub,bus2 Uc,Ia7", "", {2, 3, 4, 5, -1, -1}},
        {"Ua (W),Ub (deg),Va (A),VA MAG,Uc", "", {-1, -1, 4, -1, -1, -1}},
    };
    for (const Case& c : cases) {
        const std::size_t commas = static_cast<std::size_t>(std::count(c.names.begin(), c.names.end(), ','));
        std::string row = "1";
        for (std::size_t i = 0; i < commas; ++i) {
            row += ",1";
        }
        const auto columns = rt305::assignColumns(readCsv(c.names + "\n" + row + "\n", "rec.csv", {.rateHz = 1.0}),
                                                  rt305::parseColumnMap("--map", c.map))
                                 .columns;
        for (std::size_t channel = 0; channel < rt305::channelTotal; ++channel) {
            EXPECT_EQ(columns[channel] ? static_cast<int>(*columns[channel]) : -1, c.columns[channel])
                << c.names << " " << rt305::channelNames[channel];
        }
    }
}

}  // namespace
