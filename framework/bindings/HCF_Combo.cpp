#include "framework/bindings/HCF_Combo.h"

#include "device_link/core/ErrTrap.h"
#include "framework/seam/UiSeam.h"

#include <QComboBox>
#include <QCoreApplication>
#include <QFocusEvent>
#include <QKeyEvent>
#include <QLineEdit>

namespace zol {

namespace {
constexpr const char* kValueLet = "HCF_Combo.Value (Let)";
} // namespace

HCF_Combo::HCF_Combo(QObject* parent) : QObject(parent) {}

HCF_Combo::~HCF_Combo() {
    if (linkBox_) {
        linkBox_->removeEventFilter(this);
        if (QLineEdit* edit = linkBox_->lineEdit()) {
            edit->removeEventFilter(this);
        }
        disconnect(linkBox_, nullptr, this, nullptr);
    }
}

QComboBox* HCF_Combo::Box() const {
    return linkBox_.data();
}

void HCF_Combo::Initialise(QComboBox* box) {
    if (box == nullptr) {
        return;
    }
    if (assigned_) {
        ui().MsgBox("Instance may not be re-assigned", vb::Critical, std::string("HCF_Combo.Initialise"));
        ui().Halt();
        return;
    }
    linkBox_ = box;
    linkObject_ = box;
    assigned_ = true;
    box->installEventFilter(this);
    if (QLineEdit* edit = box->lineEdit()) {
        edit->installEventFilter(this);
        connect(box, &QComboBox::editTextChanged, this, &HCF_Combo::TextChange);
    }
    connect(box, &QComboBox::currentIndexChanged, this, [this](int) { SelectionClick(); });
}

int32_t HCF_Combo::Value() const {
    if (!linkBox_ || linkBox_->currentIndex() < 0) {
        throw RuntimeFault(381, "Invalid property array index");
    }
    return linkBox_->currentData().toInt();
}

void HCF_Combo::Value(int32_t value) {
    const int count = linkBox_ ? linkBox_->count() : 0;
    for (int i = 0; i < count; ++i) {
        if (linkBox_->itemData(i).toInt() == value) {
            linkBox_->setCurrentIndex(i);
            return;
        }
    }
    ui().MsgBox("Index value " + std::to_string(value) + " not found in list", vb::Critical,
                std::string(kValueLet));
    throw ZolError(rt::SubscriptOutOfRange, kValueLet, "Subscript out of range");
}

std::string HCF_Combo::Text() const {
    if (!linkBox_ || linkBox_->currentIndex() < 0) {
        return {};
    }
    return linkBox_->itemText(linkBox_->currentIndex()).toStdString();
}

bool HCF_Combo::HasItem(int32_t value) const {
    const int count = linkBox_ ? linkBox_->count() : 0;
    for (int i = 0; i < count; ++i) {
        if (linkBox_->itemData(i).toInt() == value) {
            return true;
        }
    }
    return false;
}

void HCF_Combo::AddItem(int32_t value, const std::string& text) {
    if (!linkBox_) {
        throw RuntimeFault(rt::ObjectNotSet, "Object variable or With block variable not set");
    }
    const QString label = QString::fromStdString(text);
    int place = linkBox_->count();
    if (linkBox_->property("sorted").toBool()) {
        for (int i = 0; i < linkBox_->count(); ++i) {
            if (QString::compare(label, linkBox_->itemText(i), Qt::CaseInsensitive) < 0) {
                place = i;
                break;
            }
        }
    }
    // A new entry selects nothing by itself: the box's own habit of selecting the first entry is
    // undone without a Change.
    const int before = linkBox_->currentIndex();
    adding_ = true;
    linkBox_->insertItem(place, label, QVariant(static_cast<int>(value)));
    if (before < 0 && linkBox_->currentIndex() >= 0) {
        linkBox_->setCurrentIndex(-1);
    }
    adding_ = false;
}

int16_t HCF_Combo::Items() const {
    return static_cast<int16_t>(linkBox_ ? linkBox_->count() : 0);
}

void HCF_Combo::Revert() {
    if (!linkBox_) {
        return;
    }
    reverting_ = true;
    linkBox_->setCurrentIndex(restore_);
    reverting_ = false;
}

void HCF_Combo::RaiseChange(int16_t value) {
    if (Change) {
        Change(value);
    }
}

void HCF_Combo::SelectionClick() {
    if (reverting_ || adding_ || !linkBox_ || linkBox_->currentIndex() < 0) {
        return;
    }
    RaiseChange(static_cast<int16_t>(Value()));
}

void HCF_Combo::TextChange(const QString& text) {
    if (reverting_ || adding_ || !linkBox_ || text.isEmpty() || linkBox_->currentIndex() < 0) {
        return;
    }
    RaiseChange(static_cast<int16_t>(linkBox_->itemData(linkBox_->currentIndex()).toInt()));
}

bool HCF_Combo::eventFilter(QObject* watched, QEvent* event) {
    // A box that is being destroyed is no longer a combo box: its last events are not ours.
    if (linkObject_.isNull() || qobject_cast<QComboBox*>(linkObject_.data()) == nullptr ||
        (watched != linkBox_.data() && watched != linkBox_->lineEdit())) {
        return QObject::eventFilter(watched, event);
    }
    switch (event->type()) {
    case QEvent::FocusIn:
    case QEvent::FocusOut: {
        const auto reason = static_cast<QFocusEvent*>(event)->reason();
        if (watched == linkBox_.data() && reason != Qt::ActiveWindowFocusReason &&
            reason != Qt::PopupFocusReason) {
            restore_ = static_cast<int16_t>(linkBox_->currentIndex());
        }
        return false;
    }
    case QEvent::KeyPress: {
        auto* key = static_cast<QKeyEvent*>(event);
        switch (key->key()) {
        case Qt::Key_Tab:
        case Qt::Key_Backtab:
            // Moving between controls belongs to the view.
            return false;
        case Qt::Key_Return:
        case Qt::Key_Enter: {
            // Enter moves on to the next control, as a tab would; the key itself goes on.
            QKeyEvent tab(QEvent::KeyPress, Qt::Key_Tab, Qt::NoModifier);
            QCoreApplication::sendEvent(linkBox_.data(), &tab);
            return false;
        }
        case Qt::Key_Escape:
            linkBox_->setCurrentIndex(restore_);
            return true;
        case Qt::Key_Left:
        case Qt::Key_Up:
        case Qt::Key_Right:
        case Qt::Key_Down: {
            const bool up = key->key() == Qt::Key_Left || key->key() == Qt::Key_Up;
            QKeyEvent moved(QEvent::KeyPress, up ? Qt::Key_Up : Qt::Key_Down, Qt::NoModifier);
            static_cast<QObject*>(linkBox_.data())->event(&moved);
            return true;
        }
        default:
            // Characters typed into an editable box are its text; every other key is swallowed.
            if (linkBox_->isEditable() && !key->text().isEmpty() && key->text().at(0).isPrint()) {
                return false;
            }
            return true;
        }
    }
    default:
        return false;
    }
}

} // namespace zol
