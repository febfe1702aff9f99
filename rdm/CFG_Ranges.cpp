#include "rdm/CFG_Ranges.h"

#include "device_link/core/ErrTrap.h"

#include <cmath>
#include <sstream>

namespace zol::rdm {

namespace {

[[noreturn]] void Overflow() {
    throw RuntimeFault(rt::Overflow, "Overflow");
}

int16_t Bump(int16_t value, int by) {
    const int next = value + by;
    if (next < -32768 || next > 32767) {
        Overflow();
    }
    return static_cast<int16_t>(next);
}

// Walks longer than this (a range far from 0 next to a tiny step) are refused as an overflow
// rather than left to run on; no sensor range comes near it.
constexpr long kMaxWalk = 1L << 24;

// One step of a walk; a step too small to move the value would never end the walk.
double Move(double value, double by, long& steps) {
    const double next = value + by;
    if (next == value || ++steps > kMaxWalk) {
        Overflow();
    }
    return next;
}

} // namespace

CFG_Ranges::CFG_Ranges() {
    std::istringstream list("1 2 5 10");
    for (double& step : steps_) {
        list >> step;
    }
}

void CFG_Ranges::Initialise(double min, double max) {
    // 1. and 2. The span's mantissa X, from 1 to just under 10, and its exponent E.
    const double span = max - min;
    if (std::isnan(span)) {
        Overflow();
    }
    double x = span;
    int16_t e = 0;
    if (span < 1) {
        while (x < 1) {
            x *= 10;
            e = Bump(e, -1);
        }
    } else {
        while (x >= 10) {
            x /= 10;
            e = Bump(e, 1);
        }
    }

    // 3. and 4. The first neighbouring pair that holds X; a tie at the midpoint goes up.
    double lo = steps_[0];
    double hi = steps_[1];
    for (size_t i = 0; i + 1 < steps_.size(); ++i) {
        lo = steps_[i];
        hi = steps_[i + 1];
        if (x >= lo && x <= hi) {
            break;
        }
    }
    const double midpoint = lo + (hi - lo) / 2;
    double step = x < midpoint ? lo : hi;

    // 5. Scaled by ten to the power E - 1.
    for (int n = e - 1; n > 0; --n) {
        step *= 10;
    }
    for (int n = e - 1; n < 0; ++n) {
        step /= 10;
    }

    // 6. More than ten steps: double it.
    if (span / step > 10) {
        step *= 2;
    }

    // 7.
    delta_ = step;
    scaleMin_ = 0;
    scaleMax_ = 0;
    intervals_ = 0;

    // 8. Walk down from 0.
    long steps = 0;
    double v = 0;
    while (v > min) {
        v = Move(v, -delta_, steps);
        if (v < scaleMin_) {
            intervals_ = Bump(intervals_, 1);
            scaleMin_ = v;
        }
        if (v > max) {
            intervals_ = Bump(intervals_, -1);
            scaleMax_ = v;
        }
    }

    // 9. Walk up from 0.
    v = 0;
    steps = 0;
    while (v < max) {
        v = Move(v, delta_, steps);
        if (v > scaleMax_) {
            intervals_ = Bump(intervals_, 1);
            scaleMax_ = v;
        }
        if (v < min) {
            intervals_ = Bump(intervals_, -1);
            scaleMin_ = v;
        }
    }
}

} // namespace zol::rdm
