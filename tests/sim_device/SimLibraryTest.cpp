// libzol-sim.so as a host loads it: the exported symbols, the environment it reads, the trace,
// and arguments at the C ABI that must not crash.

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <vector>

namespace {

using CommandFn = int32_t (*)(uint8_t*, int32_t*);
using IntFn = int32_t (*)(int32_t);
using VoidFn = int32_t (*)();
using NameFn = int32_t (*)(int32_t, char*, int32_t);
using TextFn = int32_t (*)(char*, int32_t);
using PathFn = int32_t (*)(const char*);
using ControlFn = int32_t (*)(const char*, char*, int32_t);

const char* const kExports[] = {"KDI_Command",   "KDI_OpenPort",  "KDI_FreePort", "KDI_PortCount",
                                "KDI_PortName",  "KDI_LastError", "KDI_Version",  "KDI_Reprogram",
                                "KDI_ProgState", "SIM_Control"};

// The library, loaded once per process like a host does. Each test starts it afresh with "reload",
// which reads ZOL_SIM_RIG and ZOL_SIM_TRACE again.
class Library {
public:
    Library() {
        handle_ = dlopen(ZOL_SIM_LIBRARY, RTLD_NOW | RTLD_LOCAL);
        if (handle_ == nullptr) {
            return;
        }
        command = reinterpret_cast<CommandFn>(dlsym(handle_, "KDI_Command"));
        openPort = reinterpret_cast<IntFn>(dlsym(handle_, "KDI_OpenPort"));
        freePort = reinterpret_cast<VoidFn>(dlsym(handle_, "KDI_FreePort"));
        portCount = reinterpret_cast<VoidFn>(dlsym(handle_, "KDI_PortCount"));
        portName = reinterpret_cast<NameFn>(dlsym(handle_, "KDI_PortName"));
        lastError = reinterpret_cast<TextFn>(dlsym(handle_, "KDI_LastError"));
        version = reinterpret_cast<TextFn>(dlsym(handle_, "KDI_Version"));
        reprogram = reinterpret_cast<PathFn>(dlsym(handle_, "KDI_Reprogram"));
        progState = reinterpret_cast<VoidFn>(dlsym(handle_, "KDI_ProgState"));
        control = reinterpret_cast<ControlFn>(dlsym(handle_, "SIM_Control"));
    }
    void* Handle() const { return handle_; }

    std::string Control(const std::string& text) {
        char reply[1024] = {};
        const int32_t rc = control(text.c_str(), reply, sizeof reply);
        return rc < 0 ? "error: " + std::string(reply) : std::string(reply);
    }
    std::string LastError() {
        char text[256] = {};
        lastError(text, sizeof text);
        return text;
    }

    CommandFn command = nullptr;
    IntFn openPort = nullptr;
    VoidFn freePort = nullptr;
    VoidFn portCount = nullptr;
    NameFn portName = nullptr;
    TextFn lastError = nullptr;
    TextFn version = nullptr;
    PathFn reprogram = nullptr;
    VoidFn progState = nullptr;
    ControlFn control = nullptr;

private:
    void* handle_ = nullptr;
};

Library& Lib() {
    static Library library;
    return library;
}

std::string TempPath(const std::string& name) {
    const auto dir = std::filesystem::temp_directory_path() / "zol_sim_library_tests";
    std::filesystem::create_directories(dir);
    return (dir / name).string();
}

std::vector<std::string> Lines(const std::string& path) {
    std::ifstream in(path);
    std::vector<std::string> lines;
    std::string line;
    while (std::getline(in, line)) {
        lines.push_back(line);
    }
    return lines;
}

class SimLibrary : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_NE(Lib().Handle(), nullptr) << dlerror();
        unsetenv("ZOL_SIM_RIG");
        unsetenv("ZOL_SIM_TRACE");
        Lib().Control("reload");
        Lib().Control("clock manual");
    }
    void TearDown() override {
        unsetenv("ZOL_SIM_RIG");
        unsetenv("ZOL_SIM_TRACE");
        Lib().Control("reload");
    }
};

TEST_F(SimLibrary, ExportsTheNineFunctionsAndTheConsole) {
    for (const char* name : kExports) {
        EXPECT_NE(dlsym(Lib().Handle(), name), nullptr) << name;
    }
}

TEST_F(SimLibrary, KeepsEverythingElseHidden) {
    // zol::sim::Simulator::Command(unsigned char*, int*) and zol::sim::Crc32(void const*, unsigned long)
    EXPECT_EQ(dlsym(Lib().Handle(), "_ZN3zol3sim9Simulator7CommandEPhPi"), nullptr);
    EXPECT_EQ(dlsym(Lib().Handle(), "_ZN3zol3sim5Crc32EPKvm"), nullptr);
}

TEST_F(SimLibrary, WorksWithNoFilesAround) {
    EXPECT_EQ(Lib().portCount(), 2);
    char name[64] = {};
    EXPECT_EQ(Lib().portName(1, name, 64), 9);
    EXPECT_STREQ(name, "ZOL USB 1");
    ASSERT_EQ(Lib().openPort(1), 0);
    uint8_t buffer[528] = {0x00, 0x01};
    int32_t length = 2;
    EXPECT_EQ(Lib().command(buffer, &length), 0);
    EXPECT_EQ(length, 2);
    EXPECT_EQ(buffer[0], 2);
    EXPECT_EQ(Lib().freePort(), 0);
}

TEST_F(SimLibrary, TheRigComesFromZolSimRig) {
    const std::string rig = TempPath("three.json");
    std::ofstream(rig) << R"({"ports": [{"name": "Bench A"}, {"name": "Bench B"}, {"name": "Bench C"}]})";
    setenv("ZOL_SIM_RIG", rig.c_str(), 1);
    EXPECT_EQ(Lib().Control("reload"), "rig \"" + rig + "\" with 3 ports");
    EXPECT_EQ(Lib().portCount(), 3);
    char name[64] = {};
    Lib().portName(3, name, 64);
    EXPECT_STREQ(name, "Bench C");
}

TEST_F(SimLibrary, AMalformedRigLeavesNoPortsAndLastErrorSaysWhy) {
    const std::string rig = TempPath("broken.json");
    std::ofstream(rig) << "{\"ports\": [{\"name\": 5}]}";
    setenv("ZOL_SIM_RIG", rig.c_str(), 1);
    Lib().Control("reload");
    EXPECT_EQ(Lib().portCount(), 0);
    EXPECT_EQ(Lib().LastError(),
              "Rig refused: " + rig + ": ports[0].name: must be a text of 1 to 63 characters");
    EXPECT_EQ(Lib().openPort(1), -12);
}

TEST_F(SimLibrary, TraceShowsEachCallOfAShortSession) {
    const std::string trace = TempPath("trace.txt");
    std::filesystem::remove(trace);
    setenv("ZOL_SIM_TRACE", trace.c_str(), 1);
    Lib().Control("reload");
    EXPECT_EQ(Lib().portCount(), 2);
    char name[64];
    Lib().portName(2, name, 64);
    ASSERT_EQ(Lib().openPort(1), 0);
    uint8_t buffer[528] = {0x25, 0x01, 0x00, 0xFF};
    int32_t length = 4;
    EXPECT_EQ(Lib().command(buffer, &length), 0);
    buffer[0] = 0x00;
    buffer[1] = 0x01;
    length = 2;
    EXPECT_EQ(Lib().command(buffer, &length), 0);
    buffer[0] = 0x12;
    buffer[1] = 45;
    length = 2;
    EXPECT_EQ(Lib().command(buffer, &length), 1);
    EXPECT_EQ(Lib().progState(), 0);
    EXPECT_EQ(Lib().freePort(), 0);
    unsetenv("ZOL_SIM_TRACE");
    Lib().Control("trace off");
    const std::vector<std::string> expected = {
        "SIM_Control(\"reload\") -> 0 \"rig \"default rig\" with 2 ports\"",
        "KDI_PortCount() -> 2",
        "KDI_PortName(2) -> 9 \"ZOL USB 2\"",
        "KDI_OpenPort(1) -> 0",
        "KDI_Command 25 01 00 FF -> 0 |",
        "KDI_Command 00 01 -> 0 | 02 00",
        "KDI_Command 12 2D -> 1 |",
        "KDI_ProgState() -> 0",
        "KDI_FreePort() -> 0",
    };
    // "clock manual" comes before the trace starts again with "reload".
    EXPECT_EQ(Lines(trace), expected);
}

TEST_F(SimLibrary, NullAndShortArgumentsNeverCrash) {
    char small[4];
    EXPECT_EQ(Lib().portName(1, nullptr, 64), -12);
    EXPECT_EQ(Lib().portName(1, small, 0), -12);
    EXPECT_EQ(Lib().portName(1, small, sizeof small), 3);
    EXPECT_STREQ(small, "ZOL");
    EXPECT_EQ(Lib().lastError(nullptr, 256), -12);
    EXPECT_EQ(Lib().lastError(small, -1), -12);
    EXPECT_EQ(Lib().version(nullptr, 256), -12);
    EXPECT_EQ(Lib().version(small, sizeof small), 3);
    EXPECT_EQ(Lib().reprogram(nullptr), -12);
    int32_t length = 1;
    EXPECT_EQ(Lib().command(nullptr, &length), -12);
    uint8_t buffer[528] = {};
    EXPECT_EQ(Lib().command(buffer, nullptr), -12);
    EXPECT_EQ(Lib().control(nullptr, small, sizeof small), -1);
    EXPECT_GT(Lib().control("help", nullptr, 0), 0);
    EXPECT_GT(Lib().control("help", small, 1), 0);
    EXPECT_STREQ(small, "");
}

TEST_F(SimLibrary, UnplugReachesTheHostAsMinus2) {
    ASSERT_EQ(Lib().openPort(1), 0);
    EXPECT_EQ(Lib().Control("unplug"), "port 1 unplugged");
    uint8_t buffer[528] = {0x25, 0x01, 0x00, 0x10};
    int32_t length = 4;
    EXPECT_EQ(Lib().command(buffer, &length), -2);
    EXPECT_EQ(length, 0);
    Lib().Control("replug");
    length = 4;
    buffer[0] = 0x25;
    EXPECT_EQ(Lib().command(buffer, &length), 0);
    EXPECT_EQ(Lib().freePort(), 0);
}

} // namespace
