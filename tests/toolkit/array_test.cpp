#include "toolkit/array.h"

#include <gtest/gtest.h>

#include <new>

namespace {

using coder::column;
using coder::row;

TEST(Array, GrowsFromSixteenByDoublingAndKeepsItsElements) {
    column x;
    x.set_size(5);
    EXPECT_EQ(x.capacity(), 16);
    for (int i = 0; i < 5; ++i) {
        x[i] = i + 0.5;
    }
    x.ensureCapacity(17);
    EXPECT_EQ(x.capacity(), 32);
    EXPECT_EQ(x.numel(), 17);
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(x[i], i + 0.5);
    }
    const double* const block = x.data();
    x.set_size(3);
    EXPECT_EQ(x.capacity(), 32) << "arrays never shrink";
    x.set_size(32);
    EXPECT_EQ(x.data(), block);
}

TEST(Array, RowOfAVectorHasNoSpareCapacity) {
    const std::vector<double> values{1.0, 2.0, 3.0};
    const row x(values);
    EXPECT_EQ(x.size(0), 1);
    EXPECT_EQ(x.size(1), 3);
    EXPECT_EQ(x.capacity(), 3);
    EXPECT_TRUE(x.owner());
    EXPECT_NE(x.data(), values.data());
}

TEST(Array, CopyOfAViewOwnsItsElements) {
    std::vector<double> values{1.0, 2.0};
    const row view = row::view(values.data(), values.size());
    EXPECT_FALSE(view.owner());
    EXPECT_EQ(view.data(), values.data());
    const row copy(view);
    row assigned;
    assigned = view;
    values[0] = 9.0;
    EXPECT_EQ(copy[0], 1.0);
    EXPECT_EQ(assigned[0], 1.0);
    EXPECT_TRUE(assigned.owner());
}

TEST(Array, RefusesExtentsThatNoCountHolds) {
    row x;
    EXPECT_THROW(x.set_size(1 << 16, 1 << 16), std::bad_array_new_length);
    EXPECT_EQ(x.numel(), 0);
    double d = 0.0;
    EXPECT_THROW(row::view(&d, std::size_t{1} << 31), std::bad_array_new_length);
}

}  // namespace
