#include "sim/line/RdmLineImpl.h"

#include <cmath>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <sstream>
#include <stdexcept>

namespace zol::sim {

std::unique_ptr<RdmLine> RdmLine::FromJson(const nlohmann::json& responders, const std::string& where,
                                           uint64_t seed) {
    std::vector<line::ResponderConfig> configs;
    if (!responders.is_null()) {
        if (!responders.is_array())
            throw std::runtime_error(where + ": expected an array of responders");
        if (responders.size() > 4096)
            throw std::runtime_error(where + ": more than 4096 responders on one line");
        for (size_t i = 0; i < responders.size(); ++i)
            configs.push_back(line::ParseResponder(responders[i], where + "[" + std::to_string(i) + "]"));
    }
    return std::make_unique<line::LineImpl>(std::move(configs), seed);
}

bool RdmLine::Handles(uint8_t code) {
    switch (code) {
    case 49:
    case 51:
    case 52:
    case 53:
    case 56:
    case 57:
    case 58:
    case 61:
        return true;
    default:
        return false;
    }
}

namespace line {

using namespace rdm;

namespace {

std::vector<std::string> Words(const std::string& text) {
    std::istringstream in(text);
    std::vector<std::string> words;
    for (std::string word; in >> word;)
        words.push_back(word);
    return words;
}

bool ParseNumber(const std::string& text, double& value) {
    try {
        size_t used = 0;
        value = std::stod(text, &used);
        return used == text.size() && std::isfinite(value);
    } catch (const std::exception&) {
        return false;
    }
}

bool ParseInteger(const std::string& text, long long lowest, long long highest, long long& value) {
    try {
        size_t used = 0;
        value = std::stoll(text, &used, 0);
        return used == text.size() && value >= lowest && value <= highest;
    } catch (const std::exception&) {
        return false;
    }
}

} // namespace

LineImpl::LineImpl(std::vector<ResponderConfig> responders, uint64_t seed) : wire_(MixSeed(seed, 0xFFFF)) {
    for (size_t i = 0; i < responders.size(); ++i)
        wire_.Add(std::make_unique<Responder>(std::move(responders[i]), MixSeed(seed, i)));
}

void LineImpl::Reset() {
    now_ = 0;
    discoveryClock_ = 0;
    discovery_.Clear();
    mask_.reset();
    transaction_ = 0;
    muteErrorReported_ = false;
    wire_.Reset(0);
}

void LineImpl::Advance(double seconds) {
    if (!(seconds > 0) || !std::isfinite(seconds))
        return;
    now_ += seconds;
    while (discovery_.GetState() == Discovery::State::Running && discoveryClock_ <= now_) {
        wire_.AdvanceTo(discoveryClock_);
        double cost = 0;
        discovery_.Step(*this, cost);
        discoveryClock_ += cost / 1e6;
    }
    if (discovery_.GetState() != Discovery::State::Running)
        discoveryClock_ = now_;
    wire_.AdvanceTo(now_);
}

Packet LineImpl::Request(Uid destination, uint8_t commandClass, uint16_t pid, uint16_t subDevice,
                         const Bytes& data) {
    Packet packet;
    packet.destination = destination;
    packet.source = controller_;
    packet.transaction = transaction_++;
    packet.portOrType = 1;
    packet.messageCount = 0;
    packet.subDevice = subDevice;
    packet.commandClass = commandClass;
    packet.pid = pid;
    packet.data = data;
    return packet;
}

void LineImpl::UnmuteAll(double& cost) {
    const Packet packet = Request(kBroadcastUid, kDiscovery, DISC_UN_MUTE, 0, {});
    cost = wire_.Transmit(Encode(packet), Wire::Kind::Broadcast).costUs;
    ++wire_.Stats().unmutes;
}

DubOutcome LineImpl::Dub(Uid lower, Uid upper, double& cost) {
    Bytes bounds;
    PutUid(bounds, lower);
    PutUid(bounds, upper);
    const Packet packet = Request(kBroadcastUid, kDiscovery, DISC_UNIQUE_BRANCH, 0, bounds);
    const WireResult result = wire_.Transmit(Encode(packet), Wire::Kind::Dub);
    cost = result.costUs;
    ++wire_.Stats().dubs;
    DubOutcome outcome;
    if (!result.answered)
        return outcome;
    Uid uid = 0;
    if (DecodeDubReply(result.bytes, uid) == DubDecode::Valid) {
        outcome.kind = DubOutcome::Valid;
        outcome.uid = uid;
    } else {
        outcome.kind = DubOutcome::Corrupt;
    }
    return outcome;
}

MuteOutcome LineImpl::Mute(Uid uid, double& cost) {
    const Packet packet = Request(uid, kDiscovery, DISC_MUTE, 0, {});
    const WireResult result = wire_.Transmit(Encode(packet), Wire::Kind::Directed);
    cost = result.costUs;
    ++wire_.Stats().mutes;
    if (!result.answered)
        return MuteOutcome::Silent;
    Packet reply;
    if (Decode(result.bytes, reply) != DecodeError::None || reply.source != uid ||
        reply.transaction != packet.transaction || reply.commandClass != kDiscoveryResponse ||
        reply.pid != DISC_MUTE)
        return MuteOutcome::Corrupt;
    return MuteOutcome::Acknowledged;
}

int32_t LineImpl::Handle(uint8_t code, const std::string& data, std::string& response) {
    response.clear();
    const bool searching = discovery_.GetState() == Discovery::State::Running;
    switch (code) {
    case 49: { // mute one UID; a device that answers joins the table
        if (data.size() < 6)
            return status::kDataMissing;
        if (data.size() > 6)
            return status::kDataTooLong;
        if (searching)
            return status::kBusy;
        double cost = 0;
        const Uid uid = GetUid(data, 0);
        switch (Mute(uid, cost)) {
        case MuteOutcome::Acknowledged:
            discovery_.AddFound(uid);
            return status::kOk;
        case MuteOutcome::Corrupt:
            return status::kChecksum;
        case MuteOutcome::Silent:
            return status::kMissing;
        }
        return status::kMissing;
    }
    case 51: // start a discovery pass
        discovery_.Start();
        discoveryClock_ = now_;
        muteErrorReported_ = false;
        return status::kOk;
    case 52:
        return Status(response);
    case 53: {
        if (data.empty())
            return status::kDataMissing;
        if (data.size() > 1)
            return status::kDataTooLong;
        const size_t index = uint8_t(data[0]);
        const auto& table = discovery_.Table();
        if (index < 1 || index > table.size())
            return status::kConstraint;
        PutUid(response, table[index - 1]);
        return status::kOk;
    }
    case 56:
        return Transaction(kGet, data, response);
    case 57:
        return Transaction(kSet, data, response);
    case 58:
        return CollectQueued(data, response);
    case 61:
        if (data.size() < 2)
            return status::kDataMissing;
        if (data.size() > 2)
            return status::kDataTooLong;
        mask_ = GetU16(data, 0);
        return status::kOk;
    default:
        return status::kNotAvailable;
    }
}

int32_t LineImpl::Status(std::string& response) {
    if (discovery_.GetState() == Discovery::State::Done) {
        if (discovery_.Result() == Discovery::kCorrupting)
            return status::kCorrupting;
        if (discovery_.Result() == Discovery::kMuteFailed && !muteErrorReported_) {
            muteErrorReported_ = true;
            return status::kMuteFailed;
        }
    }
    response.push_back(char(discovery_.Table().size()));
    response.push_back(char(discovery_.GetState() == Discovery::State::Running ? 1 : 0));
    return status::kOk;
}

namespace {

// What the firmware makes of the reply to a GET or SET (or to QUEUED_MESSAGE when `queued`).
int32_t MapReply(const Packet& request, const WireResult& result, Uid controller, bool queued,
                 std::string& response) {
    if (!result.answered)
        return status::kMissing;
    Packet reply;
    const DecodeError error = Decode(result.bytes, reply);
    if (error == DecodeError::Checksum)
        return status::kChecksum;
    if (error != DecodeError::None)
        return status::kFormat;
    if (reply.source != request.destination)
        return status::kIdentity;
    if (reply.destination != controller)
        return status::kFormat;
    if (reply.transaction != request.transaction)
        return status::kTransaction;
    if (queued) {
        if (reply.commandClass != kGetResponse && reply.commandClass != kSetResponse)
            return status::kFormat;
    } else {
        if (reply.commandClass != request.commandClass + 1 || reply.pid != request.pid)
            return status::kFormat;
        if (reply.subDevice != request.subDevice)
            return status::kSubDevice;
    }
    switch (reply.portOrType) {
    case kAck:
    case kAckOverflow:
        if (queued)
            PutU16(response, reply.pid);
        response += reply.data;
        if (reply.portOrType == kAckOverflow)
            return status::kOverflow;
        // A collected answer is reported as done: its leading PID tells the host what it answers.
        // Messages still waiting are told at the next ordinary transaction.
        if (queued)
            return status::kOk;
        return reply.messageCount > 0 ? status::kQueued : status::kOk;
    case kAckTimer:
        if (reply.data.size() != 2)
            return status::kFormat;
        response = reply.data;
        return status::kDelayed;
    case kNackReason:
        if (reply.data.size() != 2)
            return status::kFormat;
        return status::kNack + GetU16(reply.data, 0);
    default:
        return status::kFormat;
    }
}

} // namespace

int32_t LineImpl::Transaction(uint8_t commandClass, const std::string& data, std::string& response) {
    if (data.size() < 5)
        return status::kDataMissing;
    if (data.size() > 5 + kMaxPdl)
        return status::kDataTooLong;
    if (discovery_.GetState() == Discovery::State::Running)
        return status::kBusy;
    const size_t token = uint8_t(data[0]);
    const uint16_t subDevice = GetU16(data, 1);
    const uint16_t pid = GetU16(data, 3);
    const Bytes parameterData = data.substr(5);
    if (token == 0) {
        const Uid destination = mask_ ? VendorcastUid(*mask_) : kBroadcastUid;
        const Packet packet = Request(destination, commandClass, pid, subDevice, parameterData);
        const WireResult result = wire_.Transmit(Encode(packet), Wire::Kind::Broadcast);
        return result.answered ? status::kUnexpected : status::kOk;
    }
    const auto& table = discovery_.Table();
    if (token > table.size())
        return status::kConstraint;
    const Packet packet = Request(table[token - 1], commandClass, pid, subDevice, parameterData);
    const WireResult result = wire_.Transmit(Encode(packet), Wire::Kind::Directed);
    return MapReply(packet, result, controller_, false, response);
}

int32_t LineImpl::CollectQueued(const std::string& data, std::string& response) {
    if (data.empty())
        return status::kDataMissing;
    if (data.size() > 2)
        return status::kDataTooLong;
    if (discovery_.GetState() == Discovery::State::Running)
        return status::kBusy;
    const size_t token = uint8_t(data[0]);
    const auto& table = discovery_.Table();
    if (token < 1 || token > table.size())
        return status::kConstraint;
    const uint8_t statusType = data.size() > 1 ? uint8_t(data[1]) : uint8_t(STATUS_ERROR);
    const Packet packet = Request(table[token - 1], kGet, QUEUED_MESSAGE, 0, Bytes(1, char(statusType)));
    const WireResult result = wire_.Transmit(Encode(packet), Wire::Kind::Directed);
    return MapReply(packet, result, controller_, true, response);
}

bool LineImpl::Control(const std::string& command, std::string& reply) {
    const std::vector<std::string> words = Words(command);
    if (words.empty())
        return false;
    if (words[0] == "line")
        return LineControl(words, reply);
    if (words[0] == "responder")
        return ResponderControl(words, reply);
    return false;
}

bool LineImpl::LineControl(const std::vector<std::string>& words, std::string& reply) {
    auto error = [&](const std::string& text) {
        reply = "error: " + text;
        return true;
    };
    if (words.size() < 2)
        return error("line: expected stats, noise, garble, ghosts, search, responders or table");
    const std::string& what = words[1];
    if (what == "stats") {
        if (words.size() == 3 && words[2] == "reset") {
            wire_.Stats() = {};
            reply = "ok";
            return true;
        }
        if (words.size() != 2)
            return error("line stats: expected nothing or \"reset\"");
        char extra[200];
        const char* state = discovery_.GetState() == Discovery::State::Running ? "running"
                            : discovery_.GetState() == Discovery::State::Done  ? "done"
                                                                               : "idle";
        std::snprintf(extra, sizeof extra,
                      " found=%zu search=%s result=0x%02X pass_dubs=%llu pass_mutes=%llu now_s=%.3f",
                      discovery_.Table().size(), state, discovery_.Result(),
                      (unsigned long long)discovery_.Dubs(), (unsigned long long)discovery_.Mutes(), now_);
        reply = wire_.Stats().Text() + extra;
        return true;
    }
    if (what == "noise" || what == "garble") {
        double value = 0;
        if (words.size() != 3 || !ParseNumber(words[2], value) || value < 0 || value > 1)
            return error("line " + what + ": expected a share from 0 to 1");
        (what == "noise" ? wire_.noise : wire_.garble) = value;
        reply = "ok";
        return true;
    }
    if (what == "ghosts") {
        long long count = 0;
        if (words.size() != 3 || !ParseInteger(words[2], 0, 100000, count))
            return error("line ghosts: expected a count");
        wire_.forcedGhosts = int(count);
        reply = "ok";
        return true;
    }
    if (what == "search") {
        if (words.size() != 3 || (words[2] != "classic" && words[2] != "improved"))
            return error("line search: expected \"classic\" or \"improved\"");
        discovery_.SetOptions(words[2] == "classic" ? DiscoveryOptions::Classic() : DiscoveryOptions{});
        reply = "ok";
        return true;
    }
    if (what == "responders" || what == "table") {
        std::string text;
        if (what == "responders") {
            for (const auto& responder : wire_.Responders())
                text += UidText(responder->GetUid()) + " " + responder->Config().root.label + "\n";
        } else {
            const auto& table = discovery_.Table();
            for (size_t i = 0; i < table.size(); ++i)
                text += std::to_string(i + 1) + " " + UidText(table[i]) + "\n";
        }
        reply = text;
        return true;
    }
    return error("unknown line command \"" + what + "\"");
}

bool LineImpl::ResponderControl(const std::vector<std::string>& words, std::string& reply) {
    auto error = [&](const std::string& text) {
        reply = "error: " + text;
        return true;
    };
    if (words.size() < 3)
        return error("responder: expected a UID (or #n) and a command");
    Responder* responder = nullptr;
    if (words[1].size() > 1 && words[1][0] == '#') {
        long long index = 0;
        if (ParseInteger(words[1].substr(1), 1, (long long)wire_.Responders().size(), index))
            responder = wire_.Responders()[size_t(index - 1)].get();
    } else {
        Uid uid = 0;
        if (ParseUid(words[1], uid))
            responder = wire_.Find(uid);
    }
    if (!responder)
        return error("responder: no responder \"" + words[1] + "\" on this line");
    const std::string& what = words[2];
    if (what == "info" && words.size() == 3) {
        reply = responder->Info();
        return true;
    }
    if ((what == "disconnect" || what == "connect") && words.size() == 3) {
        responder->SetConnected(what == "connect");
        reply = "ok";
        return true;
    }
    if (what == "fault") {
        ReplyFault fault{};
        long long count = 1;
        if (words.size() < 4 || words.size() > 5 || !ParseReplyFault(words[3], fault) ||
            (words.size() == 5 && !ParseInteger(words[4], 1, 1000, count)))
            return error(
                "responder fault: expected silent, checksum, transaction, subdevice, malformed, source or "
                "broadcast, and an optional count");
        responder->InjectFault(fault, int(count));
        reply = "ok";
        return true;
    }
    if (what == "status") {
        long long type = 0, id = 0, value1 = 0, value2 = 0, sub = 0;
        const size_t n = words.size();
        if ((n != 5 && n != 7 && n != 8) || !ParseInteger(words[3], 0, 0xFF, type) ||
            !ParseInteger(words[4], 0, 0xFFFF, id) ||
            (n >= 7 && !ParseInteger(words[5], -32768, 65535, value1)) ||
            (n >= 7 && !ParseInteger(words[6], -32768, 65535, value2)) ||
            (n == 8 && !ParseInteger(words[7], 0, 0xFFFE, sub)))
            return error("responder status: expected type, id, and optionally two values and a sub device");
        responder->RaiseStatus(uint16_t(sub), uint8_t(type), uint16_t(id), int16_t(value1), int16_t(value2));
        reply = "ok";
        return true;
    }
    return error("unknown responder command \"" + what + "\"");
}

} // namespace line
} // namespace zol::sim
