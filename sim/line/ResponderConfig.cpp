#include "sim/line/ResponderConfig.h"

#include <cmath>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <set>
#include <stdexcept>

namespace zol::sim::line {

using nlohmann::json;

namespace {

[[noreturn]] void Fail(const std::string& where, const std::string& what) {
    throw std::runtime_error(where + ": " + what);
}

// Rejects keys that the entry does not know, so that a typing error in a rig is not ignored.
void CheckKeys(const json& object, const std::string& where, const std::set<std::string>& known) {
    if (!object.is_object())
        Fail(where, "expected an object");
    for (auto it = object.begin(); it != object.end(); ++it)
        if (!known.count(it.key()))
            Fail(where, "unknown key \"" + it.key() + "\"");
}

// An integer given as a number or as "0x..." text.
int64_t Integer(const json& value, const std::string& where, int64_t lowest, int64_t highest) {
    int64_t result = 0;
    if (value.is_number_integer()) {
        result = value.get<int64_t>();
    } else if (value.is_string()) {
        const std::string text = value.get<std::string>();
        size_t used = 0;
        try {
            result = std::stoll(text, &used, 0);
        } catch (const std::exception&) {
            Fail(where, "expected a number, found \"" + text + "\"");
        }
        if (used != text.size())
            Fail(where, "expected a number, found \"" + text + "\"");
    } else {
        Fail(where, "expected a number");
    }
    if (result < lowest || result > highest)
        Fail(where, "value " + std::to_string(result) + " outside " + std::to_string(lowest) + " to " +
                        std::to_string(highest));
    return result;
}

double Real(const json& value, const std::string& where, double lowest, double highest) {
    if (!value.is_number())
        Fail(where, "expected a number");
    const double result = value.get<double>();
    if (!std::isfinite(result) || result < lowest || result > highest)
        Fail(where, "value outside " + std::to_string(lowest) + " to " + std::to_string(highest));
    return result;
}

bool Boolean(const json& value, const std::string& where) {
    if (!value.is_boolean())
        Fail(where, "expected true or false");
    return value.get<bool>();
}

std::string Text(const json& value, const std::string& where, size_t maxLength = 32) {
    if (!value.is_string())
        Fail(where, "expected a text");
    const std::string text = value.get<std::string>();
    if (text.size() > maxLength)
        Fail(where, "text longer than " + std::to_string(maxLength) + " characters");
    return text;
}

const json& Array(const json& value, const std::string& where) {
    if (!value.is_array())
        Fail(where, "expected an array");
    return value;
}

// A PID by its standard name or its number.
uint16_t PidValue(const json& value, const std::string& where) {
    if (value.is_string()) {
        const int byName = rdm::PidByName(value.get<std::string>());
        if (byName >= 0)
            return uint16_t(byName);
    }
    return uint16_t(Integer(value, where, 1, 0xFFFF));
}

uint8_t StatusTypeValue(const json& value, const std::string& where) {
    if (value.is_string()) {
        const std::string name = value.get<std::string>();
        if (name == "advisory")
            return rdm::STATUS_ADVISORY;
        if (name == "warning")
            return rdm::STATUS_WARNING;
        if (name == "error")
            return rdm::STATUS_ERROR;
        if (name == "advisory_cleared")
            return rdm::STATUS_ADVISORY_CLEARED;
        if (name == "warning_cleared")
            return rdm::STATUS_WARNING_CLEARED;
        if (name == "error_cleared")
            return rdm::STATUS_ERROR_CLEARED;
    }
    const auto type = uint8_t(Integer(value, where, 0, 0xFF));
    if (type != 2 && type != 3 && type != 4 && type != 0x12 && type != 0x13 && type != 0x14)
        Fail(where, "status type must be advisory, warning, error or one of their cleared forms");
    return type;
}

// "2024-05-01 19:30:00" (or with a T between date and time).
int64_t ClockValue(const json& value, const std::string& where) {
    const std::string text = Text(value, where, 32);
    int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
    char sep = 0;
    if (std::sscanf(text.c_str(), "%4d-%2d-%2d%c%2d:%2d:%2d", &year, &month, &day, &sep, &hour, &minute,
                    &second) != 7 ||
        (sep != ' ' && sep != 'T'))
        Fail(where, "expected a date and time as \"YYYY-MM-DD hh:mm:ss\"");
    if (year < 2003 || year > 65535 || month < 1 || month > 12 || day < 1 || day > DaysInMonth(year, month) ||
        hour > 23 || minute > 59 || second > 59)
        Fail(where, "date or time out of range");
    return CivilToSeconds(year, month, day, hour, minute, second);
}

SlotConfig ParseSlot(const json& entry, const std::string& where) {
    CheckKeys(entry, where, {"type", "id", "description", "default"});
    SlotConfig slot;
    if (entry.contains("type"))
        slot.type = uint8_t(Integer(entry["type"], where + ".type", 0, 0xFF));
    if (entry.contains("id"))
        slot.id = uint16_t(Integer(entry["id"], where + ".id", 0, 0xFFFF));
    if (entry.contains("description"))
        slot.description = Text(entry["description"], where + ".description");
    if (entry.contains("default"))
        slot.defaultValue = uint8_t(Integer(entry["default"], where + ".default", 0, 0xFF));
    return slot;
}

PersonalityConfig ParsePersonality(const json& entry, const std::string& where) {
    CheckKeys(entry, where, {"footprint", "description", "slots"});
    PersonalityConfig personality;
    if (!entry.contains("footprint"))
        Fail(where, "missing \"footprint\"");
    personality.footprint = uint16_t(Integer(entry["footprint"], where + ".footprint", 0, 512));
    if (entry.contains("description"))
        personality.description = Text(entry["description"], where + ".description");
    if (entry.contains("slots")) {
        const json& slots = Array(entry["slots"], where + ".slots");
        for (size_t i = 0; i < slots.size(); ++i)
            personality.slots.push_back(ParseSlot(slots[i], where + ".slots[" + std::to_string(i) + "]"));
        if (personality.slots.size() != personality.footprint)
            Fail(where + ".slots",
                 "expected " + std::to_string(personality.footprint) + " slots, one per channel");
    }
    return personality;
}

SensorConfig ParseSensor(const json& entry, const std::string& where) {
    CheckKeys(entry, where,
              {"type", "unit", "prefix", "range", "normal", "recorded", "lowest_highest", "description",
               "value", "drift"});
    SensorConfig sensor;
    if (entry.contains("type"))
        sensor.type = uint8_t(Integer(entry["type"], where + ".type", 0, 0xFF));
    if (entry.contains("unit"))
        sensor.unit = uint8_t(Integer(entry["unit"], where + ".unit", 0, 0xFF));
    if (entry.contains("prefix"))
        sensor.prefix = uint8_t(Integer(entry["prefix"], where + ".prefix", 0, 0xFF));
    auto pair = [&](const char* key, int16_t& low, int16_t& high) {
        if (!entry.contains(key))
            return;
        const std::string at = where + "." + key;
        const json& values = Array(entry[key], at);
        if (values.size() != 2)
            Fail(at, "expected two numbers, lowest and highest");
        low = int16_t(Integer(values[0], at + "[0]", -32768, 32767));
        high = int16_t(Integer(values[1], at + "[1]", -32768, 32767));
        if (low > high)
            Fail(at, "lowest above highest");
    };
    pair("range", sensor.rangeMin, sensor.rangeMax);
    pair("normal", sensor.normalMin, sensor.normalMax);
    if (entry.contains("recorded"))
        sensor.recordedSupport = Boolean(entry["recorded"], where + ".recorded");
    if (entry.contains("lowest_highest"))
        sensor.lowestHighestSupport = Boolean(entry["lowest_highest"], where + ".lowest_highest");
    if (entry.contains("description"))
        sensor.description = Text(entry["description"], where + ".description");
    sensor.value = entry.contains("value")
                       ? Real(entry["value"], where + ".value", sensor.rangeMin, sensor.rangeMax)
                       : (double(sensor.rangeMin) + double(sensor.rangeMax)) / 2;
    if (entry.contains("drift"))
        sensor.drift = Real(entry["drift"], where + ".drift", 0, 10000);
    return sensor;
}

// Keys of a unit (root or sub device).
const std::set<std::string> kUnitKeys = {"label",
                                         "model",
                                         "model_id",
                                         "category",
                                         "software_version_id",
                                         "software_version",
                                         "personalities",
                                         "personality",
                                         "footprint",
                                         "start_address",
                                         "sensors",
                                         "identify"};

void ParseUnit(const json& entry, const std::string& where, UnitConfig& unit) {
    if (entry.contains("label"))
        unit.label = Text(entry["label"], where + ".label");
    if (entry.contains("model"))
        unit.model = Text(entry["model"], where + ".model");
    if (entry.contains("model_id"))
        unit.modelId = uint16_t(Integer(entry["model_id"], where + ".model_id", 0, 0xFFFF));
    if (entry.contains("category"))
        unit.category = uint16_t(Integer(entry["category"], where + ".category", 0, 0xFFFF));
    if (entry.contains("software_version_id"))
        unit.softwareVersionId =
            uint32_t(Integer(entry["software_version_id"], where + ".software_version_id", 0, 0xFFFFFFFFLL));
    if (entry.contains("software_version"))
        unit.softwareVersion = Text(entry["software_version"], where + ".software_version");
    if (entry.contains("personalities")) {
        const json& list = Array(entry["personalities"], where + ".personalities");
        if (list.size() > 255)
            Fail(where + ".personalities", "at most 255 personalities");
        for (size_t i = 0; i < list.size(); ++i)
            unit.personalities.push_back(
                ParsePersonality(list[i], where + ".personalities[" + std::to_string(i) + "]"));
        if (entry.contains("footprint"))
            Fail(where, "give \"footprint\" only without \"personalities\"");
    }
    if (entry.contains("personality")) {
        if (unit.personalities.empty())
            Fail(where + ".personality", "no personalities to choose from");
        unit.personality = uint8_t(
            Integer(entry["personality"], where + ".personality", 1, int64_t(unit.personalities.size())));
    }
    if (entry.contains("footprint"))
        unit.footprint = uint16_t(Integer(entry["footprint"], where + ".footprint", 0, 512));
    if (entry.contains("start_address") && !entry["start_address"].is_null())
        unit.startAddress = uint16_t(Integer(entry["start_address"], where + ".start_address", 1, 512));
    const uint16_t footprint =
        unit.personalities.empty() ? unit.footprint : unit.personalities[unit.personality - 1].footprint;
    if (footprint > 0 && !unit.startAddress)
        unit.startAddress = 1;
    if (entry.contains("sensors")) {
        const json& list = Array(entry["sensors"], where + ".sensors");
        if (list.size() > 255)
            Fail(where + ".sensors", "at most 255 sensors");
        for (size_t i = 0; i < list.size(); ++i)
            unit.sensors.push_back(ParseSensor(list[i], where + ".sensors[" + std::to_string(i) + "]"));
    }
    unit.identify = entry.contains("identify") ? Boolean(entry["identify"], where + ".identify") : false;
}

// The size and range a data type allows.
void TypeLimits(uint8_t dataType, uint8_t& size, int64_t& lowest, int64_t& highest) {
    switch (dataType) {
    case 3:
        size = 1;
        lowest = 0;
        highest = 0xFF;
        return;
    case 4:
        size = 1;
        lowest = -128;
        highest = 127;
        return;
    case 5:
        size = 2;
        lowest = 0;
        highest = 0xFFFF;
        return;
    case 6:
        size = 2;
        lowest = -32768;
        highest = 32767;
        return;
    case 7:
        size = 4;
        lowest = 0;
        highest = 0xFFFFFFFFLL;
        return;
    case 8:
        size = 4;
        lowest = INT32_MIN;
        highest = INT32_MAX;
        return;
    default:
        size = 0;
        lowest = 0;
        highest = 0;
        return;
    }
}

uint8_t DataTypeValue(const json& value, const std::string& where) {
    if (value.is_string()) {
        static const std::map<std::string, uint8_t> names = {
            {"bit_field", 1},     {"ascii", 2},       {"unsigned_byte", 3},  {"signed_byte", 4},
            {"unsigned_word", 5}, {"signed_word", 6}, {"unsigned_dword", 7}, {"signed_dword", 8}};
        auto it = names.find(value.get<std::string>());
        if (it != names.end())
            return it->second;
    }
    return uint8_t(Integer(value, where, 0, 0xFF));
}

void ParseManufacturerPids(const json& entry, const std::string& where,
                           std::vector<ManufacturerPidConfig>& out) {
    CheckKeys(entry, where,
              {"pid", "count", "type", "command_class", "unit", "prefix", "min", "max", "default", "value",
               "description", "size"});
    ManufacturerPidConfig pid;
    if (!entry.contains("pid"))
        Fail(where, "missing \"pid\"");
    pid.pid = uint16_t(Integer(entry["pid"], where + ".pid", 0x8000, 0xFFDF));
    const int64_t count = entry.contains("count") ? Integer(entry["count"], where + ".count", 1, 1000) : 1;
    if (pid.pid + count - 1 > 0xFFDF)
        Fail(where + ".count", "runs past 0xFFDF");
    pid.dataType = entry.contains("type") ? DataTypeValue(entry["type"], where + ".type") : 3;
    if (entry.contains("command_class")) {
        const std::string at = where + ".command_class";
        const json& cc = entry["command_class"];
        if (cc == "get")
            pid.commandClass = 1;
        else if (cc == "set")
            pid.commandClass = 2;
        else if (cc == "get_set")
            pid.commandClass = 3;
        else
            Fail(at, "expected \"get\", \"set\" or \"get_set\"");
    }
    if (entry.contains("unit"))
        pid.unit = uint8_t(Integer(entry["unit"], where + ".unit", 0, 0xFF));
    if (entry.contains("prefix"))
        pid.prefix = uint8_t(Integer(entry["prefix"], where + ".prefix", 0, 0xFF));
    std::string description =
        entry.contains("description") ? Text(entry["description"], where + ".description") : "";

    uint8_t size = 0;
    int64_t lowest = 0;
    int64_t highest = 0;
    TypeLimits(pid.dataType, size, lowest, highest);
    if (pid.dataType == 2) {
        // Text: "size" is the longest text.
        pid.pdlSize = uint8_t(entry.contains("size") ? Integer(entry["size"], where + ".size", 1, 32) : 32);
        std::string value =
            entry.contains("value") ? Text(entry["value"], where + ".value", pid.pdlSize) : "";
        pid.value = value;
        pid.minValue = 0;
        pid.maxValue = 0;
        pid.defaultValue = 0;
        if (entry.contains("min") || entry.contains("max") || entry.contains("default"))
            Fail(where, "a text parameter has no \"min\", \"max\" or \"default\"");
    } else {
        if (size == 0)
            Fail(where + ".type", "only numbers and text are supported");
        if (entry.contains("size"))
            Fail(where + ".size", "the size follows from the type");
        pid.pdlSize = size;
        pid.minValue =
            int32_t(entry.contains("min") ? Integer(entry["min"], where + ".min", lowest, highest) : lowest);
        pid.maxValue =
            int32_t(entry.contains("max") ? Integer(entry["max"], where + ".max", lowest, highest) : highest);
        if (int64_t(pid.minValue) > int64_t(pid.maxValue) && pid.dataType != 7)
            Fail(where, "\"min\" above \"max\"");
        pid.defaultValue =
            int32_t(entry.contains("default") ? Integer(entry["default"], where + ".default", lowest, highest)
                                              : pid.minValue);
        const int64_t start = entry.contains("value")
                                  ? Integer(entry["value"], where + ".value", lowest, highest)
                                  : pid.defaultValue;
        Bytes data;
        for (int i = size - 1; i >= 0; --i)
            data.push_back(char((uint64_t(start) >> (8 * i)) & 0xFF));
        pid.value = data;
    }
    for (int64_t i = 0; i < count; ++i) {
        ManufacturerPidConfig one = pid;
        one.pid = uint16_t(pid.pid + i);
        one.description = description;
        const size_t mark = description.find("%d");
        if (mark != std::string::npos) {
            one.description =
                description.substr(0, mark) + std::to_string(i + 1) + description.substr(mark + 2);
            if (one.description.size() > 32)
                one.description.resize(32);
        }
        out.push_back(one);
    }
}

void ParseFaults(const json& entry, const std::string& where, FaultConfig& faults) {
    CheckKeys(entry, where,
              {"ignore_mute", "deaf_to_mute", "babble", "answer_broadcast", "reply_checksum_errors",
               "request_errors", "late_replies", "turnaround_us", "dub_preamble"});
    if (entry.contains("ignore_mute"))
        faults.ignoreMute = Boolean(entry["ignore_mute"], where + ".ignore_mute");
    if (entry.contains("deaf_to_mute"))
        faults.deafToMute = Boolean(entry["deaf_to_mute"], where + ".deaf_to_mute");
    if (entry.contains("babble"))
        faults.babble = Boolean(entry["babble"], where + ".babble");
    if (entry.contains("answer_broadcast"))
        faults.answerBroadcast = Boolean(entry["answer_broadcast"], where + ".answer_broadcast");
    if (entry.contains("reply_checksum_errors"))
        faults.replyChecksumErrors =
            Real(entry["reply_checksum_errors"], where + ".reply_checksum_errors", 0, 1);
    if (entry.contains("request_errors"))
        faults.requestErrors = Real(entry["request_errors"], where + ".request_errors", 0, 1);
    if (entry.contains("late_replies"))
        faults.lateReplies = Real(entry["late_replies"], where + ".late_replies", 0, 1);
    if (entry.contains("turnaround_us"))
        faults.turnaroundUs = Real(entry["turnaround_us"], where + ".turnaround_us", 176, 10000);
    if (entry.contains("dub_preamble"))
        faults.dubPreamble = int(Integer(entry["dub_preamble"], where + ".dub_preamble", 0, 7));
}

} // namespace

int DaysInMonth(int year, int month) {
    static const int days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    if (month < 1 || month > 12)
        return 0;
    const bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
    return days[month - 1] + (month == 2 && leap ? 1 : 0);
}

int64_t CivilToSeconds(int year, int month, int day, int hour, int minute, int second) {
    // Days from civil, proleptic Gregorian calendar.
    const int64_t y = year - (month <= 2 ? 1 : 0);
    const int64_t era = (y >= 0 ? y : y - 399) / 400;
    const int64_t yoe = y - era * 400;
    const int64_t doy = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
    const int64_t doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    const int64_t days = era * 146097 + doe - 719468;
    return days * 86400 + hour * 3600 + minute * 60 + second;
}

void SecondsToCivil(int64_t seconds, int& year, int& month, int& day, int& hour, int& minute, int& second) {
    int64_t days = seconds / 86400;
    int64_t rest = seconds % 86400;
    if (rest < 0) {
        rest += 86400;
        --days;
    }
    hour = int(rest / 3600);
    minute = int(rest % 3600 / 60);
    second = int(rest % 60);
    const int64_t z = days + 719468;
    const int64_t era = (z >= 0 ? z : z - 146096) / 146097;
    const int64_t doe = z - era * 146097;
    const int64_t yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    const int64_t doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    const int64_t mp = (5 * doy + 2) / 153;
    day = int(doy - (153 * mp + 2) / 5 + 1);
    month = int(mp < 10 ? mp + 3 : mp - 9);
    year = int(yoe + era * 400 + (month <= 2 ? 1 : 0));
}

ResponderConfig ParseResponder(const json& entry, const std::string& where) {
    std::set<std::string> keys = kUnitKeys;
    for (const char* key : {"uid",
                            "manufacturer",
                            "product_details",
                            "boot_software_version_id",
                            "boot_software_version",
                            "device_hours",
                            "power_cycles",
                            "lamp",
                            "display",
                            "pan_tilt",
                            "clock",
                            "languages",
                            "power_state",
                            "self_tests",
                            "factory_defaults",
                            "reset",
                            "comms_status",
                            "status_messages",
                            "status_descriptions",
                            "manufacturer_pids",
                            "ack_timer",
                            "overflow",
                            "write_protected",
                            "faults",
                            "sub_devices",
                            "comment"})
        keys.insert(key);
    CheckKeys(entry, where, keys);

    ResponderConfig config;
    config.where = where;
    if (!entry.contains("uid"))
        Fail(where, "missing \"uid\"");
    if (!entry["uid"].is_string() || !rdm::ParseUid(entry["uid"].get<std::string>(), config.uid))
        Fail(where + ".uid", "expected a UID as \"MMMM:DDDDDDDD\" in hexadecimal");
    if (config.uid == 0 || config.uid > rdm::kMaxUid || (config.uid & 0xFFFFFFFFULL) == 0xFFFFFFFFULL)
        Fail(where + ".uid", "not a UID a responder may have");

    ParseUnit(entry, where, config.root);

    if (entry.contains("manufacturer"))
        config.manufacturer = Text(entry["manufacturer"], where + ".manufacturer");
    if (entry.contains("product_details")) {
        const json& list = Array(entry["product_details"], where + ".product_details");
        if (list.size() > 6)
            Fail(where + ".product_details", "at most six product detail ids");
        for (size_t i = 0; i < list.size(); ++i)
            config.productDetails.push_back(
                uint16_t(Integer(list[i], where + ".product_details[" + std::to_string(i) + "]", 0, 0xFFFF)));
    }
    if (entry.contains("boot_software_version_id"))
        config.bootSoftwareVersionId = uint32_t(
            Integer(entry["boot_software_version_id"], where + ".boot_software_version_id", 0, 0xFFFFFFFFLL));
    if (entry.contains("boot_software_version"))
        config.bootSoftwareVersion = Text(entry["boot_software_version"], where + ".boot_software_version");
    if (entry.contains("device_hours"))
        config.deviceHours =
            uint32_t(Integer(entry["device_hours"], where + ".device_hours", 0, 0xFFFFFFFFLL));
    if (entry.contains("power_cycles"))
        config.powerCycles =
            uint32_t(Integer(entry["power_cycles"], where + ".power_cycles", 0, 0xFFFFFFFFLL));
    if (entry.contains("lamp")) {
        const std::string at = where + ".lamp";
        const json& lamp = entry["lamp"];
        CheckKeys(lamp, at, {"hours", "strikes", "state", "on_mode"});
        LampConfig config2;
        if (lamp.contains("hours"))
            config2.hours = uint32_t(Integer(lamp["hours"], at + ".hours", 0, 0xFFFFFFFFLL));
        if (lamp.contains("strikes"))
            config2.strikes = uint32_t(Integer(lamp["strikes"], at + ".strikes", 0, 0xFFFFFFFFLL));
        if (lamp.contains("state"))
            config2.state = uint8_t(Integer(lamp["state"], at + ".state", 0, 0xFF));
        if (lamp.contains("on_mode"))
            config2.onMode = uint8_t(Integer(lamp["on_mode"], at + ".on_mode", 0, 0xFF));
        config.lamp = config2;
    }
    if (entry.contains("display")) {
        const std::string at = where + ".display";
        const json& display = entry["display"];
        CheckKeys(display, at, {"invert", "level"});
        if (display.contains("invert"))
            config.displayInvert = uint8_t(Integer(display["invert"], at + ".invert", 0, 2));
        if (display.contains("level"))
            config.displayLevel = uint8_t(Integer(display["level"], at + ".level", 0, 255));
    }
    if (entry.contains("pan_tilt")) {
        const std::string at = where + ".pan_tilt";
        const json& panTilt = entry["pan_tilt"];
        CheckKeys(panTilt, at, {"pan_invert", "tilt_invert", "swap"});
        if (panTilt.contains("pan_invert"))
            config.panInvert = Boolean(panTilt["pan_invert"], at + ".pan_invert") ? 1 : 0;
        if (panTilt.contains("tilt_invert"))
            config.tiltInvert = Boolean(panTilt["tilt_invert"], at + ".tilt_invert") ? 1 : 0;
        if (panTilt.contains("swap"))
            config.panTiltSwap = Boolean(panTilt["swap"], at + ".swap") ? 1 : 0;
    }
    if (entry.contains("clock"))
        config.clock = ClockValue(entry["clock"], where + ".clock");
    if (entry.contains("languages")) {
        const json& list = Array(entry["languages"], where + ".languages");
        if (list.empty() || list.size() > 100)
            Fail(where + ".languages", "expected 1 to 100 language codes");
        for (size_t i = 0; i < list.size(); ++i) {
            const std::string code = Text(list[i], where + ".languages[" + std::to_string(i) + "]", 2);
            if (code.size() != 2)
                Fail(where + ".languages[" + std::to_string(i) + "]", "a language code has two letters");
            config.languages.push_back(code);
        }
    }
    if (entry.contains("power_state")) {
        const auto state = uint8_t(Integer(entry["power_state"], where + ".power_state", 0, 0xFF));
        if (state > 2 && state != 0xFF)
            Fail(where + ".power_state", "expected 0, 1, 2 or 255");
        config.powerState = state;
    }
    if (entry.contains("self_tests")) {
        const json& list = Array(entry["self_tests"], where + ".self_tests");
        for (size_t i = 0; i < list.size(); ++i) {
            const std::string at = where + ".self_tests[" + std::to_string(i) + "]";
            CheckKeys(list[i], at, {"number", "description", "seconds"});
            SelfTestConfig test;
            if (!list[i].contains("number"))
                Fail(at, "missing \"number\"");
            test.number = uint8_t(Integer(list[i]["number"], at + ".number", 1, 0xFE));
            if (list[i].contains("description"))
                test.description = Text(list[i]["description"], at + ".description");
            if (list[i].contains("seconds"))
                test.seconds = Real(list[i]["seconds"], at + ".seconds", 0, 3600);
            config.selfTests.push_back(test);
        }
    }
    if (entry.contains("factory_defaults"))
        config.factoryDefaults = Boolean(entry["factory_defaults"], where + ".factory_defaults");
    if (entry.contains("reset")) {
        const std::string at = where + ".reset";
        const json& reset = entry["reset"];
        if (reset.is_boolean()) {
            config.resetDevice = reset.get<bool>();
        } else {
            CheckKeys(reset, at, {"warm_seconds", "cold_seconds"});
            if (reset.contains("warm_seconds"))
                config.warmResetSeconds = Real(reset["warm_seconds"], at + ".warm_seconds", 0, 600);
            if (reset.contains("cold_seconds"))
                config.coldResetSeconds = Real(reset["cold_seconds"], at + ".cold_seconds", 0, 600);
        }
    }
    if (entry.contains("comms_status"))
        config.commsStatus = Boolean(entry["comms_status"], where + ".comms_status");
    if (entry.contains("status_messages")) {
        config.statusMessagesSupported = true;
        const json& list = Array(entry["status_messages"], where + ".status_messages");
        for (size_t i = 0; i < list.size(); ++i) {
            const std::string at = where + ".status_messages[" + std::to_string(i) + "]";
            CheckKeys(list[i], at, {"sub_device", "type", "id", "values", "repeat"});
            StatusMessageConfig message;
            if (list[i].contains("sub_device"))
                message.subDevice = uint16_t(Integer(list[i]["sub_device"], at + ".sub_device", 0, 0xFFFE));
            if (list[i].contains("type"))
                message.type = StatusTypeValue(list[i]["type"], at + ".type");
            if (!list[i].contains("id"))
                Fail(at, "missing \"id\"");
            message.id = uint16_t(Integer(list[i]["id"], at + ".id", 0, 0xFFFF));
            if (list[i].contains("values")) {
                const json& values = Array(list[i]["values"], at + ".values");
                if (values.size() != 2)
                    Fail(at + ".values", "expected two numbers");
                message.value1 = int16_t(Integer(values[0], at + ".values[0]", -32768, 65535));
                message.value2 = int16_t(Integer(values[1], at + ".values[1]", -32768, 65535));
            }
            if (list[i].contains("repeat"))
                message.repeat = Real(list[i]["repeat"], at + ".repeat", 0, 86400);
            config.statusMessages.push_back(message);
        }
    }
    if (entry.contains("status_descriptions")) {
        const std::string at = where + ".status_descriptions";
        const json& map = entry["status_descriptions"];
        if (!map.is_object())
            Fail(at, "expected an object of status id and text");
        for (auto it = map.begin(); it != map.end(); ++it) {
            const auto id = uint16_t(Integer(json(it.key()), at + "." + it.key(), 0, 0xFFFF));
            config.statusDescriptions[id] = Text(it.value(), at + "." + it.key());
        }
    }
    if (entry.contains("manufacturer_pids")) {
        const json& list = Array(entry["manufacturer_pids"], where + ".manufacturer_pids");
        for (size_t i = 0; i < list.size(); ++i)
            ParseManufacturerPids(list[i], where + ".manufacturer_pids[" + std::to_string(i) + "]",
                                  config.manufacturerPids);
        std::set<uint16_t> seen;
        for (const auto& pid : config.manufacturerPids)
            if (!seen.insert(pid.pid).second)
                Fail(where + ".manufacturer_pids", "PID " + std::to_string(pid.pid) + " given twice");
    }
    if (entry.contains("ack_timer")) {
        const json& list = Array(entry["ack_timer"], where + ".ack_timer");
        for (size_t i = 0; i < list.size(); ++i) {
            const std::string at = where + ".ack_timer[" + std::to_string(i) + "]";
            CheckKeys(list[i], at, {"pid", "command", "seconds"});
            AckTimerConfig timer;
            if (!list[i].contains("pid"))
                Fail(at, "missing \"pid\"");
            timer.pid = PidValue(list[i]["pid"], at + ".pid");
            if (list[i].contains("command")) {
                const json& command = list[i]["command"];
                if (command != "get" && command != "set")
                    Fail(at + ".command", "expected \"get\" or \"set\"");
                timer.set = command == "set";
            }
            if (list[i].contains("seconds"))
                timer.seconds = Real(list[i]["seconds"], at + ".seconds", 0.1, 6553.5);
            config.ackTimers.push_back(timer);
        }
    }
    if (entry.contains("overflow")) {
        const json& list = Array(entry["overflow"], where + ".overflow");
        for (size_t i = 0; i < list.size(); ++i) {
            const std::string at = where + ".overflow[" + std::to_string(i) + "]";
            CheckKeys(list[i], at, {"pid", "part"});
            OverflowConfig overflow;
            if (!list[i].contains("pid") || !list[i].contains("part"))
                Fail(at, "expected \"pid\" and \"part\"");
            overflow.pid = PidValue(list[i]["pid"], at + ".pid");
            overflow.part = size_t(Integer(list[i]["part"], at + ".part", 1, int64_t(rdm::kMaxPdl)));
            config.overflows.push_back(overflow);
        }
    }
    if (entry.contains("write_protected")) {
        const json& list = Array(entry["write_protected"], where + ".write_protected");
        for (size_t i = 0; i < list.size(); ++i)
            config.writeProtected.push_back(
                PidValue(list[i], where + ".write_protected[" + std::to_string(i) + "]"));
    }
    if (entry.contains("faults"))
        ParseFaults(entry["faults"], where + ".faults", config.faults);
    if (entry.contains("sub_devices")) {
        const json& list = Array(entry["sub_devices"], where + ".sub_devices");
        for (size_t i = 0; i < list.size(); ++i) {
            const std::string at = where + ".sub_devices[" + std::to_string(i) + "]";
            std::set<std::string> subKeys = kUnitKeys;
            subKeys.insert("count");
            subKeys.insert("comment");
            CheckKeys(list[i], at, subKeys);
            const int64_t count =
                list[i].contains("count") ? Integer(list[i]["count"], at + ".count", 1, 512) : 1;
            UnitConfig unit;
            ParseUnit(list[i], at, unit);
            for (int64_t n = 0; n < count; ++n) {
                UnitConfig one = unit;
                // "%d" in a label numbers the sub devices of a group; addresses follow on.
                const size_t mark = unit.label.find("%d");
                if (mark != std::string::npos)
                    one.label =
                        unit.label.substr(0, mark) + std::to_string(n + 1) + unit.label.substr(mark + 2);
                if (unit.startAddress) {
                    const uint16_t footprint = unit.personalities.empty()
                                                   ? unit.footprint
                                                   : unit.personalities[unit.personality - 1].footprint;
                    const int address = *unit.startAddress + int(n) * footprint;
                    if (address > 512)
                        Fail(at, "start addresses of the group run past 512");
                    one.startAddress = uint16_t(address);
                }
                config.subDevices.push_back(one);
            }
        }
        if (config.subDevices.size() > 512)
            Fail(where + ".sub_devices", "at most 512 sub devices");
    }
    if (config.root.label.empty())
        config.root.label = config.root.model;
    return config;
}

} // namespace zol::sim::line
