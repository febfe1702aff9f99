// Config_Prog tick by tick against the scripted library's upload states, and the firmware file
// selection from the dialog to the probe afterwards.
#include "device_link/core/Client.h"
#include "device_link/core/ErrTrap.h"
#include "device_link/status/DEV_Status.h"
#include "device_link/views/Config_Prog.h"
#include "device_link/views/DeviceViews.h"
#include "device_link/views/FirmwareSelect.h"
#include "framework/form/FormView.h"
#include "framework/form/Forms.h"
#include "framework/form/HCF_Form.h"
#include "services/settings/AUF_Registry.h"
#include "tests/device_views/ViewTestSupport.h"
#include "tests/support/ScopedConfigDir.h"
#include "tests/support/ScriptedUi.h"

#include <QLabel>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>
#include <gtest/gtest.h>

namespace zol {
namespace {

using test::B;
using test::Bytes;
using test::ScopedConfigDir;
using test::ScriptedDeviceLibrary;
using test::ScriptedUi;

class ConfigProgTest : public ::testing::Test {
protected:
    void SetUp() override {
        RegisterDeviceViews();
        root = HCF_Form::Create();
        root->OpenForm(Config_Prog::kName, false);
        view = dynamic_cast<Config_Prog*>(Forms::Find(Config_Prog::kName));
        ASSERT_NE(view, nullptr);
        form = view->Form();
        // The ticks are driven by the test.
        view->TimerUpdate()->stop();
    }
    void TearDown() override { test::CloseAllViews(); }

    QLabel* Info(int index) const {
        return view->findChild<QLabel*>(QStringLiteral("LabelInfo_%1").arg(index));
    }
    std::string Text(int index) const { return Info(index)->text().toStdString(); }
    bool Shown(int index) const { return !Info(index)->isHidden(); }
    int Bar() const { return view->findChild<QProgressBar*>("ProgressUpload")->value(); }
    bool ExitEnabled() const { return view->findChild<QPushButton*>("ButtonExit")->isEnabled(); }
    bool ImageGood() const { return !view->findChild<QLabel*>("ImageGood")->isHidden(); }
    bool Ended() const { return ExitEnabled() && !view->TimerUpdate()->isActive(); }
    bool IsOpen() const { return !view.isNull() && Forms::IsOpen(view.data()); }
    void Ticks(int n) {
        for (int i = 0; i < n; ++i) {
            view->TimerUpdate_Timer();
        }
    }

    ScopedConfigDir config;
    ScriptedUi ui;
    ScriptedDeviceLibrary device;
    std::shared_ptr<HCF_Form> root;
    std::shared_ptr<HCF_Form> form;
    QPointer<Config_Prog> view;
};

TEST_F(ConfigProgTest, StartsPollingEveryQuarterSecondWithTheExitButtonDisabled) {
    test::CloseAllViews();
    root->OpenForm(Config_Prog::kName, false);
    view = dynamic_cast<Config_Prog*>(Forms::Find(Config_Prog::kName));
    ASSERT_NE(view, nullptr);
    EXPECT_TRUE(view->TimerUpdate()->isActive());
    EXPECT_EQ(view->TimerUpdate()->interval(), 250);
    EXPECT_FALSE(ExitEnabled());
    EXPECT_EQ(view->findChild<QPushButton*>("ButtonExit")->toolTip().toStdString(), "Close Window");
    EXPECT_EQ(Text(0), "Reprogram");
    EXPECT_EQ(Text(3), "Please Wait");
    EXPECT_FALSE(Shown(3));
    EXPECT_FALSE(ImageGood());
}

TEST_F(ConfigProgTest, StatesZeroFiftyHundredZeroEndInSuccess) {
    device.progStates = {0, 50, 100, 0};
    Ticks(1);
    EXPECT_EQ(view->Same(), 1);
    EXPECT_FALSE(Ended());

    Ticks(1);
    EXPECT_EQ(Text(2), "Uploading Image");
    EXPECT_EQ(ui.MousePointer(), kPointerHourglass);
    EXPECT_EQ(Text(1), "50 %");
    EXPECT_EQ(Bar(), 50);

    Ticks(1);
    EXPECT_EQ(Text(2), "Configuring.");
    EXPECT_TRUE(Shown(3));
    EXPECT_TRUE(view->Configuring());
    EXPECT_EQ(Text(1), "100 %");
    EXPECT_EQ(Bar(), 100);

    Ticks(1);
    EXPECT_EQ(Text(2), "Success ");
    EXPECT_EQ(ui.MousePointer(), kPointerDefault);
    EXPECT_TRUE(ImageGood());
    EXPECT_TRUE(Shown(2));
    EXPECT_FALSE(Shown(3));
    EXPECT_TRUE(Ended());
    EXPECT_EQ(ui.beeps, 1);
    // The percentage stays as the last progress left it.
    EXPECT_EQ(Text(1), "100 %");
    EXPECT_TRUE(ui.boxes.empty());
}

TEST_F(ConfigProgTest, Status103ShowsErrorNumber3WithTheBarAt100) {
    device.progStates = {40, 103};
    Ticks(2);
    EXPECT_EQ(Text(2), "Error 3");
    EXPECT_EQ(Bar(), 100);
    EXPECT_EQ(Text(1), "100 %");
    EXPECT_TRUE(Ended());
    EXPECT_FALSE(ImageGood());
    EXPECT_EQ(ui.beeps, 1);
}

TEST_F(ConfigProgTest, StuckAt100TimesOutOnThe121stUnchangedTick) {
    device.progStates = {100};
    Ticks(1); // 0 to 100
    Ticks(120);
    EXPECT_EQ(view->Same(), 120);
    EXPECT_FALSE(Ended());
    EXPECT_EQ(Text(2), "Configuring.");
    Ticks(1);
    EXPECT_EQ(Text(2), "Timed Out");
    EXPECT_TRUE(Shown(2));
    EXPECT_FALSE(Shown(3));
    EXPECT_TRUE(Ended());
    EXPECT_EQ(ui.beeps, 1);
}

TEST_F(ConfigProgTest, NoProgressAtAllTimesOutOnThe21stTick) {
    device.progStates = {0};
    Ticks(20);
    EXPECT_FALSE(Ended());
    EXPECT_EQ(Text(2), "");
    Ticks(1);
    EXPECT_EQ(Text(2), "Timed Out");
    EXPECT_TRUE(Ended());
}

TEST_F(ConfigProgTest, StalledUploadTimesOutOnThe21stUnchangedTick) {
    device.progStates = {30};
    Ticks(1);
    Ticks(20);
    EXPECT_FALSE(Ended());
    Ticks(1);
    EXPECT_EQ(Text(2), "Timed Out");
    EXPECT_EQ(Text(1), "30 %");
}

TEST_F(ConfigProgTest, ConfiguringBlinksEveryTwoTicks) {
    device.progStates = {100};
    Ticks(1); // Same 0: hidden
    std::vector<bool> seen{Shown(2)};
    for (int i = 0; i < 8; ++i) {
        Ticks(1);
        seen.push_back(Shown(2));
    }
    // Visible while bit 1 of Same is set: Same 0..8.
    const std::vector<bool> expected{false, false, true, true, false, false, true, true, false};
    EXPECT_EQ(seen, expected);
}

TEST_F(ConfigProgTest, DeviceGoneDuringTheUploadIsReportedAndClosesTheView) {
    device.progStates = {20, -2};
    Ticks(1);
    ui.Expect("Local device has been disconnected", vb::OK, std::string("Firmware image upload"));
    Ticks(1);
    EXPECT_FALSE(IsOpen());
    EXPECT_EQ(form->ReturnCode(), err::ErrAPI_DeviceMissig);
    EXPECT_EQ(ui.MousePointer(), kPointerDefault);
}

TEST_F(ConfigProgTest, IncompatibleImageFromTheLibraryIsReportedAndClosesTheView) {
    device.progStates = {-7};
    ui.Expect("Binary File not compatible with this device", vb::OK, std::string("Firmware image upload"));
    Ticks(1);
    EXPECT_FALSE(IsOpen());
    EXPECT_EQ(form->ReturnCode(), err::ErrAPI_ProgFile_Compat);
}

TEST_F(ConfigProgTest, LostConnectionClosesTheViewWithNoMessageHere) {
    device.progStates = {-1};
    Ticks(1);
    EXPECT_TRUE(ui.boxes.empty());
    EXPECT_FALSE(IsOpen());
    EXPECT_EQ(form->ReturnCode(), err::ErrAPI_Connection);
}

TEST_F(ConfigProgTest, OtherFailureIsReportedAndThrownOn) {
    device.progStates = {-5}; // 0x1105
    ui.Expect("Response from local device has incorect format", vb::OK,
              std::string("Config_Prog.TimerUpdate_Timer"));
    try {
        Ticks(1);
        ADD_FAILURE() << "the tick should have thrown";
    } catch (const ZolError& error) {
        EXPECT_EQ(error.Code(), err::ErrAPI_Response_Format);
    }
    EXPECT_TRUE(IsOpen());
    EXPECT_TRUE(ExitEnabled());
    EXPECT_FALSE(view->TimerUpdate()->isActive());
}

TEST_F(ConfigProgTest, ButtonExitClosesTheView) {
    device.progStates = {0};
    Ticks(21);
    QTest::mouseClick(view->findChild<QPushButton*>("ButtonExit"), Qt::LeftButton);
    EXPECT_FALSE(IsOpen());
}

// ---- The selection ----

// Stands for the main panel: the view whose controller opens Config_Prog, so that a code the
// progress view leaves with comes back to the selection.
class PanelStub : public FormView {
public:
    PanelStub() : FormView("Test_Panel") {}
};

class FirmwareSelectTest : public ::testing::Test {
protected:
    void SetUp() override {
        RegisterDeviceViews();
        Forms::Register("Test_Panel", [] { return new PanelStub; });
        root = HCF_Form::Create();
        root->OpenForm("Test_Panel", false);
        auto* panelView = dynamic_cast<PanelStub*>(Forms::Find("Test_Panel"));
        ASSERT_NE(panelView, nullptr);
        panel = panelView->Form();
        iState = std::make_shared<DEV_Status>();
    }
    void TearDown() override { test::CloseAllViews(); }

    // Clicks ButtonExit of Config_Prog once the upload has ended, so the modal show returns.
    void CloseProgressWhenEnded() {
        auto* poll = new QTimer;
        poll->setInterval(20);
        QObject::connect(poll, &QTimer::timeout, poll, [poll] {
            auto* prog = dynamic_cast<Config_Prog*>(Forms::Find(Config_Prog::kName));
            if (prog == nullptr) {
                return;
            }
            auto* exit = prog->findChild<QPushButton*>("ButtonExit");
            if (exit->isEnabled()) {
                exit->click();
                poll->deleteLater();
            }
        });
        poll->start();
    }
    // The probe after the upload: factory read, model and firmware.
    void ExpectProbe(const std::string& firmware) {
        device.Expect(B({224, 0, 0, 1, 0}), 2);
        device.Expect(B({0, 1}), 0, B({1, 0}));
        device.Expect(B({2, 1}), 0, firmware);
    }
    void Select() {
        SelectProgFile(*panel, iState, [this] { ++disconnects; });
    }

    ScopedConfigDir config;
    ScriptedUi ui;
    ScriptedDeviceLibrary device;
    std::shared_ptr<HCF_Form> root;
    std::shared_ptr<HCF_Form> panel;
    std::shared_ptr<DEV_Status> iState;
    int disconnects = 0;
};

TEST_F(FirmwareSelectTest, CancelInTheFileDialogStartsNothingAndDoesNotWriteSourceDir) {
    ui.QueueFileDialog(FileDialogResult{false, "/elsewhere", {}});
    Select();
    ASSERT_EQ(ui.fileRequests.size(), 1u);
    EXPECT_TRUE(device.calls.empty());
    EXPECT_EQ(AUF_Registry::ReadString("SourceDir", "<none>"), "<none>");
    EXPECT_EQ(Forms::Find(Config_Prog::kName), nullptr);
    EXPECT_EQ(disconnects, 0);
}

TEST_F(FirmwareSelectTest, DialogStartsInThePluginFolderWithTheFlashFilter) {
    ui.QueueFileDialog(FileDialogResult{false, {}, {}});
    Select();
    ASSERT_EQ(ui.fileRequests.size(), 1u);
    const FileDialogRequest& request = ui.fileRequests[0];
    EXPECT_EQ(request.caption, "Firmware Program File");
    ASSERT_EQ(request.filters.size(), 2u);
    EXPECT_EQ(request.filters[0], std::make_pair(std::string("Flash Files "), std::string("*.FUD")));
    EXPECT_EQ(request.filters[1], std::make_pair(std::string("All Files "), std::string("*.*")));
    EXPECT_EQ(request.flags, 0x80000 | 0x200000 | 2 | 0x100000 | 4 | 512 | 0x1000000);
    EXPECT_EQ(request.initialDir, Client::PluginFolder());
    EXPECT_FALSE(request.save);
}

TEST_F(FirmwareSelectTest, DialogStartsInTheRememberedFolder) {
    AUF_Registry::WriteValue("SourceDir", SettingValue(std::string("/images/zol")));
    ui.QueueFileDialog(FileDialogResult{false, {}, {}});
    Select();
    ASSERT_EQ(ui.fileRequests.size(), 1u);
    EXPECT_EQ(ui.fileRequests[0].initialDir, "/images/zol");
}

TEST_F(FirmwareSelectTest, ChosenImageIsUploadedFollowedAndTheDeviceProbedAgain) {
    ui.QueueFileDialog(FileDialogResult{true, "/images/zol", {"mk1-0.3.12.FUD"}});
    device.progStates = {10, 60, 100, 100, 0};
    ExpectProbe("0.3.12");
    CloseProgressWhenEnded();
    Select();
    EXPECT_EQ(AUF_Registry::ReadString("SourceDir"), "/images/zol");
    ASSERT_FALSE(device.calls.empty());
    EXPECT_EQ(device.calls[0].function, "Reprogram");
    EXPECT_EQ(device.calls[0].request, "/images/zol/mk1-0.3.12.FUD");
    EXPECT_EQ(Forms::Find(Config_Prog::kName), nullptr);
    EXPECT_EQ(device.Pending(), 0u);
    // Model 1 holds 0.3.010 as newest: the new 0.3.12 is ahead of it.
    EXPECT_FALSE(iState->Updates());
    EXPECT_TRUE(ui.boxes.empty());
    EXPECT_EQ(disconnects, 0);
}

TEST_F(FirmwareSelectTest, FolderEndingInItsSeparatorGetsNoSecondOne) {
    ui.QueueFileDialog(FileDialogResult{true, "/images/", {"a.FUD"}});
    device.reprogramResult = -8;
    try {
        Select();
    } catch (const ZolError&) {
    }
    ASSERT_FALSE(device.calls.empty());
    EXPECT_EQ(device.calls[0].request, "/images/a.FUD");
}

TEST_F(FirmwareSelectTest, IncompatibleImageGoesOnToTheMenuWithoutAMessage) {
    ui.QueueFileDialog(FileDialogResult{true, "/images", {"other.FUD"}});
    device.reprogramResult = -7;
    try {
        Select();
        ADD_FAILURE() << "the selection should have thrown";
    } catch (const ZolError& error) {
        EXPECT_EQ(error.Code(), err::ErrAPI_ProgFile_Compat);
    }
    EXPECT_TRUE(ui.boxes.empty());
    EXPECT_EQ(Forms::Find(Config_Prog::kName), nullptr);
    EXPECT_EQ(disconnects, 0);
}

TEST_F(FirmwareSelectTest, CorruptImageGoesOnToTheMenuWithoutAMessage) {
    ui.QueueFileDialog(FileDialogResult{true, "/images", {"broken.FUD"}});
    device.reprogramResult = -8;
    try {
        Select();
        ADD_FAILURE() << "the selection should have thrown";
    } catch (const ZolError& error) {
        EXPECT_EQ(error.Code(), err::ErrAPI_ProgFile_Corrupt);
    }
    EXPECT_TRUE(ui.boxes.empty());
}

TEST_F(FirmwareSelectTest, LostConnectionRetriesTheUploadAndCancelDisconnects) {
    ui.QueueFileDialog(FileDialogResult{true, "/images", {"a.FUD"}});
    device.reprogramResult = -1;
    ui.AnswerWith([](const test::ShownBox& box) {
        EXPECT_EQ(box.title.value_or(""), "Firmware Upload");
        EXPECT_EQ(box.Buttons(), vb::RetryCancel);
        return vb::Retry;
    });
    ui.Answer(vb::Cancel);
    Select();
    int reprograms = 0;
    for (const auto& call : device.calls) {
        reprograms += call.function == "Reprogram" ? 1 : 0;
    }
    EXPECT_EQ(reprograms, 2);
    EXPECT_EQ(disconnects, 1);
    EXPECT_EQ(Forms::Find(Config_Prog::kName), nullptr);
}

TEST_F(FirmwareSelectTest, DeviceGoneIsReportedAndDisconnects) {
    ui.QueueFileDialog(FileDialogResult{true, "/images", {"a.FUD"}});
    device.reprogramResult = -2;
    ui.Expect("Local device has been disconnected", vb::OK, std::string("Firmware Upload"));
    Select();
    EXPECT_EQ(disconnects, 1);
}

TEST_F(FirmwareSelectTest, DeviceGoneDuringTheUploadIsReportedTwiceAndDisconnects) {
    // The view reports it under its own title and closes; the selection reports it again and
    // disconnects.
    ui.QueueFileDialog(FileDialogResult{true, "/images", {"a.FUD"}});
    device.progStates = {25, -2};
    ui.Expect("Local device has been disconnected", vb::OK, std::string("Firmware image upload"));
    ui.Expect("Local device has been disconnected", vb::OK, std::string("Firmware Upload"));
    Select();
    EXPECT_EQ(disconnects, 1);
    EXPECT_EQ(Forms::Find(Config_Prog::kName), nullptr);
}

} // namespace
} // namespace zol
