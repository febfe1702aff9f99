// Byte-string and text helpers.
#include "services/strings/StrFormat.h"

#include "device_link/core/ErrTrap.h"
#include "tests/support/ScriptedUi.h"

#include <gtest/gtest.h>

namespace zol::test {
namespace {

using Bytes = std::string;

Bytes Of(std::initializer_list<int> values) {
    Bytes out;
    for (int v : values) {
        out.push_back(static_cast<char>(v));
    }
    return out;
}

TEST(StrFormatTest, IsVersionTakesWhatEveryCompareCanRead) {
    for (const char* good :
         {"1.0.3", "0.3.010", "1.0", "7", "", " 1 . 2 . 3 ", "1..", "32767.-32768.+5", "1.2.3.x"}) {
        EXPECT_TRUE(Text::IsVersion(good)) << good;
    }
    for (const char* bad : {"abc.1", "1.a.0", "1.x", "32768", "-32769", "1.2.3a", "-", "+.1", "1.0.0 beta"}) {
        EXPECT_FALSE(Text::IsVersion(bad)) << bad;
    }
}

TEST(StrFormatTest, HexToBytesOfAbcGivesAbAndC0AndLeavesTheTextAsAbc0) {
    std::string hex = "ABC";
    EXPECT_EQ(StrFormat::HexToBytes(hex), Of({0xAB, 0xC0}));
    EXPECT_EQ(hex, "ABC0");
}

TEST(StrFormatTest, HexToBytesOf0gShowsHexString0gAndStops) {
    ScriptedUi ui;
    ui.Expect("Hex String 0g", vb::OK, "Unexpected Error");
    std::string hex = "0g";
    EXPECT_THROW(StrFormat::HexToBytes(hex), HaltSignal);
    EXPECT_EQ(ui.halts, 1);
    ASSERT_EQ(ui.boxes.size(), 1u);
    EXPECT_EQ(ui.boxes[0].style, vb::Critical);
}

TEST(StrFormatTest, HexToBytesShowsTheTextAsPaddedWhenItStops) {
    ScriptedUi ui;
    ui.Expect("Hex String 1 20", vb::OK, "Unexpected Error");
    std::string hex = "1 2";
    EXPECT_THROW(StrFormat::HexToBytes(hex), HaltSignal);
}

TEST(StrFormatTest, HexToBytesTakesBothCasesAndAnEmptyText) {
    std::string hex = "0aFf10";
    EXPECT_EQ(StrFormat::HexToBytes(hex), Of({0x0A, 0xFF, 0x10}));
    std::string empty;
    EXPECT_EQ(StrFormat::HexToBytes(empty), "");
    EXPECT_EQ(empty, "");
}

TEST(StrFormatTest, BytesToHexOf0AFFWithABlankGives0AFFSpaced) {
    EXPECT_EQ(StrFormat::BytesToHex(Of({0x0A, 0xFF}), " "), "0A FF");
}

TEST(StrFormatTest, BytesToHexOf0AFFWithAnEmptySeparatorGives0AFF) {
    EXPECT_EQ(StrFormat::BytesToHex(Of({0x0A, 0xFF}), ""), "0AFF");
}

TEST(StrFormatTest, BytesToHexOfNothingIsEmpty) {
    EXPECT_EQ(StrFormat::BytesToHex("", ":"), "");
    EXPECT_EQ(StrFormat::BytesToHex(Of({0x00, 0x01, 0x80}), ":"), "00:01:80");
}

TEST(StrFormatTest, WordAtOfFFFEReads65534UnsignedAndMinus2Signed) {
    const Bytes data = Of({0xFF, 0xFE});
    EXPECT_EQ(StrFormat::WordAt(data, 1, false), 65534);
    EXPECT_EQ(StrFormat::WordAt(data, 1, true), -2);
}

TEST(StrFormatTest, WordAtReadsHighThenLowAtAnyPosition) {
    const Bytes data = Of({0x00, 0x12, 0x34, 0x7F, 0xFF});
    EXPECT_EQ(StrFormat::WordAt(data, 2, false), 0x1234);
    EXPECT_EQ(StrFormat::WordAt(data, 4, true), 0x7FFF);
}

TEST(StrFormatTest, WordAtBeyondTheDataIsAnInvalidCall) {
    const Bytes data = Of({0x01, 0x02, 0x03});
    try {
        StrFormat::WordAt(data, 3, false);
        FAIL();
    } catch (const RuntimeFault& e) {
        EXPECT_EQ(e.Number(), rt::InvalidCall);
    }
    EXPECT_THROW(StrFormat::WordAt(data, 0, false), RuntimeFault);
    EXPECT_THROW(StrFormat::WordAt("", 1, false), RuntimeFault);
}

TEST(StrFormatTest, ItemOfWithThreeOnACommaListWithAnEmptyItemGivesEmpty) {
    EXPECT_EQ(Text::ItemOf("a,b,,c", 3, ","), "");
}

TEST(StrFormatTest, ItemOfWithFourGivesC) {
    EXPECT_EQ(Text::ItemOf("a,b,,c", 4, ","), "c");
}

TEST(StrFormatTest, ItemOfWithFiveGivesEmpty) {
    EXPECT_EQ(Text::ItemOf("a,b,,c", 5, ","), "");
}

TEST(StrFormatTest, ItemOfOneGivesTheTextBeforeTheFirstDelimiter) {
    EXPECT_EQ(Text::ItemOf("a,b,,c", 1, ","), "a");
    EXPECT_EQ(Text::ItemOf("a,b,,c", 2, ","), "b");
    EXPECT_EQ(Text::ItemOf("no delimiter", 1, ","), "no delimiter");
    EXPECT_EQ(Text::ItemOf("k=v&x=y", 2, "&"), "x=y");
    EXPECT_EQ(Text::ItemOf("a::b", 2, "::"), "b");
}

TEST(StrFormatTest, QuoteTextOfAbGivesAbBetweenDoubleQuotes) {
    EXPECT_EQ(Text::QuoteText("ab"), "\"ab\"");
}

TEST(StrFormatTest, FormatPidOf0x51Gives0051) {
    EXPECT_EQ(FormatPID(0x51), "$0051");
}

TEST(StrFormatTest, FormatPidOf0x12345GivesTheLastFourDigits) {
    EXPECT_EQ(FormatPID(0x12345), "$2345");
}

TEST(StrFormatTest, FormatPidIsUpperCase) {
    EXPECT_EQ(FormatPID(0xabcd), "$ABCD");
    EXPECT_EQ(FormatPID(0), "$0000");
    EXPECT_EQ(FormatPID(-1), "$FFFF");
}

} // namespace
} // namespace zol::test
