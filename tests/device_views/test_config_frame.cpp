// Config_Frame against a scripted device: the load, the coupling messages both ways, the range
// message with the device's own limits, the defaults, and every failure the handlers know.
#include "device_link/core/ErrTrap.h"
#include "device_link/views/Config_Frame.h"
#include "device_link/views/DeviceViews.h"
#include "framework/bindings/HCF_Text.h"
#include "framework/form/Forms.h"
#include "framework/form/HCF_Form.h"
#include "tests/device_views/ViewTestSupport.h"
#include "tests/support/FakeClock.h"
#include "tests/support/ScopedConfigDir.h"
#include "tests/support/ScriptedUi.h"

#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <gtest/gtest.h>

namespace zol {
namespace {

using test::B;
using test::FrameModel;
using test::ScopedConfigDir;
using test::ScriptedDeviceLibrary;
using test::ScriptedUi;

class OtherData : public DataObject {
public:
    std::string DataClass() const override { return "RDM_Device"; }
};

class ConfigFrameTest : public ::testing::Test {
protected:
    void SetUp() override {
        RegisterDeviceViews();
        root = HCF_Form::Create();
    }
    void TearDown() override { test::CloseAllViews(); }

    Config_Frame* Open() {
        root->OpenForm(Config_Frame::kName, false);
        view = dynamic_cast<Config_Frame*>(Forms::Find(Config_Frame::kName));
        if (view) {
            form = view->Form();
        }
        return view.data();
    }
    std::string Shown(HCF_Text* input) const { return view->Shown(input); }
    // Types `digits` into a field the way a user does: focus in, keys, focus out.
    static void Type(HCF_Text* input, const std::string& digits) {
        input->GotFocus();
        for (char c : digits) {
            input->KeyPress(c);
        }
        input->LostFocus();
    }
    bool IsOpen() const { return !view.isNull() && Forms::IsOpen(view.data()); }

    ScopedConfigDir config;
    ScriptedUi ui;
    ScriptedDeviceLibrary device;
    test::FakeClock clock;
    FrameModel model;
    std::shared_ptr<HCF_Form> root;
    std::shared_ptr<HCF_Form> form;
    QPointer<Config_Frame> view;
};

TEST_F(ConfigFrameTest, LoadReadsTheFourValuesInTableOrder) {
    device.Expect(B({17}), 0, B({40, 1, 44}));
    device.Expect(B({21}), 0, B({0xB0, 0x80, 88, 0, 0xE8, 0x03})); // top bit of the break time masked
    device.Expect(B({19}), 0, B({12, 0, 8, 0, 0xE8, 0x03}));
    device.Expect(B({23}), 0, B({3, 0, 50}));
    ASSERT_NE(Open(), nullptr);
    EXPECT_EQ(Shown(view->Input_FrameRate()), "40");
    EXPECT_EQ(Shown(view->Input_BreakTime()), "176");
    EXPECT_EQ(Shown(view->Input_MarkTime()), "12");
    EXPECT_EQ(Shown(view->Input_DelayTime()), "3");
    EXPECT_TRUE(view->findChild<QPushButton*>("Button_OK")->isEnabled());
    EXPECT_EQ(view->windowTitle().toStdString(), " D M X - Frame Settings");
}

TEST_F(ConfigFrameTest, FieldsCarryTheirMasksAndTips) {
    model.Attach(device);
    ASSERT_NE(Open(), nullptr);
    EXPECT_EQ(view->Input_FrameRate()->MaxLength(), 2);
    EXPECT_EQ(view->Input_BreakTime()->MaxLength(), 4);
    EXPECT_EQ(view->Input_MarkTime()->MaxLength(), 4);
    EXPECT_EQ(view->Input_DelayTime()->MaxLength(), 2);
    EXPECT_EQ(view->Input_FrameRate()->Box()->objectName().toStdString(), "Text_FrameRate");
    EXPECT_EQ(view->Input_DelayTime()->Box()->objectName().toStdString(), "TextDelayTime");
    EXPECT_EQ(view->findChild<QLineEdit*>("Text_FrameRate")->toolTip().toStdString(), "Frames / second");
    EXPECT_EQ(view->findChild<QLineEdit*>("Text_BreakTime")->toolTip().toStdString(),
              "Frame Break Time in us");
    EXPECT_EQ(view->findChild<QLineEdit*>("Text_MarkTime")->toolTip().toStdString(), "Frame Mark time in us");
    EXPECT_EQ(view->findChild<QLineEdit*>("TextDelayTime")->toolTip().toStdString(),
              "RDM response time out in ms (0 = default)");
}

TEST_F(ConfigFrameTest, FrameRateThatForcesALongerTimeOutUpdatesThatFieldAndShowsOneBox) {
    model.Attach(device);
    ASSERT_NE(Open(), nullptr);
    ASSERT_EQ(Shown(view->Input_DelayTime()), "3");
    device.ClearCalls();
    ui.Expect("The RX Time Out has been adjusted for the new value", vb::OK, std::string("Frame Rate"));
    Type(view->Input_FrameRate(), "10");
    ASSERT_EQ(ui.boxes.size(), 1u);
    EXPECT_EQ(ui.boxes[0].Icon(), vb::Information);
    EXPECT_EQ(Shown(view->Input_FrameRate()), "10");
    EXPECT_EQ(Shown(view->Input_DelayTime()), "10");
    // The setter, then one read of the time out.
    ASSERT_EQ(device.Commands().size(), 2u);
    EXPECT_EQ(device.Commands()[0], B({18, 10}));
    EXPECT_EQ(device.Commands()[1], B({23}));
}

TEST_F(ConfigFrameTest, TimeOutThatForcesAFrameRateUpdatesThatFieldAndShowsOneBox) {
    model.rate.value = 20;
    model.delay.value = 5;
    model.Attach(device);
    ASSERT_NE(Open(), nullptr);
    device.ClearCalls();
    ui.Expect("The Frame Rate has been adjusted for the new value", vb::OK, std::string("RX Time Out"));
    Type(view->Input_DelayTime(), "3");
    ASSERT_EQ(ui.boxes.size(), 1u);
    EXPECT_EQ(ui.boxes[0].Icon(), vb::Information);
    EXPECT_EQ(Shown(view->Input_DelayTime()), "3");
    EXPECT_EQ(Shown(view->Input_FrameRate()), "34");
    ASSERT_EQ(device.Commands().size(), 2u);
    EXPECT_EQ(device.Commands()[0], B({24, 3}));
    EXPECT_EQ(device.Commands()[1], B({17}));
}

TEST_F(ConfigFrameTest, FrameRateThatChangesNothingElseShowsNoBox) {
    model.Attach(device);
    ASSERT_NE(Open(), nullptr);
    Type(view->Input_FrameRate(), "44");
    EXPECT_TRUE(ui.boxes.empty());
    EXPECT_EQ(model.rate.value, 44);
    EXPECT_EQ(Shown(view->Input_DelayTime()), "3");
}

TEST_F(ConfigFrameTest, ATimeOutTypedWithALeadingZeroIsTheSameNumberSoAFrameRateChangeShowsNoBox) {
    model.coupled = false;
    model.Attach(device);
    ASSERT_NE(Open(), nullptr);
    Type(view->Input_DelayTime(), "05");
    EXPECT_EQ(model.delay.value, 5);
    ASSERT_EQ(Shown(view->Input_DelayTime()), "05");
    Type(view->Input_FrameRate(), "30");
    EXPECT_EQ(model.rate.value, 30);
    EXPECT_TRUE(ui.boxes.empty()) << "5 read back equals the 05 shown";
    EXPECT_EQ(Shown(view->Input_DelayTime()), "05");
}

TEST_F(ConfigFrameTest, ValueBelowTheDeviceMinimumShowsItsTrueRangeAndTheFieldReturnsToTheOldText) {
    model.breakTime.minimum = 88;
    model.breakTime.maximum = 1000;
    model.Attach(device);
    ASSERT_NE(Open(), nullptr);
    ASSERT_EQ(Shown(view->Input_BreakTime()), "176");
    device.ClearCalls();
    ui.AnswerWith([](const test::ShownBox& box) {
        EXPECT_EQ(box.prompt, "Valid values are from 88 to 1000");
        EXPECT_EQ(box.title.value_or(""), "Setting out of range");
        EXPECT_EQ(box.Icon(), vb::Exclamation);
        return vb::OK;
    });
    Type(view->Input_BreakTime(), "50");
    ASSERT_EQ(ui.boxes.size(), 1u);
    EXPECT_EQ(Shown(view->Input_BreakTime()), "176");
    EXPECT_EQ(view->Input_BreakTime()->Box()->text().toStdString(), "176");
    EXPECT_EQ(model.breakTime.value, 176);
    // The refused set, then the minimum and the maximum, each its own read.
    ASSERT_EQ(device.Commands().size(), 3u);
    EXPECT_EQ(device.Commands()[0], B({22, 50, 0}));
    EXPECT_EQ(device.Commands()[1], B({21}));
    EXPECT_EQ(device.Commands()[2], B({21}));
}

TEST_F(ConfigFrameTest, DefaultsWhenTheDeviceRefusesFortyNameFrameRateAndLeaveTheRest) {
    model.refuseFortyRate = true;
    model.breakTime.value = 300;
    model.markTime.value = 40;
    model.delay.value = 9;
    model.Attach(device);
    ASSERT_NE(Open(), nullptr);
    device.ClearCalls();
    ui.AnswerWith([](const test::ShownBox& box) {
        EXPECT_EQ(box.prompt, "Item Frame Rate default is out of range");
        EXPECT_EQ(box.title.value_or(""), "Setting out of range");
        EXPECT_EQ(box.Icon(), vb::Exclamation);
        return vb::OK;
    });
    QTest::mouseClick(view->findChild<QPushButton*>("Button_Defaults"), Qt::LeftButton);
    ASSERT_EQ(ui.boxes.size(), 1u);
    ASSERT_EQ(device.Commands().size(), 1u);
    EXPECT_EQ(device.Commands()[0], B({18, 40}));
    EXPECT_EQ(model.breakTime.value, 300);
    EXPECT_EQ(model.markTime.value, 40);
    EXPECT_EQ(model.delay.value, 9);
    EXPECT_EQ(Shown(view->Input_BreakTime()), "300");
    EXPECT_EQ(Shown(view->Input_MarkTime()), "40");
    EXPECT_EQ(Shown(view->Input_DelayTime()), "9");
    EXPECT_TRUE(IsOpen());
}

TEST_F(ConfigFrameTest, DefaultsShowWhatTheDeviceSays) {
    model.rate.value = 20;
    model.breakTime.value = 300;
    model.markTime.value = 40;
    model.delay.value = 9;
    model.Attach(device);
    ASSERT_NE(Open(), nullptr);
    device.ClearCalls();
    view->Button_Defaults_Click();
    EXPECT_TRUE(ui.boxes.empty());
    const std::vector<test::Bytes> expected = {B({18, 40}),   B({17}), B({22, 0, 0}), B({21}),
                                               B({20, 0, 0}), B({19}), B({24, 0}),    B({23})};
    EXPECT_EQ(device.Commands(), expected);
    EXPECT_EQ(Shown(view->Input_FrameRate()), "40");
    EXPECT_EQ(Shown(view->Input_BreakTime()), "176");
    EXPECT_EQ(Shown(view->Input_MarkTime()), "12");
    EXPECT_EQ(Shown(view->Input_DelayTime()), "3");
}

TEST_F(ConfigFrameTest, BreakAndMarkOnlySetAndReadNothingBack) {
    model.Attach(device);
    ASSERT_NE(Open(), nullptr);
    device.ClearCalls();
    Type(view->Input_BreakTime(), "200");
    Type(view->Input_MarkTime(), "16");
    const std::vector<test::Bytes> expected = {B({22, 200, 0}), B({20, 16, 0})};
    EXPECT_EQ(device.Commands(), expected);
    EXPECT_TRUE(ui.boxes.empty());
}

TEST_F(ConfigFrameTest, WrongModeForTheTimeOutIsReportedAndTheFieldReturns) {
    model.Attach(device);
    ASSERT_NE(Open(), nullptr);
    model.refuseStatus = 7;
    ui.Expect("Local device not in correct mode for request", vb::OK, std::string("RDM Response Timing"));
    Type(view->Input_DelayTime(), "20");
    EXPECT_EQ(Shown(view->Input_DelayTime()), "3");
    EXPECT_TRUE(IsOpen());
}

TEST_F(ConfigFrameTest, WrongModeForTheFrameRateIsShownAndClosesTheView) {
    model.Attach(device);
    ASSERT_NE(Open(), nullptr);
    model.refuseStatus = 7;
    ui.Expect("Local device not in correct mode for request", vb::OK,
              std::string("Config_Frame.Input_FrameRate_AfterUpdate"));
    Type(view->Input_FrameRate(), "20");
    EXPECT_TRUE(IsOpen()) << "the field's event is not the place to close the view";
    clock.AdvanceMs(1);
    EXPECT_FALSE(IsOpen());
    EXPECT_EQ(form->ReturnCode(), 0);
}

TEST_F(ConfigFrameTest, LostConnectionAsksForRetryAndRunsTheSetterAgain) {
    model.Attach(device);
    ASSERT_NE(Open(), nullptr);
    device.ClearCalls();
    device.Expect(B({18, 35}), -1);
    ui.AnswerWith([](const test::ShownBox& box) {
        EXPECT_EQ(box.title.value_or(""), "DMX Frame Configuration");
        EXPECT_EQ(box.Buttons(), vb::RetryCancel);
        return vb::Retry;
    });
    Type(view->Input_FrameRate(), "35");
    EXPECT_EQ(model.rate.value, 35);
    ASSERT_GE(device.Commands().size(), 2u);
    EXPECT_EQ(device.Commands()[1], B({18, 35}));
    EXPECT_TRUE(IsOpen());
}

TEST_F(ConfigFrameTest, LostConnectionCancelledClosesTheViewWithTheCommsError) {
    model.Attach(device);
    ASSERT_NE(Open(), nullptr);
    device.Expect(B({18, 30}), -3);
    ui.Answer(vb::Cancel);
    Type(view->Input_FrameRate(), "30");
    EXPECT_TRUE(IsOpen());
    clock.AdvanceMs(1);
    EXPECT_FALSE(IsOpen());
    EXPECT_EQ(form->ReturnCode(), err::ErrSYS_Comms);
}

TEST_F(ConfigFrameTest, DeviceGoneClosesTheViewWithNoMessage) {
    model.Attach(device);
    ASSERT_NE(Open(), nullptr);
    device.Expect(B({20, 16, 0}), -2);
    Type(view->Input_MarkTime(), "16");
    EXPECT_TRUE(ui.boxes.empty());
    EXPECT_TRUE(IsOpen());
    clock.AdvanceMs(1);
    EXPECT_FALSE(IsOpen());
    EXPECT_EQ(form->ReturnCode(), err::ErrAPI_DeviceMissig);
}

TEST_F(ConfigFrameTest, DeviceGoneDuringTheLoadClosesTheViewUnseenAndReachesTheOpener) {
    device.Expect(B({17}), 0, B({40, 1, 44}));
    device.Expect(B({21}), -2);
    try {
        root->OpenForm(Config_Frame::kName, false);
        ADD_FAILURE() << "the open should have failed";
    } catch (const ZolError& error) {
        EXPECT_EQ(error.Code(), err::ErrAPI_DeviceMissig);
    }
    EXPECT_EQ(Forms::Find(Config_Frame::kName), nullptr);
    EXPECT_TRUE(ui.boxes.empty());
}

TEST_F(ConfigFrameTest, ADataObjectIsRefused) {
    try {
        root->OpenForm(Config_Frame::kName, false, std::make_shared<OtherData>());
        ADD_FAILURE() << "the open should have failed";
    } catch (const ZolError& error) {
        EXPECT_EQ(error.Code(), err::ErrSYS_Local);
        EXPECT_EQ(error.Description(), "Class object \"RDM_Device\" not handled");
    }
    EXPECT_EQ(Forms::Find(Config_Frame::kName), nullptr);
}

TEST_F(ConfigFrameTest, ButtonOKClosesTheView) {
    model.Attach(device);
    ASSERT_NE(Open(), nullptr);
    QTest::mouseClick(view->findChild<QPushButton*>("Button_OK"), Qt::LeftButton);
    EXPECT_FALSE(IsOpen());
    EXPECT_EQ(form->ReturnCode(), 0);
}

} // namespace
} // namespace zol
