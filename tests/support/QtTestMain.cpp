// gtest main for tests that need Qt's application object: widgets, timers, sockets.
#include <QApplication>
#include <cstdlib>
#include <gtest/gtest.h>

int main(int argc, char** argv) {
    if (std::getenv("QT_QPA_PLATFORM") == nullptr) {
        setenv("QT_QPA_PLATFORM", "offscreen", 1);
    }
    // No test reaches the outside world: an update check that a test does not point at its own
    // loopback server goes to a name that is never looked up.
    if (std::getenv("ZOL_UPDATE_HOST") == nullptr) {
        setenv("ZOL_UPDATE_HOST", "updates.zol-test.invalid", 1);
    }
    QApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
