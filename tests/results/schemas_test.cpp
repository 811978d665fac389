// Schemes, names and classes of the result tables, and records that fill them only in part.

#include <gtest/gtest.h>

#include <memory>

#include "adapter/nlohmann/json.h"
#include "calc/channel_kind.h"
#include "results/rt305_4_i_distortion_table.h"
#include "results/rt305_4_i_signal_result_table.h"
#include "results/rt305_4_i_signal_table.h"
#include "results/rt305_4_i_spectrum_table.h"
#include "results/rt305_4_param_table.h"
#include "results/rt305_4_spectrum_max_table.h"
#include "results/rt305_4_u_distortion_table.h"
#include "results/rt305_4_u_signal_result_table.h"
#include "results/rt305_4_u_signal_table.h"
#include "results/rt305_4_u_spectrum_table.h"

namespace {

namespace records = calc_modul_K9_web_ns::coder;

/// "name: type code" of every column.
std::string schemeOf(const MatlabTable& table) {
    std::string text;
    for (const MatlabTable::Column& column : table.getScheme()) {
        text += column.name + ":" + std::to_string(static_cast<int>(column.type)) + " ";
    }
    return text;
}

/// A table with the class of its clone: its own, or the plain table that has no scheme.
struct Row {
    std::unique_ptr<MatlabTable> table;
    const char* name;
    const char* scheme;
    bool cloneKeepsClass;
};

template <class Table>
Row rowOf(const char* name, const char* scheme, bool cloneKeepsClass = false) {
    return {std::make_unique<Table>(), name, scheme, cloneKeepsClass};
}

TEST(Schemas, NamesColumnsAndClones) {
    const char* const signal = "LastName:1 dataName:6 LastNameX:1 LastNameY:1 paramData:5 ";
    const char* const spectrum = "name:1 dataTnv:6 dataTnvf:6 paramData:5 ";
    const char* const spectrumWithAxes = "name:1 dataTnv:6 dataTnvf:6 LastNameX:1 LastNameY:1 paramData:5 ";
    const char* const result = "LastName:1 dataName:4 UomName:1 ";
    const char* const maxima = "fi:4 mag:4 ";
    const char* const distortion = "name:1 dataX:6 dataY:6 LastNameX:1 LastNameY:1 ";
    const char* const parameters = "LastName:1 dataName:4 units:1 ";
    Row rows[]{
        rowOf<MatlabTable>("table", "", true),
        rowOf<PhaseSignalTable>("signalData", signal),
        rowOf<PhaseSpectrumTable>("spectrumData", spectrum),
        rowOf<PhaseSignalResultTable>("paramData", result, true),
        rowOf<PhaseSpectrumMaxTable>("paramDataT", maxima, true),
        rowOf<PhaseDistortionTable>("thdData", distortion),
        rowOf<PhaseParamTable>("paramData", parameters),
        rowOf<RT305_4_USignalTable>("signalDataU", signal),
        rowOf<RT305_4_ISignalTable>("signalDataI", signal),
        rowOf<RT305_4_USpectrumTable>("spectrumDataU", spectrumWithAxes),
        rowOf<RT305_4_ISpectrumTable>("spectrumDataI", spectrumWithAxes),
        rowOf<RT305_4_UDistortionTable>("thdDataU", distortion),
        rowOf<RT305_4_IDistortionTable>("thdDataI", distortion),
        rowOf<RT305_4_USignalResultTable>("paramData", result, true),
        rowOf<RT305_4_ISignalResultTable>("paramData", result, true),
        rowOf<RT305_4_SpectrumMaxTable>("paramDataT", maxima, true),
        rowOf<RT305_4_ParamTable>("paramData", parameters),
    };
    for (Row& row : rows) {
        EXPECT_EQ(row.table->getName(), row.name);
        EXPECT_EQ(schemeOf(*row.table), row.scheme);
        row.table->resize(2, 2);
        row.table->setCell(1, 1, MatlabCell(7));
        const std::unique_ptr<MatlabTable> clone(row.table->clone());
        const MatlabTable& original = *row.table;
        const MatlabTable& copy = *clone;
        EXPECT_EQ(typeid(copy), row.cloneKeepsClass ? typeid(original) : typeid(MatlabTable)) << row.name;
        EXPECT_EQ(clone->getCell(1, 1, MatlabCell()).toInt(), 7);
    }
}

template <class Table, class Record>
std::string textOf(const Record& record) {
    Table table;
    table.init(record);
    return compactText(table.toJson());
}

records::column columnOf(const std::vector<double>& values) {
    records::column column;
    column.set_size(static_cast<int>(values.size()));
    std::copy(values.begin(), values.end(), column.begin());
    return column;
}

TEST(Results, BrokenColumnCountsAreTruncatedAndCutTheTable) {
    records::d_table parameters;
    parameters.prefill();
    parameters.header.variables = 2.9;
    parameters[records::Parameter::Udbc] = 400.0;
    RT305_4_ParamTable table;
    table.init(parameters);
    EXPECT_EQ(table.getColNum(), 2U);
    EXPECT_EQ(table.getRowNum(), 35U);
    EXPECT_EQ(table.getCell(0, 16, MatlabCell()).toString(), "Udbc");
    EXPECT_EQ(table.getCell(1, 16, MatlabCell()).toDouble(), 400.0);

    records::c_table distortion;
    distortion.prefill(calc_modul_K9_web_ns::current);
    distortion.header.variables = 1.0;
    EXPECT_EQ(textOf<RT305_4_IDistortionTable>(distortion),
              R"({"thdDataI":[{"name":"Ia"},{"name":"Ib"},{"name":"Ic"}]})");
}

TEST(Results, MaximaTakeTheirRowsFromTheFrequencies) {
    records::e_table maxima;
    EXPECT_EQ(textOf<RT305_4_SpectrumMaxTable>(maxima), "null") << "no rows";
    maxima.frequencies = columnOf({1, 2, 3, 4});
    maxima.magnitudes = columnOf({10, 20, 30});
    EXPECT_EQ(textOf<RT305_4_SpectrumMaxTable>(maxima), R"({"paramDataT":[{"fi":1.0,"mag":10.0},{"fi":2.0,"mag":20.0},)"
                                                        R"({"fi":3.0,"mag":30.0},{"fi":4.0,"mag":null}]})");
    maxima.frequencies = columnOf({5});
    EXPECT_EQ(textOf<RT305_4_SpectrumMaxTable>(maxima), R"({"paramDataT":[{"fi":5.0,"mag":10.0}]})");
}

TEST(Results, PrefilledRecordsGiveLabelledRows) {
    records::f_table spectrum;
    spectrum.prefill(calc_modul_K9_web_ns::voltage);
    spectrum.verticalAxis.assignAll("U, V");
    spectrum.maxima[1].frequencies = columnOf({50});
    const auto row = [](const char* name, const char* maxima) {
        return R"({"LastNameX":"Frequency, Hz","LastNameY":"U, V","dataTnv":[],"dataTnvf":[],"name":")" +
               std::string(name) + R"(","paramData":)" + maxima + "}";
    };
    const std::string rows =
        "[" + row("Va", "null") + "," + row("Vb", R"([{"fi":50.0,"mag":null}])") + "," + row("Vc", "null") + "]";
    EXPECT_EQ(textOf<RT305_4_USpectrumTable>(spectrum), R"({"spectrumDataU":)" + rows + "}");
    EXPECT_EQ(textOf<RT305_4_ISpectrumTable>(spectrum), R"({"spectrumDataI":)" + rows + "}");
}

}  // namespace
