#include "tool.h"

namespace {

/// Three short recordings and a file that is none.
void makeFiles() {
    run("for u in 100 200 300; do generate --duration 0.5 --voltage $u.4 -o $u.csv; done; echo nothing > bad.csv");
}

/// The whole volts of Ua on each line, or its error code.
const std::string phaseVoltages =
    " | sed -E 's/.*\"phase_voltage\":\\{\"unit\":\"V\",\"a\":([0-9]+)\\.?[0-9]*,.*/\\1/; "
    "s/.*\"exit_code\":([0-9]).*/error \\1/' | tr '\\n' ' '";

TEST(Batch, AFailingFileStopsNoOther) {
    makeFiles();
    for (const std::string jobs : {"--jobs 1", "--jobs 3"}) {
        const std::string files = jobs + " 300.csv bad.csv 100.csv missing.csv 200.csv ";
        EXPECT_EQ(run("measure " + files + "2>/dev/null" + phaseVoltages).output, "300 error 3 100 error 3 200 ");
        expectShown({{"rt305 measure " + files + ">/dev/null",
                      "rt305: missing.csv: No such file; 2 of 5 files failed:\n bad.csv\n missing.csv\n", 4}});
    }
    expectShown(
        {{"rt305 measure bad.csv", "rt305: bad.csv", 3}, {"rt305 measure --jobs 2 100.csv 200.csv", "Current"}});
}

TEST(Batch, NamesComeFromAListAndWindowsAreLines) {
    makeFiles();
    expectShown({
        {"printf '%s\\n' 100.csv '' 200.csv | measure --files-from - --window 0.3 --step 100ms" + phaseVoltages,
         "100 100 100 200 200 200"},
        {"rt305 measure --csv --window 0.25s 200.csv | grep -c parameters,current,a", "2\n"},
        {"rt305 measure --csv 100.csv 200.csv | grep -c '^file,start,table,quantity,column,value,unit$'", "1\n"},
        {"rt305 measure --plain - < 200.csv", "stdin\t0\tparameters\tfrequency\ta\t50\tHz\n"},
        // the library keeps the texts of earlier calls
        {"cut -d, -f1-4 100.csv > u.csv; measure u.csv > alone; measure 200.csv u.csv | tail -n 1 | cmp - alone", ""},
        // each name is answered before the next is read
        {"bash -c 'coproc rt305 measure --json-lines --files-from -; for name in 100 200; do echo $name.csv "
         ">&\"${COPROC[1]}\"; read -t 60 -r line <&\"${COPROC[0]}\"; echo \"${line:0:17}\"; done'",
         "{\"file\":\"100.csv\"\n{\"file\":\"200.csv\"\n"},
    });
}

TEST(Batch, TheRecipeForGnuParallelGivesTheSameLines) {
    makeFiles();
    const std::string guide = contentOf(SOURCE_FOLDER "/docs/batch.md");
    const std::size_t from = guide.find("ls *.csv | parallel ");
    ASSERT_NE(from, std::string::npos);
    expectShown({{"rm -f *.csv; for u in 100 200; do generate -o $u.csv; done; HOME=$PWD; export HOME; " +
                      guide.substr(from, guide.find('\n', from) - from) +
                      "; sort results.jsonl > sorted; measure *.csv | sort | cmp - sorted && wc -l sorted",
                  "2 sorted"}});
}

TEST(Batch, ColourIsForTerminalsOnly) {
    expectShown({
        {"TERM=xterm NO_COLOR= script -qec 'rt305 signals $sample' /dev/null", "\033[1m"},
        {"TERM=xterm NO_COLOR=1 script -qec 'rt305 signals $sample' /dev/null", "!\033"},
        {"TERM=dumb script -qec 'rt305 signals $sample' /dev/null", "!\033"},
        {"TERM=xterm rt305 signals $sample", "!\033"},
    });
}

}  // namespace
