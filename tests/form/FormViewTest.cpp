// The Qt view base under the view controller: real dialogs, modal shows ended by timers, the close
// box, and positions kept in twips.
#include "framework/form/FormView.h"

#include "device_link/core/ErrTrap.h"
#include "framework/form/Forms.h"
#include "framework/form/HCF_Form.h"
#include "services/settings/AUF_Registry.h"
#include "tests/support/QtTestEnvironment.h"
#include "tests/support/ScopedConfigDir.h"
#include "tests/support/ScriptedUi.h"

#include <QApplication>
#include <QPointer>
#include <QTimer>
#include <gtest/gtest.h>

namespace zol {
namespace {

using test::ScopedConfigDir;
using test::ScriptedUi;

class SmallView : public FormView {
public:
    explicit SmallView(const std::string& name) : FormView(name) { resize(200, 100); }
    void Continue() override { ++continues; }
    int continues = 0;
};

// A view whose first fill meets a lost device and closes itself before it is ever shown.
class SelfClosingView : public FormView {
public:
    SelfClosingView() : FormView("Qt_SelfClosing") {}

protected:
    void OnControl() override {
        try {
            ErrTrap::Raise(0x102);
        } catch (const ZolError&) {
            Form()->BugOut(ErrTrap::Capture());
        }
    }
};

class FormViewTest : public ::testing::Test {
protected:
    void SetUp() override {
        ErrTrap::ResetForTest();
        Forms::Register("Qt_Parent", [] { return new SmallView("Qt_Parent"); });
        Forms::Register("Qt_Child", [] { return new SmallView("Qt_Child"); });
    }
    void TearDown() override {
        Forms::UnloadAll();
        Forms::Unregister("Qt_Parent");
        Forms::Unregister("Qt_Child");
    }
    static SmallView* Open(const std::string& name) { return dynamic_cast<SmallView*>(Forms::Find(name)); }

    ScopedConfigDir config;
    ScriptedUi ui;
};

TEST_F(FormViewTest, AModalChainCarriesTheChildsCodeToTheParentAndTheRootEndsIt) {
    int32_t caught = 0;
    int parentContinues = -1;
    QTimer::singleShot(50, [&] {
        SmallView* parent = Open("Qt_Parent");
        ASSERT_NE(parent, nullptr);
        EXPECT_TRUE(parent->isVisible());
        QTimer::singleShot(50, [&] {
            SmallView* child = Open("Qt_Child");
            ASSERT_NE(child, nullptr);
            EXPECT_TRUE(child->isModal());
            child->Form()->BugOut(err::ErrSYS_Comms);
        });
        try {
            parent->Form()->OpenForm("Qt_Child", true);
        } catch (const ZolError& e) {
            caught = e.Code();
        }
        parentContinues = parent->continues;
        parent->Unload();
    });
    auto root = HCF_Form::Create();
    root->OpenForm("Qt_Parent", true);
    EXPECT_EQ(caught, err::ErrSYS_Comms);
    EXPECT_EQ(parentContinues, 1);
    EXPECT_EQ(Forms::Find("Qt_Parent"), nullptr);
    EXPECT_EQ(Forms::Find("Qt_Child"), nullptr);
}

TEST_F(FormViewTest, AViewThatClosesItselfDuringItsFirstFillIsNeverShownAndItsCodeReachesTheOpener) {
    Forms::Register("Qt_SelfClosing", [] { return new SelfClosingView(); });
    // Were the closed view shown modally, nothing would end the show: a timer would have to.
    bool stillWaiting = false;
    QTimer guard;
    guard.setSingleShot(true);
    QObject::connect(&guard, &QTimer::timeout, [&] {
        stillWaiting = true;
        for (QWidget* w : QApplication::topLevelWidgets()) {
            w->hide();
        }
    });
    guard.start(3000);
    int32_t caught = 0;
    auto root = HCF_Form::Create();
    try {
        root->OpenForm("Qt_SelfClosing", true);
    } catch (const ZolError& e) {
        caught = e.Code();
    }
    guard.stop();
    Forms::Unregister("Qt_SelfClosing");
    EXPECT_FALSE(stillWaiting);
    EXPECT_EQ(caught, err::ErrAPI_DeviceMissig);
    EXPECT_EQ(Forms::Find("Qt_SelfClosing"), nullptr);
}

TEST_F(FormViewTest, TheCloseBoxUnloadsTheViewAndStoresItsPositionInTwips) {
    QPointer<SmallView> seen;
    QTimer::singleShot(50, [&] {
        seen = Open("Qt_Parent");
        ASSERT_FALSE(seen.isNull());
        seen->move(100, 50);
        seen->close();
    });
    HCF_Form::Create()->OpenForm("Qt_Parent", true);
    EXPECT_EQ(Forms::Find("Qt_Parent"), nullptr);
    EXPECT_EQ(AUF_Registry::ReadLong("Qt_Parent_PosX", -1), 1500);
    EXPECT_EQ(AUF_Registry::ReadLong("Qt_Parent_PosY", -1), 750);
    // The object itself goes when the event loop runs.
    test::PumpFor(20);
    EXPECT_TRUE(seen.isNull());
}

TEST_F(FormViewTest, AStoredPositionPlacesTheDialogInPixels) {
    AUF_Registry::WriteValue("Qt_Parent_PosX", int16_t(300));
    AUF_Registry::WriteValue("Qt_Parent_PosY", int16_t(450));
    QPoint where;
    QTimer::singleShot(50, [&] {
        SmallView* view = Open("Qt_Parent");
        where = view->frameGeometry().topLeft();
        EXPECT_FLOAT_EQ(view->Left(), 300);
        EXPECT_FLOAT_EQ(view->Top(), 450);
        view->Unload();
    });
    HCF_Form::Create()->OpenForm("Qt_Parent", true);
    EXPECT_EQ(where, QPoint(20, 30));
}

TEST_F(FormViewTest, EscapeUnloadsTheViewLikeItsCloseBox) {
    QTimer::singleShot(50, [&] { QMetaObject::invokeMethod(Open("Qt_Parent"), "reject"); });
    HCF_Form::Create()->OpenForm("Qt_Parent", true);
    EXPECT_EQ(Forms::Find("Qt_Parent"), nullptr);
}

TEST_F(FormViewTest, UnloadAllDeletesEveryOpenView) {
    QPointer<SmallView> view = static_cast<SmallView*>(Forms::Add("Qt_Parent"));
    view->Show(false);
    ASSERT_TRUE(view->isVisible());
    Forms::UnloadAll();
    EXPECT_TRUE(view.isNull());
    EXPECT_TRUE(Forms::All().empty());
}

} // namespace
} // namespace zol
