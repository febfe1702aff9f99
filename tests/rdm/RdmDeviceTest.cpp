// RDM_Device: initialisation from a discovered token, sub devices, display texts, manufacturer
// look-up, sticky fault and the message queue.

#include "rdm/RDM_Device.h"
#include "rdm/RDM_SubDev.h"
#include "tests/rdm/RdmTestSupport.h"

namespace zol::rdm::testing {
namespace {

class DeviceTest : public RdmTest {
protected:
    // Scripts the whole initialisation of a device: its UID, its DEVICE_INFO and the population of
    // the root device and of `info.subDevices` sub devices, each with `supported` as its list.
    std::shared_ptr<RDM_Device> Make(int token, const Bytes& uid, const Info& info,
                                     const Bytes& rootSupported = "", const Bytes& subSupported = "") {
        lib.Expect(B({53, token}), 0, uid);
        lib.Expect(Get(token, 0, pid::DEVICE_INFO), 0, DeviceInfo(info));
        ExpectPopulation(token, 0, rootSupported, DeviceInfo(info));
        for (int index = 1; index <= info.subDevices; ++index) {
            Info sub = info;
            sub.subDevices = 0;
            ExpectPopulation(token, index, subSupported, DeviceInfo(sub));
        }
        auto device = std::make_shared<RDM_Device>();
        EXPECT_TRUE(device->Initialise(static_cast<int16_t>(token)));
        lib.ClearCalls();
        return device;
    }
};

// ---- Corner cases ----

TEST_F(DeviceTest, SubDeviceCountZeroHasOnlyTheRootDevice) {
    Info info;
    info.subDevices = 0;
    auto device = Make(1, H("414243444546"), info);
    EXPECT_EQ(device->SUB_DEVICE_COUNT(), 0);
    auto root = device->SubDev(0);
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(root->Index(), 0);
    EXPECT_TRUE(root->HasCall(pid::DISC_MUTE));
    EXPECT_EQ(device->SubDev(0), root);    // the same object each time
    EXPECT_EQ(device->SubDev(1), nullptr); // one entry only
}

TEST_F(DeviceTest, SubDevAboveCountReturnsNothing) {
    Info info;
    info.subDevices = 2;
    auto device = Make(1, H("414243444546"), info);
    EXPECT_EQ(device->SUB_DEVICE_COUNT(), 2);
    EXPECT_NE(device->SubDev(2), nullptr);
    EXPECT_EQ(device->SubDev(2)->Index(), 2);
    EXPECT_EQ(device->SubDev(3), nullptr);
}

TEST_F(DeviceTest, FaultWrittenFalseAfterTrueStaysTrue) {
    RDM_Device device;
    EXPECT_FALSE(device.Fault());
    device.Fault(true);
    device.Fault(false);
    EXPECT_TRUE(device.Fault());
}

TEST_F(DeviceTest, FaultIsTrueWhenOnlyASubDeviceIsAtFault) {
    Info info;
    info.subDevices = 2;
    auto device = Make(1, H("414243444546"), info);
    EXPECT_FALSE(device->Fault());
    device->SubDev(2)->Fault(true);
    EXPECT_TRUE(device->Fault());
    EXPECT_FALSE(device->SubDev(0)->Fault());
}

TEST_F(DeviceTest, ManufacturerLabelIsReadOnceAndCached) {
    Info info;
    auto device = Make(3, H("414243444546"), info, Pids({pid::MANUFACTURER_LABEL}));
    lib.Expect(Get(3, 0, 0x0081), 0, "Northlight Works");
    EXPECT_EQ(device->DEVICE_MANUFACTURER(), "Northlight Works");
    EXPECT_EQ(device->DEVICE_MANUFACTURER(), "Northlight Works");
    EXPECT_EQ(lib.Commands().size(), 1u);
}

TEST_F(DeviceTest, UidBeginning41WithoutLabelReadsUnknown) {
    Info info;
    auto device = Make(1, H("414401020304"), info);
    EXPECT_EQ(device->DEVICE_MANUFACTURER(), "Un-known");
    EXPECT_TRUE(lib.calls.empty());
}

TEST_F(DeviceTest, UidBeginningADWithoutLabelReadsRowOfKey4144) {
    Info info;
    auto device = Make(1, H("AD0001020304"), info);
    EXPECT_EQ(device->DEVICE_MANUFACTURER(), "ADB - TTV Technologies nv.");
}

TEST_F(DeviceTest, Category0205ReadsLuminaryBeamController) {
    Info info;
    info.category = 0x0205;
    auto device = Make(1, H("414243444546"), info);
    EXPECT_EQ(device->PRODUCT_CATEGORY(), "Luminary beam controller");
}

TEST_F(DeviceTest, Category0506ReadsDimmer) {
    Info info;
    info.category = 0x0506;
    auto device = Make(1, H("414243444546"), info);
    EXPECT_EQ(device->PRODUCT_CATEGORY(), "Dimmer");
}

// ---- More ----

TEST_F(DeviceTest, InitialiseReadsUidAndDeviceInfoThenPopulatesEverySubDevice) {
    Info info;
    info.subDevices = 1;
    lib.Expect(H("35 07"), 0, H("4D5000000102"));
    lib.Expect(H("38 07 0000 0060"), 0, DeviceInfo(info));
    lib.Expect(H("38 07 0000 0050"), 0, "");
    lib.Expect(H("38 07 0000 0060"), 0, DeviceInfo(info));
    lib.Expect(H("38 07 0000 0060"), 0, DeviceInfo(info));
    lib.Expect(H("38 07 0001 0050"), 0, "");
    lib.Expect(H("38 07 0001 0060"), 0, DeviceInfo(info));
    lib.Expect(H("38 07 0001 0060"), 0, DeviceInfo(info));
    RDM_Device device;
    EXPECT_TRUE(device.Initialise(7));
    EXPECT_EQ(device.DataClass(), "RDM_Device");
    EXPECT_EQ(device.UID(), "4D 50 : 00 00 01 02");
    EXPECT_EQ(device.Token(), 7);
}

TEST_F(DeviceTest, DisplayTextsFromDeviceInfo) {
    Info info;
    info.major = 1;
    info.minor = 5;
    info.model = 0x0203;
    info.software = 0xFFFFFFFD;
    auto device = Make(1, H("414243444546"), info);
    EXPECT_EQ(device->PROTOCOL_VERSION(), "1.5");
    EXPECT_EQ(device->DEVICE_MODEL_ID(), 0x0203);
    EXPECT_EQ(device->SOFTWARE_VERSION_ID(), 1); // the complement path of Str2Lng
}

TEST_F(DeviceTest, ModelIdFrom8000OverflowsWithItsOwnSuffix) {
    Info info;
    info.model = 0x8001;
    auto device = Make(1, H("414243444546"), info);
    ui.Expect("Overflow", vb::OK, "RDM_Device.DEVICE_MODELID (Get)");
    EXPECT_EQ(Thrown([&] { device->DEVICE_MODEL_ID(); }).Code(), rt::Overflow);
}

TEST_F(DeviceTest, EmptyDeviceInfoIsReportedAndRaisedAsDeviceError) {
    lib.Expect(H("35 02"), 0, H("414243444546"));
    lib.Expect(H("38 02 0000 0060"), 0, "");
    ui.Expect("Error in received RDM Frame format", vb::OK, "Remote Device Initialisation");
    RDM_Device device;
    const ZolError error = Thrown([&] { device.Initialise(2); });
    EXPECT_EQ(error.Code(), err::ErrSYS_Device);
    EXPECT_EQ(ErrTrap::LastCode(), err::ErrSYS_Device);
}

TEST_F(DeviceTest, QueueSendsStatusTypeOnlyWhenNonZero) {
    Info info;
    auto device = Make(4, H("414243444546"), info);
    lib.Expect(H("3A 04"), 0, H("0030") + H("0001 02 0021 0002 002D"));
    EXPECT_EQ(device->Queue(0), H("0030 0001 02 0021 0002 002D"));
    lib.Expect(H("3A 04 03"), 17, H("0000"));
    EXPECT_EQ(device->Queue(3), H("0000"));
    EXPECT_TRUE(Client::QueuePending());
}

TEST_F(DeviceTest, QueueMissingResponseRetriesThenRaisesDeviceError) {
    Info info;
    auto device = Make(4, H("414243444546"), info);
    lib.Expect(H("3A 04"), 0x18);
    lib.Expect(H("3A 04"), 0x18);
    ui.Expect("Expected reponse from remote device not received", vb::Retry, "Message Queue");
    ui.Expect("Expected reponse from remote device not received", vb::Cancel, "Message Queue");
    EXPECT_EQ(Thrown([&] { device->Queue(0); }).Code(), err::ErrSYS_Device);
}

} // namespace
} // namespace zol::rdm::testing
