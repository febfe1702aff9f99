// RDM_SubDev: the population sequence, the parameter list, the cached readers and sensors.

#include "rdm/RDM_Sensor.h"
#include "rdm/RDM_SubDev.h"
#include "tests/rdm/RdmTestSupport.h"

#include <vector>

namespace zol::rdm::testing {
namespace {

class SubDevTest : public RdmTest {
protected:
    std::shared_ptr<RDM_SubDev> Populate(int token, int index, const Bytes& supported, const Info& info,
                                         const std::vector<std::pair<int, Bytes>>& descriptions = {}) {
        ExpectPopulation(token, index, supported, DeviceInfo(info), descriptions);
        auto subDev = std::make_shared<RDM_SubDev>();
        EXPECT_TRUE(subDev->Initialise(static_cast<int16_t>(token), static_cast<uint16_t>(index)));
        return subDev;
    }

    static std::vector<int32_t> PidsOf(RDM_SubDev& subDev) {
        std::vector<int32_t> out;
        for (int16_t seq = 1; seq <= subDev.CallCount(); ++seq) {
            out.push_back(subDev.ItemSeq(seq)->PID());
        }
        return out;
    }
};

// ---- Corner cases ----

TEST_F(SubDevTest, EmptySupportedListOnSubDevice1GivesMandatedPidsAscendingWithStartAddress) {
    Info info;
    info.startAddress = 1;
    auto subDev = Populate(2, 1, "", info);
    EXPECT_EQ(PidsOf(*subDev), (std::vector<int32_t>{0x0050, 0x0060, 0x00C0, 0x00F0, 0x1000}));
}

TEST_F(SubDevTest, EmptySupportedListOnSubDevice1WithoutAddressHasNoStartAddress) {
    Info info;
    info.startAddress = 0;
    auto subDev = Populate(2, 1, "", info);
    EXPECT_EQ(PidsOf(*subDev), (std::vector<int32_t>{0x0050, 0x0060, 0x00C0, 0x1000}));
}

TEST_F(SubDevTest, RootDeviceListBeginsWithDiscoveryPidsRequired) {
    Info info;
    auto root = Populate(1, 0, "", info);
    const auto pids = PidsOf(*root);
    ASSERT_GE(pids.size(), 3u);
    EXPECT_EQ(std::vector<int32_t>(pids.begin(), pids.begin() + 3), (std::vector<int32_t>{1, 2, 3}));
    for (int16_t seq = 1; seq <= 3; ++seq) {
        EXPECT_TRUE(root->ItemSeq(seq)->Required());
    }
    EXPECT_EQ(root->ItemPID(1)->Description(), "DISC_UNIQUE_BRANCH");
}

TEST_F(SubDevTest, DeviceListingIdentifyHasOneEntryNotRequired) {
    Info info;
    auto root = Populate(1, 0, Pids({0x1000}), info);
    int count = 0;
    for (int32_t p : PidsOf(*root)) {
        count += p == 0x1000;
    }
    EXPECT_EQ(count, 1);
    EXPECT_FALSE(root->ItemPID(0x1000)->Required());
    EXPECT_TRUE(root->ItemPID(0x00C0)->Required());
}

TEST_F(SubDevTest, StartAddressFFFFAddsNoStartAddressPid) {
    Info info;
    info.startAddress = 0xFFFF;
    auto subDev = Populate(2, 1, "", info);
    EXPECT_FALSE(subDev->HasCall(pid::DMX_START_ADDRESS));
}

TEST_F(SubDevTest, SensorItemZeroFailsAtLowerBound) {
    Info info;
    info.sensors = 2;
    auto subDev = Populate(2, 1, "", info);
    ui.Expect("Subscript out of range", vb::OK, "RDM_SubDev.SensorItem");
    EXPECT_EQ(Thrown([&] { subDev->SensorItem(0); }).Code(), rt::SubscriptOutOfRange);
}

TEST_F(SubDevTest, SensorItemAboveCountIsOutOfRange) {
    Info info;
    info.sensors = 2;
    auto subDev = Populate(2, 1, "", info);
    ui.Expect("Sensor Item Requested is out of range", vb::OK, "RDM_SubDev.SensorItem");
    EXPECT_EQ(subDev->SensorItem(3), nullptr);
    EXPECT_EQ(lib.Commands().size(), 3u);
}

TEST_F(SubDevTest, DeviceModelIdBeforeRefreshIsEmptyAndProtocolVersionIs000) {
    Info info;
    auto subDev = Populate(2, 1, "", info);
    EXPECT_EQ(subDev->DEVICE_MODEL_ID(), "");
    EXPECT_EQ(subDev->RDM_PROTOCOL_VERSION(), "0.00");
    EXPECT_EQ(subDev->PRODUCT_CATEGORY(), "");
    EXPECT_EQ(subDev->SOFTWARE_VERSION_ID(), "");
    EXPECT_EQ(subDev->DMX512_FOOTPRINT(), 0);
    EXPECT_EQ(subDev->DMX512_START_ADDRESS(), 0);
    EXPECT_EQ(subDev->SUB_DEVICE_COUNT(), 0);
    EXPECT_EQ(subDev->SENSOR_COUNT(), 0);
}

TEST_F(SubDevTest, FaultWrittenFalseAfterTrueStaysTrue) {
    RDM_SubDev subDev;
    EXPECT_FALSE(subDev.Fault());
    subDev.Fault(true);
    subDev.Fault(false);
    EXPECT_TRUE(subDev.Fault());
}

// ---- The population sequence ----

TEST_F(SubDevTest, PopulationWithoutManufacturerPidsIsThreeTransactions) {
    Info info;
    info.sensors = 1;
    auto subDev = Populate(4, 3, Pids({0x0082, 0x0200, 0x0201}), info);
    EXPECT_EQ(lib.Commands(),
              (std::vector<Bytes>{H("38 04 0003 0050"), H("38 04 0003 0060"), H("38 04 0003 0060")}));
    EXPECT_EQ(subDev->Token(), 4);
    EXPECT_EQ(subDev->Index(), 3);
    EXPECT_EQ(subDev->DataClass(), "RDM_SubDev");
    EXPECT_EQ(subDev->Self(), subDev);
}

TEST_F(SubDevTest, PopulationAddsOneTransactionPerManufacturerPidInAscendingOrder) {
    Info info;
    auto root = Populate(4, 0, Pids({0x8100, 0x0082, 0x8002}), info,
                         {{0x8002, ParameterDescription(0x8002, 3, 0, 10, 5, "Fan")},
                          {0x8100, ParameterDescription(0x8100, 1, 0, 1, 0, "Mode")}});
    EXPECT_EQ(lib.Commands(),
              (std::vector<Bytes>{H("38 04 0000 0050"), H("38 04 0000 0060"), H("38 04 0000 0051 8002"),
                                  H("38 04 0000 0051 8100"), H("38 04 0000 0060")}));
    EXPECT_TRUE(root->HasCall(pid::PARAMETER_DESCRIPTION));
    EXPECT_TRUE(root->ItemPID(pid::PARAMETER_DESCRIPTION)->Required());
    EXPECT_EQ(root->ItemPID(0x8002)->Description(), "Fan");
    EXPECT_FALSE(root->ItemPID(0x8100)->Required());
}

TEST_F(SubDevTest, ListIsSortedAscendingWhateverTheDeviceOrder) {
    Info info;
    info.startAddress = 0;
    auto subDev = Populate(1, 2, Pids({0x0603, 0x0082, 0x0400, 0x0030, 0x00E0}), info);
    EXPECT_EQ(PidsOf(*subDev),
              (std::vector<int32_t>{0x0030, 0x0050, 0x0060, 0x0082, 0x00C0, 0x00E0, 0x0400, 0x0603, 0x1000}));
    EXPECT_EQ(subDev->ItemSeq(10), nullptr);
}

TEST_F(SubDevTest, RequiredIsTheOppositeOfListedAndBothStartCallsAreRequired) {
    Info info;
    auto subDev = Populate(1, 1, Pids({0x0050, 0x0060, 0x0082}), info);
    EXPECT_TRUE(subDev->ItemPID(0x0050)->Required());
    EXPECT_TRUE(subDev->ItemPID(0x0060)->Required());
    EXPECT_FALSE(subDev->ItemPID(0x0082)->Required());
    EXPECT_TRUE(subDev->ItemPID(0x1000)->Required());
}

TEST_F(SubDevTest, OddLengthSupportedListOfFiveBytesReadsTwoEntries) {
    Info info;
    auto subDev = Populate(1, 1, Pids({0x0082, 0x0400}) + B({0x06}), info);
    EXPECT_TRUE(subDev->HasCall(0x0082));
    EXPECT_TRUE(subDev->HasCall(0x0400));
}

TEST_F(SubDevTest, OddLengthSupportedListOfThreeBytesRoundsUpAndFails) {
    lib.Expect(Get(1, 1, 0x0050), 0, H("008204"));
    ui.Expect("Invalid procedure call or argument", vb::OK, "RDM_SubDev.Initialise");
    auto subDev = std::make_shared<RDM_SubDev>();
    EXPECT_EQ(Thrown([&] { subDev->Initialise(1, 1); }).Code(), rt::InvalidCall);
}

TEST_F(SubDevTest, MissingResponseRetriesTheFailedStep) {
    Info info;
    lib.Expect(Get(1, 1, 0x0050), 0, "");
    lib.Expect(Get(1, 1, 0x0060), 0x18);
    lib.Expect(Get(1, 1, 0x0060), 0, DeviceInfo(info));
    lib.Expect(Get(1, 1, 0x0060), 0, DeviceInfo(info));
    ui.Expect("Expected reponse from remote device not received", vb::Retry, "Sub Device 1 Initialisation");
    auto subDev = std::make_shared<RDM_SubDev>();
    EXPECT_TRUE(subDev->Initialise(1, 1));
    EXPECT_EQ(lib.Commands().size(), 4u);
}

TEST_F(SubDevTest, MissingResponseRefusedOnRootRaisesDeviceError) {
    lib.Expect(Get(1, 0, 0x0050), 0x18);
    ui.Expect("Expected reponse from remote device not received", vb::Cancel, "Root Device  Initialisation");
    auto subDev = std::make_shared<RDM_SubDev>();
    EXPECT_EQ(Thrown([&] { subDev->Initialise(1, 0); }).Code(), err::ErrSYS_Device);
}

TEST_F(SubDevTest, LostConnectionRefusedRaisesCommsError) {
    lib.Expect(Get(1, 2, 0x0050), -1);
    ui.Expect("Problem with connection to Equipment\r\nIf problem persists then check USB cables", vb::Cancel,
              "Sub Device 2 Initialisation");
    auto subDev = std::make_shared<RDM_SubDev>();
    EXPECT_EQ(Thrown([&] { subDev->Initialise(1, 2); }).Code(), err::ErrSYS_Comms);
}

// ---- Cached readers ----

TEST_F(SubDevTest, CachedReadersAfterRefresh) {
    Info info;
    info.major = 1;
    info.minor = 0;
    info.model = 0x1234;
    info.category = 0x0101;
    info.software = 0x00010203;
    info.footprint = 24;
    info.personality = 3;
    info.personalities = 5;
    info.startAddress = 101;
    info.subDevices = 12;
    info.sensors = 2;
    auto subDev = Populate(1, 0, "", info);
    lib.Expect(Get(1, 0, 0x0060), 0, DeviceInfo(info));
    subDev->Refresh();
    EXPECT_EQ(subDev->RDM_PROTOCOL_VERSION(), "1.00");
    EXPECT_EQ(subDev->DEVICE_MODEL_ID(), "4660");
    EXPECT_EQ(subDev->PRODUCT_CATEGORY(), "$0101 - Luminary - Fixed");
    EXPECT_EQ(subDev->SOFTWARE_VERSION_ID(), "66051");
    EXPECT_EQ(subDev->DMX512_PERSONALITY_USED(), 3);
    EXPECT_EQ(subDev->DMX512_PERSONALITY_COUNT(), 5);
    EXPECT_EQ(subDev->DMX512_FOOTPRINT(), 24);
    EXPECT_EQ(subDev->DMX512_START_ADDRESS(), 101);
    EXPECT_EQ(subDev->SUB_DEVICE_COUNT(), 12);
    EXPECT_EQ(subDev->SENSOR_COUNT(), 2);
}

TEST_F(SubDevTest, StartAddressFFFFReadsZeroAfterRefresh) {
    Info info;
    info.startAddress = 0xFFFF;
    auto subDev = Populate(1, 1, "", info);
    lib.Expect(Get(1, 1, 0x0060), 0, DeviceInfo(info));
    subDev->Refresh();
    EXPECT_EQ(subDev->DMX512_START_ADDRESS(), 0);
}

TEST_F(SubDevTest, FootprintAbove32767OverflowsAndIsReported) {
    Info info;
    info.footprint = 0x8000;
    auto subDev = Populate(1, 1, "", info);
    lib.Expect(Get(1, 1, 0x0060), 0, DeviceInfo(info));
    subDev->Refresh();
    ui.Expect("Overflow", vb::OK, "RDM_SubDev.DMX512_FOOTPRINT (Get)");
    EXPECT_EQ(Thrown([&] { subDev->DMX512_FOOTPRINT(); }).Code(), rt::Overflow);
}

TEST_F(SubDevTest, SubDeviceCategoryHasNumberInFront) {
    Info info;
    info.category = 0x0205;
    auto subDev = Populate(1, 1, "", info);
    lib.Expect(Get(1, 1, 0x0060), 0, DeviceInfo(info));
    subDev->Refresh();
    EXPECT_EQ(subDev->PRODUCT_CATEGORY(), "$0205 - Luminary beam controller");
}

TEST_F(SubDevTest, SensorItemIsReadOnFirstUseAndKept) {
    Info info;
    info.sensors = 1;
    auto subDev = Populate(1, 1, Pids({0x0200, 0x0201}), info);
    lib.ClearCalls();
    lib.Expect(Get(1, 1, 0x0200, B({0})), 0, H("00 00 01 00 FFD8 0190 0000 0064 03") + "Heatsink");
    lib.Expect(Get(1, 1, 0x0201, B({0})), 0, H("00 0019 0014 0030 0000"));
    auto sensor = subDev->SensorItem(1);
    ASSERT_NE(sensor, nullptr);
    EXPECT_EQ(subDev->SensorItem(1), sensor);
    EXPECT_EQ(lib.Commands().size(), 2u);
    EXPECT_EQ(sensor->Description(), "Heatsink");
}

} // namespace
} // namespace zol::rdm::testing
