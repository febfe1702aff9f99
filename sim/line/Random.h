#pragma once
// A small seeded generator (splitmix64) with the same sequence on every platform, so a rig run with
// the same seed behaves the same everywhere.

#include <cstdint>

namespace zol::sim::line {

class Random {
public:
    explicit Random(uint64_t seed = 0) : state_(seed) {}

    void Seed(uint64_t seed) { state_ = seed; }

    uint64_t Next() {
        uint64_t z = (state_ += 0x9E3779B97F4A7C15ULL);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ULL;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBULL;
        return z ^ (z >> 31);
    }

    // Uniform in [0, 1).
    double Uniform() { return double(Next() >> 11) * (1.0 / 9007199254740992.0); }

    // True with probability p.
    bool Chance(double p) { return p > 0 && Uniform() < p; }

    // Uniform in [0, n).
    uint64_t Below(uint64_t n) { return n == 0 ? 0 : Next() % n; }

    // Uniform in [-1, 1).
    double Symmetric() { return Uniform() * 2.0 - 1.0; }

private:
    uint64_t state_;
};

// A seed derived from another and an index, for independent streams.
inline uint64_t MixSeed(uint64_t seed, uint64_t index) {
    Random random(seed ^ (index * 0xD1B54A32D192ED03ULL));
    return random.Next();
}

} // namespace zol::sim::line
