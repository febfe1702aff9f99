// The device status (factory mode, firmware newer than the device's) and the system status (this
// computer's facts, a newer plug-in).
#include "device_link/core/Client.h"
#include "device_link/core/ErrTrap.h"
#include "device_link/status/DEV_Status.h"
#include "device_link/status/SYS_Status.h"
#include "framework/seam/Product.h"
#include "services/settings/AUF_Registry.h"
#include "tests/support/FakeClock.h"
#include "tests/support/ScopedConfigDir.h"
#include "tests/support/ScriptedDeviceLibrary.h"
#include "tests/support/ScriptedUi.h"

#include <gtest/gtest.h>

namespace zol {
namespace {

using namespace test;

class StatusTest : public ::testing::Test {
protected:
    StatusTest() { ErrTrap::ResetForTest(); }
    // The device's answers to one probe.
    void ExpectProbe(int readMemoryStatus, const Bytes& model, const std::string& firmware) {
        lib.Expect(H("E0 00 00 01 00"), readMemoryStatus, readMemoryStatus == 0 ? B({0x5A}) : Bytes());
        lib.Expect(H("00 01"), 0, model);
        lib.Expect(H("02 01"), 0, firmware);
    }

    ScopedConfigDir config;
    ScriptedUi ui;
    FakeClock clock;
    ScriptedDeviceLibrary lib;
};

TEST_F(StatusTest, Firmware0_3_10AgainstTheStored0_3_010ComparesAsEqual) {
    DEV_Status status;
    ExpectProbe(2, B({1, 0}), "0.3.10");
    status.Probe(false);
    EXPECT_FALSE(status.Updates());
    EXPECT_EQ(Versions::Compare("0.3.010", "0.3.10"), 0);
}

TEST_F(StatusTest, StoredFirmwareFieldsCompareAsNumbersNotAsTexts) {
    // As texts "010" sorts before "9"; as numbers the stored 0.3.010 is the newer.
    DEV_Status status;
    ExpectProbe(2, B({1, 0}), "0.3.9");
    status.Probe(false);
    EXPECT_TRUE(status.Updates());
    // And a device one past the stored value has no update.
    DEV_Status ahead;
    ExpectProbe(2, B({1, 0}), "0.3.11");
    ahead.Probe(false);
    EXPECT_FALSE(ahead.Updates());
}

TEST_F(StatusTest, FirmwareWithTwoFieldsReadsAsIfItHadAThirdFieldOf0) {
    EXPECT_EQ(Versions::Compare("0.3.0", "0.3"), 0);
    EXPECT_EQ(Versions::Compare("0.3.1", "0.3"), 1);
    AUF_Registry::WriteValue("ModelFirmware-1", std::string("0.3.1"));
    DEV_Status status;
    ExpectProbe(2, B({1, 0}), std::string("0.3\0", 4));
    status.Probe(false);
    EXPECT_TRUE(status.Updates());
}

TEST_F(StatusTest, ADeviceAnsweringReadMemoryWith0x1002HasFactoryFalseWithNoMessage) {
    DEV_Status status;
    ExpectProbe(2, B({1, 0}), "0.3.10");
    status.Probe(false);
    EXPECT_FALSE(status.Factory());
    EXPECT_TRUE(ui.boxes.empty());
}

TEST_F(StatusTest, ADeviceThatReadsItsMemoryIsInFactoryMode) {
    DEV_Status status;
    ExpectProbe(0, B({1, 0}), "0.3.10");
    status.Probe(false);
    EXPECT_TRUE(status.Factory());
}

TEST_F(StatusTest, HushHidesUpdatesUntilProbeWithQuietTrue) {
    DEV_Status status;
    ExpectProbe(2, B({1, 0}), "0.2.9");
    status.Probe(false);
    EXPECT_TRUE(status.Updates());
    status.Hush();
    EXPECT_FALSE(status.Updates());
    ExpectProbe(2, B({1, 0}), "0.2.9");
    status.Probe(false);
    EXPECT_FALSE(status.Updates());
    ExpectProbe(2, B({1, 0}), "0.2.9");
    status.Probe(true);
    EXPECT_TRUE(status.Updates());
}

TEST_F(StatusTest, TheProbeStoresTheModelAndUsesTheModelsDefaultFirmware) {
    DEV_Status status;
    ExpectProbe(2, B({2, 0}), "0.0.001");
    status.Probe(false);
    EXPECT_EQ(AUF_Registry::ReadLong("DeviceModel", -1), 2);
    EXPECT_TRUE(status.Updates()); // "0.0.002" is newer
    EXPECT_EQ(DEV_Status::DefaultFirmware(1), "0.3.010");
    EXPECT_EQ(DEV_Status::DefaultFirmware(2), "0.0.002");
    EXPECT_EQ(DEV_Status::DefaultFirmware(7), "0.0.0");
}

TEST_F(StatusTest, AFirmwareThatRefusesTheModelOptionIsModel1) {
    DEV_Status status;
    lib.Expect(H("E0 00 00 01 00"), 2);
    lib.Expect(H("00 01"), 5);
    lib.Expect(H("02 01"), 0, "0.3.9");
    status.Probe(false);
    EXPECT_EQ(AUF_Registry::ReadLong("DeviceModel", -1), 1);
    EXPECT_TRUE(status.Updates());
}

TEST_F(StatusTest, AFirstFieldNewerOnTheDeviceMeansNoUpdate) {
    AUF_Registry::WriteValue("ModelFirmware-1", std::string("0.9.9"));
    DEV_Status status;
    ExpectProbe(2, B({1, 0}), "1.0.0");
    status.Probe(false);
    EXPECT_FALSE(status.Updates());
}

TEST_F(StatusTest, AnotherProbeErrorIsShownAndRaised) {
    DEV_Status status;
    lib.Expect(H("E0 00 00 01 00"), -2);
    ui.Expect("Local device has been disconnected", vb::OK, std::string("DEV_Status.ProbeFactory"));
    EXPECT_THROW(status.Probe(false), ZolError);
}

TEST_F(StatusTest, ABadVersionTextIsAFaultShownByTheProbe) {
    AUF_Registry::WriteValue("ModelFirmware-1", std::string("0.x.1"));
    DEV_Status status;
    ExpectProbe(2, B({1, 0}), "0.3.10");
    ui.Expect("Type mismatch", vb::OK, std::string("DEV_Status.ProbeUpdates"));
    EXPECT_THROW(status.Probe(false), ZolError);
}

TEST_F(StatusTest, WinVersionForMajor10Minor0ReadsWindowsAnd10_0) {
    EXPECT_EQ(SYS_Status::WindowsVersionName(10, 0, 2), "Windows 10.0");
}

TEST_F(StatusTest, WinVersionFollowsTheTableOfKnownVersions) {
    EXPECT_EQ(SYS_Status::WindowsVersionName(3, 51, 1), "Windows NT 3.x");
    EXPECT_EQ(SYS_Status::WindowsVersionName(3, 10, 0), "Windows 3.x");
    EXPECT_EQ(SYS_Status::WindowsVersionName(4, 0, 2), "Windows NT 4.0");
    EXPECT_EQ(SYS_Status::WindowsVersionName(4, 0, 1), "Windows 98");
    EXPECT_EQ(SYS_Status::WindowsVersionName(4, 10, 1), "Windows 98");
    EXPECT_EQ(SYS_Status::WindowsVersionName(5, 0, 2), "Windows 2000");
    EXPECT_EQ(SYS_Status::WindowsVersionName(5, 1, 2), "Windows XP");
    EXPECT_EQ(SYS_Status::WindowsVersionName(5, 2, 2), "Windows Server 2003");
    EXPECT_EQ(SYS_Status::WindowsVersionName(6, 0, 2), "Windows Vista");
    EXPECT_EQ(SYS_Status::WindowsVersionName(6, 1, 2), "Windows 7");
    EXPECT_EQ(SYS_Status::WindowsVersionName(6, 2, 2), "Windows 6.2");
    EXPECT_EQ(SYS_Status::WindowsVersionName(5, 3, 2), "Windows 5.3");
}

TEST_F(StatusTest, SystemStatusHoldsThePluginsVersionAndCodeAndThisPlatformsFacts) {
    SYS_Status status;
    EXPECT_EQ(status.DataClass(), "SYS_Status");
    EXPECT_EQ(status.AppVersion(), product::Version());
    EXPECT_EQ(status.ProductCode(), "203");
    EXPECT_EQ(status.LongName(), "KARN DMX-ZOL");
    EXPECT_FALSE(status.WinVersion().empty());
}

TEST_F(StatusTest, ANewerPluginIsAnUpdateUntilHushed) {
    SYS_Status status;
    EXPECT_FALSE(status.Updates()); // nothing stored
    const std::string newer = std::to_string(product::VersionMajor()) + "." +
                              std::to_string(product::VersionMinor()) + "." +
                              std::to_string(product::VersionRevision() + 1);
    AUF_Registry::WriteValue("Latest_Software", newer);
    EXPECT_TRUE(status.Updates());
    status.Hush();
    EXPECT_FALSE(status.Updates());
    status.Probe();
    EXPECT_TRUE(status.Updates());
    AUF_Registry::WriteValue("Latest_Software", product::Version());
    EXPECT_FALSE(status.Updates());
}

TEST_F(StatusTest, AnOlderMajorWithANewerMinorReadsAsAnUpdate) {
    EXPECT_TRUE(Versions::AnyFieldGreater("0.9.0", "1.0.3"));
    SYS_Status status;
    AUF_Registry::WriteValue("Latest_Software", std::to_string(product::VersionMajor() - 1) + "." +
                                                    std::to_string(product::VersionMinor() + 1) + ".0");
    EXPECT_TRUE(status.Updates());
}

TEST_F(StatusTest, ABadLatestSoftwareAlreadyStoredReadsAsAbsentWithNoBox) {
    SYS_Status status;
    for (const char* bad : {"1.a.0", "abc.1", "1.99999.0", "-"}) {
        AUF_Registry::WriteValue("Latest_Software", std::string(bad));
        EXPECT_FALSE(status.Updates()) << bad;
    }
    EXPECT_TRUE(ui.boxes.empty());
}

} // namespace
} // namespace zol
