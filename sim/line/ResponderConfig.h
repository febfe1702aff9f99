#pragma once
// What a rig file says about one virtual responder: identity, parameters with their start values,
// sub devices, behaviour per PID and the faults it has on the line. Parsed from one entry of a
// port's "responders" array; the running state lives in Responder.

#include "sim/line/RdmCodec.h"

#include <cstdint>
#include <map>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <vector>

namespace zol::sim::line {

using rdm::Bytes;
using rdm::Uid;

struct SlotConfig {
    uint8_t type = 0; // ST_PRIMARY and the others
    uint16_t id = 0;  // slot label id, SD_INTENSITY and the others
    std::string description;
    uint8_t defaultValue = 0;
};

struct PersonalityConfig {
    uint16_t footprint = 0;
    std::string description;
    std::vector<SlotConfig> slots; // empty or footprint entries
};

struct SensorConfig {
    uint8_t type = 0;
    uint8_t unit = 0;
    uint8_t prefix = 0;
    int16_t rangeMin = -32768;
    int16_t rangeMax = 32767;
    int16_t normalMin = -32768;
    int16_t normalMax = 32767;
    bool recordedSupport = true;
    bool lowestHighestSupport = true;
    std::string description;
    double value = 0; // start reading, and the level the reading drifts around
    double drift = 0; // typical change per second
};

struct LampConfig {
    uint32_t hours = 0;
    uint32_t strikes = 0;
    uint8_t state = 1;
    uint8_t onMode = 1;
};

// A manufacturer-specific parameter with its PARAMETER_DESCRIPTION.
struct ManufacturerPidConfig {
    uint16_t pid = 0;
    uint8_t pdlSize = 1;
    uint8_t dataType = 3;     // DS_UNSIGNED_BYTE
    uint8_t commandClass = 3; // 1 GET, 2 SET, 3 GET and SET
    uint8_t unit = 0;
    uint8_t prefix = 0;
    int32_t minValue = 0;
    int32_t maxValue = 255;
    int32_t defaultValue = 0;
    std::string description;
    Bytes value; // start value as parameter data
};

struct StatusMessageConfig {
    uint16_t subDevice = 0;
    uint8_t type = 2; // STATUS_ADVISORY
    uint16_t id = 0;
    int16_t value1 = 0;
    int16_t value2 = 0;
    double repeat = 0; // seconds after it was collected until it is raised again; 0 = once
};

struct SelfTestConfig {
    uint8_t number = 1;
    std::string description;
    double seconds = 5;
};

struct AckTimerConfig {
    uint16_t pid = 0;
    bool set = false; // the command class it applies to
    double seconds = 1;
};

struct OverflowConfig {
    uint16_t pid = 0;
    size_t part = 0; // bytes per part
};

// The line faults of a responder.
struct FaultConfig {
    bool ignoreMute = false;        // acknowledges DISC_MUTE but keeps answering DUB
    bool deafToMute = false;        // neither answers DISC_MUTE nor mutes, but answers DUB
    bool babble = false;            // answers every DUB with noise, muted or not, in range or not
    bool answerBroadcast = false;   // replies to broadcast requests
    double replyChecksumErrors = 0; // share of its replies that leave with a bad checksum
    double requestErrors = 0;       // share of requests that reach it corrupted (counted in COMMS_STATUS)
    double lateReplies = 0;         // share of replies that come after the controller gave up
    double turnaroundUs = 0;        // its time to answer; 0 = the usual
    int dubPreamble = 7;            // 0xFE bytes before a DUB reply
};

// Root device or sub device. A parameter group is present when the rig describes it.
struct UnitConfig {
    std::string label;
    std::string model;
    uint16_t modelId = 0;
    uint16_t category = 0;
    uint32_t softwareVersionId = 0;
    std::string softwareVersion;
    std::vector<PersonalityConfig> personalities;
    uint8_t personality = 1;
    uint16_t footprint = 0;               // without personalities
    std::optional<uint16_t> startAddress; // none: no DMX address (0xFFFF)
    std::vector<SensorConfig> sensors;
    std::optional<bool> identify; // present on every unit; the start state
};

struct ResponderConfig {
    Uid uid = 0;
    std::string where; // place in the rig file, for messages
    UnitConfig root;
    std::vector<UnitConfig> subDevices;

    std::string manufacturer; // MANUFACTURER_LABEL
    std::vector<uint16_t> productDetails;
    std::optional<uint32_t> bootSoftwareVersionId;
    std::string bootSoftwareVersion;
    std::optional<uint32_t> deviceHours;
    std::optional<uint32_t> powerCycles;
    std::optional<LampConfig> lamp;
    std::optional<uint8_t> displayInvert;
    std::optional<uint8_t> displayLevel;
    std::optional<uint8_t> panInvert;
    std::optional<uint8_t> tiltInvert;
    std::optional<uint8_t> panTiltSwap;
    std::optional<int64_t> clock; // seconds since 1970-01-01 00:00:00 at the start of the line
    std::vector<std::string> languages;
    std::optional<uint8_t> powerState;
    std::vector<SelfTestConfig> selfTests;
    bool factoryDefaults = true;
    bool resetDevice = true;
    double warmResetSeconds = 2;
    double coldResetSeconds = 6;
    bool commsStatus = true;
    bool statusMessagesSupported = false;
    std::vector<StatusMessageConfig> statusMessages;
    std::map<uint16_t, std::string> statusDescriptions;
    std::vector<ManufacturerPidConfig> manufacturerPids;
    std::vector<AckTimerConfig> ackTimers;
    std::vector<OverflowConfig> overflows;
    std::vector<uint16_t> writeProtected;
    FaultConfig faults;
};

// Parses one responder. `where` names the entry ("rig.json: ports[0].responders[2]"); errors are
// std::runtime_error with that place and the key at fault.
ResponderConfig ParseResponder(const nlohmann::json& entry, const std::string& where);

// Seconds since 1970 of a civil date and time (no time zone), and back.
int64_t CivilToSeconds(int year, int month, int day, int hour, int minute, int second);
void SecondsToCivil(int64_t seconds, int& year, int& month, int& day, int& hour, int& minute, int& second);
int DaysInMonth(int year, int month);

} // namespace zol::sim::line
