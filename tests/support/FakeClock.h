#pragma once
// A fake time of day for Client's waits: each turn of the message loop advances it by `step`
// seconds, wrapping at midnight, so a long ACK_TIMER wait costs nothing.

#include "device_link/core/LoopClock.h"

#include <functional>

namespace zol::test {

class FakeClock : public LoopClock {
public:
    explicit FakeClock(double start = 12 * 3600.0, double step = 0.01) : now(start), step(step) {
        previous_ = SetLoopClock(this);
    }
    ~FakeClock() override { SetLoopClock(previous_); }
    FakeClock(const FakeClock&) = delete;
    FakeClock& operator=(const FakeClock&) = delete;

    double TimeOfDay() override { return now; }
    void PumpEvents() override {
        ++pumps;
        if (onPump) {
            onPump();
        }
        now += step;
        if (now >= 86400.0) {
            now -= 86400.0;
        }
    }

    double now;
    double step;
    long pumps = 0;
    std::function<void()> onPump;

private:
    LoopClock* previous_ = nullptr;
};

} // namespace zol::test
