// Ports, opening and freeing, and the library's texts.

#include "SimHarness.h"

namespace zol::sim::test {
namespace {

TEST(SimPorts, TheDefaultRigHasTwoNamedPorts) {
    SimHarness h("default", 0);
    EXPECT_EQ(h.sim.PortCount(), 2);
    char name[64] = {};
    EXPECT_EQ(h.sim.PortName(1, name, sizeof name), 9);
    EXPECT_STREQ(name, "ZOL USB 1");
    EXPECT_EQ(h.sim.PortName(2, name, sizeof name), 9);
    EXPECT_STREQ(name, "ZOL USB 2");
}

TEST(SimPorts, PortNameOutOfRangeIsAnErroneousCall) {
    SimHarness h("default", 0);
    char name[64] = {};
    EXPECT_EQ(h.sim.PortName(0, name, sizeof name), -12);
    EXPECT_EQ(h.sim.PortName(3, name, sizeof name), -12);
    EXPECT_NE(h.LastError().find("Port 3"), std::string::npos);
}

TEST(SimPorts, ShortAndMissingBuffersNeverOverrun) {
    SimHarness h("default", 0);
    char name[8];
    std::memset(name, 'x', sizeof name);
    EXPECT_EQ(h.sim.PortName(1, name, 4), 3);
    EXPECT_STREQ(name, "ZOL");
    EXPECT_EQ(name[4], 'x');
    EXPECT_EQ(h.sim.PortName(1, name, 1), 0);
    EXPECT_STREQ(name, "");
    EXPECT_EQ(h.sim.PortName(1, nullptr, 64), -12);
    EXPECT_EQ(h.sim.PortName(1, name, 0), -12);
    EXPECT_EQ(h.sim.PortName(1, name, -5), -12);
    EXPECT_EQ(h.sim.LastError(nullptr, 256), -12);
    EXPECT_EQ(h.sim.LastError(name, 0), -12);
    EXPECT_EQ(h.sim.Version(nullptr, 256), -12);
    EXPECT_EQ(h.sim.Version(name, 5), 4);
    EXPECT_STREQ(name, "ZOL-");
}

TEST(SimPorts, OpenAndFree) {
    SimHarness h("default", 0);
    EXPECT_EQ(h.sim.OpenPort(2), 0);
    EXPECT_EQ(h.State("open", 2), "yes");
    EXPECT_EQ(h.sim.FreePort(), 0);
    EXPECT_EQ(h.State("open", 2), "no");
}

TEST(SimPorts, OpeningTwiceIsRefused) {
    SimHarness h("default", 0);
    ASSERT_EQ(h.sim.OpenPort(1), 0);
    EXPECT_EQ(h.sim.OpenPort(1), -14);
    EXPECT_EQ(h.LastError(), "Port 1 is already open");
    EXPECT_EQ(h.sim.OpenPort(2), -14);
}

TEST(SimPorts, OpeningAPortOutOfRangeIsAnErroneousCall) {
    SimHarness h("default", 0);
    EXPECT_EQ(h.sim.OpenPort(0), -12);
    EXPECT_EQ(h.sim.OpenPort(3), -12);
    EXPECT_EQ(h.sim.OpenPort(-1), -12);
    EXPECT_EQ(h.LastError(), "Port -1 does not exist: the rig has 2 ports");
}

TEST(SimPorts, FreeingWithNothingOpenIsRefused) {
    SimHarness h("default", 0);
    EXPECT_EQ(h.sim.FreePort(), -14);
    EXPECT_EQ(h.LastError(), "KDI_FreePort: no port is open");
}

TEST(SimPorts, CommandsNeedAnOpenPort) {
    SimHarness h("default", 0);
    EXPECT_EQ(h.Cmd({0x01}).status, -14);
}

TEST(SimPorts, CommandWithBadArgumentsIsAnErroneousCall) {
    SimHarness h;
    uint8_t buffer[528] = {0x01};
    int32_t length = 1;
    EXPECT_EQ(h.sim.Command(nullptr, &length), -12);
    EXPECT_EQ(h.sim.Command(buffer, nullptr), -12);
    length = -1;
    EXPECT_EQ(h.sim.Command(buffer, &length), -12);
    length = 529;
    EXPECT_EQ(h.sim.Command(buffer, &length), -12);
    length = 1;
    EXPECT_EQ(h.sim.Command(buffer, &length), 0);
    EXPECT_EQ(length, 9);
}

TEST(SimPorts, VersionNamesTheRig) {
    SimHarness h("default", 0);
    char text[256] = {};
    const int32_t n = h.sim.Version(text, sizeof text);
    EXPECT_EQ(n, static_cast<int32_t>(std::strlen(text)));
    EXPECT_EQ(std::string(text),
              "ZOL-SIM KDI 1.0.3 (simulated interface), rig \"Two interfaces on the bench\"");
}

TEST(SimPorts, LastErrorStartsClear) {
    SimHarness h("default", 0);
    EXPECT_EQ(h.LastError(), "No error");
}

TEST(SimPorts, TheDeviceKeepsItsStateWhileThePortIsClosed) {
    SimHarness h;
    ASSERT_EQ(h.Cmd({0x22, 0x00, 0x00, 42}).status, 0);
    ASSERT_EQ(h.sim.FreePort(), 0);
    h.Ctl("advance 1");
    ASSERT_EQ(h.sim.OpenPort(1), 0);
    EXPECT_EQ(h.Ctl("slot 1"), "42");
    EXPECT_EQ(h.Ctl("frames"), "40");
}

} // namespace
} // namespace zol::sim::test
