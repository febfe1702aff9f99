// Help_About: its lines, the device library's version, the clicks that close it, and a library
// whose version call fails.
#include "device_link/core/ErrTrap.h"
#include "framework/form/Forms.h"
#include "framework/form/HCF_Form.h"
#include "framework/seam/Product.h"
#include "services/update/Help_About.h"
#include "tests/support/ScopedConfigDir.h"
#include "tests/support/ScriptedDeviceLibrary.h"
#include "tests/support/ScriptedUi.h"

#include <QCoreApplication>
#include <QLabel>
#include <QPointer>
#include <QTest>
#include <cstdlib>
#include <gtest/gtest.h>

namespace zol {
namespace {

class HelpAboutTest : public ::testing::Test {
protected:
    void SetUp() override {
        unsetenv("ZOL_WEB_BASE");
        Forms::Register(Help_About::kName, [] { return new Help_About; });
        root = HCF_Form::Create();
    }
    void TearDown() override {
        Forms::UnloadAll();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    Help_About* Open() {
        root->OpenForm(Help_About::kName, false);
        view = dynamic_cast<Help_About*>(Forms::Find(Help_About::kName));
        return view.data();
    }
    QLabel* Label(const QString& name) const { return view->findChild<QLabel*>(name); }
    std::string Info(int i) const {
        return Label(QStringLiteral("LabelInfo_%1").arg(i))->text().toStdString();
    }
    bool IsOpen() const { return !view.isNull() && Forms::IsOpen(view.data()); }

    test::ScopedConfigDir config;
    test::ScriptedUi ui;
    test::ScriptedDeviceLibrary device;
    std::shared_ptr<HCF_Form> root;
    QPointer<Help_About> view;
};

TEST_F(HelpAboutTest, ShowsTheVersionsAndTheMakersLines) {
    device.version = "KDI 3.2.1 (test)";
    ASSERT_NE(Open(), nullptr);
    EXPECT_EQ(Info(0), "About " + std::string(AppTitle()));
    EXPECT_EQ(Info(1), product::kProductName);
    EXPECT_EQ(Info(2), "SW Revision: " + std::to_string(product::VersionMajor()) + "." +
                           std::to_string(product::VersionMinor()) + "." +
                           std::to_string(product::VersionRevision()));
    EXPECT_EQ(Info(3), "API Version: KDI 3.2.1 (test)");
    EXPECT_EQ(Info(4), "KARN Lighting Controls\nStage and Studio Interfaces");
    EXPECT_EQ(Label("Label_WebLink")->text().toStdString(), std::string(product::kDefaultWebBase) + "/");
}

TEST_F(HelpAboutTest, AClickOnAnInfoLineClosesIt) {
    ASSERT_NE(Open(), nullptr);
    QTest::mouseClick(Label("LabelInfo_2"), Qt::LeftButton);
    EXPECT_FALSE(IsOpen());
}

TEST_F(HelpAboutTest, AClickOnTheLogoClosesIt) {
    ASSERT_NE(Open(), nullptr);
    QTest::mouseClick(Label("Image_logo"), Qt::LeftButton);
    EXPECT_FALSE(IsOpen());
}

TEST_F(HelpAboutTest, AClickOnTheViewItselfClosesIt) {
    ASSERT_NE(Open(), nullptr);
    QTest::mouseClick(view.data(), Qt::LeftButton, {}, QPoint(2, 2));
    EXPECT_FALSE(IsOpen());
}

TEST_F(HelpAboutTest, TheWebLinkOpensTheHomePageAndLeavesTheViewOpen) {
    ASSERT_NE(Open(), nullptr);
    QTest::mouseClick(Label("Label_WebLink"), Qt::LeftButton);
    ASSERT_EQ(ui.urls.size(), 1u);
    EXPECT_EQ(ui.urls[0], std::string(product::kDefaultWebBase) + "/");
    EXPECT_TRUE(IsOpen());
}

TEST_F(HelpAboutTest, ALibraryVersionCallThatFailsRaisesItsNumberAndTheViewNeverShows) {
    device.versionResult = -2;
    try {
        Open();
        ADD_FAILURE() << "the open should have failed";
    } catch (const ZolError& error) {
        EXPECT_EQ(error.Code(), 0x1002);
    }
    EXPECT_EQ(Forms::Find(Help_About::kName), nullptr);
}

} // namespace
} // namespace zol
