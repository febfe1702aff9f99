// Renders the main panel and the connection view to PNG files under <build>/artifacts, for people
// to look at; the test checks that each picture was written and that no control is clipped.
#include "plugin/core/FDF_Port.h"
#include "services/settings/AUF_Registry.h"
#include "tests/panel/PanelTestSupport.h"

#include <QComboBox>
#include <QDir>
#include <QImage>
#include <QLayout>
#include <QPixmap>

namespace zol::test {
namespace {

using ScreenshotTest = PanelFixture;

QString ArtifactPath(const char* name) {
    const QString dir = QString::fromStdString(BinDir()) + QStringLiteral("/../artifacts");
    QDir().mkpath(dir);
    return QDir(dir).absoluteFilePath(QString::fromLatin1(name));
}

// Every visible control lies wholly inside its parent and has room for what it wants to show.
void ExpectNothingClipped(QWidget* view) {
    for (QWidget* child : view->findChildren<QWidget*>()) {
        if (!child->isVisible() || child->isWindow() || child->parentWidget() == nullptr) {
            continue;
        }
        const QRect inParent = child->geometry();
        EXPECT_TRUE(child->parentWidget()->rect().contains(inParent))
            << child->objectName().toStdString() << " sticks out of its parent";
        const QSize wanted = child->minimumSizeHint();
        if (wanted.isValid() && child->objectName().startsWith(QLatin1String("Image_")) == false &&
            child->sizePolicy().horizontalPolicy() != QSizePolicy::Ignored) {
            EXPECT_GE(child->width(), wanted.width())
                << child->objectName().toStdString() << " is narrower than it needs";
            EXPECT_GE(child->height(), wanted.height())
                << child->objectName().toStdString() << " is lower than it needs";
        }
    }
}

void Save(QWidget* view, const char* file) {
    view->adjustSize();
    QTest::qWait(20);
    const QPixmap picture = view->grab();
    ASSERT_FALSE(picture.isNull());
    const QString path = ArtifactPath(file);
    ASSERT_TRUE(picture.save(path)) << path.toStdString();
    EXPECT_FALSE(QImage(path).isNull());
}

TEST_F(ScreenshotTest, MainPanelDisconnected) {
    User_Main* panel = OpenPanel();
    ExpectNothingClipped(panel);
    Save(panel, "user_main_disconnected.png");
}

TEST_F(ScreenshotTest, MainPanelConnected) {
    AUF_Registry::WriteValue("PortUsed", std::string("ZOL USB 1"));
    User_Main* panel = OpenPanel();
    Click(panel, "Image_Plug_1");
    ASSERT_EQ(Status(panel), "Connected");
    ExpectNothingClipped(panel);
    Save(panel, "user_main_connected.png");
}

TEST_F(ScreenshotTest, ConfigPort) {
    User_Main* panel = OpenPanel();
    bool shown = false;
    WhenShown("Config_Port", [&](QWidget* view) {
        shown = true;
        Child<QComboBox>(view, "Combo_SelectPort")->setCurrentIndex(0);
        ExpectNothingClipped(view);
        Save(view, "config_port.png");
        dynamic_cast<View*>(view)->Unload();
    });
    Action(panel, "Menu_Connection_Settings")->trigger();
    EXPECT_TRUE(shown);
}

} // namespace
} // namespace zol::test
