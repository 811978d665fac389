#include "tool.h"

namespace {

TEST(RecordingReader, FindsTheSameLoadInEveryRecording) {
    struct Case {
        const char* arguments;
        double voltageFactor = 1.0;
        double currentFactor = 1.0;
        std::string warnings = R"("warnings":[])";
    };
    const Case cases[] = {
        {"--sqrt2 $data/relay.cfg"},
        {"$data/relay.dat", std::sqrt(0.5), std::sqrt(0.5), "IA, IB and IC; --sqrt2"},
        {"--no-deskew --encoding windows-1251 $data/swing.CFG", 1, 1,
         "swing.DAT; 312; 311; Ia_\xD1\x88\xD0\xB8\xD0\xBD\xD0\xB0; 2 groups of currents; 65 us apart"},
        {"$data/segments.dat"},
        {"--primary --segment 1 $data/segments.cfg", 1100, 120},
        {"--secondary --segment 3 $data/segments.cfg"},
        {"--primary $data/single.cff"},
        {"--gain 'hv ir=2,5=2,6=2' $data/single.cff", 1, 2},
        {"- < $data/single.cff"},
        {"packed.dat.gz"},
        {"elsewhere/segments.cfg --dat packed.dat.gz"},
        {"wide.cfg"},
        {"$data/logger.csv", 1, 1, "logger.csv:56: ; 0.5"},
        {"--columns Ua,Ub,Uc,Ia,Ib,Ic --gain Ua=100,Ub=100,Uc=100,Ia=2,Ib=2,Ic=2 $data/sound.wav"},
        {"$data/sound.wav", 0.01, 0.5, "relative to full scale; Ua, Ub, Uc, Ia, Ib, Ic"},
    };
    expectShown(
        {{"cp $data/segments.cfg packed.cfg; gzip < $data/segments.dat > packed.dat.gz; "
          "mkdir -p elsewhere; cp $data/segments.cfg elsewhere; cp $data/segments.dat wide.dat; "
          "(printf '\\377\\376'; iconv -t UTF-16LE $data/segments.cfg) > wide.cfg",
          ""}});
    for (const Case& c : cases) {
        const auto three = [](double x) {
            return std::to_string(x) + " " + std::to_string(x) + " " + std::to_string(x);
        };
        expectShown({{"measure " + std::string(c.arguments),
                      c.warnings + "; derived/current_lag = 30 30 30; parameters/phase_voltage = " +
                          three(57.726 * c.voltageFactor) + "; parameters/current = " + three(1.2 * c.currentFactor)}});
    }
}

TEST(RecordingReader, SaysWhatAFileHoldsAndWhatIsWrongWithIt) {
    expectShown({
        {"rt305 info $data/logger.csv",
         "Format CSV; 2 51 560; measured by default; 0.524935 0.499925; -1694.73 1694.73; 2 Ia by"},
        // its channels are stated to be taken 13 us after each other, 39 us from voltage to current
        {"measure --encoding windows-1251 $data/swing.CFG",
         "derived/current_lag = 30.702 30.702 30.702; 65 us apart; corrected; --no-deskew"},
        {"rt305 info $data/segments.dat", "secondary 600:5 Ic; 128; 3200 0; 6 50 0.04"},
        {"rt305 info - < $data/single.cff", "COMTRADE, FLOAT32"},
        {"printf 't,Ua,Ub,Uc,note\n0,1,2,3,ok\n1,4,2,3,ok\n' | rt305 info -", "1 Ua 1.00000 4.00000; \"note\""},
        {"rt305 info nothing.csv", "nothing.csv: No such file", 3},
        {"rt305 info /tmp", "/tmp: Is a directory", 3},
        {"printf 's,r,1999\n1,1A,0D\n' | tee lonely.cfg > named.txt; rt305 info lonely.cfg", "lonely.cfg: ; lonely.dat",
         3},
        {"rt305 info named.txt", "named.txt: ; named.dat", 3},
        {"printf '123\\0' > alone.dat; rt305 info alone.dat", "alone.dat: byte 3: ; .cfg", 3},
        {"printf '\\376\\377\\0U\\0a\\0,\\0U\\0b\\0\\n\\0001\\0,\\0002\\0\\n' | rt305 info -", "1 Ua 1.00000"},
        {"printf 'Ua,I\\242\n1,2\n' | gzip | rt305 info -", "not UTF-8; --encoding; 1 Ua"},
        {"printf 'Ua,I\\242\n1,2\n' | rt305 info --encoding cp866 -", "!not UTF-8; I\xD0\xB2"},
        {"printf '1\n' | gzip | head -c 20 > cut.gz; rt305 info cut.gz", "cut.gz: ; incomplete", 3},
        {"printf '1\n' | gzip | sed 's/1/2/' > bad.gz; head -c 70000000 /dev/zero | gzip -1 > bomb.gz; "
         "rt305 info bomb.gz",
         "bomb.gz: ; 64 MiB", 3},
        {"rt305 info --dat none.dat $data/segments.cfg", "none.dat: No such file", 3},
        {"rt305 info --dat none.dat $data/logger.csv", "--dat", 2},
        {"rt305 measure --dat a.dat 1.cfg 2.cfg", "--dat", 2},
        {"printf RIFF1234 > damaged.wav; rt305 info damaged.wav", "damaged.wav: ", 3},
        {"rt305 info --encoding nonsense $data/swing.DAT", "\"nonsense\"", 2},
    });
}

TEST(RecordingReader, MakesEveryTextValid) {
    expectShown({
        {"printf 't,I\\242\n0,1\n1,2\n' > old.csv; rt305 info old.csv", "1 I\xEF\xBF\xBD 1.0"},
        {"rt305 info --encoding cp866 old.csv", "1 I\xD0\xB2 1.0"},
        {"printf 't,\\304\\270\\317\\337\n0,1\n1,2\n' | rt305 info --encoding GB18030 -",
         "1 \xE6\xAF\x8D\xE7\xBA\xBF 1.0"},
        {"printf 't,\\360\\237\\230\\200\n0,1\n1,2\n' | rt305 info --encoding cp866 -", "1 \xF0\x9F\x98\x80 1.0"},
        {"printf 't,\\300\\200\\355\\240\\200\\365 \\342\\204\n0,1\n1,2\n' | rt305 info -",
         "1 \xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD \xEF\xBF\xBD\xEF\xBF\xBD 1.0"},
    });
}

}  // namespace
