// The connection view, opened from the main panel as the product opens it.
#include "device_link/port_view/FDF_Class.h"
#include "plugin/core/FDF_Port.h"
#include "services/settings/AUF_Registry.h"
#include "tests/panel/PanelTestSupport.h"
#include "tests/support/ScriptedDeviceLibrary.h"

#include <QComboBox>

namespace zol::test {
namespace {

using ConfigPortTest = PanelFixture;

// Opens Config_Port through the panel's Connection / Settings entry and runs `look` inside it;
// the view is closed with its exit picture afterwards.
void InConfigPort(QWidget* panel, const std::function<void(QWidget*)>& look) {
    bool opened = false;
    WhenShown("Config_Port", [&](QWidget* view) {
        opened = true;
        look(view);
        if (Forms::Find("Config_Port") != nullptr) {
            QTest::mouseClick(view->findChild<QWidget*>("Image_Exit"), Qt::LeftButton);
        }
    });
    panel->findChild<QAction*>("Menu_Connection_Settings")->trigger();
    EXPECT_TRUE(opened);
}

TEST_F(ConfigPortTest, LooksAsDrawn) {
    User_Main* panel = OpenPanel();
    InConfigPort(panel, [&](QWidget* view) {
        EXPECT_EQ(view->windowTitle().toStdString(), "Connection Settings");
        auto* type = Child<QComboBox>(view, "Combo_SelectType");
        EXPECT_EQ(type->count(), 1);
        EXPECT_EQ(type->currentText().toStdString(), "USB Port");
        EXPECT_FALSE(type->isEnabled());
        auto* ports = Child<QComboBox>(view, "Combo_SelectPort");
        EXPECT_EQ(ports->count(), 2);
        EXPECT_EQ(ports->itemData(1).toInt(), 2);
        EXPECT_EQ(ports->itemText(1).toStdString(), "ZOL USB 2");
        EXPECT_TRUE(ports->isEnabled());
        EXPECT_EQ(ports->currentIndex(), -1);
    });
}

TEST_F(ConfigPortTest, RememberedPortIsPreselected) {
    AUF_Registry::WriteValue("PortUsed", std::string("ZOL USB 2"));
    User_Main* panel = OpenPanel();
    InConfigPort(panel, [&](QWidget* view) {
        EXPECT_EQ(Child<QComboBox>(view, "Combo_SelectPort")->currentIndex(), 1);
        EXPECT_TRUE(Widget(view, "Image_Plug_1")->isVisible());
        EXPECT_TRUE(Widget(view, "Image_Plug_1")->isEnabled());
        EXPECT_FALSE(Widget(view, "Image_Plug_0")->isVisible());
    });
}

TEST_F(ConfigPortTest, ChoosingAPortEnablesThePlug) {
    User_Main* panel = OpenPanel();
    InConfigPort(panel, [&](QWidget* view) {
        EXPECT_FALSE(Widget(view, "Image_Plug_1")->isEnabled());
        Child<QComboBox>(view, "Combo_SelectPort")->setCurrentIndex(1);
        EXPECT_EQ(control->Port()->Index(), 2);
        EXPECT_TRUE(Widget(view, "Image_Plug_1")->isEnabled());
    });
    EXPECT_FALSE(control->Port()->InUse());
}

TEST_F(ConfigPortTest, ConnectAndDisconnectThroughThePanel) {
    AUF_Registry::WriteValue("PortUsed", std::string("ZOL USB 1"));
    User_Main* panel = OpenPanel();
    InConfigPort(panel, [&](QWidget* view) {
        QTest::mouseClick(Widget(view, "Image_Plug_1"), Qt::LeftButton);
        EXPECT_TRUE(control->Port()->InUse());
        EXPECT_EQ(Status(panel), "Connected");
        EXPECT_TRUE(Widget(view, "Image_Plug_0")->isVisible());
        EXPECT_FALSE(Widget(view, "Image_Plug_1")->isVisible());
        QTest::mouseClick(Widget(view, "Image_Plug_0"), Qt::LeftButton);
        EXPECT_FALSE(control->Port()->InUse());
        EXPECT_EQ(Status(panel), "Disconnected");
        EXPECT_TRUE(Widget(view, "Image_Plug_1")->isVisible());
        EXPECT_TRUE(Child<QComboBox>(view, "Combo_SelectPort")->isEnabled());
    });
}

TEST_F(ConfigPortTest, ExitClosesTheView) {
    User_Main* panel = OpenPanel();
    InConfigPort(panel, [&](QWidget*) {});
    EXPECT_EQ(Forms::Find("Config_Port"), nullptr);
    EXPECT_NE(Forms::Find("User_Main"), nullptr);
}

TEST_F(ConfigPortTest, WrongDataClassIsRefused) {
    ui.Expect("Class Object \"UDC_Control\" not handled", vb::OK, std::string("Config_Port.Control (Set)"));
    root->OpenForm("Config_Port", false, control);
    EXPECT_EQ(ui.boxes.size(), 1u);
}

TEST_F(ConfigPortTest, OpenerWithoutConnectActionsIsATypeMismatch) {
    ui.Expect("Type mismatch", vb::OK, std::string("Config_Port.Control (Set)"));
    try {
        root->OpenForm("Config_Port", false, control->Port());
        ADD_FAILURE() << "no error";
    } catch (const ZolError& e) {
        EXPECT_EQ(e.Code(), rt::TypeMismatch);
    }
    EXPECT_EQ(Forms::Find("Config_Port"), nullptr);
}

TEST_F(ConfigPortTest, ConnectionErrorInsideIsShownByThePanel) {
    AUF_Registry::WriteValue("PortUsed", std::string("ZOL USB 1"));
    User_Main* panel = OpenPanel();
    Sim("fail open -1");
    ui.Expect(
        std::string("Problem with connection to Equipment\r\nIf problem persists then check USB cables"),
        vb::OK, std::string("Local Device Connection"));
    InConfigPort(panel, [&](QWidget* view) {
        QTest::mouseClick(Widget(view, "Image_Plug_1"), Qt::LeftButton);
        EXPECT_FALSE(control->Port()->InUse());
        EXPECT_TRUE(Widget(view, "Image_Plug_1")->isVisible());
        EXPECT_TRUE(Widget(view, "Image_Plug_1")->isEnabled());
    });
    EXPECT_EQ(Status(panel), "Disconnected");
}

// ---- No port, a port in use, a port gone ----

TEST_F(ConfigPortTest, WithNoPortAtAllTheListIsEmptyAndThePlugShownButDisabled) {
    ScriptedDeviceLibrary lib;
    lib.portNames.clear();
    User_Main* panel = OpenPanel();
    InConfigPort(panel, [&](QWidget* view) {
        EXPECT_EQ(Child<QComboBox>(view, "Combo_SelectPort")->count(), 0);
        EXPECT_FALSE(Widget(view, "Image_Plug_0")->isVisible());
        EXPECT_TRUE(Widget(view, "Image_Plug_1")->isVisible());
        EXPECT_FALSE(Widget(view, "Image_Plug_1")->isEnabled());
    });
}

TEST_F(ConfigPortTest, WhileThePortIsInUseTheChoiceIsDisabled) {
    AUF_Registry::WriteValue("PortUsed", std::string("ZOL USB 1"));
    User_Main* panel = OpenPanel();
    InConfigPort(panel, [&](QWidget* view) {
        auto* ports = Child<QComboBox>(view, "Combo_SelectPort");
        EXPECT_TRUE(ports->isEnabled());
        QTest::mouseClick(Widget(view, "Image_Plug_1"), Qt::LeftButton);
        ASSERT_TRUE(control->Port()->InUse());
        EXPECT_FALSE(ports->isEnabled());
    });
}

TEST_F(ConfigPortTest, AnIndexAboveThePortCountIsNoChoice) {
    ScriptedDeviceLibrary lib;
    lib.portNames = {"ZOL USB 1", "ZOL USB 2", "ZOL USB 3"};
    control->Port()->SetIndex(3);
    ASSERT_TRUE(control->Port()->Ready());
    lib.portNames.pop_back();
    User_Main* panel = OpenPanel();
    InConfigPort(panel, [&](QWidget* view) {
        auto* ports = Child<QComboBox>(view, "Combo_SelectPort");
        EXPECT_EQ(ports->count(), 2);
        EXPECT_EQ(ports->currentIndex(), -1);
        EXPECT_FALSE(Widget(view, "Image_Plug_0")->isVisible());
        EXPECT_TRUE(Widget(view, "Image_Plug_1")->isVisible());
        EXPECT_FALSE(Widget(view, "Image_Plug_1")->isEnabled());
    });
}

// ---- FDF_Class ----

TEST(FDF_Class, ObjectSet) {
    EXPECT_FALSE(FDF_Class::ObjectSet());
    EXPECT_FALSE(FDF_Class::ObjectSet(DataRef()));
    EXPECT_TRUE(FDF_Class::ObjectSet(std::make_shared<FDF_Port>()));
}

} // namespace
} // namespace zol::test
