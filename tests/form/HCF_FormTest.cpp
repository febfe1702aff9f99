// The view controller against views without a toolkit: the order of events when a view opens,
// positions kept in the settings store, the chain of return codes and the failure traps.
#include "framework/form/HCF_Form.h"

#include "device_link/core/ErrTrap.h"
#include "framework/form/Forms.h"
#include "services/settings/AUF_Registry.h"
#include "tests/form/FakeView.h"
#include "tests/support/ScopedConfigDir.h"
#include "tests/support/ScriptedUi.h"

#include <gtest/gtest.h>

namespace zol {
namespace {

using test::FakeView;
using test::HaltSignal;
using test::ScopedConfigDir;
using test::ScriptedUi;
using test::ViewZoo;

class Thing : public DataObject {
public:
    explicit Thing(std::string cls = "Thing") : cls_(std::move(cls)) {}
    std::string DataClass() const override { return cls_; }

private:
    std::string cls_;
};

// An object with no DataClass member of its own.
class Mute : public DataObject {};

class HcfFormTest : public ::testing::Test {
protected:
    void SetUp() override {
        ErrTrap::ResetForTest();
        Forms::SetScreenSizeForTest(12000, 9000);
    }
    void TearDown() override { Forms::SetScreenSizeForTest(-1, -1); }

    int32_t CodeOf(const std::function<void()>& call) {
        try {
            call();
        } catch (const ZolError& e) {
            return e.Code();
        }
        return 0;
    }

    ScopedConfigDir config;
    ScriptedUi ui;
    ViewZoo zoo;
};

TEST_F(HcfFormTest, OpeningAViewThatIsAlreadyOpenMakesNoNewControllerAndDropsTheNewData) {
    zoo.Register("Child");
    auto root = HCF_Form::Create();
    auto first = std::make_shared<Thing>("First");
    root->OpenForm("Child", true, first);
    FakeView* child = zoo.Last("Child");
    ASSERT_NE(child, nullptr);
    auto controller = child->form;

    root->OpenForm("Child", true, std::make_shared<Thing>("Second"));

    EXPECT_EQ(zoo.Made("Child"), 1);
    EXPECT_EQ(child->shows, 2);
    EXPECT_EQ(child->form, controller);
    EXPECT_EQ(child->form->DataObject(), first);
    EXPECT_EQ(child->form->DataClass(), "First");
}

TEST_F(HcfFormTest, AViewClosedWhileMinimisedLeavesTheStoredPositionAsItWas) {
    AUF_Registry::WriteValue("Child_PosX", int16_t(1200));
    AUF_Registry::WriteValue("Child_PosY", int16_t(600));
    zoo.Register("Child");
    auto root = HCF_Form::Create();
    root->OpenForm("Child", true);
    FakeView* child = zoo.Last("Child");
    EXPECT_FLOAT_EQ(child->left, 1200);
    EXPECT_FLOAT_EQ(child->top, 600);
    child->left = 4500;
    child->top = 3000;
    child->windowState = 1;
    child->Unload();
    EXPECT_EQ(AUF_Registry::ReadLong("Child_PosX", -1), 1200);
    EXPECT_EQ(AUF_Registry::ReadLong("Child_PosY", -1), 600);
}

TEST_F(HcfFormTest, ANormalCloseStoresThePositionAndSetsTheDefaultPointer) {
    zoo.Register("Child");
    auto root = HCF_Form::Create();
    root->OpenForm("Child", true);
    FakeView* child = zoo.Last("Child");
    child->left = 4500;
    child->top = 3000;
    ui.SetMousePointer(kPointerHourglass);
    child->Unload();
    EXPECT_EQ(AUF_Registry::ReadLong("Child_PosX", -1), 4500);
    EXPECT_EQ(AUF_Registry::ReadLong("Child_PosY", -1), 3000);
    EXPECT_EQ(ui.MousePointer(), kPointerDefault);
    EXPECT_EQ(child->form->LinkFrm(), nullptr);
    EXPECT_FALSE(child->form->DataIsSet());
    EXPECT_TRUE(child->form->Linked());
}

TEST_F(HcfFormTest, AStoredXValueOfZeroIsHonoured) {
    AUF_Registry::WriteValue("Child_PosX", int16_t(0));
    AUF_Registry::WriteValue("Child_PosY", int16_t(450));
    zoo.Register("Child");
    HCF_Form::Create()->OpenForm("Child", true);
    FakeView* child = zoo.Last("Child");
    EXPECT_FLOAT_EQ(child->left, 0);
    EXPECT_FLOAT_EQ(child->top, 450);
}

TEST_F(HcfFormTest, CentringRoundsTopButLeavesLeftFractional) {
    zoo.Register("Child", [](FakeView& v) {
        v.width = 3001;
        v.height = 2001;
    });
    HCF_Form::Create()->OpenForm("Child", true);
    FakeView* child = zoo.Last("Child");
    EXPECT_FLOAT_EQ(child->left, 4499.5f);
    EXPECT_FLOAT_EQ(child->top, 3500.0f);
}

TEST_F(HcfFormTest, AViewAtANegativeLeftOrTopCannotBeSaved) {
    zoo.Register("Child");
    HCF_Form::Create()->OpenForm("Child", true);
    FakeView* child = zoo.Last("Child");
    child->left = -150;
    child->top = 300;
    ui.AnswerWith([](const test::ShownBox& box) {
        EXPECT_EQ(box.Icon(), vb::Critical);
        return vb::OK;
    });
    EXPECT_THROW(child->Unload(), HaltSignal);
    EXPECT_EQ(ui.halts, 1);
    EXPECT_EQ(AUF_Registry::ReadLong("Child_PosX", -1), -1);
}

TEST_F(HcfFormTest, AViewAtANegativeTopStoresItsLeftAndThenStopsAtTheTop) {
    AUF_Registry::WriteValue("Child_PosY", int16_t(450));
    zoo.Register("Child");
    HCF_Form::Create()->OpenForm("Child", true);
    FakeView* child = zoo.Last("Child");
    child->left = 900;
    child->top = -30;
    ui.AnswerWith([](const test::ShownBox& box) {
        EXPECT_EQ(box.Icon(), vb::Critical);
        return vb::OK;
    });
    EXPECT_THROW(child->Unload(), HaltSignal);
    EXPECT_EQ(ui.halts, 1);
    // Left is written first; the failed write of Top leaves the stored value as it was.
    EXPECT_EQ(AUF_Registry::ReadLong("Child_PosX", -1), 900);
    EXPECT_EQ(AUF_Registry::ReadLong("Child_PosY", -1), 450);
}

TEST_F(HcfFormTest, BugOutOnAClosedControllerStoresTheCodeAndDoesNothingElse) {
    zoo.Register("Parent");
    zoo.Register("Child");
    auto root = HCF_Form::Create();
    root->OpenForm("Parent", true);
    FakeView* parent = zoo.Last("Parent");
    parent->form->OpenForm("Child", true);
    FakeView* child = zoo.Last("Child");
    child->Unload();
    const int continuesBefore = parent->continues;
    const size_t journalBefore = zoo.journal.size();

    child->form->BugOut(err::ErrSYS_Comms);

    EXPECT_EQ(child->form->ReturnCode(), err::ErrSYS_Comms);
    EXPECT_EQ(parent->continues, continuesBefore);
    EXPECT_EQ(parent->form->ReturnCode(), 0);
    EXPECT_EQ(zoo.journal.size(), journalBefore);
}

TEST_F(HcfFormTest, DataClassWithNoDataYieldsTheEmptyStringNotNotStated) {
    auto root = HCF_Form::Create();
    EXPECT_FALSE(root->DataIsSet());
    EXPECT_EQ(root->DataClass(), "");
}

TEST_F(HcfFormTest, DataClassOfAnObjectWithoutTheMemberIsNotStated) {
    zoo.Register("Child");
    HCF_Form::Create()->OpenForm("Child", true, std::make_shared<Mute>());
    EXPECT_EQ(zoo.Last("Child")->dataClassAtControl, "Not Stated");
}

TEST_F(HcfFormTest, OpenFormMakesTheViewThenPositionsItThenHandsItItsControllerThenShowsIt) {
    zoo.Register("Child");
    HCF_Form::Create()->OpenForm("Child", true, std::make_shared<Thing>());
    const std::vector<std::string> expected{"Child: load", "Child: left", "Child: top", "Child: control",
                                            "Child: show modal"};
    EXPECT_EQ(zoo.journal, expected);
    EXPECT_EQ(zoo.Last("Child")->dataClassAtControl, "Thing");
}

TEST_F(HcfFormTest, AChildsBugOutIsRaisedInItsOpenerWhenTheModalShowReturns) {
    int32_t caught = 0;
    zoo.Register("Child", [](FakeView& v) {
        v.onShow = [](FakeView& self) { self.form->BugOut(err::ErrSYS_Comms); };
    });
    zoo.Register("Parent", [&](FakeView& v) {
        v.onShow = [&](FakeView& self) {
            caught = CodeOf([&] { self.form->OpenForm("Child", true); });
            self.Unload();
        };
    });
    auto root = HCF_Form::Create();
    EXPECT_NO_THROW(root->OpenForm("Parent", true));
    EXPECT_EQ(caught, err::ErrSYS_Comms);
    FakeView* parent = zoo.Last("Parent");
    EXPECT_EQ(parent->continues, 1);
    EXPECT_TRUE(zoo.Last("Child")->unloaded);
    // The root drops the code: the chain ends there.
    EXPECT_EQ(root->ReturnCode(), 0);
}

TEST_F(HcfFormTest, ADeviceFailureInTheFirstFillClosesTheViewUnseenAndReachesTheOpener) {
    zoo.Register("Parent");
    zoo.Register("Child", [](FakeView& v) { v.onControl = [](FakeView&) { ErrTrap::Raise(0x102); }; });
    auto root = HCF_Form::Create();
    root->OpenForm("Parent", true);
    FakeView* parent = zoo.Last("Parent");

    EXPECT_EQ(CodeOf([&] { parent->form->OpenForm("Child", true); }), err::ErrAPI_DeviceMissig);

    FakeView* child = zoo.Last("Child");
    EXPECT_EQ(child->shows, 0);
    EXPECT_TRUE(child->unloaded);
    EXPECT_EQ(child->form->ReturnCode(), err::ErrAPI_DeviceMissig);
    EXPECT_EQ(parent->form->ReturnCode(), err::ErrAPI_DeviceMissig);
    EXPECT_EQ(Forms::Find("Child"), nullptr);
}

TEST_F(HcfFormTest, AnotherFailureInTheFirstFillUnloadsTheViewAndIsRaisedAgain) {
    zoo.Register("Parent");
    zoo.Register("Child", [](FakeView& v) {
        v.onControl = [](FakeView&) { ErrTrap::RaiseLocal("Class object \"X\" not handled"); };
    });
    auto root = HCF_Form::Create();
    root->OpenForm("Parent", true);
    FakeView* parent = zoo.Last("Parent");

    EXPECT_EQ(CodeOf([&] { parent->form->OpenForm("Child", true); }), err::ErrSYS_Local);

    FakeView* child = zoo.Last("Child");
    EXPECT_EQ(child->shows, 0);
    EXPECT_TRUE(child->unloaded);
    EXPECT_EQ(parent->form->ReturnCode(), 0);
    EXPECT_TRUE(ui.boxes.empty());
}

TEST_F(HcfFormTest, AnUnknownViewNameFailsInOpenFormAndIsRaisedToTheCaller) {
    auto root = HCF_Form::Create();
    try {
        root->OpenForm("No_Such_View", true);
        FAIL() << "no error";
    } catch (const ZolError& e) {
        EXPECT_EQ(e.Code(), rt::InvalidCall);
        EXPECT_EQ(e.Description(), "Form No_Such_View not registered");
    }
    EXPECT_TRUE(ui.boxes.empty());
}

TEST_F(HcfFormTest, ANonModalOpenHidesTheOpenersView) {
    zoo.Register("Parent");
    zoo.Register("Child");
    HCF_Form::Create()->OpenForm("Parent", true);
    FakeView* parent = zoo.Last("Parent");
    parent->form->OpenForm("Child", false);
    EXPECT_FALSE(parent->visible);
    EXPECT_FALSE(zoo.Last("Child")->lastShowModal);
    EXPECT_TRUE(zoo.Last("Child")->visible);
}

TEST_F(HcfFormTest, InitialiseOnALinkedControllerShowsTheLocalErrorAndKeepsTheLink) {
    zoo.Register("Child");
    HCF_Form::Create()->OpenForm("Child", true);
    FakeView* child = zoo.Last("Child");
    FakeView other("Other");
    ui.Expect("Control already assingned", vb::OK, std::string("HCF_Form.Initialise"));
    EXPECT_NO_THROW(child->form->Initialise(&other, nullptr, nullptr));
    EXPECT_EQ(child->form->LinkFrm(), child);
}

TEST_F(HcfFormTest, XLinkOnALinkedControllerShowsAStopBoxAndStops) {
    FakeView first("First");
    FakeView second("Second");
    auto form = HCF_Form::Create();
    first.left = 700;
    form->X_Link(&first);
    EXPECT_TRUE(form->Linked());
    EXPECT_FLOAT_EQ(first.left, 0);
    EXPECT_FLOAT_EQ(first.top, 0);
    ui.AnswerWith([](const test::ShownBox& box) {
        EXPECT_EQ(box.prompt, "Control already assingned");
        EXPECT_EQ(box.Icon(), vb::Critical);
        return vb::OK;
    });
    EXPECT_THROW(form->X_Link(&second), HaltSignal);
}

TEST_F(HcfFormTest, HideOnAnUnlinkedControllerShowsAPlainBoxAndStops) {
    auto root = HCF_Form::Create();
    ui.AnswerWith([](const test::ShownBox& box) {
        EXPECT_EQ(box.prompt, "Object not linked to a form");
        EXPECT_EQ(box.style, vb::OKOnly);
        return vb::OK;
    });
    EXPECT_THROW(root->Hide(), HaltSignal);
}

TEST_F(HcfFormTest, AncestorWalksUpTheChainAndFailsPastTheRoot) {
    zoo.Register("Parent");
    zoo.Register("Child");
    HCF_Form::Create()->OpenForm("Parent", true);
    FakeView* parent = zoo.Last("Parent");
    parent->form->OpenForm("Child", true);
    FakeView* child = zoo.Last("Child");
    EXPECT_EQ(child->form->Ancestor(0), child);
    EXPECT_EQ(child->form->Ancestor(1), parent);
    EXPECT_EQ(child->form->Ancestor(2), nullptr); // the root controller has no view
    EXPECT_THROW(child->form->Ancestor(3), RuntimeFault);
}

TEST_F(HcfFormTest, ContinueOnTheRootDropsTheCode) {
    auto root = HCF_Form::Create();
    root->Continue(err::ErrSYS_Comms);
    EXPECT_EQ(root->ReturnCode(), 0);
}

TEST_F(HcfFormTest, ContinueMakesTheOpenerVisibleRunsItsContinueAndThenStoresTheCode) {
    zoo.Register("Parent");
    HCF_Form::Create()->OpenForm("Parent", true);
    FakeView* parent = zoo.Last("Parent");
    parent->visible = false;
    parent->form->Continue(0x1203);
    EXPECT_TRUE(parent->visible);
    EXPECT_EQ(parent->continues, 1);
    EXPECT_EQ(parent->form->ReturnCode(), 0x1203);
}

} // namespace
} // namespace zol
