#include "tool.h"

namespace {

TEST(Remarks, NameWiringFaults) {
    const char* const fine = "Wiring: nothing odd; !Wiring: U; !Wiring: I";
    expectShown({
        {"generate --angle 60 | measure -", fine},
        {"generate --angle 30 --factors Ub=0.9,Ib=1.8,Ic=0.2 | measure -", fine},
        {"generate --angle 30 --factors Ib=-1 | measure -", "Wiring: Ib ; !Wiring: U; !nothing odd"},
        {"generate --angle 30 --factors Uc=-1 | measure -", "Wiring: Uc ; !Wiring: I"},
        {"generate --angle 30 --factors Ua=-1,Ia=-1 | measure -", "Wiring: Ua ; Wiring: Ia "},
        {"generate --angle 30 | measure --map Ia=Ic,Ic=Ia -", "Wiring: Ic and Ia ; !Wiring: U"},
        {"generate --angle 200 | measure -", "Wiring: All currents"},
        {"generate --angle 30 | measure --map Ub=Uc,Uc=Ub,Ib=Ic,Ic=Ib -", "a-c-b; !Wiring: I; !Wiring: U"},
        {"generate --angle 30 | measure --map Ub=Uc,Uc=Ub -", "a-c-b; Wiring: Ub and Uc, or Ib and Ic "},
        {"generate --angle 30 --factors Ib=-1 | measure --map Ia=Ib,Ib=Ia -", "Wiring: The angles; !Wiring: I"},
        {"generate --angle 30 | measure --map Ub=Ua,Uc=Ua -", "Wiring: The voltages; !Wiring: I"},
        {"generate --factors Uc=1.7320508 | measure -", "Uc is 1.73 times"},
        {"generate --factors Ua=0.96 | awk -F, 'BEGIN {OFS = FS} NR > 1 {$4 = -$2 - $3} 1' | measure -",
         "add up to zero; --wiring three"},
        {"generate --angle 30 --factors Uc=0.005,Ib=-1 | measure -", "not judged, because Uc"},
        {"generate --angle 30 --factors Ib=-1,Ic=0.005 | measure -", fine},
        {"generate --angle 30 --factors Ua=0 | measure -", "not judged; derived/current_lag = - 30 30"},
        {"generate | sed '100,120s/,[^,]*/,/' | measure -", "21 samples of Ua; not judged"},
        {"generate | cut -d, -f1-4 | measure -", "Wiring: phase order a-b-c"},
        {"generate --voltage 398.37 --factors Ic=0.5 | measure --wiring three -", "three wires; 50 %"},
    });
}

TEST(Remarks, SayWhyValuesAreMissing) {
    expectShown({
        {"generate --angle 30 | rt305 params --power three-wattmeter-complex -", "!No power:; !not given"},
        {"generate | rt305 params -", "--power was not given; THD of voltage"},
        {"generate --frequency 50.96 | params --power two-wattmeter-phase --frequency fixed -",
         "of the voltages not given; of the currents not given; 50.96 Hz, lies outside 49.6-50.4 Hz; "
         "try --frequency control; No power: it needs THD; parameters/frequency/a = -; parameters/active_power = -"},
        {"generate --frequency 60 | params --nominal 50 -", "60.00 Hz, lies at a limit of 10-60 Hz; try --nominal 60"},
        {"generate --frequency 400 | measure --nominal 60Hz -",
         "400.00 Hz, lies outside 59.52-60.48 Hz; try --nominal 400"},
        {"generate --factors Ib=0 | params --power two-wattmeter-phase -",
         "THD of the currents not given: Ib is dead (0 A); No power: ; !voltages not given"},
        {"generate --angle 30 | params --power two-wattmeter-phase -", "No power per phase; magnitudes"},
        {"generate | params --power three-wattmeter --wiring three -", "with line voltages; without a sign"},
        {"generate --duration 0.2 | params --power three-wattmeter-complex -", "12.5 cycles; has 10.0"},
        {"generate --duration 0.26 | params -", "!12.5 cycles"},
        {"generate --duration 0.2 | cut -d, -f1-4 | measure -", "12.5 cycles"},
        {"generate --duration 0.2 | rt305 distortion -", "has 10.0"},
        {"generate | cut -d, -f1-4 | params --power two-wattmeter-phase -", "needs voltages and currents"},
        // the library judges phase c by the fundamental of b
        {"generate > grid.csv; generate --frequency 50.9 | cut -d, -f3 | paste -d, grid.csv - | params --map Ub=7 "
         "--power two-wattmeter-phase --frequency fixed -",
         "frequency of Uc not given: the fundamental of Ub, 50.90 Hz; try --frequency control"},
        {"generate --frequency 75 | cut -d, -f3 | paste -d, grid.csv - | params --map Ub=7 -",
         "58.33 Hz, lies outside 49.6-50.4 Hz; !try"},
    });
}

TEST(Results, MissingFiguresInEachForm) {
    expectShown({
        {"generate --factors Ub=0 | cut -d, -f1-4 > u.csv; rt305 params --plain u.csv", "\tthd_voltage\ta\t\t"},
        {"rt305 params --csv u.csv", "file,start,; u.csv,0,parameters,frequency,a,,"},
        {"cp u.csv 'a,\"b\".csv'; rt305 signals --csv 'a,\"b\".csv'",
         R"("a,""b"".csv",0,signals_u,peak_to_peak,Ua,650.538,V)"},
        {"rt305 params u.csv", "Frequency - - -"},
        {"rt305 distortion u.csv", "1 50.00 47.23 100.000 - - - 50.00; Ub is dead"},
        {"generate --factors Ub=0 | cut -d, -f1-4 | rt305 distortion --json-lines -",
         R"("channel":"Ub","order":1,"frequency":null,"level":null)"},
    });
}

}  // namespace
