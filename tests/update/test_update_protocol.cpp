// The pieces of the update check that need no server: the request text, the reading of an answer,
// the storing of the body, the version compare and where the server is.
#include "device_link/core/ErrTrap.h"
#include "framework/seam/Product.h"
#include "services/settings/AUF_Registry.h"
#include "services/update/AUF_WebLink.h"
#include "services/update/UpdateProtocol.h"
#include "services/update/WebAddress.h"
#include "tests/support/ScopedConfigDir.h"
#include "tests/support/ScriptedUi.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <random>

namespace zol {
namespace {

using test::ScopedConfigDir;

int FaultNumber(const std::function<void()>& body) {
    try {
        body();
    } catch (const RuntimeFault& fault) {
        return fault.Number();
    }
    return 0;
}

TEST(UpdateProtocol, RequestIsTheThreeLinesAndAnEmptyOne) {
    update::RequestFacts facts{"KARN DMX-ZOL", "Linux 6.1", "SP2", "English", "Germany", "1.0.3", "203"};
    EXPECT_EQ(update::BuildRequest("updates.example", facts),
              "GET /support/updates.php?current=1.0.3&software=203&firmware=1 HTTP/1.1\r\n"
              "Host: updates.example\r\n"
              "User-Agent: KARN DMX-ZOL (Linux 6.1; SP2; English-Germany)\r\n"
              "\r\n");
}

TEST(UpdateProtocol, AnswerSplitsIntoTrimmedHeadersAndAJoinedBody) {
    const update::Answer answer = update::ParseAnswer(
        "  HTTP/1.1 200 OK  \r\nServer: x \r\n\r\n Software=1.2.3& \r\n\r\n  Firmware=4 \r\n");
    EXPECT_EQ(answer.status, "200");
    ASSERT_EQ(answer.headers.size(), 2u);
    EXPECT_EQ(answer.headers[0], "HTTP/1.1 200 OK");
    EXPECT_EQ(answer.headers[1], "Server: x");
    EXPECT_EQ(answer.body, "Software=1.2.3&Firmware=4");
}

TEST(UpdateProtocol, StatusIsTheSecondWordEvenWhenItIsEmpty) {
    // Two blanks make an empty second word, which is not "200".
    EXPECT_EQ(update::ParseAnswer("HTTP/1.1  200 OK\r\n\r\n").status, "");
}

TEST(UpdateProtocol, AnswerWithoutASecondWordIsAMissingPart) {
    EXPECT_EQ(FaultNumber([] { update::ParseAnswer("garbage\r\n\r\nSoftware=1"); }), rt::SubscriptOutOfRange);
    EXPECT_EQ(FaultNumber([] { update::ParseAnswer(""); }), rt::SubscriptOutOfRange);
}

TEST(UpdateProtocol, BodyItemsAreStoredUnderLatestAndTheirKey) {
    ScopedConfigDir config;
    update::StoreBody("Software= 2.0.1 &Firmware=0.3.12&Extra=a=b");
    EXPECT_EQ(AUF_Registry::ReadString("Latest_Software"), "2.0.1");
    EXPECT_EQ(AUF_Registry::ReadString("Latest_Firmware"), "0.3.12");
    EXPECT_EQ(AUF_Registry::ReadString("Latest_Extra"), "a");
}

TEST(UpdateProtocol, BodyItemWithoutEqualsFailsAfterTheItemsBeforeIt) {
    ScopedConfigDir config;
    EXPECT_EQ(FaultNumber([] { update::StoreBody("Software=2.0.1&Broken&Firmware=1"); }),
              rt::SubscriptOutOfRange);
    EXPECT_EQ(AUF_Registry::ReadString("Latest_Software"), "2.0.1");
    EXPECT_EQ(AUF_Registry::ReadString("Latest_Firmware", "<none>"), "<none>");
}

TEST(UpdateProtocol, ASoftwareValueThatIsNotAVersionIsNeverStored) {
    ScopedConfigDir config;
    AUF_Registry::WriteValue("Latest_Software", SettingValue(std::string("1.0.0")));
    try {
        update::StoreBody("Firmware=0.4.0&software=abc.1&Extra=1");
        ADD_FAILURE() << "a bad version was taken";
    } catch (const update::BadVersion& e) {
        EXPECT_EQ(e.Value(), "abc.1");
        EXPECT_EQ(e.Number(), rt::TypeMismatch);
    }
    EXPECT_EQ(AUF_Registry::ReadString("Latest_Software"), "1.0.0") << "the value known before stays";
    EXPECT_EQ(AUF_Registry::ReadString("Latest_Firmware"), "0.4.0");
    EXPECT_EQ(AUF_Registry::ReadString("Latest_Extra", "<none>"), "<none>");
}

TEST(UpdateProtocol, PresentVersionOfFewerThanThreePartsComparesAsPaddedWithZero) {
    EXPECT_TRUE(update::IsNewer("1.0.1", "1.0"));
    EXPECT_FALSE(update::IsNewer("1.0.0", "1.0"));
    EXPECT_FALSE(update::IsNewer("1", "1.0.0"));
    EXPECT_TRUE(update::IsNewer("2", "1"));
    EXPECT_FALSE(update::IsNewer("1..", "1.0.0"));
}

TEST(UpdateProtocol, EqualVersionsAreNotNewerAndFieldsCompareAsNumbers) {
    EXPECT_FALSE(update::IsNewer("1.0.3", "1.0.3"));
    EXPECT_FALSE(update::IsNewer("01.00.003", "1.0.3"));
    EXPECT_TRUE(update::IsNewer("1.0.10", "1.0.9"));
}

TEST(UpdateProtocol, ALowerPartDoesNotEndTheWalk) {
    EXPECT_TRUE(update::IsNewer("1.5.0", "2.0.0"));
    EXPECT_TRUE(update::IsNewer("0.0.4", "1.0.3"));
    EXPECT_FALSE(update::IsNewer("0.0.3", "1.0.3"));
}

TEST(UpdateProtocol, APartThatIsNotANumberOrTooLargeFails) {
    EXPECT_EQ(FaultNumber([] { update::IsNewer("1.x.0", "1.0.0"); }), rt::TypeMismatch);
    EXPECT_EQ(FaultNumber([] { update::IsNewer("1.0.0", "1. .0"); }), rt::TypeMismatch);
    EXPECT_EQ(FaultNumber([] { update::IsNewer("40000.0.0", "1.0.0"); }), rt::Overflow);
    EXPECT_EQ(update::ToInteger16(" -12 "), -12);
    EXPECT_EQ(update::ToInteger16("32767"), 32767);
}

TEST(UpdateProtocol, SplitOfAnEmptyTextHasNoItems) {
    EXPECT_TRUE(update::SplitText("", "&").empty());
    EXPECT_EQ(update::SplitText("a&", "&").size(), 2u);
}

TEST(UpdateProtocol, GarbageAnswersEitherReadOrFailWithARunTimeFault) {
    ScopedConfigDir config;
    std::mt19937 random(20240611);
    const std::string alphabet =
        std::string("\r\n &=.0123456789 HTTP/1.1 200 Software", 39) + std::string(1, '\0');
    for (int round = 0; round < 300; ++round) {
        std::string text;
        const size_t length = random() % 120;
        for (size_t i = 0; i < length; ++i) {
            text += (random() % 4 == 0) ? static_cast<char>(random() % 256)
                                        : alphabet[random() % alphabet.size()];
        }
        try {
            const update::Answer answer = update::ParseAnswer(text);
            update::StoreBody(answer.body);
            update::IsNewer(AUF_Registry::ReadString("Latest_Software", ""), "1.0.3");
        } catch (const RuntimeFault& fault) {
            EXPECT_TRUE(fault.Number() == rt::SubscriptOutOfRange || fault.Number() == rt::TypeMismatch ||
                        fault.Number() == rt::Overflow)
                << fault.Number();
        }
    }
}

TEST(WebAddress, NamesUnderTheInvalidDomainAreKnownWithoutALookup) {
    EXPECT_TRUE(web::IsReservedInvalidName("updates.zol-test.invalid"));
    EXPECT_TRUE(web::IsReservedInvalidName("X.INVALID."));
    EXPECT_TRUE(web::IsReservedInvalidName("invalid"));
    EXPECT_FALSE(web::IsReservedInvalidName("notinvalid"));
    EXPECT_FALSE(web::IsReservedInvalidName("invalid.example"));
    EXPECT_FALSE(web::IsReservedInvalidName("127.0.0.1"));
}

TEST(WebAddress, HostAndPortSplit) {
    EXPECT_EQ(web::SplitHostPort("127.0.0.1:8080").host, "127.0.0.1");
    EXPECT_EQ(web::SplitHostPort("127.0.0.1:8080").port, 8080);
    EXPECT_EQ(web::SplitHostPort("updates.example").port, 80);
    EXPECT_EQ(web::SplitHostPort("updates.example:http").host, "updates.example:http");
    EXPECT_EQ(web::SplitHostPort("updates.example:70000").port, 80);
}

TEST(WebAddress, UpdateHostIsASettingWithTheMakersDefault) {
    ScopedConfigDir config;
    unsetenv("ZOL_UPDATE_HOST");
    EXPECT_EQ(web::UpdateHost(), std::string(product::kDefaultUpdateHost));
    AUF_Registry::WriteValue("UpdateHost", SettingValue(std::string("127.0.0.1:8123")));
    EXPECT_EQ(web::UpdateHost(), "127.0.0.1:8123");
    EXPECT_EQ(web::SupportPage(), "http://127.0.0.1:8123/support/");
}

TEST(WebAddress, HomePageFollowsTheWebBaseSetting) {
    ScopedConfigDir config;
    unsetenv("ZOL_WEB_BASE");
    EXPECT_EQ(web::HomePage(), std::string(product::kDefaultWebBase) + "/");
    AUF_Registry::WriteValue("WebBase", SettingValue(std::string("http://127.0.0.1:9/")));
    EXPECT_EQ(web::HomePage(), "http://127.0.0.1:9/");
}

TEST(AUF_WebLink, OpensTheUrlThroughTheUi) {
    test::ScriptedUi ui;
    AUF_WebLink::Open(nullptr, "http://127.0.0.1:9/support/");
    ASSERT_EQ(ui.urls.size(), 1u);
    EXPECT_EQ(ui.urls[0], "http://127.0.0.1:9/support/");
}

} // namespace
} // namespace zol
