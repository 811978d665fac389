#include "table/mlab_cell.h"

#include <gtest/gtest.h>

#include <limits>

#include "table/mlab_table.h"

namespace {

using Type = MatlabCell::CellDataType;

TEST(MatlabCell, KeepsTypeValueAndText) {
    struct Case {
        MatlabCell cell;
        Type type;
        std::string text;
    };
    const std::vector<Case> cases{
        {MatlabCell(), Type::none, ""},
        {MatlabCell(std::string("Ua")), Type::text, "Ua"},
        {MatlabCell(~0UL), Type::unsignedInteger, "18446744073709551615"},
        {MatlabCell(std::numeric_limits<long>::min()), Type::signedInteger, "-9223372036854775808"},
        {MatlabCell(-1), Type::signedInteger, "-1"},
        {MatlabCell(50.0), Type::floating, "5.0000000000e+01"},
        {MatlabCell(0.5F), Type::floating, "5.0000000000e-01"},
        {MatlabCell(MatlabTable(2, 3)), Type::table, "[2x3 table]"},
        {MatlabCell(std::vector<double>(1000000)), Type::floatingVector, "[1x1000000 double]"},
        {MatlabCell(std::vector<float>{0.5F}), Type::floatingVector, "[1x1 double]"},
        {MatlabCell(std::vector<signed char>{-1, 1}), Type::signedVector, "[1x2 int64]"},
        {MatlabCell(std::vector<short>{-1}), Type::signedVector, "[1x1 int64]"},
        {MatlabCell(std::vector<unsigned>{}), Type::unsignedVector, "[1x0 uint64]"},
    };
    for (const Case& c : cases) {
        bool ok = false;
        EXPECT_EQ(c.cell.getDataType(), c.type) << c.text;
        EXPECT_EQ(c.cell.toString(&ok), c.text);
        EXPECT_EQ(ok, c.type != Type::none);
        EXPECT_EQ(c.cell.isValid(), ok);
        EXPECT_TRUE(c.cell.toInt(&ok) == 0 || c.type == Type::signedInteger) << c.text;
        EXPECT_EQ(ok, c.type == Type::signedInteger);
        EXPECT_TRUE(c.cell.toUInt(&ok) == 0 || c.type == Type::unsignedInteger) << c.text;
        EXPECT_EQ(ok, c.type == Type::unsignedInteger);
        EXPECT_TRUE(c.cell.toDouble(&ok) == 0.0 || c.type == Type::floating) << c.text;
        EXPECT_EQ(ok, c.type == Type::floating);
        EXPECT_EQ(c.cell.toMatlabTable(&ok) != nullptr, c.type == Type::table);
        EXPECT_EQ(ok, c.type == Type::table);
        EXPECT_TRUE(c.cell.toDoubleVector(&ok).empty() || c.type == Type::floatingVector) << c.text;
        EXPECT_EQ(ok, c.type == Type::floatingVector);
        EXPECT_TRUE(c.cell.toIntVector(&ok).empty() || c.type == Type::signedVector) << c.text;
        EXPECT_EQ(ok, c.type == Type::signedVector);
        EXPECT_TRUE(c.cell.toUIntVector(&ok).empty() || c.type == Type::unsignedVector) << c.text;
        EXPECT_EQ(ok, c.type == Type::unsignedVector);
    }
    EXPECT_EQ(MatlabCell(-1).toInt(), -1);
    EXPECT_EQ(MatlabCell(7UL).toUInt(), 7U);
    EXPECT_EQ(MatlabCell(std::vector<signed char>{-1, 1}).toIntVector(), (std::vector<std::int64_t>{-1, 1}));
    EXPECT_EQ(MatlabCell(std::vector<unsigned char>{255}).toUIntVector(), (std::vector<std::uint64_t>{255}));
    EXPECT_EQ(MatlabCell(std::vector<float>{0.5F}).toDoubleVector(), (std::vector<double>{0.5}));
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
        EXPECT_EQ(MatlabCell::cellCounter, before + 2) << "one id for the copy, one for its private table's cell";
        EXPECT_NE(copy.toMatlabTable(), source.toMatlabTable());
        MatlabCell assigned(1);
        const std::int64_t beforeAssignment = MatlabCell::cellCounter;
        assigned = MatlabCell(2.5);
        EXPECT_EQ(MatlabCell::cellCounter, beforeAssignment + 1) << "assignment itself hands out no id";
        EXPECT_EQ(assigned.toDouble(), 2.5);
        assigned = source;
        EXPECT_EQ(assigned.getCellId(), source.getCellId());
        MatlabTable holder(1, 1);
        holder.setCell(0, 0, MatlabCell(7));
        MatlabCell owner(holder);
        owner = *owner.toMatlabTable()->findCell(0, 0);
        EXPECT_EQ(owner.toInt(), 7) << "the source went down with the table that the cell owned";
        MatlabCell moved(MatlabTable(1, 1));
        const MatlabCell taken(std::move(moved));
        EXPECT_EQ(moved.toString() + taken.toString(), "[1x1 table]");  // NOLINT: a cell that was moved from is defined
        assigned = *&assigned;
        EXPECT_EQ(assigned.toString(), "[1x1 table]");
    }
    EXPECT_EQ(MatlabCell::objectsCounter, live) << "every cell was destroyed";
}

}  // namespace
