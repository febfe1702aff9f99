// The keyed report list.
#include "framework/bindings/HCF_List.h"
#include "framework/bindings/WinRes.h"
#include "tests/support/ScriptedUi.h"

#include <QHeaderView>
#include <QScrollBar>
#include <QTest>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <QWidget>
#include <gtest/gtest.h>
#include <memory>
#include <vector>

using zol::HCF_List;
using zol::ListColour;
using zol::test::HaltSignal;
using zol::test::ScriptedUi;

namespace {

constexpr int32_t kBlack = 0;
constexpr int32_t kRed = ListColour(255, 0, 0);
constexpr int32_t kBlue = ListColour(0, 0, 255);

// Screens of 15 twips a pixel unless a test says otherwise.
class TwipsScope {
public:
    explicit TwipsScope(int twips) { zol::SetScreenTwipsPerPixelForTest(twips); }
    ~TwipsScope() { zol::SetScreenTwipsPerPixelForTest(0); }
};

class ListFixture {
public:
    explicit ListFixture(int rows = 4, int twips = 15) : scope(twips) {
        window = std::make_unique<QWidget>();
        auto* layout = new QVBoxLayout(window.get());
        tree = new QTreeWidget(window.get());
        tree->setObjectName("ListDevices");
        layout->addWidget(tree);
        binding.Initialise(tree, rows);
        binding.AddCol("Item", 600);
        binding.AddCol("Name", 1000);
        binding.AddCol("Address", 400);
        binding.ClickL = [this](int16_t k) { events.push_back("L" + std::to_string(k)); };
        binding.ClickR = [this](int16_t k) { events.push_back("R" + std::to_string(k)); };
        binding.DblClick = [this](int16_t k) { events.push_back("D" + std::to_string(k)); };
        binding.OnChange = [this](int16_t k) { events.push_back("C" + std::to_string(k)); };
    }
    void Show() {
        window->show();
        window->activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(window.get()));
    }
    std::vector<std::string> Keys() const {
        std::vector<std::string> keys;
        for (int i = 0; i < tree->topLevelItemCount(); ++i) {
            keys.push_back(tree->topLevelItem(i)->text(0).toStdString());
        }
        return keys;
    }
    QPoint RowCentre(int row) const { return tree->visualItemRect(tree->topLevelItem(row)).center(); }
    TwipsScope scope;
    std::unique_ptr<QWidget> window;
    QTreeWidget* tree = nullptr;
    HCF_List binding;
    std::vector<std::string> events;
};

TEST(HCF_List, ColumnsScaledAndWidthFollows) {
    ListFixture f;
    EXPECT_EQ(f.binding.Widths(), std::vector<int32_t>({756, 1260, 504}));
    EXPECT_EQ(f.binding.TotalWidth(), 2520);
    EXPECT_EQ(f.binding.WidthTwips(), 2522);
    EXPECT_EQ(f.tree->columnCount(), 3);
    EXPECT_EQ(f.tree->headerItem()->text(1), "Name");
    EXPECT_EQ(f.tree->columnWidth(0), 50); // 756 twips
    EXPECT_EQ(f.tree->width(), 168 + 2 * f.tree->frameWidth());
}

TEST(HCF_List, HeightFromRows) {
    ListFixture f(4);
    // (4 + 1) * 206 + 20 = 1050 twips, times 1.26 = 1323.
    EXPECT_EQ(f.binding.HeightTwips(), 1323);
    EXPECT_EQ(f.tree->height(), 88);
}

TEST(HCF_List, ReportStyleSingleRowSelectionNoEditing) {
    ListFixture f;
    EXPECT_EQ(f.tree->selectionBehavior(), QAbstractItemView::SelectRows);
    EXPECT_EQ(f.tree->selectionMode(), QAbstractItemView::SingleSelection);
    EXPECT_EQ(f.tree->editTriggers(), QAbstractItemView::NoEditTriggers);
}

TEST(HCF_List, FieldsSplitIntoSubItemsWithColour) {
    ListFixture f;
    f.binding.AddRow(3, "Dimmer|12", "|", kRed);
    auto* item = f.tree->topLevelItem(0);
    EXPECT_EQ(item->text(0), "3");
    EXPECT_EQ(item->text(1), "Dimmer");
    EXPECT_EQ(item->text(2), "12");
    EXPECT_EQ(item->foreground(0).color(), QColor(255, 0, 0));
    EXPECT_EQ(item->foreground(2).color(), QColor(255, 0, 0));
}

TEST(HCF_List, InitialiseTwiceStopsProgram) {
    ScriptedUi ui;
    ListFixture f;
    QTreeWidget other;
    ui.Expect("Control already assingned", zol::vb::OK);
    EXPECT_THROW(f.binding.Initialise(&other, 3), HaltSignal);
    EXPECT_EQ(ui.boxes.at(0).Icon(), zol::vb::Critical);
}

TEST(HCF_List, AddColBeforeInitialiseStopsProgram) {
    ScriptedUi ui;
    HCF_List binding;
    ui.Expect("Object not yet initialised", zol::vb::OK);
    EXPECT_THROW(binding.AddCol("Item", 600), HaltSignal);
    ui.Expect("Object not yet initialised", zol::vb::OK);
    EXPECT_THROW(binding.AddRow(1, "a", ",", kBlack), HaltSignal);
    EXPECT_EQ(ui.halts, 2);
}

TEST(HCF_List, TerminateAllowsNewInitialise) {
    ListFixture f;
    f.binding.Terminate();
    EXPECT_FALSE(f.binding.Ready());
    EXPECT_TRUE(f.binding.Widths().empty());
    QTreeWidget other;
    f.binding.Initialise(&other, 2);
    f.binding.AddCol("Item", 100);
    EXPECT_EQ(f.binding.Widths(), std::vector<int32_t>({126}));
}

TEST(HCF_List, ClickNewRowRaisesOnChangeThenClickL) {
    ListFixture f;
    f.binding.AddRow(1, "a|1", "|", kBlack);
    f.binding.AddRow(2, "b|2", "|", kBlack);
    f.Show();
    QTest::mouseClick(f.tree->viewport(), Qt::LeftButton, {}, f.RowCentre(1));
    EXPECT_EQ(f.events, std::vector<std::string>({"C2", "L2"}));
    EXPECT_EQ(f.binding.Index(), 2);
    // A click on the selected row raises only the click.
    f.events.clear();
    QTest::mouseClick(f.tree->viewport(), Qt::LeftButton, {}, f.RowCentre(1));
    EXPECT_EQ(f.events, std::vector<std::string>({"L2"}));
}

TEST(HCF_List, RightClickRaisesClickR) {
    ListFixture f;
    f.binding.AddRow(1, "a|1", "|", kBlack);
    f.binding.AddRow(2, "b|2", "|", kBlack);
    f.Show();
    QTest::mouseClick(f.tree->viewport(), Qt::RightButton, {}, f.RowCentre(0));
    EXPECT_EQ(f.events, std::vector<std::string>({"C1", "R1"}));
    EXPECT_EQ(f.binding.LastButton(), 2);
}

TEST(HCF_List, DoubleClickRaisesDblClickWithKey) {
    ListFixture f;
    f.binding.AddRow(7, "a|1", "|", kBlack);
    f.Show();
    // A double click: the first click, then the double-click press and its release.
    QTest::mouseClick(f.tree->viewport(), Qt::LeftButton, {}, f.RowCentre(0));
    QTest::mouseDClick(f.tree->viewport(), Qt::LeftButton, {}, f.RowCentre(0));
    QTest::mouseRelease(f.tree->viewport(), Qt::LeftButton, {}, f.RowCentre(0));
    EXPECT_EQ(f.events, std::vector<std::string>({"C7", "L7", "D7"}));
}

TEST(HCF_List, ArrowKeysRaiseOnlyOnChange) {
    ListFixture f;
    f.binding.AddRow(1, "a|1", "|", kBlack);
    f.binding.AddRow(2, "b|2", "|", kBlack);
    f.binding.AddRow(3, "c|3", "|", kBlack);
    f.Show();
    QTest::mouseClick(f.tree->viewport(), Qt::LeftButton, {}, f.RowCentre(0));
    f.events.clear();
    f.tree->setFocus();
    QTest::keyClick(f.tree, Qt::Key_Down);
    QTest::keyClick(f.tree, Qt::Key_Down);
    QTest::keyClick(f.tree, Qt::Key_Up);
    EXPECT_EQ(f.events, std::vector<std::string>({"C2", "C3", "C2"}));
    EXPECT_EQ(f.binding.Index(), 2);
}

TEST(HCF_List, ForeColorPaintsSelectedRow) {
    ListFixture f;
    f.binding.AddRow(1, "a|1", "|", kBlack);
    f.binding.ForeColor(kBlue); // nothing selected: nothing happens
    EXPECT_EQ(f.tree->topLevelItem(0)->foreground(1).color(), QColor(0, 0, 0));
    f.tree->topLevelItem(0)->setSelected(true);
    f.binding.ForeColor(kBlue);
    EXPECT_EQ(f.tree->topLevelItem(0)->foreground(0).color(), QColor(0, 0, 255));
    EXPECT_EQ(f.tree->topLevelItem(0)->foreground(2).color(), QColor(0, 0, 255));
}

TEST(HCF_List, DelAllEmptiesAndResets) {
    ListFixture f(2);
    for (int k = 1; k <= 5; ++k) {
        f.binding.AddRow(k, "x|y", "|", kBlack);
    }
    f.Show();
    QTest::mouseClick(f.tree->viewport(), Qt::LeftButton, {}, f.RowCentre(0));
    ASSERT_EQ(f.binding.Index(), 1);
    f.binding.DelAll();
    EXPECT_EQ(f.tree->topLevelItemCount(), 0);
    EXPECT_EQ(f.binding.Index(), 0);
    EXPECT_EQ(f.binding.WidthTwips(), f.binding.TotalWidth());
}

TEST(HCF_List, ShowsRowsWithoutScrollBarThenScrolls) {
    ListFixture f(3);
    f.Show();
    for (int k = 1; k <= 3; ++k) {
        f.binding.AddRow(k, "x|y", "|", kBlack);
    }
    QTest::qWait(0);
    EXPECT_FALSE(f.tree->verticalScrollBar()->isVisible());
    f.binding.AddRow(4, "x|y", "|", kBlack);
    QTest::qWait(0);
    EXPECT_TRUE(f.tree->verticalScrollBar()->isVisible());
}

// ---- Keys, order, widths and scaling ----

TEST(HCF_List, AddRowWithExistingKeyChangesNothing) {
    ListFixture f;
    f.binding.AddRow(5, "old|1", "|", kRed);
    f.binding.AddRow(5, "new|2", "|", kBlue);
    ASSERT_EQ(f.tree->topLevelItemCount(), 1);
    EXPECT_EQ(f.tree->topLevelItem(0)->text(1), "old");
    EXPECT_EQ(f.tree->topLevelItem(0)->foreground(1).color(), QColor(255, 0, 0));
}

TEST(HCF_List, RowsSortedByNumericKey) {
    ListFixture f(20);
    for (int k : {10, 2, 9, 1, 100, 11}) {
        f.binding.AddRow(k, "x", "|", kBlack);
    }
    EXPECT_EQ(f.Keys(), std::vector<std::string>({"1", "2", "9", "10", "11", "100"}));
}

TEST(HCF_List, DeletingSelectedRowSetsIndexZero) {
    ListFixture f;
    f.binding.AddRow(1, "a|1", "|", kBlack);
    f.binding.AddRow(2, "b|2", "|", kBlack);
    f.Show();
    QTest::mouseClick(f.tree->viewport(), Qt::LeftButton, {}, f.RowCentre(1));
    ASSERT_EQ(f.binding.Index(), 2);
    f.binding.DelRow(1);
    EXPECT_EQ(f.binding.Index(), 2);
    f.binding.DelRow(2);
    EXPECT_EQ(f.binding.Index(), 0);
    EXPECT_EQ(f.tree->topLevelItemCount(), 0);
}

TEST(HCF_List, WidthGrowsAndFallsExactlyAtRows) {
    ListFixture f(3);
    const int32_t total = f.binding.TotalWidth();
    for (int k = 1; k <= 3; ++k) {
        f.binding.AddRow(k, "x", "|", kBlack);
        EXPECT_EQ(f.binding.WidthTwips(), total + 2) << "after row " << k;
    }
    f.binding.AddRow(4, "x", "|", kBlack);
    EXPECT_EQ(f.binding.WidthTwips(), total + 250);
    f.binding.DelRow(4);
    // Back at Rows: TotalWidth with no 2 added.
    EXPECT_EQ(f.binding.WidthTwips(), total);
    // Far above Rows, one deletion leaves the width alone.
    for (int k = 4; k <= 10; ++k) {
        f.binding.AddRow(k, "x", "|", kBlack);
    }
    EXPECT_EQ(f.binding.WidthTwips(), total + 250);
    f.binding.DelRow(10);
    EXPECT_EQ(f.binding.WidthTwips(), total + 250);
    const int pixels = f.tree->width();
    f.binding.DelRow(9);
    EXPECT_EQ(f.tree->width(), pixels);
}

TEST(HCF_List, NoScalingAtOtherTwipsPerPixel) {
    ListFixture f(4, 12);
    EXPECT_EQ(f.binding.Widths(), std::vector<int32_t>({600, 1000, 400}));
    EXPECT_EQ(f.binding.HeightTwips(), 1050);
    EXPECT_EQ(f.tree->columnWidth(0), 50); // 600 twips at 12 a pixel
}

TEST(HCF_List, FewerFieldsThanColumnsLeavesLastEmpty) {
    ListFixture f;
    f.binding.AddRow(1, "only", "|", kBlack);
    auto* item = f.tree->topLevelItem(0);
    EXPECT_EQ(item->text(1), "only");
    EXPECT_EQ(item->text(2), "");
}

} // namespace
