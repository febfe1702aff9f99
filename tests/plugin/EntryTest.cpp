// The host's seven calls: bounds and mode of SetChannel, the panel opened by Enable and Configure,
// the session around Configure, a device lost in a session, and the end of the plug-in at Term.
#include "plugin/core/IO_Tasks.h"
#include "plugin/core/UDC_Interface.h"
#include "services/settings/AUF_Registry.h"
#include "tests/plugin/PluginTestSupport.h"

namespace zol {
namespace {

using namespace test;

class EntryTest : public PluginFixture {
protected:
    // Init with the port last used being "ZOL USB 2".
    void InitRemembered(UDC_Interface& iface) {
        AUF_Registry::WriteValue("PortUsed", std::string("ZOL USB 2"));
        EXPECT_FALSE(iface.Init("Host", "zol-plugin", nullptr));
    }
    // Enable on the remembered port: open, probe, first block.
    void EnableRemembered(UDC_Interface& iface, const std::string& levels = std::string(24, '\0')) {
        ExpectProbe(lib);
        lib.Expect(Block(levels), 0);
        EXPECT_TRUE(iface.Enable());
        ASSERT_TRUE(iface.Control()->Active());
        ASSERT_TRUE(iface.Control()->Port()->InUse());
    }
    bool Set(UDC_Interface& iface, int32_t slot, int32_t level) { return iface.SetChannel(slot, level); }
    size_t Count(const std::string& function) const {
        size_t n = 0;
        for (const auto& call : lib.calls) {
            n += call.function == function ? 1 : 0;
        }
        return n;
    }
};

TEST_F(EntryTest, PluginNameIsTheProductNameAlsoBeforeInitAndAfterTerm) {
    UDC_Interface iface;
    EXPECT_EQ(iface.PluginName(), "KARN DMX-ZOL MK1 Plugin");
    iface.Term();
    EXPECT_EQ(iface.PluginName(), "KARN DMX-ZOL MK1 Plugin");
}

TEST_F(EntryTest, SetChannelOutsideTheBoundsReturnsFalseAndChangesNothing) {
    UDC_Interface iface;
    InitRemembered(iface);
    EnableRemembered(iface);
    const size_t before = lib.calls.size();
    EXPECT_FALSE(Set(iface, 0, 10));
    EXPECT_FALSE(Set(iface, 513, 10));
    EXPECT_FALSE(Set(iface, 1, 256));
    EXPECT_FALSE(Set(iface, 1, -1));
    EXPECT_EQ(lib.calls.size(), before);
    EXPECT_EQ(iface.Control()->Levels(), std::string(512, '\0'));
    EXPECT_TRUE(ui.boxes.empty());
}

TEST_F(EntryTest, SetChannel512At255And1At0AreAccepted) {
    UDC_Interface iface;
    InitRemembered(iface);
    EnableRemembered(iface);
    lib.Expect(Block(std::string(24, '\0')), 0);
    EXPECT_TRUE(Set(iface, 512, 255));
    lib.Expect(H("25 01 00 00"), 0);
    EXPECT_TRUE(Set(iface, 1, 0));
    EXPECT_EQ(static_cast<uint8_t>(iface.Control()->Levels()[511]), 255);
}

TEST_F(EntryTest, InMode1EverySetChannelReturnsFalseAlsoWithValidArguments) {
    AppSettings::SaveSetting("Host", "Plugins\\zol-plugin", "DMXInActive", "True");
    UDC_Interface iface;
    EXPECT_FALSE(iface.Init("Host", "zol-plugin", nullptr));
    EXPECT_EQ(iface.Control()->Mode(), 1);
    EXPECT_FALSE(Set(iface, 1, 10));
    EXPECT_FALSE(Set(iface, 512, 0));
    EXPECT_EQ(iface.Control()->Levels(), std::string(512, '\0'));
    EXPECT_TRUE(lib.Commands().empty());
}

TEST_F(EntryTest, InitReturnsFalseOnSuccess) {
    UDC_Interface iface;
    EXPECT_FALSE(iface.Init("Host", "zol-plugin", nullptr));
    // It loaded the input task, looked for the last port and read the mode.
    EXPECT_NE(Forms::Find("IO_Tasks"), nullptr);
    EXPECT_EQ(Count("PortCount"), 1u);
    EXPECT_EQ(iface.Control()->AppName(), "Host");
    EXPECT_EQ(iface.Control()->Section(), "Plugins\\zol-plugin");
    EXPECT_TRUE(lib.Commands().empty());
}

TEST_F(EntryTest, InitPreselectsThePortLastUsedWithoutOpeningIt) {
    UDC_Interface iface;
    InitRemembered(iface);
    EXPECT_TRUE(iface.Control()->Port()->Ready());
    EXPECT_EQ(iface.Control()->Port()->Index(), 2);
    EXPECT_EQ(Count("OpenPort"), 0u);
}

TEST_F(EntryTest, EnableWithNoUsablePortOpensThePanelAndWithoutAChoiceReturnsTrueWithNoSession) {
    int panelShown = 0;
    RegisterMainPanel(zoo, [&](UDC_Control&) { ++panelShown; });
    UDC_Interface iface;
    iface.Init("Host", "zol-plugin", nullptr);
    EXPECT_TRUE(iface.Enable());
    EXPECT_EQ(panelShown, 1);
    EXPECT_FALSE(iface.Control()->Active());
    EXPECT_FALSE(iface.Control()->Port()->InUse());
    EXPECT_TRUE(ui.boxes.empty());
    // Later levels only fill the buffer.
    EXPECT_TRUE(Set(iface, 1, 99));
    EXPECT_TRUE(Set(iface, 300, 1));
    EXPECT_TRUE(lib.Commands().empty());
    EXPECT_EQ(static_cast<uint8_t>(iface.Control()->Levels()[0]), 99);
}

TEST_F(EntryTest, EnableAfterTheUserChoseAPortInThePanelStartsTheSession) {
    RegisterMainPanel(zoo, [](UDC_Control& control) { control.Port()->SetIndex(1); });
    UDC_Interface iface;
    iface.Init("Host", "zol-plugin", nullptr);
    EXPECT_TRUE(Set(iface, 2, 0x42)); // before Enable: kept in the buffer
    ExpectProbe(lib);
    lib.Expect(Block(LevelsWith({{2, 0x42}}, 24)), 0);
    EXPECT_TRUE(iface.Enable());
    EXPECT_TRUE(iface.Control()->Active());
    EXPECT_EQ(AUF_Registry::ReadString("PortUsed"), "ZOL USB 1");
}

TEST_F(EntryTest, EnableOnTheRememberedPortOpensItAndSendsTheFirstBlock) {
    UDC_Interface iface;
    InitRemembered(iface);
    EnableRemembered(iface);
    bool opened = false;
    for (const auto& call : lib.calls) {
        if (call.function == "OpenPort") {
            EXPECT_EQ(call.argument, 2);
            opened = true;
        }
    }
    EXPECT_TRUE(opened);
    lib.Expect(H("25 05 00 80"), 0);
    EXPECT_TRUE(Set(iface, 5, 128));
}

TEST_F(EntryTest, WithoutTheMainPanelEnableFailsAsAnUnknownViewFails) {
    UDC_Interface iface;
    iface.Init("Host", "zol-plugin", nullptr);
    try {
        iface.Enable();
        FAIL() << "no error";
    } catch (const ZolError& e) {
        EXPECT_EQ(e.Description(), "Form User_Main not registered");
    }
}

TEST_F(EntryTest, ConfigureDuringASessionLeavesASessionRunningAlsoIfTheUserDisconnected) {
    UDC_Interface iface;
    InitRemembered(iface);
    EnableRemembered(iface);
    bool pausedInPanel = false;
    RegisterMainPanel(zoo, [&](UDC_Control& control) {
        pausedInPanel = control.Paused();
        // The host's levels meanwhile only fill the buffer.
        int32_t slot = 7;
        int32_t level = 70;
        EXPECT_TRUE(iface.SetChannel(slot, level));
        control.Port()->Release();
    });
    lib.Expect(H("23"), 0); // paused for the panel
    ExpectProbe(lib);       // seized again
    lib.Expect(Block(LevelsWith({{7, 70}}, 24)), 0);
    EXPECT_TRUE(iface.Configure());
    EXPECT_TRUE(pausedInPanel);
    EXPECT_TRUE(iface.Control()->Active());
    EXPECT_FALSE(iface.Control()->Paused());
    EXPECT_TRUE(iface.Control()->Port()->InUse());
    EXPECT_EQ(Count("OpenPort"), 2u);
}

TEST_F(EntryTest, ConfigureDuringASessionWithThePortLeftOpenRunsTheSessionAgain) {
    UDC_Interface iface;
    InitRemembered(iface);
    EnableRemembered(iface);
    RegisterMainPanel(zoo, {});
    lib.Expect(H("23"), 0);
    lib.Expect(Block(std::string(24, '\0')), 0);
    EXPECT_TRUE(iface.Configure());
    EXPECT_TRUE(iface.Control()->Active());
    EXPECT_EQ(Count("OpenPort"), 1u);
}

TEST_F(EntryTest, ConfigureOutsideASessionReleasesAPortThatTheUserConnected) {
    UDC_Interface iface;
    iface.Init("Host", "zol-plugin", nullptr);
    RegisterMainPanel(zoo, [&](UDC_Control& control) {
        control.Port()->SetIndex(2);
        ExpectProbe(lib);
        control.Port()->Seize();
        EXPECT_TRUE(control.Port()->InUse());
    });
    EXPECT_TRUE(iface.Configure());
    EXPECT_FALSE(iface.Control()->Port()->InUse());
    EXPECT_FALSE(iface.Control()->Active());
    EXPECT_EQ(Count("FreePort"), 1u);
}

TEST_F(EntryTest, ConfigureWithNoPortChosenReturnsFalse) {
    lib.portNames.clear();
    RegisterMainPanel(zoo, {});
    UDC_Interface iface;
    iface.Init("Host", "zol-plugin", nullptr);
    EXPECT_FALSE(iface.Configure());
}

TEST_F(EntryTest, ALocalErrorInConfigureIsShownAndConfigureReturnsFalse) {
    UDC_Interface iface;
    iface.Init("Host", "zol-plugin", nullptr);
    RegisterMainPanel(zoo, [](UDC_Control&) { ErrTrap::RaiseLocal("Something local"); });
    ui.Expect("Something local", vb::OK, std::string("KARN DMX-ZOL MK1 Plugin - Configure"));
    EXPECT_FALSE(iface.Configure());
}

TEST_F(EntryTest, ADeviceGoneInASessionFailsEverySetChannelWith0x1102AndOneBoxPerCall) {
    UDC_Interface iface;
    InitRemembered(iface);
    EnableRemembered(iface);
    for (int call = 0; call < 3; ++call) {
        lib.Expect(H("25 01 00 0A"), -2);
        ui.Expect("Local device has been disconnected", vb::OK,
                  std::string("KARN DMX-ZOL MK1 Plugin - Channel Update"));
        EXPECT_EQ(CodeOf([&] { Set(iface, 1, 10); }), err::ErrAPI_DeviceMissig);
    }
    EXPECT_EQ(ui.boxes.size(), 3u);
    EXPECT_TRUE(iface.Control()->Active());
    EXPECT_FALSE(iface.Control()->Paused());
    EXPECT_TRUE(iface.Control()->Port()->InUse());
    // The host disables: the stop and the close fail too, and reach the host.
    lib.Expect(H("23"), -2);
    EXPECT_EQ(CodeOf([&] { iface.Disable(); }), err::ErrAPI_DeviceMissig);
}

TEST_F(EntryTest, DisableStopsTheOutputAndReleasesThePort) {
    UDC_Interface iface;
    InitRemembered(iface);
    EnableRemembered(iface);
    lib.Expect(H("23"), 0);
    EXPECT_TRUE(iface.Disable());
    EXPECT_FALSE(iface.Control()->Active());
    EXPECT_FALSE(iface.Control()->Port()->InUse());
    EXPECT_EQ(Count("FreePort"), 1u);
    // Enable again: the last levels come back.
    lib.ClearCalls();
    EXPECT_TRUE(Set(iface, 4, 44));
    ExpectProbe(lib);
    lib.Expect(Block(LevelsWith({{4, 44}}, 24)), 0);
    EXPECT_TRUE(iface.Enable());
}

TEST_F(EntryTest, TermReturnsFalseAndAfterItEveryCallFindsNoControl) {
    UDC_Interface iface;
    InitRemembered(iface);
    EnableRemembered(iface);
    EXPECT_FALSE(iface.Term());
    // The port closed with its object.
    EXPECT_EQ(Count("FreePort"), 1u);
    EXPECT_EQ(iface.Control(), nullptr);
    EXPECT_THROW(iface.Enable(), RuntimeFault);
    EXPECT_THROW(iface.Disable(), RuntimeFault);
    ui.AnswerWith([](const ShownBox& box) {
        EXPECT_EQ(box.prompt, "Object variable or With block variable not set");
        return vb::OK;
    });
    EXPECT_EQ(CodeOf([&] { Set(iface, 1, 1); }), rt::ObjectNotSet);
}

} // namespace
} // namespace zol
