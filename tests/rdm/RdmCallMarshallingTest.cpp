// RDM_Call, marshalling half: GetValue and SetValue, type checks, parameter data, response checks
// and the two handler tables.

#include "tests/rdm/RdmTestSupport.h"

namespace zol::rdm::testing {
namespace {

class Marshalling : public RdmTest {
protected:
    std::shared_ptr<RDM_Call> Call(int32_t number, int token = 5, int subDevice = 0) {
        if (number >= 0x8000 && number <= 0xFFDF) {
            lib.Expect(Get(token, subDevice, pid::PARAMETER_DESCRIPTION, Word(number)), 0,
                       ParameterDescription(number, 3, 0, 0, 0, "Raw"));
        }
        auto call = std::make_shared<RDM_Call>();
        call->Initialise(static_cast<int16_t>(token), static_cast<uint16_t>(subDevice), number, false);
        lib.ClearCalls();
        return call;
    }
    void ExpectLocalBox(const std::string& text, const std::string& title) { ui.Expect(text, vb::OK, title); }
};

// ---- Corner cases ----

TEST_F(Marshalling, GetDeviceLabelWithByteParameterReportsTypeAndReturnsEmpty) {
    auto call = Call(pid::DEVICE_LABEL);
    ExpectLocalBox("Parameter type \"Byte\" passed\r\nNo parameter expected", "RDM_Call.GetValue");
    const RdmValue result = call->GetValue(RdmValue::Byte(1));
    EXPECT_TRUE(result.IsEmpty());
    EXPECT_TRUE(lib.calls.empty());
    EXPECT_EQ(ui.boxes.at(0).Icon(), vb::Information);
}

TEST_F(Marshalling, GetSensorValueWithoutParameterExpectsByte) {
    auto call = Call(pid::SENSOR_VALUE);
    ExpectLocalBox("No parameter passed\r\nExpecting parameter type \"Byte\"", "RDM_Call.GetValue");
    EXPECT_TRUE(call->GetValue().IsEmpty());
    EXPECT_TRUE(lib.calls.empty());
}

TEST_F(Marshalling, OneByteAnswerToStartAddressIsInvalidDataWithHex) {
    auto call = Call(pid::DMX_START_ADDRESS);
    lib.Expect(Get(5, 0, 0x00F0), 0, B({0x05}));
    ExpectLocalBox("Invalid data returned from call\r\n05", "RDM_Call.GetValue");
    EXPECT_TRUE(call->GetValue().IsEmpty());
}

TEST_F(Marshalling, IdentifyAnswer01IsTrue) {
    auto call = Call(pid::IDENTIFY_DEVICE);
    lib.Expect(Get(5, 0, 0x1000), 0, B({0x01}));
    const RdmValue result = call->GetValue();
    EXPECT_EQ(result.Type(), RdmType::Boolean);
    EXPECT_TRUE(result.AsBool());
}

TEST_F(Marshalling, IdentifyAnswerOfTwoBytesIsUnexpectedData) {
    auto call = Call(pid::IDENTIFY_DEVICE);
    lib.Expect(Get(5, 0, 0x1000), 0, B({0x01, 0x00}));
    ExpectLocalBox("Unexpected data returned from call\r\n01 00", "RDM_Call.GetValue");
    EXPECT_TRUE(call->GetValue().IsEmpty());
}

TEST_F(Marshalling, RealTimeClockAnswerOfSixBytesRaisesResponseFormat) {
    auto call = Call(pid::REAL_TIME_CLOCK);
    lib.Expect(Get(5, 0, 0x0603), 0, H("07E6 0C 1F 17 3B"));
    ui.Expect("Error in received RDM Frame format", vb::OK, "RDM_Call.GetValue");
    EXPECT_EQ(Thrown([&] { call->GetValue(); }).Code(), err::ErrRDM_Response_Format);
}

TEST_F(Marshalling, SetStartAddress512Sends0200) {
    auto call = Call(pid::DMX_START_ADDRESS);
    lib.Expect(Set(5, 0, 0x00F0, B({0x02, 0x00})), 0);
    RdmValue address = RdmValue::Integer(512);
    const RdmValue result = call->SetValue(address);
    EXPECT_EQ(result.Type(), RdmType::Void);
    EXPECT_EQ(address.AsInt(), 0); // the loop worked on the caller's value
}

TEST_F(Marshalling, LongAnswerFFFFFFFEReadsZero) {
    auto call = Call(pid::LAMP_HOURS);
    lib.Expect(Get(5, 0, 0x0401), 0, H("FFFFFFFE"));
    const RdmValue result = call->GetValue();
    EXPECT_EQ(result.Type(), RdmType::Long);
    EXPECT_EQ(result.AsInt(), 0);
}

TEST_F(Marshalling, BroadcastSetAddressesToken0AndKeepsSubDevice) {
    auto call = Call(pid::IDENTIFY_DEVICE, 5, 0x0102);
    lib.Expect(Set(0, 0x0102, 0x1000, B({0x01})), 0);
    EXPECT_EQ(call->SetValue(RdmValue::Boolean(true), true).Type(), RdmType::Void);
    EXPECT_EQ(lib.Commands().at(0), H("39 00 0102 1000 01"));
}

TEST_F(Marshalling, PersonalityAnsweredWithTwoBytesIsInvalidData) {
    auto call = Call(pid::DMX_PERSONALITY);
    lib.Expect(Get(5, 0, 0x00E0), 0, B({0x01, 0x03}));
    ExpectLocalBox("Invalid data returned from call\r\n01 03", "RDM_Call.GetValue");
    EXPECT_TRUE(call->GetValue().IsEmpty());
}

// ---- Types and parameter data ----

TEST_F(Marshalling, HaltEntryOfGetStopsWithoutTransaction) {
    auto call = Call(0x0010);
    EXPECT_THROW(call->GetValue(), test::HaltSignal);
    EXPECT_TRUE(lib.calls.empty());
    EXPECT_TRUE(ui.boxes.empty());
}

TEST_F(Marshalling, HaltEntryOfSetStopsEvenWhenSetable) {
    auto call = Call(0x0400); // DEVICE_HOURS: Set yes, SET halt
    EXPECT_TRUE(call->Setable());
    RdmValue hours = RdmValue::Long(1);
    EXPECT_THROW(call->SetValue(hours), test::HaltSignal);
    EXPECT_TRUE(lib.calls.empty());
}

TEST_F(Marshalling, PidWithoutGetCaseIsNotHandled) {
    auto call = Call(pid::PARAMETER_DESCRIPTION);
    ExpectLocalBox("PID Not handled \"$0051\"", "RDM_Call.GetValue");
    EXPECT_TRUE(call->GetValue().IsEmpty());
}

TEST_F(Marshalling, PidOutsideTableIsNotHandled) {
    auto call = Call(0x0123);
    ExpectLocalBox("PID Not handled \"$0123\"", "RDM_Call.SetValue");
    EXPECT_TRUE(call->SetValue().IsEmpty());
}

TEST_F(Marshalling, ReservedPidGetExpectsEmptyTypeName) {
    auto call = Call(0x7FE0);
    ExpectLocalBox("No parameter passed\r\nExpecting parameter type \"\"", "RDM_Call.GetValue");
    EXPECT_TRUE(call->GetValue().IsEmpty());
}

TEST_F(Marshalling, ReservedPidSetIsNotHandled) {
    auto call = Call(0x7FE0);
    ExpectLocalBox("PID Not handled \"$7FE0\"", "RDM_Call.SetValue");
    EXPECT_TRUE(call->SetValue().IsEmpty());
}

TEST_F(Marshalling, StatusMessagesSetHasNoResultConversion) {
    auto call = Call(pid::STATUS_MESSAGES);
    lib.Expect(Set(5, 0, 0x0030, B({0x02})), 0);
    ExpectLocalBox("Type \"Byte\" conversion, not handled", "RDM_Call.SetValue");
    EXPECT_TRUE(call->SetValue(RdmValue::Byte(2)).IsEmpty());
    EXPECT_EQ(lib.Commands().size(), 1u);
}

TEST_F(Marshalling, GetIntegerParameterGoesOutByInt2Str) {
    auto call = Call(pid::STATUS_ID_DESCRIPTION);
    lib.Expect(Get(5, 0, 0x0031, B({0xFF, 0xFE})), 0, "Fan stalled");
    const RdmValue result = call->GetValue(RdmValue::Integer(-1));
    EXPECT_EQ(result.Type(), RdmType::String);
    EXPECT_EQ(result.AsBytes(), "Fan stalled");
}

TEST_F(Marshalling, IntegerAnswerIsUnsigned) {
    auto call = Call(pid::DMX_START_ADDRESS);
    lib.Expect(Get(5, 0, 0x00F0), 0, B({0xFF, 0xFF}));
    const RdmValue result = call->GetValue();
    EXPECT_EQ(result.Type(), RdmType::Integer);
    EXPECT_EQ(result.AsInt(), 65535);
}

TEST_F(Marshalling, SetLongWorksInPlaceOnCallersValue) {
    auto call = Call(pid::LAMP_HOURS);
    lib.Expect(Set(5, 0, 0x0401, H("01020304")), 0);
    RdmValue hours = RdmValue::Long(0x01020304);
    call->SetValue(hours);
    EXPECT_EQ(hours.AsInt(), 0);
}

TEST_F(Marshalling, SetIntegerAbove16BitsLeavesRemainderInCallersValue) {
    auto call = Call(pid::DMX_START_ADDRESS);
    lib.Expect(Set(5, 0, 0x00F0, H("1170")), 0);
    RdmValue value = RdmValue::Integer(70000);
    call->SetValue(value);
    EXPECT_EQ(value.AsInt(), 1);
}

TEST_F(Marshalling, SetNegativeIntegerIsAnInvalidCallReportedAndRaised) {
    auto call = Call(pid::DMX_START_ADDRESS);
    ui.Expect("Invalid procedure call or argument", vb::OK, "RDM_Call.SetValue");
    RdmValue value = RdmValue::Integer(-1);
    EXPECT_EQ(Thrown([&] { call->SetValue(value); }).Code(), rt::InvalidCall);
    EXPECT_TRUE(lib.calls.empty());
}

TEST_F(Marshalling, SetDateSendsYearHighFirstThenFields) {
    auto call = Call(pid::REAL_TIME_CLOCK);
    lib.Expect(Set(5, 0, 0x0603, H("07E8 02 1D 17 3B 09")), 0);
    RdmValue date = RdmValue::Date({2024, 2, 29, 23, 59, 9});
    EXPECT_EQ(call->SetValue(date).Type(), RdmType::Void);
}

TEST_F(Marshalling, DateAnswerCarriesOverRangeTimeFields) {
    auto call = Call(pid::REAL_TIME_CLOCK);
    lib.Expect(Get(5, 0, 0x0603), 0, H("07E7 0C 1F 18 3C 00")); // 24:60:00 on 31.12.2023
    const RdmValue result = call->GetValue();
    ASSERT_EQ(result.Type(), RdmType::Date);
    EXPECT_EQ(result.AsDate(), (RdmDate{2024, 1, 1, 1, 0, 0}));
}

TEST_F(Marshalling, DateAnswerWithImpossibleDayIsTypeMismatch) {
    auto call = Call(pid::REAL_TIME_CLOCK);
    lib.Expect(Get(5, 0, 0x0603), 0, H("07E7 02 1E 00 00 00"));
    ui.Expect("Type mismatch", vb::OK, "RDM_Call.GetValue");
    EXPECT_EQ(Thrown([&] { call->GetValue(); }).Code(), rt::TypeMismatch);
}

TEST_F(Marshalling, VoidResultWithDataIsNotExpected) {
    auto call = Call(pid::DEVICE_LABEL);
    lib.Expect(Set(5, 0, 0x0082, "Stage left"), 0, B({0x00}));
    ExpectLocalBox("No response data was expected in call\r\n00", "RDM_Call.SetValue");
    EXPECT_TRUE(call->SetValue(RdmValue::String("Stage left")).IsEmpty());
}

TEST_F(Marshalling, ManufacturerPidTakesAndReturnsString) {
    auto call = Call(0x8001, 9, 3);
    lib.Expect(Get(9, 3, 0x8001, H("0A0B")), 0, H("01020304"));
    EXPECT_EQ(call->GetValue(RdmValue::String(H("0A0B"))).AsBytes(), H("01020304"));
    lib.Expect(Set(9, 3, 0x8001, H("FF")), 0, "");
    EXPECT_EQ(call->SetValue(RdmValue::String(H("FF"))).AsBytes(), "");
    ExpectLocalBox("No parameter passed\r\nExpecting parameter type \"String\"", "RDM_Call.GetValue");
    EXPECT_TRUE(call->GetValue().IsEmpty());
}

TEST_F(Marshalling, EmptyValuePassedNamesItsType) {
    auto call = Call(pid::SENSOR_VALUE);
    ExpectLocalBox("Parameter type \"Empty\" passed\r\nExpecting parameter type \"Byte\"",
                   "RDM_Call.GetValue");
    EXPECT_TRUE(call->GetValue(RdmValue()).IsEmpty());
}

TEST_F(Marshalling, StringAnswerKeepsBytes) {
    auto call = Call(0x0080, 5, 0);
    lib.Expect(Get(5, 0, 0x0080), 0, Bytes("Moving\0Head", 11));
    EXPECT_EQ(call->GetValue().AsBytes(), Bytes("Moving\0Head", 11));
}

// ---- The handler tables ----

TEST_F(Marshalling, UnknownPidOnGetReportsTitledWithPidThenRaises) {
    auto call = Call(pid::DEVICE_LABEL);
    lib.Expect(Get(5, 0, 0x0082), 0x20);
    ui.Expect("The PID used is not supported by the remote device", vb::OK, "DEVICE_LABEL ($0082)");
    EXPECT_EQ(Thrown([&] { call->GetValue(); }).Code(), err::NR_UNKNOWN_PID);
}

TEST_F(Marshalling, UnknownPidOnSetIsRaisedSilently) {
    auto call = Call(pid::DEVICE_LABEL);
    lib.Expect(Set(5, 0, 0x0082, "x"), 0x20);
    EXPECT_EQ(Thrown([&] { call->SetValue(RdmValue::String("x")); }).Code(), err::NR_UNKNOWN_PID);
    EXPECT_TRUE(ui.boxes.empty());
}

TEST_F(Marshalling, ChecksumErrorIsSilentOnGetAndReportedOnSet) {
    auto call = Call(pid::IDENTIFY_DEVICE);
    lib.Expect(Get(5, 0, 0x1000), 0x16);
    EXPECT_EQ(Thrown([&] { call->GetValue(); }).Code(), err::ErrRDM_Response_ChkSum);
    EXPECT_TRUE(ui.boxes.empty());
    lib.Expect(Set(5, 0, 0x1000, B({0})), 0x16);
    ui.Expect("Bad Check Sum in RDM response from remote device", vb::OK, "RDM_Call.SetValue");
    EXPECT_EQ(Thrown([&] { call->SetValue(RdmValue::Boolean(false)); }).Code(), err::ErrRDM_Response_ChkSum);
}

TEST_F(Marshalling, UnexpectedResponseIsReportedOnGetAndSilentOnSet) {
    auto call = Call(pid::IDENTIFY_DEVICE);
    lib.Expect(Get(5, 0, 0x1000), 0x1D);
    ui.Expect("A response was received from a remote device\r\nNo response was expected", vb::OK,
              "RDM_Call.GetValue");
    EXPECT_EQ(Thrown([&] { call->GetValue(); }).Code(), err::ErrRDM_Response_UnExpected);
    lib.Expect(Set(5, 0, 0x1000, B({1})), 0x1D);
    EXPECT_EQ(Thrown([&] { call->SetValue(RdmValue::Boolean(true)); }).Code(),
              err::ErrRDM_Response_UnExpected);
    EXPECT_EQ(ui.boxes.size(), 1u);
}

TEST_F(Marshalling, UnsupportedCommandClassIsReportedOnGetAndSilentOnSet) {
    auto call = Call(pid::IDENTIFY_DEVICE);
    lib.Expect(Get(5, 0, 0x1000), 0x25);
    ui.Expect("The Command Class is not supported by the remote device", vb::OK, "RDM_Call.GetValue");
    EXPECT_EQ(Thrown([&] { call->GetValue(); }).Code(), err::NR_UNSUPPORTED_COMMAND_CLASS);
    lib.Expect(Set(5, 0, 0x1000, B({1})), 0x25);
    EXPECT_EQ(Thrown([&] { call->SetValue(RdmValue::Boolean(true)); }).Code(),
              err::NR_UNSUPPORTED_COMMAND_CLASS);
    EXPECT_EQ(ui.boxes.size(), 1u);
}

TEST_F(Marshalling, MissingResponseAndDataOutOfRangeAreSilentBothWays) {
    auto call = Call(pid::DMX_START_ADDRESS);
    lib.Expect(Get(5, 0, 0x00F0), 0x18);
    EXPECT_EQ(Thrown([&] { call->GetValue(); }).Code(), err::ErrRDM_Response_Missing);
    lib.Expect(Set(5, 0, 0x00F0, H("0201")), 0x26);
    EXPECT_EQ(Thrown([&] { call->SetValue(RdmValue::Integer(513)); }).Code(), err::NR_DATA_OUT_OF_RANGE);
    lib.Expect(Get(5, 0, 0x00F0), -2);
    EXPECT_EQ(Thrown([&] { call->GetValue(); }).Code(), err::ErrAPI_DeviceMissig);
    EXPECT_TRUE(ui.boxes.empty());
}

TEST_F(Marshalling, OtherErrorsAreReportedAndRaisedBothWays) {
    auto call = Call(pid::IDENTIFY_DEVICE);
    lib.Expect(Get(5, 0, 0x1000), 0x08);
    ui.Expect("The local device is Busy", vb::OK, "RDM_Call.GetValue");
    EXPECT_EQ(Thrown([&] { call->GetValue(); }).Code(), err::ErrZOL_SystemBusy);
    lib.Expect(Set(5, 0, 0x1000, B({1})), 0x22);
    ui.Expect("The remote device comand failed due to a Hardware Fault", vb::OK, "RDM_Call.SetValue");
    EXPECT_EQ(Thrown([&] { call->SetValue(RdmValue::Boolean(true)); }).Code(), err::NR_HARDWARE_FAULT);
}

} // namespace
} // namespace zol::rdm::testing
