#include "sim/line/Discovery.h"

#include <algorithm>

namespace zol::sim::line {

namespace {

// A search that meets this many collisions in a row without finding a device or an empty range
// is being corrupted by something on the line and gives up.
constexpr uint64_t kCollisionsWithoutProgress = 160;
// A hard stop for any pass.
constexpr uint64_t kMaxDubsPerPass = 50000;

// The ranges of the search form the tree of midpoint splits of the whole UID space. Finds the
// parent of [lower, upper] in that tree; false for the root or a range that is not a node.
bool TreeParent(Uid lower, Uid upper, Uid& parentLower, Uid& parentUpper) {
    Uid lo = 0;
    Uid hi = rdm::kMaxUid;
    if (lower == lo && upper == hi)
        return false;
    while (hi > lo) {
        const Uid mid = lo + (hi - lo) / 2;
        Uid nlo = lo;
        Uid nhi = mid;
        if (lower > mid) {
            nlo = mid + 1;
            nhi = hi;
        }
        if (lower < nlo || upper > nhi)
            return false;
        if (nlo == lower && nhi == upper) {
            parentLower = lo;
            parentUpper = hi;
            return true;
        }
        lo = nlo;
        hi = nhi;
    }
    return false;
}

// The other half of the parent of [lower, upper], when it is a node of the tree.
bool TreeSibling(Uid lower, Uid upper, Uid& siblingLower, Uid& siblingUpper) {
    Uid plo = 0;
    Uid phi = 0;
    if (!TreeParent(lower, upper, plo, phi))
        return false;
    if (lower == plo) {
        siblingLower = upper + 1;
        siblingUpper = phi;
    } else {
        siblingLower = plo;
        siblingUpper = lower - 1;
    }
    return true;
}

} // namespace

void Discovery::Start() {
    Clear();
    state_ = State::Running;
}

void Discovery::Clear() {
    state_ = State::Idle;
    result_ = kOk;
    unmuted_ = false;
    stack_.clear();
    table_.clear();
    excluded_.clear();
    deaf_.clear();
    direct_.clear();
    pending_ = {};
    verify_ = {};
    dubs_ = 0;
    mutes_ = 0;
    collisionsSinceProgress_ = 0;
}

bool Discovery::Contains(Uid uid) const {
    return std::find(table_.begin(), table_.end(), uid) != table_.end();
}

bool Discovery::AddFound(Uid uid) {
    if (Contains(uid) || table_.size() >= kTableSize)
        return false;
    table_.push_back(uid);
    return true;
}

void Discovery::Found(Uid uid) {
    AddFound(uid);
    NoteProgress();
}

void Discovery::Finish(int result) {
    if (result != kOk)
        result_ = result;
    state_ = State::Done;
    stack_.clear();
    direct_.clear();
    pending_ = {};
    verify_ = {};
}

void Discovery::NoteCollision() {
    ++collisionsSinceProgress_;
}

void Discovery::Split(const Range& range) {
    const Uid mid = range.lower + (range.upper - range.lower) / 2;
    Range low{range.lower, mid, range.depth + 1};
    Range high{mid + 1, range.upper, range.depth + 1};
    // The half probed first is pushed last.
    if (options_.upperFirst) {
        stack_.push_back(low);
        stack_.push_back(high);
    } else {
        stack_.push_back(high);
        stack_.push_back(low);
    }
}

void Discovery::PushDirect(const Range& range) {
    // Lowest UID first: pushed in reverse.
    for (Uid uid = range.upper;; --uid) {
        if (!excluded_.count(uid))
            direct_.push_back(uid);
        if (uid == range.lower)
            break;
    }
}

void Discovery::AfterFind(Range range) {
    range.foundSince = true;
    for (int level = 0; level < options_.mergeLevels && !stack_.empty(); ++level) {
        Uid slo = 0;
        Uid shi = 0;
        const Range& top = stack_.back();
        if (!TreeSibling(range.lower, range.upper, slo, shi) || top.lower != slo || top.upper != shi ||
            top.busy)
            break;
        stack_.pop_back();
        Range parent{std::min(range.lower, slo), std::max(range.upper, shi), range.depth - 1};
        parent.foundSince = true;
        range = parent;
    }
    stack_.push_back(range);
}

bool Discovery::Step(DiscoveryBus& bus, double& cost) {
    cost = 0;
    if (state_ != State::Running)
        return false;

    auto done = [&] {
        if (!pending_.active && !verify_.active && direct_.empty() && stack_.empty())
            Finish(kOk);
        return true;
    };

    if (!unmuted_) {
        bus.UnmuteAll(cost);
        unmuted_ = true;
        stack_.push_back(Range{0, rdm::kMaxUid, 0});
        return true;
    }

    if (dubs_ >= kMaxDubsPerPass) {
        Finish(kCorrupting);
        return true;
    }

    if (verify_.active) {
        // Is the UID that came back a device that did not stay muted, or a ghost of a collision?
        const DubOutcome outcome = bus.Dub(verify_.uid, verify_.uid, cost);
        ++dubs_;
        verify_.active = false;
        if (outcome.kind == DubOutcome::Valid && outcome.uid == verify_.uid) {
            excluded_.insert(verify_.uid);
            result_ = kMuteFailed;
            stack_.push_back(verify_.range);
        } else {
            NoteCollision();
            Split(verify_.range);
        }
        return done();
    }

    if (!pending_.active && !direct_.empty()) {
        pending_ = PendingMute{};
        pending_.active = true;
        pending_.direct = true;
        pending_.uid = direct_.back();
        direct_.pop_back();
    }

    if (pending_.active) {
        const MuteOutcome outcome = bus.Mute(pending_.uid, cost);
        ++mutes_;
        ++pending_.attempts;
        switch (outcome) {
        case MuteOutcome::Acknowledged:
            pending_.active = false;
            Found(pending_.uid);
            if (!pending_.direct)
                AfterFind(pending_.range);
            break;
        case MuteOutcome::Corrupt:
            ++pending_.corrupt;
            if (pending_.attempts < 3)
                return true;
            // Every answer garbled: more than one device answers to this UID.
            pending_.active = false;
            Found(pending_.uid);
            result_ = kMuteFailed;
            if (!pending_.direct)
                AfterFind(pending_.range);
            break;
        case MuteOutcome::Silent:
            if (!pending_.direct && pending_.attempts < 2)
                return true;
            pending_.active = false;
            if (pending_.corrupt > 0) {
                Found(pending_.uid);
                result_ = kMuteFailed;
                if (!pending_.direct)
                    AfterFind(pending_.range);
            } else if (!pending_.direct) {
                // Decoded, but nobody answers to it: a ghost, or a device that will not mute.
                deaf_.insert(pending_.uid);
                NoteCollision();
                Split(pending_.range);
            }
            break;
        }
        return done();
    }

    while (!stack_.empty()) {
        Range range = stack_.back();
        stack_.pop_back();

        const auto excluded = excluded_.lower_bound(range.lower);
        if (excluded != excluded_.end() && *excluded <= range.upper) {
            const Uid uid = *excluded;
            if (uid < range.upper)
                stack_.push_back(Range{uid + 1, range.upper, range.depth + 1});
            if (uid > range.lower)
                stack_.push_back(Range{range.lower, uid - 1, range.depth + 1});
            continue;
        }

        if (range.upper - range.lower < std::max<uint64_t>(options_.directMuteMax, 1)) {
            PushDirect(range);
            if (direct_.empty())
                continue;
            return Step(bus, cost);
        }

        if (range.busy && options_.inferBusy) {
            Split(range);
            continue;
        }

        const DubOutcome outcome = bus.Dub(range.lower, range.upper, cost);
        ++dubs_;
        switch (outcome.kind) {
        case DubOutcome::Silent: {
            NoteProgress();
            Uid slo = 0;
            Uid shi = 0;
            if (options_.inferBusy && !range.foundSince && !stack_.empty() &&
                TreeSibling(range.lower, range.upper, slo, shi) && stack_.back().lower == slo &&
                stack_.back().upper == shi && !stack_.back().foundSince && range.depth > 0) {
                // The parent collided and this half is empty: the collision is in the other half.
                stack_.back().busy = true;
            }
            break;
        }
        case DubOutcome::Valid:
            if (outcome.uid < range.lower || outcome.uid > range.upper) {
                NoteCollision();
                Split(range);
            } else if (Contains(outcome.uid) || deaf_.count(outcome.uid)) {
                verify_ = Verify{true, outcome.uid, range};
            } else {
                pending_ = PendingMute{};
                pending_.active = true;
                pending_.uid = outcome.uid;
                pending_.range = range;
            }
            break;
        case DubOutcome::Corrupt:
            NoteCollision();
            if (collisionsSinceProgress_ > kCollisionsWithoutProgress) {
                Finish(kCorrupting);
                return true;
            }
            Split(range);
            break;
        }
        return done();
    }
    Finish(kOk);
    return false;
}

void Discovery::RunToEnd(DiscoveryBus& bus, double& totalCost) {
    double cost = 0;
    while (Step(bus, cost))
        totalCost += cost;
    totalCost += cost;
}

} // namespace zol::sim::line
