// The identity commands, the service reads and the answers to malformed requests.

#include "SimHarness.h"

namespace zol::sim::test {
namespace {

TEST(SimIdentity, DeviceNameIsPlainText) {
    SimHarness h;
    const Reply r = h.Cmd({0x00});
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.data, "DMX-ZOL MK1 USB DMX512/RDM Interface");
}

TEST(SimIdentity, DeviceModelWithOptionByteIsTwoBytesLowFirst) {
    SimHarness h;
    const Reply r = h.Cmd({0x00, 0x01});
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.data, B({0x02, 0x00}));
}

TEST(SimIdentity, OlderFirmwareRefusesTheOptionByteAsTooLong) {
    SimHarness h("default", 2);
    EXPECT_EQ(h.Cmd({0x00, 0x01}).status, 5);
    const Reply name = h.Cmd({0x00});
    EXPECT_EQ(name.status, 0);
    EXPECT_EQ(name.data, "DMX-ZOL USB DMX512 Interface");
}

TEST(SimIdentity, DeviceModelWithAnotherOptionIsNotAnOption) {
    SimHarness h;
    EXPECT_EQ(h.Cmd({0x00, 0x02}).status, 3);
    EXPECT_EQ(h.Cmd({0x00, 0x01, 0x00}).status, 5);
}

TEST(SimIdentity, HardwareRevision) {
    SimHarness h;
    const Reply r = h.Cmd({0x01});
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.data, "MK1 Rev C");
    EXPECT_EQ(h.Cmd({0x01, 0x01}).status, 5);
}

TEST(SimIdentity, FirmwareRevisionIsThreeNumbersWithTrailingNul) {
    SimHarness h;
    const Reply r = h.Cmd({0x02, 0x01});
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.data, std::string("1.0.4\0", 6));
    EXPECT_EQ(h.Cmd({0x02}).status, 6);
    EXPECT_EQ(h.Cmd({0x02, 0x01, 0x01}).status, 5);
    EXPECT_EQ(h.Cmd({0x02, 0x00}).status, 3);
}

TEST(SimIdentity, SerialNumberIsDigitsWithTrailingNul) {
    SimHarness h;
    const Reply r = h.Cmd({0x03, 0x01});
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.data, std::string("10000417\0", 9));
    EXPECT_EQ(h.Cmd({0x03}).status, 6);
}

TEST(SimIdentity, UniqueIdCarriesTheMakersEstaId) {
    SimHarness h;
    const Reply r = h.Cmd({0x04});
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.data, B({0x6B, 0x72, 0x00, 0x98, 0x98, 0x21}));
    EXPECT_EQ(h.Cmd({0x04, 0x00}).status, 5);
}

TEST(SimIdentity, FirmwareBuildIsFourBytesLowFirst) {
    SimHarness h;
    const Reply r = h.Cmd({0x4F});
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.data, B({0xA3, 0x04, 0x00, 0x00})); // 1187
    EXPECT_EQ(h.Cmd({0x4F, 0x01}).status, 5);
}

TEST(SimIdentity, ApplyDerogationKeepsTheThreeBytes) {
    SimHarness h;
    EXPECT_EQ(h.Ctl("derogation"), "00 00 00");
    EXPECT_EQ(h.Cmd({0x48, 0x12, 0xAB, 0x01}).status, 0);
    EXPECT_EQ(h.Ctl("derogation"), "12 AB 01");
    EXPECT_EQ(h.Cmd({0x48, 0x12, 0xAB}).status, 6);
    EXPECT_EQ(h.Cmd({0x48, 0x12, 0xAB, 0x00, 0x00}).status, 5);
    EXPECT_EQ(h.Ctl("derogation"), "12 AB 01");
}

TEST(SimIdentity, ReadMemoryOutsideFactoryModeIsAnUnknownCommand) {
    SimHarness h;
    EXPECT_EQ(h.Cmd({0xE0, 0x00, 0x00, 0x01, 0x00}).status, 2);
    EXPECT_EQ(h.Cmd({0xE0}).status, 2);
}

TEST(SimIdentity, ReadMemoryInFactoryModeReadsTheIdentityBlock) {
    SimHarness h;
    h.Ctl("factory on");
    const Reply r = h.Cmd({0xE0, 0x00, 0x00, 0x06, 0x00});
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.data, Bytes("ZOL1") + B({0x02, 0x00}));
    const Reply erased = h.Cmd({0xE0, 0x00, 0x10, 0x02, 0x00});
    EXPECT_EQ(erased.data, B({0xFF, 0xFF}));
    EXPECT_EQ(h.Cmd({0xE0, 0x00, 0x00, 0x01, 0x02}).status, 1); // 513 bytes
    EXPECT_EQ(h.Cmd({0xE0, 0xFF, 0xFF, 0x02, 0x00}).status, 1); // past the end
    EXPECT_EQ(h.Cmd({0xE0, 0x00, 0x00, 0x01}).status, 6);
}

TEST(SimIdentity, FactoryModeComesFromTheRig) {
    const std::string rig =
        WriteTemp("factory.json", R"({"ports": [{"name": "F", "options": {"factory_mode": true}}]})");
    SimHarness h(rig);
    EXPECT_EQ(h.Cmd({0xE0, 0x00, 0x00, 0x01, 0x00}).status, 0);
}

TEST(SimIdentity, ReadRegistersDumpsTheStatusBlock) {
    SimHarness h;
    ASSERT_EQ(h.Cmd({0x22, 0x00, 0x00, 0x11, 0x22}).status, 0);
    std::string all;
    for (int address = 0xE00; address < 0xF00; address += 8) {
        const Reply r = h.Cmd({0xE2, address & 0xFF, address >> 8, 0x08, 0x00});
        ASSERT_EQ(r.status, 0);
        ASSERT_EQ(r.data.size(), 8u);
        all += r.data;
    }
    EXPECT_EQ(static_cast<uint8_t>(all[0]), 40); // frame rate
    EXPECT_EQ(static_cast<uint8_t>(all[1]), 10); // RX time-out
    EXPECT_EQ(Le16(all, 2), 176);                // break
    EXPECT_EQ(Le16(all, 4), 20);                 // mark
    EXPECT_EQ(static_cast<uint8_t>(all[6]), 1);  // transmitting
    EXPECT_EQ(all.substr(0x10, 6), B({0x6B, 0x72, 0x00, 0x98, 0x98, 0x21}));
    EXPECT_EQ(all.substr(0x20, 3), B({0x11, 0x22, 0x00})); // the output frame
    EXPECT_EQ(h.Cmd({0xE2, 0x00, 0x00, 0x08, 0x00}).data, Bytes(8, '\0'));
    EXPECT_EQ(h.Cmd({0xE2, 0xFC, 0x0F, 0x08, 0x00}).status, 1);
    EXPECT_EQ(h.Cmd({0xE2, 0x00, 0x0E, 0x08}).status, 6);
    EXPECT_EQ(h.Cmd({0xE2, 0x00, 0x0E, 0x08, 0x00, 0x00}).status, 5);
}

TEST(SimIdentity, UnknownCommandIsStatus2) {
    SimHarness h;
    EXPECT_EQ(h.Cmd({0x63}).status, 2);
    EXPECT_EQ(h.Cmd({0xFF, 0x01, 0x02}).status, 2);
}

TEST(SimIdentity, EmptyRequestIsAFrameFormatError) {
    SimHarness h;
    EXPECT_EQ(h.Cmd(Bytes()).status, 4);
}

TEST(SimIdentity, RigCanWithdrawCommands) {
    const std::string rig =
        WriteTemp("old.json", R"({"ports": [{"name": "Old", "identity": {"unsupported": [79]}}]})");
    SimHarness h(rig);
    EXPECT_EQ(h.Cmd({0x4F}).status, 2);
    EXPECT_EQ(h.Cmd({0x01}).status, 0);
}

TEST(SimIdentity, RdmCommandsWithoutTheLineAreUnknown) {
    if (Simulator::LineAvailable()) {
        GTEST_SKIP() << "the RDM line is built in; its own tests cover these codes";
    }
    SimHarness h;
    for (int code : {49, 51, 52, 53, 56, 57, 58, 61}) {
        EXPECT_EQ(h.Cmd({code}).status, 2) << code;
    }
}

TEST(SimIdentity, RigIdentityOverridesTheDefaults) {
    const std::string rig = WriteTemp("id.json", R"({"ports": [{"name": "X", "identity": {
        "device_name": "Bench unit", "model": 7, "hardware_rev": "Rev Z", "firmware": "2.10.003",
        "serial": "42", "build": 65537}}]})");
    SimHarness h(rig);
    EXPECT_EQ(h.Cmd({0x00}).data, "Bench unit");
    EXPECT_EQ(h.Cmd({0x00, 0x01}).data, B({7, 0}));
    EXPECT_EQ(h.Cmd({0x02, 0x01}).data, std::string("2.10.003\0", 9));
    EXPECT_EQ(h.Cmd({0x03, 0x01}).data, std::string("42\0", 3));
    EXPECT_EQ(h.Cmd({0x04}).data, B({0x6B, 0x72, 0, 0, 0, 42}));
    EXPECT_EQ(h.Cmd({0x4F}).data, B({1, 0, 1, 0}));
}

} // namespace
} // namespace zol::sim::test
