#pragma once
// Shared pieces of the plug-in core tests: the scripted seams, the device's answers to the probe
// that every connect runs, and the stand-in for the main panel.

#include "device_link/core/Client.h"
#include "device_link/core/ErrTrap.h"
#include "framework/form/Forms.h"
#include "plugin/core/IO_Tasks.h"
#include "plugin/core/UDC_Control.h"
#include "tests/form/FakeView.h"
#include "tests/support/FakeClock.h"
#include "tests/support/ScopedConfigDir.h"
#include "tests/support/ScriptedDeviceLibrary.h"
#include "tests/support/ScriptedUi.h"

#include <functional>
#include <gtest/gtest.h>
#include <memory>

namespace zol::test {

// The probe of a connect: ReadMemory refused as unknown (0x1002, no factory mode), model 1, and
// firmware equal to the newest known for model 1.
inline void ExpectProbe(ScriptedDeviceLibrary& lib, const std::string& firmware = "0.3.10") {
    lib.Expect(H("E0 00 00 01 00"), 2);
    lib.Expect(H("00 01"), 0, B({1, 0}));
    lib.Expect(H("02 01"), 0, firmware);
}

// The level block as it reaches the device: code 34, two zero bytes, then the levels.
inline Bytes Block(const std::string& levels) {
    return B({0x22, 0, 0}) + levels;
}

// 512 levels, all zero but those given.
inline std::string LevelsWith(std::initializer_list<std::pair<int, int>> values, size_t count = 512) {
    std::string levels(count, '\0');
    for (auto [slot, level] : values) {
        if (static_cast<size_t>(slot) <= count) {
            levels[static_cast<size_t>(slot) - 1] = static_cast<char>(level);
        }
    }
    return levels;
}

inline int32_t CodeOf(const std::function<void()>& call) {
    try {
        call();
    } catch (const ZolError& e) {
        return e.Code();
    }
    return 0;
}

// The seams every plug-in core test stands on.
class PluginFixture : public ::testing::Test {
protected:
    PluginFixture() {
        ErrTrap::ResetForTest();
        Client::ResetStateForTest();
        RegisterIoTasks();
    }
    ~PluginFixture() override { Forms::UnloadAll(); }

    ScopedConfigDir config;
    ScriptedUi ui;
    FakeClock clock;
    ScriptedDeviceLibrary lib;
    ViewZoo zoo;
};

// Registers a stand-in for the main panel under "User_Main": it takes the session object from
// its controller, runs `act` with it while "open", and closes.
inline void RegisterMainPanel(ViewZoo& zoo, std::function<void(UDC_Control&)> act) {
    zoo.Register("User_Main", [act](FakeView& view) {
        view.onShow = [act](FakeView& self) {
            auto control = std::dynamic_pointer_cast<UDC_Control>(self.form->DataObject());
            ASSERT_NE(control, nullptr);
            if (act) {
                act(*control);
            }
            self.Unload();
        };
    });
}

} // namespace zol::test
