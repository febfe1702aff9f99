#include "sim/line/Responder.h"

#include "sim/line/LineTiming.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace zol::sim::line {

using namespace rdm;

namespace {

// Highest part of an ACK_OVERFLOW answer that is a whole number of entries.
size_t PartSize(size_t entrySize) {
    entrySize = std::max<size_t>(entrySize, 1);
    return kMaxPdl / entrySize * entrySize;
}

uint8_t Severity(uint8_t statusType) {
    return statusType & 0x0F;
}

} // namespace

bool ParseReplyFault(const std::string& name, ReplyFault& fault) {
    static const std::pair<const char*, ReplyFault> names[] = {
        {"silent", ReplyFault::Silent},           {"checksum", ReplyFault::Checksum},
        {"transaction", ReplyFault::Transaction}, {"subdevice", ReplyFault::SubDevice},
        {"malformed", ReplyFault::Malformed},     {"source", ReplyFault::Source},
        {"broadcast", ReplyFault::Broadcast},
    };
    for (const auto& [text, value] : names)
        if (name == text) {
            fault = value;
            return true;
        }
    return false;
}

void CorruptPacket(Bytes& bytes, Random& random) {
    if (bytes.empty())
        return;
    switch (random.Below(4)) {
    case 0: // the tail is lost
        bytes.resize(random.Below(bytes.size()));
        break;
    case 1: // a spurious byte at the end
        bytes.push_back(char(random.Below(256)));
        break;
    default: { // a bit flips
        const size_t at = random.Below(bytes.size());
        bytes[at] = char(uint8_t(bytes[at]) ^ uint8_t(1u << random.Below(8)));
        break;
    }
    }
}

Responder::Reply Responder::Reply::Ack(Bytes data) {
    Reply reply;
    reply.data = std::move(data);
    return reply;
}

Responder::Reply Responder::Reply::Nack(uint16_t reason) {
    Reply reply;
    reply.type = kNackReason;
    PutU16(reply.data, reason);
    return reply;
}

Responder::Reply Responder::Reply::Timer(double seconds) {
    Reply reply;
    reply.type = kAckTimer;
    const double tenths = std::ceil(seconds * 10.0 - 1e-9);
    PutU16(reply.data, uint16_t(std::clamp(tenths, 1.0, 65535.0)));
    return reply;
}

Responder::Responder(ResponderConfig config, uint64_t seed) : config_(std::move(config)), seed_(seed) {
    BuildTables();
    Reset(0);
}

void Responder::Reset(double now) {
    random_.Seed(seed_);
    now_ = now;
    driftClock_ = now;
    connected_ = true;
    muted_ = false;
    silentUntil_ = 0;
    comms_ = {};
    faults_.clear();
    queue_.clear();
    lastQueued_.reset();
    overflow_ = {};
    lastStatusBatch_.clear();
    rearm_.clear();
    pendingStatus_.clear();
    for (const auto& message : config_.statusMessages)
        pendingStatus_.push_back(
            {message.subDevice, message.type, message.id, message.value1, message.value2, message.repeat});

    for (size_t u = 0; u < units_.size(); ++u) {
        Unit& unit = units_[u];
        const UnitConfig& config = *unit.config;
        unit.label = config.label;
        unit.personality = config.personalities.empty() ? 0 : config.personality;
        unit.startAddress = config.startAddress ? *config.startAddress : 0xFFFF;
        unit.identify = config.identify.value_or(false);
        unit.sensors.clear();
        for (const auto& sensor : config.sensors) {
            SensorState state;
            state.level = sensor.value;
            state.present = int16_t(std::lround(sensor.value));
            state.lowest = state.highest = state.recorded = state.present;
            unit.sensors.push_back(state);
        }
    }
    manufacturerValues_.clear();
    for (const auto& pid : config_.manufacturerPids)
        manufacturerValues_[pid.pid] = pid.value;
    clockOffset_ = config_.clock.value_or(0) - int64_t(std::floor(now));
    deviceHoursBase_ = config_.deviceHours.value_or(0);
    deviceHoursSince_ = now;
    powerCycles_ = config_.powerCycles.value_or(0);
    const LampConfig lamp = config_.lamp.value_or(LampConfig{});
    lampHours_ = lamp.hours;
    lampOnSeconds_ = 0;
    lampStrikes_ = lamp.strikes;
    lampState_ = lamp.state;
    lampOnMode_ = lamp.onMode;
    displayInvert_ = config_.displayInvert.value_or(0);
    displayLevel_ = config_.displayLevel.value_or(0);
    panInvert_ = config_.panInvert.value_or(0);
    tiltInvert_ = config_.tiltInvert.value_or(0);
    panTiltSwap_ = config_.panTiltSwap.value_or(0);
    language_ = config_.languages.empty() ? "en" : config_.languages.front();
    powerState_ = config_.powerState.value_or(0xFF);
    selfTestUntil_ = 0;
}

void Responder::InjectFault(ReplyFault fault, int count) {
    for (int i = 0; i < count; ++i)
        faults_.push_back(fault);
}

void Responder::RaiseStatus(uint16_t subDevice, uint8_t type, uint16_t id, int16_t value1, int16_t value2) {
    pendingStatus_.push_back({subDevice, type, id, value1, value2, 0});
}

size_t Responder::QueueCount() const {
    size_t ready = 0;
    for (const auto& answer : queue_)
        if (answer.readyAt <= now_)
            ++ready;
    return ready + pendingStatus_.size();
}

uint8_t Responder::MessageCount() const {
    return uint8_t(std::min<size_t>(QueueCount(), 255));
}

std::string Responder::Info() const {
    char text[256];
    const Unit& root = units_.front();
    std::snprintf(text, sizeof text,
                  "uid=%s muted=%d silent=%d connected=%d identify=%d address=%u personality=%u queued=%zu "
                  "comms=%u,%u,%u label=",
                  UidText(config_.uid).c_str(), muted_ ? 1 : 0, Silent() ? 1 : 0, connected_ ? 1 : 0,
                  root.identify ? 1 : 0, unsigned(root.startAddress), unsigned(root.personality),
                  QueueCount(), unsigned(comms_.shortMessage), unsigned(comms_.lengthMismatch),
                  unsigned(comms_.checksumFail));
    return text + root.label;
}

void Responder::AdvanceTo(double now) {
    if (now <= now_)
        return;
    if (lampState_ == 1)
        lampOnSeconds_ += now - now_;
    now_ = now;
    const double ticks = std::floor(now_ - driftClock_);
    if (ticks >= 1) {
        driftClock_ += ticks;
        DriftSensors(int(std::min(ticks, 600.0)));
    }
    for (auto it = rearm_.begin(); it != rearm_.end();) {
        if (it->first <= now_) {
            pendingStatus_.push_back(it->second);
            it = rearm_.erase(it);
        } else {
            ++it;
        }
    }
}

void Responder::DriftSensors(int ticks) {
    for (auto& unit : units_) {
        for (size_t s = 0; s < unit.sensors.size(); ++s) {
            const SensorConfig& config = unit.config->sensors[s];
            if (config.drift <= 0)
                continue;
            SensorState& state = unit.sensors[s];
            for (int t = 0; t < ticks; ++t) {
                state.level += (config.value - state.level) * 0.05 + config.drift * random_.Symmetric();
                state.level = std::clamp(state.level, double(config.rangeMin), double(config.rangeMax));
                state.present = int16_t(std::lround(state.level));
                state.lowest = std::min(state.lowest, state.present);
                state.highest = std::max(state.highest, state.present);
            }
        }
    }
}

void Responder::ResetSensor(size_t unit, size_t sensor) {
    SensorState& state = units_[unit].sensors[sensor];
    state.lowest = state.highest = state.recorded = state.present;
}

Bytes Responder::SensorValue(size_t unit, size_t sensor) const {
    const SensorState& state = units_[unit].sensors[sensor];
    const SensorConfig& config = units_[unit].config->sensors[sensor];
    Bytes out(1, char(sensor));
    PutU16(out, uint16_t(state.present));
    PutU16(out, config.lowestHighestSupport ? uint16_t(state.lowest) : 0);
    PutU16(out, config.lowestHighestSupport ? uint16_t(state.highest) : 0);
    PutU16(out, config.recordedSupport ? uint16_t(state.recorded) : 0);
    return out;
}

int64_t Responder::ClockNow() const {
    return clockOffset_ + int64_t(std::floor(now_));
}

uint16_t Responder::Footprint(size_t unit) const {
    const Unit& u = units_[unit];
    const UnitConfig& config = *u.config;
    if (config.personalities.empty())
        return config.footprint;
    return config.personalities[u.personality - 1].footprint;
}

Bytes Responder::DeviceInfo(size_t unit) const {
    const Unit& u = units_[unit];
    const UnitConfig& config = *u.config;
    Bytes out;
    PutU16(out, 0x0100); // RDM protocol version 1.0
    PutU16(out, config.modelId);
    PutU16(out, config.category);
    PutU32(out, config.softwareVersionId);
    PutU16(out, Footprint(unit));
    out.push_back(char(config.personalities.empty() ? 0 : u.personality));
    out.push_back(char(config.personalities.size()));
    PutU16(out, Footprint(unit) == 0 ? 0xFFFF : u.startAddress);
    PutU16(out, unit == 0 ? uint16_t(units_.size() - 1) : 0);
    out.push_back(char(config.sensors.size()));
    return out;
}

bool Responder::AtFactoryDefaults() const {
    for (const Unit& unit : units_) {
        const UnitConfig& config = *unit.config;
        if (unit.label != config.label ||
            (!config.personalities.empty() && unit.personality != config.personality) ||
            unit.startAddress != (config.startAddress ? *config.startAddress : 0xFFFF))
            return false;
    }
    for (const auto& pid : config_.manufacturerPids)
        if (manufacturerValues_.at(pid.pid) != pid.value)
            return false;
    const LampConfig lamp = config_.lamp.value_or(LampConfig{});
    return displayInvert_ == config_.displayInvert.value_or(0) &&
           displayLevel_ == config_.displayLevel.value_or(0) && panInvert_ == config_.panInvert.value_or(0) &&
           tiltInvert_ == config_.tiltInvert.value_or(0) && panTiltSwap_ == config_.panTiltSwap.value_or(0) &&
           lampOnMode_ == lamp.onMode &&
           language_ == (config_.languages.empty() ? "en" : config_.languages.front());
}

void Responder::ApplyFactoryDefaults() {
    for (Unit& unit : units_) {
        const UnitConfig& config = *unit.config;
        unit.label = config.label;
        if (!config.personalities.empty())
            unit.personality = config.personality;
        unit.startAddress = config.startAddress ? *config.startAddress : 0xFFFF;
    }
    for (const auto& pid : config_.manufacturerPids)
        manufacturerValues_[pid.pid] = pid.value;
    displayInvert_ = config_.displayInvert.value_or(0);
    displayLevel_ = config_.displayLevel.value_or(0);
    panInvert_ = config_.panInvert.value_or(0);
    tiltInvert_ = config_.tiltInvert.value_or(0);
    panTiltSwap_ = config_.panTiltSwap.value_or(0);
    lampOnMode_ = config_.lamp.value_or(LampConfig{}).onMode;
    language_ = config_.languages.empty() ? "en" : config_.languages.front();
}

void Responder::Restart(bool cold) {
    muted_ = false;
    for (Unit& unit : units_)
        unit.identify = false;
    queue_.clear();
    lastQueued_.reset();
    overflow_ = {};
    selfTestUntil_ = 0;
    silentUntil_ = now_ + (cold ? config_.coldResetSeconds : config_.warmResetSeconds);
    if (cold) {
        ++powerCycles_;
        for (size_t u = 0; u < units_.size(); ++u)
            for (size_t s = 0; s < units_[u].sensors.size(); ++s)
                ResetSensor(u, s);
        pendingStatus_.clear();
        rearm_.clear();
        lastStatusBatch_.clear();
        for (const auto& message : config_.statusMessages)
            pendingStatus_.push_back({message.subDevice, message.type, message.id, message.value1,
                                      message.value2, message.repeat});
    }
}

Bytes Responder::CollectStatus(uint8_t statusType) {
    Bytes out;
    size_t taken = 0;
    for (auto it = pendingStatus_.begin(); it != pendingStatus_.end() && taken < 25;) {
        if (Severity(it->type) >= statusType) {
            PutU16(out, it->subDevice);
            out.push_back(char(it->type));
            PutU16(out, it->id);
            PutU16(out, uint16_t(it->value1));
            PutU16(out, uint16_t(it->value2));
            if (it->repeat > 0)
                rearm_.push_back({now_ + it->repeat, *it});
            it = pendingStatus_.erase(it);
            ++taken;
        } else {
            ++it;
        }
    }
    lastStatusBatch_ = out;
    return out;
}

Responder::Reply Responder::QueuedMessage(uint8_t statusType) {
    if (statusType == STATUS_GET_LAST_MESSAGE) {
        if (lastQueued_)
            return *lastQueued_;
        Reply reply = Reply::Ack();
        reply.queued = true;
        reply.pid = STATUS_MESSAGES;
        reply.commandClass = kGetResponse;
        return reply;
    }
    if (statusType < STATUS_ADVISORY || statusType > STATUS_ERROR)
        return Reply::Nack(NR_DATA_OUT_OF_RANGE);
    for (auto it = queue_.begin(); it != queue_.end(); ++it) {
        if (it->readyAt <= now_) {
            Reply reply = it->reply;
            queue_.erase(it);
            lastQueued_ = reply;
            return reply;
        }
    }
    if (!queue_.empty()) {
        double first = queue_.front().readyAt;
        for (const auto& answer : queue_)
            first = std::min(first, answer.readyAt);
        return Reply::Timer(first - now_);
    }
    Reply reply = Reply::Ack(CollectStatus(statusType));
    reply.queued = true;
    reply.pid = STATUS_MESSAGES;
    reply.commandClass = kGetResponse;
    lastQueued_ = reply;
    return reply;
}

Responder::Reply Responder::Process(const Request& request) {
    if (request.subDevice == kSubDeviceAll) {
        if (request.commandClass == kGet)
            return Reply::Nack(NR_SUB_DEVICE_OUT_OF_RANGE);
        // A SET to every sub device (to the root when there are none).
        Reply last;
        const size_t first = units_.size() > 1 ? 1 : 0;
        for (size_t u = first; u < units_.size(); ++u) {
            Request one = request;
            one.subDevice = uint16_t(u);
            Reply reply = Dispatch(one);
            if (reply.type == kNackReason)
                return reply;
            last = reply;
        }
        return last;
    }
    return Dispatch(request);
}

Responder::Reply Responder::Dispatch(const Request& request) {
    if (request.subDevice >= units_.size())
        return Reply::Nack(NR_SUB_DEVICE_OUT_OF_RANGE);
    const size_t u = request.subDevice;
    const Unit& unit = units_[u];
    const auto found = unit.pids.find(request.pid);
    if (found == unit.pids.end())
        return Reply::Nack(NR_UNKNOWN_PID);
    const PidEntry& entry = found->second;
    const bool set = request.commandClass == kSet;
    const Handler& handler = set ? entry.set : entry.get;
    if (!handler)
        return Reply::Nack(NR_UNSUPPORTED_COMMAND_CLASS);
    const size_t pdl = request.data.size();
    if (pdl < (set ? entry.setMin : entry.getMin) || pdl > (set ? entry.setMax : entry.getMax))
        return Reply::Nack(NR_FORMAT_ERROR);
    if (set && std::find(config_.writeProtected.begin(), config_.writeProtected.end(), request.pid) !=
                   config_.writeProtected.end())
        return Reply::Nack(NR_WRITE_PROTECT);

    if (!request.broadcast) {
        for (const auto& timer : config_.ackTimers) {
            if (timer.pid == request.pid && timer.set == set) {
                Reply answer = handler(u, request.data);
                answer.queued = true;
                answer.pid = request.pid;
                answer.commandClass = uint8_t(request.commandClass + 1);
                answer.subDevice = request.subDevice;
                queue_.push_back({now_ + timer.seconds, answer});
                return Reply::Timer(timer.seconds);
            }
        }
    }

    if (overflow_.active && overflow_.commandClass == request.commandClass && overflow_.pid == request.pid &&
        overflow_.subDevice == request.subDevice && overflow_.request == request.data)
        return Overflowing(request, entry, Reply{});
    overflow_ = {};
    return Overflowing(request, entry, handler(u, request.data));
}

Responder::Reply Responder::Overflowing(const Request& request, const PidEntry& entry, Reply reply) {
    if (!overflow_.active) {
        if (reply.type != kAck || reply.queued)
            return reply;
        size_t part = PartSize(entry.entrySize);
        for (const auto& forced : config_.overflows)
            if (forced.pid == request.pid)
                part = std::min(part, forced.part);
        if (reply.data.size() <= part)
            return reply;
        overflow_.active = true;
        overflow_.commandClass = request.commandClass;
        overflow_.pid = request.pid;
        overflow_.subDevice = request.subDevice;
        overflow_.request = request.data;
        overflow_.data = std::move(reply.data);
        overflow_.offset = 0;
        overflow_.part = part;
    }
    Reply out;
    const size_t left = overflow_.data.size() - overflow_.offset;
    if (left > overflow_.part) {
        out.type = kAckOverflow;
        out.data = overflow_.data.substr(overflow_.offset, overflow_.part);
        overflow_.offset += overflow_.part;
    } else {
        out.type = kAck;
        out.data = overflow_.data.substr(overflow_.offset);
        overflow_ = {};
    }
    return out;
}

bool Responder::Receive(const Bytes& incoming, Transmission& out, bool intact) {
    if (!connected_)
        return false;
    Bytes corrupted;
    const Bytes* bytes = &incoming;
    if (random_.Chance(config_.faults.requestErrors)) {
        corrupted = incoming;
        CorruptPacket(corrupted, random_);
        bytes = &corrupted;
    }
    // A good packet for somebody else, or a DUB that does not cover this UID or finds it muted,
    // needs no closer look.
    if (intact && bytes == &incoming) {
        const Uid destination = rdm::GetUid(incoming, 3);
        if (destination != config_.uid && destination != kBroadcastUid &&
            destination != VendorcastUid(ManufacturerOf(config_.uid)))
            return false;
    }
    if (intact && bytes == &incoming && uint8_t(incoming[20]) == kDiscovery &&
        GetU16(incoming, 21) == DISC_UNIQUE_BRANCH && incoming.size() == kHeaderSize + 14 &&
        !config_.faults.babble &&
        (muted_ || config_.uid < rdm::GetUid(incoming, kHeaderSize) ||
         config_.uid > rdm::GetUid(incoming, kHeaderSize + 6)))
        return false;
    Packet packet;
    switch (Decode(*bytes, packet)) {
    case DecodeError::None:
        break;
    case DecodeError::Short:
        ++comms_.shortMessage;
        return false;
    case DecodeError::LengthMismatch:
    case DecodeError::PdlMismatch:
        ++comms_.lengthMismatch;
        return false;
    case DecodeError::Checksum:
        ++comms_.checksumFail;
        return false;
    default:
        return false; // not an RDM packet
    }
    if (Silent())
        return false;
    const bool directed = packet.destination == config_.uid;
    const bool broadcast = packet.destination == kBroadcastUid ||
                           packet.destination == VendorcastUid(ManufacturerOf(config_.uid));
    if (!directed && !broadcast)
        return false;

    const double turnaround =
        (config_.faults.turnaroundUs > 0 ? config_.faults.turnaroundUs : kDefaultTurnaround) +
        random_.Uniform() * 20;

    if (packet.commandClass == kDiscovery) {
        if (packet.pid == DISC_UNIQUE_BRANCH) {
            if (config_.faults.babble) {
                out.bytes.clear();
                for (int i = 0; i < 24; ++i)
                    out.bytes.push_back(char(random_.Below(256)));
                out.dub = true;
                out.turnaroundUs = turnaround;
                return true;
            }
            if (muted_ || packet.data.size() != 12)
                return false;
            const Uid lower = rdm::GetUid(packet.data, 0);
            const Uid upper = rdm::GetUid(packet.data, 6);
            if (config_.uid < lower || config_.uid > upper)
                return false;
            out.bytes = EncodeDubReply(config_.uid, config_.faults.dubPreamble);
            out.dub = true;
            out.turnaroundUs = turnaround;
            return true;
        }
        if (packet.pid == DISC_MUTE || packet.pid == DISC_UN_MUTE) {
            if (!packet.data.empty())
                return false;
            if (packet.pid == DISC_UN_MUTE)
                muted_ = false;
            else if (config_.faults.deafToMute)
                return false;
            else if (!config_.faults.ignoreMute)
                muted_ = true;
            if (!directed)
                return false;
            Packet reply;
            reply.destination = packet.source;
            reply.source = config_.uid;
            reply.transaction = packet.transaction;
            reply.portOrType = kAck;
            reply.messageCount = MessageCount();
            reply.subDevice = 0;
            reply.commandClass = kDiscoveryResponse;
            reply.pid = packet.pid;
            // Control field: bit 1 tells that the responder has sub devices.
            PutU16(reply.data, units_.size() > 1 ? 0x0002 : 0x0000);
            out.bytes = Encode(reply);
            if (random_.Chance(config_.faults.replyChecksumErrors))
                out.bytes.back() = char(uint8_t(out.bytes.back()) ^ 0x01);
            out.dub = false;
            out.turnaroundUs = turnaround;
            return true;
        }
        return false;
    }

    if (packet.commandClass != kGet && packet.commandClass != kSet) {
        if (!directed)
            return false;
        Packet reply;
        reply.destination = packet.source;
        reply.source = config_.uid;
        reply.transaction = packet.transaction;
        reply.portOrType = kNackReason;
        reply.subDevice = packet.subDevice;
        reply.commandClass = uint8_t(packet.commandClass + 1);
        reply.pid = packet.pid;
        PutU16(reply.data, NR_UNSUPPORTED_COMMAND_CLASS);
        out.bytes = Encode(reply);
        out.turnaroundUs = turnaround;
        return true;
    }
    if (broadcast && packet.commandClass == kGet)
        return false;

    Request request;
    request.commandClass = packet.commandClass;
    request.pid = packet.pid;
    request.subDevice = packet.subDevice;
    request.data = packet.data;
    request.broadcast = broadcast;
    // A reset makes the responder silent from now on, but its answer to the reset still goes out.
    Reply reply = Process(request);

    bool answer = directed;
    if (broadcast) {
        auto fault = std::find(faults_.begin(), faults_.end(), ReplyFault::Broadcast);
        if (fault != faults_.end()) {
            faults_.erase(fault);
            answer = true;
        }
        if (config_.faults.answerBroadcast)
            answer = true;
    }
    if (!answer)
        return false;

    Packet response;
    response.destination = packet.source;
    response.source = config_.uid;
    response.transaction = packet.transaction;
    response.portOrType = reply.type;
    response.messageCount = MessageCount();
    response.subDevice = reply.queued ? reply.subDevice : packet.subDevice;
    response.commandClass = reply.queued ? reply.commandClass : uint8_t(packet.commandClass + 1);
    response.pid = reply.queued ? reply.pid : packet.pid;
    response.data = reply.data.substr(0, kMaxPdl);

    std::optional<ReplyFault> fault;
    for (auto it = faults_.begin(); it != faults_.end(); ++it) {
        if (*it != ReplyFault::Broadcast) {
            fault = *it;
            faults_.erase(it);
            break;
        }
    }
    if (fault == ReplyFault::Silent)
        return false;
    if (fault == ReplyFault::Transaction)
        response.transaction = uint8_t(response.transaction + 1);
    if (fault == ReplyFault::SubDevice)
        response.subDevice = uint16_t(response.subDevice + 1);
    if (fault == ReplyFault::Source)
        response.source ^= 1;
    out.bytes = Encode(response);
    if (fault == ReplyFault::Checksum)
        out.bytes.back() = char(uint8_t(out.bytes.back()) ^ 0x5A);
    if (fault == ReplyFault::Malformed) {
        out.bytes.resize(out.bytes.size() - 2);
        out.bytes[2] = char(uint8_t(out.bytes[2]) + 1);
        PutU16(out.bytes, Checksum(out.bytes));
    }
    if (random_.Chance(config_.faults.replyChecksumErrors)) {
        const size_t at = 3 + random_.Below(out.bytes.size() - 3);
        out.bytes[at] = char(uint8_t(out.bytes[at]) ^ uint8_t(1u << random_.Below(8)));
    }
    out.dub = false;
    out.turnaroundUs = turnaround;
    if (random_.Chance(config_.faults.lateReplies))
        out.turnaroundUs = kResponseTimeout + 500;
    return true;
}

} // namespace zol::sim::line
