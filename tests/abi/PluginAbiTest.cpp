// The built libzol-plugin.so through its C ABI, loaded with dlopen, on the scripted device library
// (libzol-kdi-script.so, loaded by the plug-in through ZOL_KDI_LIBRARY): each test states byte for
// byte what crossed the device seam. Each test runs in a process of its own, without a Qt
// application of its own, so the plug-in makes one.
#include "device_link/kdi.h"
#include "plugin/zol_plugin.h"
#include "services/settings/AUF_Registry.h"
#include "tests/abi/kdi_script.h"
#include "tests/support/QtTestEnvironment.h"
#include "tests/support/ScopedConfigDir.h"
#include "tests/support/ScriptedDeviceLibrary.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <cstdlib>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

namespace zol {
namespace {

using test::B;
using test::H;
using test::Hex;

template <class F> F Symbol(void* handle, const char* name) {
    void* p = dlsym(handle, name);
    EXPECT_NE(p, nullptr) << name;
    return reinterpret_cast<F>(p);
}

// The plug-in's exports.
struct Plugin {
    explicit Plugin(void* h)
        : create(Symbol<decltype(create)>(h, "UDC_Create")),
          release(Symbol<decltype(release)>(h, "UDC_Release")),
          pluginName(Symbol<decltype(pluginName)>(h, "UDC_PluginName")),
          init(Symbol<decltype(init)>(h, "UDC_Init")),
          configure(Symbol<decltype(configure)>(h, "UDC_Configure")),
          enable(Symbol<decltype(enable)>(h, "UDC_Enable")),
          setChannel(Symbol<decltype(setChannel)>(h, "UDC_SetChannel")),
          disable(Symbol<decltype(disable)>(h, "UDC_Disable")), term(Symbol<decltype(term)>(h, "UDC_Term")),
          errorInfo(Symbol<decltype(errorInfo)>(h, "UDC_ErrorInfo")) {}
    decltype(&UDC_Create) create;
    decltype(&UDC_Release) release;
    decltype(&UDC_PluginName) pluginName;
    decltype(&UDC_Init) init;
    decltype(&UDC_Configure) configure;
    decltype(&UDC_Enable) enable;
    decltype(&UDC_SetChannel) setChannel;
    decltype(&UDC_Disable) disable;
    decltype(&UDC_Term) term;
    decltype(&UDC_ErrorInfo) errorInfo;
};

// The script controls of the device library.
struct Script {
    explicit Script(void* h)
        : reset(Symbol<decltype(reset)>(h, "KdiScript_Reset")),
          setPorts(Symbol<decltype(setPorts)>(h, "KdiScript_SetPorts")),
          expect(Symbol<decltype(expect)>(h, "KdiScript_Expect")),
          setFallback(Symbol<decltype(setFallback)>(h, "KdiScript_SetFallback")),
          pending(Symbol<decltype(pending)>(h, "KdiScript_Pending")),
          mismatches(Symbol<decltype(mismatches)>(h, "KdiScript_Mismatches")),
          callCount(Symbol<decltype(callCount)>(h, "KdiScript_CallCount")),
          call(Symbol<decltype(call)>(h, "KdiScript_Call")) {}
    decltype(&KdiScript_Reset) reset;
    decltype(&KdiScript_SetPorts) setPorts;
    decltype(&KdiScript_Expect) expect;
    decltype(&KdiScript_SetFallback) setFallback;
    decltype(&KdiScript_Pending) pending;
    decltype(&KdiScript_Mismatches) mismatches;
    decltype(&KdiScript_CallCount) callCount;
    decltype(&KdiScript_Call) call;

    void Expect(const std::string& request, int32_t status, const std::string& response = {}) {
        expect(reinterpret_cast<const uint8_t*>(request.data()), static_cast<int32_t>(request.size()), status,
               reinterpret_cast<const uint8_t*>(response.data()), static_cast<int32_t>(response.size()));
    }
    // The record as lines: "Command 25 01 00 FF -> 0", "OpenPort 2 -> 0".
    std::vector<std::string> Record() {
        std::vector<std::string> out;
        for (int32_t i = 0; i < callCount(); ++i) {
            char function[64];
            uint8_t data[KDI_BUFFER_SIZE];
            int32_t length = KDI_BUFFER_SIZE;
            int32_t argument = 0;
            int32_t result = 0;
            EXPECT_EQ(call(i, function, sizeof function, data, &length, &argument, &result), 0);
            std::string line = function;
            if (line == "Command") {
                line += " " + Hex(std::string(reinterpret_cast<char*>(data), static_cast<size_t>(length)));
            } else if (line == "OpenPort" || line == "PortName") {
                line += " " + std::to_string(argument);
            }
            out.push_back(line + " -> " + std::to_string(result));
        }
        return out;
    }
};

// What the host's callback received.
std::vector<std::pair<int32_t, int32_t>> g_received;
void OnLevel(void* context, int32_t* slot, int32_t* level) {
    EXPECT_EQ(context, &g_received);
    g_received.emplace_back(*slot, *level);
}

constexpr const char* kHostName = "zol-test-host";
constexpr const char* kFileName = "libzol-plugin.so";

class PluginAbiTest : public ::testing::Test {
protected:
    void SetUp() override {
        const std::string bin = test::BinDir();
        setenv("ZOL_KDI_LIBRARY", (bin + "/libzol-kdi-script.so").c_str(), 1);
        setenv("ZOL_UI", "console", 1);
        scriptHandle = dlopen((bin + "/libzol-kdi-script.so").c_str(), RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(scriptHandle, nullptr) << dlerror();
        pluginHandle = dlopen((bin + "/libzol-plugin.so").c_str(), RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(pluginHandle, nullptr) << dlerror();
        plugin = std::make_unique<Plugin>(pluginHandle);
        script = std::make_unique<Script>(scriptHandle);
        script->reset();
        g_received.clear();
    }
    void TearDown() override {
        if (pluginHandle != nullptr) {
            dlclose(pluginHandle);
        }
        if (scriptHandle != nullptr) {
            dlclose(scriptHandle);
        }
    }

    // The probe of a connect: memory read refused (no factory mode), model 1, firmware 0.3.10.
    void ExpectProbe() {
        script->Expect(H("E0 00 00 01 00"), 2);
        script->Expect(H("00 01"), 0, B({1, 0}));
        script->Expect(H("02 01"), 0, "0.3.10");
    }
    // Create and Init with "Script Port 2" remembered.
    UDC_Interface* Start(const DMXC_Helper* helper = nullptr) {
        AUF_Registry::WriteValue("PortUsed", std::string("Script Port 2"));
        UDC_Interface* p = plugin->create();
        EXPECT_NE(p, nullptr);
        int32_t result = -1;
        EXPECT_EQ(plugin->init(p, kHostName, kFileName, helper, &result), 0);
        EXPECT_EQ(result, 0);
        return p;
    }
    int32_t Set(UDC_Interface* p, int32_t slot, int32_t level, int32_t* result) {
        return plugin->setChannel(p, &slot, &level, result);
    }
    std::pair<std::string, std::string> LastError(UDC_Interface* p) {
        char source[ZOL_PLUGIN_TEXT_SIZE];
        char description[ZOL_PLUGIN_TEXT_SIZE];
        EXPECT_EQ(plugin->errorInfo(p, source, sizeof source, description, sizeof description), 0);
        return {source, description};
    }
    static void PumpFor(int ms) {
        QElapsedTimer timer;
        timer.start();
        while (timer.elapsed() < ms) {
            QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        }
    }

    test::ScopedConfigDir config;
    void* scriptHandle = nullptr;
    void* pluginHandle = nullptr;
    std::unique_ptr<Plugin> plugin;
    std::unique_ptr<Script> script;
};

TEST_F(PluginAbiTest, TheLibraryExportsTheUdcFunctionsOnly) {
    // The plug-in's own classes and the device library's functions stay inside.
    for (const char* name : {"_ZN3zol8HCF_Form6CreateEv", "_ZN3zol5SetUiEPNS_2UiE", "KDI_Command"}) {
        EXPECT_EQ(dlsym(pluginHandle, name), nullptr) << name;
    }
}

TEST_F(PluginAbiTest, InitEnableSetChannelDisableTermCrossTheDeviceSeamByteForByte) {
    UDC_Interface* p = Start();
    // Without a Qt application of the host's, the plug-in made one.
    ASSERT_NE(QCoreApplication::instance(), nullptr);
    EXPECT_EQ(QGuiApplication::platformName(), "offscreen");

    int32_t result = -1;
    ExpectProbe();
    script->Expect(B({0x22, 0, 0}) + std::string(24, '\0'), 0);
    ASSERT_EQ(plugin->enable(p, &result), 0);
    EXPECT_EQ(result, 1);

    script->Expect(H("25 01 00 FF"), 0);
    EXPECT_EQ(Set(p, 1, 255, &result), 0);
    EXPECT_EQ(result, 1);
    script->Expect(B({0x22, 0, 0, 0xFF}) + std::string(23, '\0'), 0);
    EXPECT_EQ(Set(p, 25, 7, &result), 0);
    script->Expect(H("25 19 00 08"), 0);
    EXPECT_EQ(Set(p, 25, 8, &result), 0);
    EXPECT_EQ(Set(p, 0, 1, &result), 0);
    EXPECT_EQ(result, 0);
    EXPECT_EQ(Set(p, 1, 256, &result), 0);
    EXPECT_EQ(result, 0);

    script->Expect(H("23"), 0);
    ASSERT_EQ(plugin->disable(p, &result), 0);
    EXPECT_EQ(result, 1);
    result = -1;
    EXPECT_EQ(plugin->term(p, &result), 0);
    EXPECT_EQ(result, 0);
    plugin->release(p);

    EXPECT_EQ(script->pending(), 0);
    EXPECT_EQ(script->mismatches(), 0);
    const std::vector<std::string> record = script->Record();
    const std::string block24 = Hex(B({0x22, 0, 0}) + std::string(24, '\0'));
    const std::vector<std::string> wanted{
        "PortCount -> 2",
        "PortName 1 -> 13",
        "PortName 2 -> 13",
        "OpenPort 2 -> 0",
        "Command E0 00 00 01 00 -> 2",
        "Command 00 01 -> 0",
        "Command 02 01 -> 0",
        "Command " + block24 + " -> 0",
        "Command 25 01 00 FF -> 0",
        "Command " + Hex(B({0x22, 0, 0, 0xFF}) + std::string(23, '\0')) + " -> 0",
        "Command 25 19 00 08 -> 0",
        "Command 23 -> 0",
        "FreePort -> 0",
    };
    EXPECT_EQ(record, wanted);
}

TEST_F(PluginAbiTest, LevelsSetBeforeEnableGoOutWithTheFirstBlock) {
    UDC_Interface* p = Start();
    int32_t result = 0;
    EXPECT_EQ(Set(p, 2, 0x42, &result), 0);
    EXPECT_EQ(result, 1);
    ExpectProbe();
    script->Expect(B({0x22, 0, 0, 0, 0x42}) + std::string(22, '\0'), 0);
    ASSERT_EQ(plugin->enable(p, &result), 0);
    EXPECT_EQ(script->mismatches(), 0);
    plugin->term(p, &result);
    plugin->release(p);
}

TEST_F(PluginAbiTest, ADeviceGoneFailsEverySetChannelWith0x1102AndShowsOneBoxPerCall) {
    UDC_Interface* p = Start();
    int32_t result = 0;
    ExpectProbe();
    script->Expect(B({0x22, 0, 0}) + std::string(24, '\0'), 0);
    ASSERT_EQ(plugin->enable(p, &result), 0);

    testing::internal::CaptureStderr();
    for (int i = 0; i < 3; ++i) {
        script->Expect(H("25 05 00 10"), -2);
        result = -1;
        EXPECT_EQ(Set(p, 5, 16, &result), 0x1102);
        EXPECT_EQ(result, 0);
        const auto [source, description] = LastError(p);
        EXPECT_EQ(source, "zol-plugin");
        EXPECT_EQ(description, "ErrAPI_DeviceMissig\r\n$102");
    }
    const std::string shown = testing::internal::GetCapturedStderr();
    const std::string box = "[KARN DMX-ZOL MK1 Plugin - Channel Update] Local device has been disconnected\n";
    size_t boxes = 0;
    for (size_t at = shown.find(box); at != std::string::npos; at = shown.find(box, at + 1)) {
        ++boxes;
    }
    EXPECT_EQ(boxes, 3u) << shown;
    EXPECT_EQ(script->mismatches(), 0);

    // The host disables: the stop fails the same way and reaches the host.
    script->Expect(H("23"), -2);
    EXPECT_EQ(plugin->disable(p, &result), 0x1102);
    plugin->term(p, &result);
    plugin->release(p);
}

TEST_F(PluginAbiTest, NullAndUndersizedPointersGiveTheClientCallErrorAndNeverCrash) {
    constexpr int32_t kBad = ZOL_PLUGIN_ERR_CLIENT_CALL;
    int32_t result = 0;
    int32_t slot = 1;
    int32_t level = 1;
    char text[64];
    DMXC_Helper helper{nullptr, nullptr};
    EXPECT_EQ(plugin->pluginName(nullptr, text, sizeof text), kBad);
    EXPECT_EQ(plugin->init(nullptr, kHostName, kFileName, &helper, &result), kBad);
    EXPECT_EQ(plugin->configure(nullptr, &result), kBad);
    EXPECT_EQ(plugin->enable(nullptr, &result), kBad);
    EXPECT_EQ(plugin->setChannel(nullptr, &slot, &level, &result), kBad);
    EXPECT_EQ(plugin->disable(nullptr, &result), kBad);
    EXPECT_EQ(plugin->term(nullptr, &result), kBad);
    EXPECT_EQ(plugin->errorInfo(nullptr, text, sizeof text, text, sizeof text), kBad);
    plugin->release(nullptr);

    UDC_Interface* p = plugin->create();
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(plugin->init(p, nullptr, kFileName, &helper, &result), kBad);
    EXPECT_EQ(plugin->init(p, kHostName, nullptr, &helper, &result), kBad);
    EXPECT_EQ(plugin->init(p, kHostName, kFileName, &helper, nullptr), kBad);
    EXPECT_EQ(plugin->configure(p, nullptr), kBad);
    EXPECT_EQ(plugin->enable(p, nullptr), kBad);
    EXPECT_EQ(plugin->setChannel(p, nullptr, &level, &result), kBad);
    EXPECT_EQ(plugin->setChannel(p, &slot, nullptr, &result), kBad);
    EXPECT_EQ(plugin->setChannel(p, &slot, &level, nullptr), kBad);
    EXPECT_EQ(plugin->disable(p, nullptr), kBad);
    EXPECT_EQ(plugin->term(p, nullptr), kBad);
    EXPECT_EQ(plugin->pluginName(p, nullptr, 64), kBad);

    // "KARN DMX-ZOL MK1 Plugin" needs 24 bytes with its NUL.
    std::strcpy(text, "unchanged");
    EXPECT_EQ(plugin->pluginName(p, text, 23), kBad);
    EXPECT_STREQ(text, "");
    EXPECT_EQ(plugin->pluginName(p, text, 0), kBad);
    EXPECT_EQ(plugin->pluginName(p, text, -5), kBad);
    EXPECT_EQ(plugin->pluginName(p, text, 24), 0);
    EXPECT_STREQ(text, "KARN DMX-ZOL MK1 Plugin");

    const auto [source, description] = LastError(p);
    EXPECT_EQ(source, "UDC_PluginName");
    EXPECT_EQ(description, "ErrAPI_ClientCall\r\n$10C");
    char small[4];
    EXPECT_EQ(plugin->errorInfo(p, small, sizeof small, text, sizeof text), kBad);
    EXPECT_EQ(plugin->errorInfo(p, text, sizeof text, small, sizeof small), kBad);
    EXPECT_STREQ(small, "");
    // Nothing reached the device.
    EXPECT_EQ(script->callCount(), 0);
    plugin->release(p);
}

TEST_F(PluginAbiTest, AfterTermEveryCallFindsNoControl) {
    UDC_Interface* p = Start();
    int32_t result = 0;
    EXPECT_EQ(plugin->term(p, &result), 0);
    EXPECT_EQ(plugin->enable(p, &result), ZOL_PLUGIN_ERR_NO_CONTROL);
    EXPECT_EQ(LastError(p).second, "Object variable or With block variable not set");
    EXPECT_EQ(plugin->disable(p, &result), ZOL_PLUGIN_ERR_NO_CONTROL);
    EXPECT_EQ(plugin->configure(p, &result), ZOL_PLUGIN_ERR_NO_CONTROL);
    EXPECT_EQ(Set(p, 1, 1, &result), ZOL_PLUGIN_ERR_NO_CONTROL);
    EXPECT_EQ(plugin->init(p, kHostName, kFileName, nullptr, &result), ZOL_PLUGIN_ERR_NO_CONTROL);
    char name[ZOL_PLUGIN_TEXT_SIZE];
    EXPECT_EQ(plugin->pluginName(p, name, sizeof name), 0);
    EXPECT_STREQ(name, "KARN DMX-ZOL MK1 Plugin");
    plugin->release(p);
}

TEST_F(PluginAbiTest, TheOpenPortClosesAtTermWithItsObject) {
    UDC_Interface* p = Start();
    int32_t result = 0;
    ExpectProbe();
    script->Expect(B({0x22, 0, 0}) + std::string(24, '\0'), 0);
    ASSERT_EQ(plugin->enable(p, &result), 0);
    EXPECT_EQ(plugin->term(p, &result), 0);
    const auto record = script->Record();
    ASSERT_FALSE(record.empty());
    EXPECT_EQ(record.back(), "FreePort -> 0");
    plugin->release(p);
}

TEST_F(PluginAbiTest, InDmxInModeEveryReceivedSlotReachesTheHostsCallback) {
    AppSettings::SaveSetting(kHostName, std::string("Plugins\\") + kFileName, "DMXInActive", "True");
    DMXC_Helper helper{&g_received, &OnLevel};
    UDC_Interface* p = Start(&helper);
    int32_t result = 0;
    EXPECT_EQ(Set(p, 1, 1, &result), 0);
    EXPECT_EQ(result, 0); // the host does not drive the line while the plug-in listens
    ExpectProbe();
    ASSERT_EQ(plugin->enable(p, &result), 0);
    const std::string frame = B({0, 0, 0x0A, 0x0B, 0x0C});
    script->setFallback(0, reinterpret_cast<const uint8_t*>(frame.data()),
                        static_cast<int32_t>(frame.size()));
    PumpFor(500);
    ASSERT_GE(g_received.size(), 3u);
    EXPECT_EQ(g_received[0], std::make_pair(1, 0x0A));
    EXPECT_EQ(g_received[1], std::make_pair(2, 0x0B));
    EXPECT_EQ(g_received[2], std::make_pair(3, 0x0C));
    EXPECT_EQ(g_received.size() % 3, 0u);
    ASSERT_EQ(plugin->disable(p, &result), 0);
    PumpFor(300);
    const size_t after = g_received.size();
    PumpFor(300);
    EXPECT_EQ(g_received.size(), after);
    // After the search, the open and the probe, the device saw input reads and the close only.
    const auto record = script->Record();
    ASSERT_GT(record.size(), 7u);
    for (size_t i = 7; i < record.size(); ++i) {
        EXPECT_TRUE(record[i] == "Command 28 01 -> 0" || record[i] == "FreePort -> 0") << record[i];
    }
    plugin->term(p, &result);
    plugin->release(p);
}

} // namespace
} // namespace zol
