#include "table/mlab_table.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <new>

#include "adapter/nlohmann/json.h"

namespace {

using Type = MatlabCell::CellDataType;

MatlabCell text(const std::string& value) {
    return MatlabCell(value);
}

class Schemed : public MatlabTable {
public:
    explicit Schemed(Scheme scheme) : scheme_(std::move(scheme)) {}
    Scheme getScheme() const override { return scheme_; }
    std::string getName() const override { return "N"; }
    MatlabTable* clone() const override {
        auto* copy = new Schemed(scheme_);
        copy->resize(getColNum(), getRowNum());
        for (std::uint64_t row = 0; row < getRowNum(); ++row) {
            for (std::uint64_t col = 0; col < getColNum(); ++col) {
                copy->setCell(col, row, getCell(col, row, MatlabCell()));
            }
        }
        return copy;
    }

private:
    Scheme scheme_;
};

/// Cell (col, row) holds 10 * row + col.
void fillGrid(MatlabTable& table, std::uint64_t cols, std::uint64_t rows) {
    table.resize(cols, rows);
    for (std::uint64_t row = 0; row < rows; ++row) {
        for (std::uint64_t col = 0; col < cols; ++col) {
            table.setCell(col, row, MatlabCell(10 * row + col));
        }
    }
}

/// The document of a table; its two forms agree byte for byte.
std::string document(const MatlabTable& table) {
    std::string text = compactText(table.toJson());
    EXPECT_EQ(table.toJsonText(), text);
    return text;
}

std::string grid(const MatlabTable& table) {
    std::string result = std::to_string(table.getColNum()) + "x" + std::to_string(table.getRowNum()) + ":";
    for (std::uint64_t row = 0; row < table.getRowNum(); ++row) {
        for (std::uint64_t col = 0; col < table.getColNum(); ++col) {
            result += " " + table.getCell(col, row, MatlabCell()).toString();
        }
    }
    return result;
}

TEST(MatlabTable, ResizeKeepsTheOverlap) {
    struct Case {
        std::uint64_t cols, rows;
        std::string expected;
    };
    const std::vector<Case> cases{
        {2, 3, "2x3: 0 1 10 11 20 21"},
        {3, 2, "3x2: 0 1  10 11 "},
        {1, 1, "1x1: 0"},
        {2, 2, "2x2: 0 1 10 11"},
        {0, 2, "0x0:"},
        {2, 0, "0x0:"},
    };
    for (const Case& c : cases) {
        MatlabTable table;
        fillGrid(table, 2, 3);
        table.resize(c.cols, c.rows);
        EXPECT_EQ(grid(table), c.expected);
    }
    MatlabTable fresh(3, 0);
    EXPECT_EQ(grid(fresh), "3x0:") << "a table without cells keeps the counts it is given";
    EXPECT_THROW(fresh.resize(std::uint64_t{1} << 40, std::uint64_t{1} << 40), std::bad_array_new_length);
    EXPECT_EQ(grid(fresh), "3x0:");
}

TEST(MatlabTable, CellsAreReadColumnFirstAndCheckedForBounds) {
    MatlabTable table;
    fillGrid(table, 2, 3);
    EXPECT_EQ(table.getCell(1, 2, MatlabCell()).toUInt(), 21U);
    EXPECT_EQ(table.getCell(2, 0, text("none")).toString(), "none");
    EXPECT_EQ(table.getCell(0, 3, text("none")).toString(), "none");
    table.setCell(2, 0, text("lost"));
    table.setCell(0, 3, text("lost"));
    EXPECT_EQ(grid(table), "2x3: 0 1 10 11 20 21");
}

TEST(MatlabTable, RowsAreRemovedAndTheLastTakesTheColumnsAlong) {
    MatlabTable table;
    fillGrid(table, 2, 3);
    table.removeRow(3);
    table.removeRow(1);
    EXPECT_EQ(grid(table), "2x2: 0 1 20 21");
    table.removeRow(1);
    table.removeRow(0);
    EXPECT_EQ(grid(table), "0x0:");
}

TEST(MatlabTable, CopiesKeepIdsAndCloneNestedTables) {
    MatlabTable table;
    fillGrid(table, 2, 1);
    table.setCell(1, 0, MatlabCell(MatlabTable(1, 1)));
    const std::unique_ptr<MatlabTable> copy(table.clone());
    EXPECT_EQ(grid(*copy), grid(table));
    const MatlabCell none;
    EXPECT_EQ(copy->getCell(0, 0, none).getCellId(), table.getCell(0, 0, none).getCellId());
    MatlabTable named(table);
    named.setColumnName(1, "stored, never shown");
    EXPECT_EQ(named.getColumnName(1), "");
    const MatlabTable withoutRows(4, 0);
    EXPECT_EQ(grid(MatlabTable(withoutRows)), "0x0:") << "without rows a copy has no columns";
    EXPECT_EQ(grid(MatlabTable(static_cast<const MatlabTable*>(nullptr))), "0x0:");
}

TEST(MatlabTable, ColumnNamesAndWidthsFollowTheScheme) {
    MatlabTable plain(2, 1);
    plain.setColumnName(0, "given");
    EXPECT_EQ(plain.getColumnName(0), "") << "names come from the scheme alone";
    Schemed table({{"value", Type::text}, {"b", Type::text}});
    EXPECT_EQ(table.getColumnWidth(0, 3), 3) << "without cells nothing is added";
    table.resize(2, 2);
    table.setCell(1, 1, text("1234567"));
    EXPECT_EQ(table.getColumnName(0), "value");
    EXPECT_EQ(table.getColumnName(2), "");
    EXPECT_EQ(table.getColumnWidth(0, 3), 6);
    EXPECT_EQ(table.getColumnWidth(1, 3), 8);
    EXPECT_EQ(table.getColumnWidth(1, 9), 10);
}

TEST(MatlabTable, PrintsAlignedLines) {
    Schemed table({{"name", Type::text}, {"x", Type::signedInteger}});
    testing::internal::CaptureStdout();
    MatlabTable(1, 1).printTable(4);
    table.printTable(4);
    table.resize(1, 2);
    table.setCell(0, 0, text("Ua"));
    table.printTable(3);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "Table is empty\nTable is empty\n"
              "ID  name x   \n-------------\n1   Ua       \n2            \n");
    const std::string id = std::to_string(table.getCell(0, 0, MatlabCell()).getCellId());
    const std::string nextId = std::to_string(table.getCell(0, 1, MatlabCell()).getCellId());
    testing::internal::CaptureStdout();
    table.printCellIds();
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "---------\nCell id = " + id + " true Ua\nCell id = " + nextId + " false \n---------\n");
}

TEST(TableJson, HasTheDocumentedShape) {
    Schemed nested({{"d", Type::signedInteger}});
    nested.resize(1, 1);
    nested.setCell(0, 0, MatlabCell(1));
    Schemed table({{"c2", Type::table}, {"c1", Type::floating}});
    EXPECT_EQ(document(table), "null") << "a scheme without rows";
    table.resize(2, 1);
    table.setCell(0, 0, MatlabCell(nested));
    table.setCell(1, 0, MatlabCell(50.0));
    EXPECT_EQ(document(table), R"({"N":[{"c1":50.0,"c2":[{"d":1}]}]})") << "keys sorted, nested unnamed";
    EXPECT_EQ(document(MatlabTable()), R"("{}")");
    table.setCell(0, 0, MatlabCell(MatlabTable()));
    table.setCell(1, 0, MatlabCell());
    EXPECT_EQ(document(table), R"({"N":[{"c1":"","c2":"{}"}]})");
}

TEST(TableJson, ColumnsWithoutANameGetTheLiteralCutAtItsFront) {
    MatlabTable table;
    fillGrid(table, 8, 1);
    EXPECT_EQ(document(table), R"({"table":[{"":7,"column":0,"lumn":2,"mn":4,"n":5,"olumn":1,"umn":3}]})");
}

TEST(TableJson, ACellAloneShowsItsTableAsADocument) {
    Schemed nested({{"d", Type::signedInteger}});
    nested.resize(1, 1);
    nested.setCell(0, 0, MatlabCell(1));
    MatlabTable table(1, 1);
    table.setCell(0, 0, MatlabCell(nested));
    EXPECT_EQ(compactText(table.getJsonValue(0, 0)), R"({"N":[{"d":1}]})");
    EXPECT_EQ(compactText(table.getJsonValue(0, 1)), R"("")");
}

TEST(TableJson, OfColumnsWithOneNameTheLastCountsAndInvalidNamesRaise) {
    Schemed table({{"b", Type::signedInteger}, {"a", Type::signedInteger}, {"b", Type::signedInteger}});
    fillGrid(table, 3, 2);
    EXPECT_EQ(document(table), R"({"N":[{"a":1,"b":2},{"a":11,"b":12}]})");
    Schemed invalid({{"\xFF", Type::signedInteger}});
    fillGrid(invalid, 1, 1);
    EXPECT_THROW(compactText(invalid.toJson()), nlohmann::json::type_error);
    EXPECT_THROW(invalid.toJsonText(), nlohmann::json::type_error);
}

TEST(TableJson, WritesEveryCellType) {
    struct Case {
        MatlabCell cell;
        std::string json;
    };
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const std::vector<Case> cases{
        {MatlabCell(), R"("")"},
        {text("\xC0\xC1\xF1\xE9x"), R"("ABc x")"},
        {text("a\nb\x7F~ \""), R"("a b ~ \"")"},
        {MatlabCell(~0UL), "18446744073709551615"},
        {MatlabCell(-5), "-5"},
        {MatlabCell(0.1), "0.1"},
        {MatlabCell(-0.0), "-0.0"},
        {MatlabCell(1e300), "1e+300"},
        {MatlabCell(nan), "null"},
        {MatlabCell(std::vector<double>{1.0, nan, -HUGE_VAL, 5e-324}), "[1.0,null,null,5e-324]"},
        {MatlabCell(std::vector<double>{}), "[]"},
        {MatlabCell(std::vector<std::int64_t>{-1, 2}), "[-1,2]"},
        {MatlabCell(std::vector<std::uint64_t>{3}), "[3]"},
    };
    for (const Case& c : cases) {
        Schemed table({{"v", c.cell.getDataType()}});
        table.resize(1, 1);
        table.setCell(0, 0, c.cell);
        EXPECT_EQ(document(table), R"({"N":[{"v":)" + c.json + "}]}");
    }
}

TEST(TableJson, TextAndValueAgreeOnEveryByteAndNumber) {
    std::string everyByte;
    for (int c = 0; c < 256; ++c) {
        everyByte += static_cast<char>(c);
    }
    const std::string ascii = everyByte.substr(0, 128);
    const std::vector<double> extremes{std::nan(""), -std::nan(""), HUGE_VAL,     -HUGE_VAL, 0.0,    -0.0,
                                       5e-324,       1e-310,        2.3e-308,     1e300,     0.0001, 1e-5,
                                       1e15,         1e16,          -123456.7891, 1.0 / 3.0};
    std::vector<double> row(1000);
    for (std::size_t i = 0; i < row.size(); ++i) {
        row[i] = std::sin(static_cast<double>(i)) * std::pow(10.0, static_cast<double>(i % 40) - 20.0);
    }
    std::vector<double> almost = row;
    almost.back() += 1.0;
    Schemed table({{ascii, Type::text}, {"a", Type::floatingVector}, {"\u00B5 \U0001F50C", Type::floatingVector}});
    fillGrid(table, 3, 6);
    for (std::uint64_t r = 0; r < 6; ++r) {
        table.setCell(0, r, text(everyByte));
    }
    // Rows equal to the last or last but one are copied; equal in number but not in bytes, or in a part, is not enough.
    std::uint64_t place = 0;
    for (const std::vector<double>& values :
         {row, extremes, row, almost, row, {}, {}, {0.0}, {-0.0}, {0.0, 0.0}, extremes, extremes}) {
        table.setCell(1 + place % 2, place / 2, MatlabCell(values));
        ++place;
    }
    EXPECT_EQ(nlohmann::json::parse(document(table))["N"][2]["a"].get<std::vector<double>>(), row);
}

}  // namespace
