// Cells and tables. Operations on cells and rows, and text against value, are compared with a model in fuzz/table.cpp.

#include "table/mlab_table.h"

#include <gtest/gtest.h>

#include <limits>
#include <new>

#include "adapter/nlohmann/json.h"
#include "extras/mlab_param_table.h"
#include "support/signals.h"

namespace {

using Type = MatlabCell::CellDataType;

class Schemed : public MatlabTable {
public:
    explicit Schemed(Scheme scheme, std::uint64_t rows = 0) : scheme_(std::move(scheme)) {
        resize(scheme_.size(), rows);
    }
    Schemed(const Schemed& other) : MatlabTable(other), scheme_(other.scheme_) {}
    Scheme getScheme() const override { return scheme_; }
    std::string getName() const override { return "N"; }
    MatlabTable* clone() const override { return new Schemed(*this); }

private:
    Scheme scheme_;
};

/// The document of a table; its two forms agree byte for byte.
std::string document(const MatlabTable& table) {
    std::string text = compactText(table.toJson());
    EXPECT_EQ(table.toJsonText(), text);
    return text;
}

std::string printed(const std::function<void()>& print) {
    testing::internal::CaptureStdout();
    print();
    return testing::internal::GetCapturedStdout();
}

TEST(MatlabCell, KeepsTypeValueAndText) {
    const struct {
        MatlabCell cell;
        Type type;
        const char* text;
        const char* json;
    } cases[]{
        {MatlabCell(), Type::none, "", R"("")"},
        {MatlabCell(std::string("\xC0\xC1\xF1\xE9x\n\x7F~\"")), Type::text, "\xC0\xC1\xF1\xE9x\n\x7F~\"",
         R"("ABc x  ~\"")"},
        {MatlabCell(~0UL), Type::unsignedInteger, "18446744073709551615", "18446744073709551615"},
        {MatlabCell(std::numeric_limits<long>::min()), Type::signedInteger, "-9223372036854775808",
         "-9223372036854775808"},
        {MatlabCell(-1), Type::signedInteger, "-1", "-1"},
        {MatlabCell(50.0), Type::floating, "5.0000000000e+01", "50.0"},
        {MatlabCell(0.5F), Type::floating, "5.0000000000e-01", "0.5"},
        {MatlabCell(std::nan("")), Type::floating, "nan", "null"},
        {MatlabCell(MatlabTable(2, 3)), Type::table, "[2x3 table]", nullptr},
        {MatlabCell(std::vector<double>{1.0, -HUGE_VAL, 5e-324}), Type::floatingVector, "[1x3 double]",
         "[1.0,null,5e-324]"},
        {MatlabCell(std::vector<float>{0.5F}), Type::floatingVector, "[1x1 double]", "[0.5]"},
        {MatlabCell(std::vector<signed char>{-1, 1}), Type::signedVector, "[1x2 int64]", "[-1,1]"},
        {MatlabCell(std::vector<unsigned char>{255}), Type::unsignedVector, "[1x1 uint64]", "[255]"},
        {MatlabCell(std::vector<unsigned>{}), Type::unsignedVector, "[1x0 uint64]", "[]"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        bool ok = false;
        EXPECT_EQ(c.cell.getDataType(), c.type);
        EXPECT_EQ(c.cell.toString(&ok), c.text);
        EXPECT_TRUE(ok == (c.type != Type::none) && c.cell.isValid() == ok);
        const auto readsAs = [&](Type type, bool isEmpty) { return ok == (c.type == type) && (ok || isEmpty); };
        EXPECT_TRUE(readsAs(Type::signedInteger, c.cell.toInt(&ok) == 0));
        EXPECT_TRUE(readsAs(Type::unsignedInteger, c.cell.toUInt(&ok) == 0));
        EXPECT_TRUE(readsAs(Type::floating, c.cell.toDouble(&ok) == 0.0));
        EXPECT_TRUE(readsAs(Type::table, c.cell.toMatlabTable(&ok) == nullptr));
        EXPECT_TRUE(readsAs(Type::floatingVector, c.cell.toDoubleVector(&ok).empty()));
        EXPECT_TRUE(readsAs(Type::signedVector, c.cell.toIntVector(&ok).empty()));
        EXPECT_TRUE(readsAs(Type::unsignedVector, c.cell.toUIntVector(&ok).empty()));
        Schemed table({{"v", c.type}}, 1);
        table.setCell(0, 0, c.cell);
        EXPECT_TRUE(c.json == nullptr || document(table) == R"({"N":[{"v":)" + std::string(c.json) + "}]}")
            << document(table);
    }
}

TEST(MatlabCell, CountsIdsAndLiveCells) {
    const std::int64_t ids = MatlabCell::cellCounter;
    const std::int64_t live = MatlabCell::objectsCounter;
    {
        const MatlabCell source(MatlabTable(1, 1));
        EXPECT_EQ(source.getCellId(), ids + 3) << "the nested table's cell and its clone were made first";
        const std::int64_t before = MatlabCell::cellCounter;
        const MatlabCell copy(source);
        EXPECT_EQ(copy.getCellId(), source.getCellId());
        EXPECT_EQ(MatlabCell::cellCounter, before + 2) << "one id for the copy, one for its own table's cell";
        MatlabCell assigned(1);
        assigned = MatlabCell(2.5);
        EXPECT_EQ(MatlabCell::cellCounter, before + 4) << "assignment itself takes no id";
        assigned = source;
        EXPECT_EQ(assigned.getCellId(), source.getCellId());
        EXPECT_NE(assigned.toMatlabTable(), source.toMatlabTable());
        assigned.toMatlabTable()->setCell(0, 0, MatlabCell(7));
        assigned = *assigned.toMatlabTable()->findCell(0, 0);
        EXPECT_EQ(assigned.toInt(), 7) << "the source is destroyed with the table that the cell owned";
        const MatlabCell taken(std::move(assigned));
        EXPECT_EQ(assigned.toString() + taken.toString(), "7");  // NOLINT: a cell that was moved from is defined
    }
    EXPECT_EQ(MatlabCell::objectsCounter, live) << "every cell was destroyed";
}

TEST(MatlabTable, SizesBoundsAndNames) {
    MatlabTable table(3, 0);
    EXPECT_EQ(table.getColNum(), 3U) << "a table without cells keeps the counts it is given";
    EXPECT_THROW(table.resize(std::uint64_t{1} << 40, std::uint64_t{1} << 40), std::bad_array_new_length);
    EXPECT_EQ(table.getColNum() + MatlabTable(table).getColNum(), 3U) << "a copy without rows has no columns";
    EXPECT_EQ(MatlabTable(static_cast<const MatlabTable*>(nullptr)).getColNum(), 0U);
    table.resize(2, 3);
    table.setCell(1, 2, MatlabCell(21));
    EXPECT_EQ(table.getCell(1, 2, MatlabCell()).toInt(), 21) << "the column comes first";
    EXPECT_EQ(table.getCell(2, 0, MatlabCell(-1)).toInt() + table.getCell(0, 3, MatlabCell(-1)).toInt(), -2);
    table.setColumnName(0, "given");
    table.setColumnName(1U << 20U, "beyond the last column");
    EXPECT_EQ(table.getColumnName(0), "") << "names come from the scheme alone";
    MatlabParamTable named(1, 4);
    named.setCell(0, 0, MatlabCell(50.0));
    named.setCell(0, 1, MatlabCell(std::string()));
    named.setCell(0, 3, MatlabCell(-7));
    EXPECT_EQ(named.getParamNames(), (std::vector<std::string>{"5.0000000000e+01", "", "-7"}));
    named.removeRow(static_cast<const char*>(nullptr));
    named.thinningRows(nullptr, 1);
    EXPECT_EQ(named.getRowNum(), 4U);
}

TEST(MatlabTable, PrintsAlignedLines) {
    Schemed table({{"name", Type::text}, {"x", Type::signedInteger}});
    EXPECT_EQ(table.getColumnWidth(0, 3), 3) << "without cells nothing is added";
    EXPECT_EQ(printed([&] { table.printTable(4), MatlabTable(1, 1).printTable(4); }),
              "Table is empty\nTable is empty\n");
    table.resize(1, 2);
    table.setCell(0, 0, MatlabCell(std::string("Ua")));
    EXPECT_EQ(printed([&] { table.printTable(3); }), "ID  name x   \n-------------\n1   Ua       \n2            \n");
    const auto id = [&](std::uint64_t row) { return std::to_string(table.findCell(0, row)->getCellId()); };
    EXPECT_EQ(printed([&] { table.printCellIds(); }),
              "---------\nCell id = " + id(0) + " true Ua\nCell id = " + id(1) + " false \n---------\n");
    table.setCell(0, 1, MatlabCell(1234567));
    EXPECT_EQ(table.getColumnWidth(0, 3) + 100 * table.getColumnWidth(0, 9), 8 + 100 * 10);
}

TEST(TableJson, HasTheDocumentedShape) {
    Schemed nested({{"d", Type::signedInteger}}, 1);
    nested.setCell(0, 0, MatlabCell(1));
    Schemed table({{"c2", Type::table}, {"c1", Type::floating}});
    EXPECT_EQ(document(table), "null") << "a scheme without rows";
    EXPECT_EQ(document(MatlabTable()), R"("{}")");
    table.resize(2, 1);
    table.setCell(0, 0, MatlabCell(nested));
    table.setCell(1, 0, MatlabCell(50.0));
    EXPECT_EQ(document(table), R"({"N":[{"c1":50.0,"c2":[{"d":1}]}]})") << "keys sorted, nested unnamed";
    EXPECT_EQ(compactText(table.getJsonValue(0, 0)), R"({"N":[{"d":1}]})") << "a cell alone shows a document";
    EXPECT_EQ(compactText(table.getJsonValue(0, 1)), R"("")");
    table.setCell(0, 0, MatlabCell(MatlabTable()));
    EXPECT_EQ(document(table), R"({"N":[{"c1":50.0,"c2":"{}"}]})");
    EXPECT_EQ(document(MatlabTable(8, 1)),
              R"({"table":[{"":"","column":"","lumn":"","mn":"","n":"","olumn":"","umn":""}]})")
        << "columns without a name get one literal, cut at its front";
    Schemed twice({{"b", Type::signedInteger}, {"a", Type::signedInteger}, {"b", Type::signedInteger}}, 1);
    twice.setCell(2, 0, MatlabCell(2));
    EXPECT_EQ(document(twice), R"({"N":[{"a":"","b":2}]})") << "of columns with one name the last counts";
    const Schemed invalid({{"\xFF", Type::signedInteger}}, 1);
    EXPECT_THROW(compactText(invalid.toJson()), nlohmann::json::type_error);
    EXPECT_THROW(invalid.toJsonText(), nlohmann::json::type_error);
}

/// Rows equal to the last or last but one are copied; equal in number but not in bytes, or in a part, is not enough.
TEST(TableJson, RepeatedRowsAreWrittenLikeAllOthers) {
    const std::vector<double> row = signals::noise(1000);
    std::vector<double> almost = row;
    almost.back() += 1.0;
    Schemed table({{"a", Type::floatingVector}, {"b", Type::floatingVector}}, 6);
    std::uint64_t place = 0;
    for (const auto& values : {row, {HUGE_VAL, -0.0}, row, almost, row, {}, {}, {0.0}, {-0.0}, {0.0, 0.0}, row, row}) {
        table.setCell(place % 2, place / 2, MatlabCell(values));
        ++place;
    }
    EXPECT_EQ(nlohmann::json::parse(document(table))["N"][1]["b"].get<std::vector<double>>(), almost);
}

}  // namespace
