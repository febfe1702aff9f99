// The local-device views against the simulated interface (libzol-sim.so): the device's own timing
// rules and limits, its identity, and firmware uploads of good, incompatible and corrupt images
// written by zol-fud, with a device that stalls.
#include "device_link/core/Client.h"
#include "device_link/core/DeviceLibrary.h"
#include "device_link/core/ErrTrap.h"
#include "device_link/status/DEV_Status.h"
#include "device_link/views/Config_Frame.h"
#include "device_link/views/Config_Prog.h"
#include "device_link/views/DeviceViews.h"
#include "device_link/views/FirmwareSelect.h"
#include "device_link/views/System_Info.h"
#include "framework/bindings/HCF_Text.h"
#include "framework/form/FormView.h"
#include "framework/form/Forms.h"
#include "framework/form/HCF_Form.h"
#include "services/settings/AUF_Registry.h"
#include "tests/device_views/ViewTestSupport.h"
#include "tests/support/ScopedConfigDir.h"
#include "tests/support/ScriptedUi.h"

#include <QLabel>
#include <QProcess>
#include <QPushButton>
#include <QStringList>
#include <QTimer>
#include <cstdlib>
#include <dlfcn.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sstream>

namespace zol {
namespace {

namespace fs = std::filesystem;
using test::ScopedConfigDir;
using test::ScriptedUi;

// The build's bin folder: $ZOL_BUILD_DIR/bin, else the folder this test was configured in.
std::string BuildBin() {
    const char* build = std::getenv("ZOL_BUILD_DIR");
    return std::string(build != nullptr && *build != '\0' ? build : ZOL_VIEWS_BUILD_DIR) + "/bin";
}

std::string SourceDir() {
    const char* source = std::getenv("ZOL_SOURCE_DIR");
    return source != nullptr && *source != '\0' ? source : ZOL_VIEWS_SOURCE_DIR;
}

// The simulated interface as Client's device library, on its manual clock, with port 1 open.
class SimDevice {
public:
    bool Load(std::string& why) {
        const std::string path = BuildBin() + "/" + kSimulatorLibraryName;
        if (!fs::exists(path)) {
            why = "the simulated interface is not built: " + path;
            return false;
        }
        handle_ = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
        control_ = handle_ != nullptr ? reinterpret_cast<ControlFn>(dlsym(handle_, "SIM_Control")) : nullptr;
        if (control_ == nullptr) {
            why = "SIM_Control is not in " + path;
            return false;
        }
        library_ = LoadDeviceLibrary(path);
        previous_ = Client::SetLibrary(library_.get());
        installed_ = true;
        Client::ResetStateForTest();
        Control("rig default");
        Control("reset");
        Control("clock manual");
        return true;
    }
    void OpenPort() {
        Client::OpenPort(1);
        open_ = true;
    }
    ~SimDevice() {
        if (open_) {
            try {
                Client::ClosePort();
            } catch (const ZolError&) {
            }
        }
        if (control_ != nullptr) {
            Control("rig default");
            Control("reset");
        }
        if (installed_) {
            Client::SetLibrary(previous_);
        }
        if (handle_ != nullptr) {
            dlclose(handle_);
        }
    }
    std::string Control(const std::string& command, int32_t* rc = nullptr) {
        char reply[4096] = {};
        const int32_t result = control_(command.c_str(), reply, sizeof reply);
        if (rc != nullptr) {
            *rc = result;
        }
        return reply;
    }
    // One value of "state", such as "rate" or "firmware".
    std::string State(const std::string& key) {
        std::istringstream words(Control("state"));
        for (std::string word; words >> word;) {
            if (word.rfind(key + "=", 0) == 0) {
                return word.substr(key.size() + 1);
            }
        }
        return {};
    }

private:
    using ControlFn = int32_t (*)(const char*, char*, int32_t);
    void* handle_ = nullptr;
    ControlFn control_ = nullptr;
    std::unique_ptr<DeviceLibrary> library_;
    DeviceLibrary* previous_ = nullptr;
    bool installed_ = false;
    bool open_ = false;
};

// Stands for the main panel, whose controller opens the views.
class PanelStub : public FormView {
public:
    PanelStub() : FormView("Test_Panel") {}
};

class SimViewsTest : public ::testing::Test {
protected:
    void SetUp() override {
        std::string why;
        // The simulated interface and zol-fud are built before this test.
        ASSERT_TRUE(sim.Load(why)) << why;
        RegisterDeviceViews();
        Forms::Register("Test_Panel", [] { return new PanelStub; });
        root = HCF_Form::Create();
        root->OpenForm("Test_Panel", false);
        panel = dynamic_cast<PanelStub*>(Forms::Find("Test_Panel"))->Form();
        folder = config.Path() / "images";
        fs::create_directories(folder);
        // The bench rig's interfaces without responders on their lines: these views talk to the
        // local device only.
        UseRig([](nlohmann::json&) {});
    }
    void TearDown() override { test::CloseAllViews(); }

    // Loads a copy of the bench rig, its lines emptied, changed by `edit`.
    void UseRig(const std::function<void(nlohmann::json&)>& edit) {
        std::ifstream in(SourceDir() + "/sim/rigs/default.json");
        nlohmann::json rig = nlohmann::json::parse(in);
        for (auto& port : rig["ports"]) {
            port["responders"] = nlohmann::json::array();
        }
        edit(rig);
        const fs::path path = config.Path() / "rig.json";
        std::ofstream(path) << rig.dump(2);
        int32_t rc = 0;
        const std::string reply = sim.Control("rig " + path.string(), &rc);
        ASSERT_GE(rc, 0) << reply;
        sim.Control("clock manual");
    }
    // Writes an image file with zol-fud and returns its name in `folder`.
    std::string WriteImage(const std::string& name, int model, const std::string& version,
                           bool corrupt = false) {
        QStringList args{"write",
                         "--model",
                         QString::number(model),
                         "--version",
                         QString::fromStdString(version),
                         "--build",
                         "1300",
                         "--size",
                         "2048"};
        if (corrupt) {
            args << "--corrupt";
        }
        args << QString::fromStdString((folder / name).string());
        QProcess tool;
        tool.start(QString::fromStdString(BuildBin() + "/zol-fud"), args);
        EXPECT_TRUE(tool.waitForFinished(10000));
        EXPECT_EQ(tool.exitCode(), 0) << tool.readAllStandardError().toStdString();
        return name;
    }
    Config_Frame* OpenFrame() {
        panel->OpenForm(Config_Frame::kName, false);
        return dynamic_cast<Config_Frame*>(Forms::Find(Config_Frame::kName));
    }
    static void Type(HCF_Text* input, const std::string& digits) {
        input->GotFocus();
        for (char c : digits) {
            input->KeyPress(c);
        }
        input->LostFocus();
    }
    void Select(const std::string& image) {
        ui.QueueFileDialog(FileDialogResult{true, folder.string(), {image}});
        SelectProgFile(*panel, iState, [this] { ++disconnects; });
    }

    ScopedConfigDir config;
    ScriptedUi ui;
    SimDevice sim;
    std::shared_ptr<HCF_Form> root;
    std::shared_ptr<HCF_Form> panel;
    std::shared_ptr<DEV_Status> iState = std::make_shared<DEV_Status>();
    fs::path folder;
    int disconnects = 0;
};

TEST_F(SimViewsTest, FasterFrameRateShortensTheTimeOutAndSaysSo) {
    sim.OpenPort();
    Config_Frame* view = OpenFrame();
    ASSERT_NE(view, nullptr);
    ASSERT_EQ(view->Shown(view->Input_DelayTime()), "10");
    ui.Expect("The RX Time Out has been adjusted for the new value", vb::OK, std::string("Frame Rate"));
    Type(view->Input_FrameRate(), "44");
    EXPECT_EQ(ui.boxes.size(), 1u);
    EXPECT_EQ(sim.State("rate"), "44");
    EXPECT_EQ(sim.State("rx_timeout"), "7");
    EXPECT_EQ(view->Shown(view->Input_DelayTime()), "7");
}

TEST_F(SimViewsTest, LongerTimeOutLowersTheFrameRateAndSaysSo) {
    sim.OpenPort();
    Config_Frame* view = OpenFrame();
    ASSERT_NE(view, nullptr);
    ui.Expect("The Frame Rate has been adjusted for the new value", vb::OK, std::string("RX Time Out"));
    Type(view->Input_DelayTime(), "40");
    EXPECT_EQ(ui.boxes.size(), 1u);
    EXPECT_EQ(sim.State("rx_timeout"), "40");
    EXPECT_EQ(sim.State("rate"), "18");
    EXPECT_EQ(view->Shown(view->Input_FrameRate()), "18");
}

TEST_F(SimViewsTest, ValueOutsideTheDeviceLimitsShowsItsTrueRangeAndReverts) {
    sim.OpenPort();
    Config_Frame* view = OpenFrame();
    ASSERT_NE(view, nullptr);
    ui.Expect("Valid values are from 92 to 2000", vb::OK, std::string("Setting out of range"));
    Type(view->Input_BreakTime(), "50");
    EXPECT_EQ(view->Shown(view->Input_BreakTime()), "176");
    EXPECT_EQ(sim.State("break"), "176");

    ui.Expect("Valid values are from 1 to 44", vb::OK, std::string("Setting out of range"));
    Type(view->Input_FrameRate(), "60");
    EXPECT_EQ(view->Shown(view->Input_FrameRate()), "40");
    EXPECT_EQ(sim.State("rate"), "40");
}

TEST_F(SimViewsTest, DefaultsWhenTheDeviceRefusesTheFrameRateLeaveTheRest) {
    UseRig([](nlohmann::json& rig) {
        rig["ports"][0]["timing"]["frame_rate"] = {{"default", 25}, {"min", 1}, {"max", 30}};
    });
    sim.OpenPort();
    Config_Frame* view = OpenFrame();
    ASSERT_NE(view, nullptr);
    Type(view->Input_BreakTime(), "300");
    Type(view->Input_MarkTime(), "64");
    ASSERT_EQ(sim.State("break"), "300");
    ui.Expect("Item Frame Rate default is out of range", vb::OK, std::string("Setting out of range"));
    QTest::mouseClick(view->findChild<QPushButton*>("Button_Defaults"), Qt::LeftButton);
    EXPECT_EQ(ui.boxes.size(), 1u);
    EXPECT_EQ(sim.State("rate"), "25");
    EXPECT_EQ(sim.State("break"), "300");
    EXPECT_EQ(sim.State("mark"), "64");
    EXPECT_EQ(view->Shown(view->Input_BreakTime()), "300");
}

TEST_F(SimViewsTest, DefaultsTakeTheDeviceOwnValues) {
    sim.OpenPort();
    Config_Frame* view = OpenFrame();
    ASSERT_NE(view, nullptr);
    Type(view->Input_BreakTime(), "300");
    Type(view->Input_FrameRate(), "30");
    view->Button_Defaults_Click();
    EXPECT_TRUE(ui.boxes.empty());
    EXPECT_EQ(view->Shown(view->Input_FrameRate()), "40");
    EXPECT_EQ(view->Shown(view->Input_BreakTime()), "176");
    EXPECT_EQ(view->Shown(view->Input_MarkTime()), "20");
    EXPECT_EQ(view->Shown(view->Input_DelayTime()), "10");
    EXPECT_EQ(sim.State("break"), "176");
}

TEST_F(SimViewsTest, DeviceInformationShowsTheIdentity) {
    sim.OpenPort();
    panel->OpenForm(System_Info::kName, false, iState);
    auto* view = dynamic_cast<System_Info*>(Forms::Find(System_Info::kName));
    ASSERT_NE(view, nullptr);
    auto info = [&](int i) {
        return view->findChild<QLabel*>(QStringLiteral("LabelInfo_%1").arg(i))->text().toStdString();
    };
    EXPECT_EQ(info(0), "DMX-ZOL MK1 USB DMX512/RDM Interface");
    EXPECT_EQ(info(1), "10000417");
    EXPECT_EQ(info(2), "MK1 Rev C");
    EXPECT_EQ(info(3), "1.0.4\n  Build 1187");
    EXPECT_EQ(info(4), "6B 72 : 00 98 98 21");
    EXPECT_TRUE(ui.boxes.empty());
}

TEST_F(SimViewsTest, FirmwareUploadSucceedsAndTheNewVersionClearsTheUpdateNotice) {
    AUF_Registry::WriteValue("ModelFirmware-2", SettingValue(std::string("1.0.6")));
    sim.OpenPort();
    iState->Probe(true);
    ASSERT_TRUE(iState->Updates());
    const std::string image = WriteImage("mk1-1.0.6.fud", 2, "1.0.6");
    sim.Control("upload-time 0.6 0.6");
    sim.Control("clock real");

    // Closes the progress view once it has ended, as the user would.
    std::string ending;
    QTimer poll;
    poll.setInterval(20);
    QObject::connect(&poll, &QTimer::timeout, [&] {
        auto* prog = dynamic_cast<Config_Prog*>(Forms::Find(Config_Prog::kName));
        auto* exit = prog != nullptr ? prog->findChild<QPushButton*>("ButtonExit") : nullptr;
        if (exit != nullptr && exit->isEnabled()) {
            ending = prog->findChild<QLabel*>("LabelInfo_2")->text().toStdString();
            exit->click();
        }
    });
    poll.start();
    Select(image);
    poll.stop();

    EXPECT_EQ(ending, "Success ");
    EXPECT_EQ(sim.State("firmware"), "1.0.6");
    EXPECT_FALSE(iState->Updates());
    EXPECT_TRUE(ui.boxes.empty());
    EXPECT_EQ(disconnects, 0);
    EXPECT_EQ(AUF_Registry::ReadString("SourceDir"), folder.string());
}

TEST_F(SimViewsTest, ImageForAnotherModelIsIncompatible) {
    sim.OpenPort();
    const std::string image = WriteImage("model1.fud", 1, "0.3.12");
    try {
        Select(image);
        ADD_FAILURE() << "the selection should have thrown";
    } catch (const ZolError& error) {
        EXPECT_EQ(error.Code(), err::ErrAPI_ProgFile_Compat);
        EXPECT_EQ(ErrTrap::Message(error.Code()), "Binary File not compatible with this device");
    }
    EXPECT_EQ(sim.State("firmware"), "1.0.4");
    EXPECT_TRUE(ui.boxes.empty());
    EXPECT_EQ(Forms::Find(Config_Prog::kName), nullptr);
}

TEST_F(SimViewsTest, CorruptImageFailsItsIntegrityCheck) {
    sim.OpenPort();
    const std::string image = WriteImage("broken.fud", 2, "1.0.6", true);
    try {
        Select(image);
        ADD_FAILURE() << "the selection should have thrown";
    } catch (const ZolError& error) {
        EXPECT_EQ(error.Code(), err::ErrAPI_ProgFile_Corrupt);
        EXPECT_EQ(ErrTrap::Message(error.Code()), "Binary File failed Integrity Check");
    }
    EXPECT_EQ(sim.State("firmware"), "1.0.4");
    EXPECT_TRUE(ui.boxes.empty());
}

TEST_F(SimViewsTest, StalledDeviceTimesOutOnThe21stAndThe121stUnchangedTick) {
    sim.OpenPort();
    const std::string image = WriteImage("mk1-1.0.6.fud", 2, "1.0.6");
    Client::ReProgram((folder / image).string());

    // The clock stands still: the upload makes no progress.
    panel->OpenForm(Config_Prog::kName, false);
    auto* view = dynamic_cast<Config_Prog*>(Forms::Find(Config_Prog::kName));
    ASSERT_NE(view, nullptr);
    view->TimerUpdate()->stop();
    auto status = [&] { return view->findChild<QLabel*>("LabelInfo_2")->text().toStdString(); };
    view->TimerUpdate_Timer();
    EXPECT_EQ(status(), "Uploading Image");
    for (int i = 0; i < 20; ++i) {
        view->TimerUpdate_Timer();
    }
    EXPECT_EQ(status(), "Uploading Image");
    view->TimerUpdate_Timer();
    EXPECT_EQ(status(), "Timed Out");
    EXPECT_FALSE(view->TimerUpdate()->isActive());
    view->Unload();
    test::CloseAllViews();

    // The image is in; the device configures itself and stays there.
    sim.Control("advance 5");
    root->OpenForm("Test_Panel", false);
    panel = dynamic_cast<PanelStub*>(Forms::Find("Test_Panel"))->Form();
    panel->OpenForm(Config_Prog::kName, false);
    view = dynamic_cast<Config_Prog*>(Forms::Find(Config_Prog::kName));
    ASSERT_NE(view, nullptr);
    view->TimerUpdate()->stop();
    view->TimerUpdate_Timer();
    EXPECT_EQ(status(), "Configuring.");
    for (int i = 0; i < 120; ++i) {
        view->TimerUpdate_Timer();
    }
    EXPECT_NE(status(), "Timed Out");
    EXPECT_FALSE(view->findChild<QPushButton*>("ButtonExit")->isEnabled());
    view->TimerUpdate_Timer();
    EXPECT_EQ(status(), "Timed Out");
    EXPECT_TRUE(view->findChild<QPushButton*>("ButtonExit")->isEnabled());
    EXPECT_EQ(ui.beeps, 2);
}

} // namespace
} // namespace zol
