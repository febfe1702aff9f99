#pragma once
// CFG_Ranges: the scale of a gauge around a sensor's range. It finds a step of 1, 2 or 5 times a
// power of ten, then walks from 0 in such steps to find the scale's ends, so every mark is a
// multiple of the step counted from 0 (0 itself counts as a mark even outside the range).

#include <array>
#include <cstdint>

namespace zol::rdm {

class CFG_Ranges {
public:
    CFG_Ranges();

    // A span (max - min) of 0 or less, or one that is not a finite number, fails with an overflow
    // error (run-time error 6): the exponent search runs past 16 bits.
    void Initialise(double min, double max);
    int16_t Intervals() const { return intervals_; }
    double Delta() const { return delta_; }
    double ScaleMin() const { return scaleMin_; }
    double ScaleMax() const { return scaleMax_; }

private:
    int16_t intervals_ = 0;
    double scaleMin_ = 0;
    double scaleMax_ = 0;
    std::array<double, 4> steps_{};
    double delta_ = 0;
};

} // namespace zol::rdm
