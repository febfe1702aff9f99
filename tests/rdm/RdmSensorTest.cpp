// RDM_Sensor: definition, unit and scale, value records, recording and value texts.

#include "rdm/RDM_Sensor.h"
#include "rdm/RDM_SubDev.h"
#include "tests/rdm/RdmTestSupport.h"

namespace zol::rdm::testing {
namespace {

struct Definition {
    int type = 1;
    int unit = 2;
    int prefix = 0;
    int rangeMin = 0;
    int rangeMax = 1000;
    int limitMin = 100;
    int limitMax = 900;
    int support = 3;
    Bytes description = "Supply";
};

Bytes DefinitionBytes(int number, const Definition& d) {
    return B({number, d.type, d.unit, d.prefix}) + Word(d.rangeMin) + Word(d.rangeMax) + Word(d.limitMin) +
           Word(d.limitMax) + B({d.support}) + d.description;
}

Bytes ValueBytes(int number, int present, int lowest, int highest, int recorded) {
    return B({number}) + Word(present) + Word(lowest) + Word(highest) + Word(recorded);
}

class SensorTest : public RdmTest {
protected:
    void SetUp() override {
        Info info;
        info.sensors = 4;
        ExpectPopulation(6, 1, Pids({0x0200, 0x0201}) + recordPid, DeviceInfo(info));
        subDev = std::make_shared<RDM_SubDev>();
        ASSERT_TRUE(subDev->Initialise(6, 1));
        lib.ClearCalls();
    }

    std::shared_ptr<RDM_Sensor> Make(int item, const Definition& d, const Bytes& value) {
        lib.Expect(Get(6, 1, 0x0200, B({item - 1})), 0, DefinitionBytes(item - 1, d));
        lib.Expect(Get(6, 1, 0x0201, B({item - 1})), 0, value);
        auto sensor = std::make_shared<RDM_Sensor>();
        EXPECT_TRUE(sensor->Initialise(subDev.get(), static_cast<uint8_t>(item)));
        return sensor;
    }

    Bytes recordPid;
    std::shared_ptr<RDM_SubDev> subDev;
};

class RecordingSensorTest : public SensorTest {
protected:
    void SetUp() override {
        recordPid = Pids({0x0202});
        SensorTest::SetUp();
    }
};

// ---- Corner cases ----

TEST_F(SensorTest, Prefix3OnUnit2IsVoltsAtScaleMinus3WithThreeDecimals) {
    Definition d;
    d.prefix = 3;
    auto sensor = Make(1, d, ValueBytes(0, 12345, 0, 0, 0));
    EXPECT_EQ(sensor->Scale(), -3);
    EXPECT_EQ(sensor->UnitName(), "Volts");
    EXPECT_DOUBLE_EQ(sensor->ValueNow(), 12.345);
    EXPECT_EQ(sensor->Str(sensor->ValueNow()), "12.345");
}

TEST_F(SensorTest, Prefix20OnUnit2IsKilovoltsAtScale1) {
    Definition d;
    d.prefix = 20;
    auto sensor = Make(1, d, ValueBytes(0, 5, 0, 0, 0));
    EXPECT_EQ(sensor->Scale(), 1);
    EXPECT_EQ(sensor->UnitName(), "kV");
    EXPECT_DOUBLE_EQ(sensor->ValueNow(), 50.0);
    EXPECT_EQ(sensor->Str(sensor->ValueNow()), "50");
}

TEST_F(SensorTest, Prefix8OnUnit5IsNanoampsAtScaleMinus2) {
    Definition d;
    d.unit = 5;
    d.prefix = 8;
    auto sensor = Make(1, d, ValueBytes(0, 0, 0, 0, 0));
    EXPECT_EQ(sensor->Scale(), -2);
    EXPECT_EQ(sensor->UnitName(), "nA");
}

TEST_F(SensorTest, Prefix17GivesBaseScale1AndPrefix16BaseScaleMinus16) {
    Definition d;
    d.unit = 0;
    d.prefix = 17;
    auto seventeen = Make(1, d, ValueBytes(0, 0, 0, 0, 0));
    EXPECT_EQ(seventeen->Scale(), 1);
    EXPECT_EQ(seventeen->UnitName(), "Not Specified");
    d.prefix = 16;
    auto sixteen = Make(2, d, ValueBytes(1, 0, 0, 0, 0));
    EXPECT_EQ(sixteen->Scale(), -16);
}

TEST_F(SensorTest, Prefixes17And16FallInRangeZeroOfTheUnitTable) {
    // On a unit whose names change with the range, both read the range-0 name with no shift, so
    // the scale is the base scale itself and a raw value scales by it.
    Definition d;
    d.unit = 2;
    d.prefix = 17;
    auto seventeen = Make(1, d, ValueBytes(0, 7, 0, 0, 0));
    EXPECT_EQ(seventeen->UnitName(), "Volts");
    EXPECT_EQ(seventeen->Scale(), 1);
    EXPECT_DOUBLE_EQ(seventeen->ValueNow(), 70.0);
    d.prefix = 16;
    auto sixteen = Make(2, d, ValueBytes(1, 3, 0, 0, 0));
    EXPECT_EQ(sixteen->UnitName(), "Volts");
    EXPECT_EQ(sixteen->Scale(), -16);
    EXPECT_DOUBLE_EQ(sixteen->ValueNow(), 3e-16);
    // Unlike their neighbours 20 (range 1) and 4 (range -1).
    d.prefix = 20;
    EXPECT_EQ(Make(3, d, ValueBytes(2, 0, 0, 0, 0))->UnitName(), "kV");
    d.prefix = 4;
    EXPECT_EQ(Make(4, d, ValueBytes(3, 0, 0, 0, 0))->UnitName(), "mV");
}

TEST_F(SensorTest, DescriptionLosesOneTrailingNul) {
    Definition d;
    d.description = Bytes("ABC\0", 4);
    EXPECT_EQ(Make(1, d, ValueBytes(0, 0, 0, 0, 0))->Description(), "ABC");
    d.description = Bytes("ABC\0\0", 5);
    EXPECT_EQ(Make(2, d, ValueBytes(1, 0, 0, 0, 0))->Description(), Bytes("ABC\0", 4));
}

TEST_F(SensorTest, UpdateTwiceWithSameAnswerIsTrueAtMostOnce) {
    Definition d;
    auto sensor = Make(1, d, ValueBytes(0, 10, 0, 20, 0));
    lib.Expect(Get(6, 1, 0x0201, B({0})), 0, ValueBytes(0, 11, 0, 20, 0));
    lib.Expect(Get(6, 1, 0x0201, B({0})), 0, ValueBytes(0, 11, 0, 20, 0));
    EXPECT_TRUE(sensor->Update(false));
    EXPECT_FALSE(sensor->Update(false));
    EXPECT_DOUBLE_EQ(sensor->ValueNow(), 11.0);
}

TEST_F(SensorTest, RecordNowWithoutRecordSensorsIsFalseWithoutTransaction) {
    Definition d;
    auto sensor = Make(1, d, ValueBytes(0, 0, 0, 0, 0));
    lib.ClearCalls();
    EXPECT_FALSE(sensor->RecordNow());
    EXPECT_TRUE(lib.calls.empty());
}

TEST_F(SensorTest, Unit29AndType33ReadNotDefined) {
    Definition d;
    d.type = 33;
    d.unit = 29;
    auto sensor = Make(1, d, ValueBytes(0, 0, 0, 0, 0));
    EXPECT_EQ(sensor->UnitName(), "Not Defined (29)");
    EXPECT_EQ(sensor->UnitDesc(), "Not Defined (29)");
    EXPECT_EQ(sensor->TypeName(), "Not Defined (33)");
}

// ---- More ----

TEST_F(RecordingSensorTest, RecordNowSetsRecordSensorsWithSensorNumber) {
    Definition d;
    auto sensor = Make(3, d, ValueBytes(2, 0, 0, 0, 0));
    lib.Expect(Set(6, 1, 0x0202, B({2})), 0);
    EXPECT_TRUE(sensor->RecordNow());
}

TEST_F(SensorTest, UpdateWithResetSetsSensorValue) {
    Definition d;
    auto sensor = Make(2, d, ValueBytes(1, 30, 10, 50, 0));
    lib.Expect(Set(6, 1, 0x0201, B({1})), 0, ValueBytes(1, 30, 30, 30, 0));
    EXPECT_TRUE(sensor->Update(true));
    EXPECT_DOUBLE_EQ(sensor->ValueMin(), 30.0);
    EXPECT_DOUBLE_EQ(sensor->ValueMax(), 30.0);
}

TEST_F(SensorTest, DefinitionFieldsAndSignedValues) {
    Definition d;
    d.type = 0;
    d.unit = 1;
    d.prefix = 1;
    d.rangeMin = 0xFE70; // -400
    d.rangeMax = 1250;
    d.limitMin = 0;
    d.limitMax = 800;
    d.support = 1;
    d.description = "Lamp base";
    auto sensor = Make(1, d, ValueBytes(0, 0xFFF6, 0xFF9C, 0x0190, 0x0064));
    EXPECT_EQ(sensor->TypeRef(), 0);
    EXPECT_EQ(sensor->TypeName(), "SENS_TEMPERATURE");
    EXPECT_EQ(sensor->UnitDesc(), "Temperature");
    EXPECT_EQ(sensor->UnitName(), "°");
    EXPECT_TRUE(sensor->Recorder());
    EXPECT_FALSE(sensor->HasDelta());
    EXPECT_DOUBLE_EQ(sensor->RangeMin(), -40.0);
    EXPECT_DOUBLE_EQ(sensor->RangeMax(), 125.0);
    EXPECT_DOUBLE_EQ(sensor->LimitMax(), 80.0);
    EXPECT_DOUBLE_EQ(sensor->ValueNow(), -1.0);
    EXPECT_DOUBLE_EQ(sensor->ValueMin(), -10.0);
    EXPECT_DOUBLE_EQ(sensor->ValueMax(), 40.0);
    EXPECT_DOUBLE_EQ(sensor->ValueRec(), 10.0);
    EXPECT_EQ(sensor->Str(sensor->ValueNow()), "-1.0");
    EXPECT_EQ(sensor->DataClass(), "RDM_Sensor");
}

TEST_F(SensorTest, HasDeltaIsBit1OfSupportByte) {
    Definition d;
    d.support = 2;
    auto sensor = Make(1, d, ValueBytes(0, 0, 0, 0, 0));
    EXPECT_TRUE(sensor->HasDelta());
    EXPECT_FALSE(sensor->Recorder());
}

TEST_F(SensorTest, StrOfOtherPrefixesIsPlainDecimal) {
    Definition d;
    d.prefix = 5; // range -1: millivolts, shift 3, scale -2
    auto sensor = Make(1, d, ValueBytes(0, 1234, 0, 0, 0));
    EXPECT_EQ(sensor->UnitName(), "mV");
    EXPECT_EQ(sensor->Scale(), -2);
    EXPECT_EQ(sensor->Str(sensor->ValueNow()), "12.34");
}

TEST_F(SensorTest, MissingDefinitionRetriedThenRefusedRaisesSubDeviceError) {
    lib.Expect(Get(6, 1, 0x0200, B({0})), 0x18);
    ui.Expect("Expected reponse from remote device not received", vb::Cancel, "Remote Equipment Sensor");
    RDM_Sensor sensor;
    EXPECT_EQ(Thrown([&] { sensor.Initialise(subDev.get(), 1); }).Code(), err::ErrSYS_SubDev);
}

TEST_F(SensorTest, UpdateErrorsReachTheCallerSilentlyAndKeepTheRecord) {
    Definition d;
    auto sensor = Make(1, d, ValueBytes(0, 7, 0, 0, 0));
    lib.Expect(Get(6, 1, 0x0201, B({0})), 0x18);
    EXPECT_EQ(Thrown([&] { sensor->Update(false); }).Code(), err::ErrRDM_Response_Missing);
    EXPECT_TRUE(ui.boxes.empty());
    EXPECT_DOUBLE_EQ(sensor->ValueNow(), 7.0);
}

} // namespace
} // namespace zol::rdm::testing
