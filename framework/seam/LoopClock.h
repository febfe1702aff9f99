#pragma once
// The message-loop and clock seam: the time of day, the wait for events and the timers of views and
// tasks. The product runs Qt's event loop on the wall clock; tests install a fake clock whose time
// moves only when the test moves it, and whose timers then fire in order, an exact number of times.

#include <QObject>
#include <QString>
#include <cstdint>
#include <functional>
#include <memory>

namespace zol {

// One timer of a clock. `fire` runs on each timeout while the timer runs; a single-shot timer stops
// itself before it fires. A timer never fires again while its previous firing is still running (a
// handler that waits inside the message loop is not re-entered by its own timer).
class ClockTimer {
public:
    virtual ~ClockTimer() = default;
    // Starts counting `intervalMs` from now; a running timer starts over.
    virtual void Start(int intervalMs, bool singleShot) = 0;
    virtual void Stop() = 0;
    virtual bool IsActive() const = 0;
};

class LoopClock {
public:
    virtual ~LoopClock() = default;
    // Seconds since local midnight, 0 <= t < 86400 (it wraps at midnight).
    virtual double TimeOfDay() = 0;
    // Runs the message loop until it has handled what was pending or has waited `seconds` for
    // something to happen, whichever comes first. It blocks: a caller that loops on it until a
    // deadline costs no processor time while nothing happens.
    virtual void WaitEvents(double seconds) = 0;
    // A timer on this clock; `fire` is called on the loop's thread.
    virtual std::unique_ptr<ClockTimer> MakeTimer(std::function<void()> fire) = 0;
};

// The installed implementation; before anything is installed, the Qt one.
LoopClock& loopClock();
// Installs `impl` (not owned) and returns the one it replaces; nullptr restores the Qt one.
LoopClock* SetLoopClock(LoopClock* impl);

// A view's or a task's timer, with the classic properties: `Interval` in milliseconds (0 never
// fires), `Enabled` (switching it on starts counting afresh; changing the interval of a running
// timer starts it over) and a `Tag` that a handler may leave a number in for the timer's own event.
// It runs on the clock installed when it is switched on. Its objectName is the control's name.
class LoopTimer : public QObject {
    Q_OBJECT
public:
    LoopTimer(const QString& name, int intervalMs, QObject* parent);
    ~LoopTimer() override;

    int Interval() const { return interval_; }
    void SetInterval(int ms);
    bool Enabled() const { return enabled_; }
    void SetEnabled(bool on);
    // A single-shot timer switches itself off before it fires.
    bool SingleShot() const { return singleShot_; }
    void SetSingleShot(bool on);
    int32_t Tag = 0;

    // True while the timer counts towards its next timeout.
    bool IsActive() const;

signals:
    void timeout();

private:
    void Apply();
    void Fire();

    int interval_;
    bool enabled_ = false;
    bool singleShot_ = false;
    LoopClock* madeOn_ = nullptr;
    std::unique_ptr<ClockTimer> timer_;
};

} // namespace zol
