#include "framework/bindings/HCF_Text.h"

#include "framework/seam/UiSeam.h"
#include "services/strings/StrFormat.h"

#include <QFocusEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <algorithm>

namespace zol {

namespace {

constexpr const char* kClassTitle = "InputFilter Class";
// Position counters are 8-bit: a mask has at most this many positions.
constexpr size_t kMaxPositions = 255;

bool IsEntryCharacter(char c) {
    switch (c) {
    case '0':
    case '9':
    case '#':
    case 'L':
    case '?':
    case 'A':
    case 'a':
    case '&':
    case 'C':
    case 'H':
        return true;
    default:
        return false;
    }
}

} // namespace

HCF_Text::HCF_Text(QObject* parent) : QObject(parent) {}

QLineEdit* HCF_Text::Box() const {
    return box_.data();
}

HCF_Text::~HCF_Text() {
    if (box_) {
        box_->removeEventFilter(this);
    }
}

void HCF_Text::Assign(QWidget* control) {
    auto* edit = qobject_cast<QLineEdit*>(control);
    if (edit == nullptr) {
        const std::string typeName = control != nullptr ? control->metaObject()->className() : "Nothing";
        ui().MsgBox("Type \"" + typeName + "\" not handled", vb::Critical, std::string(kClassTitle));
        return;
    }
    if (box_) {
        box_->removeEventFilter(this);
    }
    box_ = edit;
    boxObject_ = edit;
    // The binding owns the box's editing: no paste or drop behind its back.
    box_->setContextMenuPolicy(Qt::NoContextMenu);
    box_->setAcceptDrops(false);
    box_->installEventFilter(this);
}

void HCF_Text::Mask(const std::string& mask) {
    maxLength_ = 0;
    const std::string pattern = Text::ItemOf(mask, 1, ";");
    const std::string keep = Text::TrimBlanks(Text::ItemOf(mask, 2, ";"));
    const std::string holder = Text::ItemOf(mask, 3, ";");

    if (keep.empty() || keep == "0") {
        keepLiterals_ = false;
    } else if (keep == "1") {
        keepLiterals_ = true;
    } else {
        ui().MsgBox("Input mask Value \"" + keep + "\" not valid for field 2");
        return;
    }
    placeholder_ = holder.empty() ? static_cast<uint8_t>(' ') : static_cast<uint8_t>(holder[0]);
    rightAlign_ = false;

    // First pass: the literal of each position and the value's largest length.
    std::string literals;
    bool escaped = false;
    for (char c : pattern) {
        if (literals.size() >= kMaxPositions) {
            break;
        }
        if (escaped) {
            literals.push_back(c);
            escaped = false;
        } else if (IsEntryCharacter(c)) {
            literals.push_back('\0');
            ++maxLength_;
        } else if (c == '!') {
            // Counted like an entry position here, but it takes no place in the filter.
            rightAlign_ = true;
            literals.push_back('\0');
            ++maxLength_;
        } else if (c == '>' || c == '<') {
            // case modes: second pass
        } else if (c == '/') {
            escaped = true;
        } else {
            literals.push_back(c);
            if (keepLiterals_) {
                ++maxLength_;
            }
        }
    }

    // Second pass: what each position accepts.
    std::string filter;
    int caseMode = Upper | Lower;
    escaped = false;
    for (char c : pattern) {
        if (filter.size() >= kMaxPositions) {
            break;
        }
        if (escaped) {
            filter.push_back('\0');
            escaped = false;
            continue;
        }
        int value = -1;
        switch (c) {
        case '0':
            value = 4;
            break;
        case '9':
            value = 44;
            break;
        case '#':
            value = 52;
            break;
        case 'L':
            value = caseMode;
            break;
        case '?':
            value = caseMode + 40;
            break;
        case 'A':
            value = caseMode + 4;
            break;
        case 'a':
            value = caseMode + 36;
            break;
        case '&':
            value = caseMode + 92;
            break;
        case 'C':
            value = caseMode + 124;
            break;
        case 'H':
            value = 133;
            break;
        case '>':
            caseMode = Upper;
            break;
        case '<':
            caseMode = Lower;
            break;
        case '!':
            break;
        case '/':
            escaped = true;
            break;
        default:
            value = 0;
            break;
        }
        if (value >= 0) {
            filter.push_back(static_cast<char>(static_cast<uint8_t>(value)));
        }
    }
    literals_ = literals;
    filter_ = filter;
}

void HCF_Text::Text(const std::string& value) {
    std::string text = value;
    if (maxLength_ != 0 && text.size() > static_cast<size_t>(maxLength_)) {
        text.resize(static_cast<size_t>(maxLength_));
    }
    if (!keepLiterals_) {
        for (size_t i = 1; i <= literals_.size(); ++i) {
            const char literal = literals_[i - 1];
            if (literal == '\0') {
                continue;
            }
            const std::string head = text.substr(0, std::min(i - 1, text.size()));
            const std::string tail = i <= text.size() ? text.substr(i - 1) : std::string();
            text = head + literal + tail;
        }
    }
    data_.assign(literals_.size(), '\0');
    std::copy_n(text.begin(), std::min(text.size(), data_.size()), data_.begin());
    filled_ = static_cast<int16_t>(text.size());
    SetBoxText(data_);
    CompletenessTest();
}

std::string HCF_Text::Name() const {
    if (!box_) {
        return {};
    }
    std::string name = box_->objectName().toStdString();
    if (name.size() > 5 && name.compare(0, 5, "Text_") == 0) {
        name.erase(0, 5);
    }
    return name;
}

void HCF_Text::SetFocus() {
    if (box_) {
        box_->setFocus(Qt::OtherFocusReason);
    }
}

void HCF_Text::Revert() {
    data_ = saved_;
    SetBoxText(saved_);
    filled_ = static_cast<int16_t>(saved_.size());
    CompletenessTest();
}

void HCF_Text::BeginEdit() {
    saved_ = BoxText();
    data_.assign(literals_.size(), '\0');
    std::string shown = literals_;
    for (char& c : shown) {
        if (c == '\0') {
            c = static_cast<char>(placeholder_);
        }
    }
    SetBoxText(shown);
    const int last = static_cast<int>(literals_.size());
    const int start = rightAlign_ ? PreviousPosition(last) : NextPosition(0);
    SetSelStart(start - 1);
    SetSelLength(1);
    filled_ = 0;
    editing_ = true;
}

void HCF_Text::EndEdit() {
    std::string result;
    for (size_t i = 1; i <= data_.size(); ++i) {
        const char c = data_[i - 1];
        const uint8_t f = FilterAt(static_cast<int>(i));
        const char literal = i <= literals_.size() ? literals_[i - 1] : '\0';
        if (c == ' ') {
            continue;
        }
        if (c == '\0') {
            if (literal == '\0') {
                if (f != 0 && (f & Optional) == 0) {
                    ui().MsgBox("Data not appropriate for Input Mask");
                    SetFocus();
                    return;
                }
            } else if (keepLiterals_) {
                result.push_back(literal);
            }
            continue;
        }
        result.push_back(c);
    }
    data_ = result;
    editing_ = false;
    if (AfterUpdate) {
        std::string value = result;
        AfterUpdate(value);
    }
}

void HCF_Text::CompletenessTest() {
    if (maxLength_ == 0) {
        return;
    }
    const bool full = filled_ == maxLength_;
    if (complete_ == full) {
        return;
    }
    bool state = full;
    if (StateChange) {
        StateChange(state);
    }
    complete_ = state;
}

uint8_t HCF_Text::FilterAt(int p) const {
    if (p < 1 || static_cast<size_t>(p) > filter_.size()) {
        return 0;
    }
    return static_cast<uint8_t>(filter_[static_cast<size_t>(p) - 1]);
}

int HCF_Text::NextPosition(int p) const {
    for (int i = p + 1; i <= static_cast<int>(filter_.size()); ++i) {
        if (FilterAt(i) != 0) {
            return i;
        }
    }
    return p + 1;
}

int HCF_Text::PreviousPosition(int p) const {
    for (int i = p - 1; i >= 1; --i) {
        if (FilterAt(i) != 0) {
            return i;
        }
    }
    return 0;
}

int HCF_Text::KeyFilter(int key, int p) {
    auto reject = [] {
        ui().Beep();
        return 0;
    };
    if (p < 1 || static_cast<size_t>(p) > filter_.size()) {
        return reject();
    }
    const uint8_t f = FilterAt(p);
    const bool upper = (f & Upper) != 0;
    const bool lower = (f & Lower) != 0;
    const bool hexOnly = (f & HexOnly) != 0;
    if (key == 8) {
        return f != 0 ? key : reject();
    }
    if (key >= 'a' && key <= 'z') {
        if ((!upper && !lower) || (key > 'f' && hexOnly)) {
            return reject();
        }
        return upper && !lower ? key - 'a' + 'A' : key;
    }
    if (key >= 'A' && key <= 'Z') {
        if ((!upper && !lower) || (key > 'F' && hexOnly)) {
            return reject();
        }
        return lower && !upper ? key - 'A' + 'a' : key;
    }
    if (key >= '0' && key <= '9') {
        return (f & Digit) != 0 ? key : reject();
    }
    if (key == ' ') {
        return (f & Space) != 0 ? key : reject();
    }
    if (key == '+' || key == '-') {
        return (f & Sign) != 0 ? key : reject();
    }
    return (f & Other) != 0 ? key : reject();
}

int HCF_Text::KeyPress(int key) {
    if (key == 27) {
        if (editing_) {
            // Only the display and the count go back; Data keeps what was typed.
            SetBoxText(saved_);
            editing_ = false;
            filled_ = static_cast<int16_t>(saved_.size());
            CompletenessTest();
        } else {
            ui().Beep();
        }
        return 0;
    }
    if (!editing_) {
        BeginEdit();
    }
    int p = SelStart() + 1;
    if (key == 8) {
        p = PreviousPosition(p);
    }
    if (key != 127) {
        key = KeyFilter(key, p);
        if (key == 0) {
            return 0;
        }
    }
    const bool clearing = key == 8 || key == 127;
    if (clearing) {
        key = placeholder_;
    }
    const bool inData = p >= 1 && static_cast<size_t>(p) <= data_.size();
    const bool held = inData && data_[static_cast<size_t>(p) - 1] != '\0';
    if (held && clearing) {
        --filled_;
        CompletenessTest();
    } else if (!held && !clearing) {
        ++filled_;
        CompletenessTest();
    }
    std::string shown = BoxText();
    if (p >= 1 && static_cast<size_t>(p) <= shown.size()) {
        shown[static_cast<size_t>(p) - 1] = static_cast<char>(key);
        SetBoxText(shown);
    }
    if (inData) {
        data_[static_cast<size_t>(p) - 1] = clearing ? '\0' : static_cast<char>(key);
    }
    const int next = clearing ? p : NextPosition(p);
    if (next != 0) {
        SetSelStart(next - 1);
    }
    SetSelLength(1);
    return 0;
}

int HCF_Text::KeyDown(int keyCode) {
    switch (keyCode) {
    case 46:
        KeyPress(127);
        return 0;
    case 37:
    case 39: {
        const int p = SelStart() + 1;
        const int q = keyCode == 37 ? PreviousPosition(p) : NextPosition(p);
        if (q != 0) {
            SetSelStart(q - 1);
            SetSelLength(1);
        }
        return 0;
    }
    case 38:
    case 40:
        SetSelStart(SelStart());
        SetSelLength(1);
        return 0;
    default:
        return keyCode;
    }
}

void HCF_Text::GotFocus() {
    if (editing_) {
        SetSelLength(1);
        return;
    }
    if (filled_ == 0) {
        BeginEdit();
    }
    SetSelLength(static_cast<int>(BoxText().size()));
    CompletenessTest();
}

void HCF_Text::LostFocus() {
    if (filled_ == 0) {
        Revert();
    } else if (editing_) {
        EndEdit();
    }
}

// ---- The box ----

std::string HCF_Text::BoxText() const {
    if (!box_) {
        return {};
    }
    return box_->text().toLatin1().toStdString();
}

void HCF_Text::SetBoxText(const std::string& text) {
    if (!box_) {
        return;
    }
    // The box shows what stands before the first zero byte.
    heldValid_ = false;
    const std::string shown = text.substr(0, text.find('\0'));
    box_->setText(QString::fromLatin1(shown.data(), static_cast<qsizetype>(shown.size())));
    box_->setCursorPosition(0);
}

int HCF_Text::SelStart() const {
    if (!box_) {
        return 0;
    }
    return box_->hasSelectedText() ? static_cast<int>(box_->selectionStart()) : box_->cursorPosition();
}

int HCF_Text::SelLength() const {
    if (!box_) {
        return 0;
    }
    return box_->hasSelectedText() ? static_cast<int>(box_->selectionLength()) : 0;
}

void HCF_Text::SetSelStart(int start) {
    if (!box_) {
        return;
    }
    heldValid_ = false;
    const int length = static_cast<int>(box_->text().size());
    box_->setCursorPosition(std::clamp(start, 0, length));
}

void HCF_Text::SetSelLength(int length) {
    if (!box_) {
        return;
    }
    heldValid_ = false;
    const int start = SelStart();
    const int room = static_cast<int>(box_->text().size()) - start;
    const int count = std::clamp(length, 0, std::max(room, 0));
    if (count == 0) {
        box_->setCursorPosition(start);
    } else {
        box_->setSelection(start, count);
    }
}

// ---- Events of the box ----

bool HCF_Text::eventFilter(QObject* watched, QEvent* event) {
    // A box that is being destroyed is no longer a line edit; its last focus and hide events are
    // not an edit ending, and nothing of it may be touched.
    if (watched != boxObject_.data() || qobject_cast<QLineEdit*>(watched) == nullptr) {
        return QObject::eventFilter(watched, event);
    }
    switch (event->type()) {
    case QEvent::KeyPress: {
        auto* key = static_cast<QKeyEvent*>(event);
        switch (key->key()) {
        case Qt::Key_Delete:
            KeyDown(46);
            return true;
        case Qt::Key_Left:
            KeyDown(37);
            return true;
        case Qt::Key_Up:
            KeyDown(38);
            return true;
        case Qt::Key_Right:
            KeyDown(39);
            return true;
        case Qt::Key_Down:
            KeyDown(40);
            return true;
        case Qt::Key_Backspace:
            KeyPress(8);
            return true;
        case Qt::Key_Escape:
            KeyPress(27);
            return true;
        case Qt::Key_Tab:
        case Qt::Key_Backtab:
        case Qt::Key_Return:
        case Qt::Key_Enter:
            // Focus moves and the dialog's default button belong to the view.
            return false;
        default:
            break;
        }
        const QString text = key->text();
        if (text.size() != 1) {
            return false;
        }
        const char16_t code = text.at(0).unicode();
        if (code > 255) {
            ui().Beep();
            return true;
        }
        KeyPress(code);
        return true;
    }
    case QEvent::FocusIn:
    case QEvent::FocusOut: {
        const auto reason = static_cast<QFocusEvent*>(event)->reason();
        // Switching windows or opening a menu or box is not a move between the view's controls.
        if (reason == Qt::ActiveWindowFocusReason || reason == Qt::PopupFocusReason) {
            return false;
        }
        QPointer<QLineEdit> box = box_;
        if (event->type() == QEvent::FocusOut) {
            heldStart_ = SelStart();
            heldLength_ = SelLength();
        }
        // The box's own focus handling first (cursor, selection), then the binding's.
        static_cast<QObject*>(box.data())->event(event);
        if (box_ != box) {
            return true;
        }
        if (event->type() == QEvent::FocusIn) {
            if (heldValid_) {
                SetSelStart(heldStart_);
                SetSelLength(heldLength_);
            }
            GotFocus();
        } else {
            heldValid_ = true;
            LostFocus();
        }
        return true;
    }
    default:
        return false;
    }
}

} // namespace zol
