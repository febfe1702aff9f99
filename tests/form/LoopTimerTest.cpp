// Timers on the loop/clock seam: exact firings on the fake clock, the classic Enabled and Interval
// rules, no re-entry, and the Qt clock's wait that returns as soon as something has happened.
#include "framework/seam/LoopClock.h"
#include "tests/support/FakeClock.h"

#include <QCoreApplication>
#include <QMetaObject>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

namespace zol::test {
namespace {

TEST(LoopTimer, A250MsTimerFiresExactlyFourTimesInOneSecond) {
    FakeClock clock;
    LoopTimer timer(QStringLiteral("CycleTime"), 250, nullptr);
    int ticks = 0;
    QObject::connect(&timer, &LoopTimer::timeout, [&] { ++ticks; });
    timer.SetEnabled(true);
    clock.Advance(1.0);
    EXPECT_EQ(ticks, 4);
    clock.Advance(0.249);
    EXPECT_EQ(ticks, 4);
    clock.Advance(0.001);
    EXPECT_EQ(ticks, 5);
    EXPECT_EQ(timer.objectName(), QStringLiteral("CycleTime"));
}

TEST(LoopTimer, A200MsTimerFiresFiveTimesInOneSecondDespiteDecimalSteps) {
    FakeClock clock;
    LoopTimer timer(QStringLiteral("Task_IP"), 200, nullptr);
    int ticks = 0;
    QObject::connect(&timer, &LoopTimer::timeout, [&] { ++ticks; });
    timer.SetEnabled(true);
    for (int i = 0; i < 10; ++i) {
        clock.AdvanceMs(100);
    }
    EXPECT_EQ(ticks, 5);
}

TEST(LoopTimer, ADisabledTimerAndATimerOfInterval0NeverFire) {
    FakeClock clock;
    LoopTimer off(QStringLiteral("Off"), 10, nullptr);
    LoopTimer zero(QStringLiteral("Zero"), 0, nullptr);
    int ticks = 0;
    QObject::connect(&off, &LoopTimer::timeout, [&] { ++ticks; });
    QObject::connect(&zero, &LoopTimer::timeout, [&] { ++ticks; });
    zero.SetEnabled(true);
    clock.Advance(5.0);
    EXPECT_EQ(ticks, 0);
    EXPECT_FALSE(zero.IsActive());
    EXPECT_TRUE(zero.Enabled());
}

TEST(LoopTimer, SwitchingItOffInItsOwnEventMakesItFireExactlyOnce) {
    FakeClock clock;
    LoopTimer timer(QStringLiteral("ReDiscover"), 1, nullptr);
    int ticks = 0;
    QObject::connect(&timer, &LoopTimer::timeout, [&] {
        timer.SetEnabled(false);
        ++ticks;
    });
    timer.SetEnabled(true);
    clock.Advance(1.0);
    EXPECT_EQ(ticks, 1);
    EXPECT_FALSE(timer.Enabled());
}

TEST(LoopTimer, ASingleShotTimerSwitchesItselfOff) {
    FakeClock clock;
    LoopTimer timer(QStringLiteral("Timer_Die"), 1, nullptr);
    timer.SetSingleShot(true);
    timer.Tag = 0x1203;
    int32_t seen = 0;
    QObject::connect(&timer, &LoopTimer::timeout, [&] { seen = timer.Tag; });
    timer.SetEnabled(true);
    clock.Advance(0.5);
    EXPECT_EQ(seen, 0x1203);
    EXPECT_FALSE(timer.Enabled());
    EXPECT_EQ(clock.ActiveTimers(), 0);
}

TEST(LoopTimer, SwitchingOnAgainOrChangingTheIntervalStartsCountingAfresh) {
    FakeClock clock;
    LoopTimer timer(QStringLiteral("TimerUpdate"), 1000, nullptr);
    int ticks = 0;
    QObject::connect(&timer, &LoopTimer::timeout, [&] { ++ticks; });
    timer.SetEnabled(true);
    clock.Advance(0.8);
    timer.SetEnabled(false);
    timer.SetEnabled(true);
    clock.Advance(0.8);
    EXPECT_EQ(ticks, 0) << "off and on again counts from the switch";
    timer.SetInterval(1000);
    clock.Advance(0.9);
    EXPECT_EQ(ticks, 0) << "a new interval counts from its setting";
    clock.Advance(0.1);
    EXPECT_EQ(ticks, 1);
    timer.SetEnabled(true);
    clock.Advance(0.5);
    EXPECT_EQ(ticks, 1) << "switching on a running timer changes nothing";
    clock.Advance(0.5);
    EXPECT_EQ(ticks, 2);
}

TEST(LoopTimer, TimersFireInDueOrderAndTiesInTheOrderTheyWereStarted) {
    FakeClock clock;
    LoopTimer a(QStringLiteral("A"), 300, nullptr);
    LoopTimer b(QStringLiteral("B"), 200, nullptr);
    LoopTimer c(QStringLiteral("C"), 300, nullptr);
    std::string order;
    QObject::connect(&a, &LoopTimer::timeout, [&] { order += 'a'; });
    QObject::connect(&b, &LoopTimer::timeout, [&] { order += 'b'; });
    QObject::connect(&c, &LoopTimer::timeout, [&] { order += 'c'; });
    a.SetEnabled(true);
    b.SetEnabled(true);
    c.SetEnabled(true);
    clock.Advance(0.6);
    // b at 200, a and c at 300, b at 400, then a, c and b all at 600: a and c were set going again
    // at 300, before b at 400.
    EXPECT_EQ(order, "bacbacb");
}

TEST(LoopTimer, AHandlerThatWaitsInsideTheLoopIsNotReenteredByItsOwnTimer) {
    FakeClock clock(12 * 3600.0, 0.01);
    LoopTimer slow(QStringLiteral("Slow"), 100, nullptr);
    LoopTimer other(QStringLiteral("Other"), 50, nullptr);
    int depth = 0;
    int deepest = 0;
    int slowTicks = 0;
    int otherTicks = 0;
    QObject::connect(&slow, &LoopTimer::timeout, [&] {
        ++slowTicks;
        ++depth;
        deepest = std::max(deepest, depth);
        for (int i = 0; i < 30; ++i) { // a 0.3 s wait for a delayed answer
            clock.WaitEvents(0.01);
        }
        --depth;
    });
    QObject::connect(&other, &LoopTimer::timeout, [&] { ++otherTicks; });
    slow.SetEnabled(true);
    other.SetEnabled(true);
    clock.Advance(0.1);
    EXPECT_EQ(slowTicks, 1);
    EXPECT_EQ(deepest, 1);
    EXPECT_GE(otherTicks, 6) << "other timers fire inside the wait";
}

TEST(LoopTimer, ATimerDeletedInItsOwnHandlerIsGoneCleanly) {
    FakeClock clock;
    auto* timer = new LoopTimer(QStringLiteral("Watchdog"), 10, nullptr);
    int ticks = 0;
    QObject::connect(timer, &LoopTimer::timeout, [&] {
        ++ticks;
        delete timer;
    });
    timer->SetEnabled(true);
    clock.Advance(1.0);
    EXPECT_EQ(ticks, 1);
    EXPECT_EQ(clock.ActiveTimers(), 0);
}

TEST(LoopTimer, ATimerThatOutlivesItsFakeClockIsHarmless) {
    auto timer = std::make_unique<LoopTimer>(QStringLiteral("Late"), 10, nullptr);
    {
        FakeClock clock;
        timer->SetEnabled(true);
        EXPECT_TRUE(timer->IsActive());
    }
    timer->SetEnabled(false);
    timer.reset();
}

TEST(LoopTimer, OnTheQtClockATimerIsActiveWhileEnabled) {
    LoopTimer timer(QStringLiteral("Real"), 1000, nullptr);
    timer.SetEnabled(true);
    EXPECT_TRUE(timer.IsActive());
    timer.SetEnabled(false);
    EXPECT_FALSE(timer.IsActive());
}

TEST(LoopClockQt, AWaitReturnsOnceAPendingEventHasBeenHandledLongBeforeItsDeadline) {
    ASSERT_NE(QCoreApplication::instance(), nullptr);
    bool ran = false;
    QMetaObject::invokeMethod(
        QCoreApplication::instance(), [&] { ran = true; }, Qt::QueuedConnection);
    // A 60 s bound: the test would hang for a minute if the wait ignored the pending call.
    loopClock().WaitEvents(60.0);
    EXPECT_TRUE(ran);
}

TEST(LoopClockQt, FakeTimeMovesOnlyWhenTheTestMovesIt) {
    FakeClock clock(86399.5, 0.25);
    clock.WaitEvents(10.0);
    EXPECT_DOUBLE_EQ(clock.now, 86399.75);
    clock.Advance(0.5);
    EXPECT_DOUBLE_EQ(clock.now, 0.25) << "the time of day wraps at midnight";
    EXPECT_DOUBLE_EQ(clock.Elapsed(), 0.75);
}

} // namespace
} // namespace zol::test
