#include <sndfile.h>

#include "tool.h"

namespace {

/// `rows` makes a recording of that many rows with a time step.
const std::string makers =
    "rows() { seq \"$1\" | awk -v step=\"$2\" 'BEGIN { print \"t(s),Ua,Ub,Uc,Ia,Ib,Ic\" } { a = $1; "
    "print $1 * step \",\" sin(a) \",\" sin(a + 2) \",\" sin(a + 4) \",\" cos(a) \",\" cos(a + 2) \",\" cos(a + 4) }'; "
    "}; exec </dev/null; ";

/// Runs with 100 MB of memory and 10 s of processor time.
std::string bounded(const std::string& command) {
    return makers + "export OMP_NUM_THREADS=1; ulimit -v 100000; ulimit -t 10; " + command;
}

TEST(Limits, TimeAndMemoryDependOnTheBytesOfAFile) {
    const std::string configuration =
        "printf "
        "'s,r,1999\\n3,3A,0D\\n1,Ua,,,V,1,0,0,0,9\\n2,Ub,,,V,1,0,0,0,9\\n3,Uc,,,V,1,0,0,0,9\\n50\\n1\\n%s,"
        "2\\n\\n\\nASCII\\n%s\\n' ";
    Shown rows[] = {
        {"rows 20000 1 | rt305 measure -", "1 Hz is too low; needs 125 Hz; rt305 signals", 3},
        {"rows 20000 1 | rt305 signals -", "20000 samples at 1 Hz; !warning"},
        {"rows 1000 0.01 | rt305 report --nominal 50 -", "100 Hz is too low", 3},
        {"rows 1000 1e-9 | rt305 measure -", "too short to be measured", 3},
        {"rows 1000 1e-300 | rt305 info -", "column \"t\", is 1e+300 Hz; 1 GHz", 3},
        {"rows 1000 1e15 | rt305 info -", "column \"t\", is 1e-15 Hz", 3},
        {"rows 9 1e-3 | rt305 info --rate 1e25 -", "--rate", 2},
        {"rows 9 1e-3 | rt305 info --rate nan -", "--rate", 2},
        {"generate --rate inf", "--rate", 2},
        {"(echo sample interval,1e-320; echo 1,2; echo 3,5) | rt305 info -", "lines above the rows, is inf Hz", 3},
        {configuration + "1e300 1 > a.cfg; printf '1,0,1,2,3\\n2,1,1,2,3\\n' > a.dat; rt305 info a.cfg", "is 1e+300 Hz",
         3},
        {configuration + "0 1e300 > a.cfg; rt305 info a.dat", "from the time stamps, is 1e-294 Hz", 3},
        {"seq 2000000 | tr '\\n' , | rt305 info -", "stdin:1: ; at most 10000", 3},
        {"(seq 999 | sed 's/$/,a,b,c,d,e/'; echo 1,2,3,4,5,6) | rt305 info -", "999"},
        {"rt305 info /dev/zero", "is a device", 3},
        {"yes 1,2,3 | rt305 info -", "out of memory", 5},
        {"mkfifo f.dat; cp a.cfg f.cfg; rt305 info f.cfg", "f.dat: is not a regular file", 3},
        {"truncate -s 3G hole.csv; rt305 info hole.csv", "2147483648 bytes", 3},
        {"rows 30000 0.008 | rt305 measure --nominal 50 -", "each sample becomes 80; choose 66 s or less with --start",
         3},
        {"rows 30000 0.008 | rt305 measure --nominal 50 --duration 20s -", "Current"},
        {"rows 2000 0.0025 | rt305 params --json-lines -", "400 Hz to 12000 Hz"},
        {"rows 4000 0.0025 > slow.csv; for v in $(seq 20000 14000 96000); do (ulimit -v $v; rt305 measure slow.csv "
         ">out 2>&1; echo $?); done | sort -u | tr '\\n' ' '; (ulimit -v 35000; rows 20000 0.0025 | rt305 measure -)",
         "0 5 ; !139; !134; out of memory", 5},
        {"(echo 'Ua,Ub,Uc'; printf '1,2,3\\n%01001d,3,4\\n5,6,7\\n') | rt305 info -",
         "stdin:3: column \"Ua\": \"0000; is not a number", 3},
        {"(head -c 1000000 /dev/zero | tr '\\0' U; printf ',Ub\\n1,2\\n3,4\\n') | rt305 info --rate 9 - | wc -c | "
         "sed 's/^1...$/short/'",
         "short"},
    };
    for (Shown& row : rows) {
        row.command = bounded(row.command);
        expectShown({row});
    }
}

TEST(Limits, SoundExpandsToALimit) {
    SF_INFO info{0, 10000, 8, SF_FORMAT_FLAC | SF_FORMAT_PCM_16, 0, 0};
    SNDFILE* const file = sf_open((workFolder() + "/silence.flac").c_str(), SFM_WRITE, &info);
    const std::vector<short> silence(8 * 10000);
    for (int second = 0; second < 300; ++second) {
        sf_writef_short(file, silence.data(), 10000);
    }
    sf_close(file);
    expectShown({{bounded("rt305 info silence.flac"), "too many for its size", 3}});
}

}  // namespace
