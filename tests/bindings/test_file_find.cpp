// The file dialog wrapper and view rescaling.
#include "device_link/core/ErrTrap.h"
#include "framework/bindings/CDW_FileFind.h"
#include "framework/bindings/WinRes.h"
#include "tests/support/ScriptedUi.h"

#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>
#include <QWidget>
#include <gtest/gtest.h>

using zol::CDW_FileFind;
using zol::test::ScriptedUi;

namespace {

class TwipsScope {
public:
    explicit TwipsScope(int twips) { zol::SetScreenTwipsPerPixelForTest(twips); }
    ~TwipsScope() { zol::SetScreenTwipsPerPixelForTest(0); }
};

TEST(CDW_FileFind, SearchPassesFiltersCaptionFolderAndFlags) {
    ScriptedUi ui;
    CDW_FileFind find;
    find.AddFilter("Flash Files ", "FUD");
    find.AddFilter("All Files ", "*");
    find.Caption("Select Firmware");
    find.FilePath("/data/images");
    find.AddOption(zol::ofn::FileMustExist);
    find.AddOption(zol::ofn::HideReadOnly);
    ui.QueueFileDialog({true, "/data/images", {"zol-1.2.FUD"}});
    ASSERT_TRUE(find.Search());
    ASSERT_EQ(ui.fileRequests.size(), 1u);
    const auto& request = ui.fileRequests[0];
    EXPECT_EQ(request.caption, "Select Firmware");
    ASSERT_EQ(request.filters.size(), 2u);
    EXPECT_EQ(request.filters[0], std::make_pair(std::string("Flash Files "), std::string("*.FUD")));
    EXPECT_EQ(request.filters[1], std::make_pair(std::string("All Files "), std::string("*.*")));
    EXPECT_EQ(request.initialDir, "/data/images");
    EXPECT_EQ(request.flags, zol::ofn::FileMustExist | zol::ofn::HideReadOnly);
    EXPECT_FALSE(request.save);
    EXPECT_EQ(find.FilePath(), "/data/images");
    EXPECT_EQ(find.FileCount(), 1);
    EXPECT_EQ(find.FileName(1), "zol-1.2.FUD");
}

TEST(CDW_FileFind, OptionThreeSelectsSaveMode) {
    ScriptedUi ui;
    CDW_FileFind find;
    find.AddOption(zol::ofn::SaveMode);
    EXPECT_TRUE(find.SaveMode());
    EXPECT_EQ(find.Options(), 0);
    ui.QueueFileDialog({true, "/tmp", {"out.txt"}});
    ASSERT_TRUE(find.Search());
    EXPECT_TRUE(ui.fileRequests.at(0).save);
}

TEST(CDW_FileFind, SeveralNamesGiveFolderWithSeparator) {
    ScriptedUi ui;
    CDW_FileFind find;
    find.AddOption(zol::ofn::AllowMultiSelect);
    ui.QueueFileDialog({true, "/data", {"a.FUD", "b.FUD"}});
    ASSERT_TRUE(find.Search());
    EXPECT_EQ(find.FilePath(), "/data/");
    EXPECT_EQ(find.FileCount(), 2);
    EXPECT_EQ(find.FileName(1), "a.FUD");
    EXPECT_EQ(find.FileName(2), "b.FUD");
    EXPECT_EQ(ui.fileRequests.at(0).flags, zol::ofn::AllowMultiSelect);
}

// ---- Extensions, bounds, cancel and other screens ----

TEST(CDW_FileFind, ThreeCharacterExtensionAcceptedFourRefused) {
    ScriptedUi ui;
    CDW_FileFind find;
    find.AddFilter("Flash Files ", "FUD");
    EXPECT_EQ(find.Filters().size(), 1u);
    EXPECT_TRUE(ui.boxes.empty());
    ui.Expect("1 to 3 characters allowed for a file extension", zol::vb::OK,
              std::string("CDW_FileFind.AddFilter"));
    find.AddFilter("Long", "FUDX");
    ASSERT_EQ(ui.boxes.size(), 1u);
    EXPECT_EQ(ui.boxes[0].Icon(), zol::vb::Critical);
    EXPECT_EQ(find.Filters().size(), 1u);
    EXPECT_EQ(find.Filters()[0].second, ".FUD");
}

TEST(CDW_FileFind, EmptyExtensionPasses) {
    ScriptedUi ui;
    CDW_FileFind find;
    find.AddFilter("Anything", "");
    ASSERT_EQ(find.Filters().size(), 1u);
    EXPECT_EQ(find.Filters()[0].second, ".");
}

TEST(CDW_FileFind, FileNameOutsideArrayIsBoundsError) {
    ScriptedUi ui;
    CDW_FileFind find;
    ui.QueueFileDialog({true, "/data", {"a.FUD"}});
    ASSERT_TRUE(find.Search());
    try {
        find.FileName(2);
        FAIL() << "no error";
    } catch (const zol::RuntimeFault& e) {
        EXPECT_EQ(e.Number(), zol::rt::SubscriptOutOfRange);
    }
    EXPECT_THROW(find.FileName(0), zol::RuntimeFault);
}

TEST(CDW_FileFind, SearchAfterCancelReturnsFalse) {
    ScriptedUi ui;
    CDW_FileFind find;
    find.FilePath("/start");
    ui.QueueFileDialog({false, "/elsewhere", {}});
    EXPECT_FALSE(find.Search());
    EXPECT_EQ(find.FilePath(), "/start");
    EXPECT_EQ(find.FileCount(), 0);
}

TEST(WinRes, NothingChangesAtTwelveTwipsPerPixel) {
    TwipsScope scope(12);
    QWidget view;
    view.resize(300, 200);
    auto* label = new QLabel("x", &view);
    label->setGeometry(10, 20, 100, 30);
    zol::WinRes(&view);
    EXPECT_EQ(view.size(), QSize(300, 200));
    EXPECT_EQ(label->geometry(), QRect(10, 20, 100, 30));
}

TEST(WinRes, HandPlacedControlsScaledAtFifteen) {
    TwipsScope scope(15);
    QWidget view;
    view.resize(300, 200);
    auto* label = new QLabel("x", &view);
    label->setGeometry(10, 20, 100, 30);
    zol::WinRes(&view);
    EXPECT_EQ(view.size(), QSize(378, 252));
    EXPECT_EQ(label->geometry(), QRect(13, 25, 126, 38));
}

TEST(WinRes, InnerPartsOfControlsLeftToTheirControl) {
    TwipsScope scope(15);
    QWidget view;
    view.resize(300, 200);
    auto* box = new QGroupBox("Frame", &view);
    box->setGeometry(10, 10, 200, 100);
    auto* inBox = new QLabel("x", box);
    inBox->setGeometry(10, 20, 50, 20);
    auto* edit = new QLineEdit(&view);
    edit->setGeometry(0, 150, 100, 24);
    // A part of the line edit, placed by the line edit.
    auto* part = new QWidget(edit);
    part->setGeometry(2, 2, 10, 10);
    zol::WinRes(&view);
    EXPECT_EQ(box->geometry(), QRect(13, 13, 252, 126));
    EXPECT_EQ(inBox->geometry(), QRect(13, 25, 63, 25));
    EXPECT_EQ(edit->geometry(), QRect(0, 189, 126, 30));
    EXPECT_EQ(part->geometry(), QRect(2, 2, 10, 10));
}

TEST(WinRes, LayoutManagedControlsLeftToLayout) {
    TwipsScope scope(15);
    QWidget view;
    auto* layout = new QVBoxLayout(&view);
    auto* edit = new QLineEdit(&view);
    layout->addWidget(edit);
    auto* inner = new QHBoxLayout();
    auto* nested = new QLabel("n", &view);
    inner->addWidget(nested);
    layout->addLayout(inner);
    view.resize(200, 100);
    const QRect before = edit->geometry();
    const QRect nestedBefore = nested->geometry();
    zol::WinRes(&view);
    EXPECT_EQ(edit->geometry(), before);
    EXPECT_EQ(nested->geometry(), nestedBefore);
    EXPECT_EQ(view.size(), QSize(200, 100));
}

TEST(WinRes, ScaleTwipsRule) {
    {
        TwipsScope scope(15);
        EXPECT_EQ(zol::ScaleTwips(600), 756);
        EXPECT_EQ(zol::ScaleTwips(25), 32); // 31.5 rounds to even
    }
    {
        TwipsScope scope(12);
        EXPECT_EQ(zol::ScaleTwips(600), 600);
    }
}

} // namespace
