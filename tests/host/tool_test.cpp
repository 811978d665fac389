#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <sstream>

#include "tool_run.h"

namespace {

const std::string sample = SOURCE_FOLDER "/examples/recordings/sample.csv";

TEST(Tool, TheCommandInTheReadmeMakesTheSampleRecording) {
    const std::string readme = contentOf(SOURCE_FOLDER "/examples/recordings/README.md");
    const std::size_t start = readme.find("rt305 generate ");
    ASSERT_NE(start, std::string::npos);
    std::string arguments = readme.substr(start + 6, readme.find("```", start) - start - 6);
    const std::size_t target = arguments.find("-o ");
    ASSERT_NE(target, std::string::npos) << "the command writes the file by its name";
    const ToolRun made = run(arguments.substr(0, target));
    EXPECT_EQ(made.exitCode, 0);
    EXPECT_TRUE(made.output == contentOf(sample)) << "the recording has other bytes";
}

std::vector<std::string> linesOf(const std::string& text) {
    std::istringstream stream(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

/// The lines in order, where "..." stands for any lines and all others follow each other.
bool isShownBy(const std::vector<std::string>& output, const std::vector<std::string>& shown) {
    auto next = output.begin();
    bool anywhere = false;
    for (const std::string& line : shown) {
        if (line == "...") {
            anywhere = true;
            continue;
        }
        next = anywhere ? std::find(next, output.end(), line) : next;
        if (next == output.end() || *next++ != line) {
            return false;
        }
        anywhere = false;
    }
    return anywhere || next == output.end();
}

/// Every command that the project's README shows, run as it stands with the output that it shows.
TEST(Tool, TheReadmeShowsWhatTheCommandsPrint) {
    const auto lines = linesOf(contentOf(SOURCE_FOLDER "/README.md"));
    const std::string folder = std::filesystem::path(TOOL).parent_path().string();
    const std::string prepare = "cd " SOURCE_FOLDER " && PATH=" + folder +
                                ":$PATH && RT305_4_LIBRARY=" LIBRARY
                                " && "
                                "export RT305_4_LIBRARY && ";
    std::size_t blocks = 0;
    for (auto line = std::find(lines.begin(), lines.end(), "```console"); line != lines.end();
         line = std::find(line, lines.end(), "```console")) {
        const auto end = std::find(line, lines.end(), "```");
        ASSERT_GT(end - line, 2);
        std::string command = (line + 1)->substr(2);
        command = command == "make demo" ? "scripts/demo " BUILD_FOLDER : command;
        int exitCode = -1;
        const std::string output = withShell(prepare + command, &exitCode);
        EXPECT_EQ(exitCode, 0) << command;
        EXPECT_TRUE(isShownBy(linesOf(output), {line + 2, end})) << command << "\n" << output;
        line = end;
        ++blocks;
    }
    EXPECT_GE(blocks, 6U);
}

TEST(Tool, ExitCodesAndMessages) {
    struct Case {
        std::string arguments;
        int exitCode;
        const char* says;  // somewhere in stdout and stderr
    };
    const std::string good = sample + " 2>&1";
    const Case cases[] = {
        {"--help", 0, "params"},
        {"params --help", 0, "--two-currents"},
        {"2>&1", 2, "subcommand"},
        {"params 2>&1", 2, "FILE is required"},
        {"params --power five-wattmeter " + good, 2, "five-wattmeter"},
        {"params --rate 0 " + good, 2, "--rate"},
        {"params --map Ua=nothing " + good, 3, "there is no column \"nothing\""},
        {"params --gains 1,2 " + good, 2, "neither six numbers"},
        {"params /nonexistent/file.csv 2>&1", 3, "/nonexistent/file.csv: No such file or directory"},
        {"info /tmp 2>&1", 3, "/tmp: Is a directory"},
        {"params --library /nonexistent.so " + good, 5, "cannot open the measurement library"},
        {"params --library " WRONG_LIBRARY " " + good, 5, "has no function getVersion"},
        {"generate --dropout Ia:1 2>&1", 2, "CHANNEL:START:COUNT"},
        {"generate --harmonic-u 3 2>&1", 2, "ORDER:PERCENT"},
        {"generate --duration 1e9 2>&1", 2, "100 million"},
        {"generate -o /nonexistent/file.csv 2>&1", 5, "No such file or directory"},
        {"generate --duration 0.01 --angle -30 --offsets Ua=-1", 0, "Time(s),Ua(V)"},
        {"info " + good, 0, "10000 Hz, from column"},
        {"signals " + good, 0, "peak2rms"},
        {"spectrum --peaks 20.5 " + good, 2, "--peaks"},
        {"spectrum --window flattop " + good, 2, "flattop"},
        {"params --type voltages " + good, 0, "give all six channels"},
        {"generate --duration 0.3 | " TOOL " spectrum --rate 500 --type voltages - 2>&1", 0, "up to 250 Hz"},
        {"generate --duration 0.3 | cut -d, -f1-4 | " TOOL " spectrum - 2>&1", 0,
         "note: resampled from 10000 Hz to the 500 Hz at which the library measures this\n"},
        {"generate --duration 0.3 | cut -d, -f1-4 | " TOOL " spectrum --no-resample - 2>&1", 0,
         "frequencies read 0.05 times what they are\n"},
        {"info " DATA_FOLDER "/segments.dat 2>&1", 0, "secondary 600:5   Ic       by its name"},
        {"signals --segment 1 --start 0.02 --duration 0.02 " DATA_FOLDER "/segments.cfg 2>&1", 0,
         "\n64 samples at 3200 Hz"},
        {"params --segment 4 " DATA_FOLDER "/segments.cfg 2>&1", 3, "there is no segment 4; the recording has 3"},
        {"params --start 0.3 " DATA_FOLDER "/segments.cfg 2>&1", 3, "the segment, which lasts 0.22 s"},
        {"info --primary --secondary " DATA_FOLDER "/segments.cfg 2>&1", 2, "--primary"},
        {"info --encoding nonsense " DATA_FOLDER "/swing.DAT 2>&1", 2, "\"nonsense\" is not a known text encoding"},
        {"info --gain 1 " DATA_FOLDER "/sound.wav 2>&1", 2, "not of the form COLUMN=FACTOR"},
        {"info - < " DATA_FOLDER "/single.cff 2>&1", 0, "COMTRADE, FLOAT32"},
        {"params --columns 't(ms),Ua,Ub,Uc,Ia(mA),Ib(mA),Ic(mA)' --segment 1 " DATA_FOLDER "/logger.csv 2>&1", 0,
         "samples of Ia are missing"},
        {"generate --duration 0.2 | " TOOL " distortion - 2>&1", 0, "this one has 10.0"},
        {"params --power two-wattmeter " + good, 2, "takes line voltages"},
        {"params --json --csv " + good, 2, "give one of --json"},
        {"measure --window 0.2 --json " + good, 2, "--json-lines"},
        {"measure --step 0.1 " + good, 2, "--step needs --window"},
        {"measure --window 200mA " + good, 2, "is not a time"},
        {"measure --window 1.5s " + good, 3, "shorter than a window"},
        {"measure 2>&1", 2, "no FILE"},
        {"measure - --files-from - 2>&1", 2, "stdin can be"},
        {"measure --files-from /nonexistent.txt 2>&1", 3, "/nonexistent.txt"},
        {"generate --duration 0.3 | " TOOL " params --power three-wattmeter-complex -", 0, "Apparent power"},
        {"generate --duration 0.3 | cut -d, -f1-4 | " TOOL " params --type all - 2>&1", 1,
         "There is no data for one or more phases"},
    };
    for (const Case& c : cases) {
        const ToolRun result = run(c.arguments);
        EXPECT_EQ(result.exitCode, c.exitCode) << c.arguments << "\n" << result.output;
        EXPECT_NE(result.output.find(c.says), std::string::npos) << c.arguments << "\n" << result.output;
    }
}

/// With single blanks, so that a row can be told without its alignment.
std::string collapsed(const std::string& text) {
    std::string result;
    std::unique_copy(text.begin(), text.end(), std::back_inserter(result),
                     [](char a, char b) { return a == ' ' && b == ' '; });
    return result;
}

TEST(Tool, MeasuresWhatWasGenerated) {
    // The waveform of IEEE 1459-2010, Annex B, with the voltage phases 141 and -34 degrees that its powers need;
    // phase b has less voltage, phase c less current.
    const std::string distorted =
        "--voltage 100 --current 100 --angle 30 --harmonic-u 3:8:-70 --harmonic-u 5:15:141 --harmonic-u 7:5:-34 "
        "--harmonic-i 3:20:-165 --harmonic-i 5:15:234 --harmonic-i 7:10:234 --factors Ub=0.9,Ic=0.5 --digits 9 ";
    const std::string complex = " params --power three-wattmeter-complex ";
    struct Case {
        std::string generate;
        std::string measure;
        std::vector<const char*> rows;
    };
    const Case cases[] = {
        {distorted,
         complex + "-",
         {"Phase voltage 101.558 91.402 101.558 V", "Line voltage ab, bc, ca 166.668 166.668 175.357 V",
          "Current 103.562 103.562 51.781 A", "Frequency 50.0 50.0 50.0 Hz", "THD of voltage 17.720 17.720 17.720 %",
          "THD of current 26.926 26.926 26.926 %", "Active power P 20718.7 8632.8 7769.5 4316.4 W",
          "Reactive power Q 11963.2 4984.7 4486.2 2492.3 VAR", "Apparent power S 23924.5 9968.5 8971.7 4984.3 VA"}},
        {distorted, " params --power three-wattmeter -", {"Reactive power Q 14418.5 6007.7 5406.9 3003.9 VAR"}},
        {"--angle -30 | cut -d, -f1-5,7",
         complex + "--two-currents b --invert-p -",
         {"Current 5.00000 5.00000 5.00000 A", "Active power P -2987.79 995.93 995.93 995.93 W",
          "Reactive power Q -1725.00 -575.00 -575.00 -575.00 VAR"}},
        {"--frequency 59.9 --duration 10",
         " params --frequency control --coefficients Ub=2 --map Ia=Ib,Ib=Ic,Ic=4 -",
         {"Frequency 59.9 59.9 59.9 Hz", "Phase voltage 230.000 460.000 230.000 V"}},
        {"--harmonic-u 3:5 --harmonic-i 40:10 --voltage 100",
         " spectrum --window hann --db --peaks 3 --mode 2 --criterion -30 -",
         {"1 50.000 0.00 50.000 0.00 50.000 0.00\n2 150.000 -26.02 150.000 -26.02 150.000 -26.02\n10001 lines",
          "2 2000.00 -20.00 2000.00 -20.00"}},
        {"--harmonic-u 3:5 --harmonic-i 40:10 --voltage 100",
         " distortion -",
         {" 3 150.00 13.98 5.000 150.00 13.98 5.000", "40 2000.00 -6.02 10.000"}},
        {"--voltage 400 --factors Ub=0.5",
         " params --wiring three -",
         {"Phase voltage 230.940 115.470 230.940 V", "Line voltage ab, bc, ca 400.000 200.000 400.000 V"}},
        // line voltages, which lead the phase voltages by 30 degrees
        {"--voltage 398.37168574 --angle 60",
         " params --wiring three --power two-wattmeter -",
         {"Zero-sequence voltage - V", "Active power P 2987.79 - - - W", "Reactive power Q 1725.00 - - - VAR"}},
        {"--rate 4000 --harmonic-u 5:3",
         complex + "-",
         {"Phase voltage 230.103", "THD of voltage 3.000 3.000 3.000 %",
          "Active power P 3450.00 1150.00 1150.00 1150.00 W"}},
        // 230 * 0.0049417429956896556 / (1 + (19.53125 * 8 + 35) / 1000), 1 ohm: as recorded
        {"--current 1e6",
         " params --source real --gains Ua=8,Ia=0,Ib=0,Ic=0 --resistances Ub=1,Uc=1,Ia=24.9,Ib=127 -",
         {"Phase voltage 0.954 230.000 230.000 V", "Current 191.75 37.60 4774.63 A"}},
    };
    for (const Case& c : cases) {
        const ToolRun result = run("generate " + c.generate + " | " TOOL + c.measure);
        EXPECT_EQ(result.exitCode, 0);
        for (const char* const row : c.rows) {
            EXPECT_NE(collapsed(result.output).find(row), std::string::npos) << row << "\n" << result.output;
        }
    }
}

TEST(Tool, RawIsTheLibrarysOwnText) {
    const ToolRun params = run("params --raw " + sample);
    EXPECT_EQ(params.output.substr(0, 14), R"({"paramData":[)");
    EXPECT_EQ(params.output.find('\n'), params.output.size() - 1);
    const std::string signals = run("signals --raw " + sample).output;
    const std::size_t second = signals.find('\n') + 1;
    EXPECT_EQ(signals.substr(0, 16), R"({"signalDataU":[)");
    EXPECT_EQ(signals.substr(second, 16), R"({"signalDataI":[)");
    EXPECT_EQ(run("spectrum --raw " + sample).output.substr(0, 18), R"({"spectrumDataU":[)");
    EXPECT_EQ(run("distortion --raw " + sample).output.substr(0, 13), R"({"thdDataU":[)");
}

TEST(Tool, AnIdleLibraryPassesNoCheck) {
    const ToolRun checked = run("check " IDLE_LIBRARY);
    EXPECT_EQ(checked.exitCode, 1);
    EXPECT_EQ(checked.output.find("pass  "), std::string::npos) << checked.output;
    EXPECT_NE(checked.output.find("\n0 of "), std::string::npos);
    EXPECT_EQ(run("check " WRONG_LIBRARY " 2>&1").exitCode, 5);
}

TEST(Tool, TheLibraryIsTakenFromTheOptionThenTheEnvironmentThenNearby) {
    const std::string wrongEnvironment = "RT305_4_LIBRARY=" WRONG_LIBRARY;
    const std::string arguments = "params " + sample + " 2>&1";
    EXPECT_EQ(run(arguments, wrongEnvironment).exitCode, 5);
    EXPECT_EQ(run("params --library " LIBRARY " " + sample, wrongEnvironment).exitCode, 0);

    const auto installed = std::filesystem::path(testing::TempDir()) / "rt305_host_tool_test";
    std::filesystem::remove_all(installed);
    std::filesystem::create_directories(installed / "bin");
    std::filesystem::create_directories(installed / "lib");
    std::filesystem::copy_file(TOOL, installed / "bin/rt305");
    std::filesystem::copy_file(LIBRARY, installed / "lib/libRT305_4.so.1");
    int exitCode = -1;
    withShell((installed / "bin/rt305").string() + " " + arguments, &exitCode);
    EXPECT_EQ(exitCode, 0);
    std::filesystem::remove_all(installed);
}

}  // namespace
