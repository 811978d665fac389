#include <filesystem>

#include "tool_run.h"

namespace {

/// Three short recordings and a file that is none, in a folder of their own.
class Batch : public testing::Test {
protected:
    void SetUp() override {
        std::filesystem::create_directories(folder);
        for (const char* const voltage : {"100", "200", "300"}) {
            ASSERT_EQ(run(std::string("generate --duration 0.5 --voltage ") + voltage + ".4 -o " + folder + "/" +
                          voltage + ".csv")
                          .exitCode,
                      0);
        }
        std::ofstream(folder + "/bad.csv") << "nothing\n";
    }
    void TearDown() override { std::filesystem::remove_all(folder); }

    std::string inFolder(const std::string& command, int expectedCode) const {
        const std::string tool = std::filesystem::path(TOOL).parent_path().string();
        int exitCode = -1;
        std::string output = withShell(
            "cd " + folder + " && export PATH=" + tool + ":$PATH RT305_4_LIBRARY=" LIBRARY " && " + command, &exitCode);
        EXPECT_EQ(exitCode, expectedCode) << command << "\n" << output;
        return output;
    }

    const std::string folder = testing::TempDir() + "rt305_batch_test_" + std::to_string(getpid());
};

/// The Ua of each line, or its error code.
const std::string phaseVoltages =
    " | sed -E 's/.*\"phase_voltage\":\\{\"unit\":\"V\",\"a\":([0-9]+)\\.?[0-9]*,.*/\\1/; "
    "s/.*\"exit_code\":([0-9]).*/error \\1/' | tr '\\n' ' '";

TEST_F(Batch, AFailingFileStopsNoOtherAndIsReported) {
    const std::string files = " 300.csv bad.csv 100.csv missing.csv 200.csv ";
    for (const char* const jobs : {"--jobs 1", "--jobs 3"}) {
        const std::string measure = std::string("rt305 measure ") + jobs;
        const std::string lines = inFolder(measure + " --json-lines" + files + "2>/dev/null" + phaseVoltages, 0);
        EXPECT_EQ(lines, "300 error 3 100 error 3 200 ") << "in the order of the names";
        const std::string messages = inFolder(measure + files + "2>&1 >/dev/null", 4);
        EXPECT_NE(messages.find("rt305: missing.csv: No such file"), std::string::npos) << messages;
        EXPECT_NE(messages.find("rt305: 2 of 5 files failed:\n  bad.csv\n  missing.csv\n"), std::string::npos)
            << messages;
    }
    inFolder("rt305 measure bad.csv 2>/dev/null", 3);
    inFolder("rt305 measure --jobs 2 100.csv 200.csv >/dev/null", 0);
}

TEST_F(Batch, NamesComeFromAListAndWindowsAreLines) {
    EXPECT_EQ(
        inFolder(
            "printf '%s\\n' 100.csv 200.csv | rt305 measure --json-lines --files-from - --window 0.3 --step 100ms" +
                phaseVoltages,
            0),
        "100 100 100 200 200 200 ");
    EXPECT_EQ(inFolder("rt305 measure --csv --window 0.25s 200.csv | grep -c parameters,current,a", 0), "2\n");
    EXPECT_EQ(
        inFolder("rt305 measure --csv 100.csv 200.csv | grep -c '^file,start,table,quantity,column,value,unit$'", 0),
        "1\n");
    EXPECT_EQ(inFolder("rt305 measure --plain - < 200.csv | grep -P '^stdin\\t0\\tparameters\\tfrequency\\ta\\t'", 0),
              "stdin\t0\tparameters\tfrequency\ta\t50\tHz\n");
}

/// The library keeps the texts of earlier calls; what a file does not hold must not come from the one before.
TEST_F(Batch, NothingOfOneFileIsInTheNext) {
    inFolder("cut -d, -f1-4 100.csv > voltages.csv", 0);
    const std::string measure = "rt305 measure --json-lines ";
    EXPECT_EQ(inFolder(measure + "200.csv voltages.csv | tail -n 1", 0), inFolder(measure + "voltages.csv", 0));
}

/// One process answers each name before it takes the next, as an engine that pipes rows through a program wants.
TEST_F(Batch, EachNameIsAnsweredAtOnce) {
    EXPECT_EQ(
        inFolder(
            "bash -c 'coproc rt305 measure --json-lines --files-from -; for name in 100 200; do "
            "echo $name.csv >&\"${COPROC[1]}\"; read -t 60 -r line <&\"${COPROC[0]}\"; echo \"${line:0:17}\"; done'",
            0),
        "{\"file\":\"100.csv\"\n{\"file\":\"200.csv\"\n");
}

/// The command that the guide shows for GNU parallel, run as it stands there.
TEST_F(Batch, TheRecipeForGnuParallelGivesTheSameLines) {
    const std::string guide = contentOf(SOURCE_FOLDER "/docs/batch.md");
    const std::string start = "$ ls *.csv | parallel ";
    const std::size_t from = guide.find(start);
    ASSERT_NE(from, std::string::npos);
    const std::string command = guide.substr(from + 2, guide.find('\n', from) - from - 2);
    ASSERT_NE(command.find(" > results.jsonl"), std::string::npos);
    std::filesystem::remove(folder + "/bad.csv");
    inFolder("HOME=" + folder + " && export HOME && " + command, 0);
    EXPECT_EQ(inFolder("sort results.jsonl", 0), inFolder("rt305 measure --json-lines *.csv | sort", 0));
}

TEST_F(Batch, ColourIsForTerminalsOnly) {
    const auto onTerminal = [this](const std::string& environment) {
        return inFolder(environment + " script -qec 'rt305 signals 100.csv' /dev/null", 0);
    };
    EXPECT_NE(onTerminal("TERM=xterm NO_COLOR=").find("\033[1m"), std::string::npos);
    EXPECT_EQ(onTerminal("TERM=xterm NO_COLOR=1").find('\033'), std::string::npos);
    EXPECT_EQ(onTerminal("TERM=dumb").find('\033'), std::string::npos);
    EXPECT_EQ(inFolder("rt305 signals 100.csv", 0).find('\033'), std::string::npos);
}

}  // namespace
