// The session and the port: how levels reach the device, the session states, the port chosen and
// remembered, and the derogation forwarded on connect.
#include "plugin/core/FDF_Port.h"
#include "plugin/core/UDC_Control.h"
#include "plugin/core/UDC_Interface.h"
#include "services/settings/AUF_Registry.h"
#include "tests/plugin/PluginTestSupport.h"

namespace zol {
namespace {

using namespace test;

class SessionTest : public PluginFixture {
protected:
    void Start(UDC_Control& control) {
        control.Initialise(nullptr, "Host", "Plugins\\zol-plugin");
        lib.Expect(Block(std::string(24, '\0')), 0);
        control.Begin();
        ASSERT_TRUE(control.Active());
    }
    size_t Count(const std::string& function) const {
        size_t n = 0;
        for (const auto& call : lib.calls) {
            n += call.function == function ? 1 : 0;
        }
        return n;
    }
    // A port chosen by the remembered name "ZOL USB 2" and opened.
    void SeizeRemembered(FDF_Port& port) {
        AUF_Registry::WriteValue("PortUsed", std::string("ZOL USB 2"));
        ASSERT_TRUE(port.Ready());
        ExpectProbe(lib);
        port.Seize();
        ASSERT_TRUE(port.InUse());
    }
};

TEST_F(SessionTest, JustAfterInitSlotCountIs24AndBeginSends26BytesOfData) {
    UDC_Control control;
    control.Initialise(nullptr, "Host", "Plugins\\zol-plugin");
    EXPECT_EQ(control.SlotCount(), 24);
    control.Update(1, 10);
    control.Update(24, 240);
    EXPECT_TRUE(lib.Commands().empty());
    lib.Expect(Block(LevelsWith({{1, 10}, {24, 240}}, 24)), 0);
    control.Begin();
    ASSERT_EQ(lib.Commands().size(), 1u);
    EXPECT_EQ(lib.Commands()[0].size(), 27u); // the code and 26 bytes of data
    EXPECT_TRUE(control.Active());
    EXPECT_FALSE(control.Paused());
}

TEST_F(SessionTest, Update25InARunningSessionSendsA24SlotBlockThenSingleSlotUpdates) {
    UDC_Control control;
    Start(control);
    lib.Expect(Block(std::string(24, '\0')), 0);
    control.Update(25, 0x55);
    EXPECT_EQ(control.SlotCount(), 25);
    lib.Expect(H("25 19 00 66"), 0);
    control.Update(25, 0x66);
    EXPECT_EQ(control.SlotCount(), 25);
}

TEST_F(SessionTest, Update512WithSlotCount24Sends24SlotsAndSetsSlotCountTo512) {
    UDC_Control control;
    control.Initialise(nullptr, "Host", "Plugins\\zol-plugin");
    control.Update(3, 33);
    lib.Expect(Block(LevelsWith({{3, 33}}, 24)), 0);
    control.Begin();
    lib.Expect(Block(LevelsWith({{3, 33}}, 24)), 0);
    control.Update(512, 0xFF);
    EXPECT_EQ(control.SlotCount(), 512);
    lib.Expect(H("25 00 02 01"), 0);
    control.Update(512, 1);
    // The next Begin sends all 512 slots.
    lib.Expect(Block(LevelsWith({{3, 33}, {512, 1}})), 0);
    control.Begin();
}

TEST_F(SessionTest, UpdateWhileSuspendedChangesOnlyTheBufferAndTheFollowingBeginDeliversIt) {
    UDC_Control control;
    Start(control);
    lib.Expect(H("23"), 0);
    control.Pause();
    EXPECT_TRUE(control.Paused());
    const size_t before = lib.calls.size();
    control.Update(3, 77);
    control.Update(100, 5);
    EXPECT_EQ(lib.calls.size(), before);
    EXPECT_EQ(control.SlotCount(), 24);
    EXPECT_EQ(static_cast<uint8_t>(control.Levels()[2]), 77);
    lib.Expect(Block(LevelsWith({{3, 77}}, 24)), 0);
    control.Begin();
    EXPECT_FALSE(control.Paused());
}

TEST_F(SessionTest, WithTheSettingMissingModeIs0) {
    UDC_Control control;
    control.Initialise(nullptr, "Host", "Plugins\\zol-plugin");
    EXPECT_EQ(control.Mode(), 0);
    EXPECT_EQ(control.SettingName(), "DMXInActive");
}

TEST_F(SessionTest, ModeIsRememberedAsTheWordTrueOrFalseUnderTheHostsName) {
    {
        UDC_Control control;
        control.Initialise(nullptr, "Host", "Plugins\\zol-plugin");
        control.SetMode(1);
        EXPECT_EQ(AppSettings::GetSetting("Host", "Plugins\\zol-plugin", "DMXInActive"), "True");
    }
    UDC_Control again;
    again.Initialise(nullptr, "Host", "Plugins\\zol-plugin");
    EXPECT_EQ(again.Mode(), 1);
    again.SetMode(0);
    EXPECT_EQ(AppSettings::GetSetting("Host", "Plugins\\zol-plugin", "DMXInActive"), "False");
    // Another host keeps its own mode.
    UDC_Control other;
    other.Initialise(nullptr, "Other Host", "Plugins\\zol-plugin");
    EXPECT_EQ(other.Mode(), 0);
}

TEST_F(SessionTest, ASecondFinishSendsNothing) {
    UDC_Control control;
    Start(control);
    lib.Expect(H("23"), 0);
    control.Finish();
    EXPECT_FALSE(control.Active());
    const size_t before = lib.calls.size();
    control.Finish();
    EXPECT_EQ(lib.calls.size(), before);
}

TEST_F(SessionTest, FinishOfASuspendedSessionSendsNoSecondStop) {
    UDC_Control control;
    Start(control);
    lib.Expect(H("23"), 0);
    control.Pause();
    const size_t before = lib.calls.size();
    control.Pause(); // already suspended: nothing
    control.Finish();
    EXPECT_EQ(lib.calls.size(), before);
    EXPECT_FALSE(control.Active());
    EXPECT_FALSE(control.Paused());
}

TEST_F(SessionTest, BeginInARunningSessionSendsTheBlockAgainAndTheBufferSurvivesFinish) {
    UDC_Control control;
    Start(control);
    lib.Expect(H("25 02 00 09"), 0);
    control.Update(2, 9);
    lib.Expect(Block(LevelsWith({{2, 9}}, 24)), 0);
    control.Begin();
    lib.Expect(H("23"), 0);
    control.Finish();
    lib.Expect(Block(LevelsWith({{2, 9}}, 24)), 0);
    control.Begin();
    EXPECT_TRUE(control.Active());
}

TEST_F(SessionTest, PauseInIdleDoesNothing) {
    UDC_Control control;
    control.Initialise(nullptr, "Host", "Plugins\\zol-plugin");
    control.Pause();
    EXPECT_FALSE(control.Paused());
    EXPECT_TRUE(lib.calls.empty());
}

TEST_F(SessionTest, AFailedBeginIsShownRaisedAndLeavesTheSessionNotRunning) {
    UDC_Control control;
    control.Initialise(nullptr, "Host", "Plugins\\zol-plugin");
    lib.Expect(Block(std::string(24, '\0')), -2);
    ui.Expect("Local device has been disconnected", vb::OK,
              std::string("KARN DMX-ZOL MK1 Plugin - Start Function"));
    EXPECT_EQ(CodeOf([&] { control.Begin(); }), err::ErrAPI_DeviceMissig);
    EXPECT_FALSE(control.Active());
}

TEST_F(SessionTest, AFailedBlockInUpdateKeepsTheLevelAndDoesNotAdvanceSlotCount) {
    UDC_Control control;
    Start(control);
    lib.Expect(Block(std::string(24, '\0')), -2);
    EXPECT_EQ(CodeOf([&] { control.Update(30, 7); }), err::ErrAPI_DeviceMissig);
    EXPECT_EQ(control.SlotCount(), 24);
    EXPECT_EQ(static_cast<uint8_t>(control.Levels()[29]), 7);
    EXPECT_TRUE(control.Active());
    EXPECT_TRUE(ui.boxes.empty());
}

TEST_F(SessionTest, ReadyOnAFreshObjectWithPortUsedMatchingTheSecondPortSelectsPort2WithoutOpeningAnything) {
    AUF_Registry::WriteValue("PortUsed", std::string("ZOL USB 2"));
    FDF_Port port;
    EXPECT_TRUE(port.Ready());
    EXPECT_EQ(port.Index(), 2);
    EXPECT_TRUE(port.Stored());
    EXPECT_FALSE(port.InUse());
    EXPECT_EQ(port.PortName(), ""); // not read by the search
    EXPECT_EQ(Count("OpenPort"), 0u);
    EXPECT_TRUE(lib.Commands().empty());
}

TEST_F(SessionTest, WithPortUsedNotMatchingReadyStaysFalseAndEnableShowsThePanel) {
    AUF_Registry::WriteValue("PortUsed", std::string("Gone"));
    int panelShown = 0;
    RegisterMainPanel(zoo, [&](UDC_Control&) { ++panelShown; });
    {
        FDF_Port port;
        EXPECT_FALSE(port.Ready());
        EXPECT_EQ(port.Index(), 0);
    }
    UDC_Interface iface;
    iface.Init("Host", "zol-plugin", nullptr);
    EXPECT_TRUE(iface.Enable());
    EXPECT_EQ(panelShown, 1);
    EXPECT_FALSE(iface.Control()->Active());
    EXPECT_EQ(Count("OpenPort"), 0u);
}

TEST_F(SessionTest, IndexSetToThePresentValueKeepsStored) {
    AUF_Registry::WriteValue("PortUsed", std::string("ZOL USB 2"));
    FDF_Port port;
    ASSERT_TRUE(port.FindLast());
    port.SetIndex(2);
    EXPECT_TRUE(port.Stored());
    EXPECT_EQ(Count("PortName"), 2u); // the search only
    port.SetIndex(0);
    EXPECT_EQ(port.Index(), 2);
    EXPECT_TRUE(port.Stored());
}

TEST_F(SessionTest, IndexSetToAnotherPortReadsItsNameAndClearsStored) {
    AUF_Registry::WriteValue("PortUsed", std::string("ZOL USB 2"));
    FDF_Port port;
    ASSERT_TRUE(port.FindLast());
    port.SetIndex(1);
    EXPECT_EQ(port.Index(), 1);
    EXPECT_EQ(port.PortName(), "ZOL USB 1");
    EXPECT_FALSE(port.Stored());
    EXPECT_TRUE(port.Ready());
}

TEST_F(SessionTest, IndexSetWhileInUseRaisesTheLocalErrorAndChangesNothing) {
    FDF_Port port;
    SeizeRemembered(port);
    ui.Expect("The elected conection may not be change while active", vb::OK,
              std::string("FDF_Port.Index (Let)"));
    EXPECT_NO_THROW(port.SetIndex(1));
    EXPECT_EQ(port.Index(), 2);
    EXPECT_TRUE(port.InUse());
    EXPECT_TRUE(port.Stored());
}

TEST_F(SessionTest, ADerogationCodeOfFiveOrSevenCharactersIsIgnoredWithNoQuestion) {
    for (const std::string code : {"12345", "1234567"}) {
        AUF_Registry::WriteValue("DerogationCode", code);
        FDF_Port port;
        SeizeRemembered(port);
        EXPECT_TRUE(ui.boxes.empty());
        port.Release();
    }
    for (const auto& request : lib.Commands()) {
        EXPECT_NE(static_cast<uint8_t>(request[0]), 0x48);
    }
}

TEST_F(SessionTest, ANonHexadecimalDerogationCodeOfSixCharactersStopsWithTheHexStringMessage) {
    AUF_Registry::WriteValue("DerogationCode", std::string("12345G"));
    AUF_Registry::WriteValue("PortUsed", std::string("ZOL USB 2"));
    FDF_Port port;
    ASSERT_TRUE(port.Ready());
    ExpectProbe(lib);
    ui.AnswerWith([](const ShownBox& box) {
        EXPECT_EQ(box.prompt, "Hex String 12345G");
        EXPECT_EQ(box.title.value_or(""), "Unexpected Error");
        EXPECT_EQ(box.Icon(), vb::Critical);
        return vb::OK;
    });
    EXPECT_THROW(port.Seize(), HaltSignal);
    EXPECT_EQ(ui.halts, 1);
    EXPECT_FALSE(port.InUse());
}

TEST_F(SessionTest, ADerogationAnsweredYesIsAppliedAsStored) {
    AUF_Registry::WriteValue("DerogationCode", std::string("0A1b2C"));
    FDF_Port port;
    AUF_Registry::WriteValue("PortUsed", std::string("ZOL USB 2"));
    ASSERT_TRUE(port.Ready());
    ExpectProbe(lib);
    lib.Expect(H("48 0A 1B 2C"), 0);
    ui.AnswerWith([](const ShownBox& box) {
        EXPECT_EQ(box.prompt, "A Standard Derogation is currently active\r\nDo you want to re-aply");
        EXPECT_EQ(box.title.value_or(""), "Standard Derogation");
        EXPECT_EQ(box.Buttons(), vb::YesNoCancel);
        EXPECT_EQ(box.Icon(), vb::Question);
        return vb::Yes;
    });
    port.Seize();
    EXPECT_TRUE(port.InUse());
    EXPECT_EQ(AUF_Registry::ReadString("DerogationCode"), "0A1b2C");
}

TEST_F(SessionTest, ADerogationAnsweredNoIsOffForThisConnectionAndStaysStored) {
    AUF_Registry::WriteValue("DerogationCode", std::string("0A1B2C"));
    FDF_Port port;
    AUF_Registry::WriteValue("PortUsed", std::string("ZOL USB 2"));
    ASSERT_TRUE(port.Ready());
    ExpectProbe(lib);
    lib.Expect(H("48 0A 1B 00"), 0);
    ui.Answer(vb::No);
    port.Seize();
    EXPECT_TRUE(port.InUse());
    EXPECT_EQ(AUF_Registry::ReadString("DerogationCode"), "0A1B2C");
}

TEST_F(SessionTest, ADerogationAnsweredCancelIsOffAndTheSettingIsEmptied) {
    AUF_Registry::WriteValue("DerogationCode", std::string("0A1B2C"));
    FDF_Port port;
    AUF_Registry::WriteValue("PortUsed", std::string("ZOL USB 2"));
    ASSERT_TRUE(port.Ready());
    ExpectProbe(lib);
    lib.Expect(H("48 0A 1B 00"), 0);
    ui.Answer(vb::Cancel);
    port.Seize();
    EXPECT_TRUE(port.InUse());
    EXPECT_EQ(AUF_Registry::ReadString("DerogationCode", "none"), "none");
}

TEST_F(SessionTest, SeizeWritesPortUsedOnlyWhenThePortDiffersFromWhatFindLastFound) {
    {
        AUF_Registry::WriteValue("PortUsed", std::string("ZOL USB 2"));
        FDF_Port port;
        ASSERT_TRUE(port.FindLast());
        // A write now would replace this value.
        AUF_Registry::WriteValue("PortUsed", std::string("sentinel"));
        ExpectProbe(lib);
        port.Seize();
        EXPECT_EQ(AUF_Registry::ReadString("PortUsed"), "sentinel");
        port.Release();
    }
    FDF_Port port;
    port.SetIndex(1);
    ExpectProbe(lib);
    port.Seize();
    EXPECT_EQ(AUF_Registry::ReadString("PortUsed"), "ZOL USB 1");
    EXPECT_TRUE(port.Stored());
    port.Release();
}

TEST_F(SessionTest, SeizeWithNoPortChosenShowsTheLocalErrorAndOpensNothing) {
    lib.portNames.clear();
    FDF_Port port;
    ui.Expect("No port elected to enguage", vb::OK, std::string("FDF_Port.Seize"));
    EXPECT_NO_THROW(port.Seize());
    EXPECT_FALSE(port.InUse());
    EXPECT_EQ(Count("OpenPort"), 0u);
}

TEST_F(SessionTest, AFailedOpenIsRaisedWithNoMessageAndLeavesThePortNotInUse) {
    lib.openResult = -1;
    FDF_Port port;
    port.SetIndex(1);
    EXPECT_EQ(CodeOf([&] { port.Seize(); }), err::ErrAPI_Connection);
    EXPECT_FALSE(port.InUse());
    EXPECT_TRUE(ui.boxes.empty());
}

TEST_F(SessionTest, AnotherSeizeFailureIsShownWithTheSourceAsTitleAndRaised) {
    FDF_Port port;
    port.SetIndex(1);
    lib.Expect(H("E0 00 00 01 00"), -2);
    ui.Expect("Local device has been disconnected", vb::OK, std::string("DEV_Status.ProbeFactory"));
    ui.Expect("Local device has been disconnected", vb::OK, std::string("FDF_Port.Seize"));
    EXPECT_EQ(CodeOf([&] { port.Seize(); }), err::ErrAPI_DeviceMissig);
    EXPECT_FALSE(port.InUse());
}

TEST_F(SessionTest, ReleaseClosesThePortAndAPortStillOpenClosesWithItsObject) {
    {
        FDF_Port port;
        SeizeRemembered(port);
        port.Release();
        EXPECT_FALSE(port.InUse());
        EXPECT_EQ(Count("FreePort"), 1u);
    }
    EXPECT_EQ(Count("FreePort"), 1u);
    {
        FDF_Port port;
        SeizeRemembered(port);
    }
    EXPECT_EQ(Count("FreePort"), 2u);
}

TEST_F(SessionTest, FindLastWhileInUseShowsTheLocalError) {
    FDF_Port port;
    SeizeRemembered(port);
    ui.Expect("Search method not available while port is in use", vb::OK, std::string("FDF_Port.FindLast"));
    EXPECT_FALSE(port.FindLast());
}

TEST_F(SessionTest, ItemsRebuildsTheNamesAndNoPortAtAllClearsReady) {
    FDF_Port port;
    port.SetIndex(1);
    EXPECT_EQ(port.Items(), 2);
    EXPECT_EQ(port.Item(1), "ZOL USB 1");
    EXPECT_EQ(port.Item(2), "ZOL USB 2");
    EXPECT_EQ(port.Item(3), "");
    EXPECT_EQ(port.Item(-1), "");
    lib.portNames.clear();
    EXPECT_EQ(port.Items(), 0);
    EXPECT_EQ(port.Item(1), "");
    EXPECT_FALSE(port.Ready());
}

TEST_F(SessionTest, TheSessionAndThePortAnswerTheirClassNames) {
    UDC_Control control;
    EXPECT_EQ(control.DataClass(), "UDC_Control");
    EXPECT_EQ(control.Port()->DataClass(), "FDF_Port");
    EXPECT_EQ(control.Port()->IState()->DataClass(), "DEV_Status");
    EXPECT_EQ(control.SState()->DataClass(), "SYS_Status");
    EXPECT_EQ(control.Levels(), std::string(512, '\0'));
}

} // namespace
} // namespace zol
