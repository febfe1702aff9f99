#include "tests/support/QtTestEnvironment.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <cstdlib>

namespace zol::test {

std::string BinDir() {
    const char* dir = std::getenv("ZOL_BUILD_DIR");
    return std::string(dir ? dir : ZOL_TEST_BUILD_DIR) + "/bin";
}

std::string SourceDir() {
    const char* dir = std::getenv("ZOL_SOURCE_DIR");
    return dir ? dir : ZOL_TEST_SOURCE_DIR;
}

void PumpFor(int ms) {
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < ms) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    }
}

} // namespace zol::test
