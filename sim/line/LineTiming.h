#pragma once
// What a packet costs on a 250 kbaud RDM line. Every byte is eleven bits (start, eight data, two
// stop), so 44 microseconds. A request starts with a break and a mark-after-break; a responder
// answers after its turnaround with a break and mark of its own, except the reply to
// DISC_UNIQUE_BRANCH, which has none. The controller waits out its response time-out when nothing
// comes back, a fixed gap after a reply or a broadcast, and a longer wait after every DUB.

#include <cstddef>
#include <cstdint>
#include <string>

namespace zol::sim::line {

// All times in microseconds.
constexpr double kByteTime = 44.0;
constexpr double kBreak = 176.0;
constexpr double kMarkAfterBreak = 12.0;
constexpr double kResponseTimeout = 2800.0;  // controller gives up on a reply
constexpr double kInterPacketGap = 176.0;    // controller after a reply or a broadcast
constexpr double kDubWait = 5800.0;          // controller after DISC_UNIQUE_BRANCH, from its end
constexpr double kDefaultTurnaround = 200.0; // a responder's usual time to answer
constexpr double kMaxTurnaround = 2000.0;    // the latest a conforming responder starts its reply

// Time on the wire of a request or a reply of `bytes` bytes with break and mark-after-break.
constexpr double FrameTime(size_t bytes) {
    return kBreak + kMarkAfterBreak + double(bytes) * kByteTime;
}

// Time of a DUB reply of `bytes` bytes (no break, no mark).
constexpr double DubReplyTime(size_t bytes) {
    return double(bytes) * kByteTime;
}

// Cost of one request that was answered (reply of `replyBytes` after `turnaround`).
constexpr double AnsweredCost(size_t requestBytes, double turnaround, size_t replyBytes) {
    return FrameTime(requestBytes) + turnaround + FrameTime(replyBytes) + kInterPacketGap;
}

// Cost of one request that found no answer.
constexpr double UnansweredCost(size_t requestBytes) {
    return FrameTime(requestBytes) + kResponseTimeout;
}

// Cost of a broadcast, which expects no answer.
constexpr double BroadcastCost(size_t requestBytes) {
    return FrameTime(requestBytes) + kInterPacketGap;
}

// Cost of one DUB: the request, then the longer of the DUB wait and the end of the last reply.
constexpr double DubCost(size_t requestBytes, double lastReplyEnd) {
    const double afterRequest =
        lastReplyEnd + kInterPacketGap > kDubWait ? lastReplyEnd + kInterPacketGap : kDubWait;
    return FrameTime(requestBytes) + afterRequest;
}

// Running totals of the line, readable through "line stats".
struct LineStats {
    double lineTimeUs = 0; // modelled time the line was busy
    uint64_t packets = 0;  // every packet put on the wire, requests and replies
    uint64_t requests = 0;
    uint64_t replies = 0;
    uint64_t dubs = 0;
    uint64_t mutes = 0;
    uint64_t unmutes = 0;
    uint64_t collisions = 0;
    uint64_t timeouts = 0;
    uint64_t corrupted = 0; // packets the line corrupted on their way

    std::string Text() const;
};

} // namespace zol::sim::line
