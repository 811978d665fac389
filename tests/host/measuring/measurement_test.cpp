#include "tool.h"

namespace {

TEST(Measure, PowerByEveryMethodInFourAndThreeWires) {
    expectShown({
        {"generate --angle 60 | measure -",
         "power/P = 1725 1725 1725 1725; power/Q = 2987.79 2987.79 2987.79 2987.79; power/Sb = 1150 1150; "
         "parameters/line_voltage/b = 398.372; derived/PF/total = 0.5; derived/current_lag = 60 60 60"},
        {"generate --angle -45 | measure -", "power/Q = -2439.52 2439.52 -2439.52 2439.52"},
        // line voltages lead the phase voltages by 30 degrees
        {"generate --voltage 398.37168574 --angle 60 | measure --wiring three -",
         "power/P = 2987.79 2987.79 2987.79 2987.79; power/Q = 1725 1725 1725 1725 ~ 0.5; "
         "parameters/phase_voltage = 230 230 230; parameters/line_voltage/b = 398.372; derived/voltage_unbalance_u0 = "
         "-"},
        {"generate --voltage 398.37168574 --angle 60 | sed '1s/U./U_&/; 1s/U_Ua/Uab/; 1s/Ub/Ubc/; 1s/Uc/Uca/' | "
         "cut -d, -f1-3,5- > v.csv; measure v.csv",  // two line voltages, by their names
         "\"Uab\" and \"Ubc\" are line voltages; three-wire; Uca is formed; power/P/three_wattmeter_complex = 2987.79; "
         "power/Q/two_wattmeter = 1725; parameters/phase_voltage/a = 230; parameters/line_voltage/c = 398.372"},
        {"rt305 params --power two-wattmeter --json-lines v.csv", "cb; parameters/active_power/total = 2987.79"},
        {"rt305 info v.csv", "Uab V; Uab by its name; Ubc by its name"},
        {"measure --wiring four v.csv", "Ua and Ub not used; no column for Uc"},
        {"generate | sed '1s/Ic/In/' | measure --two-currents c -", "that are not used: ; In"},
        // Uab and Ucb, then Uac and Ubc, named Ua and Uc, Ua and Ub
        {"generate --voltage 398.37168574 --angle 60 > l.csv; awk -F, '{print $1 \",\" $2 \",\" (NR > 1 ? -$3 : "
         "\"Uc\") "
         "\",\" $5 \",\" $6 \",\" $7}' l.csv | measure -",
         "60 degrees apart; ab and cb; power/P/three_wattmeter = 2987.79; power/Q/two_wattmeter = 1725"},
        {"awk -F, '{print $1 \",\" (NR > 1 ? -$4 : \"Ua\") \",\" (NR > 1 ? $3 : \"Ub\") \",\" $5 \",\" $6 \",\" $7}' "
         "l.csv | measure -",
         "ac and bc; power/P/three_wattmeter = 2987.79; parameters/phase_voltage = 230 230 230"},
        {"generate --frequency 59.9 | measure -", "power/P/two_wattmeter = 3450 ~ 1; derived/frequency/a = 59.9"},
        {"generate | measure --coefficients 2,2,2,10,10,10 -",
         "power/P/two_wattmeter = 69000; parameters/current/c = 50"},
    });
}

TEST(Measure, HarmonicsUnbalanceAndCurrents) {
    const std::string odd = "generate --current 230 --angle 20 --factors Ub=0.9 | measure --map Ua=Ia";
    const std::string unbalance =
        "derived/voltage_unbalance_u2/total = 14.99; derived/voltage_unbalance_u0/total = 8.9373";
    expectShown({
        {"generate --harmonic-u 3:8 --harmonic-u 5:15 --harmonic-u 7:5 --angle 60 | measure -",
         "parameters/thd_voltage/c = 17.72 ~ 0.01; derived/PF/a = 0.49233; "
         "highest_harmonics/0 = 5 15 ~ 0.01; highest_harmonics/4/percent = 8 ~ 0.01; \"channel\":\"Uc\",\"order\":3,; "
         "!\"Ia\",\"order"},
        {"generate --harmonic-u 3:5 --harmonic-u 38:30 | cut -d, -f1-4 | measure -",
         "signals/rms/Ub = 240.405 ~ 0.05; highest_harmonics/0 = 38 30 ~ 0.01; parameters/thd_voltage/b = "
         "30.4138; !current; !power"},
        {"generate --frequency 49.7 --duration 0.317 --angle 30 --harmonic-u 3:20:40 --offsets Ua=10 | measure -",
         "derived/current_lag = 30 30 30 ~ 0.05; derived/frequency/b = 49.7; derived/voltage_unbalance_u2 = 0 ~ "
         "0.1"},
        {odd + " -", unbalance + "; derived/voltage_lag/b = 100"},
        {odd + ",Ub=Uc,Uc=Ub -", unbalance},
        // a resistor between a and b: the example of IEEE Std 1459, 3.2.2.8
        {"generate --voltage 127 --current 22.73 --angle -30 --factors Ic=0 | "
         "measure --map Ib=Ia --coefficients Ib=-1 -",
         "derived/S_vector/total = 5000 ~ 1; derived/S_arithmetic/total = 5773.4 ~ 1; "
         "derived/S_effective/total = 7070.9 ~ 1; derived/PF/total = 0.7071 ~ 0.0001"},
        {"generate --frequency 50.13 --offsets Ia=2 | measure --duration 10.4cycles -",
         "10 whole cycles of 50.1300 Hz; derived/U = 230 230 230; derived/I/a = 5; derived/frequency/total = 50.13"},
        {"generate --dropout Ia:4000:2000 > dropout.csv; measure dropout.csv",
         "not steady: the fundamental of Ia; not shown for Ua; !unbalance; !voltage_lag; derived/P1/a = 920; "
         "derived/frequency = 50 - - -; longest steady part, 0.000-0.400 s; parameters/frequency = - - -"},
        {"generate --offsets Ua=3 | awk -F, 'BEGIN {OFS = FS} NR > 4000 && NR < 4421 {$4 *= 0.5; $7 *= 9} NR > 4420 "
         "{$5 = $6 = $7 = 0} 1' > fault.csv; measure --part fault fault.csv",
         "steady for 2.; 2 whole cycles; derived/I/c = 45 ~ 0.1; derived/U/c = 115 ~ 0.1; not judged in a fault; "
         "derived/Q1/c = 0 ~ 5; derived/frequency/a = -; 2.0 cycles are too few"},
        {"generate | rt305 measure --part fault -", "no fault to tell from it", 3},
        {"generate --duration 0.018 --angle 60 | measure -",
         "less than one cycle; derived/frequency = - - -; derived/P1/a = 575; not shown: this is less; !unbalance; "
         "Wiring: not judged"},
        {"generate | cut -d, -f1-4 > u.csv; generate --noise 900 | cut -d, -f5-7 | paste -d, u.csv - | measure -",
         "for Ia, Ib and Ic: there is hardly a steady fundamental; parameters/thd_voltage/a = 0; Wiring: nothing odd; "
         "derived/current_lag = - - -; !I0"},
        {"rt305 distortion dropout.csv", "not steady: the fundamental of Ia; can be wrong"},
        {"generate --dropout Ua:1000:9000 | sed '1s/U./U_&/; 1s/U_Ua/Uab/; 1s/Ub/Ubc/; 1s/Uc/Uca/' | rt305 distortion "
         "-",
         "the fundamental of Uab; not shown for Uab: there is"},
        {"rt305 spectrum dropout.csv", "not steady: the fundamental of Ia; all 10000 samples, 50.00 cycles"},
        {"measure --part pre-fault dropout.csv", "derived/I/a = 5; 20 whole cycles"},
        {"measure --start 0.1 dropout.csv", "at about 0.4; steady are 0.100-0.4; longest steady part, 0.6"},
        {"measure --start 0.37 --part pre-fault fault.csv",
         "first change is steady for 1.; from 0.3700 s to 0.3900 s; derived/I/c = 5 ~ 0.01; derived/U/c = 230"},
        {"rt305 measure --start 0.39 --part pre-fault fault.csv", "what comes before is too short"},
        {"generate --rate 1000 --noise 450 | cut -d, -f1-4 > n.csv; generate --rate 1000 --dropout Ia:400:200 | "
         "cut -d, -f5-7 | paste -d, n.csv - | measure -",
         "not steady: the fundamental of Ia"},
        {"generate --duration 0.04 | awk -F, 'BEGIN {OFS = FS} NR > 201 {$2 *= .5; $3 *= .5; $4 *= .5; $5 *= 3} 1' | "
         "measure -",
         "fundamental of Ua changes by -50 % in magnitude at about 0.0; no part; !unbalance"},
        {"measure n.csv", "!not steady; hardly a steady fundamental"},
        {"measure --part longest-steady dropout.csv", "nothing odd; measured/samples = 4000 ~ 150"},
        {"generate --factors Ic=0 | measure -",
         "derived/sum_of_currents/total = 5; derived/current_unbalance_i0/total = 50; derived/current_lag = 0 0 -"},
        {"generate --angle 30 | cut -d, -f1-4,6,7 | measure --two-currents a -",
         "derived/sum_of_currents/total = 0; derived/current_lag/a = 30"},
    });
}

TEST(Measure, ChannelsDecideWhatIsMeasured) {
    expectShown({
        {"generate | cut -d, -f1-4 | signals -", R"("voltages","; !not used)"},
        {"generate | cut -d, -f1,5-7 | signals -", R"("currents",)"},
        {"generate | cut -d, -f1-5,7 | signals -", R"("voltages and currents",; -(Ia + Ic); signals_i/rms = 5 5 5)"},
        {"generate | cut -d, -f1-4,6 | signals -", R"("voltages","; Ib not used; Ia and Ic"])"},
        {"generate | cut -d, -f1-5,7 | signals --two-currents b -", R"("voltages and currents",)"},
        {"generate | cut -d, -f1-6 | signals --two-currents b -", R"("voltages","; not used)"},
        {"generate | cut -d, -f1,3-7 | signals -", R"("currents","; Ub and Uc not used)"},
        {"generate | cut -d, -f1,3-6 | rt305 signals -", "Ua and Ic", 3},
        {"generate | cut -d, -f1-4 | rt305 params --type all -", "Ia, Ib and Ic", 3},
        {"generate | cut -d, -f2- | rt305 signals -", "--rate", 3},
        {"generate | sed '1s/V/kV/g; 1s/A/mA/g' | signals -", "signals_u/rms/Ua = 230000; signals_i/rms/Ib = 0.005"},
    });
}

TEST(Measure, APartOfASegment) {
    expectShown({
        {"printf '%s\n' t,Ua,Ub,Uc 0,5,0,0 1,5,0,0 2,5,0,0 20,1,0,0 21,3,0,0 22,7,0,0 23,15,0,0 > two.csv; signals "
         "--start 1 --duration 2 two.csv",  // the longer segment
         "segment 2 of 2; measured/samples = 2; measured/start = 1; signals_u/rms/Ua = 2"},
        {"signals --segment 1 two.csv", "measured/samples = 3; !segment 1; signals_u/rms/Ua = 0"},
        {"rt305 signals --segment 3 two.csv", "segment 3", 3},
        {"rt305 signals --segment 2 --start 2 --duration 3 two.csv", "the part from 2 s", 3},
        {"rt305 signals --segment 2 --start 4 two.csv", "the part from 4 s", 3},
        {"generate --frequency 60 | rt305 measure --start 0.3 --duration 12ms -", "a cycle at 60 Hz", 3},
        {"generate --rate 2000 | sed '621,629s/,[^,]*/,/' | signals --start 0.305 --duration 0.02 -",
         "9 samples of Ua are missing, the first at 0.3095 s; signals_u/rms/Ua = -; signals_u/rms/Ub = 230"},
        {"generate | sed '2000,2200s/,[^,]*/,/' | measure -",
         "derived/P = - - 1150 1150; derived/U1/total = -; derived/voltage_offset/a = -; Ua: samples are missing"},
        {"generate --harmonic-u 5:4 --offsets Ua=2,Ib=-0.2 | sed '100,107s/,[^,]*/,/; 300s/,[^,]*/,/' | measure -",
         "interpolated: 9 of Ua; parameters/thd_voltage = 4 4 4 ~ 0.01; derived/voltage_offset/a = 2 ~ 0.001; "
         "derived/current_offset/b = -0.2"},
        {"generate --harmonic-u 5:4 > long.csv; figures='sed -e s/start.*content// -e s/derived.*//'; measure --start "
         "0.4 --duration "
         "0.3 long.csv | $figures > part; measure --window 0.3 --step 0.2 long.csv | sed -n 3p | $figures | cmp - part",
         ""},
    });
}

/// One phase alone has the figures of a phase of the same load, and no others.
TEST(Measure, OnePhase) {
    expectShown({
        {"generate --angle 60 --harmonic-u 5:10 | cut -d, -f1,3,6 | measure -",
         "Ub is shown as Ua; voltage and current of one phase; parameters/phase_voltage = 231.147; power/P = 575 575; "
         "power/Pa = 575 575; derived/PF = 0.49752 0.49752; derived/current_lag = 60; parameters/thd_voltage "
         "= 10; !unbalance; !line_voltage; !two_wattmeter; !Wiring; !Ub\""},
        {"printf 't,U (V),I (A)\n0,1,2\n1,-1,2\n2,1,-2\n3,-1,-2\n' | signals -",
         "signals_u/rms = 1; signals_i/rms = 2"},
        {"generate | cut -d, -f1,6 | params --wiring three --two-currents a -",
         "\"current of one phase\"; parameters/current = 5; parameters/frequency = 50; !total"},
        {"generate | cut -d, -f1,6 | rt305 spectrum --json-lines --coefficients Ib=3 -", "spectrum/0 = 50 21.2132"},
        {"generate | cut -d, -f1,2,5 | params --power two-wattmeter-phase -", "two wattmeters need three phases"},
        {"generate | cut -d, -f1-3 | measure -", "Uc, Ia", 3},
    });
}

/// A cycle has 200 samples whatever its length, and frequencies are true ones.
TEST(Measure, GridsOfAnyFrequency) {
    const std::string distorted =
        " --angle 30 --harmonic-u 3:8:-70 --harmonic-u 5:15:141 --harmonic-u 7:5:-34 --harmonic-i 3:20:-165 "
        "--harmonic-i 5:15:234 --harmonic-i 7:10:234 --voltage 100 --current 100 --digits 9 | measure -";
    // IEEE Std 1459-2010, annex B: by phase
    const std::string figures =
        "power/Pa = 8632.7886 8632.7886; power/Sb/three_wattmeter = 10517.4926; power/Qc/three_wattmeter_complex = "
        "4984.669; parameters/thd_voltage = 17.72 17.72 17.72 ~ 1e-4; parameters/thd_current/c = 26.9258; "
        "measured/samples = ";
    expectShown({
        {"generate --frequency 16.7 --duration 0.8982" + distorted, figures + "2994; 16.53-16.8 Hz"},
        {"generate --frequency 50 --duration 0.3 --rate 1000" + distorted, figures + "3000"},
        {"generate --frequency 60.01 --duration 0.33328 --rate 50000" + distorted, figures + "3999; 59.52-60.48 Hz"},
        {"generate --frequency 65 --duration 0.30769" + distorted, figures + "3692; 12-72 Hz"},
        {"generate --frequency 33 --duration 0.60606" + distorted, figures + "4000; 32.74-33.26 Hz"},
        {"generate --frequency 400 --duration 0.05" + distorted, figures + "4000; derived/frequency/b = 400"},
        {"generate --frequency 57 | measure --nominal 50 -",
         "measured/samples = 10000; 10-60 Hz; parameters/frequency/b = 57; 57.00 Hz is far from the nominal 50 Hz"},
        {"generate --frequency 60 | rt305 spectrum --json-lines --peaks 3 -",
         "spectrum/0 = 60 325.269; spectrum/3 = 60 7.0711; spectrum/6/frequency = -"},
        {"generate --frequency 60 | rt305 spectrum --raw - 2>&1 >/dev/null", "0.833333333 times"},
    });
}

TEST(Measure, ResamplesUnlessToldOtherwise) {
    expectShown({
        {"generate --rate 4000 --harmonic-u 5:3 | params --power three-wattmeter-complex -",
         "resampled from 4000 Hz; 1820 Hz; parameters/phase_voltage/a = 230.103; parameters/thd_voltage/b = 3 ~ 0.001; "
         "parameters/active_power/total = 3450"},
        {"generate --rate 1000 --frequency 50.1 | rt305 distortion --json-lines -",
         "harmonics/8/level = -120 ~ 60; harmonics/9/level = -; harmonics/9/frequency = -"},
        {"generate --rate 10000.5 | rt305 params -", "!resampled"},
        {"generate --duration 0.3 --rate 8000 | cut -d, -f1-4 | signals -", "measured/samples = 2400; !resampled"},
        {"generate --rate 50000 --frequency 60 | params --no-resample -",
         "measured/samples = 50000; fundamental inside 50-300 Hz; parameters/frequency/a = 60"},
    });
}

/// Two lines and 9.6 cycles.
TEST(Measure, SpectraHaveLinesAndNoSideLobes) {
    for (const std::string window : {"rect", "hann", "hamming", "kaiser"}) {
        expectShown(
            {{"generate --frequency 48 --voltage 100 --harmonic-u 9:20 --duration 0.2 | cut -d, -f1,3 | "
              "rt305 spectrum --nominal 50 --json-lines - --window " +
                  window,
              "spectrum/0 = 48 141.42 ~ 1.5; spectrum/1 = 432 28.3 ~ 1; spectrum/2/frequency = -"}});
    }
}

TEST(Measure, OptionsReachTheLibrary) {
    expectShown({
        {"generate --angle -30 | cut -d, -f1-5,7 | params --power three-wattmeter-complex --two-currents b --invert-p "
         "-",
         "parameters/current/b = 5; parameters/active_power = -2987.79 995.93 995.93 995.93; "
         "parameters/reactive_power/total = -1725"},
        {"generate --frequency 59.9 --duration 10 | params --frequency control --coefficients Ub=2 --map "
         "Ia=Ib,Ib=Ic,Ic=4 -",
         "12-72 Hz; parameters/frequency/c = 59.88; parameters/phase_voltage/b = 460"},
        {"generate --current 10 --harmonic-u 3:5 --harmonic-i 40:10 --voltage 100 | rt305 spectrum --json-lines "
         "--window hann --db --mode 2 --criterion -30 -",
         "spectrum/1/frequency = 150; spectrum/3/level = -26.02 ~ 0.01; spectrum/7/frequency = 2000; "
         "spectrum/11/level = -20 ~ 0.01"},
        {"generate --voltage 400 --factors Ub=0.5 | params --wiring three -",
         "parameters/phase_voltage/a = 230.94; parameters/line_voltage/b = 200"},
        {"generate --voltage 398.37168574 --angle 60 | rt305 params --wiring three --power two-wattmeter -",
         "Zero-sequence voltage - V; Active power P 2987.79 - - - W; Reactive power Q 1725.00 - - - var"},
        // 230 * 0.0049417429956896556 / (1 + (19.53125 * 8 + 35) / 1000), 1 ohm: as recorded
        {"generate --current 1e6 | rt305 params --source real --gains Ua=8,Ia=0,Ib=0,Ic=0 --resistances "
         "Ub=1,Uc=1,Ia=24.9,Ib=127 -",
         "Phase voltage 0.954 230.000 230.000 V; Current 191.75 37.60 4774.63 A"},
    });
}

}  // namespace
