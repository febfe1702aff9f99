// The wrappers of the library functions and of the local device commands: request bytes, reply
// parsing, error codes and the paths that end the program.
#include "device_link/core/Client.h"
#include "device_link/core/DeviceLibrary.h"
#include "device_link/core/ErrTrap.h"
#include "tests/support/FakeClock.h"
#include "tests/support/ScriptedDeviceLibrary.h"
#include "tests/support/ScriptedUi.h"

#include <gtest/gtest.h>

namespace zol::test {
namespace {

class ClientWrappersTest : public ::testing::Test {
protected:
    void SetUp() override {
        ErrTrap::ResetForTest();
        Client::ResetStateForTest();
    }
    ScriptedUi ui_;
    ScriptedDeviceLibrary library_;
    FakeClock clock_;
};

ZolError ErrorOf(const std::function<void()>& body) {
    try {
        body();
    } catch (const ZolError& e) {
        return e;
    }
    ADD_FAILURE() << "no ZolError was thrown";
    return ZolError(0, "", "");
}

// ---- Library functions ----

TEST_F(ClientWrappersTest, GetPortCountReturnsTheCount) {
    library_.portNames = {"A", "B", "C"};
    EXPECT_EQ(Client::GetPortCount(), 3);
}

TEST_F(ClientWrappersTest, GetPortCountRaisesTheBareMagnitudeWithout0x100) {
    library_.portCountResult = -2;
    const ZolError e = ErrorOf([] { Client::GetPortCount(); });
    EXPECT_EQ(e.Code(), 0x1002);
    EXPECT_EQ(e.Source(), "API-GetPortCount");
}

TEST_F(ClientWrappersTest, ALibraryThatCouldNotBeLoadedNamesItselfAndTheReasonWhenPortsAreCounted) {
    library_.portCountResult = kLibraryUnavailable;
    library_.lastError =
        "Device library could not be loaded: /opt/zol/libmissing.so: cannot open shared object file";
    const ZolError e = ErrorOf([] { Client::GetPortCount(); });
    EXPECT_EQ(e.Code(), err::ErrAPI_Unexpected);
    EXPECT_EQ(e.Source(), "API-GetPortCount");
    EXPECT_EQ(ErrTrap::Message(e.Code()),
              "Unexpected Error returned from Application interface\r\n"
              "Device library could not be loaded: /opt/zol/libmissing.so: cannot open "
              "shared object file");
}

TEST_F(ClientWrappersTest, GetPortNameReturnsTheFirstResultCharacters) {
    library_.portNames = {"ZOL USB 1", "ZOL USB 2"};
    EXPECT_EQ(Client::GetPortName(2), "ZOL USB 2");
    ASSERT_EQ(library_.calls.size(), 1u);
    EXPECT_EQ(library_.calls[0].argument, 2);
    library_.portNameResult = 3;
    EXPECT_EQ(Client::GetPortName(1), "ZOL");
}

TEST_F(ClientWrappersTest, GetPortNameRaisesTheMagnitudeOrredWith0x100) {
    library_.portNameResult = -2;
    const ZolError e = ErrorOf([] { Client::GetPortName(1); });
    EXPECT_EQ(e.Code(), 0x1102);
    EXPECT_EQ(e.Source(), "API-GetPortName");
    library_.portNameResult = -0x103;
    EXPECT_EQ(ErrorOf([] { Client::GetPortName(1); }).Code(), 0x1103);
}

TEST_F(ClientWrappersTest, GetPortNameNeverReadsPastItsBuffer) {
    library_.portNameResult = 5000;
    EXPECT_LE(Client::GetPortName(1).size(), 64u);
}

TEST_F(ClientWrappersTest, OpenPortPassesTheIndexAndRaisesMagnitudePlus256) {
    Client::OpenPort(2);
    EXPECT_EQ(library_.calls.back().function, "OpenPort");
    EXPECT_EQ(library_.calls.back().argument, 2);
    library_.openResult = -1;
    const ZolError e = ErrorOf([] { Client::OpenPort(1); });
    EXPECT_EQ(e.Code(), 0x1101);
    EXPECT_EQ(e.Source(), "USB-OpenPort");
}

TEST_F(ClientWrappersTest, ClosePortRaisesMagnitudePlus256AsDisconnect) {
    Client::ClosePort();
    EXPECT_EQ(library_.calls.back().function, "FreePort");
    library_.freeResult = -14;
    const ZolError e = ErrorOf([] { Client::ClosePort(); });
    EXPECT_EQ(e.Code(), 0x110E);
    EXPECT_EQ(e.Source(), "USB-Disconnect");
}

TEST_F(ClientWrappersTest, LibraryVersionReturnsTheText) {
    library_.version = "KDI 3.0";
    EXPECT_EQ(Client::LibraryVersion(), "KDI 3.0");
}

TEST_F(ClientWrappersTest, LibraryVersionRaisesTheBareMagnitudeFromThePluginFile) {
    library_.versionResult = -4;
    const ZolError e = ErrorOf([] { Client::LibraryVersion(); });
    EXPECT_EQ(e.Code(), 0x1004);
    EXPECT_EQ(e.Source(), "zol-plugin");
}

TEST_F(ClientWrappersTest, LibraryErrorReturnsTheTextUnchecked) {
    library_.lastError = "Port busy";
    EXPECT_EQ(Client::LibraryError(), "Port busy");
}

TEST_F(ClientWrappersTest, ReProgramPassesThePathAndRaisesMagnitudePlus256) {
    Client::ReProgram("/tmp/image.FUD");
    EXPECT_EQ(library_.calls.back().function, "Reprogram");
    EXPECT_EQ(library_.calls.back().request, "/tmp/image.FUD");
    library_.reprogramResult = -7;
    const ZolError e = ErrorOf([] { Client::ReProgram("x.FUD"); });
    EXPECT_EQ(e.Code(), 0x1107);
    EXPECT_EQ(e.Source(), "ZOL_ReProgram");
}

TEST_F(ClientWrappersTest, ProgStateReturnsTheResultAndRaisesMagnitudePlus256) {
    library_.progStates = {42};
    EXPECT_EQ(Client::ProgState(), 42);
    library_.progStates = {-8};
    const ZolError e = ErrorOf([] { Client::ProgState(); });
    EXPECT_EQ(e.Code(), 0x1108);
    EXPECT_EQ(e.Source(), "ZOL_ProgStatus");
}

// ---- Identity commands ----

TEST_F(ClientWrappersTest, DeviceNameSendsCommand0Alone) {
    library_.Expect(H("00"), 0, "DMX-ZOL");
    EXPECT_EQ(Client::DeviceName(), "DMX-ZOL");
}

TEST_F(ClientWrappersTest, DeviceModelSendsOption1AndReadsLowByteFirst) {
    library_.Expect(H("00 01"), 0, H("02 01"));
    EXPECT_EQ(Client::DeviceModel(), 0x0102);
}

TEST_F(ClientWrappersTest, DeviceModelIs1WhenTheFirmwareRefusesTheOption) {
    library_.Expect(H("00 01"), 5);
    EXPECT_EQ(Client::DeviceModel(), 1);
    EXPECT_TRUE(ui_.boxes.empty());
}

TEST_F(ClientWrappersTest, DeviceModelRaisesAnyOtherFailureAgain) {
    library_.Expect(H("00 01"), -2);
    EXPECT_EQ(ErrorOf([] { Client::DeviceModel(); }).Code(), 0x1102);
}

TEST_F(ClientWrappersTest, HardwareRevSendsCommand1) {
    library_.Expect(H("01"), 0, "Rev B");
    EXPECT_EQ(Client::HardwareRev(), "Rev B");
}

TEST_F(ClientWrappersTest, FirmwareRevSendsOption1AndDropsOneTrailingNul) {
    library_.Expect(H("02 01"), 0, Bytes("0.3.10\0\0", 8));
    EXPECT_EQ(Client::FirmwareRev(), Bytes("0.3.10\0", 7));
    library_.Expect(H("02 01"), 0, "0.3.10");
    EXPECT_EQ(Client::FirmwareRev(), "0.3.10");
}

TEST_F(ClientWrappersTest, SerialNumberSendsOption1AndDropsOneTrailingNul) {
    library_.Expect(H("03 01"), 0, Bytes("00123\0", 6));
    EXPECT_EQ(Client::SerialNumber(), "00123");
}

TEST_F(ClientWrappersTest, UniqueIdSendsCommand4) {
    library_.Expect(H("04"), 0, H("4B 52 00 00 00 01"));
    EXPECT_EQ(Client::UniqueId(), H("4B 52 00 00 00 01"));
}

// ---- Frame timing ----

TEST_F(ClientWrappersTest, GetFrameRateReturnsTheChosenByte) {
    for (int index = 1; index <= 3; ++index) {
        library_.Expect(H("11"), 0, H("28 01 2C"));
    }
    EXPECT_EQ(Client::GetFrameRate(1), 0x28);
    EXPECT_EQ(Client::GetFrameRate(2), 0x01);
    EXPECT_EQ(Client::GetFrameRate(3), 0x2C);
}

TEST_F(ClientWrappersTest, GetDelayTimeReturnsTheChosenByte) {
    library_.Expect(H("17"), 0, H("0A 00 FF"));
    EXPECT_EQ(Client::GetDelayTime(3), 0xFF);
}

TEST_F(ClientWrappersTest, GetFrameRateOnAWrongLengthWarnsAndEndsTheProgram) {
    library_.Expect(H("11"), 0, H("28 01"));
    ui_.Expect("Un expected response from Local device", vb::OK, "Get Frame Rate");
    EXPECT_THROW(Client::GetFrameRate(1), HaltSignal);
    EXPECT_EQ(ui_.halts, 1);
    ASSERT_EQ(ui_.boxes.size(), 1u);
    EXPECT_EQ(ui_.boxes[0].style, vb::Exclamation);
}

TEST_F(ClientWrappersTest, GetDelayTimeOnAWrongLengthWarnsAndEndsTheProgram) {
    library_.Expect(H("17"), 0, H("01 02 03 04"));
    ui_.Expect("Un expected response from Local device", vb::OK, "Get Delay Time");
    EXPECT_THROW(Client::GetDelayTime(2), HaltSignal);
    EXPECT_EQ(ui_.boxes.at(0).style, vb::Exclamation);
}

TEST_F(ClientWrappersTest, GetMarkTimeOnAWrongLengthWarnsAndEndsTheProgram) {
    library_.Expect(H("13"), 0, H("01 02 03"));
    ui_.Expect("Un expected response from Local device", vb::OK, "Get Mark Time");
    EXPECT_THROW(Client::GetMarkTime(1), HaltSignal);
}

TEST_F(ClientWrappersTest, GetBreakTimeOnAWrongLengthWarnsAndEndsTheProgram) {
    library_.Expect(H("15"), 0, "");
    ui_.Expect("Un expected response from Local device", vb::OK, "Get Break Time");
    EXPECT_THROW(Client::GetBreakTime(1), HaltSignal);
}

TEST_F(ClientWrappersTest, GetBreakTimeOn0x58And0x82Gives0x0258) {
    library_.Expect(H("15"), 0, H("58 82 00 00 00 00"));
    EXPECT_EQ(Client::GetBreakTime(1), 0x0258);
}

TEST_F(ClientWrappersTest, GetMarkTimeReadsTheChosenPairLowFirstWithTheTopBitMasked) {
    library_.Expect(H("13"), 0, H("08 00 04 80 FF FF"));
    library_.Expect(H("13"), 0, H("08 00 04 80 FF FF"));
    library_.Expect(H("13"), 0, H("08 00 04 80 FF FF"));
    EXPECT_EQ(Client::GetMarkTime(1), 8);
    EXPECT_EQ(Client::GetMarkTime(2), 4);
    EXPECT_EQ(Client::GetMarkTime(3), 0x7FFF);
}

TEST_F(ClientWrappersTest, TimingIndexOutsideOneToThreeIsAnInvalidCall) {
    library_.Expect(H("11"), 0, H("28 01 2C"));
    EXPECT_THROW(Client::GetFrameRate(4), RuntimeFault);
}

TEST_F(ClientWrappersTest, SetFrameRateSendsOneByte) {
    library_.Expect(H("12 2C"), 0);
    Client::SetFrameRate(44);
}

TEST_F(ClientWrappersTest, SetMarkTimeSendsSixteenBitsLowFirst) {
    library_.Expect(H("14 58 02"), 0);
    Client::SetMarkTime(0x0258);
}

TEST_F(ClientWrappersTest, SetBreakTimeSendsSixteenBitsLowFirst) {
    library_.Expect(H("16 B0 00"), 0);
    Client::SetBreakTime(176);
}

TEST_F(ClientWrappersTest, SetDelayTimeSendsOneByte) {
    library_.Expect(H("18 0A"), 0);
    Client::SetDelayTime(10);
}

TEST_F(ClientWrappersTest, SetFrameRateOfMoreThanAByteIsAnInvalidCallAndSendsNothing) {
    EXPECT_THROW(Client::SetFrameRate(256), RuntimeFault);
    EXPECT_THROW(Client::SetDelayTime(-1), RuntimeFault);
    EXPECT_TRUE(library_.calls.empty());
}

// ---- Levels and input ----

TEST_F(ClientWrappersTest, SendBlockPutsAZeroByteInFront) {
    library_.Expect(H("22 00 00 10 20 30"), 0);
    Client::SendBlock(H("00 10 20 30"));
}

TEST_F(ClientWrappersTest, StopOutputSendsCommand35) {
    library_.Expect(H("23"), 0);
    Client::StopOutput();
}

TEST_F(ClientWrappersTest, SendChannelSendsSlotLowSlotHighLevel) {
    library_.Expect(H("25 01 00 FF"), 0);
    Client::SendChannel(1, 255);
    library_.Expect(H("25 00 02 07"), 0);
    Client::SendChannel(512, 7);
}

TEST_F(ClientWrappersTest, ReadInputSendsOption1AndReturnsTheReply) {
    library_.Expect(H("28 01"), 0, H("00 01 02"));
    EXPECT_EQ(Client::ReadInput(), H("00 01 02"));
}

// ---- Discovery ----

TEST_F(ClientWrappersTest, DiscoveryMuteSendsTheUid) {
    library_.Expect(H("31 12 34 56 78 9A BC"), 0);
    Client::DiscoveryMute(H("12 34 56 78 9A BC"));
}

TEST_F(ClientWrappersTest, DiscoveryMuteRefusesAnIdentOfOtherThanSixAndSendsNothing) {
    ui_.Expect("Ident Length = 5", vb::OK, "Invalid Identity");
    Client::DiscoveryMute(H("12 34 56 78 9A"));
    EXPECT_TRUE(library_.calls.empty());
    ASSERT_EQ(ui_.boxes.size(), 1u);
    EXPECT_EQ(ui_.boxes[0].style, vb::OKOnly);
}

TEST_F(ClientWrappersTest, DiscoveryStartSendsCommand51) {
    library_.Expect(H("33"), 0);
    Client::DiscoveryStart();
}

TEST_F(ClientWrappersTest, DiscoveryStatusIsCountPlus256TimesState) {
    library_.Expect(H("34"), 0, H("05 02"));
    const int32_t status = Client::DiscoveryStatus();
    EXPECT_EQ(status, 5 + 256 * 2);
    EXPECT_EQ(status % 256, 5);
}

TEST_F(ClientWrappersTest, DiscoveryStatusOfLessThanTwoBytesIsZero) {
    library_.Expect(H("34"), 0, H("05"));
    EXPECT_EQ(Client::DiscoveryStatus(), 0);
}

TEST_F(ClientWrappersTest, DiscoveryItemSendsTheIndexAndReturnsTheUid) {
    library_.Expect(H("35 03"), 0, H("4B 52 00 00 00 03"));
    EXPECT_EQ(Client::DiscoveryItem(3), H("4B 52 00 00 00 03"));
}

// ---- RDM ----

TEST_F(ClientWrappersTest, RdmGetSendsTokenSubDeviceAndPidHighByteFirst) {
    library_.Expect(H("38 07 01 02 00 F0"), 0, H("00 01"));
    EXPECT_EQ(Client::RdmGet(7, 0x0102, 0xF0), H("00 01"));
}

TEST_F(ClientWrappersTest, RdmGetSendsOnlyTheLowSixteenBitsOfThePid) {
    library_.Expect(H("38 01 00 00 80 01 AA"), 0);
    Client::RdmGet(1, 0, 0x18001, H("AA"));
}

TEST_F(ClientWrappersTest, RdmSetSendsTheHeaderThenTheParameterData) {
    library_.Expect(H("39 00 00 00 04 03 01 02 03"), 0);
    Client::RdmSet(0, 0, 0x0403, H("01 02 03"));
}

TEST_F(ClientWrappersTest, RdmQueuedSendsTheTokenAloneForStatusTypeZero) {
    library_.Expect(H("3A 04"), 0, H("00 60 01"));
    EXPECT_EQ(Client::RdmQueued(4), H("00 60 01"));
}

TEST_F(ClientWrappersTest, RdmQueuedSendsTheStatusTypeWhenNotZero) {
    library_.Expect(H("3A 04 02"), 0);
    Client::RdmQueued(4, 2);
}

TEST_F(ClientWrappersTest, RdmQueuedSetsTheLatchToWhetherMoreAreQueued) {
    library_.Expect(H("38 01 00 00 00 60"), 17, H("01"));
    Client::RdmGet(1, 0, 0x60);
    EXPECT_TRUE(Client::QueuePending());
    library_.Expect(H("3A 01"), 17, H("00 20"));
    Client::RdmQueued(1);
    EXPECT_TRUE(Client::QueuePending());
    library_.Expect(H("3A 01"), 0, H("00 20"));
    Client::RdmQueued(1);
    EXPECT_FALSE(Client::QueuePending());
}

TEST_F(ClientWrappersTest, SetBroadcastMaskSendsHighThenLow) {
    library_.Expect(H("3D 12 34"), 0);
    Client::SetBroadcastMask(0x1234);
    library_.Expect(H("3D FF FF"), 0);
    Client::SetBroadcastMask(0xFFFF);
}

TEST_F(ClientWrappersTest, SetBroadcastMaskOutOfRangeShowsACriticalMessageAndSendsNothing) {
    ui_.Expect("Broadcast Mask value is out of range", vb::OK);
    Client::SetBroadcastMask(0x10000);
    EXPECT_TRUE(library_.calls.empty());
    ASSERT_EQ(ui_.boxes.size(), 1u);
    EXPECT_EQ(ui_.boxes[0].style, vb::Critical);
}

TEST_F(ClientWrappersTest, ApplyDerogationSendsItsThreeBytes) {
    library_.Expect(H("48 AB CD EF"), 0);
    Client::ApplyDerogation(H("AB CD EF"));
}

// ---- Firmware build and memory ----

TEST_F(ClientWrappersTest, FirmwareBuildReadsFourBytesLowFirst) {
    library_.Expect(H("4F"), 0, H("78 56 34 12"));
    EXPECT_EQ(Client::FirmwareBuild(), 0x12345678);
}

TEST_F(ClientWrappersTest, FirmwareBuildOfAWrongLengthShowsUnexpectedResponseAndGivesZero) {
    library_.Expect(H("4F"), 0, H("78 56"));
    ui_.Expect("Unexpected response form device", vb::OK, "Firmware Build N°");
    EXPECT_EQ(Client::FirmwareBuild(), 0);
}

TEST_F(ClientWrappersTest, FirmwareBuildThatOverflowsGivesZeroWithoutAMessage) {
    library_.Expect(H("4F"), 0, H("01 00 00 80"));
    EXPECT_EQ(Client::FirmwareBuild(), 0);
    EXPECT_TRUE(ui_.boxes.empty());
}

TEST_F(ClientWrappersTest, FirmwareBuildLeavesDeviceErrorsToTheCaller) {
    library_.Expect(H("4F"), 2);
    EXPECT_EQ(ErrorOf([] { Client::FirmwareBuild(); }).Code(), 0x1002);
}

TEST_F(ClientWrappersTest, ReadMemorySendsAddressAndLengthLowFirst) {
    library_.Expect(H("E0 00 10 04 00"), 0, H("01 02 03 04"));
    EXPECT_EQ(Client::ReadMemory(0x1000, 4), H("01 02 03 04"));
}

TEST_F(ClientWrappersTest, ReadRegistersSendsAddressAndLengthLowFirst) {
    library_.Expect(H("E2 34 12 02 00"), 0, H("AA BB"));
    EXPECT_EQ(Client::ReadRegisters(0x1234, 2), H("AA BB"));
}

} // namespace
} // namespace zol::test
