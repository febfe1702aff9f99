// The default device library: loaded once by path when nothing is installed.
#include "device_link/core/Client.h"
#include "device_link/core/ErrTrap.h"
#include "tests/support/ScriptedDeviceLibrary.h"

#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <unistd.h>

namespace zol::test {
namespace {

TEST(ClientDefaultLibraryTest, AMissingDefaultLibraryAnswersEveryCallWithTheUnexpectedLibraryError) {
    setenv("ZOL_KDI_LIBRARY", "/nonexistent/folder/libkdi-missing.so", 1);
    DeviceLibrary* first = &Client::Library();
    EXPECT_EQ(first, &Client::Library()) << "the default is loaded once";
    EXPECT_NE(Client::LibraryError().find("/nonexistent/folder/libkdi-missing.so"), std::string::npos);
    try {
        Client::DeviceName();
        FAIL();
    } catch (const ZolError& e) {
        EXPECT_EQ(e.Code(), 0x1164);
        EXPECT_NE(e.Description().find("could not be loaded"), std::string::npos);
    }
    try {
        Client::OpenPort(1);
        FAIL();
    } catch (const ZolError& e) {
        EXPECT_EQ(e.Code(), 0x1164);
    }
    // Installing a library replaces the default; removing it brings the same default back.
    {
        ScriptedDeviceLibrary scripted;
        EXPECT_EQ(&Client::Library(), static_cast<DeviceLibrary*>(&scripted));
    }
    EXPECT_EQ(&Client::Library(), first);
}

TEST(ClientDefaultLibraryTest, PluginFolderIsTheFolderOfTheModuleHoldingTheClient) {
    // Linked statically into this test program, the client lives in the program itself.
    const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe");
    EXPECT_EQ(std::filesystem::path(Client::PluginFolder()), self.parent_path());
    unsetenv("ZOL_KDI_LIBRARY");
    EXPECT_EQ(DefaultDeviceLibraryPath(Client::PluginFolder()),
              self.parent_path().string() + "/" + kSimulatorLibraryName);
}

} // namespace
} // namespace zol::test
