// Faults a tester injects through the console, and reset.

#include "SimHarness.h"

namespace zol::sim::test {
namespace {

TEST(SimFaults, UnpluggedEveryCallIsMinus2) {
    SimHarness h;
    h.Ctl("unplug");
    EXPECT_EQ(h.Cmd({0x01}).status, -2);
    EXPECT_EQ(h.Cmd({0x25, 1, 0, 1}).status, -2);
    EXPECT_EQ(h.sim.ProgState(), -2);
    EXPECT_EQ(h.sim.Reprogram((DataDir() + "/good.fud").c_str()), -2);
    EXPECT_EQ(h.LastError(), "The local device has been disconnected");
    EXPECT_EQ(h.State("plugged"), "no");
}

TEST(SimFaults, ReplugBringsTheDeviceBackFreshlyStarted) {
    SimHarness h;
    ASSERT_EQ(h.Cmd({0x22, 0x00, 0x00, 99}).status, 0);
    h.Ctl("unplug");
    EXPECT_EQ(h.Cmd({0x01}).status, -2);
    h.Ctl("replug");
    EXPECT_EQ(h.Cmd({0x01}).status, 0);
    EXPECT_EQ(h.State("mode"), "idle");
    EXPECT_EQ(h.Ctl("slot 1"), "0");
}

TEST(SimFaults, FreeingAnUnpluggedPortFailsButLetsGo) {
    SimHarness h;
    h.Ctl("unplug");
    EXPECT_EQ(h.sim.FreePort(), -2);
    EXPECT_EQ(h.sim.FreePort(), -14); // nothing is open any more
    EXPECT_EQ(h.sim.OpenPort(1), -1);
    EXPECT_EQ(h.sim.OpenPort(2), 0); // the other interface is still there
    ASSERT_EQ(h.sim.FreePort(), 0);
    h.Ctl("port 1 replug");
    EXPECT_EQ(h.sim.OpenPort(1), 0);
}

TEST(SimFaults, OpeningAnUnpluggedInterfaceIsAConnectionFailure) {
    SimHarness h;
    ASSERT_EQ(h.sim.FreePort(), 0);
    h.Ctl("port 1 unplug");
    EXPECT_EQ(h.sim.OpenPort(1), -1);
    EXPECT_EQ(h.LastError(), "The local device of port 1 is not connected");
    h.Ctl("port 1 replug");
    EXPECT_EQ(h.sim.OpenPort(1), 0);
}

TEST(SimFaults, UnplugOfAnotherPortLeavesTheOpenOneAlone) {
    SimHarness h;
    h.Ctl("port 2 unplug");
    EXPECT_EQ(h.Cmd({0x01}).status, 0);
    EXPECT_EQ(h.State("plugged", 2), "no");
}

TEST(SimFaults, NotRespondingIsMinus3UntilRespond) {
    SimHarness h;
    h.Ctl("silent");
    EXPECT_EQ(h.Cmd({0x01}).status, -3);
    EXPECT_EQ(h.Cmd({0x01}).status, -3);
    EXPECT_EQ(h.sim.ProgState(), -3);
    EXPECT_EQ(h.LastError(), "The local device is not responding");
    h.Ctl("respond");
    EXPECT_EQ(h.Cmd({0x01}).status, 0);
}

TEST(SimFaults, NotRespondingForACountOfCommands) {
    SimHarness h;
    h.Ctl("silent 2");
    EXPECT_EQ(h.Cmd({0x01}).status, -3);
    EXPECT_EQ(h.Cmd({0x01}).status, -3);
    EXPECT_EQ(h.Cmd({0x01}).status, 0);
}

TEST(SimFaults, BusyForTheNextCommands) {
    SimHarness h;
    h.Ctl("busy 2");
    EXPECT_EQ(h.Cmd({0x25, 1, 0, 5}).status, 8);
    EXPECT_EQ(h.Cmd({0x25, 1, 0, 5}).status, 8);
    EXPECT_EQ(h.Ctl("slot 1"), "0"); // refused commands did nothing
    EXPECT_EQ(h.Cmd({0x25, 1, 0, 5}).status, 0);
    EXPECT_EQ(h.Ctl("slot 1"), "5");
}

TEST(SimFaults, InjectedLibraryFailures) {
    SimHarness h("default", 0);
    h.Ctl("fail open -1");
    EXPECT_EQ(h.sim.OpenPort(1), -1);
    EXPECT_EQ(h.sim.OpenPort(1), 0);
    h.Ctl("fail command -5 2");
    EXPECT_EQ(h.Cmd({0x01}).status, -5);
    EXPECT_EQ(h.Cmd({0x01}).status, -5);
    EXPECT_EQ(h.Cmd({0x01}).status, 0);
    h.Ctl("fail count -4");
    EXPECT_EQ(h.sim.PortCount(), -4);
    EXPECT_EQ(h.sim.PortCount(), 2);
    h.Ctl("fail version -6");
    h.Ctl("fail clear");
    char text[64];
    EXPECT_GT(h.sim.Version(text, sizeof text), 0);
    EXPECT_EQ(h.CtlRc("fail open 3"), -1);
    EXPECT_EQ(h.CtlRc("fail nothing -1"), -1);
}

TEST(SimFaults, ResetReturnsToTheRig) {
    SimHarness h;
    ASSERT_EQ(h.Cmd({0x12, 20}).status, 0);
    ASSERT_EQ(h.Cmd({0x22, 0x00, 0x00, 7}).status, 0);
    ASSERT_EQ(h.Cmd({0x48, 1, 2, 3}).status, 0);
    h.Ctl("input lost");
    h.Ctl("factory on");
    h.Ctl("busy 5");
    h.Ctl("port 2 unplug");
    h.Ctl("advance 1");
    h.Ctl("reset");
    EXPECT_EQ(h.State("open"), "no");
    EXPECT_EQ(h.State("plugged", 2), "yes");
    ASSERT_EQ(h.sim.OpenPort(1), 0);
    EXPECT_EQ(h.Cmd({0x11}).data[0], 40);
    EXPECT_EQ(h.Ctl("slot 1"), "0");
    EXPECT_EQ(h.Ctl("derogation"), "00 00 00");
    EXPECT_EQ(h.State("input"), "generated");
    EXPECT_EQ(h.State("factory"), "no");
    EXPECT_EQ(h.Ctl("counters"), "frames_sent=0 frames_received=0 commands=1 input_reads=0");
}

TEST(SimFaults, ConsoleRefusesWhatItDoesNotKnow) {
    SimHarness h;
    std::string reply;
    EXPECT_EQ(h.CtlRc("frobnicate", &reply), -1);
    EXPECT_EQ(reply, "unknown command: frobnicate (try help)");
    EXPECT_EQ(h.CtlRc(""), -1);
    EXPECT_EQ(h.CtlRc("port 9 state"), -1);
    EXPECT_EQ(h.CtlRc("busy"), -1);
    EXPECT_EQ(h.CtlRc("slot 513"), -1);
    EXPECT_EQ(h.CtlRc("advance -1"), -1);
    EXPECT_EQ(h.sim.Control(nullptr, nullptr, 0), -1);
}

TEST(SimFaults, ConsoleReplyIsCutToTheBufferButTheLengthIsWhole) {
    SimHarness h;
    char text[8];
    const int32_t n = h.sim.Control("frame", text, sizeof text);
    EXPECT_EQ(n, 513 * 3 - 1);
    EXPECT_STREQ(text, "00 00 0");
    EXPECT_EQ(h.sim.Control("frame", nullptr, 0), n);
}

TEST(SimFaults, LineCommandsWithoutTheLineAreRefused) {
    if (Simulator::LineAvailable()) {
        GTEST_SKIP() << "the RDM line is built in";
    }
    SimHarness h;
    std::string reply;
    EXPECT_EQ(h.CtlRc("line status", &reply), -1);
    EXPECT_EQ(reply, "the RDM line is not part of this build");
    EXPECT_EQ(h.CtlRc("port 2 responder 1 show"), -1);
}

} // namespace
} // namespace zol::sim::test

namespace zol::sim::test {
namespace {

TEST(SimLine, RdmCommandsGoToTheLineOfTheOpenPort) {
    if (!Simulator::LineAvailable()) {
        GTEST_SKIP() << "the RDM line is not part of this build";
    }
    SimHarness h;
    EXPECT_EQ(h.Cmd({51}).status, 0); // discovery starts
    const Reply status = h.Cmd({52});
    EXPECT_EQ(status.status, 0);
    EXPECT_EQ(status.data.size(), 2u);
    EXPECT_EQ(status.data[0], 0); // nobody on an empty line
    EXPECT_EQ(h.Cmd({53}).status, 6);
}

TEST(SimLine, TimePassesOnTheLine) {
    if (!Simulator::LineAvailable()) {
        GTEST_SKIP() << "the RDM line is not part of this build";
    }
    SimHarness h;
    ASSERT_EQ(h.Cmd({51}).status, 0);
    h.Ctl("advance 10");
    EXPECT_NE(h.Ctl("line stats").find("search=done"), std::string::npos) << h.Ctl("line stats");
}

TEST(SimLine, ConsoleCommandsReachTheLine) {
    if (!Simulator::LineAvailable()) {
        GTEST_SKIP() << "the RDM line is not part of this build";
    }
    SimHarness h;
    EXPECT_EQ(h.Ctl("port 2 line table"), "");
    std::string reply;
    EXPECT_EQ(h.CtlRc("line nonsense", &reply), -1);
    EXPECT_EQ(reply.rfind("error:", 0), 0u) << reply;
}

} // namespace
} // namespace zol::sim::test

namespace zol::sim::test {
namespace {

TEST(SimConsole, PortsTimeAndHelp) {
    SimHarness h;
    EXPECT_EQ(h.Ctl("ports"), "1 ZOL USB 1\n2 ZOL USB 2");
    const double before = std::stod(h.Ctl("time"));
    h.Ctl("advance 2.5");
    EXPECT_NEAR(std::stod(h.Ctl("time")) - before, 2.5, 1e-6);
    EXPECT_NE(h.Ctl("help").find("upload-fail"), std::string::npos);
}

TEST(SimConsole, TheManualClockStandsStill) {
    SimHarness h;
    ASSERT_EQ(h.Cmd({0x22, 0x00, 0x00, 1}).status, 0);
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    EXPECT_EQ(h.Ctl("frames"), "0");
}

TEST(SimConsole, TheShippedLoopbackRigWiresBothWays) {
    SimHarness h(std::string(ZOL_SIM_RIG_DIR) + "/loopback.json", 2);
    ASSERT_EQ(h.Cmd({0x22, 0x00, 0x00, 5, 6}).status, 0);
    ASSERT_EQ(h.sim.FreePort(), 0);
    ASSERT_EQ(h.sim.OpenPort(1), 0);
    EXPECT_TRUE(h.Cmd({0x28, 0x01}).data.empty());
    h.Ctl("advance 0.1");
    EXPECT_EQ(h.Cmd({0x28, 0x01}).data.substr(0, 4), B({1, 0, 5, 6}));
}

} // namespace
} // namespace zol::sim::test
