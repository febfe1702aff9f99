#pragma once
// HCF_Text: turns a one-line text box into a fixed-format entry field. The user types over a row of
// fixed positions, one selected position at a time; each position accepts only what the mask
// allows. The value reaches the view in one piece through AfterUpdate when the box loses the focus
// with a value that satisfies the mask. In messages it calls itself "InputFilter Class".
//
// Mask: up to three fields split by ";": the pattern, "0"/"1" (literals are part of the value),
// the placeholder shown at an empty position.
//   0 digit          9 digit or space (optional)    # digit or sign (optional)
//   L letter         ? letter or space (optional)
//   A letter/digit   a letter or digit (optional)
//   & anything       C anything (optional)          H hexadecimal digit, upper-cased
//   > upper case from here   < lower case from here   ! right aligned   / next char is a literal
// Any other character is a literal shown at its own position.
//
// The binding owns the box's key and focus events (an event filter on the QLineEdit). Positions
// count from 1; Data holds one byte a position, a zero byte where nothing has been typed.

#include <QObject>
#include <QPointer>
#include <cstdint>
#include <functional>
#include <string>

class QLineEdit;
class QWidget;

namespace zol {

class HCF_Text : public QObject {
    Q_OBJECT
public:
    // Filter bits of one position.
    enum FilterBit : uint8_t {
        Upper = 1,
        Lower = 2,
        Digit = 4,
        Space = 8,
        Sign = 16,
        Optional = 32,
        Other = 64,
        HexOnly = 128,
    };

    explicit HCF_Text(QObject* parent = nullptr);
    ~HCF_Text() override;

    // Takes the box. Anything but a text box gets a stop box titled "InputFilter Class" and the
    // binding stays unassigned.
    void Assign(QWidget* control);
    // Sets the mask (write-only).
    void Mask(const std::string& mask);
    // Writes a value to show; raises no AfterUpdate.
    void Text(const std::string& value);
    // The value: Data as it stands.
    std::string Text() const { return data_; }
    // The box's name, a leading "Text_" removed when the name is longer than 5 characters.
    std::string Name() const;
    void SetFocus();
    // Puts back the text the box had when the edit began.
    void Revert();

    // Events. AfterUpdate: an edit has ended with a valid value. StateChange: Filled has reached
    // MaxLength (true) or left it (false).
    std::function<void(std::string& value)> AfterUpdate;
    std::function<void(bool& complete)> StateChange;

    // State, for the views and tests that look at it.
    QLineEdit* Box() const;
    const std::string& Filter() const { return filter_; }
    const std::string& Literals() const { return literals_; }
    const std::string& Saved() const { return saved_; }
    uint8_t Placeholder() const { return placeholder_; }
    bool Editing() const { return editing_; }
    bool KeepLiterals() const { return keepLiterals_; }
    bool RightAlign() const { return rightAlign_; }
    bool Complete() const { return complete_; }
    int16_t Filled() const { return filled_; }
    int16_t MaxLength() const { return maxLength_; }

    // The routines behind the box's events, by the key codes of the classic toolkit: KeyPress takes
    // a character code (8 backspace, 27 escape, 127 delete) and returns it, 0 when swallowed;
    // KeyDown takes a raw key code (37..40 arrows, 46 delete) and returns 0 when swallowed.
    int KeyPress(int keyAscii);
    int KeyDown(int keyCode);
    void GotFocus();
    void LostFocus();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void BeginEdit();
    void EndEdit();
    void CompletenessTest();
    uint8_t FilterAt(int p) const;
    int NextPosition(int p) const;
    int PreviousPosition(int p) const;
    int KeyFilter(int key, int p);

    // The box seen through selection start and length, as the classic text box offers them.
    std::string BoxText() const;
    void SetBoxText(const std::string& text);
    int SelStart() const;
    int SelLength() const;
    void SetSelStart(int start);
    void SetSelLength(int length);

    QPointer<QLineEdit> box_;
    // The same box seen as a plain object, so that events can be matched to it without a cast.
    QPointer<QObject> boxObject_;
    // The selection as it stood when the focus left: a text box keeps its selection while another
    // control has the focus, and gets it back with the focus.
    bool heldValid_ = false;
    int heldStart_ = 0;
    int heldLength_ = 0;
    std::string data_;
    std::string filter_;
    std::string literals_;
    uint8_t placeholder_ = ' ';
    std::string saved_;
    bool editing_ = false;
    bool keepLiterals_ = false;
    bool rightAlign_ = false;
    bool complete_ = false;
    int16_t filled_ = 0;
    int16_t maxLength_ = 0;
};

} // namespace zol
