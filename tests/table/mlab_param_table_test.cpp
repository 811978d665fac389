#include "table/mlab_param_table.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

using Names = std::vector<std::string>;

/// One row per name, its number in the second column.
MatlabParamTable parameters(const Names& names) {
    MatlabParamTable table(2, static_cast<int>(names.size()));
    for (std::uint64_t row = 0; row < names.size(); ++row) {
        table.setCell(0, row, MatlabCell(names[row]));
        table.setCell(1, row, MatlabCell(row));
    }
    return table;
}

/// Name and number of every row.
std::string shown(const MatlabParamTable& table) {
    std::string text;
    for (std::uint64_t row = 0; row < table.getRowNum(); ++row) {
        for (const std::uint64_t col : {0U, 1U}) {
            text += table.getCell(col, row, MatlabCell()).toString();
        }
        text += ' ';
    }
    return table.getColNum() == 0 ? "none" : text;
}

TEST(MatlabParamTable, RemovesTheFirstRowOfAName) {
    const struct {
        const char* name;
        Names names;
        const char* expected;
    } cases[]{
        {"A", {"B", "A", "C", "A"}, "B0 C2 A3 "},
        {"A", {"AA", "a", " A", "A "}, "AA0 a1  A2 A 3 "},
        {"", {"A", "", ""}, "A0 2 "},
        {"A", {"A"}, "none"},
        {nullptr, {"A"}, "A0 "},
        {"A", {}, ""},
    };
    for (const auto& c : cases) {
        MatlabParamTable table = parameters(c.names);
        table.removeRow(c.name);
        EXPECT_EQ(shown(table), c.expected);
    }
    MatlabParamTable table = parameters({"A", "B"});
    table.removeRow(std::uint64_t{0});
    EXPECT_EQ(shown(table), "B1 ") << "rows are still removed by number";
    const std::string embedded("A\0", 2);
    MatlabParamTable withZero = parameters({embedded});
    withZero.removeRow("A");
    EXPECT_EQ(withZero.getRowNum(), 1U) << "the whole name counts";
}

TEST(MatlabParamTable, KeepsTheNamedRowsOnly) {
    struct Case {
        std::vector<const char*> wanted;
        Names names;
        const char* expected;
    };
    for (Case c : {
             Case{{"A"}, {"A", "B", "A"}, "A0 A2 "},
             Case{{"C", nullptr, "A", ""}, {"A", "", "C", "D"}, "A0 C2 "},
             Case{{"B"}, {"A", "B", "BB"}, "B1 "},
             Case{{nullptr, ""}, {"A", "", "C"}, "none"},
             Case{{"X"}, {"A"}, "none"},
             Case{{}, {"A", "B"}, "A0 B1 "},
         }) {
        MatlabParamTable table = parameters(c.names);
        table.thinningRows(c.wanted.data(), c.wanted.size());
        EXPECT_EQ(shown(table), c.expected);
        table.thinningRows(nullptr, 1);
        EXPECT_EQ(shown(table), c.expected);
    }
}

TEST(MatlabParamTable, ListsTheNamesOfRowsWithAValue) {
    MatlabParamTable table = parameters({"A", "", "A", "B"});
    EXPECT_EQ(table.getParamNames(), (Names{"A", "", "A", "B"}));
    table.setCell(0, 0, MatlabCell(50.0));
    table.setCell(0, 2, MatlabCell());
    table.setCell(0, 3, MatlabCell(-7));
    EXPECT_EQ(table.getParamNames(), (Names{"5.0000000000e+01", "", "-7"}));
    table.removeRow("5.0000000000e+01");
    EXPECT_EQ(table.getRowNum(), 3U) << "a number is named by its text";
    EXPECT_EQ(MatlabParamTable().getParamNames(), Names{});
    EXPECT_EQ(MatlabParamTable(0, 2).getParamNames(), Names{});
    EXPECT_EQ(MatlabParamTable(2, 0).getParamNames(), Names{});
}

TEST(MatlabParamTable, CopiesKeepTheRows) {
    const MatlabParamTable table = parameters({"A", "B"});
    EXPECT_EQ(shown(MatlabParamTable(table)), "A0 B1 ");
    EXPECT_EQ(shown(MatlabParamTable(static_cast<const MatlabTable*>(&table))), "A0 B1 ");
}

}  // namespace
