// The host's per-user application settings, where the DMX mode is kept.
#include "device_link/core/ErrTrap.h"
#include "services/settings/AUF_Registry.h"
#include "services/settings/SettingsFile.h"
#include "tests/support/ScopedConfigDir.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>

namespace zol::test {
namespace {

namespace fs = std::filesystem;
namespace sf = settings_file;

std::string ReadAll(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

class AppSettingsTest : public ::testing::Test {
protected:
    void TearDown() override { sf::SetWriteFailHookForTest({}); }
    fs::path AppFile(const std::string& name) const {
        return config_.Path() / "karn-zol/apps" / (name + ".conf");
    }
    ScopedConfigDir config_;
};

TEST_F(AppSettingsTest, AnAbsentSettingGivesTheDefaultAndCreatesNothing) {
    EXPECT_EQ(AppSettings::GetSetting("DMXControl", "Plugins\\zol-plugin", "DMXInActive", "False"), "False");
    EXPECT_EQ(AppSettings::GetSetting("DMXControl", "Plugins\\zol-plugin", "DMXInActive"), "");
    EXPECT_FALSE(fs::exists(AppFile("DMXControl")));
}

TEST_F(AppSettingsTest, TheModeIsSavedAsAWordAndReadBack) {
    AppSettings::SaveSetting("DMXControl", "Plugins\\zol-plugin", "DMXInActive", "True");
    EXPECT_EQ(AppSettings::GetSetting("DMXControl", "Plugins\\zol-plugin", "DMXInActive", "False"), "True");
    AppSettings::SaveSetting("DMXControl", "Plugins\\zol-plugin", "DMXInActive", "False");
    EXPECT_EQ(AppSettings::GetSetting("DMXControl", "Plugins\\zol-plugin", "DMXInActive", "True"), "False");
    const std::string text = ReadAll(AppFile("DMXControl"));
    EXPECT_NE(text.find("[Plugins\\zol-plugin]\n\"DMXInActive\"=sz:\"False\""), std::string::npos) << text;
}

TEST_F(AppSettingsTest, SettingsAreKeyedByApplicationSectionAndName) {
    AppSettings::SaveSetting("HostA", "Plugins\\zol-plugin", "DMXInActive", "True");
    AppSettings::SaveSetting("HostA", "Plugins\\other", "DMXInActive", "Other");
    AppSettings::SaveSetting("HostB", "Plugins\\zol-plugin", "DMXInActive", "B");
    EXPECT_EQ(AppSettings::GetSetting("HostA", "Plugins\\zol-plugin", "DMXInActive"), "True");
    EXPECT_EQ(AppSettings::GetSetting("HostA", "Plugins\\other", "DMXInActive"), "Other");
    EXPECT_EQ(AppSettings::GetSetting("HostB", "Plugins\\zol-plugin", "DMXInActive"), "B");
    EXPECT_EQ(AppSettings::GetSetting("HostB", "Plugins\\zol-plugin", "Else", "d"), "d");
    EXPECT_TRUE(fs::exists(AppFile("HostA")));
    EXPECT_TRUE(fs::exists(AppFile("HostB")));
}

TEST_F(AppSettingsTest, AnEmptyValueIsKeptAsAnEmptyText) {
    AppSettings::SaveSetting("H", "S", "K", "");
    EXPECT_EQ(AppSettings::GetSetting("H", "S", "K", "default"), "");
}

TEST_F(AppSettingsTest, AnApplicationNameWithAFolderSeparatorStaysInTheAppsFolder) {
    AppSettings::SaveSetting("../Host/x", "S", "K", "v");
    EXPECT_EQ(AppSettings::GetSetting("../Host/x", "S", "K"), "v");
    EXPECT_TRUE(fs::exists(config_.Path() / "karn-zol/apps/%2E.%2FHost%2Fx.conf"));
}

TEST_F(AppSettingsTest, EmptyKeysAreAnInvalidCall) {
    EXPECT_THROW(AppSettings::GetSetting("", "S", "K"), RuntimeFault);
    EXPECT_THROW(AppSettings::SaveSetting("H", "", "K", "v"), RuntimeFault);
    EXPECT_THROW(AppSettings::SaveSetting("H", "S", "", "v"), RuntimeFault);
}

TEST_F(AppSettingsTest, ACorruptFileGivesAClearErrorAndIsNotReplaced) {
    fs::create_directories(AppFile("H").parent_path());
    {
        std::ofstream out(AppFile("H"));
        out << "[S]\n\"K\"=sz:\"broken\n";
    }
    try {
        AppSettings::GetSetting("H", "S", "K");
        FAIL();
    } catch (const RuntimeFault& e) {
        EXPECT_NE(std::string(e.what()).find("corrupt"), std::string::npos) << e.what();
        EXPECT_NE(std::string(e.what()).find("line 2"), std::string::npos) << e.what();
    }
    EXPECT_THROW(AppSettings::SaveSetting("H", "S", "K", "new"), RuntimeFault);
    EXPECT_EQ(ReadAll(AppFile("H")), "[S]\n\"K\"=sz:\"broken\n");
}

TEST_F(AppSettingsTest, AWriteInterruptedAtAnyPointLeavesThePreviousFileReadable) {
    AppSettings::SaveSetting("DMXControl", "Plugins\\zol-plugin", "DMXInActive", "True");
    const std::string before = ReadAll(AppFile("DMXControl"));
    for (sf::WriteStage failAt :
         {sf::WriteStage::TempCreated, sf::WriteStage::PartWritten, sf::WriteStage::Written,
          sf::WriteStage::Synced, sf::WriteStage::BeforeRename}) {
        SCOPED_TRACE(static_cast<int>(failAt));
        sf::SetWriteFailHookForTest([failAt](sf::WriteStage stage) { return stage == failAt; });
        EXPECT_THROW(AppSettings::SaveSetting("DMXControl", "Plugins\\zol-plugin", "DMXInActive", "False"),
                     RuntimeFault);
        sf::SetWriteFailHookForTest({});
        EXPECT_EQ(ReadAll(AppFile("DMXControl")), before);
        EXPECT_EQ(AppSettings::GetSetting("DMXControl", "Plugins\\zol-plugin", "DMXInActive"), "True");
    }
}

} // namespace
} // namespace zol::test
