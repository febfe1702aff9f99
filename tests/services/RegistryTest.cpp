// The settings store: typed values under the section "Software\<company>\<title>", defaults,
// fatal failures, and its files.
#include "device_link/core/ErrTrap.h"
#include "framework/seam/Product.h"
#include "services/settings/AUF_Registry.h"
#include "services/settings/SettingsFile.h"
#include "tests/support/ScopedConfigDir.h"
#include "tests/support/ScriptedUi.h"

#include <chrono>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>

namespace zol::test {
namespace {

namespace fs = std::filesystem;
namespace sf = settings_file;

std::string ReadAll(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

void WriteText(const fs::path& path, const std::string& text) {
    fs::create_directories(path.parent_path());
    std::ofstream out(path, std::ios::binary);
    out << text;
}

class RegistryTest : public ::testing::Test {
protected:
    void SetUp() override { AUF_Registry::SetApplicationIdentity(product::kCompany, product::kTitle); }
    void TearDown() override {
        AUF_Registry::SetApplicationIdentity(product::kCompany, product::kTitle);
        sf::SetWriteFailHookForTest({});
    }
    fs::path SectionFile() const { return config_.Path() / "karn-zol/registry/Software/KARN/DMX-ZOL.conf"; }
    // A file of the section with the given value lines.
    void Seed(const std::string& lines) { WriteText(SectionFile(), "[Software\\KARN\\DMX-ZOL]\n" + lines); }
    // Expects the fatal stop box with `text`, then the halt, from `body`.
    template <typename Body> void ExpectFatal(const std::string& text, Body body) {
        ui_.Expect(text, vb::OK);
        const size_t before = ui_.boxes.size();
        EXPECT_THROW(body(), HaltSignal);
        ASSERT_EQ(ui_.boxes.size(), before + 1);
        EXPECT_EQ(ui_.boxes.back().style, vb::Critical);
        EXPECT_FALSE(ui_.boxes.back().title.has_value()) << "the box has the default title";
    }

    ScopedConfigDir config_;
    ScriptedUi ui_;
};

// ---- Values that cannot be written or read, odd names, defaults ----

TEST_F(RegistryTest, ANegativeIntegerOrLongCannotBeWrittenAndStopsTheProgram) {
    AUF_Registry::WriteValue("User_Main_PosX", int16_t{120});
    ExpectFatal("Invalid procedure call or argument",
                [] { AUF_Registry::WriteValue("User_Main_PosX", int16_t{-15}); });
    ExpectFatal("Invalid procedure call or argument", [] { AUF_Registry::WriteValue("Other", int32_t{-1}); });
    EXPECT_EQ(ui_.halts, 2);
    // Nothing was stored by the failed writes.
    EXPECT_EQ(std::get<int32_t>(AUF_Registry::ReadValue("User_Main_PosX", int16_t{-1})), 120);
    EXPECT_EQ(std::get<int32_t>(AUF_Registry::ReadValue("Other", int32_t{7})), 7);
}

TEST_F(RegistryTest, ReadingADwordWithTheTopBitSetFailsWithAnOverflowAndStops) {
    Seed("\"Big\"=dword:80000000\n");
    ExpectFatal("Overflow", [] { AUF_Registry::ReadValue("Big", int32_t{0}); });
    Seed("\"Biggest\"=dword:FFFFFFFF\n");
    ExpectFatal("Overflow", [] { AUF_Registry::ReadValue("Biggest", int32_t{0}); });
}

TEST_F(RegistryTest, AStoredStringReadsBackWithTheLengthItWasWrittenWith) {
    AUF_Registry::WriteValue("PortUsed", std::string("ZOL USB 1"));
    EXPECT_EQ(std::get<std::string>(AUF_Registry::ReadValue("PortUsed", std::string())), "ZOL USB 1");
    // The store keeps the terminating zero after the text.
    sf::Document document;
    ASSERT_EQ(sf::Load(SectionFile().string(), document, nullptr), sf::LoadResult::Loaded);
    const sf::StoredValue* stored = document.Find("Software\\KARN\\DMX-ZOL")->Find("PortUsed");
    ASSERT_NE(stored, nullptr);
    EXPECT_EQ(stored->type, 1);
    EXPECT_EQ(stored->data, std::string("ZOL USB 1\0", 10));
}

TEST_F(RegistryTest, ANameOfSpacesReachesTheValueDefault) {
    AUF_Registry::WriteValue("   ", std::string("spaces"));
    EXPECT_EQ(std::get<std::string>(AUF_Registry::ReadValue("Default", std::string())), "spaces");
    EXPECT_EQ(std::get<std::string>(AUF_Registry::ReadValue("", std::string())), "spaces");
    EXPECT_NE(ReadAll(SectionFile()).find("\"Default\"=sz:\"spaces\""), std::string::npos);
}

TEST_F(RegistryTest, AMissingSectionOnReadGivesTheDefault) {
    EXPECT_EQ(std::get<std::string>(AUF_Registry::ReadValue("PortUsed", std::string("none"))), "none");
    EXPECT_FALSE(fs::exists(SectionFile())) << "reading never creates anything";
}

TEST_F(RegistryTest, ASectionThatExistsWithTheValueMissingGivesTheDefaultToo) {
    AUF_Registry::WriteValue("PortUsed", std::string("A"));
    EXPECT_EQ(std::get<int16_t>(AUF_Registry::ReadValue("Device_Lamp_PosY", int16_t{5})), 5);
    EXPECT_EQ(std::get<bool>(AUF_Registry::ReadValue("Hushed", true)), true);
}

// ---- Types ----

TEST_F(RegistryTest, AnIntegerIsStoredAsADwordAndReadsBackAsA32BitNumber) {
    AUF_Registry::WriteValue("User_Main_PosX", int16_t{1500});
    const SettingValue value = AUF_Registry::ReadValue("User_Main_PosX", int16_t{-1});
    ASSERT_TRUE(std::holds_alternative<int32_t>(value));
    EXPECT_EQ(std::get<int32_t>(value), 1500);
    EXPECT_NE(ReadAll(SectionFile()).find("\"User_Main_PosX\"=dword:000005DC"), std::string::npos);
}

TEST_F(RegistryTest, ALongIsStoredLeastSignificantByteFirst) {
    AUF_Registry::WriteValue("DeviceModel", int32_t{0x01020304});
    sf::Document document;
    ASSERT_EQ(sf::Load(SectionFile().string(), document, nullptr), sf::LoadResult::Loaded);
    const sf::StoredValue* stored = document.Find("Software\\KARN\\DMX-ZOL")->Find("DeviceModel");
    ASSERT_NE(stored, nullptr);
    EXPECT_EQ(stored->type, 4);
    EXPECT_EQ(stored->data, std::string("\x04\x03\x02\x01", 4));
    EXPECT_EQ(std::get<int32_t>(AUF_Registry::ReadValue("DeviceModel", int32_t{0})), 0x01020304);
    AUF_Registry::WriteValue("Max", int32_t{0x7FFFFFFF});
    EXPECT_EQ(std::get<int32_t>(AUF_Registry::ReadValue("Max", int32_t{0})), 0x7FFFFFFF);
}

TEST_F(RegistryTest, ABooleanIsStoredAsOneBinaryByte) {
    AUF_Registry::WriteValue("Flag", true);
    EXPECT_NE(ReadAll(SectionFile()).find("\"Flag\"=binary:01"), std::string::npos);
    EXPECT_EQ(std::get<bool>(AUF_Registry::ReadValue("Flag", false)), true);
    AUF_Registry::WriteValue("Flag", false);
    EXPECT_EQ(std::get<bool>(AUF_Registry::ReadValue("Flag", true)), false);
}

TEST_F(RegistryTest, ReadingFollowsTheStoredTypeNotTheDefaultsType) {
    AUF_Registry::WriteValue("Mixed", std::string("12"));
    EXPECT_TRUE(std::holds_alternative<std::string>(AUF_Registry::ReadValue("Mixed", int32_t{0})));
    AUF_Registry::WriteValue("Mixed", true);
    EXPECT_TRUE(std::holds_alternative<bool>(AUF_Registry::ReadValue("Mixed", std::string())));
}

TEST_F(RegistryTest, AnEmptyStringIsStoredAsNoBytesAndReadsBackAsTheDefault) {
    AUF_Registry::WriteValue("DerogationCode", std::string());
    EXPECT_EQ(std::get<std::string>(AUF_Registry::ReadValue("DerogationCode", std::string("dflt"))), "dflt");
    EXPECT_NE(ReadAll(SectionFile()).find("\"DerogationCode\"=sz:\n"), std::string::npos);
}

TEST_F(RegistryTest, AnUnhandledValueTypeIsFatalOnWrite) {
    ExpectFatal("Data type \"Currency\" not handled",
                [] { AUF_Registry::WriteValue("X", OtherSettingType{"Currency"}); });
    EXPECT_FALSE(fs::exists(SectionFile()));
}

TEST_F(RegistryTest, AnUnhandledStoredTypeIsFatalOnRead) {
    Seed("\"Multi\"=hex(7):41 00 00\n");
    ExpectFatal("Registry Data type not handled", [] { AUF_Registry::ReadValue("Multi", std::string()); });
}

TEST_F(RegistryTest, TextsWithQuotesBackslashesLineBreaksAndDegreeSignsSurvive) {
    const std::string odd = "C:\\Firmware \"new\"\r\nline\t°";
    AUF_Registry::WriteValue("SourceDir", odd);
    AUF_Registry::WriteValue("Temp_°Units", int16_t{2});
    EXPECT_EQ(std::get<std::string>(AUF_Registry::ReadValue("SourceDir", std::string())), odd);
    EXPECT_EQ(std::get<int32_t>(AUF_Registry::ReadValue("Temp_°Units", int16_t{0})), 2);
}

TEST_F(RegistryTest, NamesAreTrimmedAndCompareWithoutCase) {
    AUF_Registry::WriteValue("  PortUsed ", std::string("B"));
    EXPECT_EQ(std::get<std::string>(AUF_Registry::ReadValue("portused", std::string())), "B");
    AUF_Registry::WriteValue("PORTUSED", std::string("C"));
    EXPECT_EQ(std::get<std::string>(AUF_Registry::ReadValue("PortUsed", std::string())), "C");
    EXPECT_NE(ReadAll(SectionFile()).find("\"PortUsed\"=sz:\"C\""), std::string::npos);
}

TEST_F(RegistryTest, ValuesWrittenEarlierStayWhenOthersAreWritten) {
    AUF_Registry::WriteValue("A", std::string("1"));
    AUF_Registry::WriteValue("B", int16_t{2});
    AUF_Registry::WriteValue("C", true);
    EXPECT_EQ(AUF_Registry::ReadString("A"), "1");
    EXPECT_EQ(AUF_Registry::ReadLong("B"), 2);
    EXPECT_TRUE(AUF_Registry::ReadBool("C"));
}

// ---- Section and identity ----

TEST_F(RegistryTest, TheSectionIsFormedFromCompanyAndTitleTrimmed) {
    EXPECT_EQ(AUF_Registry::Section(), "Software\\KARN\\DMX-ZOL");
    AUF_Registry::SetApplicationIdentity("  ACME ", " Tool  ");
    EXPECT_EQ(AUF_Registry::Section(), "Software\\ACME\\Tool");
    AUF_Registry::WriteValue("X", std::string("y"));
    EXPECT_TRUE(fs::exists(config_.Path() / "karn-zol/registry/Software/ACME/Tool.conf"));
}

TEST_F(RegistryTest, AMissingCompanyNameIsFatalForBothOperations) {
    AUF_Registry::SetApplicationIdentity("  ", product::kTitle);
    ExpectFatal("Application Company Name not set", [] { AUF_Registry::ReadValue("X", std::string()); });
    ExpectFatal("Application Company Name not set", [] { AUF_Registry::WriteValue("X", std::string("y")); });
}

TEST_F(RegistryTest, AMissingTitleIsFatalForBothOperations) {
    AUF_Registry::SetApplicationIdentity(product::kCompany, "");
    ExpectFatal("Application Title is not set", [] { AUF_Registry::ReadValue("X", std::string()); });
    ExpectFatal("Application Title is not set", [] { AUF_Registry::WriteValue("X", std::string("y")); });
}

TEST_F(RegistryTest, WithBothMissingOnlyTheCompanyMessageIsShown) {
    AUF_Registry::SetApplicationIdentity("", "");
    ExpectFatal("Application Company Name not set", [] { AUF_Registry::ReadValue("X", std::string()); });
    EXPECT_EQ(ui_.boxes.size(), 1u);
}

// ---- Failures of the store ----

TEST_F(RegistryTest, ASectionThatCannotBeOpenedIsFatalOnRead) {
    fs::create_directories(SectionFile()); // a folder where the section's file should be
    ExpectFatal("Could not open registry section", [] { AUF_Registry::ReadValue("X", std::string()); });
}

TEST_F(RegistryTest, ACorruptSectionFileIsFatalOnReadAndNotACrash) {
    Seed("\"PortUsed\"=sz:\"unterminated\n");
    ExpectFatal("Could not open registry section",
                [] { AUF_Registry::ReadValue("PortUsed", std::string()); });
    WriteText(SectionFile(), std::string("\x00\x01garbage\xFF", 11));
    ExpectFatal("Could not open registry section",
                [] { AUF_Registry::ReadValue("PortUsed", std::string()); });
    WriteText(SectionFile(), "\"PortUsed\"=sz:\"value before any section\"\n");
    ExpectFatal("Could not open registry section",
                [] { AUF_Registry::ReadValue("PortUsed", std::string()); });
}

TEST_F(RegistryTest, ACorruptSectionFileIsFatalOnWriteAndIsNotOverwritten) {
    const std::string corrupt = "[Software\\KARN\\DMX-ZOL]\n\"A\"=dword:12\n";
    WriteText(SectionFile(), corrupt);
    ExpectFatal("Could not open/create registry section \"Software\\KARN\\DMX-ZOL\"",
                [] { AUF_Registry::WriteValue("B", std::string("x")); });
    EXPECT_EQ(ReadAll(SectionFile()), corrupt);
}

TEST_F(RegistryTest, ASectionThatCannotBeCreatedIsFatalOnWrite) {
    WriteText(config_.Path() / "karn-zol/registry/Software/KARN", "a file where a folder should be");
    ExpectFatal("Could not open/create registry section \"Software\\KARN\\DMX-ZOL\"",
                [] { AUF_Registry::WriteValue("B", std::string("x")); });
}

TEST_F(RegistryTest, AValueThatCannotBeStoredIsFatalWithItsName) {
    sf::SetWriteFailHookForTest([](sf::WriteStage stage) { return stage == sf::WriteStage::BeforeRename; });
    ExpectFatal("Registry Value \"PortUsed\" update failed",
                [] { AUF_Registry::WriteValue("PortUsed", std::string("x")); });
}

TEST_F(RegistryTest, AHandEditedDwordOfTheWrongSizeIsFatalNotACrash) {
    Seed("\"Short\"=hex(4):01 02\n");
    ExpectFatal("Subscript out of range", [] { AUF_Registry::ReadValue("Short", int32_t{0}); });
}

TEST_F(RegistryTest, AWriteInterruptedAtAnyPointLeavesThePreviousFileReadable) {
    AUF_Registry::WriteValue("PortUsed", std::string("first"));
    AUF_Registry::WriteValue("User_Main_PosX", int16_t{300});
    const std::string before = ReadAll(SectionFile());
    for (sf::WriteStage failAt :
         {sf::WriteStage::TempCreated, sf::WriteStage::PartWritten, sf::WriteStage::Written,
          sf::WriteStage::Synced, sf::WriteStage::BeforeRename}) {
        SCOPED_TRACE(static_cast<int>(failAt));
        sf::SetWriteFailHookForTest([failAt](sf::WriteStage stage) { return stage == failAt; });
        ExpectFatal("Registry Value \"PortUsed\" update failed",
                    [] { AUF_Registry::WriteValue("PortUsed", std::string("second, a much longer text")); });
        sf::SetWriteFailHookForTest({});
        EXPECT_EQ(ReadAll(SectionFile()), before);
        EXPECT_EQ(AUF_Registry::ReadString("PortUsed"), "first");
        EXPECT_EQ(AUF_Registry::ReadLong("User_Main_PosX"), 300);
        // No temporary file is left behind.
        size_t files = 0;
        for ([[maybe_unused]] const auto& entry : fs::directory_iterator(SectionFile().parent_path())) {
            ++files;
        }
        EXPECT_EQ(files, 1u);
    }
    AUF_Registry::WriteValue("PortUsed", std::string("second"));
    EXPECT_EQ(AUF_Registry::ReadString("PortUsed"), "second");
}

TEST_F(RegistryTest, ATemporaryFileLeftByAStoppedWriteIsIgnored) {
    AUF_Registry::WriteValue("PortUsed", std::string("kept"));
    WriteText(SectionFile().parent_path() / ".DMX-ZOL.conf.Ab12Cd", "[Software\\KARN\\DMX-ZOL]\n\"PortU");
    EXPECT_EQ(AUF_Registry::ReadString("PortUsed"), "kept");
    AUF_Registry::WriteValue("Other", true);
    EXPECT_EQ(AUF_Registry::ReadString("PortUsed"), "kept");
}

TEST_F(RegistryTest, TheSettingsFolderFollowsXdgConfigHome) {
    EXPECT_EQ(SettingsFolder(), (config_.Path() / "karn-zol").string());
}

// ---- Conveniences ----

TEST_F(RegistryTest, ReadStringGivesNumbersAndFlagsAsText) {
    AUF_Registry::WriteValue("N", int16_t{42});
    AUF_Registry::WriteValue("F", true);
    EXPECT_EQ(AUF_Registry::ReadString("N"), "42");
    EXPECT_EQ(AUF_Registry::ReadString("F"), "True");
    EXPECT_EQ(AUF_Registry::ReadString("Missing", "0.0.0"), "0.0.0");
}

TEST_F(RegistryTest, ReadLongConvertsNumericTextAndRefusesOtherText) {
    AUF_Registry::WriteValue("T", std::string(" 17 "));
    EXPECT_EQ(AUF_Registry::ReadLong("T"), 17);
    AUF_Registry::WriteValue("T", std::string("2.5"));
    EXPECT_EQ(AUF_Registry::ReadLong("T"), 2);
    AUF_Registry::WriteValue("T", std::string("abc"));
    try {
        AUF_Registry::ReadLong("T");
        FAIL();
    } catch (const RuntimeFault& e) {
        EXPECT_EQ(e.Number(), rt::TypeMismatch);
    }
    EXPECT_EQ(AUF_Registry::ReadLong("Missing", -1), -1);
}

TEST_F(RegistryTest, ReadBoolConvertsNumbersAndWords) {
    AUF_Registry::WriteValue("B", std::string("True"));
    EXPECT_TRUE(AUF_Registry::ReadBool("B"));
    AUF_Registry::WriteValue("B", std::string("false"));
    EXPECT_FALSE(AUF_Registry::ReadBool("B", true));
    AUF_Registry::WriteValue("B", int16_t{3});
    EXPECT_TRUE(AUF_Registry::ReadBool("B"));
    AUF_Registry::WriteValue("B", std::string("maybe"));
    EXPECT_THROW(AUF_Registry::ReadBool("B"), RuntimeFault);
}

// ---- Large, oversized and interrupted files ----

TEST_F(RegistryTest, AFileOverFourMegabytesIsRefusedAsUnreadableAndLeftAsItIs) {
    std::string big = "[Software\\KARN\\DMX-ZOL]\n";
    while (big.size() <= sf::kMaxFileBytes) {
        big += "; padding padding padding padding padding padding padding padding padding padding\n";
    }
    WriteText(SectionFile(), big);
    ExpectFatal("Could not open registry section",
                [] { AUF_Registry::ReadValue("PortUsed", std::string()); });
    EXPECT_EQ(fs::file_size(SectionFile()), big.size());
}

TEST_F(RegistryTest, AHundredThousandValuesReadBackByNameWhateverTheirCase) {
    sf::Document document;
    sf::Section& section = document.Obtain("S");
    for (int i = 0; i < 100000; ++i) {
        section.Set("Key" + std::to_string(i), sf::kTypeDword, std::string("\x01\x00\x00\x00", 4));
    }
    section.Set("KEY99999", sf::kTypeSz, "x");
    std::string error;
    const auto parsed = sf::Parse(sf::Serialize(document), &error);
    ASSERT_TRUE(parsed.has_value()) << error;
    const sf::Section* back = parsed->Find("s");
    ASSERT_NE(back, nullptr);
    EXPECT_EQ(back->values.size(), 100000u);
    ASSERT_NE(back->Find("key99999"), nullptr);
    EXPECT_EQ(back->Find("key99999")->name, "Key99999") << "the first spelling written stays";
    EXPECT_EQ(back->Find("key99999")->type, sf::kTypeSz);
    EXPECT_EQ(back->Find("Key0")->type, sf::kTypeDword);
    EXPECT_EQ(back->Find("Key100000"), nullptr);
}

TEST_F(RegistryTest, AValueAddedAfterTheListWasChangedFromOutsideIsStillFound) {
    sf::Section section;
    section.Set("A", sf::kTypeSz, "1");
    section.values.push_back({"B", sf::kTypeSz, "2"});
    ASSERT_NE(section.Find("b"), nullptr);
    EXPECT_EQ(section.Find("b")->data, "2");
    section.values.erase(section.values.begin());
    EXPECT_EQ(section.Find("a"), nullptr);
    EXPECT_EQ(section.Find("B")->data, "2");
}

TEST_F(RegistryTest, AWriteRemovesTheStaleTemporaryFilesOfItsOwnFileOnly) {
    AUF_Registry::WriteValue("PortUsed", std::string("ZOL USB 1"));
    const fs::path folder = SectionFile().parent_path();
    const fs::path stale = folder / ".DMX-ZOL.conf.AbC123";
    const fs::path fresh = folder / ".DMX-ZOL.conf.XyZ789";
    const fs::path foreign = folder / ".Other.conf.AbC123";
    for (const auto& path : {stale, fresh, foreign}) {
        WriteText(path, "half a file");
    }
    const auto old = fs::file_time_type::clock::now() - std::chrono::hours(1);
    fs::last_write_time(stale, old);
    fs::last_write_time(foreign, old);
    AUF_Registry::WriteValue("PortUsed", std::string("ZOL USB 2"));
    EXPECT_FALSE(fs::exists(stale)) << "left by a write that was killed";
    EXPECT_TRUE(fs::exists(fresh)) << "a write under way elsewhere may still need it";
    EXPECT_TRUE(fs::exists(foreign)) << "another file's temporary is not ours";
    EXPECT_EQ(std::get<std::string>(AUF_Registry::ReadValue("PortUsed", std::string())), "ZOL USB 2");
}

using RegistryDeathTest = RegistryTest;

TEST_F(RegistryDeathTest, AnUnreadableStoreEndsTheProgramWithItsReasonAndFileOnStandardErrorAndStatus3) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    Seed("\"PortUsed\"=sz:\"unterminated\n");
    const std::string before = ReadAll(SectionFile());
    EXPECT_EXIT(
        {
            SetUi(nullptr); // the console fallback: its Halt is the product's end of the program
            AUF_Registry::ReadValue("PortUsed", std::string());
        },
        ::testing::ExitedWithCode(kHaltExitStatus),
        "DMX-ZOL: settings store: Could not open registry section: .*DMX-ZOL\\.conf is corrupt \\(line 2");
    EXPECT_EQ(ReadAll(SectionFile()), before) << "nothing is written on the way out";
}

// ---- The file format ----

TEST_F(RegistryTest, TheFileFormatRoundTripsEveryKindOfValue) {
    sf::Document document;
    sf::Section& section = document.Obtain("Software\\KARN\\DMX-ZOL");
    section.Set("Text", 1, std::string("a\"b\\c\0", 6));
    section.Set("Empty", 1, "");
    section.Set("NoZero", 1, "raw");
    section.Set("Word", 4, std::string("\x01\x00\x00\x80", 4));
    section.Set("Flag", 3, std::string("\x01", 1));
    section.Set("Other", 7, std::string("\x00\xFF", 2));
    std::string error;
    const auto parsed = sf::Parse(sf::Serialize(document), &error);
    ASSERT_TRUE(parsed.has_value()) << error;
    const sf::Section* back = parsed->Find("software\\karn\\dmx-zol");
    ASSERT_NE(back, nullptr);
    ASSERT_EQ(back->values.size(), section.values.size());
    for (size_t i = 0; i < section.values.size(); ++i) {
        EXPECT_EQ(back->values[i].name, section.values[i].name);
        EXPECT_EQ(back->values[i].type, section.values[i].type);
        EXPECT_EQ(back->values[i].data, section.values[i].data);
    }
}

TEST_F(RegistryTest, TheParserNamesTheLineOfAFault) {
    std::string error;
    EXPECT_FALSE(sf::Parse("; comment\n[S]\n\"A\"=dword:00000001\n\"B\"=binary:0G\n", &error).has_value());
    EXPECT_EQ(error, "line 4: malformed data");
    EXPECT_FALSE(sf::Parse("[S]\nA=sz:\"x\"\n", &error).has_value());
    EXPECT_EQ(error, "line 2: a value line must start with a quoted name");
    EXPECT_FALSE(sf::Parse("[S\n", &error).has_value());
    EXPECT_FALSE(sf::Parse("[S]\n\"A\"=sz:\"x\\q\"\n", &error).has_value());
    EXPECT_TRUE(sf::Parse("", &error).has_value());
    EXPECT_TRUE(sf::Parse("[S]\r\n\"A\" = sz:\"x\"\r\n", &error).has_value());
}

} // namespace
} // namespace zol::test
