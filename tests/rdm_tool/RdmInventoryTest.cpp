// zol-rdm against the simulated interface: every responder of the default rig's stage is found and
// read, and a port of faulty responders still ends with a listing.
#include "tests/support/QtTestEnvironment.h"
#include "tests/support/ScopedConfigDir.h"

#include <QProcess>
#include <QProcessEnvironment>
#include <QStringList>
#include <gtest/gtest.h>
#include <string>

namespace zol::test {
namespace {

struct ToolRun {
    int exitCode = -1;
    std::string out;
};

ToolRun RunTool(const QStringList& arguments) {
    ScopedConfigDir config;
    QProcess process;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.remove("ZOL_KDI_LIBRARY");
    env.remove("ZOL_SIM_RIG");
    env.insert("XDG_CONFIG_HOME", QString::fromStdString(config.Path().string()));
    process.setProcessEnvironment(env);
    process.start(QString::fromStdString(BinDir() + "/zol-rdm"), arguments);
    ToolRun run;
    if (!process.waitForFinished(60000)) {
        process.kill();
        return run;
    }
    run.exitCode = process.exitCode();
    run.out = process.readAllStandardOutput().toStdString();
    return run;
}

TEST(RdmInventory, ListsEveryResponderOfTheStage) {
    const ToolRun run = RunTool({"--parameters"});
    ASSERT_EQ(run.exitCode, 0) << run.out;
    EXPECT_NE(run.out.find("6 responder(s) on port 1"), std::string::npos) << run.out;
    // The dimmer rack with its twelve circuits, and the moving head, by their UIDs.
    EXPECT_NE(run.out.find("7F F2 : 00 00 0C 1A"), std::string::npos);
    EXPECT_NE(run.out.find("12 sub device(s)"), std::string::npos);
    EXPECT_NE(run.out.find("  sub device 12: DMX footprint 1, start address 112"), std::string::npos)
        << run.out;
    EXPECT_NE(run.out.find("7F F1 : 20 24 01 17"), std::string::npos);
    EXPECT_EQ(run.out.find("could not be read"), std::string::npos) << run.out;
    // The parameter lists name the standard parameters.
    EXPECT_NE(run.out.find("$0060 DEVICE_INFO (required)"), std::string::npos);
}

TEST(RdmInventory, APortOfFaultyRespondersStillEndsWithAListing) {
    const ToolRun run = RunTool({"--port", "2"});
    EXPECT_NE(run.out.find("responder(s) on port 2"), std::string::npos) << run.out;
}

TEST(RdmInventory, APortThatDoesNotExistIsRefused) {
    const ToolRun run = RunTool({"--port", "9"});
    EXPECT_EQ(run.exitCode, 1);
}

} // namespace
} // namespace zol::test
