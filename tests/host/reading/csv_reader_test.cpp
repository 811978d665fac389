#include "reading/csv_reader.h"

#include <algorithm>
#include <cmath>

#include "reading/described.h"
#include "reading/recording_reader.h"
#include "recording/channel_assignment.h"

namespace {

using rt305::readCsv;

struct Case {
    std::string text;
    std::string recording;  // empty: refused
    std::string says{};
    rt305::ReadOptions options{};
};

void expectRead(const std::vector<Case>& cases) {
    for (const Case& c : cases) {
        const auto read = [&c] {
            auto recording = readCsv(c.text, "rec.csv", c.options);
            recording = c.options.rateHz ? completed(std::move(recording), c.options) : recording;
            rt305::assignColumns(recording);  // refuses columns with faults
            return recording;
        };
        ::expectRead(c.text, read, c.recording, c.says);
    }
}

TEST(CsvReader, ReadsTheWaysInWhichLoggersWrite) {
    expectRead({
        {"time,Ua,Ub\n0,1.5,2\n0.001,-2.5E+03,3\n", "1000 Hz: Ua 1.5 -2500"},
        {"Ua [kV];t [ms]\n1,5;0,0\n+2,25;0,5\n", "2000 Hz: Ua kV 1.5 2.25"},
        {"Ua;time\n1.5;0\n2;0.001\n", "1000 Hz: Ua 1.5 2"},
        {"Time (\xC2\xB5s)\tUa(V)\n0\t1\n50\t2\n", "20000 Hz: Ua V 1 2"},
        {"Time (\xCE\xBCs)\tUa(V)\n0\t1\n50\t2\n", "20000 Hz: Ua V 1 2"},
        {"\xEF\xBB\xBF# logger 7\r\n; site 3\r\n\"time\",\"Ua (mV)\"\r\n0,\"4\"\r\n0.5,5\r\n\r\n", "2 Hz: Ua mV 4 5"},
        {"Ua,Ia\n1,2\n", ": Ua 1"},
        {"time,Ua_V\n0,1,\n1,2,\n", "1 Hz: Ua_V V 1 2"},
        {"time,Ua\n0,NaN\n1,\n2,4\n3,-\n4,n/a\n", "1 Hz: Ua nan nan 4 nan nan"},
        {"Device;Logger\nSerial;12\nChannels;6\n\nt;Ua;Ia\nms;kV;A\n0;1,5;2\n1;2;3\n2;3;4\n3;3;4\n",
         "1000 Hz: Ua kV 1.5 2 3 3"},
        {"# logger\n# time,Ua (V)\n0,1\n0.5,2\n", "2 Hz: Ua V 1 2"},
        {"time   Ua\n0.0    1.5\n0.25   -2\n", "4 Hz: Ua 1.5 -2"},
        {"time,U_A,U_B\n0,1,2\n1,2,3\n", "1 Hz: U_A 1 2"},  // phases, not units
        {"0.00,5\n0.02,6\n0.04,7\n0.06,9\n", "50 Hz: 1 5 6 7 9"},
        {"0,5\n1,6\n2,7\n", ": 1 0 1 2"},  // numbers of rows, not times
        {"0,1,2\n0.5,3,4\n", "2 Hz: Ua kV 1 3", "", {.columns = {"t(s)", "Ua (kV)", "Ia"}}},
        {"0,1,2\n", "", "1; 3", {.columns = {"a"}}},
        {"Sample rate: 12.8 kHz\nUa,Ub\n1,2\n3,4\n", "12800 Hz: Ua 1 3"},
        {"Sampling interval [us];100\nUa;Ub\n1;2\n3;4\n", "10000 Hz: Ua 1 3"},
        {"Record Length,4,,0.0,1.0\nSample Interval,2e-1,,0.2,2.0\nUnits,V,,0.4,3.0\n,,,0.6,2.0\n,,,0.8,1.0\n",
         "5 Hz: 1 1 2 3 2 1"},
        {"time,Ua\n31.12.2020 23:59:59.5,1\n01.01.2021 00:00:00,2\n", "2 Hz: Ua 1 2"},
        {"time,Ua\n05.06.2020 00:00:00,1\n06.06.2020 00:00:00,2\n", "1.15741e-05 Hz: Ua 1 2"},  // the day first
        {"Time_UTC,Ua\n2020-02-29 23:59:59.9999,1\n2020-03-01T00:00:00Z,2\n", "10000 Hz: Ua 1 2"},
        {"timestamp,Ua\n18:15:21.499998208,1\n18:15:21.500018208,2\n18:15:21.500038208,3\n", "50000 Hz: Ua 1 2 3"},
        {"time,Ua,note\nsoon,1,ok\n", "50 Hz: Ua 1", "", {.rateHz = 50.0}},
        {"time,Ua\n1,1\n0,2\n", "50 Hz: Ua 1 2", "", {.rateHz = 50.0}},
        {"time,Ua\n0,1\n0.001,2\n", "50 Hz: Ua 1 2", "by the file the rate is 1000 Hz", {.rateHz = 50.0}},
        {"Zeitpunkt [ms];Ua\n0;1\n0,5;2\n", "2000 Hz: Ua 1 2"},
        {"Zeit;Ua\n0;1\n0,5;2\n", "2 Hz: Ua 1 2"},
        {"t/ms;Ua/kV\n0;1\n0,5;2\n", "2000 Hz: Ua kV 1 2"},
        {"t [\xB5s],Ua\n0,1\n5,2\n", "200000 Hz: Ua 1 2"},
        {"time,Ua\n2024-01-05T13:00:00.0+01:00,1\n2024-01-05T12:00:00.5Z,2\n2024-01-05T07:30:01-0430,3\n",
         "2 Hz: Ua 1 2 3"},
        {"time,Ua\n01/31/2024 11:59:59.5 PM,1\n02/01/2024 12:00:00.0 am,2\n", "2 Hz: Ua 1 2"},
    });
}

TEST(CsvReader, ReadsCellsInQuotes) {
    expectRead({
        {"time,\"Ua, \"\"bus\"\" 1 (kV)\",\"Current, phase A (A)\"\n0,\"1,234.5\",1\n1,\"-2,000\",2\n",
         "1 Hz: Ua, \"bus\" 1 kV 1234.5 -2000"},
        {"time,Ua\n\"0,0\",\"-281,691\"\n\"0,5\",\"1\"\n", "2 Hz: Ua -281.691 1"},
        {"time,Ua\n0.5,\"-281,691\"\n1.5,\"2\"\n", "1 Hz: Ua -281691 2"},
        {"time,Ua\n0,\"-281,691\"\n1,\"2\"\n", "1 Hz: Ua -281.691 2", "\"-281,691\"; decimal"},
        {"Ua;Ub\n1,234.5;\"2\"\n", ": Ua 1234.5"},
        {"Ua;Ub\n\"1;2\n", "", "\"\"1\""},
    });
}

TEST(CsvReader, ReadsWhatScopesWrite) {
    expectRead({
        {"x-axis,1,2\nsecond,Volt,Volt\n-0.5,1,2\n0,3,4\n", "2 Hz: 1 Volt 1 3"},
        {"Source,CH1,CH2\nSecond,Volt,Ampere\n-0.5,1,2\n0,3,4\n", "2 Hz: CH1 Volt 1 3"},
        {"second,Volt\n0,1\n0.5,2\n", "2 Hz: Volt 1 2"},
        {"X,CH1,Start,Increment,\nSequence,VOLT,-3.0e-03,5.0e-01\n0,1.5,,\n1,2.5,,\n", "2 Hz: X Sequence 0 1"},
        {"Model,7\nHorizontal Units,ms,\nVertical Units,V,A,\nLabel,Ua,,\n,\nTIME,CH1,CH2\n-0.5,1,2\n0,3,4\n",
         "2000 Hz: Ua V 1 3"},
        {"Vertical Units,V,V\nLabel,Ua,Ub\n0,1,2\n0.5,3,4\n1,4,5\n", "2 Hz: Ua V 1 3 4"},
    });
}

std::string wave(const char* heading, double step) {
    std::string text(heading);
    for (int k = 0; k < 400; ++k) {
        text += std::to_string(k * step) + "," + std::to_string(100 * std::sin(0.1 * k)) + "\n";
    }
    return text;
}

TEST(CsvReader, JudgesTimesByTheWaveThatTheyGive) {
    for (const Case& c : {Case{wave("t,Ua\n", 0.0004), "2500 Hz: Ua"},
                          {wave("t,Ua\n", 0.4), "2500 Hz: Ua", "\"t\"; as ms; 0.0398 Hz"},
                          {wave("t,Ua\n", 400), "2500 Hz: Ua", "as us"},
                          {wave("t,Ua\n", 4), "0.25 Hz: Ua"},
                          {wave("t [s],Ua\n", 0.4), "2.5 Hz: Ua"}}) {
        const auto read = [&c] {
            auto recording = readCsv(c.text, "rec.csv");
            recording.columns.at(0).samples.clear();
            return recording;
        };
        ::expectRead(c.text, read, c.recording, c.says);
    }
}

TEST(CsvReader, FindsGapsInTime) {
    expectRead({
        {"time,Ua\n0,1\n0,1\n0,1\n1,1\n1,1\n1,1\n2,1\n2,1\n2,1\n3,1\n3,1\n3,1\n4,1\n",
         "3 Hz: Ua 1 1 1 1 1 1 1 1 1 1 1 1 1", "\"time\"; rounded to steps of 1 s"},
        {"time,Ua\n0,1\n1,1\n2.7,1\n3,1\n4,1\n", "1 Hz: Ua 1 1 1 1 1"},  // a late stamp
        {"time,Ua\n0,1\n1,1\n2.4,1\n3.4,1\n", "0.862069 Hz: Ua 1 1 1 1"},
        {"time,Ua\n0,1\n1,1\n4,1\n5,1\n6,1\n", "2 at 1 Hz from 0, 3 at 1 Hz from 4: Ua 1 1 1 1 1",
         "rec.csv:4: ; 3 s; 1 s"},
        {"time,Ua\n0,1\n1,1\n2,1\n1,1\n2,1\n3,1\n", "3 at 1 Hz from 0, 3 at 1 Hz from 1: Ua 1 1 1 1 1 1",
         "rec.csv:5: ; -1 s"},
        {"time,Ua\n0,1\n1,1\n0.5,1\n1.5,1\n2.5,1\n2.5,1\n", "1.94444 Hz: Ua 1 1 1 1 1 1",
         "\"time\"; uneven; evenly spaced"},
        {"time,Ua\n0,1\n0,1\n0,1\n3,1\n3,1\n3,1\n6,1\n", "1 Hz: Ua 1 1 1 1 1 1 1", "\"time\"; rounded to steps of 3 s"},
        {"time,Ua\n1,1\n1,2\n", "", "rec.csv: ; \"time\"; --rate"},
    });
}

TEST(CsvReader, SaysWhereItFails) {
    expectRead({
        {"", "", "rec.csv: "},
        {"# only a comment\n", "", "rec.csv: "},
        {"time,Ua\n", "", "rec.csv: "},
        {"# c\nUa,Ub\n1,2\n\n1,2,3\n1,2\n", "", "rec.csv:5: 3; 2"},
        {"Ua,Ub\n1,2\n1,2\n7\n1,2\n", "", "rec.csv:4: 1; 2"},
        {"time,Ua\n0,1\n1,2\n2\n", "1 Hz: Ua 1 2", "rec.csv:4: 1; 2; last row"},
        {"Ua;Ub\n1;2\n1;12,x\n", "", "rec.csv:3: ; \"Ub\"; \"12,x\""},
        {"Ua;Ub\n1.234,5;2\n", "", "rec.csv:2: ; \"Ua\"; \"1.234,5\""},
        {"Ua,Ub\n1,\n2,NaN\n", "", "rec.csv: ; \"Ub\"; missing"},
        {"Ua,Ub\n1,inf\n", "", "rec.csv:2: ; \"Ub\"; \"inf\""},
        {"Ua,Ub\n1,1e999\n", "", "\"1e999\""},
        {"Ua,Ub\n1,+-2\n", "", "\"+-2\""},
        {"time,Ua\n0,1\nsoon,2\n", "", "rec.csv:3: ; \"time\"; \"soon\""},
        {"time,Ua\n2021-02-29 00:00:00,1\n", "", "rec.csv:2: ; \"2021-02-29 00:00:00\""},
        {"time,Ua\n4040-02-24 00:00:00,1\n", "", "\"4040-02-24 00:00:00\""},
        {"time,Ua\n24:00:00,1\n", "", "\"24:00:00\""},
        {"V1,MODAQ_Va_V\n1,1\n", "", "\"V1\"; \"MODAQ_Va_V\"; Ua; --map"},
    });
}

TEST(ChannelAssignment, FindsTheColumnsOfTheChannels) {
    struct Names {
        std::string names;
        std::string columns;  // of Ua..Ic, from 0; -: none
        std::string map{};
    };
    for (const Names& c : {
             Names{"Ic,Ib,Ia,UC,UB,UA", "543210"},
             {"t,MODAQ_Va_V,MODAQ_Vb_V,MODAQ_Vc_V,MODAQ_Ia_I,MODAQ_Ib_I,MODAQ_Ic_I", "012345"},
             {"V1 [V],V2 [V],V3 [V],I1 [A],I2 [A],I3 [A]", "012345"},
             {"Valve,Uac,Iab,x", "------"},
             {"left,Right (kV),Ua,Ub", "10---3", "ua=RIGHT, Ub=1,Ic=4"},
             {"LV IR,LV IS,LV IT,HV VR,HV VS,HV VT,VN", "345012"},
             {"UL1,UL2,UL3,I_L1,IL2,IL3", "012345"},
             {"Spannung L1,Spannung L2,Spannung L3,Strom L1 (A),Strom L2 (A),Strom L3 (A)", "012345"},
             {"V_LN_A,V_LN_B,V_LN_C,I R,I S,I T", "012345"},
             {"i_r,i_s,i_t,I_N,L1_V,A V", "---012"},
             {"Uab,Ubc,Uca,Ia", "0123-- lines"},
             {"U12,U13,V", "0-1'--- lines"},
             {"V_BC (kV),V_CA (kV),UL2L1", "2'01--- lines"},
             {"Spannung L1-L2,U_L2_L3,Line 1 Voltage 3", "01---- lines"},
             {"V_LL_R,V_LL_S,V_LL_T,Ur,Us,Ut", "345---"},
             {"Ua,Uab,Ubc,V31", "123--- lines"},
             {"Ua,Ub,Uab", "01----"},
             {"Uab,Ubc,Uca", "201--- lines", "Ua=Uca,Ub=Uab,Uc=Ubc"},
             {"U32,Iab", "------"},
             {"ULA,Uan,Ub2,Ubx", "12----"},
             {"Voltage A,Voltage B,Voltage C,Current L1", "0123--"},
             {"bus1 Ua,bus1 Ub,bus2 Ua,bus2 Ub,bus2 Uc,Ia7", "2345--"},
             {"Ua (W),Ub (deg),Va (A),VA MAG,Uc", "--4---"},
         }) {
        std::string row = "1";
        for (auto commas = std::count(c.names.begin(), c.names.end(), ','); commas > 0; --commas) {
            row += ",1";
        }
        const auto assigned = rt305::assignColumns(readCsv(c.names + "\n" + row + "\n", "rec.csv", {.rateHz = 1.0}),
                                                   rt305::parseColumnMap("--map", c.map));
        std::string columns;
        for (std::size_t i = 0; i < rt305::channelTotal; ++i) {
            columns += assigned.columns[i] ? std::to_string(*assigned.columns[i]) : "-";
            columns += assigned.isReversed[i] ? "'" : "";
        }
        columns += assigned.areLineVoltages ? " lines" : "";
        EXPECT_EQ(columns, c.columns) << c.names;
    }
}

}  // namespace
