// System_Info against a scripted device: what each label shows, and the load's failures.
#include "device_link/core/ErrTrap.h"
#include "device_link/status/DEV_Status.h"
#include "device_link/views/DeviceViews.h"
#include "device_link/views/System_Info.h"
#include "framework/form/Forms.h"
#include "framework/form/HCF_Form.h"
#include "tests/device_views/ViewTestSupport.h"
#include "tests/support/ScopedConfigDir.h"
#include "tests/support/ScriptedUi.h"

#include <QGroupBox>
#include <QLabel>
#include <QPointer>
#include <gtest/gtest.h>

namespace zol {
namespace {

using test::B;
using test::Bytes;
using test::ScopedConfigDir;
using test::ScriptedDeviceLibrary;
using test::ScriptedUi;

class OtherData : public DataObject {
public:
    std::string DataClass() const override { return "SYS_Status"; }
};

class SystemInfoTest : public ::testing::Test {
protected:
    void SetUp() override {
        RegisterDeviceViews();
        root = HCF_Form::Create();
    }
    void TearDown() override { test::CloseAllViews(); }

    // The six reads of the load, in order.
    void ExpectIdentity(const Bytes& serial = Bytes("00012345", 8) + Bytes(1, '\0')) {
        device.Expect(B({0}), 0, "ZOL MK1");
        device.Expect(B({3, 1}), 0, serial);
        device.Expect(B({1}), 0, "Rev C");
        device.Expect(B({2, 1}), 0, Bytes("0.3.10", 6) + Bytes(1, '\0'));
        device.Expect(B({79}), 0, B({0xD2, 0x04, 0x00, 0x00}));
        device.Expect(B({4}), 0, B({0x4B, 0x41, 0x00, 0x00, 0x01, 0xFE}));
    }
    System_Info* Open(const DataRef& data) {
        root->OpenForm(System_Info::kName, false, data);
        view = dynamic_cast<System_Info*>(Forms::Find(System_Info::kName));
        return view.data();
    }
    std::string Info(int index) const {
        return view->findChild<QLabel*>(QStringLiteral("LabelInfo_%1").arg(index))->text().toStdString();
    }
    std::string Caption(int index) const {
        return view->findChild<QLabel*>(QStringLiteral("LabelName_%1").arg(index))->text().toStdString();
    }

    ScopedConfigDir config;
    ScriptedUi ui;
    ScriptedDeviceLibrary device;
    std::shared_ptr<HCF_Form> root;
    QPointer<System_Info> view;
};

TEST_F(SystemInfoTest, ShowsTheDeviceIdentity) {
    ExpectIdentity();
    ASSERT_NE(Open(std::make_shared<DEV_Status>()), nullptr);
    EXPECT_EQ(view->windowTitle().toStdString(), "  Device Information");
    EXPECT_NE(view->findChild<QGroupBox*>("FrameID"), nullptr);
    EXPECT_EQ(Info(0), "ZOL MK1");
    EXPECT_EQ(Info(1), "12345");
    EXPECT_EQ(Info(2), "Rev C");
    EXPECT_EQ(Info(3), "0.3.10\n  Build 1234");
    EXPECT_EQ(Info(4), "4B 41 : 00 00 01 FE");
    EXPECT_EQ(Caption(1), "Serial N\u00b0");
    EXPECT_EQ(Caption(2), "Hardware Rev :");
    EXPECT_EQ(Caption(3), "Firmware Rev :");
    EXPECT_EQ(Caption(4), "Unique ID :");
    EXPECT_TRUE(ui.boxes.empty());
}

TEST_F(SystemInfoTest, FirmwareBuildOfAnotherLengthShowsTheMessageAndZero) {
    device.Expect(B({0}), 0, "ZOL MK1");
    device.Expect(B({3, 1}), 0, "77");
    device.Expect(B({1}), 0, "Rev C");
    device.Expect(B({2, 1}), 0, "0.3.10");
    device.Expect(B({79}), 0, B({0xD2, 0x04}));
    device.Expect(B({4}), 0, B({1, 2, 3, 4, 5, 6}));
    ui.Expect("Unexpected response form device", vb::OK, std::string("Firmware Build N\u00b0"));
    ASSERT_NE(Open(std::make_shared<DEV_Status>()), nullptr);
    EXPECT_EQ(Info(3), "0.3.10\n  Build 0");
    EXPECT_EQ(Info(1), "77");
}

TEST_F(SystemInfoTest, DataOfAnotherClassIsRefused) {
    try {
        Open(std::make_shared<OtherData>());
        ADD_FAILURE() << "the open should have failed";
    } catch (const ZolError& error) {
        EXPECT_EQ(error.Code(), err::ErrSYS_Local);
        EXPECT_EQ(error.Description(), "Class object \"SYS_Status\" not handled");
    }
    EXPECT_EQ(Forms::Find(System_Info::kName), nullptr);
    EXPECT_TRUE(device.Commands().empty());
}

TEST_F(SystemInfoTest, DeviceGoneDuringTheLoadClosesTheViewUnseenAndReachesTheOpener) {
    device.Expect(B({0}), 0, "ZOL MK1");
    device.Expect(B({3, 1}), -2);
    try {
        Open(std::make_shared<DEV_Status>());
        ADD_FAILURE() << "the open should have failed";
    } catch (const ZolError& error) {
        EXPECT_EQ(error.Code(), err::ErrAPI_DeviceMissig);
    }
    EXPECT_EQ(Forms::Find(System_Info::kName), nullptr);
    EXPECT_TRUE(ui.boxes.empty());
}

TEST_F(SystemInfoTest, NoAnswerAsksForRetryAndReadsAgain) {
    device.Expect(B({0}), -3);
    ExpectIdentity();
    ui.AnswerWith([](const test::ShownBox& box) {
        EXPECT_EQ(box.prompt, "Local device is not responding");
        EXPECT_EQ(box.Buttons(), vb::RetryCancel);
        return vb::Retry;
    });
    ASSERT_NE(Open(std::make_shared<DEV_Status>()), nullptr);
    EXPECT_EQ(Info(0), "ZOL MK1");
    EXPECT_EQ(Info(4), "4B 41 : 00 00 01 FE");
}

TEST_F(SystemInfoTest, NoAnswerCancelledClosesTheViewWithTheCommsError) {
    device.Expect(B({0}), -1);
    ui.Answer(vb::Cancel);
    try {
        Open(std::make_shared<DEV_Status>());
        ADD_FAILURE() << "the open should have failed";
    } catch (const ZolError& error) {
        EXPECT_EQ(error.Code(), err::ErrSYS_Comms);
    }
    EXPECT_EQ(Forms::Find(System_Info::kName), nullptr);
}

TEST(SystemInfoText, SerialNumberReadsAsANumber) {
    EXPECT_EQ(SerialAsNumber("00012345"), "12345");
    EXPECT_EQ(SerialAsNumber(" 12 34"), "1234");
    EXPECT_EQ(SerialAsNumber("77AB"), "77");
    EXPECT_EQ(SerialAsNumber("none"), "0");
    EXPECT_EQ(SerialAsNumber(""), "0");
    EXPECT_EQ(SerialAsNumber("1234567890123456789"), "1.23456789012346E+18");
}

TEST(SystemInfoText, UniqueIdPartsTheFirstTwoPairsFromTheLastFour) {
    EXPECT_EQ(FormatUniqueId(B({0x12, 0x34, 0x56, 0x78, 0x9A, 0xBC})), "12 34 : 56 78 9A BC");
}

} // namespace
} // namespace zol
