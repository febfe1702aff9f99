// The main panel against the simulated interface.
#include "device_link/status/DEV_Status.h"
#include "plugin/core/FDF_Port.h"
#include "services/settings/AUF_Registry.h"
#include "tests/panel/PanelTestSupport.h"

#include <QComboBox>
#include <QGroupBox>
#include <QMenu>
#include <QPushButton>
#include <QRadioButton>

namespace zol::test {
namespace {

using PanelTest = PanelFixture;

std::vector<std::string> Entries(QMenu* menu) {
    std::vector<std::string> texts;
    for (QAction* action : menu->actions()) {
        if (!action->isSeparator() && action->isVisible()) {
            texts.push_back(action->text().toStdString());
        }
    }
    return texts;
}

// The popup menu open now, closed again after its entries are read.
std::vector<std::string> OpenPopupEntries(std::string* name) {
    auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    if (menu == nullptr) {
        return {};
    }
    *name = menu->objectName().toStdString();
    auto entries = Entries(menu);
    menu->close();
    return entries;
}

void RememberPort(const std::string& name) {
    AUF_Registry::WriteValue("PortUsed", name);
}

TEST_F(PanelTest, LooksAsDrawn) {
    User_Main* panel = OpenPanel();
    EXPECT_EQ(panel->windowTitle().toStdString(), "  KARN DMX-ZOL Plugin");
    EXPECT_EQ(panel->objectName().toStdString(), "User_Main");
    EXPECT_EQ(Child<QPushButton>(panel, "Button_Manage")->text().toStdString(), "Configure RDM\nFixtures\n");
    EXPECT_EQ(Child<QGroupBox>(panel, "Frame_Mode")->title().toStdString(), "Mode");
    EXPECT_EQ(Child<QGroupBox>(panel, "Frame_Tools")->title().toStdString(), "  Tools ");
    EXPECT_EQ(Child<QRadioButton>(panel, "Option_Mode_0")->text().toStdString(), "Out");
    EXPECT_EQ(Child<QRadioButton>(panel, "Option_Mode_1")->text().toStdString(), "In");
    EXPECT_EQ(Widget(panel, "Image_Device")->toolTip().toStdString(), " Local Device ");
    EXPECT_EQ(Widget(panel, "Image_Plug_1")->toolTip().toStdString(), " Connect to Equipment  ");
    EXPECT_EQ(Widget(panel, "Image_Plug_0")->toolTip().toStdString(), "   Disconnect from Equipment  ");
    EXPECT_EQ(Widget(panel, "Image_DMX_0")->toolTip().toStdString(), "  DMX and RDM Frame Settings  ");
    EXPECT_EQ(Widget(panel, "Image_DMX_1")->toolTip().toStdString(), "  DMX and RDM Frame Settings  ");
    EXPECT_EQ(Child<QLabel>(panel, "Label_WebLink")->text().toStdString(), "KARN Web Site");
    EXPECT_EQ(Entries(Child<QMenu>(panel, "Menu_File")), std::vector<std::string>({"&Load", "&Exit"}));
    EXPECT_EQ(Entries(Child<QMenu>(panel, "Menu_Connection")),
              std::vector<std::string>({"&Settings", "&Connect", "&Disconnect"}));
    EXPECT_EQ(Entries(Child<QMenu>(panel, "Menu_Tools")),
              std::vector<std::string>({"&Device Info", "&Remote Manager"}));
    EXPECT_EQ(Entries(Child<QMenu>(panel, "Menu_Help")),
              std::vector<std::string>({"&Contents", "&About ", "&Updates"}));
    EXPECT_EQ(Entries(Child<QMenu>(panel, "PopUp_ShortCut")),
              std::vector<std::string>(
                  {"Identify", "All Settings", "DMX Settings", "DMX Control", "Sensors", "Clock"}));
    EXPECT_EQ(Entries(Child<QMenu>(panel, "PopupMenu_PC1")),
              std::vector<std::string>({"&Control Desk", "&Channel Monitor"}));
    EXPECT_EQ(Entries(Child<QMenu>(panel, "PopupMenu_RDM")), std::vector<std::string>({"&Discover"}));
    auto* cycle = Child<QTimer>(panel, "CycleTime");
    EXPECT_EQ(cycle->interval(), 250);
    EXPECT_FALSE(cycle->isActive());
    EXPECT_EQ(Child<QTimer>(panel, "ReDiscover")->interval(), 1);
    EXPECT_FALSE(Child<QTimer>(panel, "Thread_ShortCut")->isActive());
}

TEST_F(PanelTest, DisconnectedStateOfMenusAndPictures) {
    User_Main* panel = OpenPanel();
    EXPECT_EQ(Status(panel), "Disconnected");
    EXPECT_FALSE(Action(panel, "Menu_File_Open")->isEnabled());
    EXPECT_FALSE(Action(panel, "Menu_Tools_DeviceInfo")->isEnabled());
    EXPECT_FALSE(Action(panel, "Menu_Tools_RDM")->isEnabled());
    EXPECT_FALSE(Action(panel, "Menu_Connect_Off")->isEnabled());
    EXPECT_TRUE(Action(panel, "Menu_Connection_Settings")->isEnabled());
    EXPECT_TRUE(Action(panel, "Menu_Connect_On")->isEnabled());
    EXPECT_FALSE(Widget(panel, "Button_Manage")->isEnabled());
    EXPECT_FALSE(Widget(panel, "Image_Plug_0")->isVisible());
    EXPECT_TRUE(Widget(panel, "Image_Plug_1")->isVisible());
    EXPECT_TRUE(Widget(panel, "Image_DMX_0")->isVisible());
    EXPECT_FALSE(Widget(panel, "Image_DMX_1")->isVisible());
    EXPECT_TRUE(Child<QRadioButton>(panel, "Option_Mode_0")->isChecked());
}

// Port 2 runs firmware 0.3.8 of model 1; the newest known for that model is the same.
void NoNewerFirmwareForPort2() {
    AUF_Registry::WriteValue("ModelFirmware-1", std::string("0.3.8"));
}

TEST_F(PanelTest, RememberedPortConnectsAtOnce) {
    RememberPort("ZOL USB 2");
    NoNewerFirmwareForPort2();
    User_Main* panel = OpenPanel();
    Click(panel, "Image_Plug_1");
    EXPECT_TRUE(control->Port()->InUse());
    EXPECT_EQ(control->Port()->Index(), 2);
    EXPECT_EQ(Status(panel), "Connected");
    EXPECT_TRUE(Widget(panel, "Image_Plug_0")->isVisible());
    EXPECT_FALSE(Widget(panel, "Image_Plug_1")->isVisible());
    EXPECT_TRUE(Widget(panel, "Image_Plug_1")->isEnabled());
    EXPECT_TRUE(Widget(panel, "Image_DMX_1")->isVisible());
    EXPECT_FALSE(Widget(panel, "Image_DMX_0")->isVisible());
    EXPECT_TRUE(Widget(panel, "Button_Manage")->isEnabled());
    EXPECT_TRUE(Action(panel, "Menu_File_Open")->isEnabled());
    EXPECT_TRUE(Action(panel, "Menu_Tools_DeviceInfo")->isEnabled());
    EXPECT_TRUE(Action(panel, "Menu_Tools_RDM")->isEnabled());
    EXPECT_TRUE(Action(panel, "Menu_Connect_Off")->isEnabled());
    EXPECT_FALSE(Action(panel, "Menu_Connection_Settings")->isEnabled());
    EXPECT_FALSE(Action(panel, "Menu_Connect_On")->isEnabled());
    EXPECT_NE(Sim("port 2 state").find("open"), std::string::npos) << Sim("port 2 state");
}

TEST_F(PanelTest, DisconnectClosesThePort) {
    RememberPort("ZOL USB 1");
    User_Main* panel = OpenPanel();
    Click(panel, "Image_Plug_1");
    ASSERT_TRUE(control->Port()->InUse());
    Click(panel, "Image_Plug_0");
    EXPECT_FALSE(control->Port()->InUse());
    EXPECT_EQ(Status(panel), "Disconnected");
    EXPECT_TRUE(Widget(panel, "Image_Plug_1")->isVisible());
    EXPECT_TRUE(Widget(panel, "Image_Plug_0")->isEnabled());
}

TEST_F(PanelTest, MenuConnectAndDisconnectActAsThePlug) {
    RememberPort("ZOL USB 1");
    User_Main* panel = OpenPanel();
    Action(panel, "Menu_Connect_On")->trigger();
    EXPECT_EQ(Status(panel), "Connected");
    Action(panel, "Menu_Connect_Off")->trigger();
    EXPECT_EQ(Status(panel), "Disconnected");
}

TEST_F(PanelTest, ModeSwitchWritesTheSetting) {
    User_Main* panel = OpenPanel();
    QTest::mouseClick(Child<QRadioButton>(panel, "Option_Mode_1"), Qt::LeftButton);
    EXPECT_EQ(control->Mode(), 1);
    EXPECT_EQ(AppSettings::GetSetting("TestHost", "Plugins\\zol-plugin", "DMXInActive"), "True");
    QTest::mouseClick(Child<QRadioButton>(panel, "Option_Mode_0"), Qt::LeftButton);
    EXPECT_EQ(control->Mode(), 0);
    EXPECT_EQ(AppSettings::GetSetting("TestHost", "Plugins\\zol-plugin", "DMXInActive"), "False");
}

TEST_F(PanelTest, ModeOptionShowsTheSessionMode) {
    AppSettings::SaveSetting("TestHost", "Plugins\\zol-plugin", "DMXInActive", "True");
    control->Initialise(nullptr, "TestHost", "Plugins\\zol-plugin");
    User_Main* panel = OpenPanel();
    EXPECT_TRUE(Child<QRadioButton>(panel, "Option_Mode_1")->isChecked());
}

TEST_F(PanelTest, NoRememberedPortUserPicksInConfigPortAndConnects) {
    User_Main* panel = OpenPanel();
    bool sawConfigPort = false;
    WhenShown("Config_Port", [&](QWidget* view) {
        sawConfigPort = true;
        auto* combo = Child<QComboBox>(view, "Combo_SelectPort");
        EXPECT_EQ(combo->count(), 2);
        EXPECT_EQ(combo->itemText(0).toStdString(), "ZOL USB 1");
        EXPECT_FALSE(Widget(view, "Image_Plug_1")->isEnabled());
        combo->setCurrentIndex(0);
        EXPECT_TRUE(Widget(view, "Image_Plug_1")->isEnabled());
        QTest::mouseClick(Widget(view, "Image_Plug_1"), Qt::LeftButton);
        EXPECT_TRUE(control->Port()->InUse());
        // The panel behind has followed already.
        EXPECT_EQ(Status(panel), "Connected");
        EXPECT_TRUE(Widget(view, "Image_Plug_0")->isVisible());
        EXPECT_FALSE(combo->isEnabled());
        QTest::mouseClick(Widget(view, "Image_Exit"), Qt::LeftButton);
    });
    Click(panel, "Image_Plug_1");
    EXPECT_TRUE(sawConfigPort);
    EXPECT_EQ(Status(panel), "Connected");
    EXPECT_TRUE(Widget(panel, "Image_Plug_1")->isEnabled());
    EXPECT_EQ(AUF_Registry::ReadString("PortUsed"), "ZOL USB 1");
}

TEST_F(PanelTest, ConfigPortClosedWithoutChoiceLeavesDisconnected) {
    User_Main* panel = OpenPanel();
    WhenShown("Config_Port",
              [&](QWidget* view) { QTest::mouseClick(Widget(view, "Image_Exit"), Qt::LeftButton); });
    Click(panel, "Image_Plug_1");
    EXPECT_FALSE(control->Port()->InUse());
    EXPECT_EQ(Status(panel), "Disconnected");
    EXPECT_TRUE(Widget(panel, "Image_Plug_1")->isVisible());
    EXPECT_TRUE(Widget(panel, "Image_Plug_1")->isEnabled());
}

TEST_F(PanelTest, UnpluggedDeviceAtConnectLeavesDisconnectedAndThePlugUsable) {
    RememberPort("ZOL USB 1");
    Sim("port 1 unplug");
    User_Main* panel = OpenPanel();
    // Opening an interface that is not there is a connection failure: one box, and the panel
    // repaints itself as disconnected.
    ui.Expect(
        std::string("Problem with connection to Equipment\r\nIf problem persists then check USB cables"),
        vb::OK, std::string("Local Device Connection"));
    Click(panel, "Image_Plug_1");
    EXPECT_FALSE(control->Port()->InUse());
    EXPECT_EQ(Status(panel), "Disconnected");
    EXPECT_TRUE(Widget(panel, "Image_Plug_1")->isVisible());
    EXPECT_TRUE(Widget(panel, "Image_Plug_1")->isEnabled());
    EXPECT_TRUE(Action(panel, "Menu_Connect_On")->isEnabled());
    // With the device back the plug connects.
    Sim("port 1 replug");
    Click(panel, "Image_Plug_1");
    EXPECT_TRUE(control->Port()->InUse());
    EXPECT_EQ(Status(panel), "Connected");
}

TEST_F(PanelTest, DeviceLostAtConnectIsReportedTwiceAndLeavesThePortClosed) {
    RememberPort("ZOL USB 1");
    User_Main* panel = OpenPanel();
    // The library reports the device gone just as the port is opened.
    Sim("fail open -2");
    ui.Expect("Local device has been disconnected", vb::OK, std::string("FDF_Port.Seize"));
    ui.Expect("Local device has been disconnected", vb::OK, std::string("User_Main.Image_Plug_Click"));
    Click(panel, "Image_Plug_1");
    EXPECT_FALSE(control->Port()->InUse());
    EXPECT_TRUE(Action(panel, "Menu_Connect_On")->isEnabled());
}

TEST_F(PanelTest, RightClickPopupsByState) {
    RememberPort("ZOL USB 1");
    User_Main* panel = OpenPanel();
    std::string name;
    Click(panel, "Image_Device", Qt::RightButton);
    EXPECT_EQ(OpenPopupEntries(&name), std::vector<std::string>({"&Connection"}));
    EXPECT_EQ(name, "PopupMenu_PC0");
    Click(panel, "Image_Plug_1");
    ASSERT_EQ(Status(panel), "Connected");
    Click(panel, "Image_Device", Qt::RightButton);
    EXPECT_EQ(OpenPopupEntries(&name), std::vector<std::string>({"&Device Info", "&Reprogram"}));
    EXPECT_EQ(name, "PopupMenu_ZOL");
}

TEST_F(PanelTest, LeftClickOnDeviceWhileConnectedOpensDeviceInfo) {
    RememberPort("ZOL USB 1");
    User_Main* panel = OpenPanel();
    // Not connected: the left button does nothing.
    Click(panel, "Image_Device");
    EXPECT_EQ(Forms::Find("System_Info"), nullptr);
    EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
    Click(panel, "Image_Plug_1");
    bool opened = false;
    WhenShown("System_Info", [&](QWidget* view) {
        opened = true;
        dynamic_cast<View*>(view)->Unload();
    });
    Click(panel, "Image_Device");
    EXPECT_TRUE(opened);
}

TEST_F(PanelTest, PopupEntriesOpenTheirViews) {
    User_Main* panel = OpenPanel();
    bool opened = false;
    WhenShown("Config_Port", [&](QWidget* view) {
        opened = true;
        dynamic_cast<View*>(view)->Unload();
    });
    Action(panel, "PopUp_Connection")->trigger();
    EXPECT_TRUE(opened);
}

TEST_F(PanelTest, FrameSettingsOpenOnlyWhenConnected) {
    RememberPort("ZOL USB 1");
    User_Main* panel = OpenPanel();
    Click(panel, "Image_DMX_0");
    EXPECT_EQ(Forms::Find("Config_Frame"), nullptr);
    Click(panel, "Image_Plug_1");
    bool opened = false;
    WhenShown("Config_Frame", [&](QWidget* view) {
        opened = true;
        dynamic_cast<View*>(view)->Unload();
    });
    Click(panel, "Image_DMX_1");
    EXPECT_TRUE(opened);
}

TEST_F(PanelTest, ManageOpensDeviceSelectWhichFailsAsAnUnknownView) {
    RememberPort("ZOL USB 1");
    User_Main* panel = OpenPanel();
    Click(panel, "Image_Plug_1");
    ui.Expect("Form Device_Select not registered", vb::OK, std::string("User_Main.PopUp_Discover_Click"));
    QTest::mouseClick(Child<QPushButton>(panel, "Button_Manage"), Qt::LeftButton);
    ui.Expect("Form Device_Select not registered", vb::OK, std::string("User_Main.PopUp_Discover_Click"));
    Action(panel, "Menu_Tools_RDM")->trigger();
    EXPECT_TRUE(panel->isVisible());
    EXPECT_TRUE(control->Port()->InUse());
}

TEST_F(PanelTest, HelpEntriesOpenAboutAndUpdates) {
    User_Main* panel = OpenPanel();
    bool about = false;
    WhenShown("Help_About", [&](QWidget* view) {
        about = true;
        dynamic_cast<View*>(view)->Unload();
    });
    Action(panel, "Menu_Help_About")->trigger();
    EXPECT_TRUE(about);
    // Contents does nothing.
    Action(panel, "Menu_HelpContent")->trigger();
    EXPECT_EQ(Forms::All().size(), 1u);
}

TEST_F(PanelTest, WebLinkOpensTheProductPage) {
    setenv("ZOL_WEB_BASE", "http://panel.test", 1);
    User_Main* panel = OpenPanel();
    QTest::mouseClick(Child<QLabel>(panel, "Label_WebLink"), Qt::LeftButton);
    unsetenv("ZOL_WEB_BASE");
    EXPECT_EQ(ui.urls, std::vector<std::string>({"http://panel.test/product/"}));
}

TEST_F(PanelTest, PluginUpdateQuestionYesOpensSupportPage) {
    setenv("ZOL_WEB_BASE", "http://panel.test", 1);
    AUF_Registry::WriteValue("Latest_Software", std::string("99.0.0"));
    ui.Expect(
        std::string("A more recent version of this Plugin is available.\r\nDo you want to download it now"),
        vb::Yes, std::string("DMXControl Plugin Upgrade"));
    OpenPanel();
    unsetenv("ZOL_WEB_BASE");
    ASSERT_EQ(ui.boxes.size(), 1u);
    EXPECT_EQ(ui.boxes[0].Buttons(), vb::YesNo);
    EXPECT_EQ(ui.urls, std::vector<std::string>({"http://panel.test/support"}));
}

TEST_F(PanelTest, PluginUpdateQuestionNoHushesForTheRun) {
    AUF_Registry::WriteValue("Latest_Software", std::string("99.0.0"));
    ui.Expect(
        std::string("A more recent version of this Plugin is available.\r\nDo you want to download it now"),
        vb::No, std::string("DMXControl Plugin Upgrade"));
    OpenPanel();
    EXPECT_TRUE(ui.urls.empty());
    Forms::UnloadAll();
    // Opened again in the same run: no question.
    OpenPanel();
    EXPECT_EQ(ui.boxes.size(), 1u);
}

TEST_F(PanelTest, FirmwareUpdateQuestionAfterConnect) {
    RememberPort("ZOL USB 1");
    AUF_Registry::WriteValue("ModelFirmware-2", std::string("9.9.9"));
    User_Main* panel = OpenPanel();
    ui.Expect(std::string("A more recent version of the firmware is available for your interface.\r\n"
                          "Do you want to download it now"),
              vb::No, std::string("Firmware Upgrade"));
    Click(panel, "Image_Plug_1");
    EXPECT_EQ(Status(panel), "Connected");
    EXPECT_FALSE(control->Port()->IState()->Updates());
}

TEST_F(PanelTest, ShortCutPopupStoresChoiceAndStartsTimerOnly) {
    User_Main* panel = OpenPanel();
    Action(panel, "PopUp_ShortCut_Menu_3")->trigger();
    auto* timer = Child<QTimer>(panel, "Thread_ShortCut");
    EXPECT_TRUE(timer->isActive());
    EXPECT_EQ(timer->property("Tag").toInt(), 3);
    PumpFor(20);
    EXPECT_EQ(Forms::All().size(), 1u);
    EXPECT_TRUE(ui.boxes.empty());
}

TEST_F(PanelTest, EntriesWithoutWorkDoNothing) {
    User_Main* panel = OpenPanel();
    for (const char* name : {"PopUp_Discover", "PopUp_CtrlDesk", "PopUp_ChlMonitor", "Menu_HelpContent"}) {
        Action(panel, name)->trigger();
    }
    EXPECT_EQ(Forms::All().size(), 1u);
    EXPECT_TRUE(ui.boxes.empty());
}

TEST_F(PanelTest, FileExitClosesThePanel) {
    User_Main* panel = OpenPanel();
    Action(panel, "Menu_File_Exit")->trigger();
    EXPECT_EQ(Forms::Find("User_Main"), nullptr);
    EXPECT_FALSE(control->Port()->InUse());
}

TEST_F(PanelTest, FileLoadRunsFirmwareSelection) {
    RememberPort("ZOL USB 1");
    User_Main* panel = OpenPanel();
    Click(panel, "Image_Plug_1");
    ui.QueueFileDialog({false, "", {}});
    Action(panel, "Menu_File_Open")->trigger();
    ASSERT_EQ(ui.fileRequests.size(), 1u);
    EXPECT_EQ(ui.fileRequests[0].caption, "Firmware Program File");
    EXPECT_TRUE(control->Port()->InUse());
}

TEST_F(PanelTest, WrongDataClassIsRefused) {
    auto port = std::make_shared<FDF_Port>();
    ui.Expect("Class Object \"FDF_Port\" not handled", vb::OK, std::string("User_Main.Control (Set)"));
    root->OpenForm(User_Main::kName, false, port);
    auto* panel = dynamic_cast<User_Main*>(Forms::Find(User_Main::kName));
    ASSERT_NE(panel, nullptr);
    EXPECT_EQ(panel->Control(), nullptr);
}

// ---- The device popup, connecting without a remembered port, a failed connect ----

TEST_F(PanelTest, RightClickOnDeviceWhileDisconnectedShowsOnlyConnection) {
    User_Main* panel = OpenPanel();
    std::string name;
    Click(panel, "Image_Device", Qt::RightButton);
    EXPECT_EQ(OpenPopupEntries(&name), std::vector<std::string>({"&Connection"}));
}

TEST_F(PanelTest, WithNoRememberedPortThePlugOpensConfigPortAndThePanelShowsItsResult) {
    NoNewerFirmwareForPort2();
    User_Main* panel = OpenPanel();
    bool opened = false;
    WhenShown("Config_Port", [&](QWidget* view) {
        opened = true;
        Child<QComboBox>(view, "Combo_SelectPort")->setCurrentIndex(1);
        QTest::mouseClick(Widget(view, "Image_Plug_1"), Qt::LeftButton);
        QTest::mouseClick(Widget(view, "Image_Exit"), Qt::LeftButton);
    });
    Click(panel, "Image_Plug_1");
    EXPECT_TRUE(opened);
    EXPECT_EQ(control->Port()->Index(), 2);
    EXPECT_EQ(Status(panel), "Connected");
    EXPECT_TRUE(Widget(panel, "Image_Plug_0")->isVisible());
}

TEST_F(PanelTest, SeizeFailingWithAConnectionErrorLeavesDisconnectedAndThePlugUsable) {
    RememberPort("ZOL USB 1");
    User_Main* panel = OpenPanel();
    Sim("fail open -1");
    ui.Expect(
        std::string("Problem with connection to Equipment\r\nIf problem persists then check USB cables"),
        vb::OK, std::string("Local Device Connection"));
    Click(panel, "Image_Plug_1");
    EXPECT_FALSE(control->Port()->InUse());
    EXPECT_EQ(Status(panel), "Disconnected");
    EXPECT_FALSE(Widget(panel, "Image_Plug_0")->isVisible());
    EXPECT_TRUE(Widget(panel, "Image_Plug_1")->isVisible());
    EXPECT_TRUE(Widget(panel, "Image_Plug_1")->isEnabled());
    // The plug works on the next click.
    Click(panel, "Image_Plug_1");
    EXPECT_EQ(Status(panel), "Connected");
}

TEST_F(PanelTest, AFailureDuringTheConnectProbeLeavesThePortReleasedAndThePanelDisconnectedAndUsable) {
    RememberPort("ZOL USB 1");
    User_Main* panel = OpenPanel();
    Sim("fail command -3 50");
    // The boxes of the probe, of the port and of the panel stay as they were.
    ui.Expect("Local device is not responding", vb::OK, std::string("DEV_Status.ProbeFactory"));
    ui.Expect("Local device is not responding", vb::OK, std::string("FDF_Port.Seize"));
    ui.Expect("Local device is not responding", vb::OK, std::string("User_Main.Image_Plug_Click"));
    Click(panel, "Image_Plug_1");
    EXPECT_FALSE(control->Port()->InUse());
    EXPECT_NE(Sim("state").find("open=no"), std::string::npos) << Sim("state");
    EXPECT_EQ(Status(panel), "Disconnected");
    EXPECT_TRUE(Widget(panel, "Image_Plug_1")->isVisible());
    EXPECT_TRUE(Widget(panel, "Image_Plug_1")->isEnabled());
    // The device answers again: the next connect works.
    Sim("fail clear");
    Click(panel, "Image_Plug_1");
    EXPECT_TRUE(control->Port()->InUse());
    EXPECT_EQ(Status(panel), "Connected");
}

TEST_F(PanelTest, ADeviceLostDuringTheConnectProbeLeavesThePortReleasedAndThePanelDisconnected) {
    RememberPort("ZOL USB 1");
    User_Main* panel = OpenPanel();
    Sim("fail command -2 50");
    ui.Expect("Local device has been disconnected", vb::OK, std::string("DEV_Status.ProbeFactory"));
    ui.Expect("Local device has been disconnected", vb::OK, std::string("FDF_Port.Seize"));
    ui.Expect("Local device has been disconnected", vb::OK, std::string("User_Main.Image_Plug_Click"));
    Click(panel, "Image_Plug_1");
    EXPECT_FALSE(control->Port()->InUse());
    EXPECT_NE(Sim("state").find("open=no"), std::string::npos) << Sim("state");
    EXPECT_EQ(Status(panel), "Disconnected");
    EXPECT_TRUE(Widget(panel, "Image_Plug_1")->isEnabled());
    Sim("fail clear");
    Click(panel, "Image_Plug_1");
    EXPECT_EQ(Status(panel), "Connected");
}

} // namespace
} // namespace zol::test
