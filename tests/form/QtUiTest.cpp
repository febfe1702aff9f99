// The Qt message boxes, input box and mouse pointer of the UI seam, answered by timers.
#include "framework/form/QtUi.h"

#include "device_link/core/ErrTrap.h"

#include <QAbstractButton>
#include <QApplication>
#include <QFileDialog>
#include <QInputDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>
#include <functional>
#include <gtest/gtest.h>

namespace zol {
namespace {

// Runs `act` on the message box once it is up.
void WhenBoxShows(std::function<void(QMessageBox&)> act) {
    QTimer::singleShot(30, [act] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        ASSERT_NE(box, nullptr);
        act(*box);
    });
}

TEST(QtUiTest, ClosingAYesNoCancelBoxAnswersCancel) {
    QtUi ui;
    QString title;
    QString text;
    QMessageBox::Icon icon = QMessageBox::NoIcon;
    WhenBoxShows([&](QMessageBox& box) {
        title = box.windowTitle();
        text = box.text();
        icon = box.icon();
        EXPECT_NE(box.button(QMessageBox::Yes), nullptr);
        EXPECT_NE(box.button(QMessageBox::No), nullptr);
        EXPECT_NE(box.button(QMessageBox::Cancel), nullptr);
        box.close();
    });
    const int answer = ui.MsgBox("First line\r\nSecond line", vb::YesNoCancel | vb::Question,
                                 std::string("Standard Derogation"));
    EXPECT_EQ(answer, vb::Cancel);
    EXPECT_EQ(title, "Standard Derogation");
    EXPECT_EQ(text, "First line\nSecond line");
    EXPECT_EQ(icon, QMessageBox::Question);
}

TEST(QtUiTest, ClickingRetryAnswersRetry) {
    QtUi ui;
    WhenBoxShows([](QMessageBox& box) { box.button(QMessageBox::Retry)->click(); });
    EXPECT_EQ(ui.MsgBox("Local device is not responding", vb::RetryCancel | vb::Question, std::string("t")),
              vb::Retry);
}

// The retry box of a captured error, on the real boxes: only the Retry button retries.
class RetryBoxTest : public ::testing::Test {
protected:
    void SetUp() override {
        ErrTrap::ResetForTest();
        previous_ = SetUi(&ui_);
        try {
            ErrTrap::Raise(0x103, "");
        } catch (const ZolError&) {
            ErrTrap::Capture();
        }
    }
    void TearDown() override { SetUi(previous_); }
    QtUi ui_;
    Ui* previous_ = nullptr;
};

TEST_F(RetryBoxTest, ReportWithRetryAnswersFalseWhenTheBoxIsClosed) {
    QString title;
    QString text;
    QMessageBox::Icon icon = QMessageBox::NoIcon;
    bool hasRetry = false;
    bool hasCancel = false;
    WhenBoxShows([&](QMessageBox& box) {
        title = box.windowTitle();
        text = box.text();
        icon = box.icon();
        hasRetry = box.button(QMessageBox::Retry) != nullptr;
        hasCancel = box.button(QMessageBox::Cancel) != nullptr;
        box.close();
    });
    EXPECT_FALSE(ErrTrap::Report("KARN DMX-ZOL MK1 Plugin - Input", true));
    EXPECT_EQ(title, "KARN DMX-ZOL MK1 Plugin - Input");
    EXPECT_EQ(text, "Local device is not responding");
    EXPECT_EQ(icon, QMessageBox::Question);
    EXPECT_TRUE(hasRetry);
    EXPECT_TRUE(hasCancel);
}

TEST_F(RetryBoxTest, ReportWithRetryAnswersFalseOnCancelAndTrueOnlyOnRetry) {
    WhenBoxShows([](QMessageBox& box) { box.button(QMessageBox::Cancel)->click(); });
    EXPECT_FALSE(ErrTrap::Report("Device Discovery", true));
    WhenBoxShows([](QMessageBox& box) { box.button(QMessageBox::Retry)->click(); });
    EXPECT_TRUE(ErrTrap::Report("Device Discovery", true));
    WhenBoxShows([](QMessageBox& box) { box.close(); });
    EXPECT_FALSE(ErrTrap::Retry("Device Discovery"));
}

TEST(QtUiTest, ClosingAnOkOnlyBoxAnswersOkAndTheTitleDefaultsToTheApplications) {
    QtUi ui;
    QString title;
    QMessageBox::Icon icon = QMessageBox::NoIcon;
    WhenBoxShows([&](QMessageBox& box) {
        title = box.windowTitle();
        icon = box.icon();
        box.close();
    });
    EXPECT_EQ(ui.MsgBox("Hello", vb::Critical), vb::OK);
    EXPECT_EQ(title, QString::fromLatin1(AppTitle()));
    EXPECT_EQ(icon, QMessageBox::Critical);
}

TEST(QtUiTest, TheDefaultButtonFollowsTheStyle) {
    QtUi ui;
    WhenBoxShows([](QMessageBox& box) {
        EXPECT_EQ(box.defaultButton(), box.button(QMessageBox::No));
        box.defaultButton()->click();
    });
    EXPECT_EQ(ui.MsgBox("?", vb::YesNo | vb::DefaultButton2), vb::No);
}

TEST(QtUiTest, MousePointerElevenIsTheWaitCursorAndReadsBack) {
    QtUi ui;
    ui.SetMousePointer(kPointerHourglass);
    EXPECT_EQ(ui.MousePointer(), kPointerHourglass);
    ASSERT_NE(QGuiApplication::overrideCursor(), nullptr);
    EXPECT_EQ(QGuiApplication::overrideCursor()->shape(), Qt::WaitCursor);
    ui.SetMousePointer(kPointerHourglass);
    ui.SetMousePointer(kPointerDefault);
    EXPECT_EQ(ui.MousePointer(), kPointerDefault);
    EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
}

TEST(QtUiTest, TheInputBoxGivesTheTextOrNothingWhenCancelled) {
    QtUi ui;
    QTimer::singleShot(30, [] {
        auto* dialog = qobject_cast<QInputDialog*>(QApplication::activeModalWidget());
        ASSERT_NE(dialog, nullptr);
        dialog->setTextValue(QStringLiteral("typed"));
        dialog->accept();
    });
    EXPECT_EQ(ui.InputBox("Name?", "Title", "x"), std::optional<std::string>("typed"));
    QTimer::singleShot(30, [] {
        auto* dialog = qobject_cast<QInputDialog*>(QApplication::activeModalWidget());
        ASSERT_NE(dialog, nullptr);
        dialog->reject();
    });
    EXPECT_EQ(ui.InputBox("Name?", "Title", "x"), std::nullopt);
}

// The file dialog's mode follows the caller's option bits; the dialog is read and cancelled.
QFileDialog::FileMode ModeOfDialogFor(long flags, bool save, bool* confirmsOverwrite) {
    QFileDialog::FileMode mode = QFileDialog::Directory;
    QTimer::singleShot(30, [&] {
        auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
        ASSERT_NE(dialog, nullptr);
        mode = dialog->fileMode();
        *confirmsOverwrite = !dialog->testOption(QFileDialog::DontConfirmOverwrite);
        dialog->reject();
    });
    FileDialogRequest request;
    request.caption = "Firmware Program File";
    request.filters = {{"Flash Files ", "*.FUD"}, {"All Files ", "*"}};
    request.flags = flags;
    request.save = save;
    const FileDialogResult result = qtUi().FileDialog(request);
    EXPECT_FALSE(result.chosen);
    return mode;
}

TEST(QtUiTest, TheFileDialogAsksForAnExistingFileOnlyWhenTheCallerSaysSo) {
    bool confirms = false;
    EXPECT_EQ(ModeOfDialogFor(0x1000, false, &confirms), QFileDialog::ExistingFile);
    EXPECT_EQ(ModeOfDialogFor(0, false, &confirms), QFileDialog::AnyFile);
    EXPECT_EQ(ModeOfDialogFor(0x200, false, &confirms), QFileDialog::ExistingFiles);
}

TEST(QtUiTest, TheSaveDialogConfirmsAnOverwriteOnlyWhenAsked) {
    bool confirms = false;
    EXPECT_EQ(ModeOfDialogFor(0x2, true, &confirms), QFileDialog::AnyFile);
    EXPECT_TRUE(confirms);
    EXPECT_EQ(ModeOfDialogFor(0, true, &confirms), QFileDialog::AnyFile);
    EXPECT_FALSE(confirms);
}

} // namespace
} // namespace zol
