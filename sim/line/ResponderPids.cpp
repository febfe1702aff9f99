// The parameters of a virtual responder: one table of GET and SET handlers per unit. A handler
// runs only after the common checks of Responder::Dispatch, so it sees parameter data of a length
// its entry allows and needs to check only the values.

#include "sim/line/Responder.h"

#include <algorithm>
#include <cmath>

namespace zol::sim::line {

using namespace rdm;

namespace {

Bytes Text32(const std::string& text) {
    return text.substr(0, 32);
}

int64_t SignedValue(const Bytes& data, uint8_t dataType) {
    uint64_t raw = 0;
    for (unsigned char c : data)
        raw = (raw << 8) | c;
    switch (dataType) {
    case 4:
        return int8_t(raw);
    case 6:
        return int16_t(raw);
    case 8:
        return int32_t(raw);
    default:
        return int64_t(raw);
    }
}

} // namespace

Responder::PidEntry& Responder::Add(size_t unit, uint16_t pid, bool listed) {
    PidEntry& entry = units_[unit].pids[pid];
    entry.listed = listed;
    return entry;
}

void Responder::BuildTables() {
    units_.clear();
    units_.push_back(Unit{});
    units_.back().config = &config_.root;
    for (const auto& sub : config_.subDevices) {
        units_.push_back(Unit{});
        units_.back().config = &sub;
    }
    for (size_t u = 0; u < units_.size(); ++u)
        AddStandardPids(u);
    AddRootPids();
}

void Responder::AddStandardPids(size_t u) {
    const UnitConfig& config = *units_[u].config;

    {
        PidEntry& e = Add(u, DEVICE_INFO, false);
        e.get = [this](size_t unit, const Bytes&) { return Reply::Ack(DeviceInfo(unit)); };
    }
    {
        PidEntry& e = Add(u, SUPPORTED_PARAMETERS, false);
        e.entrySize = 2;
        e.get = [this](size_t unit, const Bytes&) {
            Bytes out;
            for (const auto& [pid, entry] : units_[unit].pids)
                if (entry.listed)
                    PutU16(out, pid);
            return Reply::Ack(out);
        };
    }
    {
        PidEntry& e = Add(u, SOFTWARE_VERSION_LABEL, false);
        e.get = [this](size_t unit, const Bytes&) {
            return Reply::Ack(Text32(units_[unit].config->softwareVersion));
        };
    }
    {
        PidEntry& e = Add(u, IDENTIFY_DEVICE, false);
        e.get = [this](size_t unit, const Bytes&) {
            return Reply::Ack(Bytes(1, char(units_[unit].identify)));
        };
        e.setMin = e.setMax = 1;
        e.set = [this](size_t unit, const Bytes& data) {
            if (uint8_t(data[0]) > 1)
                return Reply::Nack(NR_DATA_OUT_OF_RANGE);
            units_[unit].identify = data[0] != 0;
            return Reply::Ack();
        };
    }
    {
        const bool addressable = !config.personalities.empty() || config.footprint > 0;
        PidEntry& e = Add(u, DMX_START_ADDRESS, false);
        e.get = [this](size_t unit, const Bytes&) {
            Bytes out;
            PutU16(out, Footprint(unit) == 0 ? 0xFFFF : units_[unit].startAddress);
            return Reply::Ack(out);
        };
        if (addressable) {
            e.setMin = e.setMax = 2;
            e.set = [this](size_t unit, const Bytes& data) {
                const uint16_t address = GetU16(data, 0);
                if (address < 1 || address > 512 || Footprint(unit) == 0)
                    return Reply::Nack(NR_DATA_OUT_OF_RANGE);
                units_[unit].startAddress = address;
                return Reply::Ack();
            };
        }
    }
    if (!config.model.empty()) {
        PidEntry& e = Add(u, DEVICE_MODEL_DESCRIPTION);
        e.get = [this](size_t unit, const Bytes&) { return Reply::Ack(Text32(units_[unit].config->model)); };
    }
    {
        PidEntry& e = Add(u, DEVICE_LABEL);
        e.get = [this](size_t unit, const Bytes&) { return Reply::Ack(units_[unit].label); };
        e.setMax = 32;
        e.set = [this](size_t unit, const Bytes& data) {
            units_[unit].label = data;
            return Reply::Ack();
        };
    }
    if (!config.personalities.empty()) {
        PidEntry& p = Add(u, DMX_PERSONALITY);
        p.get = [this](size_t unit, const Bytes&) {
            Bytes out(1, char(units_[unit].personality));
            out.push_back(char(units_[unit].config->personalities.size()));
            return Reply::Ack(out);
        };
        p.setMin = p.setMax = 1;
        p.set = [this](size_t unit, const Bytes& data) {
            const uint8_t personality = uint8_t(data[0]);
            if (personality < 1 || personality > units_[unit].config->personalities.size())
                return Reply::Nack(NR_DATA_OUT_OF_RANGE);
            units_[unit].personality = personality;
            if (Footprint(unit) > 0 && units_[unit].startAddress == 0xFFFF)
                units_[unit].startAddress = 1;
            return Reply::Ack();
        };
        PidEntry& d = Add(u, DMX_PERSONALITY_DESCRIPTION);
        d.getMin = d.getMax = 1;
        d.get = [this](size_t unit, const Bytes& data) {
            const uint8_t personality = uint8_t(data[0]);
            const auto& list = units_[unit].config->personalities;
            if (personality < 1 || personality > list.size())
                return Reply::Nack(NR_DATA_OUT_OF_RANGE);
            Bytes out(1, char(personality));
            PutU16(out, list[personality - 1].footprint);
            out += Text32(list[personality - 1].description);
            return Reply::Ack(out);
        };
        const bool slots = std::any_of(config.personalities.begin(), config.personalities.end(),
                                       [](const PersonalityConfig& p) { return !p.slots.empty(); });
        if (slots) {
            auto current = [this](size_t unit) -> const std::vector<SlotConfig>& {
                return units_[unit].config->personalities[units_[unit].personality - 1].slots;
            };
            PidEntry& info = Add(u, SLOT_INFO);
            info.entrySize = 5;
            info.get = [current](size_t unit, const Bytes&) {
                Bytes out;
                const auto& list = current(unit);
                for (size_t i = 0; i < list.size(); ++i) {
                    PutU16(out, uint16_t(i));
                    out.push_back(char(list[i].type));
                    PutU16(out, list[i].id);
                }
                return Reply::Ack(out);
            };
            PidEntry& description = Add(u, SLOT_DESCRIPTION);
            description.getMin = description.getMax = 2;
            description.get = [current](size_t unit, const Bytes& data) {
                const uint16_t slot = GetU16(data, 0);
                const auto& list = current(unit);
                if (slot >= list.size() || list[slot].description.empty())
                    return Reply::Nack(NR_DATA_OUT_OF_RANGE);
                Bytes out;
                PutU16(out, slot);
                out += Text32(list[slot].description);
                return Reply::Ack(out);
            };
            PidEntry& defaults = Add(u, DEFAULT_SLOT_VALUE);
            defaults.entrySize = 3;
            defaults.get = [current](size_t unit, const Bytes&) {
                Bytes out;
                const auto& list = current(unit);
                for (size_t i = 0; i < list.size(); ++i) {
                    PutU16(out, uint16_t(i));
                    out.push_back(char(list[i].defaultValue));
                }
                return Reply::Ack(out);
            };
        }
    }
    if (!config.sensors.empty()) {
        PidEntry& definition = Add(u, SENSOR_DEFINITION);
        definition.getMin = definition.getMax = 1;
        definition.get = [this](size_t unit, const Bytes& data) {
            const uint8_t number = uint8_t(data[0]);
            const auto& list = units_[unit].config->sensors;
            if (number >= list.size())
                return Reply::Nack(NR_DATA_OUT_OF_RANGE);
            const SensorConfig& sensor = list[number];
            Bytes out(1, char(number));
            out.push_back(char(sensor.type));
            out.push_back(char(sensor.unit));
            out.push_back(char(sensor.prefix));
            PutU16(out, uint16_t(sensor.rangeMin));
            PutU16(out, uint16_t(sensor.rangeMax));
            PutU16(out, uint16_t(sensor.normalMin));
            PutU16(out, uint16_t(sensor.normalMax));
            out.push_back(char((sensor.recordedSupport ? 1 : 0) | (sensor.lowestHighestSupport ? 2 : 0)));
            out += Text32(sensor.description);
            return Reply::Ack(out);
        };
        PidEntry& value = Add(u, SENSOR_VALUE);
        value.getMin = value.getMax = 1;
        value.setMin = value.setMax = 1;
        value.get = [this](size_t unit, const Bytes& data) {
            const uint8_t number = uint8_t(data[0]);
            if (number >= units_[unit].sensors.size())
                return Reply::Nack(NR_DATA_OUT_OF_RANGE);
            return Reply::Ack(SensorValue(unit, number));
        };
        value.set = [this](size_t unit, const Bytes& data) {
            const uint8_t number = uint8_t(data[0]);
            if (number == 0xFF) {
                for (size_t s = 0; s < units_[unit].sensors.size(); ++s)
                    ResetSensor(unit, s);
                Bytes out(1, char(0xFF));
                out += Bytes(8, '\0');
                return Reply::Ack(out);
            }
            if (number >= units_[unit].sensors.size())
                return Reply::Nack(NR_DATA_OUT_OF_RANGE);
            ResetSensor(unit, number);
            return Reply::Ack(SensorValue(unit, number));
        };
        const bool recording = std::any_of(config.sensors.begin(), config.sensors.end(),
                                           [](const SensorConfig& s) { return s.recordedSupport; });
        if (recording) {
            PidEntry& record = Add(u, RECORD_SENSORS);
            record.setMin = record.setMax = 1;
            record.set = [this](size_t unit, const Bytes& data) {
                const uint8_t number = uint8_t(data[0]);
                auto& sensors = units_[unit].sensors;
                const auto& configs = units_[unit].config->sensors;
                if (number == 0xFF) {
                    for (size_t s = 0; s < sensors.size(); ++s)
                        if (configs[s].recordedSupport)
                            sensors[s].recorded = sensors[s].present;
                    return Reply::Ack();
                }
                if (number >= sensors.size() || !configs[number].recordedSupport)
                    return Reply::Nack(NR_DATA_OUT_OF_RANGE);
                sensors[number].recorded = sensors[number].present;
                return Reply::Ack();
            };
        }
    }
}

void Responder::AddRootPids() {
    const ResponderConfig& c = config_;
    if (!c.manufacturer.empty()) {
        PidEntry& e = Add(0, MANUFACTURER_LABEL);
        e.get = [this](size_t, const Bytes&) { return Reply::Ack(Text32(config_.manufacturer)); };
    }
    if (!c.productDetails.empty()) {
        PidEntry& e = Add(0, PRODUCT_DETAIL_ID_LIST);
        e.get = [this](size_t, const Bytes&) {
            Bytes out;
            for (uint16_t id : config_.productDetails)
                PutU16(out, id);
            return Reply::Ack(out);
        };
    }
    if (c.bootSoftwareVersionId) {
        PidEntry& e = Add(0, BOOT_SOFTWARE_VERSION_ID);
        e.get = [this](size_t, const Bytes&) {
            Bytes out;
            PutU32(out, *config_.bootSoftwareVersionId);
            return Reply::Ack(out);
        };
    }
    if (!c.bootSoftwareVersion.empty()) {
        PidEntry& e = Add(0, BOOT_SOFTWARE_VERSION_LABEL);
        e.get = [this](size_t, const Bytes&) { return Reply::Ack(Text32(config_.bootSoftwareVersion)); };
    }
    // A 32-bit counter that can be read and, unless write protected, set.
    auto counter = [this](uint16_t pid, std::function<uint32_t()> read, std::function<void(uint32_t)> write) {
        PidEntry& e = Add(0, pid);
        e.get = [read](size_t, const Bytes&) {
            Bytes out;
            PutU32(out, read());
            return Reply::Ack(out);
        };
        e.setMin = e.setMax = 4;
        e.set = [write](size_t, const Bytes& data) {
            write(GetU32(data, 0));
            return Reply::Ack();
        };
    };
    if (c.deviceHours)
        counter(
            DEVICE_HOURS,
            [this] {
                return uint32_t(deviceHoursBase_ + uint32_t(std::floor((now_ - deviceHoursSince_) / 3600)));
            },
            [this](uint32_t value) {
                deviceHoursBase_ = value;
                deviceHoursSince_ = now_;
            });
    if (c.powerCycles)
        counter(
            DEVICE_POWER_CYCLES, [this] { return powerCycles_; },
            [this](uint32_t value) { powerCycles_ = value; });
    if (c.lamp) {
        counter(
            LAMP_HOURS, [this] { return uint32_t(lampHours_ + uint32_t(std::floor(lampOnSeconds_ / 3600))); },
            [this](uint32_t value) {
                lampHours_ = value;
                lampOnSeconds_ = 0;
            });
        counter(
            LAMP_STRIKES, [this] { return lampStrikes_; }, [this](uint32_t value) { lampStrikes_ = value; });
        PidEntry& state = Add(0, LAMP_STATE);
        state.get = [this](size_t, const Bytes&) { return Reply::Ack(Bytes(1, char(lampState_))); };
        state.setMin = state.setMax = 1;
        state.set = [this](size_t, const Bytes& data) {
            const uint8_t value = uint8_t(data[0]);
            if (value > 3 && !(value >= 0x80 && value <= 0xDF))
                return Reply::Nack(NR_DATA_OUT_OF_RANGE);
            if (value == 1 && lampState_ != 1)
                ++lampStrikes_;
            lampState_ = value;
            return Reply::Ack();
        };
        PidEntry& mode = Add(0, LAMP_ON_MODE);
        mode.get = [this](size_t, const Bytes&) { return Reply::Ack(Bytes(1, char(lampOnMode_))); };
        mode.setMin = mode.setMax = 1;
        mode.set = [this](size_t, const Bytes& data) {
            const uint8_t value = uint8_t(data[0]);
            if (value > 3 && !(value >= 0x80 && value <= 0xDF))
                return Reply::Nack(NR_DATA_OUT_OF_RANGE);
            lampOnMode_ = value;
            return Reply::Ack();
        };
    }
    // A one-byte setting with its highest value.
    auto setting = [this](uint16_t pid, uint8_t* value, uint8_t highest) {
        PidEntry& e = Add(0, pid);
        e.get = [value](size_t, const Bytes&) { return Reply::Ack(Bytes(1, char(*value))); };
        e.setMin = e.setMax = 1;
        e.set = [value, highest](size_t, const Bytes& data) {
            if (uint8_t(data[0]) > highest)
                return Reply::Nack(NR_DATA_OUT_OF_RANGE);
            *value = uint8_t(data[0]);
            return Reply::Ack();
        };
    };
    if (c.displayInvert)
        setting(DISPLAY_INVERT, &displayInvert_, 2);
    if (c.displayLevel)
        setting(DISPLAY_LEVEL, &displayLevel_, 255);
    if (c.panInvert)
        setting(PAN_INVERT, &panInvert_, 1);
    if (c.tiltInvert)
        setting(TILT_INVERT, &tiltInvert_, 1);
    if (c.panTiltSwap)
        setting(PAN_TILT_SWAP, &panTiltSwap_, 1);
    if (c.clock) {
        PidEntry& e = Add(0, REAL_TIME_CLOCK);
        e.get = [this](size_t, const Bytes&) {
            int year, month, day, hour, minute, second;
            SecondsToCivil(ClockNow(), year, month, day, hour, minute, second);
            Bytes out;
            PutU16(out, uint16_t(year));
            for (int v : {month, day, hour, minute, second})
                out.push_back(char(v));
            return Reply::Ack(out);
        };
        e.setMin = e.setMax = 7;
        e.set = [this](size_t, const Bytes& data) {
            const int year = GetU16(data, 0);
            const int month = uint8_t(data[2]), day = uint8_t(data[3]), hour = uint8_t(data[4]);
            const int minute = uint8_t(data[5]), second = uint8_t(data[6]);
            if (year < 2003 || month < 1 || month > 12 || day < 1 || day > DaysInMonth(year, month) ||
                hour > 23 || minute > 59 || second > 59)
                return Reply::Nack(NR_DATA_OUT_OF_RANGE);
            clockOffset_ = CivilToSeconds(year, month, day, hour, minute, second) - int64_t(std::floor(now_));
            return Reply::Ack();
        };
    }
    if (!c.languages.empty()) {
        PidEntry& capabilities = Add(0, LANGUAGE_CAPABILITIES);
        capabilities.entrySize = 2;
        capabilities.get = [this](size_t, const Bytes&) {
            Bytes out;
            for (const auto& code : config_.languages)
                out += code;
            return Reply::Ack(out);
        };
        PidEntry& language = Add(0, LANGUAGE);
        language.get = [this](size_t, const Bytes&) { return Reply::Ack(language_); };
        language.setMin = language.setMax = 2;
        language.set = [this](size_t, const Bytes& data) {
            if (std::find(config_.languages.begin(), config_.languages.end(), data) ==
                config_.languages.end())
                return Reply::Nack(NR_DATA_OUT_OF_RANGE);
            language_ = data;
            return Reply::Ack();
        };
    }
    if (c.powerState) {
        PidEntry& e = Add(0, POWER_STATE);
        e.get = [this](size_t, const Bytes&) { return Reply::Ack(Bytes(1, char(powerState_))); };
        e.setMin = e.setMax = 1;
        e.set = [this](size_t, const Bytes& data) {
            const uint8_t value = uint8_t(data[0]);
            if (value > 2 && value != 0xFF)
                return Reply::Nack(NR_DATA_OUT_OF_RANGE);
            powerState_ = value;
            return Reply::Ack();
        };
    }
    if (!c.selfTests.empty()) {
        PidEntry& perform = Add(0, PERFORM_SELFTEST);
        perform.get = [this](size_t, const Bytes&) {
            return Reply::Ack(Bytes(1, char(now_ < selfTestUntil_)));
        };
        perform.setMin = perform.setMax = 1;
        perform.set = [this](size_t, const Bytes& data) {
            const uint8_t number = uint8_t(data[0]);
            if (number == 0) {
                selfTestUntil_ = 0;
                return Reply::Ack();
            }
            double seconds = 0;
            for (const auto& test : config_.selfTests)
                if (number == 0xFF || test.number == number)
                    seconds += test.seconds;
            if (seconds <= 0 && number != 0xFF)
                return Reply::Nack(NR_DATA_OUT_OF_RANGE);
            selfTestUntil_ = now_ + seconds;
            return Reply::Ack();
        };
        PidEntry& description = Add(0, SELF_TEST_DESCRIPTION);
        description.getMin = description.getMax = 1;
        description.get = [this](size_t, const Bytes& data) {
            for (const auto& test : config_.selfTests)
                if (test.number == uint8_t(data[0])) {
                    Bytes out(1, data[0]);
                    out += Text32(test.description);
                    return Reply::Ack(out);
                }
            return Reply::Nack(NR_DATA_OUT_OF_RANGE);
        };
    }
    if (c.factoryDefaults) {
        PidEntry& e = Add(0, FACTORY_DEFAULTS);
        e.get = [this](size_t, const Bytes&) { return Reply::Ack(Bytes(1, char(AtFactoryDefaults()))); };
        e.set = [this](size_t, const Bytes&) {
            ApplyFactoryDefaults();
            return Reply::Ack();
        };
    }
    if (c.resetDevice) {
        PidEntry& e = Add(0, RESET_DEVICE);
        e.setMin = e.setMax = 1;
        e.set = [this](size_t, const Bytes& data) {
            const uint8_t type = uint8_t(data[0]);
            if (type != 0x01 && type != 0xFF)
                return Reply::Nack(NR_DATA_OUT_OF_RANGE);
            Restart(type == 0xFF);
            return Reply::Ack();
        };
    }
    if (c.commsStatus) {
        PidEntry& e = Add(0, COMMS_STATUS);
        e.get = [this](size_t, const Bytes&) {
            Bytes out;
            PutU16(out, comms_.shortMessage);
            PutU16(out, comms_.lengthMismatch);
            PutU16(out, comms_.checksumFail);
            return Reply::Ack(out);
        };
        e.set = [this](size_t, const Bytes&) {
            comms_ = {};
            return Reply::Ack();
        };
    }
    if (c.statusMessagesSupported) {
        PidEntry& messages = Add(0, STATUS_MESSAGES);
        messages.entrySize = 9;
        messages.getMin = messages.getMax = 1;
        messages.get = [this](size_t, const Bytes& data) {
            const uint8_t type = uint8_t(data[0]);
            if (type == STATUS_NONE)
                return Reply::Ack();
            if (type == STATUS_GET_LAST_MESSAGE)
                return Reply::Ack(lastStatusBatch_);
            if (type > STATUS_ERROR)
                return Reply::Nack(NR_DATA_OUT_OF_RANGE);
            return Reply::Ack(CollectStatus(type));
        };
        PidEntry& description = Add(0, STATUS_ID_DESCRIPTION);
        description.getMin = description.getMax = 2;
        description.get = [this](size_t, const Bytes& data) {
            const auto found = config_.statusDescriptions.find(GetU16(data, 0));
            if (found == config_.statusDescriptions.end())
                return Reply::Nack(NR_DATA_OUT_OF_RANGE);
            return Reply::Ack(Text32(found->second));
        };
        PidEntry& clear = Add(0, CLEAR_STATUS_ID);
        clear.set = [this](size_t, const Bytes&) {
            pendingStatus_.clear();
            return Reply::Ack();
        };
    }
    if (c.statusMessagesSupported || !c.ackTimers.empty()) {
        PidEntry& e = Add(0, QUEUED_MESSAGE);
        e.getMin = e.getMax = 1;
        e.get = [this](size_t, const Bytes& data) { return QueuedMessage(uint8_t(data[0])); };
    }
    if (!c.manufacturerPids.empty()) {
        PidEntry& description = Add(0, PARAMETER_DESCRIPTION);
        description.getMin = description.getMax = 2;
        description.get = [this](size_t, const Bytes& data) {
            const uint16_t pid = GetU16(data, 0);
            for (const auto& m : config_.manufacturerPids) {
                if (m.pid != pid)
                    continue;
                Bytes out;
                PutU16(out, m.pid);
                out.push_back(char(m.pdlSize));
                out.push_back(char(m.dataType));
                out.push_back(char(m.commandClass));
                out.push_back(0); // type, not used
                out.push_back(char(m.unit));
                out.push_back(char(m.prefix));
                PutU32(out, uint32_t(m.minValue));
                PutU32(out, uint32_t(m.maxValue));
                PutU32(out, uint32_t(m.defaultValue));
                out += Text32(m.description);
                return Reply::Ack(out);
            }
            return Reply::Nack(NR_DATA_OUT_OF_RANGE);
        };
        for (const auto& m : c.manufacturerPids) {
            PidEntry& e = Add(0, m.pid);
            const ManufacturerPidConfig* pid = &m;
            if (m.commandClass & 1)
                e.get = [this, pid](size_t, const Bytes&) {
                    return Reply::Ack(manufacturerValues_.at(pid->pid));
                };
            if (m.commandClass & 2) {
                e.setMin = m.dataType == 2 ? 0 : m.pdlSize;
                e.setMax = m.pdlSize;
                e.set = [this, pid](size_t, const Bytes& data) {
                    if (pid->dataType != 2) {
                        const int64_t value = SignedValue(data, pid->dataType);
                        const int64_t lowest =
                            pid->dataType == 7 ? int64_t(uint32_t(pid->minValue)) : pid->minValue;
                        const int64_t highest =
                            pid->dataType == 7 ? int64_t(uint32_t(pid->maxValue)) : pid->maxValue;
                        if (value < lowest || value > highest)
                            return Reply::Nack(NR_DATA_OUT_OF_RANGE);
                    }
                    manufacturerValues_[pid->pid] = data;
                    return Reply::Ack();
                };
            }
        }
    }
}

} // namespace zol::sim::line
