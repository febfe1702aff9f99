#pragma once
// The RDM line itself: one pair of wires shared by the controller and every responder. A packet
// reaches every responder (each may receive it corrupted when the line is noisy); what comes back
// is the one reply, nothing, or the collision of several replies. Colliding DUB replies, which have
// no break, usually garble but sometimes add up bit by bit (the line is driven low by whichever
// driver sends a zero), which may decode as a UID that nobody has. Colliding ordinary replies
// always garble.

#include "sim/line/LineTiming.h"
#include "sim/line/Random.h"
#include "sim/line/Responder.h"

#include <memory>
#include <vector>

namespace zol::sim::line {

struct WireResult {
    bool answered = false; // something arrived before the controller gave up
    Bytes bytes;           // what the controller received
    int repliers = 0;
    bool collision = false;
    double costUs = 0;
};

class Wire {
public:
    enum class Kind { Directed, Broadcast, Dub };

    explicit Wire(uint64_t seed) : random_(seed), seed_(seed) {}

    void Add(std::unique_ptr<Responder> responder) { responders_.push_back(std::move(responder)); }
    const std::vector<std::unique_ptr<Responder>>& Responders() const { return responders_; }
    Responder* Find(Uid uid) const;

    // Puts `request` on the line and returns what comes back, with the line time it took.
    WireResult Transmit(const Bytes& request, Kind kind);

    void AdvanceTo(double now);
    void Reset(double now);

    LineStats& Stats() { return stats_; }

    double noise = 0;     // share of packets that reach a responder corrupted
    double garble = 0.7;  // share of DUB collisions that garble instead of adding up
    int forcedGhosts = 0; // the next DUB collisions decode as a UID nobody has

private:
    Random random_;
    uint64_t seed_;
    std::vector<std::unique_ptr<Responder>> responders_;
    LineStats stats_;
};

} // namespace zol::sim::line
