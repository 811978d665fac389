// Names, schemas and classes of the result tables, and records that fill them only in part.

#include <gtest/gtest.h>

#include <memory>

#include "adapter/nlohmann/json.h"
#include "calc/channel_kind.h"
#include "results/distortion_tables.h"
#include "results/parameter_tables.h"
#include "results/signal_tables.h"
#include "results/spectrum_tables.h"

namespace {

namespace calc = calc_modul_K9_web_ns;

template <class Table>
std::string described() {
    Table table;
    const std::unique_ptr<MatlabTable> clone(table.clone());
    std::string text = table.getName() + ": ";
    for (const MatlabTable::Column& column : table.getScheme()) {
        text += column.name + ":" + std::to_string(static_cast<int>(column.type)) + " ";
    }
    const MatlabTable& copy = *clone;
    return text + (typeid(copy) == typeid(Table) ? "same" : typeid(copy) == typeid(MatlabTable) ? "plain" : "other");
}

TEST(Schemas, NamesColumnsAndClones) {
    EXPECT_EQ(described<PhaseSignalTable>(),
              "signalData: LastName:1 dataName:6 LastNameX:1 LastNameY:1 paramData:5 plain");
    EXPECT_EQ(described<PhaseSpectrumTable>(), "spectrumData: name:1 dataTnv:6 dataTnvf:6 paramData:5 plain");
    EXPECT_EQ(described<RT305_4_ISpectrumTable>(),
              "spectrumDataI: name:1 dataTnv:6 dataTnvf:6 LastNameX:1 LastNameY:1 paramData:5 plain");
    EXPECT_EQ(described<PhaseDistortionTable>(), "thdData: name:1 dataX:6 dataY:6 LastNameX:1 LastNameY:1 plain");
    EXPECT_EQ(described<PhaseParamTable>(), "paramData: LastName:1 dataName:4 units:1 plain");
    EXPECT_EQ(described<RT305_4_USignalResultTable>(), "paramData: LastName:1 dataName:4 UomName:1 same");
    EXPECT_EQ(described<RT305_4_ISignalResultTable>(), "paramData: LastName:1 dataName:4 UomName:1 same");
    EXPECT_EQ(described<RT305_4_SpectrumMaxTable>(), "paramDataT: fi:4 mag:4 same");
}

template <class Table, class Record>
std::string textOf(const Record& record) {
    Table table;
    table.init(record);
    return compactText(table.toJson());
}

TEST(Results, NonIntegerColumnCountsAreTruncated) {
    calc::coder::c_table distortion;
    distortion.prefill(calc::current);
    distortion.header.variables = 1.9;
    EXPECT_EQ(textOf<RT305_4_IDistortionTable>(distortion),
              R"({"thdDataI":[{"name":"Ia"},{"name":"Ib"},{"name":"Ic"}]})");
}

TEST(Results, MaximaHaveARowForEachFrequency) {
    calc::coder::e_table maxima;
    EXPECT_EQ(textOf<RT305_4_SpectrumMaxTable>(maxima), "null") << "no rows";
    maxima.frequencies.set_size(2);
    maxima.frequencies[0] = maxima.frequencies[1] = 50.0;
    maxima.magnitudes.set_size(1);
    maxima.magnitudes[0] = 10.0;
    EXPECT_EQ(textOf<RT305_4_SpectrumMaxTable>(maxima),
              R"({"paramDataT":[{"fi":50.0,"mag":10.0},{"fi":50.0,"mag":null}]})");
}

}  // namespace
