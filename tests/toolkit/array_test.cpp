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
    x[4] = 4.5;
    x.ensureCapacity(17);
    EXPECT_EQ(x.capacity(), 32);
    EXPECT_EQ(x[4], 4.5);
    x.set_size(3);
    EXPECT_EQ(x.capacity(), 32) << "arrays never shrink";
}

TEST(Array, ViewsShareAndCopiesOwnTheirElements) {
    std::vector<double> values{1.0, 2.0};
    const row view = row::view(values.data(), values.size());
    const row copy(view);
    row assigned;
    assigned = view;
    const row fromVector(values);
    values[0] = 9.0;
    EXPECT_EQ(view[0], 9.0);
    EXPECT_FALSE(view.owner());
    for (const row* const x : std::vector<const row*>{&copy, &assigned, &fromVector}) {
        EXPECT_EQ((*x)[0], 1.0);
        EXPECT_TRUE(x->owner());
    }
    EXPECT_EQ(fromVector.size(0) * fromVector.size(1), 2);
    EXPECT_EQ(fromVector.capacity(), 2) << "a row of a vector has no spare capacity";
}

TEST(Array, RefusesSizesBeyondTheCountType) {
    row x;
    EXPECT_THROW(x.set_size(1 << 16, 1 << 16), std::bad_array_new_length);
    EXPECT_EQ(x.numel(), 0);
    double d = 0.0;
    EXPECT_THROW(row::view(&d, std::size_t{1} << 31), std::bad_array_new_length);
}

}  // namespace
