// DMX output: the block, single slots, stopping, and the frames the device repeats.

#include "SimHarness.h"

namespace zol::sim::test {
namespace {

TEST(SimOutput, BlockWritesSlotsFromOneAndStartsOutput) {
    SimHarness h;
    EXPECT_EQ(h.State("mode"), "idle");
    const Reply r = h.Cmd({0x22, 0x00, 0x00, 10, 20, 30});
    EXPECT_EQ(r.status, 0);
    EXPECT_TRUE(r.data.empty());
    EXPECT_EQ(h.State("mode"), "transmit");
    EXPECT_EQ(h.Ctl("slot 1"), "10");
    EXPECT_EQ(h.Ctl("slot 2"), "20");
    EXPECT_EQ(h.Ctl("slot 3"), "30");
    EXPECT_EQ(h.Ctl("slot 4"), "0");
}

TEST(SimOutput, TheFrameQueryShowsStartCodeAndAll512Levels) {
    SimHarness h;
    ASSERT_EQ(h.Cmd({0x22, 0x00, 0x00, 0xFF, 0x01}).status, 0);
    const std::string frame = h.Ctl("frame");
    EXPECT_EQ(frame.size(), 513u * 3 - 1);
    EXPECT_EQ(frame.substr(0, 9), "00 FF 01 ");
}

TEST(SimOutput, TheSecondLeadingByteIsTheStartCode) {
    SimHarness h;
    ASSERT_EQ(h.Cmd({0x22, 0x00, 0x17, 1}).status, 0);
    EXPECT_EQ(h.Ctl("frame").substr(0, 5), "17 01");
}

TEST(SimOutput, ABlockLeavesTheSlotsBeyondItAsTheyWere) {
    SimHarness h;
    ASSERT_EQ(h.Cmd({0x25, 100, 0, 55}).status, 0);
    Bytes block = B({0x22, 0x00, 0x00});
    block += Bytes(24, '\x07');
    ASSERT_EQ(h.Cmd(block).status, 0);
    EXPECT_EQ(h.Ctl("slot 24"), "7");
    EXPECT_EQ(h.Ctl("slot 25"), "0");
    EXPECT_EQ(h.Ctl("slot 100"), "55");
}

TEST(SimOutput, AWhole512SlotBlockIsAccepted) {
    SimHarness h;
    Bytes block = B({0x22, 0x00, 0x00});
    for (int s = 1; s <= 512; ++s) {
        block += static_cast<char>(s & 0xFF);
    }
    ASSERT_EQ(block.size(), 515u);
    EXPECT_EQ(h.Cmd(block).status, 0);
    EXPECT_EQ(h.Ctl("slot 512"), "0");
    EXPECT_EQ(h.Ctl("slot 511"), "255");
}

TEST(SimOutput, BlockLengthsAndFormat) {
    SimHarness h;
    EXPECT_EQ(h.Cmd(B({0x22, 0x00, 0x00}) + Bytes(513, '\x01')).status, 5);
    EXPECT_EQ(h.Cmd({0x22, 0x00}).status, 6);
    EXPECT_EQ(h.Cmd({0x22}).status, 6);
    EXPECT_EQ(h.Cmd({0x22, 0x01, 0x00, 5}).status, 4);
    EXPECT_EQ(h.State("mode"), "idle");
    EXPECT_EQ(h.Cmd({0x22, 0x00, 0x00}).status, 0); // no levels, but output runs
    EXPECT_EQ(h.State("mode"), "transmit");
}

TEST(SimOutput, SendChannelWritesOneSlot) {
    SimHarness h;
    ASSERT_EQ(h.Cmd({0x22, 0x00, 0x00}).status, 0);
    EXPECT_EQ(h.Cmd({0x25, 0x01, 0x00, 0xFF}).status, 0);
    EXPECT_EQ(h.Cmd({0x25, 0x00, 0x02, 0x80}).status, 0); // slot 512
    EXPECT_EQ(h.Ctl("slot 1"), "255");
    EXPECT_EQ(h.Ctl("slot 512"), "128");
}

TEST(SimOutput, SendChannelOutsideTheFrameIsRefused) {
    SimHarness h;
    EXPECT_EQ(h.Cmd({0x25, 0x00, 0x00, 1}).status, 1);
    EXPECT_EQ(h.Cmd({0x25, 0x01, 0x02, 1}).status, 1); // 513
    EXPECT_EQ(h.Cmd({0x25, 0x01, 0x00}).status, 6);
    EXPECT_EQ(h.Cmd({0x25, 0x01, 0x00, 1, 1}).status, 5);
}

TEST(SimOutput, SendChannelAloneDoesNotStartOutput) {
    SimHarness h;
    ASSERT_EQ(h.Cmd({0x25, 0x01, 0x00, 9}).status, 0);
    EXPECT_EQ(h.State("mode"), "idle");
    EXPECT_EQ(h.Ctl("slot 1"), "9");
}

TEST(SimOutput, TheDeviceRepeatsTheFrameAtItsFrameRate) {
    SimHarness h;
    ASSERT_EQ(h.Cmd({0x22, 0x00, 0x00, 1}).status, 0);
    h.Ctl("advance 1");
    EXPECT_EQ(h.Ctl("frames"), "40");
    ASSERT_EQ(h.Cmd({0x12, 20}).status, 0);
    h.Ctl("advance 2");
    EXPECT_EQ(h.Ctl("frames"), "80");
}

TEST(SimOutput, StopOutputStopsTheRepeat) {
    SimHarness h;
    ASSERT_EQ(h.Cmd({0x22, 0x00, 0x00, 1}).status, 0);
    h.Ctl("advance 0.5");
    EXPECT_EQ(h.Cmd({0x23}).status, 0);
    EXPECT_EQ(h.State("mode"), "idle");
    h.Ctl("advance 5");
    EXPECT_EQ(h.Ctl("frames"), "20");
    EXPECT_EQ(h.Ctl("slot 1"), "1"); // the frame is kept
    EXPECT_EQ(h.Cmd({0x23, 0x00}).status, 5);
}

TEST(SimOutput, FramesGoOnInRealTime) {
    SimHarness h;
    h.Ctl("clock real 50");
    ASSERT_EQ(h.Cmd({0x22, 0x00, 0x00, 1}).status, 0);
    const auto until = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    while (std::stoll(h.Ctl("frames")) < 40 && std::chrono::steady_clock::now() < until) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    EXPECT_GE(std::stoll(h.Ctl("frames")), 40);
}

TEST(SimOutput, CountersCountCommandsAndFrames) {
    SimHarness h;
    ASSERT_EQ(h.Cmd({0x22, 0x00, 0x00, 1}).status, 0);
    ASSERT_EQ(h.Cmd({0x25, 0x01, 0x00, 2}).status, 0);
    h.Ctl("advance 0.25");
    EXPECT_EQ(h.Ctl("counters"), "frames_sent=10 frames_received=0 commands=2 input_reads=0");
}

} // namespace
} // namespace zol::sim::test
