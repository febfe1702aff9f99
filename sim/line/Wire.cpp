#include "sim/line/Wire.h"

#include <algorithm>

namespace zol::sim::line {

using namespace rdm;

Responder* Wire::Find(Uid uid) const {
    for (const auto& responder : responders_)
        if (responder->GetUid() == uid)
            return responder.get();
    return nullptr;
}

void Wire::AdvanceTo(double now) {
    for (auto& responder : responders_)
        responder->AdvanceTo(now);
}

void Wire::Reset(double now) {
    random_.Seed(seed_);
    stats_ = {};
    noise = 0;
    garble = 0.7;
    forcedGhosts = 0;
    for (auto& responder : responders_)
        responder->Reset(now);
}

WireResult Wire::Transmit(const Bytes& request, Kind kind) {
    WireResult result;
    ++stats_.requests;
    ++stats_.packets;

    Packet decoded;
    const bool intact = Decode(request, decoded) == DecodeError::None;
    std::vector<Transmission> replies;
    for (auto& responder : responders_) {
        Transmission reply;
        bool answered = false;
        if (random_.Chance(noise)) {
            Bytes copy = request;
            CorruptPacket(copy, random_);
            ++stats_.corrupted;
            answered = responder->Receive(copy, reply);
        } else {
            answered = responder->Receive(request, reply, intact);
        }
        if (answered)
            replies.push_back(std::move(reply));
    }
    stats_.packets += replies.size();
    stats_.replies += replies.size();

    // Replies that start after the controller's time-out are not heard.
    double lastEnd = 0;
    std::vector<const Transmission*> heard;
    for (const auto& reply : replies) {
        const double end = reply.turnaroundUs +
                           (reply.dub ? DubReplyTime(reply.bytes.size()) : FrameTime(reply.bytes.size()));
        lastEnd = std::max(lastEnd, end);
        if (reply.dub || reply.turnaroundUs <= kResponseTimeout)
            heard.push_back(&reply);
    }
    result.repliers = int(heard.size());

    if (heard.size() == 1) {
        result.answered = true;
        result.bytes = heard.front()->bytes;
    } else if (heard.size() > 1) {
        result.answered = true;
        result.collision = true;
        ++stats_.collisions;
        // Drivers pulling the line low win: the bytes add up as a bitwise AND; where one reply has
        // ended the others go on alone.
        size_t longest = 0;
        for (const auto* reply : heard)
            longest = std::max(longest, reply->bytes.size());
        Bytes sum(longest, char(0xFF));
        for (const auto* reply : heard)
            for (size_t i = 0; i < reply->bytes.size(); ++i)
                sum[i] = char(uint8_t(sum[i]) & uint8_t(reply->bytes[i]));

        if (kind == Kind::Dub && forcedGhosts > 0 && request.size() >= kHeaderSize + 12) {
            --forcedGhosts;
            const Uid lower = GetUid(request, kHeaderSize);
            const Uid upper = GetUid(request, kHeaderSize + 6);
            Uid ghost = lower + random_.Below(upper - lower + 1);
            for (int tries = 0; tries < 16 && Find(ghost); ++tries)
                ghost = lower + random_.Below(upper - lower + 1);
            result.bytes = EncodeDubReply(ghost);
        } else if (kind == Kind::Dub && !random_.Chance(garble)) {
            result.bytes = sum;
        } else {
            // Frames out of step: the receiver gets framing errors and a wrong sum.
            const size_t at = std::min<size_t>(3 + random_.Below(sum.size()), sum.size() - 1);
            sum[at] = char(uint8_t(sum[at]) ^ uint8_t(1u << random_.Below(8)));
            if (kind == Kind::Dub) {
                for (auto& byte : sum)
                    if (random_.Chance(0.5))
                        byte = char(random_.Below(256));
            }
            result.bytes = sum;
        }
    }

    switch (kind) {
    case Kind::Dub:
        result.costUs = DubCost(request.size(), lastEnd);
        break;
    case Kind::Directed:
        if (result.answered) {
            result.costUs = FrameTime(request.size()) + lastEnd + kInterPacketGap;
        } else {
            result.costUs = UnansweredCost(request.size());
            ++stats_.timeouts;
        }
        break;
    case Kind::Broadcast:
        result.costUs = result.answered ? FrameTime(request.size()) + lastEnd + kInterPacketGap
                                        : BroadcastCost(request.size());
        break;
    }
    // A reply that came too late still occupied the line.
    if (kind == Kind::Directed && !result.answered && !replies.empty())
        result.costUs = std::max(result.costUs, FrameTime(request.size()) + lastEnd + kInterPacketGap);
    stats_.lineTimeUs += result.costUs;
    return result;
}

} // namespace zol::sim::line
