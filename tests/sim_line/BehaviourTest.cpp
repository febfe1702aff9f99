// What each parameter of a virtual responder answers, in the layouts of ANSI E1.20.

#include "Responders.h"

namespace zol::sim::line::test {
namespace {

using namespace rdm;

class Behaviour : public ::testing::Test {
protected:
    void SetUp() override { stage = MakeStage(); }

    Answer G(uint16_t pid, const Bytes& data = {}, uint16_t sub = 0) {
        return Get(*stage.line, stage.spot, pid, data, sub);
    }
    Answer S(uint16_t pid, const Bytes& data = {}, uint16_t sub = 0) {
        return Set(*stage.line, stage.spot, pid, data, sub);
    }
    Bytes Value(uint16_t pid, const Bytes& data = {}, uint16_t sub = 0) {
        const Answer answer = G(pid, data, sub);
        EXPECT_TRUE(answer.status == status::kOk || answer.status == status::kQueued)
            << PidName(pid) << " status " << answer.status;
        return answer.data;
    }
    int16_t Signed(const Bytes& data, size_t at) { return int16_t(GetU16(data, at)); }

    StageLine stage;
};

TEST_F(Behaviour, DeviceInfo) {
    EXPECT_EQ(Value(DEVICE_INFO), B({
                                      0x01, 0x00,             // protocol 1.0
                                      0x01, 0x01,             // model id
                                      0x01, 0x01,             // category
                                      0x02, 0x03, 0x00, 0x01, // software version id
                                      0x00, 0x03,             // footprint of personality 1
                                      0x01, 0x03,             // personality 1 of 3
                                      0x00, 0x0A,             // start address 10
                                      0x00, 0x02,             // two sub devices
                                      0x02,                   // two sensors
                                  }));
    const Bytes sub = Value(DEVICE_INFO, {}, 1);
    ASSERT_EQ(sub.size(), 19u);
    EXPECT_EQ(GetU16(sub, 10), 1u) << "footprint";
    EXPECT_EQ(GetU16(sub, 14), 20u) << "first cell at 20";
    EXPECT_EQ(GetU16(Value(DEVICE_INFO, {}, 2), 14), 21u) << "the next follows on";
    EXPECT_EQ(GetU16(sub, 16), 0u);
    EXPECT_EQ(uint8_t(sub[18]), 1u);
}

TEST_F(Behaviour, SupportedParametersListsTheOptionalOnesInOrder) {
    const Bytes list = Value(SUPPORTED_PARAMETERS);
    std::vector<uint16_t> pids;
    for (size_t i = 0; i + 1 < list.size(); i += 2)
        pids.push_back(GetU16(list, i));
    EXPECT_TRUE(std::is_sorted(pids.begin(), pids.end()));
    auto has = [&](uint16_t pid) { return std::find(pids.begin(), pids.end(), pid) != pids.end(); };
    for (uint16_t pid : std::initializer_list<uint16_t>{DEVICE_LABEL,
                                                        DEVICE_MODEL_DESCRIPTION,
                                                        MANUFACTURER_LABEL,
                                                        PRODUCT_DETAIL_ID_LIST,
                                                        DMX_PERSONALITY,
                                                        DMX_PERSONALITY_DESCRIPTION,
                                                        SLOT_INFO,
                                                        SLOT_DESCRIPTION,
                                                        DEFAULT_SLOT_VALUE,
                                                        SENSOR_DEFINITION,
                                                        SENSOR_VALUE,
                                                        RECORD_SENSORS,
                                                        DEVICE_HOURS,
                                                        LAMP_HOURS,
                                                        LAMP_STRIKES,
                                                        LAMP_STATE,
                                                        LAMP_ON_MODE,
                                                        DEVICE_POWER_CYCLES,
                                                        DISPLAY_INVERT,
                                                        DISPLAY_LEVEL,
                                                        PAN_INVERT,
                                                        TILT_INVERT,
                                                        PAN_TILT_SWAP,
                                                        REAL_TIME_CLOCK,
                                                        LANGUAGE_CAPABILITIES,
                                                        LANGUAGE,
                                                        POWER_STATE,
                                                        PERFORM_SELFTEST,
                                                        SELF_TEST_DESCRIPTION,
                                                        FACTORY_DEFAULTS,
                                                        RESET_DEVICE,
                                                        COMMS_STATUS,
                                                        STATUS_MESSAGES,
                                                        STATUS_ID_DESCRIPTION,
                                                        CLEAR_STATUS_ID,
                                                        QUEUED_MESSAGE,
                                                        PARAMETER_DESCRIPTION,
                                                        BOOT_SOFTWARE_VERSION_ID,
                                                        BOOT_SOFTWARE_VERSION_LABEL,
                                                        0x8001,
                                                        0x8002,
                                                        0x8100,
                                                        0x8101,
                                                        0x8102,
                                                        0x8200})
        EXPECT_TRUE(has(pid)) << PidName(pid) << " " << pid;
    for (uint16_t pid :
         std::initializer_list<uint16_t>{DEVICE_INFO, SUPPORTED_PARAMETERS, SOFTWARE_VERSION_LABEL,
                                         IDENTIFY_DEVICE, DMX_START_ADDRESS, DISC_UNIQUE_BRANCH, DISC_MUTE})
        EXPECT_FALSE(has(pid)) << "required, so not listed: " << PidName(pid);

    // A cell lists only what it has.
    const Bytes cell = Value(SUPPORTED_PARAMETERS, {}, 1);
    EXPECT_EQ(cell, U16(DEVICE_MODEL_DESCRIPTION) + U16(DEVICE_LABEL) + U16(SENSOR_DEFINITION) +
                        U16(SENSOR_VALUE) + U16(RECORD_SENSORS));
}

TEST_F(Behaviour, TextsAndIdentityLists) {
    EXPECT_EQ(Value(DEVICE_MODEL_DESCRIPTION), "Orbit 575 Spot");
    EXPECT_EQ(Value(MANUFACTURER_LABEL), "Marrow Hill Lighting");
    EXPECT_EQ(Value(SOFTWARE_VERSION_LABEL), "2.3.1");
    EXPECT_EQ(Value(BOOT_SOFTWARE_VERSION_ID), U32(7));
    EXPECT_EQ(Value(BOOT_SOFTWARE_VERSION_LABEL), "boot 1.1");
    EXPECT_EQ(Value(PRODUCT_DETAIL_ID_LIST), B({0x00, 0x02, 0x01, 0x01}));
    EXPECT_EQ(Value(DEVICE_MODEL_DESCRIPTION, {}, 2), "Cell");
}

TEST_F(Behaviour, DeviceLabelTakesUpTo32Characters) {
    const std::string label(32, 'L');
    EXPECT_EQ(S(DEVICE_LABEL, label).status, status::kOk);
    EXPECT_EQ(Value(DEVICE_LABEL), label);
    EXPECT_EQ(S(DEVICE_LABEL, label + "x").status, status::kNack + NR_FORMAT_ERROR);
    EXPECT_EQ(S(DEVICE_LABEL, "").status, status::kOk);
    EXPECT_EQ(Value(DEVICE_LABEL), "");
    EXPECT_EQ(S(DEVICE_LABEL, "Left cell", 1).status, status::kOk);
    EXPECT_EQ(Value(DEVICE_LABEL, {}, 1), "Left cell");
    EXPECT_EQ(Value(DEVICE_LABEL, {}, 2), "Cell 2");
}

TEST_F(Behaviour, ParameterDescriptionOfManufacturerPids) {
    const Bytes fan = Value(PARAMETER_DESCRIPTION, U16(0x8001));
    EXPECT_EQ(fan, B({0x80, 0x01, // PID
                      0x01,       // PDL size
                      0x03,       // DS_UNSIGNED_BYTE
                      0x03,       // GET and SET
                      0x00,       // type
                      0x00, 0x00, // unit, prefix
                      0,    0,    0, 0, 0, 0, 0, 3, 0, 0, 0, 1}) +
                       "Fan mode");
    const Bytes trim = Value(PARAMETER_DESCRIPTION, U16(0x8102));
    EXPECT_EQ(int32_t(GetU32(trim, 8)), -100);
    EXPECT_EQ(int32_t(GetU32(trim, 12)), 100);
    EXPECT_EQ(trim.substr(20), "Zone 3 trim");
    EXPECT_EQ(uint8_t(Value(PARAMETER_DESCRIPTION, U16(0x8200))[4]), 1u) << "GET only";
    EXPECT_EQ(G(PARAMETER_DESCRIPTION, U16(0x8003)).status, status::kNack + NR_DATA_OUT_OF_RANGE);
    EXPECT_EQ(G(PARAMETER_DESCRIPTION, U16(DEVICE_LABEL)).status, status::kNack + NR_DATA_OUT_OF_RANGE);
}

TEST_F(Behaviour, ManufacturerPidsKeepTheirValuesWithinRange) {
    EXPECT_EQ(Value(0x8001), B({1}));
    EXPECT_EQ(S(0x8001, B({3})).status, status::kOk);
    EXPECT_EQ(Value(0x8001), B({3}));
    EXPECT_EQ(S(0x8001, B({4})).status, status::kNack + NR_DATA_OUT_OF_RANGE);
    EXPECT_EQ(S(0x8001, B({1, 1})).status, status::kNack + NR_FORMAT_ERROR);
    EXPECT_EQ(S(0x8101, U16(uint16_t(-100))).status, status::kOk);
    EXPECT_EQ(Signed(Value(0x8101), 0), -100);
    EXPECT_EQ(S(0x8101, U16(uint16_t(-101))).status, status::kNack + NR_DATA_OUT_OF_RANGE);
    EXPECT_EQ(Value(0x8002), "MH-0042");
    EXPECT_EQ(S(0x8002, "Rental 7").status, status::kOk);
    EXPECT_EQ(Value(0x8002), "Rental 7");
    EXPECT_EQ(S(0x8002, std::string(17, 'x')).status, status::kNack + NR_FORMAT_ERROR);
    EXPECT_EQ(Value(0x8200), U32(123456));
    EXPECT_EQ(S(0x8200, U32(1)).status, status::kNack + NR_UNSUPPORTED_COMMAND_CLASS);
}

TEST_F(Behaviour, PersonalitiesAndFootprints) {
    EXPECT_EQ(Value(DMX_PERSONALITY), B({1, 3})) << "two bytes: current, count";
    EXPECT_EQ(Value(DMX_PERSONALITY_DESCRIPTION, B({2})), B({2, 0, 12}) + "Extended 12ch");
    EXPECT_EQ(G(DMX_PERSONALITY_DESCRIPTION, B({4})).status, status::kNack + NR_DATA_OUT_OF_RANGE);
    EXPECT_EQ(G(DMX_PERSONALITY_DESCRIPTION, B({0})).status, status::kNack + NR_DATA_OUT_OF_RANGE);
    EXPECT_EQ(S(DMX_PERSONALITY, B({2})).status, status::kOk);
    EXPECT_EQ(Value(DMX_PERSONALITY), B({2, 3}));
    EXPECT_EQ(GetU16(Value(DEVICE_INFO), 10), 12u);
    EXPECT_EQ(S(DMX_PERSONALITY, B({4})).status, status::kNack + NR_DATA_OUT_OF_RANGE);
    // Standalone has no footprint and so no address.
    EXPECT_EQ(S(DMX_PERSONALITY, B({3})).status, status::kOk);
    EXPECT_EQ(Value(DMX_START_ADDRESS), B({0xFF, 0xFF}));
    EXPECT_EQ(GetU16(Value(DEVICE_INFO), 14), 0xFFFFu);
    EXPECT_EQ(S(DMX_PERSONALITY, B({1})).status, status::kOk);
    EXPECT_EQ(Value(DMX_START_ADDRESS), U16(10));
}

TEST_F(Behaviour, StartAddress) {
    // The spot answers SET DMX_START_ADDRESS with ACK_TIMER; the fogger does not.
    const int fog = stage.fog;
    EXPECT_EQ(Get(*stage.line, fog, DMX_START_ADDRESS).data, U16(100));
    EXPECT_EQ(Set(*stage.line, fog, DMX_START_ADDRESS, U16(512)).status, status::kQueued);
    EXPECT_EQ(Get(*stage.line, fog, DMX_START_ADDRESS).data, U16(512));
    EXPECT_EQ(Set(*stage.line, fog, DMX_START_ADDRESS, U16(0)).status, status::kNack + NR_DATA_OUT_OF_RANGE);
    EXPECT_EQ(Set(*stage.line, fog, DMX_START_ADDRESS, U16(513)).status,
              status::kNack + NR_DATA_OUT_OF_RANGE);
    // The wall processor has no footprint: no address, and it cannot be set.
    EXPECT_EQ(Get(*stage.line, stage.wall, DMX_START_ADDRESS).data, B({0xFF, 0xFF}));
    EXPECT_EQ(Set(*stage.line, stage.wall, DMX_START_ADDRESS, U16(1)).status,
              status::kNack + NR_UNSUPPORTED_COMMAND_CLASS);
    // Sub devices have addresses of their own (set with the same delay as the root's).
    EXPECT_EQ(S(DMX_START_ADDRESS, U16(300), 2).status, status::kDelayed);
    stage.line->Advance(0.5);
    EXPECT_EQ(Cmd(*stage.line, 58, B({stage.spot})).data, U16(DMX_START_ADDRESS));
    EXPECT_EQ(Value(DMX_START_ADDRESS, {}, 2), U16(300));
}

TEST_F(Behaviour, Slots) {
    EXPECT_EQ(Value(SLOT_DESCRIPTION, U16(0)), B({0, 0}) + "Pan");
    EXPECT_EQ(Value(SLOT_DESCRIPTION, U16(1)), B({0, 1}) + "Tilt");
    EXPECT_EQ(G(SLOT_DESCRIPTION, U16(2)).status, status::kNack + NR_DATA_OUT_OF_RANGE) << "no description";
    EXPECT_EQ(G(SLOT_DESCRIPTION, U16(3)).status, status::kNack + NR_DATA_OUT_OF_RANGE)
        << "beyond the footprint";
    EXPECT_EQ(Value(DEFAULT_SLOT_VALUE), B({0, 0, 128, 0, 1, 127, 0, 2, 0}));
}

TEST_F(Behaviour, SensorDefinition) {
    EXPECT_EQ(Value(SENSOR_DEFINITION, B({0})), B({0,          // sensor 0
                                                   0,          // temperature
                                                   1,          // centigrade
                                                   0,          // no prefix
                                                   0xFF, 0xD8, // range -40
                                                   0x00, 0x96, // to 150
                                                   0x00, 0x0A, // normal 10
                                                   0x00, 0x3C, // to 60
                                                   0x03}) +    // recorded and lowest/highest
                                                    "Head temperature");
    EXPECT_EQ(uint8_t(Value(SENSOR_DEFINITION, B({1}))[12]), 0u);
    EXPECT_EQ(G(SENSOR_DEFINITION, B({2})).status, status::kNack + NR_DATA_OUT_OF_RANGE);
    EXPECT_EQ(G(SENSOR_DEFINITION).status, status::kNack + NR_FORMAT_ERROR);
}

TEST_F(Behaviour, SensorValuesDriftAndKeepTheirExtremes) {
    Bytes value = Value(SENSOR_VALUE, B({0}));
    ASSERT_EQ(value.size(), 9u);
    EXPECT_EQ(value, B({0, 0, 41, 0, 41, 0, 41, 0, 41}));
    std::set<int16_t> readings;
    for (int i = 0; i < 30; ++i) {
        stage.line->Advance(10);
        value = Value(SENSOR_VALUE, B({0}));
        const int16_t present = Signed(value, 1), lowest = Signed(value, 3), highest = Signed(value, 5);
        readings.insert(present);
        EXPECT_LE(lowest, present);
        EXPECT_GE(highest, present);
        EXPECT_GE(present, -40);
        EXPECT_LE(present, 150);
    }
    EXPECT_GT(readings.size(), 3u) << "the reading moves";

    // RECORD_SENSORS keeps the present value as the recorded one.
    EXPECT_EQ(S(RECORD_SENSORS, B({0})).status, status::kOk);
    value = Value(SENSOR_VALUE, B({0}));
    EXPECT_EQ(Signed(value, 7), Signed(value, 1));
    stage.line->Advance(60);
    const int16_t recorded = Signed(value, 7);
    EXPECT_EQ(Signed(Value(SENSOR_VALUE, B({0})), 7), recorded) << "until recorded again";

    // SET SENSOR_VALUE resets lowest, highest and recorded to the present value.
    const Answer reset = S(SENSOR_VALUE, B({0}));
    EXPECT_EQ(reset.status, status::kOk);
    const int16_t present = Signed(reset.data, 1);
    EXPECT_EQ(Signed(reset.data, 3), present);
    EXPECT_EQ(Signed(reset.data, 5), present);
    EXPECT_EQ(Signed(reset.data, 7), present);

    // The mains sensor has neither recorded nor lowest/highest values.
    const Bytes mains = Value(SENSOR_VALUE, B({1}));
    EXPECT_EQ(GetU16(mains, 3), 0u);
    EXPECT_EQ(GetU16(mains, 7), 0u);
    EXPECT_EQ(S(RECORD_SENSORS, B({1})).status, status::kNack + NR_DATA_OUT_OF_RANGE);
    EXPECT_EQ(S(RECORD_SENSORS, B({0xFF})).status, status::kOk);
    const Answer all = S(SENSOR_VALUE, B({0xFF}));
    EXPECT_EQ(all.data, B({0xFF, 0, 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(G(SENSOR_VALUE, B({5})).status, status::kNack + NR_DATA_OUT_OF_RANGE);
    // Each cell has its own sensor.
    EXPECT_EQ(Value(SENSOR_VALUE, B({0}), 1), B({0, 0, 30, 0, 30, 0, 30, 0, 30}));
}

TEST_F(Behaviour, HoursStrikesAndPowerCycles) {
    EXPECT_EQ(Value(DEVICE_HOURS), U32(1200));
    stage.line->Advance(2 * 3600 + 5);
    EXPECT_EQ(Value(DEVICE_HOURS), U32(1202));
    EXPECT_EQ(S(DEVICE_HOURS, U32(5)).status, status::kOk);
    EXPECT_EQ(Value(DEVICE_HOURS), U32(5));
    EXPECT_EQ(Value(DEVICE_POWER_CYCLES), U32(85));
    EXPECT_EQ(S(DEVICE_POWER_CYCLES, U32(0)).status, status::kNack + NR_WRITE_PROTECT);

    // The lamp is off: its hours stand still. Struck, it counts a strike and its hours run.
    EXPECT_EQ(Value(LAMP_STATE), B({0}));
    EXPECT_EQ(Value(LAMP_STRIKES), U32(95));
    EXPECT_EQ(S(LAMP_STATE, B({1})).status, status::kOk);
    EXPECT_EQ(Value(LAMP_STRIKES), U32(96));
    stage.line->Advance(3 * 3600);
    ASSERT_EQ(G(LAMP_HOURS).status, status::kDelayed);
    stage.line->Advance(2);
    EXPECT_EQ(Cmd(*stage.line, 58, B({stage.spot})).data, U16(LAMP_HOURS) + U32(313));
    EXPECT_EQ(S(LAMP_STATE, B({9})).status, status::kNack + NR_DATA_OUT_OF_RANGE);
    EXPECT_EQ(S(LAMP_STATE, B({0x85})).status, status::kOk) << "manufacturer states";
    EXPECT_EQ(Value(LAMP_ON_MODE), B({1}));
    EXPECT_EQ(S(LAMP_ON_MODE, B({2})).status, status::kOk);
    EXPECT_EQ(Value(LAMP_ON_MODE), B({2}));
    EXPECT_EQ(S(LAMP_ON_MODE, B({4})).status, status::kNack + NR_DATA_OUT_OF_RANGE);
    EXPECT_EQ(S(LAMP_STRIKES, U32(0)).status, status::kOk);
    EXPECT_EQ(Value(LAMP_STRIKES), U32(0));
}

TEST_F(Behaviour, DisplayAndPanTilt) {
    EXPECT_EQ(Value(DISPLAY_INVERT), B({2}));
    EXPECT_EQ(S(DISPLAY_INVERT, B({1})).status, status::kOk);
    EXPECT_EQ(Value(DISPLAY_INVERT), B({1}));
    EXPECT_EQ(S(DISPLAY_INVERT, B({3})).status, status::kNack + NR_DATA_OUT_OF_RANGE);
    EXPECT_EQ(Value(DISPLAY_LEVEL), B({200}));
    EXPECT_EQ(S(DISPLAY_LEVEL, B({255})).status, status::kOk);
    EXPECT_EQ(Value(DISPLAY_LEVEL), B({255}));
    EXPECT_EQ(Value(PAN_INVERT), B({0}));
    EXPECT_EQ(Value(TILT_INVERT), B({1}));
    EXPECT_EQ(S(PAN_INVERT, B({1})).status, status::kOk);
    EXPECT_EQ(S(PAN_TILT_SWAP, B({1})).status, status::kOk);
    EXPECT_EQ(Value(PAN_INVERT), B({1}));
    EXPECT_EQ(Value(PAN_TILT_SWAP), B({1}));
    EXPECT_EQ(S(TILT_INVERT, B({2})).status, status::kNack + NR_DATA_OUT_OF_RANGE);
    EXPECT_EQ(Get(*stage.line, stage.fog, PAN_INVERT).status, status::kNack + NR_UNKNOWN_PID);
}

TEST_F(Behaviour, RealTimeClockTicksAndCanBeSet) {
    EXPECT_EQ(Value(REAL_TIME_CLOCK), B({0x07, 0xE8, 5, 1, 19, 30, 0}));
    stage.line->Advance(4 * 3600 + 30 * 60 + 1); // past midnight
    EXPECT_EQ(Value(REAL_TIME_CLOCK), B({0x07, 0xE8, 5, 2, 0, 0, 1}));
    EXPECT_EQ(S(REAL_TIME_CLOCK, B({0x07, 0xE8, 2, 29, 23, 59, 58})).status, status::kOk);
    stage.line->Advance(3);
    EXPECT_EQ(Value(REAL_TIME_CLOCK), B({0x07, 0xE8, 3, 1, 0, 0, 1})) << "2024 is a leap year";
    EXPECT_EQ(S(REAL_TIME_CLOCK, B({0x07, 0xE7, 2, 29, 0, 0, 0})).status,
              status::kNack + NR_DATA_OUT_OF_RANGE);
    EXPECT_EQ(S(REAL_TIME_CLOCK, B({0x07, 0xE8, 13, 1, 0, 0, 0})).status,
              status::kNack + NR_DATA_OUT_OF_RANGE);
    EXPECT_EQ(S(REAL_TIME_CLOCK, B({0x07, 0xE8, 1, 1, 24, 0, 0})).status,
              status::kNack + NR_DATA_OUT_OF_RANGE);
    EXPECT_EQ(S(REAL_TIME_CLOCK, B({0x07, 0xE8, 1, 1, 0, 0})).status, status::kNack + NR_FORMAT_ERROR);

    // A broadcast sets every clock on the line.
    EXPECT_EQ(Set(*stage.line, 0, REAL_TIME_CLOCK, B({0x07, 0xE9, 12, 31, 23, 0, 0})).status, status::kOk);
    EXPECT_EQ(Value(REAL_TIME_CLOCK), B({0x07, 0xE9, 12, 31, 23, 0, 0}));
    EXPECT_EQ(Get(*stage.line, stage.fog, REAL_TIME_CLOCK).data, B({0x07, 0xE9, 12, 31, 23, 0, 0}));
}

TEST_F(Behaviour, IdentifyPerUnit) {
    EXPECT_EQ(Value(IDENTIFY_DEVICE), B({0}));
    EXPECT_EQ(S(IDENTIFY_DEVICE, B({1}), 2).status, status::kOk);
    EXPECT_EQ(Value(IDENTIFY_DEVICE, {}, 2), B({1}));
    EXPECT_EQ(Value(IDENTIFY_DEVICE, {}, 1), B({0}));
    EXPECT_EQ(Value(IDENTIFY_DEVICE), B({0}));
}

TEST_F(Behaviour, WarmAndColdResetGoSilentForAWhile) {
    S(IDENTIFY_DEVICE, B({1}));
    EXPECT_EQ(S(RESET_DEVICE, B({0x01})).status, status::kOk) << "the answer goes out first";
    EXPECT_EQ(G(DEVICE_LABEL).status, status::kMissing);
    stage.line->Advance(1.5);
    EXPECT_EQ(G(DEVICE_LABEL).status, status::kMissing);
    stage.line->Advance(0.6);
    EXPECT_EQ(G(DEVICE_LABEL).status, status::kOk);
    EXPECT_EQ(Value(IDENTIFY_DEVICE), B({0}));
    EXPECT_EQ(Value(DEVICE_POWER_CYCLES), U32(85)) << "warm: no power cycle";

    EXPECT_EQ(S(RESET_DEVICE, B({0xFF})).status, status::kOk);
    stage.line->Advance(3);
    EXPECT_EQ(G(DEVICE_LABEL).status, status::kMissing);
    stage.line->Advance(3.1);
    EXPECT_EQ(Value(DEVICE_POWER_CYCLES), U32(86));
    EXPECT_EQ(S(RESET_DEVICE, B({0x02})).status, status::kNack + NR_DATA_OUT_OF_RANGE);
    EXPECT_EQ(G(RESET_DEVICE).status, status::kNack + NR_UNSUPPORTED_COMMAND_CLASS);
}

TEST_F(Behaviour, ResetDeviceUnmutesForTheNextDiscovery) {
    ASSERT_TRUE(stage.line->GetWire().Find(kSpotUid)->Muted());
    S(RESET_DEVICE, B({0x01}));
    EXPECT_FALSE(stage.line->GetWire().Find(kSpotUid)->Muted());
}

TEST_F(Behaviour, FactoryDefaults) {
    EXPECT_EQ(Value(FACTORY_DEFAULTS), B({1}));
    S(DEVICE_LABEL, "Rented");
    S(DISPLAY_LEVEL, B({10}));
    S(0x8001, B({0}));
    S(DEVICE_LABEL, "Cell renamed", 1);
    EXPECT_EQ(Value(FACTORY_DEFAULTS), B({0}));
    EXPECT_EQ(S(FACTORY_DEFAULTS).status, status::kOk);
    EXPECT_EQ(Value(FACTORY_DEFAULTS), B({1}));
    EXPECT_EQ(Value(DEVICE_LABEL), "Spot 1");
    EXPECT_EQ(Value(DISPLAY_LEVEL), B({200}));
    EXPECT_EQ(Value(0x8001), B({1}));
    EXPECT_EQ(Value(DEVICE_LABEL, {}, 1), "Cell 1");
    EXPECT_EQ(S(FACTORY_DEFAULTS, B({1})).status, status::kNack + NR_FORMAT_ERROR);
}

TEST_F(Behaviour, Language) {
    EXPECT_EQ(Value(LANGUAGE_CAPABILITIES), "ende");
    EXPECT_EQ(Value(LANGUAGE), "en");
    EXPECT_EQ(S(LANGUAGE, "fr").status, status::kNack + NR_DATA_OUT_OF_RANGE);
    EXPECT_EQ(S(LANGUAGE, "de").status, status::kOk);
    EXPECT_EQ(Value(LANGUAGE), "de");
    EXPECT_EQ(S(LANGUAGE, "d").status, status::kNack + NR_FORMAT_ERROR);
}

TEST_F(Behaviour, PowerStateAndSelfTest) {
    EXPECT_EQ(Value(POWER_STATE), B({0xFF}));
    EXPECT_EQ(S(POWER_STATE, B({2})).status, status::kOk);
    EXPECT_EQ(Value(POWER_STATE), B({2}));
    EXPECT_EQ(S(POWER_STATE, B({5})).status, status::kNack + NR_DATA_OUT_OF_RANGE);

    EXPECT_EQ(Value(PERFORM_SELFTEST), B({0}));
    EXPECT_EQ(S(PERFORM_SELFTEST, B({1})).status, status::kOk);
    EXPECT_EQ(Value(PERFORM_SELFTEST), B({1}));
    stage.line->Advance(4.5);
    EXPECT_EQ(Value(PERFORM_SELFTEST), B({0}));
    EXPECT_EQ(S(PERFORM_SELFTEST, B({0xFF})).status, status::kOk);
    stage.line->Advance(6);
    EXPECT_EQ(Value(PERFORM_SELFTEST), B({1})) << "all tests take 4 + 3 s";
    EXPECT_EQ(S(PERFORM_SELFTEST, B({0})).status, status::kOk);
    EXPECT_EQ(Value(PERFORM_SELFTEST), B({0}));
    EXPECT_EQ(S(PERFORM_SELFTEST, B({9})).status, status::kNack + NR_DATA_OUT_OF_RANGE);
    EXPECT_EQ(Value(SELF_TEST_DESCRIPTION, B({2})), B({2}) + "Colour wheel");
    EXPECT_EQ(G(SELF_TEST_DESCRIPTION, B({3})).status, status::kNack + NR_DATA_OUT_OF_RANGE);
}

TEST_F(Behaviour, CommsStatusCountsWhatTheLineCorrupted) {
    EXPECT_EQ(Value(COMMS_STATUS), Bytes(6, '\0'));
    Control(*stage.line, "line noise 1");
    for (int i = 0; i < 40; ++i)
        G(DEVICE_LABEL);
    Control(*stage.line, "line noise 0");
    const Bytes counts = Value(COMMS_STATUS);
    const unsigned shortMessages = GetU16(counts, 0), lengthMismatches = GetU16(counts, 2),
                   checksumFails = GetU16(counts, 4);
    EXPECT_GT(checksumFails, 0u);
    EXPECT_GT(lengthMismatches + shortMessages, 0u);
    EXPECT_LE(shortMessages + lengthMismatches + checksumFails, 40u);
    EXPECT_EQ(S(COMMS_STATUS).status, status::kOk);
    EXPECT_EQ(Value(COMMS_STATUS), Bytes(6, '\0'));
}

TEST_F(Behaviour, StatusMessagesAreReportedOnceAndTheLastBatchRepeats) {
    LineImpl& line = *stage.line;
    EXPECT_EQ(Value(STATUS_MESSAGES, B({STATUS_ADVISORY})), "") << "none yet";
    Control(line, "responder " + UidText(kSpotUid) + " status 3 33 1 71");
    Control(line, "responder " + UidText(kSpotUid) + " status 2 0x8001 2 0 1");
    Control(line, "responder " + UidText(kSpotUid) + " status 4 0x8001 1 0 2");
    EXPECT_EQ(G(DEVICE_LABEL).status, status::kQueued);
    // Asked for warnings and above: the advisory stays.
    const Bytes batch = Value(STATUS_MESSAGES, B({STATUS_WARNING}));
    EXPECT_EQ(batch, B({0, 0, 3, 0, 33, 0, 1, 0, 71, // root, warning, sensor 1 over temp at 71
                        0, 2, 4, 0x80, 0x01, 0, 1, 0, 0}));
    EXPECT_EQ(Value(STATUS_MESSAGES, B({STATUS_WARNING})), "");
    EXPECT_EQ(Value(STATUS_MESSAGES, B({STATUS_GET_LAST_MESSAGE})), "") << "the last batch was empty";
    EXPECT_EQ(Value(STATUS_MESSAGES, B({STATUS_ADVISORY})), B({0, 1, 2, 0x80, 0x01, 0, 2, 0, 0}));
    EXPECT_EQ(Value(STATUS_MESSAGES, B({STATUS_GET_LAST_MESSAGE})), B({0, 1, 2, 0x80, 0x01, 0, 2, 0, 0}));
    EXPECT_EQ(Value(STATUS_MESSAGES, B({STATUS_NONE})), "");
    EXPECT_EQ(G(STATUS_MESSAGES, B({5})).status, status::kNack + NR_DATA_OUT_OF_RANGE);
    EXPECT_EQ(G(DEVICE_LABEL).status, status::kOk);

    EXPECT_EQ(Value(STATUS_ID_DESCRIPTION, U16(0x8001)), "Fan %d stalled");
    EXPECT_EQ(G(STATUS_ID_DESCRIPTION, U16(0x8002)).status, status::kNack + NR_DATA_OUT_OF_RANGE);

    Control(line, "responder " + UidText(kSpotUid) + " status 2 17");
    EXPECT_EQ(G(DEVICE_LABEL).status, status::kQueued);
    EXPECT_EQ(S(CLEAR_STATUS_ID).status, status::kOk);
    EXPECT_EQ(G(DEVICE_LABEL).status, status::kOk);
    EXPECT_EQ(Value(STATUS_MESSAGES, B({STATUS_ADVISORY})), "");
}

TEST_F(Behaviour, AtMost25MessagesAtATime) {
    for (int i = 0; i < 30; ++i)
        Control(*stage.line, "responder #1 status 2 " + std::to_string(100 + i));
    EXPECT_EQ(Value(STATUS_MESSAGES, B({STATUS_ADVISORY})).size(), 25u * 9);
    EXPECT_EQ(Value(STATUS_MESSAGES, B({STATUS_ADVISORY})).size(), 5u * 9);
}

TEST_F(Behaviour, ResponderBehavesTheSameForTheSameSeed) {
    StageLine other = MakeStage();
    for (int i = 0; i < 20; ++i) {
        stage.line->Advance(7);
        other.line->Advance(7);
        EXPECT_EQ(G(SENSOR_VALUE, B({0})).data, Get(*other.line, other.spot, SENSOR_VALUE, B({0})).data);
    }
}

} // namespace
} // namespace zol::sim::line::test
