// DMX input: the sources of a rig and the states a read reports over time.

#include "SimHarness.h"

namespace zol::sim::test {
namespace {

Reply Read(SimHarness& h) {
    return h.Cmd({0x28, 0x01});
}

// Levels of the generated universe in step k: slot s holds (s - 1 + 8k) mod 256.
Bytes Generated(int slots, int step) {
    Bytes levels;
    for (int s = 1; s <= slots; ++s) {
        levels += static_cast<char>((s - 1 + 8 * step) & 0xFF);
    }
    return levels;
}

TEST(SimInput, NoSourceGivesNoNews) {
    SimHarness h;
    h.Ctl("input none");
    EXPECT_TRUE(Read(h).data.empty());
    h.Ctl("advance 2");
    const Reply r = Read(h);
    EXPECT_EQ(r.status, 0);
    EXPECT_TRUE(r.data.empty());
}

TEST(SimInput, TheFirstReadTurnsTheLineRoundAndHasNoFrameYet) {
    SimHarness h;
    EXPECT_TRUE(Read(h).data.empty());
    EXPECT_EQ(h.State("mode"), "receive");
}

TEST(SimInput, GeneratedUniverseArrivesWithStartCodeZero) {
    SimHarness h;
    Read(h);
    h.Ctl("advance 0.1");
    const Reply r = Read(h);
    ASSERT_EQ(r.status, 0);
    ASSERT_EQ(r.data.size(), 514u);
    EXPECT_EQ(r.data[0], 1); // new levels
    EXPECT_EQ(r.data[1], 0); // start code
    EXPECT_EQ(r.data.substr(2), Generated(512, 0));
}

TEST(SimInput, NoFrameSinceTheLastReadIsNoNews) {
    SimHarness h;
    Read(h);
    h.Ctl("advance 0.1");
    ASSERT_FALSE(Read(h).data.empty());
    EXPECT_TRUE(Read(h).data.empty());
    h.Ctl("advance 0.01"); // less than one frame at 40 frames a second
    EXPECT_TRUE(Read(h).data.empty());
}

TEST(SimInput, UnchangedLevelsAreState0AndMovedLevelsState1) {
    SimHarness h;
    Read(h);
    h.Ctl("advance 0.1");
    EXPECT_EQ(Read(h).data[0], 1);
    h.Ctl("advance 0.1");
    const Reply same = Read(h);
    EXPECT_EQ(same.data[0], 0);
    EXPECT_EQ(same.data.substr(2), Generated(512, 0));
    h.Ctl("advance 1");
    const Reply moved = Read(h);
    EXPECT_EQ(moved.data[0], 1);
    EXPECT_EQ(moved.data.substr(2), Generated(512, 1));
}

TEST(SimInput, TheRigChoosesSlotsAndPace) {
    SimHarness h("default", 2); // 24 slots, a new step every 2 seconds
    Read(h);
    h.Ctl("advance 1");
    const Reply r = Read(h);
    ASSERT_EQ(r.data.size(), 26u);
    EXPECT_EQ(r.data.substr(2), Generated(24, 0));
    h.Ctl("advance 1.5");
    EXPECT_EQ(Read(h).data.substr(2), Generated(24, 1));
}

TEST(SimInput, AFrameOfNoSlotsHasJustStateAndStartCode) {
    const std::string rig = WriteTemp(
        "empty.json", R"({"ports": [{"name": "E", "input": {"source": "generated", "slots": 0}}]})");
    SimHarness h(rig);
    Read(h);
    h.Ctl("advance 0.5");
    EXPECT_EQ(Read(h).data, B({1, 0}));
}

TEST(SimInput, AlternateStartCodeFrames) {
    SimHarness h;
    h.Ctl("input alternate 23");
    Read(h);
    h.Ctl("advance 0.1");
    const Reply r = Read(h);
    ASSERT_GE(r.data.size(), 2u);
    EXPECT_EQ(r.data[0], 1);
    EXPECT_EQ(r.data[1], 0x17);
}

TEST(SimInput, AlternateStartCodeFromTheRig) {
    const std::string rig = WriteTemp("alt.json", R"({"ports": [{"name": "A",
        "input": {"source": "alternate", "start_code": 204, "slots": 4}}]})");
    SimHarness h(rig);
    Read(h);
    h.Ctl("advance 0.1");
    EXPECT_EQ(Read(h).data, B({1, 204, 0, 1, 2, 3}));
}

TEST(SimInput, FaultyFramesAreState2Alone) {
    SimHarness h;
    h.Ctl("input faulty");
    Read(h);
    h.Ctl("advance 0.1");
    EXPECT_EQ(Read(h).data, B({2}));
    EXPECT_TRUE(Read(h).data.empty());
}

TEST(SimInput, ALostInputIsReportedOnceAsState3) {
    SimHarness h;
    h.Ctl("input lost");
    EXPECT_EQ(Read(h).data, B({3}));
    h.Ctl("advance 1");
    EXPECT_TRUE(Read(h).data.empty());
}

TEST(SimInput, InputStatesOverTime) {
    SimHarness h;
    Read(h);
    h.Ctl("advance 0.1");
    EXPECT_EQ(Read(h).data[0], 1);
    h.Ctl("input lost");
    h.Ctl("advance 0.1");
    EXPECT_EQ(Read(h).data, B({3}));
    EXPECT_TRUE(Read(h).data.empty());
    h.Ctl("input generated");
    h.Ctl("advance 0.1");
    const Reply back = Read(h);
    ASSERT_EQ(back.data.size(), 514u);
    EXPECT_EQ(back.data[0], 0); // the same levels as the last frame read
    h.Ctl("input faulty");
    h.Ctl("advance 0.1");
    EXPECT_EQ(Read(h).data, B({2}));
    h.Ctl("input none");
    EXPECT_EQ(Read(h).data, B({3}));
}

TEST(SimInput, LoopbackCarriesAnotherPortsOutput) {
    const std::string rig = WriteTemp("loop.json", R"({"ports": [{"name": "Out"},
        {"name": "In", "input": {"source": "loopback", "from_port": 1}}]})");
    SimHarness h(rig, 1);
    ASSERT_EQ(h.Cmd({0x22, 0x00, 0x00, 10, 20, 30}).status, 0);
    ASSERT_EQ(h.sim.FreePort(), 0); // the device keeps sending
    ASSERT_EQ(h.sim.OpenPort(2), 0);
    EXPECT_TRUE(Read(h).data.empty());
    h.Ctl("advance 0.1");
    const Reply r = Read(h);
    ASSERT_EQ(r.data.size(), 514u);
    EXPECT_EQ(r.data.substr(0, 5), B({1, 0, 10, 20, 30}));
    // The other side stops: the input is lost.
    ASSERT_EQ(h.sim.FreePort(), 0);
    ASSERT_EQ(h.sim.OpenPort(1), 0);
    ASSERT_EQ(h.Cmd({0x23}).status, 0);
    ASSERT_EQ(h.sim.FreePort(), 0);
    ASSERT_EQ(h.sim.OpenPort(2), 0);
    h.Ctl("advance 0.1");
    EXPECT_EQ(Read(h).data, B({3}));
}

TEST(SimInput, LoopbackCanBeWiredAtRunTime) {
    SimHarness h("default", 2);
    h.Ctl("port 2 input loopback 1");
    h.Ctl("port 1 input loopback 2");
    EXPECT_TRUE(Read(h).data.empty());
    h.Ctl("advance 1");
    EXPECT_TRUE(Read(h).data.empty());          // port 1 sends nothing
    EXPECT_EQ(h.CtlRc("input loopback 2"), -1); // not from itself
}

TEST(SimInput, ReadInputRequestFormat) {
    SimHarness h;
    EXPECT_EQ(h.Cmd({0x28}).status, 6);
    EXPECT_EQ(h.Cmd({0x28, 0x02}).status, 3);
    EXPECT_EQ(h.Cmd({0x28, 0x01, 0x00}).status, 5);
}

TEST(SimInput, ReceivingCountsFrames) {
    SimHarness h;
    Read(h);
    h.Ctl("advance 0.5");
    Read(h);
    EXPECT_EQ(h.Ctl("counters"), "frames_sent=0 frames_received=20 commands=2 input_reads=2");
}

TEST(SimInput, OutputEndsListening) {
    SimHarness h;
    Read(h);
    ASSERT_EQ(h.Cmd({0x22, 0x00, 0x00, 1}).status, 0);
    EXPECT_EQ(h.State("mode"), "transmit");
    h.Ctl("advance 1");
    EXPECT_EQ(h.Ctl("counters"), "frames_sent=40 frames_received=0 commands=2 input_reads=1");
}

} // namespace
} // namespace zol::sim::test
