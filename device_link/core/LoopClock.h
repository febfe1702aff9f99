#pragma once
// The message-loop and clock seam used by Client's waits: the product runs Qt's event loop and reads
// the wall clock; tests use a fake clock so that a long ACK_TIMER wait costs nothing.

namespace zol {

class LoopClock {
public:
    virtual ~LoopClock() = default;
    // Seconds since local midnight, 0 <= t < 86400 (it wraps at midnight).
    virtual double TimeOfDay() = 0;
    // Runs the message loop once: pending timers and user events are dispatched here.
    virtual void PumpEvents() = 0;
};

// The installed implementation; before anything is installed, the Qt one.
LoopClock& loopClock();
// Installs `impl` (not owned) and returns the one it replaces; nullptr restores the Qt one.
LoopClock* SetLoopClock(LoopClock* impl);

} // namespace zol
