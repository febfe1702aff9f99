// The update check against a real HTTP server on the loopback address, started and stopped by each
// test: the request as it crosses the wire, the answer's status, body and length, the version
// compare, and every socket failure.
#include "device_link/status/DEV_Status.h"
#include "device_link/status/SYS_Status.h"
#include "framework/form/Forms.h"
#include "framework/form/HCF_Form.h"
#include "framework/seam/Product.h"
#include "services/settings/AUF_Registry.h"
#include "services/update/Help_Update.h"
#include "tests/support/ScopedConfigDir.h"
#include "tests/support/ScriptedUi.h"
#include "tests/update/LoopbackHttpServer.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QTest>
#include <cstdlib>
#include <functional>
#include <gtest/gtest.h>

namespace zol {
namespace {

using test::LoopbackHttpServer;
using test::ScopedConfigDir;
using test::ScriptedUi;

// Pumps the event loop until `done` holds or `ms` have passed; true when it held.
bool WaitFor(const std::function<bool()>& done, int ms = 5000) {
    QElapsedTimer clock;
    clock.start();
    while (!done()) {
        if (clock.elapsed() > ms) {
            return false;
        }
        QTest::qWait(10);
    }
    return true;
}

class DataOfAnotherClass : public DataObject {
public:
    std::string DataClass() const override { return "FDF_Port"; }
};

const std::string kWaitText = "Please wait while the server is contacted for the latest updates";
const std::string kProduct = product::kProductName;
const std::string kUpToDate = kProduct + " is up to date. No updates are currently available.";
const std::string kNewer = "A more recent version of " + kProduct + " is available for download.";
const std::string kNotContacted =
    "Server could not be contacted. Please check you internet connection and try again.";

std::string HttpAnswer(const std::string& status, const std::string& body) {
    return "HTTP/1.1 " + status + "\r\nContent-Type: text/plain\r\nConnection: close\r\n\r\n" + body;
}

class HelpUpdateTest : public ::testing::Test {
protected:
    void SetUp() override {
        unsetenv("ZOL_UPDATE_HOST");
        Forms::Register(Help_Update::kName, [] { return new Help_Update; });
        root = HCF_Form::Create();
    }
    void TearDown() override {
        Forms::UnloadAll();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    // Opens the view the way the main panel does, with the port's device status as its data.
    Help_Update* Open(const DataRef& data = std::make_shared<DEV_Status>()) {
        root->OpenForm(Help_Update::kName, false, data);
        view = dynamic_cast<Help_Update*>(Forms::Find(Help_Update::kName));
        return view.data();
    }
    std::string Advice() const { return view->findChild<QLabel*>("Label_Advice")->text().toStdString(); }
    bool WebLinkVisible() const { return !view->findChild<QLabel*>("Label_WebLink")->isHidden(); }
    bool Open() const { return !view.isNull() && Forms::IsOpen(view.data()); }
    void UseServer(const LoopbackHttpServer& server) {
        ASSERT_TRUE(server.Listening());
        AUF_Registry::WriteValue("UpdateHost", SettingValue(server.HostSetting()));
    }
    static std::string Latest(const std::string& key) {
        return AUF_Registry::ReadString("Latest_" + key, "<none>");
    }

    ScopedConfigDir config;
    ScriptedUi ui;
    std::shared_ptr<HCF_Form> root;
    QPointer<Help_Update> view;
};

TEST_F(HelpUpdateTest, RequestIsOneGetWithHostAndUserAgentOnly) {
    LoopbackHttpServer server(LoopbackHttpServer::Mode::Answer,
                              HttpAnswer("200 OK", "Software=" + product::Version()));
    UseServer(server);
    ASSERT_NE(Open(), nullptr);
    ASSERT_TRUE(WaitFor([&] { return Advice() != kWaitText; }));

    SYS_Status sys;
    const std::string expected = "GET /support/updates.php?current=" + product::Version() +
                                 "&software=203&firmware=1 HTTP/1.1\r\n"
                                 "Host: " +
                                 server.HostSetting() +
                                 "\r\n"
                                 "User-Agent: " +
                                 sys.LongName() + " (" + sys.WinVersion() + "; " + sys.ServicePack() + "; " +
                                 sys.Language() + "-" + sys.Country() + ")\r\n\r\n";
    ASSERT_EQ(server.Requests().size(), 1u);
    EXPECT_EQ(server.Requests()[0], expected);
    EXPECT_EQ(view->findChild<QLabel*>("Label_Title")->text().toStdString(),
              std::string(AppTitle()) + " Updates");
}

TEST_F(HelpUpdateTest, NewerVersionAsksAndOpensTheSupportPageOnYes) {
    LoopbackHttpServer server(LoopbackHttpServer::Mode::Answer,
                              HttpAnswer("200 OK", "Software=9.9.9&Firmware=0.3.12\r\n"));
    UseServer(server);
    ui.AnswerWith([](const test::ShownBox& box) {
        EXPECT_EQ(box.prompt, "Would you like to downnload version 9.9.9 now");
        EXPECT_EQ(box.title.value_or(""), kProduct + " Update");
        EXPECT_EQ(box.Buttons(), vb::YesNo);
        EXPECT_EQ(box.Icon(), vb::Question);
        return vb::Yes;
    });
    ASSERT_NE(Open(), nullptr);
    ASSERT_TRUE(WaitFor([&] { return ui.boxes.size() == 1; }));

    EXPECT_EQ(Advice(), kNewer);
    EXPECT_EQ(Latest("Software"), "9.9.9");
    EXPECT_EQ(Latest("Firmware"), "0.3.12");
    ASSERT_EQ(ui.urls.size(), 1u);
    EXPECT_EQ(ui.urls[0], "http://" + server.HostSetting() + "/support/");
    EXPECT_EQ(ui.MousePointer(), kPointerDefault);
    EXPECT_TRUE(Open());
}

TEST_F(HelpUpdateTest, NewerVersionAnsweredNoOpensNothing) {
    LoopbackHttpServer server(LoopbackHttpServer::Mode::Answer, HttpAnswer("200 OK", "Software=9.0.0"));
    UseServer(server);
    ui.Expect("Would you like to downnload version 9.0.0 now", vb::No);
    ASSERT_NE(Open(), nullptr);
    ASSERT_TRUE(WaitFor([&] { return ui.boxes.size() == 1; }));
    EXPECT_EQ(Advice(), kNewer);
    EXPECT_TRUE(ui.urls.empty());
}

TEST_F(HelpUpdateTest, LatestSoftwareEqualToThePresentVersionIsUpToDate) {
    LoopbackHttpServer server(LoopbackHttpServer::Mode::Answer,
                              HttpAnswer("200 OK", "Software=" + product::Version()));
    UseServer(server);
    ASSERT_NE(Open(), nullptr);
    ASSERT_TRUE(WaitFor([&] { return Advice() != kWaitText; }));
    EXPECT_EQ(Advice(), kUpToDate);
    EXPECT_TRUE(ui.boxes.empty());
    EXPECT_EQ(Latest("Software"), product::Version());
    EXPECT_EQ(ui.MousePointer(), kPointerDefault);
}

TEST_F(HelpUpdateTest, OlderMajorWithNewerMinorCountsAsNewer) {
    // 0.9.0 against 1.0.3: the lower major does not end the walk, and the minor is greater.
    ASSERT_EQ(product::VersionMajor(), 1);
    LoopbackHttpServer server(LoopbackHttpServer::Mode::Answer, HttpAnswer("200 OK", "Software=0.9.0"));
    UseServer(server);
    ui.Expect("Would you like to downnload version 0.9.0 now", vb::No);
    ASSERT_NE(Open(), nullptr);
    ASSERT_TRUE(WaitFor([&] { return ui.boxes.size() == 1; }));
    EXPECT_EQ(Advice(), kNewer);
}

TEST_F(HelpUpdateTest, HeadersOnlyStoresNothingAndReportsUpToDateWithNoStoredKey) {
    LoopbackHttpServer server(LoopbackHttpServer::Mode::Answer, HttpAnswer("200 OK", ""));
    UseServer(server);
    ASSERT_NE(Open(), nullptr);
    ASSERT_TRUE(WaitFor([&] { return Advice() != kWaitText; }));
    EXPECT_EQ(Advice(), kUpToDate);
    EXPECT_EQ(Latest("Software"), "<none>");
    EXPECT_EQ(Latest("Firmware"), "<none>");
}

TEST_F(HelpUpdateTest, HeadersOnlyStoresNothingAndReportsNewerFromTheStoredKey) {
    AUF_Registry::WriteValue("Latest_Software", SettingValue(std::string("7.1.2")));
    // Headers and no empty line at all: every line is a header.
    LoopbackHttpServer server(LoopbackHttpServer::Mode::Answer, "HTTP/1.1 200 OK\r\nContent-Length: 0");
    UseServer(server);
    ui.Expect("Would you like to downnload version 7.1.2 now", vb::No);
    ASSERT_NE(Open(), nullptr);
    ASSERT_TRUE(WaitFor([&] { return ui.boxes.size() == 1; }));
    EXPECT_EQ(Advice(), kNewer);
    EXPECT_EQ(Latest("Software"), "7.1.2");
}

TEST_F(HelpUpdateTest, StatusOtherThan200ShowsTheCodeAndTheViewStays) {
    AUF_Registry::WriteValue("Latest_Software", SettingValue(std::string("0.0.1")));
    LoopbackHttpServer server(LoopbackHttpServer::Mode::Answer,
                              HttpAnswer("404 Not Found", "Software=9.9.9"));
    UseServer(server);
    ui.AnswerWith([](const test::ShownBox& box) {
        EXPECT_EQ(box.prompt, "Error Code 404 returned from server");
        EXPECT_EQ(box.title.value_or(""), "Checking for Updates");
        EXPECT_EQ(box.Icon(), vb::Exclamation);
        return vb::OK;
    });
    ASSERT_NE(Open(), nullptr);
    ASSERT_TRUE(WaitFor([&] { return ui.boxes.size() == 1; }));
    QTest::qWait(50);
    EXPECT_TRUE(Open());
    EXPECT_EQ(Advice(), kWaitText);
    EXPECT_EQ(Latest("Software"), "0.0.1");
    // The pointer stays as it was: the hourglass of the start.
    EXPECT_EQ(ui.MousePointer(), kPointerHourglass);
}

TEST_F(HelpUpdateTest, BodyItemWithoutEqualsFailsOnTheMissingPart) {
    LoopbackHttpServer server(LoopbackHttpServer::Mode::Answer,
                              HttpAnswer("200 OK", "Firmware=0.4.0&Broken&Software=9.9.9"));
    UseServer(server);
    ui.AnswerWith([](const test::ShownBox& box) {
        EXPECT_EQ(box.prompt, "Server Data Error\r\n[]");
        EXPECT_EQ(box.title.value_or(""), "Update Information");
        EXPECT_EQ(box.Icon(), vb::Critical);
        return vb::OK;
    });
    ASSERT_NE(Open(), nullptr);
    ASSERT_TRUE(WaitFor([&] { return ui.boxes.size() == 1; }));
    // The items before the broken one are stored; none after it.
    EXPECT_EQ(Latest("Firmware"), "0.4.0");
    EXPECT_EQ(Latest("Software"), "<none>");
    EXPECT_EQ(Advice(), kWaitText);
    EXPECT_TRUE(Open());
}

TEST_F(HelpUpdateTest, ABadVersionFromTheServerIsShownButNotStoredSoTheNextCheckWorks) {
    {
        LoopbackHttpServer server(LoopbackHttpServer::Mode::Answer, HttpAnswer("200 OK", "Software=abc.1"));
        UseServer(server);
        ui.Expect("Server Data Error\r\n[abc.1]", vb::OK, std::string("Update Information"));
        ASSERT_NE(Open(), nullptr);
        ASSERT_TRUE(WaitFor([&] { return ui.boxes.size() == 1; }));
        EXPECT_EQ(Latest("Software"), "<none>");
        Forms::UnloadAll();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    LoopbackHttpServer server(LoopbackHttpServer::Mode::Answer, HttpAnswer("200 OK", ""));
    UseServer(server);
    ASSERT_NE(Open(), nullptr);
    ASSERT_TRUE(WaitFor([&] { return Advice() != kWaitText; }));
    EXPECT_EQ(Advice(), kUpToDate);
    EXPECT_EQ(ui.boxes.size(), 1u);
}

TEST_F(HelpUpdateTest, ABadVersionStoredEarlierReadsAsAbsent) {
    AUF_Registry::WriteValue("Latest_Software", SettingValue(std::string("abc.1")));
    LoopbackHttpServer server(LoopbackHttpServer::Mode::Answer, HttpAnswer("200 OK", ""));
    UseServer(server);
    ASSERT_NE(Open(), nullptr);
    ASSERT_TRUE(WaitFor([&] { return Advice() != kWaitText; }));
    EXPECT_EQ(Advice(), kUpToDate);
    EXPECT_TRUE(ui.boxes.empty());
}

TEST_F(HelpUpdateTest, VersionThatIsNotANumberShowsServerDataError) {
    LoopbackHttpServer server(LoopbackHttpServer::Mode::Answer, HttpAnswer("200 OK", "Software=1.x.0"));
    UseServer(server);
    ui.Expect("Server Data Error\r\n[1.x.0]", vb::OK, std::string("Update Information"));
    ASSERT_NE(Open(), nullptr);
    ASSERT_TRUE(WaitFor([&] { return ui.boxes.size() == 1; }));
    EXPECT_EQ(ui.boxes[0].Icon(), vb::Critical);
    EXPECT_EQ(Latest("Software"), "<none>") << "a value no compare can read is not kept";
    EXPECT_EQ(Advice(), kWaitText);
}

TEST_F(HelpUpdateTest, AnswerLongerThan2048CharactersIsCutThere) {
    const std::string head = HttpAnswer("200 OK", "");
    std::string body = "Software=" + product::Version() + "&Filler=";
    const size_t fillerAt = head.size() + body.size();
    ASSERT_LT(fillerAt, 2048u);
    body += std::string(3000, 'A') + "&Tail=zz";
    LoopbackHttpServer server(LoopbackHttpServer::Mode::Answer, head + body);
    UseServer(server);
    ASSERT_NE(Open(), nullptr);
    ASSERT_TRUE(WaitFor([&] { return Advice() != kWaitText; }));
    EXPECT_EQ(Advice(), kUpToDate);
    EXPECT_EQ(Latest("Filler"), std::string(2048 - fillerAt, 'A'));
    EXPECT_EQ(Latest("Tail"), "<none>");
}

TEST_F(HelpUpdateTest, HostThatDoesNotResolveShowsAdviceAndTheViewStays) {
    AUF_Registry::WriteValue("UpdateHost", SettingValue(std::string("updates.zol-test.invalid")));
    ASSERT_NE(Open(), nullptr);
    ASSERT_TRUE(WaitFor([&] { return Advice() != kWaitText; }, 30000));
    EXPECT_EQ(Advice(), kNotContacted);
    EXPECT_TRUE(WebLinkVisible());
    EXPECT_TRUE(Open());
    EXPECT_TRUE(ui.boxes.empty());
    EXPECT_EQ(ui.MousePointer(), kPointerDefault);
}

TEST_F(HelpUpdateTest, RefusedConnectionClosesTheViewAndShowsTheError) {
    uint16_t port = 0;
    {
        LoopbackHttpServer probe;
        ASSERT_TRUE(probe.Listening());
        port = probe.Port();
    } // closed again: nothing listens there now
    AUF_Registry::WriteValue("UpdateHost", SettingValue("127.0.0.1:" + std::to_string(port)));
    ui.AnswerWith([](const test::ShownBox& box) {
        EXPECT_EQ(box.title.value_or(""), "Server Connection Error");
        EXPECT_EQ(box.Icon(), vb::Exclamation);
        EXPECT_NE(box.prompt.find("refused"), std::string::npos) << box.prompt;
        return vb::OK;
    });
    ASSERT_NE(Open(), nullptr);
    ASSERT_TRUE(WaitFor([&] { return ui.boxes.size() == 1; }));
    EXPECT_FALSE(Forms::IsOpen(view.data()));
    EXPECT_EQ(Forms::Find(Help_Update::kName), nullptr);
    EXPECT_EQ(ui.MousePointer(), kPointerDefault);
}

TEST_F(HelpUpdateTest, ServerThatNeverAnswersLeavesTheViewAsItWasUntilClosed) {
    LoopbackHttpServer server(LoopbackHttpServer::Mode::Silent);
    UseServer(server);
    ASSERT_NE(Open(), nullptr);
    ASSERT_TRUE(WaitFor([&] {
        return !server.Requests().empty() && server.Requests()[0].find("\r\n\r\n") != std::string::npos;
    }));
    QTest::qWait(1500);
    EXPECT_EQ(Advice(), kWaitText);
    EXPECT_FALSE(WebLinkVisible());
    EXPECT_TRUE(ui.boxes.empty());
    EXPECT_EQ(ui.MousePointer(), kPointerHourglass);
    EXPECT_TRUE(Open());

    QTest::mouseClick(view->findChild<QPushButton*>("Button_Exit"), Qt::LeftButton);
    EXPECT_FALSE(Forms::IsOpen(view.data()));
    // The close steps put the pointer back.
    EXPECT_EQ(ui.MousePointer(), kPointerDefault);
}

TEST_F(HelpUpdateTest, ClosingTheViewEndsTheCheckWithNothingShownLater) {
    uint16_t port = 0;
    {
        LoopbackHttpServer probe;
        ASSERT_TRUE(probe.Listening());
        port = probe.Port();
    } // nothing listens there now: the connection will be refused
    AUF_Registry::WriteValue("UpdateHost", SettingValue("127.0.0.1:" + std::to_string(port)));
    ASSERT_NE(Open(), nullptr);
    view->Button_Exit_Click();
    QTest::qWait(300);
    EXPECT_TRUE(ui.boxes.empty());
    EXPECT_EQ(Forms::Find(Help_Update::kName), nullptr);
}

TEST_F(HelpUpdateTest, ServerThatClosesWithoutAnswerLeavesTheViewAsItWas) {
    LoopbackHttpServer server(LoopbackHttpServer::Mode::CloseAtOnce);
    UseServer(server);
    ASSERT_NE(Open(), nullptr);
    ASSERT_TRUE(WaitFor([&] { return server.Connections() == 1; }));
    QTest::qWait(300);
    EXPECT_EQ(Advice(), kWaitText);
    EXPECT_TRUE(ui.boxes.empty());
    EXPECT_TRUE(Open());
}

TEST_F(HelpUpdateTest, DataOfAnotherClassIsRefusedAndTheCheckRunsAllTheSame) {
    LoopbackHttpServer server(LoopbackHttpServer::Mode::Answer, HttpAnswer("200 OK", "Software=0.0.1"));
    UseServer(server);
    ui.Expect("Class object \"FDF_Port\" not handled", vb::OK, std::string("Help_Update.Control (Set)"));
    ASSERT_NE(Open(std::make_shared<DataOfAnotherClass>()), nullptr);
    ASSERT_TRUE(WaitFor([&] { return Advice() != kWaitText; }));
    EXPECT_EQ(Advice(), kUpToDate);
}

TEST_F(HelpUpdateTest, NoDataObjectIsAccepted) {
    LoopbackHttpServer server(LoopbackHttpServer::Mode::Answer, HttpAnswer("200 OK", "Software=0.0.1"));
    UseServer(server);
    ASSERT_NE(Open(nullptr), nullptr);
    ASSERT_TRUE(WaitFor([&] { return Advice() != kWaitText; }));
    EXPECT_EQ(Advice(), kUpToDate);
}

TEST_F(HelpUpdateTest, WebLinkOpensTheSupportPage) {
    AUF_Registry::WriteValue("UpdateHost", SettingValue(std::string("updates.zol-test.invalid")));
    ASSERT_NE(Open(), nullptr);
    ASSERT_TRUE(WaitFor([&] { return WebLinkVisible(); }, 30000));
    QTest::mouseClick(view->findChild<QLabel*>("Label_WebLink"), Qt::LeftButton);
    ASSERT_EQ(ui.urls.size(), 1u);
    EXPECT_EQ(ui.urls[0], "http://updates.zol-test.invalid/support/");
}

TEST_F(HelpUpdateTest, EnvironmentOverridesTheHostSetting) {
    LoopbackHttpServer server(LoopbackHttpServer::Mode::Answer, HttpAnswer("200 OK", "Software=0.0.1"));
    AUF_Registry::WriteValue("UpdateHost", SettingValue(std::string("updates.zol-test.invalid")));
    setenv("ZOL_UPDATE_HOST", server.HostSetting().c_str(), 1);
    ASSERT_NE(Open(), nullptr);
    EXPECT_EQ(view->HostName(), server.HostSetting());
    const bool done = WaitFor([&] { return Advice() != kWaitText; });
    unsetenv("ZOL_UPDATE_HOST");
    ASSERT_TRUE(done);
    EXPECT_EQ(Advice(), kUpToDate);
}

} // namespace
} // namespace zol
