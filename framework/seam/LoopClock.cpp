#include "framework/seam/LoopClock.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QTime>
#include <QTimer>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <thread>

namespace zol {
namespace {

class QtClockTimer final : public ClockTimer {
public:
    explicit QtClockTimer(std::function<void()> fire) : fire_(std::move(fire)) {
        timer_.setTimerType(Qt::PreciseTimer);
        QObject::connect(&timer_, &QTimer::timeout, [this] {
            if (firing_) {
                return;
            }
            firing_ = true;
            struct Done {
                bool& flag;
                ~Done() { flag = false; }
            } done{firing_};
            fire_();
        });
    }
    void Start(int intervalMs, bool singleShot) override {
        timer_.setSingleShot(singleShot);
        timer_.start(intervalMs);
    }
    void Stop() override { timer_.stop(); }
    bool IsActive() const override { return timer_.isActive(); }

private:
    std::function<void()> fire_;
    QTimer timer_;
    bool firing_ = false;
};

class QtLoopClock final : public LoopClock {
public:
    double TimeOfDay() override { return QTime::currentTime().msecsSinceStartOfDay() / 1000.0; }

    void WaitEvents(double seconds) override {
        const auto ms = static_cast<int>(std::clamp(std::ceil(seconds * 1000.0), 0.0, 60000.0));
        if (QCoreApplication::instance() == nullptr) {
            // No message loop to run: nothing can happen but the passing of time.
            std::this_thread::sleep_for(std::chrono::milliseconds(ms));
            return;
        }
        // What is pending runs first; when nothing was, the loop sleeps until an event arrives or
        // the wake-up timer ends the wait.
        QTimer wake;
        wake.setTimerType(Qt::PreciseTimer);
        wake.setSingleShot(true);
        wake.start(ms);
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
    }

    std::unique_ptr<ClockTimer> MakeTimer(std::function<void()> fire) override {
        return std::make_unique<QtClockTimer>(std::move(fire));
    }
};

QtLoopClock& qtClock() {
    static QtLoopClock instance;
    return instance;
}

LoopClock* g_clock = nullptr;

} // namespace

LoopClock& loopClock() {
    return g_clock ? *g_clock : qtClock();
}

LoopClock* SetLoopClock(LoopClock* impl) {
    LoopClock* previous = g_clock;
    g_clock = impl;
    return previous;
}

LoopTimer::LoopTimer(const QString& name, int intervalMs, QObject* parent)
    : QObject(parent), interval_(intervalMs) {
    setObjectName(name);
}

LoopTimer::~LoopTimer() = default;

void LoopTimer::SetInterval(int ms) {
    interval_ = ms;
    Apply();
}

void LoopTimer::SetEnabled(bool on) {
    if (on == enabled_) {
        return;
    }
    enabled_ = on;
    Apply();
}

void LoopTimer::SetSingleShot(bool on) {
    singleShot_ = on;
    Apply();
}

bool LoopTimer::IsActive() const {
    return timer_ != nullptr && timer_->IsActive();
}

void LoopTimer::Apply() {
    if (!enabled_ || interval_ <= 0) {
        if (timer_) {
            timer_->Stop();
        }
        return;
    }
    LoopClock* clock = &loopClock();
    if (!timer_ || madeOn_ != clock) {
        timer_ = clock->MakeTimer([this] { Fire(); });
        madeOn_ = clock;
    }
    timer_->Start(interval_, singleShot_);
}

void LoopTimer::Fire() {
    if (singleShot_) {
        enabled_ = false;
    }
    emit timeout();
}

} // namespace zol
