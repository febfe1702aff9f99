#pragma once
// The main panel and the connection view on a real Qt screen (offscreen) against the simulated
// interface: the session object, a root controller, the console of the simulated device, and a
// way to act inside a modal view while it is open.

#include "device_link/core/Client.h"
#include "device_link/core/ErrTrap.h"
#include "device_link/views/DeviceViews.h"
#include "framework/form/Forms.h"
#include "framework/form/HCF_Form.h"
#include "plugin/core/UDC_Control.h"
#include "plugin/panel/User_Main.h"
#include "tests/support/QtTestEnvironment.h"
#include "tests/support/ScopedConfigDir.h"
#include "tests/support/ScriptedUi.h"

#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QTest>
#include <QTimer>
#include <QWidget>
#include <dlfcn.h>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <string>

namespace zol::test {

// The console of the simulated interface loaded by Client (the same library, so the same device).
inline std::string Sim(const std::string& command) {
    using ControlFn = int32_t (*)(const char*, char*, int32_t);
    static ControlFn control = [] {
        void* handle = dlopen((BinDir() + "/libzol-sim.so").c_str(), RTLD_NOW);
        return handle != nullptr ? reinterpret_cast<ControlFn>(dlsym(handle, "SIM_Control")) : nullptr;
    }();
    if (control == nullptr) {
        ADD_FAILURE() << "libzol-sim.so or its SIM_Control is missing in " << BinDir();
        return {};
    }
    char reply[4096] = {};
    const int32_t rc = control(command.c_str(), reply, sizeof reply);
    EXPECT_GE(rc, 0) << command << ": " << reply;
    return reply;
}

// Runs `act` with the view `name` once it is open and shown (inside its modal loop). Fails the
// test if the view does not appear within `timeoutMs`.
inline void WhenShown(const std::string& name, std::function<void(QWidget*)> act, int timeoutMs = 5000) {
    auto* timer = new QTimer();
    auto waited = std::make_shared<int>(0);
    timer->setInterval(10);
    QObject::connect(timer, &QTimer::timeout, [timer, name, act, waited, timeoutMs] {
        auto* view = dynamic_cast<QWidget*>(Forms::Find(name));
        if (view != nullptr && view->isVisible()) {
            timer->stop();
            timer->deleteLater();
            act(view);
            return;
        }
        *waited += 10;
        if (*waited > timeoutMs) {
            timer->stop();
            timer->deleteLater();
            ADD_FAILURE() << "view " << name << " did not open";
        }
    });
    timer->start();
}

template <typename T> T* Child(QObject* parent, const char* name) {
    T* found = parent->findChild<T*>(QString::fromLatin1(name));
    EXPECT_NE(found, nullptr) << "no control " << name;
    return found;
}

class PanelFixture : public ::testing::Test {
protected:
    PanelFixture() {
        ErrTrap::ResetForTest();
        Client::SetLibrary(nullptr);
        Client::ResetStateForTest();
        Sim("reset");
        RegisterMainPanelViews();
        RegisterDeviceViews();
        control = std::make_shared<UDC_Control>();
        control->Initialise(nullptr, "TestHost", "Plugins\\zol-plugin");
        root = HCF_Form::Create();
    }
    ~PanelFixture() override {
        Forms::UnloadAll();
        if (control && control->Port()->InUse()) {
            ui.AllowAnyBoxes();
            control->Port()->Release();
        }
        Sim("reset");
    }

    // Opens the panel without a modal loop, so the test can work it.
    User_Main* OpenPanel() {
        root->OpenForm(User_Main::kName, false, control);
        auto* panel = dynamic_cast<User_Main*>(Forms::Find(User_Main::kName));
        EXPECT_NE(panel, nullptr);
        if (panel != nullptr) {
            panel->activateWindow();
            EXPECT_TRUE(QTest::qWaitForWindowExposed(panel));
        }
        return panel;
    }

    std::string Status(QWidget* panel) {
        return Child<QLabel>(panel, "sbStatusBar_Panel_1")->text().toStdString();
    }
    QWidget* Widget(QWidget* view, const char* name) { return Child<QWidget>(view, name); }
    QAction* Action(QWidget* view, const char* name) { return Child<QAction>(view, name); }
    void Click(QWidget* view, const char* name, Qt::MouseButton button = Qt::LeftButton) {
        QWidget* w = Widget(view, name);
        ASSERT_NE(w, nullptr);
        ASSERT_TRUE(w->isVisible()) << name << " is not shown";
        QTest::mouseClick(w, button);
    }

    ScopedConfigDir config;
    ScriptedUi ui;
    std::shared_ptr<UDC_Control> control;
    std::shared_ptr<HCF_Form> root;
};

} // namespace zol::test
