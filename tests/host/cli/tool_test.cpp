#include "tool.h"

#include <sstream>

namespace {

TEST(Tool, TheReadmeMakesTheSampleRecording) {
    const std::string readme = contentOf(SOURCE_FOLDER "/examples/recordings/README.md");
    const std::size_t start = readme.find("rt305 generate ");
    const std::size_t target = readme.find("-o ", start);
    ASSERT_NE(target, std::string::npos);
    const ToolRun made = run(readme.substr(start, target - start));
    EXPECT_EQ(made.exitCode, 0);
    EXPECT_TRUE(made.output == contentOf(SOURCE_FOLDER "/examples/recordings/sample.csv")) << "other bytes";
}

std::vector<std::string> linesOf(const std::string& text) {
    std::istringstream stream(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

/// Whether the output has the lines in order; "..." stands for any lines.
bool isShownBy(const std::vector<std::string>& output, const std::vector<std::string>& shown) {
    auto next = output.begin();
    for (std::size_t i = 0; i < shown.size(); ++i) {
        const bool follows = i == 0 || shown[i - 1] != "...";
        next = follows || shown[i] == "..." ? next : std::find(next, output.end(), shown[i]);
        if (shown[i] != "..." && (next == output.end() || *next++ != shown[i])) {
            return false;
        }
    }
    return shown.back() == "..." || next == output.end();
}

TEST(Tool, TheReadmeShowsWhatTheCommandsPrint) {
    const auto lines = linesOf(contentOf(SOURCE_FOLDER "/README.md"));
    std::size_t blocks = 0;
    for (auto line = std::find(lines.begin(), lines.end(), "```console"); line != lines.end();
         line = std::find(line, lines.end(), "```console")) {
        const auto end = std::find(line, lines.end(), "```");
        ASSERT_GT(end - line, 2);
        std::string command = (line + 1)->substr(2);
        command = command == "make demo" ? "scripts/demo " BUILD_FOLDER : command;
        const ToolRun result = run("exec 2>/dev/null; cd " SOURCE_FOLDER "; " + command);
        EXPECT_EQ(result.exitCode, 0) << command;
        EXPECT_TRUE(isShownBy(linesOf(result.output), {line + 2, end})) << command << "\n" << result.output;
        line = end;
        ++blocks;
    }
    EXPECT_GE(blocks, 6U);
}

TEST(Tool, RefusesWrongOptions) {
    expectShown({
        {"rt305", "no command is given; see rt305 help", 2},
        {"rt305 mesure $sample", "\"mesure\"; did you mean measure?", 2},
        {"rt305 nothing", "\"nothing\"; see rt305 help", 2},
        {"rt305 help mesure", "did you mean measure?", 2},
        {"rt305 measure --jsno $sample", "no option --jsno; did you mean --json?", 2},
        {"rt305 info a b", "\"b\" is one argument too many", 2},
        {"rt305 measure --duration 0 $sample", "--duration: \"0\"", 2},
        {"rt305 params --rate 10q $sample", "--rate: \"10q\" is not a frequency; from 1 to 1000000000 Hz", 2},
        {"rt305 generate --noise -1", "--noise: \"-1\" is not a number of at least 0", 2},
        {"rt305 convert $sample", "needs -o FILE", 2},
        {"rt305 convert $sample -o out.mat", "out.mat: the extension", 2},
        {"rt305 convert $sample --only Ux -o o.csv", "Ux", 3},
        {"rt305 convert $sample --rate 9999.5 -o o.wav", "9999.5 Hz; give --resample", 2},
        {"rt305 convert $sample --resample 1GHz -o o.csv", "frequency", 2},
        {"rt305 convert $sample --resample 900MHz -o o.csv", "100 million", 3},
        {"echo nomnal = 60 > bad.toml; rt305 info --settings bad.toml $sample",
         "bad.toml: there is no setting \"nomnal\"; did you mean nominal?", 3},
        {"echo library = \\\"./evil.so\\\" > bad.toml; rt305 info --settings bad.toml $sample",
         "no setting \"library\"", 3},
        {"echo 'nominal = \"x\"' > bad.toml; rt305 measure --settings bad.toml $sample", "bad.toml: --nominal: \"x\"",
         3},
        {"rt305 info --settings none.toml $sample", "none.toml: No such file", 3},
        {"rt305 params", "FILE", 2},
        {"rt305 params --power five-wattmeter $sample", "five-wattmeter", 2},
        {"rt305 params --rate 0 $sample", "--rate", 2},
        {"rt305 params --gains 1,2 $sample", "\"1,2\"", 2},
        {"rt305 params --gains 1,2,3,4,5,x $sample", "\"1,2,3,4,5,x\"", 2},
        {"rt305 params --gains Ud=1 $sample", "\"Ud=1\"", 2},
        {"rt305 params --gains Ua=1,2 $sample", "\"Ua=1,2\"", 2},
        {"rt305 params --map Ua $sample", "--map: \"Ua\"", 2},
        {"rt305 params --map Ua= $sample", "--map: \"Ua=\"", 2},
        {"rt305 params --map Ux=1 $sample", "--map: \"Ux=1\"", 2},
        {"rt305 info --gain 1 $sample", "--gain: \"1\"", 2},
        {"rt305 info --primary --secondary $sample", "--primary", 2},
        {"rt305 params --json --csv $sample", "--json", 2},
        {"rt305 params --power two-wattmeter $sample", "--wiring three", 2},
        {"rt305 spectrum --peaks 20.5 $sample", "--peaks", 2},
        {"rt305 spectrum --window flattop $sample", "flattop", 2},
        {"rt305 generate --dropout Ia:1", "\"Ia:1\"", 2},
        {"rt305 generate --harmonic-u 3", "\"3\"", 2},
        {"rt305 generate --duration 1e9", "100 million", 2},
        {"rt305 generate --frequency nan", "--frequency: \"nan\" is not a frequency", 2},
        {"rt305 spectrum --criterion inf $sample", "--criterion: \"inf\" is not a number", 2},
        {"rt305 measure", "FILE", 2},
        {"rt305 measure --window 0.2 --json $sample", "--json-lines", 2},
        {"rt305 measure --step 0.1 $sample", "--window", 2},
        {"rt305 measure --window 0.2 --step 1e-300 $sample", "less than one sample apart: give a longer --step", 2},
        {"rt305 measure --window 200mA $sample", "\"200mA\"", 2},
        {"rt305 measure --window 0 $sample", "--window: \"0\" is no length", 2},
        {"rt305 measure --map Ua=Ua,Ua=Ub $sample", "--map: Ua is given twice", 2},
        {"rt305 info --gain Ua=1,Ua=2 $sample", "--gain: \"Ua\" is given twice", 2},
        {"rt305 info --encoding nonsense $sample", "--encoding: \"nonsense\"", 2},
        {"rt305 info --json=no $sample", "--json takes no value", 2},
        {"rt305 quality --dip 120 --swell 110 $sample", "a dip ends at 122 %; a swell already at 108 %", 2},
        {"rt305 quality --interruption 95 $sample", "an interruption begins at 95 %; above a dip at 90 %", 2},
        {"rt305 measure - --files-from -", "stdin", 2},
    });
}

TEST(Tool, AnalysesPowerQuality) {
    const std::string limits = SOURCE_FOLDER "/examples/limits/en50160-low-voltage.csv";
    expectShown({
        {"generate --duration 2 --dropout Ua:10000:1000 -o dip.csv; rt305 quality --limits " + limits + " dip.csv",
         "dip 1.0000 0.1000 Ua 0.00 0.0; 9 intervals, 2 of them flagged; EN 50160 low voltage; plt 1 95 - 0 not "
         "measured; "
         "frequency -1 1 99.5 - 0 all intervals are flagged; needs 7 days; what it has, 2 s; flicker needs "
         "more than 10 s"},
        {"measure dip.csv", "There was an event: dip of Ua to 0.0 % for 0.100 s at 1.000 s. rt305 quality lists"},
        {"generate --frequency 50.7 --duration 1.005 --dropout Ua:9650:400 -o end.csv; rt305 measure end.csv",
         "There was an event: dip of Ua to 0.0 % for 0.0"},
        {"generate --dropout Ua:0:10000 -o dead-a.csv; rt305 quality dead-a.csv",
         "declared 230.00 V; voltages differ by more than 10 %: Ua 0 V, Ub 230 V; !swell"},
        {"rt305 quality --json-lines --interval 3s --dip 50 --declared 400V dip.csv",
         "\"event\":\"dip\"; \"percent\":0.0; !\"event\":\"swell\""},
        {"rt305 quality --csv --interval half-cycle dip.csv | head -2",
         "file,kind,start,duration,flagged,partial,frequency,rocof,Ua,Ub,Uc,Ia,Ib,Ic; dip.csv,half_cycle,"},
        {"rt305 quality --json-lines dip.csv missing.csv dip.csv", "\"exit_code\":3; 1 of 3 files failed", 4},
        {"rt305 quality --json dip.csv dip.csv", "--json-lines writes one", 2},
        {"rt305 quality --declared 0 dip.csv", "--declared: \"0\" is neither auto nor a voltage", 2},
        {"rt305 quality --raw dip.csv", "--raw", 2},
        {"rt305 quality --declared 400 --limits " + limits + " $sample",
         "4 intervals, 4 of them flagged because an event touches them; voltage -10 10 95 - 0 all intervals are "
         "flagged"},
        {"generate --rate 10k --dropout Ua:4000:6000 --dropout Ub:4000:6000 --dropout Uc:4000:6000 -o out.csv; rt305 "
         "quality "
         "--csv out.csv | cut -d, -f7,17 | tr '\\n' ' '",
         "frequency,PFa 50,1 50,0.9746794 , , "},
        {"generate --duration 0.16 -o short.csv; rt305 quality short.csv",
         "\n\n0.16 s are shorter than an interval of 10 cycles"},
        {"generate --rate 500 -o slow.csv; rt305 quality slow.csv", "500 Hz is too low to follow; needs 600 Hz", 3},
        {"generate --duration 0.05 -o short.csv; rt305 quality short.csv", "0.05 s are too short; 3 cycles", 3},
        {"generate --voltage 0 -o dead.csv; rt305 quality dead.csv", "voltages are dead or have gaps; --declared V", 3},
        {"rt305 quality --limits missing.csv dip.csv", "missing.csv: No such file", 3},
        {"echo 'volts,95,1,2' > l.csv; rt305 quality --limits l.csv dip.csv", "l.csv:1: \"volts\" is not one of; plt",
         3},
        {"echo 'voltage,95,x,2' > l.csv; rt305 quality --limits l.csv dip.csv", "l.csv:1: \"x\" is not a number", 3},
        {"echo 'voltage,195,,2' > l.csv; rt305 quality --limits l.csv dip.csv", "l.csv:1: \"195\" is not a percentage",
         3},
        {"echo '# none' > l.csv; rt305 quality --limits l.csv dip.csv", "l.csv: there are no limits", 3},
    });
}

TEST(Tool, TheExamplesOfTheHelpRun) {
    expectShown({
        {"rt305 help | awk '{ if (length > 100) print \"too long\" }'", "!too long"},
        {"cp $sample recording.csv; cp $data/relay.cfg fault.cfg; cp $data/relay.dat fault.dat; rt305 help > all; for "
         "c in "
         "$(sed -n '/^Commands:/,/^$/s/^  \\([a-z]*\\) .*/\\1/p' all); do rt305 help $c >> all; done; sed -n 's/^  "
         "rt305/rt305/p' "
         "all | grep -v longest-steady > run; bash -e run > out 2> err || cat err",
         "!rt305:"},
    });
}

TEST(Tool, SettingsComeFromAFile) {
    const std::string folder =
        "mkdir -p site; cp $sample site/a.csv; printf 'nominal = 60 # Hz\\nsqrt2 = true\\nprimary = false\\n[map]\\nUa "
        "= "
        "\"Ub\"\\nUb = \"Ua\"\\n' > site/.rt305.toml; ";
    expectShown({
        {folder + "rt305 measure --json-lines --settings auto site/a.csv",
         "note: settings of site/.rt305.toml: nominal, sqrt2 and map; recording/nominal = 60; "
         "parameters/phase_voltage/a = "
         "325.594"},
        {"rt305 measure --json-lines --nominal 50 --map Ua=Ua --settings site/.rt305.toml site/a.csv",
         "settings of site/.rt305.toml: sqrt2; recording/nominal = 50"},
        {"cd site; rt305 info --settings auto - < a.csv", "settings of .rt305.toml: sqrt2 and map"},
        {folder + "rt305 measure --settings auto site", "settings of site/.rt305.toml"},
        {"rt305 measure --settings auto site/a.csv ./site/../a.csv", "in several: name a file", 2},
        {"rt305 info --settings auto $sample", "!settings"},
    });
}

TEST(Tool, ExitCodesAndOutput) {
    expectShown({
        {"rt305 --help", "params"},
        {"rt305 --version", "rt305 1."},
        {"generate --rate 4.8kHz --duration 100ms | rt305 info -", "Rate 4800 Hz"},
        {"rt305 params --help", "--two-currents"},
        {"rt305 params --map Ua=nothing $sample", "\"nothing\"", 3},
        {"rt305 measure --window 1.5s $sample", "sample.csv", 3},
        {"rt305 measure --files-from nothing.txt", "nothing.txt", 3},
        {"rt305 params --library /nonexistent.so $sample", "/nonexistent.so", 5},
        {"rt305 params --library " IDLE_LIBRARY " $sample", "rt305: ", 5},
        {"rt305 check $(ldd $(command -v rt305) | grep -o '/.*libc.so.6')", "getVersion", 5},
        {"rt305 check " IDLE_LIBRARY, "!pass ; 0 of ", 1},
        {"rt305 generate --duration 0.01 --angle -30 --offsets Ua=-1", "Time(s),Ua(V)"},
        {"rt305 generate --duration 0.001 --dropout Ia:2:3 --digits 3 | cut -d, -f5", "0.22\n0.00\n0.00\n0.00\n1.11"},
        {"printf 't(s),x=y(V),Ub,Uc\n0,1,1,1\n1,-1,-1,-1\n' | rt305 signals --json-lines --map Ua=1 --gain x=y=7 -",
         "signals_u/rms/Ua = 7"},
        {"generate --rate 4800 --duration 0.1 | rt305 info -", "Rate 4800 Hz; !warning"},
        {"generate --rate 1 --duration 99 | rt305 info -", "1 Hz; !warning"},
        {"rt305 info --json $data/swing.CFG", "\"trigger\": \"2016-08-22T16:04:23.5\""},
        {"rt305 info --json $data/relay.cfg", "\"start\": \"2011-02-12T11:41:11.081315\""},
        {"(echo 't,Ua'; for i in 1 2 3; do echo 24.02.2020 18:15:2$i.50,$i; done) | rt305 info -",
         "Start 2020-02-24T18:15:21.5"},
        {"rt305 params --raw $sample", R"({"paramData":[)"},
        {"rt305 signals --raw $sample", R"({"signalDataU":[; {"signalDataI":[)"},
        {"rt305 spectrum --raw $sample", R"({"spectrumDataU":[)"},
        {"rt305 distortion --raw $sample", R"({"thdDataU":[)"},
    });
}

TEST(Tool, AnOutputReplacesItsFileWhenComplete) {
    const std::string hasEnded = "cat page; ls -A | grep rt305- || echo no rest";
    expectShown({
        {"generate -o in.csv; ln in.csv hard.csv; ln -s in.csv soft.csv; cp in.csv kept; for o in in.csv hard.csv "
         "soft.csv; do rt305 report in.csv -o $o; echo $?; rt305 report - -o $o < in.csv; echo $?; done | tr -d '\n'; "
         "cmp in.csv kept",
         "222222; would be lost"},
        {"cp $data/relay.* .; rt305 report relay.cfg -o relay.dat", "relay.dat", 2},
        {"echo before > page; (ulimit -f 100; rt305 report $sample -o page); " + hasEnded,
         "page: File too large; before; no rest"},
        {"rt305 generate --duration 999 -o page & until ls -A | grep -q rt305-; do :; done; kill $!; wait; " + hasEnded,
         "before; no rest"},
        {"ln -s new link; chmod 640 page; generate -o page; generate -o link; stat -c %a:%F page link new; " + hasEnded,
         "640:regular file\n777:symbolic link\n644:regular file\n; no rest"},
        {"rt305 generate -o /dev/full", "/dev/full: No space left", 5},
        {"rt305 generate -o nowhere/file", "No such file", 5},
    });
}

TEST(Tool, StandardStreamsThatFailAreErrors) {
    expectShown({
        {"rt305 params $sample > /dev/full", "stdout: No space left", 5},
        {"rt305 params $sample >&-", "stdout: Bad file", 5},
        {"rt305 --help > /dev/full", "stdout: No space left", 5},
        {"bash -c 'rt305 params $sample | true; exit ${PIPESTATUS[0]}'", "stdout: Broken pipe", 5},
        {"params --rate 9000 $sample 2>&- | sed 's/^{.*}$/whole/'", "whole\n; !warning"},
    });
}

TEST(Tool, TextsOfAFileCommandNoReader) {
    const std::string named =
        "name=$(printf '=a\\033[31m,\\tb.csv'); (printf 't(s),Ua\\033[2J\\302\\233(V),Ub,Uc\\n'; "
        "sed 1d $sample | cut -d, -f1-4) > \"$name\"; ";
    expectShown({
        {named + "rt305 info \"$name\"", R"(=a\x1B[31m,\tb.csv; Ua\x1B[2J\x9B)"},
        {named + "rt305 signals \"$name\"", R"(=a\x1B[31m,\tb.csv; !)"
                                            "\033"},
        {named + "rt305 signals --plain \"$name\"", R"(=a\x1B[31m,\tb.csv)"
                                                    "\t0\tsignals_u"},
        {named + "rt305 signals --csv \"$name\"", R"("'=a\x1B[31m,\tb.csv",0,signals_u)"},
        {named + "rt305 params --map Ua=9 \"$name\"", R"(rt305: =a\x1B[31m,\tb.csv: ; has "Ua\x1B[2J\x9B")", 3},
        {"touch \"$(printf 'a\\nrt305: b')\"; rt305 info a*b", "rt305: a\n rt305: b: found", 3},
        {"rt305 params --map Ua=$(head -c 99999 /dev/zero | tr '\\0' x) $sample 2>&1 | wc -c | sed 's/^...$/short/'",
         "short"},
        {"rt305 report - < $sample | grep -c $(sha256sum < $sample | cut -c 1-64)", "1"},
        {"rt305 report $data/relay.cfg > page; for f in cfg dat hdr; "
         "do grep -c $(sha256sum < $data/relay.$f | cut -c 1-64) page; done",
         "1\n1\n1\n"},
        {"rt305 params - <&-", "stdin: Bad file descriptor", 3},
    });
}

TEST(Tool, TakesTheLibraryFromTheOptionTheEnvironmentOrNearby) {
    expectShown({
        {"export RT305_4_LIBRARY=none.so; rt305 params $sample", "none.so", 5},
        {"export RT305_4_LIBRARY=none.so; rt305 params --library " LIBRARY " $sample", "Current"},
        {"unset RT305_4_LIBRARY; mkdir bin lib; cp " TOOL_FOLDER "/rt305 bin; cp " LIBRARY
         " lib/libRT305_4.so.1; bin/rt305 params $sample",
         "Current"},
    });
}

}  // namespace
