// zol-host --headless against the simulated interface: the whole road from the host's calls
// through the built plug-in to the device's frame.
#include "services/settings/AUF_Registry.h"
#include "tests/support/QtTestEnvironment.h"
#include "tests/support/ScopedConfigDir.h"

#include <QProcess>
#include <QProcessEnvironment>
#include <gtest/gtest.h>

namespace zol {
namespace {

struct HostRun {
    int exitCode = -1;
    QString out;
    QString err;
};

HostRun RunHost(const QStringList& arguments) {
    QProcess process;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.remove(QStringLiteral("ZOL_KDI_LIBRARY"));
    env.remove(QStringLiteral("ZOL_SIM_RIG"));
    process.setProcessEnvironment(env);
    process.start(QString::fromStdString(test::BinDir() + "/zol-host"), arguments);
    HostRun run;
    if (!process.waitForFinished(60000)) {
        process.kill();
        process.waitForFinished();
        return run;
    }
    run.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    run.out = QString::fromLocal8Bit(process.readAllStandardOutput());
    run.err = QString::fromLocal8Bit(process.readAllStandardError());
    return run;
}

TEST(HeadlessHostTest, AChaseOnTheFirstPortReachesTheDevicesFrame) {
    test::ScopedConfigDir config;
    const HostRun run = RunHost({"--headless", "--slots", "4", "--steps", "6", "--interval", "20"});
    EXPECT_EQ(run.exitCode, 0) << run.err.toStdString();
    EXPECT_TRUE(run.out.contains("Plug-in: KARN DMX-ZOL MK1 Plugin")) << run.out.toStdString();
    EXPECT_TRUE(run.out.contains("(the first of")) << run.out.toStdString();
    EXPECT_TRUE(run.out.contains("step 6: slot 1 = 0 slot 2 = 255")) << run.out.toStdString();
    EXPECT_TRUE(run.out.contains("Device frame: start code 0, slots 1-4: 0 255 0 0"))
        << run.out.toStdString();
    EXPECT_TRUE(run.out.contains("The device's frame matches the levels sent")) << run.out.toStdString();
    EXPECT_TRUE(run.out.contains("Session stopped")) << run.out.toStdString();
    // The port is remembered for the next run.
    const std::string port = AUF_Registry::ReadString("PortUsed");
    EXPECT_FALSE(port.empty());
    const HostRun again = RunHost({"--headless", "--slots", "2", "--steps", "2", "--interval", "0"});
    EXPECT_EQ(again.exitCode, 0) << again.err.toStdString();
    EXPECT_TRUE(again.out.contains(QString::fromStdString("Port: " + port + " (remembered)")))
        << again.out.toStdString();
}

TEST(HeadlessHostTest, BadOptionsAndAMissingPluginAreRefusedWithAMessage) {
    test::ScopedConfigDir config;
    const HostRun bad = RunHost({"--headless", "--slots", "600"});
    EXPECT_EQ(bad.exitCode, 2);
    EXPECT_TRUE(bad.err.contains("usage: zol-host --headless")) << bad.err.toStdString();
    const HostRun missing = RunHost({"--headless", "--plugin", "/nonexistent/libzol-plugin.so"});
    EXPECT_EQ(missing.exitCode, 2);
    EXPECT_TRUE(missing.err.contains("the plug-in could not be loaded")) << missing.err.toStdString();
}

} // namespace
} // namespace zol
