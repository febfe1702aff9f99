#include "device_link/core/LoopClock.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QTime>

namespace zol {
namespace {

class QtLoopClock final : public LoopClock {
public:
    double TimeOfDay() override { return QTime::currentTime().msecsSinceStartOfDay() / 1000.0; }
    void PumpEvents() override {
        if (QCoreApplication::instance() != nullptr) {
            QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        }
    }
};

QtLoopClock& qtClock() {
    static QtLoopClock instance;
    return instance;
}

LoopClock* g_clock = nullptr;

} // namespace

LoopClock& loopClock() { return g_clock ? *g_clock : qtClock(); }

LoopClock* SetLoopClock(LoopClock* impl) {
    LoopClock* previous = g_clock;
    g_clock = impl;
    return previous;
}

} // namespace zol
