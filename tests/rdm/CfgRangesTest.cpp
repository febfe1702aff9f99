// CFG_Ranges: the gauge scale finder, row by row of its table of examples.

#include "device_link/core/ErrTrap.h"
#include "rdm/CFG_Ranges.h"

#include <gtest/gtest.h>

namespace zol::rdm {
namespace {

struct Expected {
    double delta;
    double scaleMin;
    double scaleMax;
    int intervals;
};

void Check(double min, double max, const Expected& e) {
    CFG_Ranges ranges;
    ranges.Initialise(min, max);
    EXPECT_DOUBLE_EQ(ranges.Delta(), e.delta);
    EXPECT_DOUBLE_EQ(ranges.ScaleMin(), e.scaleMin);
    EXPECT_DOUBLE_EQ(ranges.ScaleMax(), e.scaleMax);
    EXPECT_EQ(ranges.Intervals(), e.intervals);
}

// ---- The table of examples ----

TEST(CfgRanges, Row0To100) {
    Check(0, 100, {10, 0, 100, 10});
}
TEST(CfgRanges, Row0To1000) {
    Check(0, 1000, {100, 0, 1000, 10});
}
TEST(CfgRanges, RowMinus40To125) {
    Check(-40, 125, {20, -40, 140, 9});
}
TEST(CfgRanges, Row0To255) {
    Check(0, 255, {40, 0, 280, 7});
}
TEST(CfgRanges, Row0To12) {
    Check(0, 12, {2, 0, 12, 6});
}
TEST(CfgRanges, Row0To7) {
    Check(0, 7, {1, 0, 7, 7});
}
TEST(CfgRanges, RowMinus10To10) {
    Check(-10, 10, {2, -10, 10, 10});
}
TEST(CfgRanges, Row10To100) {
    Check(10, 100, {10, 0, 100, 10});
}
TEST(CfgRanges, Row20To100) {
    Check(20, 100, {10, 10, 100, 9});
}
TEST(CfgRanges, Row50To60) {
    Check(50, 60, {1, 49, 60, 11});
}
TEST(CfgRanges, RowMinus50ToMinus10) {
    Check(-50, -10, {5, -50, -5, 9});
}
TEST(CfgRanges, Row0To65535) {
    Check(0, 65535, {10000, 0, 70000, 7});
}

// ---- Further cases ----

TEST(CfgRanges, Range0To05EndsAt055With11IntervalsByRepeatedAddition) {
    CFG_Ranges ranges;
    ranges.Initialise(0, 0.5);
    EXPECT_DOUBLE_EQ(ranges.Delta(), 0.05);
    EXPECT_NEAR(ranges.ScaleMax(), 0.55, 1e-12);
    EXPECT_EQ(ranges.Intervals(), 11);
}

TEST(CfgRanges, MantissaAtMidpointRoundsUpToLargerStep) {
    Check(0, 35, {5, 0, 35, 7});     // 3.5 between 2 and 5
    Check(0, 75, {10, 0, 80, 8});    // 7.5 between 5 and 10
    Check(0, 15, {2, 0, 16, 8});     // 1.5 between 1 and 2
    Check(0, 14, {1 * 2, 0, 14, 7}); // 1.4 takes 1, then 14 steps double it
}

TEST(CfgRanges, PowerOfTenSpanTakesOneTenthAsStep) {
    CFG_Ranges ranges;
    ranges.Initialise(0, 1);
    EXPECT_DOUBLE_EQ(ranges.Delta(), 0.1);
    ranges.Initialise(0, 10000);
    EXPECT_DOUBLE_EQ(ranges.Delta(), 1000);
}

TEST(CfgRanges, ExactlyTenStepsDoesNotDouble) {
    CFG_Ranges ranges;
    ranges.Initialise(0, 100);
    EXPECT_DOUBLE_EQ(ranges.Delta(), 10);
    ranges.Initialise(0, 10.5); // 10.5 steps of 1: doubled
    EXPECT_DOUBLE_EQ(ranges.Delta(), 2);
}

TEST(CfgRanges, EmptyOrReversedSpanOverflows) {
    CFG_Ranges ranges;
    for (auto [min, max] : {std::pair{5.0, 5.0}, std::pair{10.0, 0.0}}) {
        try {
            ranges.Initialise(min, max);
            ADD_FAILURE() << "no overflow for " << min << " to " << max;
        } catch (const RuntimeFault& fault) {
            EXPECT_EQ(fault.Number(), rt::Overflow);
        }
    }
}

TEST(CfgRanges, RangeFarFromZeroWithTinyStepIsRefusedNotWalkedForever) {
    CFG_Ranges ranges;
    EXPECT_THROW(ranges.Initialise(1e15, 1e15 + 1), RuntimeFault);
}

} // namespace
} // namespace zol::rdm
