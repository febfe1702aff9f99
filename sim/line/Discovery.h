#pragma once
// The firmware's discovery search. It runs one line transaction per step, so that the device can
// let it advance with modelled time and report the count rising while it runs.
//
// The search is a binary search over the UID space with DISC_UNIQUE_BRANCH. On top of the classic
// search it
//  - probes the upper half of a split range first: real UIDs crowd at the low end of each
//    manufacturer's space, so the upper half is often empty, and an empty half proves that the
//    other half holds the collision, which is then split without a DUB of its own;
//  - after a device found by a DUB is muted, probes the range together with its unexplored sibling
//    in one DUB instead of one each;
//  - mutes every UID of a small range directly instead of branching down to it.
// A reply that decodes but does not answer its mute is a ghost of a collision; the range is split.
// A UID that keeps replying after it was muted (or never answers a mute) is stepped around.

#include "sim/line/RdmCodec.h"

#include <cstdint>
#include <set>
#include <vector>

namespace zol::sim::line {

using rdm::Uid;

// What the firmware makes of one DISC_UNIQUE_BRANCH.
struct DubOutcome {
    enum Kind { Silent, Valid, Corrupt } kind = Silent;
    Uid uid = 0; // for Valid
};

// What the firmware makes of one DISC_MUTE.
enum class MuteOutcome { Acknowledged, Corrupt, Silent };

// The line as the search sees it. Each call is one transaction and returns its line time in
// microseconds through `cost`.
class DiscoveryBus {
public:
    virtual ~DiscoveryBus() = default;
    virtual void UnmuteAll(double& cost) = 0;
    virtual DubOutcome Dub(Uid lower, Uid upper, double& cost) = 0;
    virtual MuteOutcome Mute(Uid uid, double& cost) = 0;
};

struct DiscoveryOptions {
    bool upperFirst = true;     // probe the upper half of a split first
    bool inferBusy = true;      // an empty first half means the other half collides
    int mergeLevels = 1;        // after a find, levels to climb by joining the unexplored sibling
    uint64_t directMuteMax = 4; // ranges of at most this many UIDs are muted UID by UID (1 = leaves)

    static DiscoveryOptions Classic() { return {false, false, 0, 1}; }
};

class Discovery {
public:
    enum class State { Idle, Running, Done };

    // Result codes of a finished pass, as the device reports them.
    static constexpr int kOk = 0;
    static constexpr int kMuteFailed = 0x1B; // a device failed to mute or is duplicated
    static constexpr int kCorrupting = 0x1C; // a device is corrupting the discovery routine

    explicit Discovery(DiscoveryOptions options = {}) : options_(options) {}

    void SetOptions(DiscoveryOptions options) { options_ = options; }
    const DiscoveryOptions& Options() const { return options_; }

    // Starts a new pass: the table is emptied and the first step is the broadcast un-mute.
    void Start();
    // Drops the pass and the table.
    void Clear();

    // Runs one step (one transaction). Returns false when there is nothing left to do.
    bool Step(DiscoveryBus& bus, double& cost);
    // Runs the whole pass.
    void RunToEnd(DiscoveryBus& bus, double& totalCost);

    State GetState() const { return state_; }
    int Result() const { return result_; }
    const std::vector<Uid>& Table() const { return table_; }
    // Adds a UID found outside a pass (a mute sent by the host); false when it is there or full.
    bool AddFound(Uid uid);

    // Counters of the current (or last) pass.
    uint64_t Dubs() const { return dubs_; }
    uint64_t Mutes() const { return mutes_; }
    const std::set<Uid>& SteppedAround() const { return excluded_; }

    static constexpr size_t kTableSize = 255;

private:
    struct Range {
        Uid lower = 0;
        Uid upper = 0;
        int depth = 0;           // splits from the whole space
        bool busy = false;       // known to hold a collision: split without probing
        bool foundSince = false; // a device of it was muted since its parent collided
    };
    struct PendingMute {
        bool active = false;
        Uid uid = 0;
        Range range;         // the range whose DUB gave the UID (direct mutes: empty)
        bool direct = false; // a UID of a small range, muted without a DUB
        int attempts = 0;
        int corrupt = 0;
    };

    void Split(const Range& range);
    void PushDirect(const Range& range);
    void AfterFind(Range range);
    void Found(Uid uid);
    void Finish(int result);
    bool Contains(Uid uid) const;
    void NoteCollision();
    void NoteProgress() { collisionsSinceProgress_ = 0; }

    DiscoveryOptions options_;
    State state_ = State::Idle;
    int result_ = kOk;
    bool unmuted_ = false;
    std::vector<Range> stack_;
    std::vector<Uid> table_;
    std::set<Uid> excluded_;  // replies but cannot be muted: stepped around
    std::set<Uid> deaf_;      // decoded but never answered a mute
    std::vector<Uid> direct_; // UIDs of a small range waiting for their direct mute
    struct Verify {
        bool active = false;
        Uid uid = 0;
        Range range;
    };

    PendingMute pending_;
    Verify verify_;
    uint64_t dubs_ = 0;
    uint64_t mutes_ = 0;
    uint64_t collisionsSinceProgress_ = 0;
};

} // namespace zol::sim::line
