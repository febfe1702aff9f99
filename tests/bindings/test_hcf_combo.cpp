// The value-carrying drop-down box.
#include "device_link/core/ErrTrap.h"
#include "framework/bindings/HCF_Combo.h"
#include "tests/support/ScriptedUi.h"

#include <QComboBox>
#include <QLineEdit>
#include <QTest>
#include <QVBoxLayout>
#include <QWidget>
#include <gtest/gtest.h>
#include <memory>
#include <vector>

using zol::HCF_Combo;
using zol::test::HaltSignal;
using zol::test::ScriptedUi;

namespace {

class ComboFixture {
public:
    explicit ComboFixture(bool editable = false) {
        window = std::make_unique<QWidget>();
        auto* layout = new QVBoxLayout(window.get());
        box = new QComboBox(window.get());
        box->setObjectName("Combo_SelectPort");
        box->setEditable(editable);
        next = new QComboBox(window.get());
        next->setObjectName("Combo_Next");
        layout->addWidget(box);
        layout->addWidget(next);
        window->show();
        window->activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(window.get()));
        next->setFocus(Qt::OtherFocusReason);
        binding.Initialise(box);
        binding.Change = [this](int16_t value) { changes.push_back(value); };
    }
    void Fill() {
        binding.AddItem(10, "USB Port A");
        binding.AddItem(20, "USB Port B");
        binding.AddItem(30, "USB Port C");
    }
    std::unique_ptr<QWidget> window;
    QComboBox* box = nullptr;
    QComboBox* next = nullptr;
    HCF_Combo binding;
    std::vector<int16_t> changes;
};

TEST(HCF_Combo, AddItemStoresValueAndSelectsNothing) {
    ComboFixture f;
    f.Fill();
    EXPECT_EQ(f.binding.Items(), 3);
    EXPECT_EQ(f.box->currentIndex(), -1);
    EXPECT_TRUE(f.changes.empty());
    EXPECT_TRUE(f.binding.HasItem(20));
    EXPECT_FALSE(f.binding.HasItem(25));
    EXPECT_EQ(f.binding.Text(), "");
}

TEST(HCF_Combo, SortedBoxPlacesEntriesByText) {
    ComboFixture f;
    f.box->setProperty("sorted", true);
    f.binding.AddItem(2, "beta");
    f.binding.AddItem(1, "alpha");
    EXPECT_EQ(f.box->itemText(0), "alpha");
    EXPECT_EQ(f.box->itemData(0).toInt(), 1);
}

TEST(HCF_Combo, ValueWriteSelectsFirstMatchAndRaisesChange) {
    ComboFixture f;
    f.Fill();
    f.binding.AddItem(20, "Duplicate");
    f.binding.Value(20);
    EXPECT_EQ(f.box->currentIndex(), 1);
    EXPECT_EQ(f.binding.Value(), 20);
    EXPECT_EQ(f.binding.Text(), "USB Port B");
    EXPECT_EQ(f.changes, std::vector<int16_t>({20}));
}

TEST(HCF_Combo, UnknownValueShowsMessageAndRaisesError9) {
    ScriptedUi ui;
    ComboFixture f;
    f.Fill();
    f.binding.Value(10);
    ui.Expect("Index value 99 not found in list", zol::vb::OK, std::string("HCF_Combo.Value (Let)"));
    try {
        f.binding.Value(99);
        FAIL() << "no error raised";
    } catch (const zol::ZolError& e) {
        EXPECT_EQ(e.Code(), 9);
        EXPECT_EQ(e.Source(), "HCF_Combo.Value (Let)");
    }
    ASSERT_EQ(ui.boxes.size(), 1u);
    EXPECT_EQ(ui.boxes[0].Icon(), zol::vb::Critical);
    EXPECT_EQ(f.binding.Value(), 10);
}

TEST(HCF_Combo, ValueReadWithoutSelectionIsRunTimeFault) {
    ComboFixture f;
    f.Fill();
    EXPECT_THROW(f.binding.Value(), zol::RuntimeFault);
}

TEST(HCF_Combo, SecondInitialiseStopsProgram) {
    ScriptedUi ui;
    ComboFixture f;
    QComboBox other;
    ui.Expect("Instance may not be re-assigned", zol::vb::OK, std::string("HCF_Combo.Initialise"));
    EXPECT_THROW(f.binding.Initialise(&other), HaltSignal);
    EXPECT_EQ(ui.halts, 1);
    EXPECT_EQ(f.binding.Box(), f.box);
}

TEST(HCF_Combo, NullInitialiseIgnored) {
    HCF_Combo binding;
    binding.Initialise(nullptr);
    EXPECT_FALSE(binding.Assigned());
}

TEST(HCF_Combo, FocusArrivalTakesRestore) {
    ComboFixture f;
    f.Fill();
    f.binding.Value(30);
    f.box->setFocus(Qt::TabFocusReason);
    EXPECT_EQ(f.binding.Restore(), 2);
    f.binding.Value(10);
    f.next->setFocus(Qt::TabFocusReason);
    EXPECT_EQ(f.binding.Restore(), 0);
}

TEST(HCF_Combo, ArrowKeysMoveAsUpAndDown) {
    ComboFixture f;
    f.Fill();
    f.binding.Value(20);
    f.changes.clear();
    f.box->setFocus(Qt::TabFocusReason);
    QTest::keyClick(f.box, Qt::Key_Right);
    EXPECT_EQ(f.binding.Value(), 30);
    QTest::keyClick(f.box, Qt::Key_Left);
    EXPECT_EQ(f.binding.Value(), 20);
    QTest::keyClick(f.box, Qt::Key_Up);
    EXPECT_EQ(f.binding.Value(), 10);
    QTest::keyClick(f.box, Qt::Key_Down);
    EXPECT_EQ(f.binding.Value(), 20);
    EXPECT_EQ(f.changes, std::vector<int16_t>({30, 20, 10, 20}));
}

TEST(HCF_Combo, OtherKeysSwallowed) {
    ComboFixture f;
    f.Fill();
    f.binding.Value(10);
    f.box->setFocus(Qt::TabFocusReason);
    QTest::keyClick(f.box, 'u');
    QTest::keyClick(f.box, Qt::Key_End);
    QTest::keyClick(f.box, Qt::Key_PageDown);
    EXPECT_EQ(f.binding.Value(), 10);
}

TEST(HCF_Combo, EnterMovesToNextControl) {
    ComboFixture f;
    f.Fill();
    f.box->setFocus(Qt::TabFocusReason);
    ASSERT_TRUE(f.box->hasFocus());
    QTest::keyClick(f.box, Qt::Key_Return);
    EXPECT_TRUE(f.next->hasFocus());
}

// ---- When Change is raised and when it is not ----

TEST(HCF_Combo, ChangeNotRaisedForEmptyText) {
    ComboFixture f(true);
    f.Fill();
    f.binding.Value(20);
    f.changes.clear();
    f.box->setEditText(QString());
    EXPECT_TRUE(f.changes.empty());
    f.box->setEditText("typed");
    EXPECT_EQ(f.changes, std::vector<int16_t>({20}));
}

TEST(HCF_Combo, RevertRaisesNoChangeButEscapeDoes) {
    ComboFixture f;
    f.Fill();
    f.binding.Value(10);
    f.box->setFocus(Qt::TabFocusReason);
    ASSERT_EQ(f.binding.Restore(), 0);
    f.binding.Value(30);
    f.changes.clear();
    f.binding.Revert();
    EXPECT_EQ(f.binding.Value(), 10);
    EXPECT_TRUE(f.changes.empty());
    f.binding.Value(30);
    f.changes.clear();
    QTest::keyClick(f.box, Qt::Key_Escape);
    EXPECT_EQ(f.binding.Value(), 10);
    EXPECT_EQ(f.changes, std::vector<int16_t>({10}));
}

TEST(HCF_Combo, ValueAlreadySelectedRaisesNoError) {
    ScriptedUi ui; // fails the test on any box
    ComboFixture f;
    f.Fill();
    f.binding.Value(20);
    f.changes.clear();
    EXPECT_NO_THROW(f.binding.Value(20));
    EXPECT_EQ(f.binding.Value(), 20);
    // The box raises no selection event for an index it already has.
    EXPECT_TRUE(f.changes.empty());
    EXPECT_TRUE(ui.boxes.empty());
}

} // namespace
