// The masked entry field, key by key, on a real QLineEdit in an active window.
#include "framework/bindings/HCF_Text.h"
#include "tests/support/ScriptedUi.h"

#include <QComboBox>
#include <QLineEdit>
#include <QTest>
#include <QVBoxLayout>
#include <QWidget>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <string>
#include <vector>

using zol::HCF_Text;
using zol::test::ScriptedUi;

namespace {

// A window with the bound box and a second box to take the focus away.
class TextFixture {
public:
    TextFixture() {
        window = std::make_unique<QWidget>();
        auto* layout = new QVBoxLayout(window.get());
        box = new QLineEdit(window.get());
        box->setObjectName("Text_Hours");
        other = new QLineEdit(window.get());
        other->setObjectName("Text_Other");
        layout->addWidget(box);
        layout->addWidget(other);
        window->show();
        window->activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(window.get()));
        other->setFocus(Qt::OtherFocusReason);
        binding.Assign(box);
        binding.AfterUpdate = [this](std::string& value) { updates.push_back(value); };
        binding.StateChange = [this](bool& complete) { states.push_back(complete); };
    }

    void FocusIn() { box->setFocus(Qt::TabFocusReason); }
    void FocusOut() { other->setFocus(Qt::TabFocusReason); }

    // Keys: plain characters, or {BS} {DEL} {ESC} {LEFT} {RIGHT} {UP} {DOWN} {IN} {OUT}.
    void Type(const std::string& keys) {
        for (size_t i = 0; i < keys.size(); ++i) {
            if (keys[i] == '{') {
                const size_t end = keys.find('}', i);
                const std::string token = keys.substr(i + 1, end - i - 1);
                i = end;
                if (token == "BS") {
                    QTest::keyClick(box, Qt::Key_Backspace);
                } else if (token == "DEL") {
                    QTest::keyClick(box, Qt::Key_Delete);
                } else if (token == "ESC") {
                    QTest::keyClick(box, Qt::Key_Escape);
                } else if (token == "LEFT") {
                    QTest::keyClick(box, Qt::Key_Left);
                } else if (token == "RIGHT") {
                    QTest::keyClick(box, Qt::Key_Right);
                } else if (token == "UP") {
                    QTest::keyClick(box, Qt::Key_Up);
                } else if (token == "DOWN") {
                    QTest::keyClick(box, Qt::Key_Down);
                } else if (token == "IN") {
                    FocusIn();
                } else if (token == "OUT") {
                    FocusOut();
                } else {
                    ADD_FAILURE() << "unknown key token " << token;
                }
            } else {
                QTest::keyClick(box, keys[i]);
            }
        }
    }

    std::string Shown() const { return box->text().toStdString(); }
    int SelStart() const { return box->hasSelectedText() ? box->selectionStart() : box->cursorPosition(); }
    int SelLength() const { return box->hasSelectedText() ? box->selectionLength() : 0; }

    std::unique_ptr<QWidget> window;
    QLineEdit* box = nullptr;
    QLineEdit* other = nullptr;
    HCF_Text binding;
    std::vector<std::string> updates;
    std::vector<bool> states;
};

std::string Z(size_t n) {
    return std::string(n, '\0');
}

// ---- One row a key sequence ----

struct KeyRow {
    const char* name;
    const char* mask;
    std::optional<std::string> initial; // written through Text before the focus arrives
    const char* keys;                   // typed after the focus has arrived
    std::string shown;                  // the box's text afterwards
    std::string data;                   // Text read afterwards
    int filled;
    bool editing;
    int beeps;
    std::vector<std::string> updates; // AfterUpdate values, in order
    int selStart = -1;                // -1: not checked
    int selLength = -1;
};

void PrintTo(const KeyRow& row, std::ostream* os) {
    *os << row.name;
}

class KeySequence : public ::testing::TestWithParam<KeyRow> {};

TEST_P(KeySequence, Row) {
    const KeyRow& row = GetParam();
    ScriptedUi ui;
    TextFixture f;
    f.binding.Mask(row.mask);
    if (row.initial) {
        f.binding.Text(*row.initial);
    }
    f.FocusIn();
    f.Type(row.keys);
    EXPECT_EQ(f.Shown(), row.shown);
    EXPECT_EQ(f.binding.Text(), row.data);
    EXPECT_EQ(f.binding.Filled(), row.filled);
    EXPECT_EQ(f.binding.Editing(), row.editing);
    EXPECT_EQ(ui.beeps, row.beeps);
    EXPECT_EQ(f.updates, row.updates);
    if (row.selStart >= 0) {
        EXPECT_EQ(f.SelStart(), row.selStart);
    }
    if (row.selLength >= 0) {
        EXPECT_EQ(f.SelLength(), row.selLength);
    }
}

const KeyRow kRows[] = {
    // name, mask, initial, keys, shown, data, filled, editing, beeps, updates, selStart, selLength
    {"EmptyFieldShowsPlaceholdersOnFocus", "0999", std::nullopt, "", "    ", Z(4), 0, true, 0, {}, 0, 4},
    {"PlaceholderFromField3", "000;0;_", std::nullopt, "", "___", Z(3), 0, true, 0, {}, 0, 3},
    {"DigitsOverwriteOnePositionEach", "0999", std::nullopt, "12", "12  ", "12" + Z(2), 2, true, 0, {}, 2, 1},
    {"FrameRateCommitsOnFocusLoss", "09", std::nullopt, "4{OUT}", "4 ", "4", 1, false, 0, {"4"}},
    {"BreakTimeFull", "0099", std::nullopt, "1234{OUT}", "1234", "1234", 4, false, 0, {"1234"}},
    {"LetterRefusedInDigitField", "099;1", std::nullopt, "a", "   ", Z(3), 0, true, 1, {}, 0, 3},
    {"SignRefusedInDigitField", "0999", std::nullopt, "1+", "1   ", "1" + Z(3), 1, true, 1, {}, 1, 1},
    {"HashTakesSign", "#0", std::nullopt, "-5{OUT}", "-5", "-5", 2, false, 0, {"-5"}},
    {"HashRefusesSpace", "#0", std::nullopt, " ", "  ", Z(2), 0, true, 1, {}, 0, 2},
    {"NineTakesSpace", "09", std::nullopt, "1 ", "1 ", "1 ", 2, true, 0, {}},
    {"HexDigitsUpperCased", "HHHH", std::nullopt, "a1fz", "A1F ", "A1F" + Z(1), 3, true, 1, {}, 3, 1},
    {"UpperCaseMode", ">LLL", std::nullopt, "abc{OUT}", "ABC", "ABC", 3, false, 0, {"ABC"}},
    {"LowerCaseMode", "<LLL", std::nullopt, "ABC{OUT}", "abc", "abc", 3, false, 0, {"abc"}},
    {"LettersAsTyped", "LL", std::nullopt, "aB{OUT}", "aB", "aB", 2, false, 0, {"aB"}},
    {"LetterFieldRefusesDigit", "L", std::nullopt, "1", " ", Z(1), 0, true, 1, {}},
    {"AmpersandTakesAnything", "&&&", std::nullopt, "a*1{OUT}", "a*1", "a*1", 3, false, 0, {"a*1"}},
    {"LiteralsSkippedByTyping", "00-00", std::nullopt, "1234", "12-34", "12" + Z(1) + "34", 4, true, 0, {}},
    {"LiteralsLeftOutOfValue", "00-00", std::nullopt, "1234{OUT}", "12-34", "1234", 4, false, 0, {"1234"}},
    {"LiteralsKeptInValue", "00-00;1", std::nullopt, "1234{OUT}", "12-34", "12-34", 4, false, 0, {"12-34"}},
    {"EscapedLiteral", "0/00", std::nullopt, "12{OUT}", "102", "12", 2, false, 0, {"12"}},
    {"BackspaceClearsPreviousPosition",
     "0000",
     std::nullopt,
     "12{BS}",
     "1   ",
     "1" + Z(3),
     1,
     true,
     0,
     {},
     1,
     1},
    {"BackspaceTwice", "0000", std::nullopt, "12{BS}{BS}", "    ", Z(4), 0, true, 0, {}, 0, 1},
    {"BackspaceOverLiteral", "00-00", std::nullopt, "123{BS}{BS}", "1 -  ", "1" + Z(4), 1, true, 0, {}, 1, 1},
    {"DeleteClearsSelectedPosition",
     "0000",
     std::nullopt,
     "12{LEFT}{DEL}",
     "1   ",
     "1" + Z(3),
     1,
     true,
     0,
     {},
     1,
     1},
    {"RightArrowSkipsLiteral", "00-00", std::nullopt, "{RIGHT}{RIGHT}", "  -  ", Z(5), 0, true, 0, {}, 3, 1},
    {"LeftArrowStopsAtFirst", "0000", std::nullopt, "{LEFT}{LEFT}", "    ", Z(4), 0, true, 0, {}, 0, 4},
    {"UpReselectsPosition", "0000", std::nullopt, "1{UP}", "1   ", "1" + Z(3), 1, true, 0, {}, 1, 1},
    {"OverwriteKeepsCount", "0000", std::nullopt, "12{LEFT}9", "19  ", "19" + Z(2), 2, true, 0, {}, 2, 1},
    {"ValueShownSelectedOnFocus", "0999", std::string("42"), "", "42", "42" + Z(2), 2, false, 0, {}, 0, 2},
    {"KeyOnValueStartsFreshEdit", "0999", std::string("42"), "7", "7   ", "7" + Z(3), 1, true, 0, {}, 1, 1},
    {"NothingTypedRevertsSilently", "0999", std::string("42"), "7{BS}{OUT}", "42", "42", 2, true, 0, {}},
    {"EscapeRestoresDisplay", "0999", std::string("42"), "7{ESC}", "42", "7" + Z(3), 2, false, 0, {}},
    {"EscapeWhenNotEditingBeeps", "0999", std::string("42"), "{ESC}", "42", "42" + Z(2), 2, false, 1, {}},
    {"LampHoursCloseUpGaps", "09999999;1", std::nullopt, "1 2{OUT}", "1 2     ", "12", 3, false, 0, {"12"}},
    {"DmxAddressThreeDigits", "099;1", std::nullopt, "512{OUT}", "512", "512", 3, false, 0, {"512"}},
    {"SecondEditAfterCommit", "09", std::nullopt, "1{OUT}{IN}2{OUT}", "2 ", "2", 1, false, 0, {"1", "2"}},
};

INSTANTIATE_TEST_SUITE_P(HCF_Text, KeySequence, ::testing::ValuesIn(kRows),
                         [](const ::testing::TestParamInfo<KeyRow>& info) {
                             return std::string(info.param.name);
                         });

// ---- Mask parsing ----

TEST(HCF_TextMask, FilterValuesOfEachPatternCharacter) {
    HCF_Text t;
    t.Mask("09#L?Aa&CH");
    const std::string expected = {4, 44, 52, 3, 43, 7, 39, 95, 127, static_cast<char>(133)};
    EXPECT_EQ(t.Filter(), expected);
    EXPECT_EQ(t.Literals(), Z(10));
    EXPECT_EQ(t.MaxLength(), 10);
    EXPECT_FALSE(t.KeepLiterals());
    EXPECT_EQ(t.Placeholder(), ' ');
}

TEST(HCF_TextMask, CaseModesChangeLetterFilters) {
    HCF_Text t;
    t.Mask(">L<L");
    EXPECT_EQ(t.Filter(), std::string({1, 2}));
}

TEST(HCF_TextMask, LiteralsCountOnlyWhenKept) {
    HCF_Text a;
    a.Mask("00:00");
    EXPECT_EQ(a.MaxLength(), 4);
    HCF_Text b;
    b.Mask("00:00; 1 ");
    EXPECT_TRUE(b.KeepLiterals());
    EXPECT_EQ(b.MaxLength(), 5);
    EXPECT_EQ(b.Literals(), Z(2) + ":" + Z(2));
    EXPECT_EQ(b.Filter(), std::string({4, 4, 0, 4, 4}));
}

TEST(HCF_TextMask, EscapedLiteralNeverCounted) {
    HCF_Text t;
    t.Mask("0/00;1");
    EXPECT_EQ(t.Literals(), Z(1) + "0" + Z(1));
    EXPECT_EQ(t.Filter(), std::string({4, 0, 4}));
    EXPECT_EQ(t.MaxLength(), 2);
}

TEST(HCF_TextMask, BangMakesLiteralsOnePositionLonger) {
    HCF_Text t;
    t.Mask("!000");
    EXPECT_TRUE(t.RightAlign());
    EXPECT_EQ(t.Literals().size(), 4u);
    EXPECT_EQ(t.Filter().size(), 3u);
    EXPECT_EQ(t.MaxLength(), 4);
}

TEST(HCF_TextMask, PlaceholderIsFirstCharacterOfField3) {
    HCF_Text t;
    t.Mask("00;0;*#");
    EXPECT_EQ(t.Placeholder(), '*');
}

TEST(HCF_TextMask, BadField2ShowsMessageAndKeepsEarlierState) {
    ScriptedUi ui;
    HCF_Text t;
    t.Mask("0000");
    ui.Expect("Input mask Value \"2\" not valid for field 2", zol::vb::OK);
    t.Mask("00;2");
    ASSERT_EQ(ui.boxes.size(), 1u);
    EXPECT_EQ(ui.boxes[0].style, zol::vb::OKOnly);
    EXPECT_EQ(t.Filter(), std::string({4, 4, 4, 4}));
    EXPECT_EQ(t.Literals(), Z(4));
}

TEST(HCF_TextMask, MaskLimitedTo255Positions) {
    HCF_Text t;
    t.Mask(std::string(300, '0'));
    EXPECT_EQ(t.Filter().size(), 255u);
    EXPECT_EQ(t.Literals().size(), 255u);
}

// ---- Assign, Name, Text, StateChange ----

TEST(HCF_TextAssign, NonTextBoxRefusedWithStopBox) {
    ScriptedUi ui;
    QComboBox combo;
    HCF_Text t;
    ui.Expect("Type \"QComboBox\" not handled", zol::vb::OK, std::string("InputFilter Class"));
    t.Assign(&combo);
    ASSERT_EQ(ui.boxes.size(), 1u);
    EXPECT_EQ(ui.boxes[0].Icon(), zol::vb::Critical);
    EXPECT_EQ(t.Box(), nullptr);
}

TEST(HCF_TextAssign, NameDropsTextPrefix) {
    QLineEdit a;
    a.setObjectName("Text_Hours");
    QLineEdit b;
    b.setObjectName("TextDelayTime");
    QLineEdit c;
    c.setObjectName("Text_");
    HCF_Text ta, tb, tc;
    ta.Assign(&a);
    tb.Assign(&b);
    tc.Assign(&c);
    EXPECT_EQ(ta.Name(), "Hours");
    EXPECT_EQ(tb.Name(), "TextDelayTime");
    EXPECT_EQ(tc.Name(), "Text_");
}

TEST(HCF_TextValue, WritingTextShowsItWithoutEvent) {
    TextFixture f;
    f.binding.Mask("09999999;1");
    f.binding.Text("1234");
    EXPECT_EQ(f.Shown(), "1234");
    EXPECT_EQ(f.binding.Filled(), 4);
    EXPECT_TRUE(f.updates.empty());
    EXPECT_FALSE(f.binding.Editing());
}

TEST(HCF_TextValue, LiteralsInsertedWhenNotKept) {
    TextFixture f;
    f.binding.Mask("00:00");
    f.binding.Text("1234");
    EXPECT_EQ(f.Shown(), "12:34");
    EXPECT_EQ(f.binding.Filled(), 5);
}

TEST(HCF_TextValue, StateChangeWhenFilledReachesAndLeavesMaxLength) {
    ScriptedUi ui;
    TextFixture f;
    f.binding.Mask("00");
    f.FocusIn();
    f.Type("1");
    EXPECT_TRUE(f.states.empty());
    f.Type("2");
    EXPECT_EQ(f.states, std::vector<bool>({true}));
    EXPECT_TRUE(f.binding.Complete());
    f.Type("{BS}");
    EXPECT_EQ(f.states, std::vector<bool>({true, false}));
    EXPECT_FALSE(f.binding.Complete());
}

TEST(HCF_TextValue, RequiredPositionLeftEmptyKeepsEditAndFocus) {
    ScriptedUi ui;
    TextFixture f;
    f.binding.Mask("0099");
    f.FocusIn();
    f.Type("1");
    ui.Expect("Data not appropriate for Input Mask", zol::vb::OK);
    f.FocusOut();
    EXPECT_TRUE(f.binding.Editing());
    EXPECT_TRUE(f.updates.empty());
    EXPECT_EQ(f.binding.Text(), "1" + Z(3));
    EXPECT_TRUE(f.box->hasFocus());
    // Back in the box the edit goes on where it was.
    f.Type("2{OUT}");
    EXPECT_EQ(f.updates, std::vector<std::string>({"12"}));
}

TEST(HCF_TextValue, RevertPutsBackSaved) {
    TextFixture f;
    f.binding.Mask("0999");
    f.binding.Text("77");
    f.FocusIn();
    f.Type("12{OUT}");
    ASSERT_EQ(f.updates, std::vector<std::string>({"12"}));
    f.binding.Revert();
    EXPECT_EQ(f.Shown(), "77");
    EXPECT_EQ(f.binding.Text(), "77");
    EXPECT_EQ(f.binding.Filled(), 2);
}

// ---- Editing at the ends of the mask, escape and space ----

TEST(HCF_TextMask, BadField2LeavesMaxLengthZero) {
    ScriptedUi ui;
    ui.Answer(zol::vb::OK);
    HCF_Text t;
    t.Mask("0999;x");
    EXPECT_EQ(t.MaxLength(), 0);
    ASSERT_EQ(ui.boxes.size(), 1u);
    EXPECT_EQ(ui.boxes[0].prompt, "Input mask Value \"x\" not valid for field 2");
    EXPECT_EQ(ui.boxes[0].style, zol::vb::OKOnly);
    // Also after a mask that counted: the bad field leaves 0, not the earlier count.
    t.Mask("0999;1");
    ASSERT_EQ(t.MaxLength(), 4);
    ui.Answer(zol::vb::OK);
    t.Mask("0999;2");
    EXPECT_EQ(t.MaxLength(), 0);
    ASSERT_EQ(ui.boxes.size(), 2u);
    EXPECT_EQ(ui.boxes[1].prompt, "Input mask Value \"2\" not valid for field 2");
}

TEST(HCF_TextEditing, BackspaceAtFirstEditablePositionBeepsAndChangesNothing) {
    ScriptedUi ui;
    TextFixture f;
    f.binding.Mask("/-000");
    f.FocusIn();
    ASSERT_EQ(f.SelStart(), 1);
    f.Type("{BS}");
    EXPECT_EQ(ui.beeps, 1);
    EXPECT_EQ(f.Shown(), "-   ");
    EXPECT_EQ(f.binding.Filled(), 0);
    EXPECT_EQ(f.SelStart(), 1);
    EXPECT_EQ(f.binding.Text(), Z(4));
}

TEST(HCF_TextEditing, TypingPastLastPositionThenNextKeyRefused) {
    ScriptedUi ui;
    TextFixture f;
    f.binding.Mask("00");
    f.FocusIn();
    f.Type("12");
    EXPECT_EQ(f.SelStart(), 2);
    EXPECT_EQ(f.SelLength(), 0);
    EXPECT_EQ(ui.beeps, 0);
    f.Type("3");
    EXPECT_EQ(ui.beeps, 1);
    EXPECT_EQ(f.Shown(), "12");
    EXPECT_EQ(f.binding.Filled(), 2);
}

TEST(HCF_TextEditing, DeleteOnEmptyPositionKeepsFilled) {
    ScriptedUi ui;
    TextFixture f;
    f.binding.Mask("0000");
    f.FocusIn();
    f.Type("1");
    ASSERT_EQ(f.binding.Filled(), 1);
    f.Type("{DEL}");
    EXPECT_EQ(f.binding.Filled(), 1);
    EXPECT_EQ(f.binding.Text(), "1" + Z(3));
    EXPECT_EQ(f.Shown(), "1   ");
    EXPECT_EQ(ui.beeps, 0);
}

TEST(HCF_TextValue, TextLongerThanMaxLengthCutBeforeLiteralsInserted) {
    TextFixture f;
    f.binding.Mask("00-00");
    ASSERT_EQ(f.binding.MaxLength(), 4);
    f.binding.Text("123456");
    // Cut to "1234" first, then the literal goes in: "12-34", five characters with literals.
    EXPECT_EQ(f.Shown(), "12-34");
    EXPECT_EQ(f.binding.Filled(), 5);
}

TEST(HCF_TextEditing, EscapeOnFieldThatHeldNothingThenFocusBeginsEdit) {
    ScriptedUi ui;
    TextFixture f;
    f.binding.Mask("0999");
    f.FocusIn();
    f.Type("12{ESC}");
    EXPECT_EQ(f.binding.Filled(), 0);
    EXPECT_FALSE(f.binding.Editing());
    EXPECT_EQ(f.Shown(), "");
    f.FocusOut();
    f.FocusIn();
    EXPECT_TRUE(f.binding.Editing());
    EXPECT_EQ(f.Shown(), "    ");
    EXPECT_EQ(f.binding.Text(), Z(4));
}

TEST(HCF_TextEditing, AfterEscapeTextGivesWhatWasTyped) {
    ScriptedUi ui;
    TextFixture f;
    f.binding.Mask("0999");
    f.binding.Text("88");
    f.FocusIn();
    f.Type("12{ESC}");
    EXPECT_EQ(f.Shown(), "88");
    EXPECT_EQ(f.binding.Saved(), "88");
    EXPECT_EQ(f.binding.Text(), "12" + Z(2));
    EXPECT_TRUE(f.updates.empty());
}

TEST(HCF_TextEditing, SpaceAtNinePositionCountsFilledButLeavesNoCharacter) {
    ScriptedUi ui;
    TextFixture f;
    f.binding.Mask("0999");
    f.FocusIn();
    f.Type("1 ");
    EXPECT_EQ(f.binding.Filled(), 2);
    f.Type("{OUT}");
    EXPECT_EQ(f.updates, std::vector<std::string>({"1"}));
}

TEST(HCF_TextEditing, TextWrittenWhileEditingStaysInEdit) {
    ScriptedUi ui;
    TextFixture f;
    f.binding.Mask("0999");
    f.FocusIn();
    f.Type("1");
    ASSERT_TRUE(f.binding.Editing());
    f.binding.Text("55");
    EXPECT_TRUE(f.binding.Editing());
    EXPECT_EQ(f.Shown(), "55");
    EXPECT_EQ(f.binding.Filled(), 2);
    // Leaving ends that edit with the written value.
    f.FocusOut();
    EXPECT_EQ(f.updates, std::vector<std::string>({"55"}));
}

TEST(HCF_TextEditing, RevertLeavesEditingSoFocusOnlyReselects) {
    TextFixture f;
    f.binding.Mask("0999");
    f.binding.Text("42");
    f.FocusIn();
    f.Type("5{BS}{OUT}");
    EXPECT_TRUE(f.binding.Editing());
    EXPECT_EQ(f.Shown(), "42");
    f.FocusIn();
    // Still in the edit: one position selected, the shown value untouched.
    EXPECT_EQ(f.Shown(), "42");
    EXPECT_EQ(f.SelLength(), 1);
}

} // namespace
