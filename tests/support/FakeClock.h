#pragma once
// A fake clock for the loop/clock seam. Its time moves only in two ways:
// - each wait for events (a turn of Client's wait loop) moves it on by `step` seconds;
// - Advance(seconds) moves it on by exactly that much.
// Timers made on it fire as the time passes their due time, in due order (ties in the order they were
// started), each at its own due time, an exact number of times; a timer never fires again while its
// previous firing is still running. The time of day wraps at midnight.

#include "framework/seam/LoopClock.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <memory>
#include <vector>

namespace zol::test {

class FakeClock : public LoopClock {
public:
    explicit FakeClock(double start = 12 * 3600.0, double step = 0.01) : now(start), step(step) {
        previous_ = SetLoopClock(this);
    }
    ~FakeClock() override {
        SetLoopClock(previous_);
        for (Timer* t : timers_) {
            t->clock_ = nullptr; // a view that outlives the clock keeps a dead timer
        }
    }
    FakeClock(const FakeClock&) = delete;
    FakeClock& operator=(const FakeClock&) = delete;

    double TimeOfDay() override { return now; }

    void WaitEvents(double /*seconds*/) override {
        ++pumps;
        if (onPump) {
            onPump();
        }
        Move(step);
        FireDue();
    }

    std::unique_ptr<ClockTimer> MakeTimer(std::function<void()> fire) override {
        auto timer = std::make_unique<Timer>(this, std::move(fire));
        timers_.push_back(timer.get());
        return timer;
    }

    // Moves time on by `seconds`, firing every timer that falls due on the way. A handler that
    // waits inside (a delayed answer) moves the time on further; what falls due then fires too.
    void Advance(double seconds) {
        const double target = elapsed_ + seconds;
        for (;;) {
            Timer* next = Earliest(target);
            if (next == nullptr) {
                break;
            }
            if (next->due_ > elapsed_) {
                Move(next->due_ - elapsed_);
            }
            Fire(next);
        }
        if (target > elapsed_) {
            Move(target - elapsed_);
        }
    }
    void AdvanceMs(double ms) { Advance(ms / 1000.0); }

    // Seconds moved on since the clock was made.
    double Elapsed() const { return elapsed_; }
    // Timers of this clock that are counting.
    int ActiveTimers() const {
        return static_cast<int>(
            std::count_if(timers_.begin(), timers_.end(), [](Timer* t) { return t->active_; }));
    }

    double now;
    double step;
    long pumps = 0;
    std::function<void()> onPump;
    // Called with the seconds each time the clock moves on (a simulated device can follow it).
    std::function<void(double)> onAdvance;

private:
    class Timer final : public ClockTimer {
    public:
        Timer(FakeClock* clock, std::function<void()> fire) : clock_(clock), fire_(std::move(fire)) {}
        ~Timer() override {
            if (clock_ != nullptr) {
                auto& list = clock_->timers_;
                list.erase(std::remove(list.begin(), list.end(), this), list.end());
            }
            if (alive_) {
                *alive_ = false;
            }
        }
        void Start(int intervalMs, bool singleShot) override {
            if (clock_ == nullptr) {
                return;
            }
            interval_ = intervalMs / 1000.0;
            singleShot_ = singleShot;
            active_ = true;
            due_ = clock_->elapsed_ + interval_;
            order_ = ++clock_->starts_;
        }
        void Stop() override { active_ = false; }
        bool IsActive() const override { return active_; }

        FakeClock* clock_;
        std::function<void()> fire_;
        double interval_ = 0;
        double due_ = 0;
        long order_ = 0;
        bool singleShot_ = false;
        bool active_ = false;
        bool firing_ = false;
        std::shared_ptr<bool> alive_;
    };

    void Move(double seconds) {
        elapsed_ += seconds;
        now += seconds;
        while (now >= 86400.0) {
            now -= 86400.0;
        }
        if (onAdvance) {
            onAdvance(seconds);
        }
    }

    Timer* Earliest(double limit) {
        Timer* best = nullptr;
        for (Timer* t : timers_) {
            if (t->active_ && !t->firing_ && t->due_ <= limit + 1e-9 &&
                (best == nullptr || t->due_ < best->due_ ||
                 (t->due_ == best->due_ && t->order_ < best->order_))) {
                best = t;
            }
        }
        return best;
    }

    void FireDue() {
        while (Timer* t = Earliest(elapsed_)) {
            Fire(t);
        }
    }

    void Fire(Timer* t) {
        if (t->singleShot_) {
            t->active_ = false;
        } else {
            // The next timeout counts from this one; a late firing does not pile up missed ones.
            t->due_ = std::max(t->due_ + t->interval_, elapsed_);
            if (t->interval_ <= 0) {
                t->due_ = elapsed_ + 0.001;
            }
            t->order_ = ++starts_;
        }
        auto alive = std::make_shared<bool>(true);
        t->alive_ = alive;
        t->firing_ = true;
        auto fire = t->fire_; // the handler may delete its timer
        fire();
        if (*alive) {
            t->firing_ = false;
            t->alive_.reset();
        }
    }

    LoopClock* previous_ = nullptr;
    std::vector<Timer*> timers_;
    double elapsed_ = 0;
    long starts_ = 0;
};

} // namespace zol::test
