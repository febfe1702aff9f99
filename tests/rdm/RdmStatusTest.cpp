// RDM_Status: a nine-byte status message turned into a sentence.

#include "rdm/RDM_Status.h"
#include "rdm/RDM_SubDev.h"
#include "tests/rdm/RdmTestSupport.h"

namespace zol::rdm::testing {
namespace {

Bytes Record(int subDevice, int type, int id, int value1, int value2) {
    return Word(subDevice) + B({type}) + Word(id) + Word(value1) + Word(value2);
}

class StatusTest : public RdmTest {
protected:
    std::shared_ptr<RDM_SubDev> SubDev(const Bytes& supported) {
        Info info;
        info.sensors = 3;
        ExpectPopulation(2, 4, supported, DeviceInfo(info));
        auto subDev = std::make_shared<RDM_SubDev>();
        EXPECT_TRUE(subDev->Initialise(2, 4));
        lib.ClearCalls();
        return subDev;
    }

    RDM_Status Parse(const Bytes& record, std::shared_ptr<RDM_SubDev> subDev) {
        RDM_Status status;
        status.Initialise(record, std::move(subDev));
        return status;
    }
};

// ---- Corner cases ----

TEST_F(StatusTest, Id33NamesTheSensorByItsDescription) {
    auto subDev = SubDev(Pids({0x0200, 0x0201}));
    lib.Expect(Get(2, 4, 0x0200, B({1})), 0, H("01 00 01 00 FFD8 0190 0000 0064 00") + "Heatsink");
    lib.Expect(Get(2, 4, 0x0201, B({1})), 0, H("01 002D 0000 0000 0000"));
    const RDM_Status status = Parse(Record(4, 3, 33, 2, 45), subDev);
    EXPECT_EQ(status.Message(), "Sensor Heatsink over temp at 45 °C");
    EXPECT_EQ(lib.Commands().size(), 2u);
}

TEST_F(StatusTest, Id1WithValue257ReadsPanFailedCalibration) {
    auto subDev = SubDev("");
    EXPECT_EQ(Parse(Record(0, 4, 1, 257, 0), subDev).Message(), "Pan failed calibration");
}

TEST_F(StatusTest, Id1WithValue3ReadsUndescribedSlotFailedCalibration) {
    auto subDev = SubDev("");
    EXPECT_EQ(Parse(Record(0, 4, 1, 3, 0), subDev).Message(), "Undescribed Slot failed calibration");
}

TEST_F(StatusTest, Id52RepeatsFirstTextForItsPercentA) {
    auto subDev = SubDev("");
    EXPECT_EQ(Parse(Record(0, 3, 52, 1, 9), subDev).Message(), "Phase 1 under currents at 1.");
}

TEST_F(StatusTest, Id55WithValue12Reads12Amps) {
    auto subDev = SubDev("");
    EXPECT_EQ(Parse(Record(0, 2, 55, 12, 0), subDev).Message(), "12 Amps");
}

TEST_F(StatusTest, Id17WithoutPlaceholderReadsLampDoused) {
    auto subDev = SubDev("");
    EXPECT_EQ(Parse(Record(0, 2, 17, 5, 6), subDev).Message(), "Lamp doused");
}

TEST_F(StatusTest, UnknownIdWithoutStatusIdDescriptionHasEmptyMessage) {
    auto subDev = SubDev("");
    const RDM_Status status = Parse(Record(0, 2, 0x0099, 1, 2), subDev);
    EXPECT_EQ(status.Message(), "");
    EXPECT_TRUE(lib.calls.empty());
}

TEST_F(StatusTest, Id33WithValue0FailsConvertingTheSensorItemAndIsReported) {
    auto subDev = SubDev(Pids({0x0200, 0x0201}));
    ui.Expect("Overflow", vb::OK, "RDM_Sensor.Initialise");
    ui.Expect("Overflow", vb::OK, "RDM_Status.ParsData");
    ui.Expect("Overflow", vb::OK, "RDM_Status.Initialise");
    RDM_Status status;
    EXPECT_EQ(Thrown([&] { status.Initialise(Record(4, 3, 33, 0, 45), subDev); }).Code(), rt::Overflow);
    EXPECT_TRUE(lib.calls.empty());
}

TEST_F(StatusTest, StatusNumber1ReadsUnknown) {
    auto subDev = SubDev("");
    const RDM_Status status = Parse(Record(0, 1, 17, 0, 0), subDev);
    EXPECT_EQ(status.StatusNum(), 1);
    EXPECT_EQ(status.StatusTxt(), "1 - Unknown");
}

// ---- More ----

TEST_F(StatusTest, FieldsOfTheRecord) {
    auto subDev = SubDev("");
    const RDM_Status status = Parse(Record(12, 2, 0x0038, 0x00E6, 0x1234), subDev);
    EXPECT_EQ(status.SubRef(), 12);
    EXPECT_EQ(status.StatusTxt(), "2 - Advisory");
    EXPECT_EQ(status.MsgID(), "$0038");
    EXPECT_EQ(status.Value1(), "$00E6");
    EXPECT_EQ(status.Value2(), "$1234");
    EXPECT_EQ(status.Message(), "230 Volts");
    EXPECT_EQ(status.DataClass(), "RDM_Status");
}

TEST_F(StatusTest, UnknownIdAsksStatusIdDescriptionForTheTemplate) {
    auto subDev = SubDev(Pids({0x0031}));
    lib.Expect(Get(2, 4, 0x0031, Word(0x0123)), 0, "Fan %d stalled at %x rpm");
    EXPECT_EQ(Parse(Record(4, 4, 0x0123, 2, 0x0BB8), subDev).Message(), "Fan 2 stalled at $0BB8 rpm");
}

TEST_F(StatusTest, IdFrom8000Subtracts65535BeforeAsking) {
    auto subDev = SubDev(Pids({0x0031}));
    lib.Expect(Get(2, 4, 0x0031, Word(0x8000)), 0, "Custom");
    lib.Expect(Get(2, 4, 0x0031, Word(0x0000)), 0, "Other");
    EXPECT_EQ(Parse(Record(4, 4, 0x8000, 0, 0), subDev).Message(), "Custom");
    EXPECT_EQ(Parse(Record(4, 4, 0xFFFF, 0, 0), subDev).Message(), "Other");
}

TEST_F(StatusTest, Id53FillsBothValues) {
    auto subDev = SubDev("");
    EXPECT_EQ(Parse(Record(0, 3, 53, 2, 120), subDev).Message(), "Phase 2 is at 120°");
}

TEST_F(StatusTest, SlotPlaceholderOfReadyMessage) {
    auto subDev = SubDev("");
    EXPECT_EQ(Parse(Record(0, 2, 80, 0x0408, 0), subDev).Message(), "Douser ready");
}

TEST_F(StatusTest, ShortRecordIsReportedByTheStandardPattern) {
    auto subDev = SubDev("");
    ui.Expect("Invalid procedure call or argument", vb::OK, "RDM_Status.ParsData");
    ui.Expect("Invalid procedure call or argument", vb::OK, "RDM_Status.Initialise");
    RDM_Status status;
    EXPECT_EQ(Thrown([&] { status.Initialise(H("0000 02 0011 0000 00"), subDev); }).Code(), rt::InvalidCall);
}

} // namespace
} // namespace zol::rdm::testing
