// Frame timing: limits, the device's own defaults, and the coupling of frame rate and RX time-out.

#include "SimHarness.h"

namespace zol::sim::test {
namespace {

// current, minimum, maximum of a one-byte quantity
Bytes Three(int current, int min, int max) {
    return B({current, min, max});
}

Bytes Six(int current, int min, int max) {
    return B({current & 0xFF, current >> 8, min & 0xFF, min >> 8, max & 0xFF, max >> 8});
}

TEST(SimTiming, PowerUpValuesAndLimits) {
    SimHarness h;
    EXPECT_EQ(h.Cmd({0x11}).data, Three(40, 1, 44));
    EXPECT_EQ(h.Cmd({0x17}).data, Three(10, 1, 40));
    // Break and mark chosen by the device carry the top bit of the high byte.
    EXPECT_EQ(h.Cmd({0x15}).data, Six(0x8000 | 176, 92, 2000));
    EXPECT_EQ(h.Cmd({0x13}).data, Six(0x8000 | 20, 12, 2000));
}

TEST(SimTiming, FrameRateOutsideTheLimitsIsRefused) {
    SimHarness h;
    EXPECT_EQ(h.Cmd({0x12, 45}).status, 1);
    EXPECT_EQ(h.Cmd({0x12, 255}).status, 1);
    EXPECT_EQ(h.Cmd({0x11}).data, Three(40, 1, 44));
    EXPECT_EQ(h.Cmd({0x12, 1}).status, 0);
    EXPECT_EQ(h.Cmd({0x11}).data[0], 1);
}

TEST(SimTiming, FrameRateZeroChoosesTheDeviceDefault) {
    SimHarness h;
    ASSERT_EQ(h.Cmd({0x12, 25}).status, 0);
    ASSERT_EQ(h.Cmd({0x12, 0}).status, 0);
    EXPECT_EQ(h.Cmd({0x11}).data[0], 40);
}

TEST(SimTiming, AFasterRateShortensTheRxTimeOut) {
    SimHarness h;
    ASSERT_EQ(h.Cmd({0x12, 44}).status, 0);
    // 1000 / 44 = 22 ms of frame period, 15 of it reserved for the frame: 7 ms remain.
    EXPECT_EQ(h.Cmd({0x17}).data, Three(7, 1, 40));
    EXPECT_EQ(h.Cmd({0x11}).data[0], 44);
}

TEST(SimTiming, ASlowerRateLeavesTheRxTimeOutAlone) {
    SimHarness h;
    ASSERT_EQ(h.Cmd({0x12, 30}).status, 0);
    EXPECT_EQ(h.Cmd({0x17}).data[0], 10);
}

TEST(SimTiming, ALongerRxTimeOutLowersTheRate) {
    SimHarness h;
    ASSERT_EQ(h.Cmd({0x18, 20}).status, 0);
    EXPECT_EQ(h.Cmd({0x17}).data[0], 20);
    // 1000 / (20 + 15) = 28 frames a second at most.
    EXPECT_EQ(h.Cmd({0x11}).data, Three(28, 1, 44));
    ASSERT_EQ(h.Cmd({0x18, 40}).status, 0);
    EXPECT_EQ(h.Cmd({0x11}).data[0], 18);
}

TEST(SimTiming, AShorterRxTimeOutLeavesTheRateAlone) {
    SimHarness h;
    ASSERT_EQ(h.Cmd({0x18, 5}).status, 0);
    EXPECT_EQ(h.Cmd({0x11}).data[0], 40);
    EXPECT_EQ(h.Cmd({0x17}).data[0], 5);
}

TEST(SimTiming, RxTimeOutOutsideTheLimitsIsRefused) {
    SimHarness h;
    EXPECT_EQ(h.Cmd({0x18, 41}).status, 1);
    EXPECT_EQ(h.Cmd({0x17}).data[0], 10);
}

TEST(SimTiming, RxTimeOutZeroChoosesTheDefaultAndCouples) {
    SimHarness h;
    ASSERT_EQ(h.Cmd({0x18, 3}).status, 0);
    ASSERT_EQ(h.Cmd({0x12, 44}).status, 0);
    ASSERT_EQ(h.Cmd({0x18, 0}).status, 0);
    EXPECT_EQ(h.Cmd({0x17}).data[0], 10);
    EXPECT_EQ(h.Cmd({0x11}).data[0], 40); // 44 * (10 + 15) would pass 1000
}

TEST(SimTiming, RxTimeOutWhileReceivingDmxIsTheWrongMode) {
    SimHarness h;
    ASSERT_EQ(h.Cmd({0x28, 0x01}).status, 0); // the port turns round to listen
    EXPECT_EQ(h.Cmd({0x18, 12}).status, 7);
    EXPECT_EQ(h.Cmd({0x17}).data[0], 10);
    EXPECT_EQ(h.Cmd({0x12, 30}).status, 0); // the rate may still change
    ASSERT_EQ(h.Cmd({0x23}).status, 0);     // the line goes idle
    EXPECT_EQ(h.Cmd({0x18, 12}).status, 0);
}

TEST(SimTiming, RxTimeOutWhileListeningToNothingIsAccepted) {
    SimHarness h;
    h.Ctl("input none");
    ASSERT_EQ(h.Cmd({0x28, 0x01}).status, 0);
    EXPECT_EQ(h.Cmd({0x18, 12}).status, 0);
}

TEST(SimTiming, BreakLimitsAndDefault) {
    SimHarness h;
    EXPECT_EQ(h.Cmd({0x16, 91, 0}).status, 1);
    EXPECT_EQ(h.Cmd({0x16, 0xD1, 0x07}).status, 1); // 2001
    EXPECT_EQ(h.Cmd({0x16, 100, 0x80}).status, 1);  // the flag bit is no part of a value
    ASSERT_EQ(h.Cmd({0x16, 0x58, 0x02}).status, 0); // 600
    EXPECT_EQ(h.Cmd({0x15}).data, Six(600, 92, 2000));
    ASSERT_EQ(h.Cmd({0x16, 0, 0}).status, 0);
    EXPECT_EQ(h.Cmd({0x15}).data, Six(0x8000 | 176, 92, 2000));
}

TEST(SimTiming, MarkLimitsAndDefault) {
    SimHarness h;
    EXPECT_EQ(h.Cmd({0x14, 11, 0}).status, 1);
    ASSERT_EQ(h.Cmd({0x14, 0xD0, 0x07}).status, 0); // 2000
    EXPECT_EQ(h.Cmd({0x13}).data, Six(2000, 12, 2000));
    ASSERT_EQ(h.Cmd({0x14, 0, 0}).status, 0);
    EXPECT_EQ(Le16(h.Cmd({0x13}).data, 0), 0x8000 | 20);
}

TEST(SimTiming, BreakAndMarkDoNotTouchRateOrTimeOut) {
    SimHarness h;
    ASSERT_EQ(h.Cmd({0x16, 0xD0, 0x07}).status, 0);
    ASSERT_EQ(h.Cmd({0x14, 0xD0, 0x07}).status, 0);
    EXPECT_EQ(h.Cmd({0x11}).data[0], 40);
    EXPECT_EQ(h.Cmd({0x17}).data[0], 10);
}

TEST(SimTiming, RequestLengths) {
    SimHarness h;
    for (int code : {0x11, 0x13, 0x15, 0x17}) {
        EXPECT_EQ(h.Cmd({code, 0}).status, 5) << code;
    }
    EXPECT_EQ(h.Cmd({0x12}).status, 6);
    EXPECT_EQ(h.Cmd({0x12, 30, 0}).status, 5);
    EXPECT_EQ(h.Cmd({0x18}).status, 6);
    EXPECT_EQ(h.Cmd({0x18, 5, 0}).status, 5);
    EXPECT_EQ(h.Cmd({0x14, 20}).status, 6);
    EXPECT_EQ(h.Cmd({0x14, 20, 0, 0}).status, 5);
    EXPECT_EQ(h.Cmd({0x16, 200}).status, 6);
    EXPECT_EQ(h.Cmd({0x16, 200, 0, 0}).status, 5);
}

TEST(SimTiming, ARigWhoseMaximumRateIsBelow40RefusesThePluginsDefault) {
    const std::string rig = WriteTemp("slow.json", R"({"ports": [{"name": "Slow", "timing": {
        "frame_rate": {"default": 25, "min": 10, "max": 30}}}]})");
    SimHarness h(rig);
    EXPECT_EQ(h.Cmd({0x12, 40}).status, 1);
    EXPECT_EQ(h.Cmd({0x11}).data, Three(25, 10, 30));
}

TEST(SimTiming, TheReserveComesFromTheRig) {
    const std::string rig = WriteTemp("reserve.json", R"({"ports": [{"name": "R", "timing": {
        "frame_reserve_ms": 5, "rx_timeout_ms": {"default": 20, "min": 2, "max": 60}}}]})");
    SimHarness h(rig);
    ASSERT_EQ(h.Cmd({0x18, 60}).status, 0);
    EXPECT_EQ(h.Cmd({0x11}).data[0], 15); // 1000 / (60 + 5)
    ASSERT_EQ(h.Cmd({0x12, 44}).status, 0);
    EXPECT_EQ(h.Cmd({0x17}).data[0], 17); // 1000 / 44 - 5
}

TEST(SimTiming, PowerCycleRestoresTheDefaults) {
    SimHarness h;
    ASSERT_EQ(h.Cmd({0x12, 20}).status, 0);
    ASSERT_EQ(h.Cmd({0x16, 0x58, 0x02}).status, 0);
    h.Ctl("unplug");
    h.Ctl("replug");
    EXPECT_EQ(h.Cmd({0x11}).data[0], 40);
    EXPECT_EQ(Le16(h.Cmd({0x15}).data, 0), 0x8000 | 176);
}

} // namespace
} // namespace zol::sim::test
