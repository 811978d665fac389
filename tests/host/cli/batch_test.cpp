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
    const std::string withoutRights =
        "as='setpriv --bounding-set=-dac_override,-dac_read_search'; $as true 2>&- || as=; $as rt305 ";
    expectShown({
        {"rt305 measure bad.csv", "rt305: bad.csv", 3},
        {"rt305 measure --jobs 2 100.csv 200.csv", "Current"},
        {"mkdir -p closed/b; for name in a b/x c; do cp 100.csv closed/$name.csv; done; chmod 0 closed/b; " +
             withoutRights + "measure --json-lines closed 'closed/*/x.csv' 2>&-" + phaseVoltages,
         "100 error 3 100 error 3 "},
        {withoutRights +
             "measure --output-folder opened closed 2>&-; chmod 755 closed/b; rt305 measure --output-folder "
             "opened --retry-failed; ls opened",
         "a-; c-; x-"},
        {"chmod 0 closed/b; " + withoutRights + "report 100.csv -o closed/b/x.html",
         "rt305: closed/b/x.html: Permission denied", 5},
        {"rm -r closed; rt305 measure $sample > /dev/full", "cannot write to stdout: No space left on device", 5},
    });
}

TEST(Batch, NamesComeFromAListAndWindowsAreLines) {
    makeFiles();
    expectShown({
        {"printf '%s\\n' 100.csv '' 200.csv | measure --files-from - --window 0.3 --step 100ms" + phaseVoltages,
         "100 100 100 200 200 200"},
        {"rt305 measure --csv --window 0.25s 200.csv | grep -c parameters,current,a", "2\n"},
        {"rt305 generate --frequency 49.97 | rt305 measure --json-lines --window 0.2 - | wc -l", "5\n"},
        {"rt305 measure --csv 100.csv 200.csv | grep -c '^file,start,table,quantity,column,value,unit$'", "1\n"},
        {"rt305 measure --plain - < 200.csv", "stdin\t0\tparameters\tfrequency\ta\t50\tHz\n"},
        {"rt305 measure --csv-wide --window 0.25s --jobs 2 100.csv 200.csv | cut -d, -f1-4",
         "file,start,parameters_phase_voltage_a,parameters_phase_voltage_b\n100.csv,0,100.4; 100.csv,0.25,100.4; "
         "200.csv,0.25,"},
        {"rt305 distortion --csv-wide 200.csv | cut -d, -f1-4,15-16 | sed -n 1,2p",
         "file,start,order,Ua_frequency,Ia_percent,Ib_frequency\n200.csv,0,1,50,100,50\n"},
        {"rt305 params --csv-wide 200.csv | cut -d, -f2-3", "start,parameters_phase_voltage_a\n0,200.4"},
        // the library keeps the texts of earlier calls
        {"cut -d, -f1-4 100.csv > u.csv; measure u.csv > alone; measure 200.csv u.csv | tail -n 1 | cmp - alone", ""},
        // each name is answered before the next is read
        {"bash -c 'coproc rt305 measure --json-lines --files-from -; for name in 100 200; do echo $name.csv "
         ">&\"${COPROC[1]}\"; read -t 60 -r line <&\"${COPROC[0]}\"; echo ${line#*file}; done' | cut -c 1-11",
         "\":\"100.csv\"\n\":\"200.csv\"\n"},
    });
}

/// `hang NAMES...` measures in the background: $p is the batch, $c its process, which waits for a pipe named `slow`.
const std::string hang =
    "hang() { rm -f slow; mkfifo slow; env --default-signal=INT rt305 measure --json-lines \"$@\" > out & p=$!; "
    "until c=$(cat /proc/$p/task/$p/children) && [ -n \"$c\" ]; do :; done; }; "
    "left() { for i in 1 2 3 4 5 6 7 8 9; do kill -0 $c || { echo all ended; return; }; sleep 0.5; done; }; ";

TEST(Batch, GivesWholeLinesOrAnErrorForEachFile) {
    makeFiles();
    const std::string listOfBad = "(echo slow; yes bad.csv | head -n 1000) > list; rm -f slow; mkfifo slow; ";
    expectShown({
        {listOfBad + "(sleep 1; cat 100.csv > slow) & ulimit -n 40; measure --jobs 8 --files-from list 2>/dev/null" +
             phaseVoltages + "| sed 's/error 3 /E\\n/g; s/ /\\n/' | uniq -c",
         "1 100\n 1000 E"},
        {hang + "hang slow 200.csv; kill -9 $c; wait $p; echo $?; cat out" + phaseVoltages,
         "slow: the process that measured it was ended by signal 9; 1 of 2 files failed; 4\nerror 5 200"},
        {hang + "hang slow 200.csv; kill -TERM $p; wait $p; echo $?; left", "143\n; all ended"},
        {hang + "hang slow 200.csv; kill -INT $p; wait $p; echo $?; left", "130\n; all ended"},
        {hang + "hang slow 200.csv; kill -KILL $p; wait $p; echo $?; left", "137\n; all ended"},
        // outputs that cannot be kept until they are written
        {"(ulimit -f 1; measure 100.csv 200.csv --jobs 2 2>/dev/null | cat)" + phaseVoltages, "error 5 error 5"},
        {"yes 100.csv | head -n 9999 | rt305 measure --json-lines --files-from - > /dev/full", "No space left", 5},
        {"yes 100.csv | head -n 9999 | rt305 measure --json-lines --window 9ms --files-from - >&-", "Bad file", 5},
        {"bash -c 'yes 100.csv | head -n 9999 | rt305 measure --json-lines --files-from - | head -c 1; exit "
         "${PIPESTATUS[2]}'",
         "{; stdout: Broken pipe", 5},
        {"measure bad.csv 100.csv 2>&-" + phaseVoltages, "error 3 100 "},
        {"measure bad.csv 100.csv 2> /dev/full" + phaseVoltages, "error 3 100 "},
    });
    const std::string onFullDisk =
        "unshare -Urm sh -c 'mount -t tmpfs -o size=64k none /tmp && command -v rt305 && test -f 100.csv && "
        "echo before > /tmp/page && (head -c 99999 /dev/zero > /tmp/rest; true) 2>&- && ";
    if (run(onFullDisk + "true'").exitCode == 0) {
        expectShown({
            {onFullDisk + "rt305 measure --json-lines --jobs 2 100.csv bad.csv 200.csv' 2>&-" + phaseVoltages,
             "100 error 3 200 "},
            {onFullDisk + "rt305 report 100.csv -o /tmp/page; echo $?; cat /tmp/page; ls -A /tmp'",
             "/tmp/page: No space left; \n5\nbefore\npage\nrest\n"},
        });
    }
}

TEST(Batch, AFolderHasACompleteResultForEachRecording) {
    makeFiles();
    const std::string into = "rt305 measure --jobs 2 --output-folder results ";
    const std::string states = "; sed -E 's/.*\"state\":\"([a-z]*).*/\\1/' results/manifest.jsonl | tail -n ";
    expectShown({
        {"mkdir -p in/a/.no in/b; cp 100.csv in/a/x.csv; cp 100.csv in/a/.no; cp 200.csv in/b/x.csv; cp bad.csv in; "
         "cp $data/relay.* in; " +
             into + "in; ls results; ls -A results/.unfinished",
         "rt305: 1 of 4 files failed:\n in/bad.csv\nmanifest.jsonl\nrelay-; \nx-"},
        {"ls results | wc -l; cat results/x-*.jsonl" + phaseVoltages, "4\n; 100; 200"},
        {"grep -ho 'file\":\"[^\"]*' results/*-*.jsonl | sort | uniq -c", " 2 file\":\"x.csv"},
        {"cp results/*-* .; cp -r in moved; cd moved; rt305 measure --output-folder ../results '*/x.csv' 'rela*'; cd "
         ".." +
             states + "3; for file in *-*.jsonl; do cmp $file results/$file; done",
         "skipped\nskipped\nskipped\n"},
        {into + "--force in/a" + states + "1; cmp x-*.jsonl results 2>&-; ls results | wc -l", "done\n; 4\n"},
        {into + "--window 0.1s in/a/x.csv; cat results/*.jsonl | grep -c '\"options\":{\"window\":\"0.1s\"}'", "5\n"},
        {"rt305 quality --output-folder results in/a; cat results/x-*.jsonl | grep -c '\"kind\":\"cycles\"'", "2\n"},
        {"cp 300.csv in/bad.csv; printf '{\"half a li' >> results/manifest.jsonl; " + into + "--retry-failed" + states +
             "1; " + into + "--retry-failed; echo $?",
         "done\n0\n"},
        {"n=$(printf '\xcf\xf0.csv'); cp bad.csv $n; " + into + "$n in; cp 300.csv $n; " + into + "--retry-failed" +
             states + "1; rm $n; ls results",
         "done; %CF%F0-"},
        {"n=x$(yes \u00e9 | head -n 120 | tr -d '\n').csv; cp 100.csv $n; " + into + "$n; ls results | iconv -f utf-8",
         "\u00e9-"},
        {into + "--csv in", "--output-folder takes JSON lines", 2},
        {into + "--retry-failed in", "give no FILE", 2},
        {"rt305 measure --force in", "give --output-folder", 2},
        {"rt305 measure --output-folder 100.csv in", "100.csv: Not a directory", 5},
        {"mkdir none; rt305 measure none", "none: no recordings in this folder", 3},
        {"yes 100.csv | head -n 99 > list; rm -r results; (ulimit -f 1; " + into +
             "--files-from list | wc -l); ls results",
         "rt305: the run ends, as results cannot be written"},
    });
}

TEST(Batch, AFolderIsTheSameAfterAnyInterruption) {
    makeFiles();
    expectShown({
        {"rt305 measure --window 10ms --output-folder whole ?00.csv; for time in 05 1 15 2 3 4 5; do "
         "timeout -s KILL 0.$time rt305 measure --jobs 2 --window 10ms --output-folder cut ?00.csv 2>&-; ls cut/*-* "
         "2>&- | xargs -r -n 1 sh -c 'cmp whole/${0#cut/} $0'; done; rt305 measure --window 10ms --output-folder cut "
         "?00.csv; rm cut/manifest.jsonl whole/manifest.jsonl; diff -r whole cut && echo same; cat cut/*-* | wc -l",
         "same\n150"},
    });
}

TEST(Batch, AListThatCannotBeReadIsAnError) {
    makeFiles();
    expectShown({
        {"printf '100.csv\r\n\r\n200.csv\r\n' | measure --files-from -" + phaseVoltages, "100 200 "},
        {"rt305 measure --files-from .", ".: Is a directory", 3},
        {"rt305 measure --files-from - < .", "stdin: Is a directory", 3},
        {"rt305 measure --files-from - <&-", "stdin: Bad file descriptor", 3},
        {"(echo 100.csv; head -c 9999 /dev/zero | tr '\\0' x) > list; rt305 measure --files-from list",
         "100.400 100.400 V; list: line 2 is too long for the name of a file", 3},
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
