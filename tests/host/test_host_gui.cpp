// zol-host's window driving the built plug-in (libzol-plugin.so) on the simulated interface.
#include "host/PluginLoader.h"
#include "host/gui/FaderDesk.h"
#include "host/gui/HostWindow.h"
#include "host/gui/InputMonitor.h"
#include "services/settings/AUF_Registry.h"
#include "tests/support/QtTestEnvironment.h"
#include "tests/support/ScopedConfigDir.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QProcessEnvironment>
#include <QRadioButton>
#include <QSlider>
#include <QSpinBox>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <dlfcn.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <sstream>

namespace zol::test {
namespace {

using host::FaderDesk;
using host::HostWindow;
using host::InputMonitor;
using host::PluginLoader;

// The console of the simulated interface: the library the plug-in loads from beside itself.
std::string Sim(const std::string& command) {
    using ControlFn = int32_t (*)(const char*, char*, int32_t);
    static ControlFn control = [] {
        void* handle = dlopen((BinDir() + "/libzol-sim.so").c_str(), RTLD_NOW);
        return handle != nullptr ? reinterpret_cast<ControlFn>(dlsym(handle, "SIM_Control")) : nullptr;
    }();
    if (control == nullptr) {
        ADD_FAILURE() << "no SIM_Control in " << BinDir();
        return {};
    }
    char reply[8192] = {};
    EXPECT_GE(control(command.c_str(), reply, sizeof reply), 0) << command << ": " << reply;
    return reply;
}

QWidget* TopLevel(const char* name) {
    for (QWidget* w : QApplication::topLevelWidgets()) {
        if (w->objectName() == QLatin1String(name) && w->isVisible()) {
            return w;
        }
    }
    return nullptr;
}

// Runs `act` with the plug-in's view `name` once it is on screen (inside its modal loop).
void WhenShown(const char* name, std::function<void(QWidget*)> act) {
    auto* timer = new QTimer();
    auto waited = std::make_shared<int>(0);
    timer->setInterval(10);
    QObject::connect(timer, &QTimer::timeout, [timer, name, act, waited] {
        if (QWidget* view = TopLevel(name)) {
            timer->stop();
            timer->deleteLater();
            act(view);
            return;
        }
        if ((*waited += 10) > 10000) {
            timer->stop();
            timer->deleteLater();
            ADD_FAILURE() << name << " did not open";
            // Whatever is open instead is closed, so the test ends rather than waits.
            if (QWidget* modal = QApplication::activeModalWidget()) {
                modal->close();
            }
        }
    });
    timer->start();
}

std::string ReadFile(const std::filesystem::path& path) {
    std::ifstream in(path);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

class HostTest : public ::testing::Test {
protected:
    HostTest() {
        setenv("ZOL_UI", "console", 1);
        Sim("reset");
        std::string why;
        EXPECT_TRUE(loader.Load(BinDir() + "/libzol-plugin.so", why)) << why;
        window = std::make_unique<HostWindow>(loader);
    }
    ~HostTest() override {
        window.reset();
        Sim("reset");
        Sim("trace off");
    }

    // Configure: the panel connects to the remembered port and is closed again; with `inputMode`
    // the mode is switched to DMX in first.
    void ConfigureAndConnect(bool inputMode) {
        bool seen = false;
        WhenShown("User_Main", [&](QWidget* panel) {
            seen = true;
            if (inputMode) {
                QTest::mouseClick(panel->findChild<QRadioButton*>("Option_Mode_1"), Qt::LeftButton);
            }
            QTest::mouseClick(panel->findChild<QWidget*>("Image_Plug_1"), Qt::LeftButton);
            EXPECT_EQ(panel->findChild<QWidget*>("sbStatusBar_Panel_1")->property("text").toString(),
                      "Connected");
            panel->findChild<QAction*>("Menu_File_Exit")->trigger();
        });
        window->findChild<QAction*>("Action_Configure")->trigger();
        EXPECT_TRUE(seen);
    }

    ScopedConfigDir config;
    PluginLoader loader;
    std::unique_ptr<HostWindow> window;
};

TEST_F(HostTest, StartNamesThePluginAndInitialises) {
    ASSERT_TRUE(window->Start());
    EXPECT_EQ(window->PluginName(), "KARN DMX-ZOL MK1 Plugin");
    EXPECT_EQ(window->windowTitle().toStdString(), "zol-host - KARN DMX-ZOL MK1 Plugin");
    EXPECT_EQ(window->LastCode(), 0);
    EXPECT_EQ(window->SessionText().toStdString(), "Session: disabled");
    EXPECT_TRUE(window->findChild<QAction*>("Action_Configure")->isEnabled());
    EXPECT_FALSE(window->findChild<QAction*>("Action_Disable")->isEnabled());
}

TEST_F(HostTest, ConfigureConnectEnableAndAFaderReachesTheDevice) {
    const auto trace = config.Path() / "sim-trace.txt";
    Sim("trace " + trace.string());
    AUF_Registry::WriteValue("PortUsed", std::string("ZOL USB 1"));
    ASSERT_TRUE(window->Start());
    window->show();
    ConfigureAndConnect(false);
    EXPECT_EQ(window->StatusText().toStdString(), "Configure: a port is ready");

    window->findChild<QAction*>("Action_Enable")->trigger();
    EXPECT_EQ(window->LastCode(), 0);
    EXPECT_EQ(window->SessionText().toStdString(), "Session: enabled");

    // Slot 1 by its fader, slot 2 by typing a level.
    QSlider* fader = window->Desk()->Fader(0);
    fader->setFocus();
    QTest::keyClick(fader, Qt::Key_PageUp);
    EXPECT_EQ(window->Desk()->Level(1), 16);
    QSpinBox* box = window->Desk()->LevelBox(1);
    box->setFocus();
    box->selectAll();
    QTest::keyClicks(box, "128");
    QTest::keyClick(box, Qt::Key_Return);
    EXPECT_EQ(window->Desk()->Level(2), 128);
    EXPECT_EQ(window->Desk()->Fader(1)->value(), 128);
    EXPECT_EQ(window->StatusText().toStdString(), "Slot 2 = 128");

    EXPECT_EQ(Sim("slot 1"), "16");
    EXPECT_EQ(Sim("slot 2"), "128");
    const std::string lines = ReadFile(trace);
    EXPECT_NE(lines.find("KDI_Command 25 01 00 10 -> 0"), std::string::npos) << lines;
    EXPECT_NE(lines.find("KDI_Command 25 02 00 80 -> 0"), std::string::npos) << lines;

    window->findChild<QAction*>("Action_Disable")->trigger();
    EXPECT_EQ(window->SessionText().toStdString(), "Session: disabled");
}

TEST_F(HostTest, InputModeFillsTheMonitor) {
    AUF_Registry::WriteValue("PortUsed", std::string("ZOL USB 1"));
    ASSERT_TRUE(window->Start());
    window->show();
    ConfigureAndConnect(true);
    window->findChild<QAction*>("Action_Enable")->trigger();
    ASSERT_EQ(window->LastCode(), 0);
    PumpFor(1200);
    InputMonitor* monitor = window->Monitor();
    EXPECT_GE(monitor->Received(), 512);
    EXPECT_EQ(monitor->Rejected(), 0);
    // The simulated input holds (s - 1 + 8k) mod 256 in slot s: one k for the whole frame.
    const int offset = monitor->Level(1);
    for (int slot = 1; slot <= 512; ++slot) {
        ASSERT_EQ(monitor->Level(slot), (slot - 1 + offset) % 256) << "slot " << slot;
    }
    // In DMX-in mode the plug-in takes no levels.
    window->Desk()->SetLevel(5, 99);
    EXPECT_EQ(window->StatusText().toStdString(),
              "Slot 5: level 99 not taken (the plug-in is in DMX-in mode)");
    window->findChild<QAction*>("Action_Disable")->trigger();
}

TEST_F(HostTest, PluginErrorShowsSourceAndDescription) {
    AUF_Registry::WriteValue("PortUsed", std::string("ZOL USB 1"));
    ASSERT_TRUE(window->Start());
    window->findChild<QAction*>("Action_Enable")->trigger();
    ASSERT_EQ(window->LastCode(), 0);
    Sim("port 1 unplug");
    window->Desk()->SetLevel(3, 200);
    EXPECT_EQ(window->LastCode(), 0x1102);
    const std::string status = window->StatusText().toStdString();
    EXPECT_NE(status.find("SetChannel failed: 0x1102"), std::string::npos) << status;
    // The error's own source (the plug-in's file name, where the device library's failure was raised)
    // and its description, the catalogue's name and the raw code.
    EXPECT_NE(status.find("zol-plugin: ErrAPI_DeviceMissig $102"), std::string::npos) << status;
}

TEST_F(HostTest, TermEndsThePlugin) {
    ASSERT_TRUE(window->Start());
    window->findChild<QAction*>("Action_Term")->trigger();
    EXPECT_EQ(window->LastCode(), 0);
    EXPECT_EQ(window->SessionText().toStdString(), "Session: ended");
    EXPECT_FALSE(window->findChild<QAction*>("Action_Enable")->isEnabled());
    EXPECT_FALSE(window->Desk()->isEnabled());
}

// Renders the window, with levels on the desk and the device's input in the monitor, to
// <build>/artifacts/zol_host.png.
TEST_F(HostTest, Screenshot) {
    AUF_Registry::WriteValue("PortUsed", std::string("ZOL USB 1"));
    ASSERT_TRUE(window->Start());
    window->show();
    // A few levels on the desk (kept by the plug-in until the session starts), then DMX in.
    const int levels[] = {255, 224, 192, 160, 128, 96, 64, 32, 0, 40, 80, 120, 160, 200, 240, 255};
    for (int i = 0; i < FaderDesk::kStrips; ++i) {
        window->Desk()->Fader(i)->setValue(levels[i]);
    }
    ConfigureAndConnect(true);
    window->findChild<QAction*>("Action_Enable")->trigger();
    PumpFor(1200);
    window->adjustSize();
    QTest::qWait(20);
    const QString dir = QString::fromStdString(BinDir()) + QStringLiteral("/../artifacts");
    QDir().mkpath(dir);
    const QString path = QDir(dir).absoluteFilePath(QStringLiteral("zol_host.png"));
    ASSERT_TRUE(window->grab().save(path)) << path.toStdString();
    for (QWidget* child : window->findChildren<QWidget*>()) {
        if (child->isVisible() && !child->isWindow()) {
            EXPECT_TRUE(child->parentWidget()->rect().contains(child->geometry()))
                << child->objectName().toStdString() << " sticks out of its parent";
        }
    }
    window->findChild<QAction*>("Action_Disable")->trigger();
}

// ---- The program ----

struct HostRun {
    int exitCode = -1;
    std::string errors;
};

HostRun RunHost(const QStringList& arguments,
                const QProcessEnvironment& environment = QProcessEnvironment::systemEnvironment()) {
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(QString::fromStdString(BinDir() + "/zol-host"), arguments);
    HostRun run;
    if (!process.waitForFinished(30000)) {
        process.kill();
        process.waitForFinished();
        ADD_FAILURE() << "zol-host did not end";
        return run;
    }
    run.exitCode = process.exitCode();
    run.errors = process.readAllStandardError().toStdString();
    return run;
}

TEST(HostProgram, MissingPluginIsToldAndTheProgramEnds) {
    const HostRun run =
        RunHost({QStringLiteral("--plugin"), QStringLiteral("/nonexistent/libzol-plugin.so")});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_NE(run.errors.find("zol-host: the plug-in could not be loaded"), std::string::npos) << run.errors;
}

TEST(HostProgram, ARigTheSimulatorRefusesIsToldWithTheSimulatorsReason) {
    QTemporaryDir folder;
    ASSERT_TRUE(folder.isValid());
    const QString rig = folder.filePath(QStringLiteral("broken.json"));
    {
        QFile file(rig);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("{ \"name\": \"broken\", \"ports\": [ { \"name\": 7 } ] }");
    }
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("ZOL_SIM_RIG"), rig);
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), folder.filePath(QStringLiteral("config")));
    const HostRun run = RunHost({QStringLiteral("--headless")}, environment);
    EXPECT_EQ(run.exitCode, 3);
    EXPECT_NE(run.errors.find("offers no port (0: Rig refused: " + rig.toStdString() + ": ports[0].name"),
              std::string::npos)
        << run.errors;
}

TEST(HostProgram, UnknownOptionGivesUsage) {
    const HostRun run = RunHost({QStringLiteral("--frobnicate")});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_NE(run.errors.find("usage: zol-host [--plugin PATH]"), std::string::npos) << run.errors;
}

// ---- The desk and the monitor on their own ----

TEST(FaderDesk, BanksShowTheirSlotsAndKeepLevels) {
    FaderDesk desk;
    std::vector<std::pair<int, int>> changes;
    QObject::connect(&desk, &FaderDesk::levelChanged,
                     [&](int slot, int level) { changes.emplace_back(slot, level); });
    desk.Fader(0)->setValue(10);
    desk.ShowBank(31);
    EXPECT_EQ(desk.findChild<QWidget*>("Label_Slot_15")->property("text").toString(), "512");
    desk.Fader(15)->setValue(255);
    desk.ShowBank(0);
    EXPECT_EQ(desk.Fader(0)->value(), 10);
    EXPECT_EQ(desk.Level(512), 255);
    EXPECT_EQ(changes, (std::vector<std::pair<int, int>>{{1, 10}, {512, 255}}));
    // A level set for a slot of another bank is told as well.
    desk.SetLevel(300, 7);
    EXPECT_EQ(changes.back(), std::make_pair(300, 7));
    EXPECT_EQ(desk.Level(300), 7);
}

TEST(FaderDesk, BankButtonsAndChoice) {
    FaderDesk desk;
    QTest::mouseClick(desk.findChild<QWidget*>("Button_BankUp"), Qt::LeftButton);
    EXPECT_EQ(desk.Bank(), 1);
    EXPECT_EQ(desk.findChild<QWidget*>("Label_Slot_0")->property("text").toString(), "17");
    desk.findChild<QComboBox*>("Combo_Bank")->setCurrentIndex(5);
    EXPECT_EQ(desk.Bank(), 5);
    QTest::mouseClick(desk.findChild<QWidget*>("Button_BankDown"), Qt::LeftButton);
    EXPECT_EQ(desk.Bank(), 4);
}

TEST(InputMonitor, KeepsLevelsAndRejectsOutOfRange) {
    InputMonitor monitor;
    monitor.SetLevel(1, 255);
    monitor.SetLevel(512, 3);
    monitor.SetLevel(0, 1);
    monitor.SetLevel(513, 1);
    monitor.SetLevel(2, 256);
    EXPECT_EQ(monitor.Level(1), 255);
    EXPECT_EQ(monitor.Level(512), 3);
    EXPECT_EQ(monitor.Received(), 2);
    EXPECT_EQ(monitor.Rejected(), 3);
}

} // namespace
} // namespace zol::test
