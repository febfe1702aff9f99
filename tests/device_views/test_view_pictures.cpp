// Renders the local-device views and the update views offscreen to PNG files under
// <build>/artifacts, in the states a user meets them, so that they can be looked at.
#include "device_link/status/DEV_Status.h"
#include "device_link/views/Config_Frame.h"
#include "device_link/views/Config_Prog.h"
#include "device_link/views/DeviceViews.h"
#include "device_link/views/System_Info.h"
#include "framework/form/Forms.h"
#include "framework/form/HCF_Form.h"
#include "services/settings/AUF_Registry.h"
#include "services/update/Help_About.h"
#include "services/update/Help_Update.h"
#include "tests/device_views/ViewTestSupport.h"
#include "tests/support/ScopedConfigDir.h"
#include "tests/support/ScriptedUi.h"
#include "tests/update/LoopbackHttpServer.h"

#include <QDir>
#include <QImage>
#include <QLabel>
#include <QPixmap>
#include <QTimer>
#include <cstdlib>
#include <gtest/gtest.h>

namespace zol {
namespace {

using test::B;
using test::Bytes;

QString ArtifactDir() {
    const char* build = std::getenv("ZOL_BUILD_DIR");
    QString dir = QString::fromUtf8(build != nullptr && *build != '\0' ? build : ZOL_VIEWS_BUILD_DIR) +
                  QStringLiteral("/artifacts");
    QDir().mkpath(dir);
    return dir;
}

// Shows the view, lets it lay itself out, and saves what it shows. The picture must hold more
// than one colour, or nothing was drawn.
void Save(QWidget* view, const QString& name) {
    view->show();
    view->adjustSize();
    QTest::qWait(30);
    const QPixmap picture = view->grab();
    ASSERT_FALSE(picture.isNull());
    const QImage image = picture.toImage();
    const QRgb first = image.pixel(0, 0);
    bool varied = false;
    for (int y = 0; y < image.height() && !varied; y += 3) {
        for (int x = 0; x < image.width() && !varied; x += 3) {
            varied = image.pixel(x, y) != first;
        }
    }
    EXPECT_TRUE(varied) << name.toStdString();
    const QString path = ArtifactDir() + "/" + name + ".png";
    ASSERT_TRUE(picture.save(path)) << path.toStdString();
    std::printf("picture: %s\n", path.toStdString().c_str());
}

class ViewPictures : public ::testing::Test {
protected:
    void SetUp() override {
        unsetenv("ZOL_UPDATE_HOST");
        RegisterDeviceViews();
        root = HCF_Form::Create();
    }
    void TearDown() override { test::CloseAllViews(); }

    test::ScopedConfigDir config;
    test::ScriptedUi ui;
    test::ScriptedDeviceLibrary device;
    std::shared_ptr<HCF_Form> root;
};

TEST_F(ViewPictures, ConfigFrame) {
    test::FrameModel model;
    model.Attach(device);
    root->OpenForm(Config_Frame::kName, false);
    auto* view = dynamic_cast<Config_Frame*>(Forms::Find(Config_Frame::kName));
    ASSERT_NE(view, nullptr);
    Save(view, "Config_Frame");
}

TEST_F(ViewPictures, SystemInfo) {
    device.Expect(B({0}), 0, "DMX-ZOL MK1 USB DMX512/RDM Interface");
    device.Expect(B({3, 1}), 0, "10000417");
    device.Expect(B({1}), 0, "MK1 Rev C");
    device.Expect(B({2, 1}), 0, "1.0.4");
    device.Expect(B({79}), 0, B({0xA3, 0x04, 0, 0}));
    device.Expect(B({4}), 0, B({0x6B, 0x72, 0x00, 0x98, 0x98, 0x21}));
    root->OpenForm(System_Info::kName, false, std::make_shared<DEV_Status>());
    auto* view = dynamic_cast<System_Info*>(Forms::Find(System_Info::kName));
    ASSERT_NE(view, nullptr);
    Save(view, "System_Info");
}

TEST_F(ViewPictures, ConfigProg) {
    root->OpenForm(Config_Prog::kName, false);
    auto* view = dynamic_cast<Config_Prog*>(Forms::Find(Config_Prog::kName));
    ASSERT_NE(view, nullptr);
    view->TimerUpdate()->stop();
    device.progStates = {0, 37};
    view->TimerUpdate_Timer();
    view->TimerUpdate_Timer();
    Save(view, "Config_Prog_Uploading");
    device.progStates = {100};
    for (int i = 0; i < 3; ++i) {
        view->TimerUpdate_Timer();
    }
    Save(view, "Config_Prog_Configuring");
    device.progStates = {0};
    view->TimerUpdate_Timer();
    Save(view, "Config_Prog_Success");
}

TEST_F(ViewPictures, HelpUpdate) {
    test::LoopbackHttpServer server(test::LoopbackHttpServer::Mode::Answer,
                                    "HTTP/1.1 200 OK\r\n\r\nSoftware=1.0.3&Firmware=1.0.4");
    ASSERT_TRUE(server.Listening());
    AUF_Registry::WriteValue("UpdateHost", SettingValue(server.HostSetting()));
    root->OpenForm(Help_Update::kName, false, std::make_shared<DEV_Status>());
    auto* view = dynamic_cast<Help_Update*>(Forms::Find(Help_Update::kName));
    ASSERT_NE(view, nullptr);
    auto* advice = view->findChild<QLabel*>("Label_Advice");
    ASSERT_TRUE(test::WaitFor([&] { return !advice->text().startsWith("Please wait"); }));
    Save(view, "Help_Update_UpToDate");
}

TEST_F(ViewPictures, HelpUpdateWaiting) {
    test::LoopbackHttpServer server(test::LoopbackHttpServer::Mode::Silent);
    ASSERT_TRUE(server.Listening());
    AUF_Registry::WriteValue("UpdateHost", SettingValue(server.HostSetting()));
    root->OpenForm(Help_Update::kName, false, std::make_shared<DEV_Status>());
    auto* view = dynamic_cast<Help_Update*>(Forms::Find(Help_Update::kName));
    ASSERT_NE(view, nullptr);
    Save(view, "Help_Update_Waiting");
}

TEST_F(ViewPictures, HelpAbout) {
    root->OpenForm(Help_About::kName, false);
    auto* view = dynamic_cast<Help_About*>(Forms::Find(Help_About::kName));
    ASSERT_NE(view, nullptr);
    Save(view, "Help_About");
}

} // namespace
} // namespace zol
