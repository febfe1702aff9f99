#include "host/gui/FaderDesk.h"

#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QSlider>
#include <QSpinBox>
#include <QToolButton>
#include <QVBoxLayout>

namespace zol::host {

FaderDesk::FaderDesk(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("FaderDesk"));

    bankBox_ = new QComboBox(this);
    bankBox_->setObjectName(QStringLiteral("Combo_Bank"));
    for (int bank = 0; bank < kBanks; ++bank) {
        bankBox_->addItem(QStringLiteral("Bank %1: slots %2 to %3")
                              .arg(bank + 1)
                              .arg(bank * kStrips + 1)
                              .arg(bank * kStrips + kStrips));
    }
    auto* previous = new QToolButton(this);
    previous->setObjectName(QStringLiteral("Button_BankDown"));
    previous->setArrowType(Qt::LeftArrow);
    previous->setToolTip(QStringLiteral("Previous bank"));
    auto* next = new QToolButton(this);
    next->setObjectName(QStringLiteral("Button_BankUp"));
    next->setArrowType(Qt::RightArrow);
    next->setToolTip(QStringLiteral("Next bank"));

    auto* bankRow = new QHBoxLayout();
    bankRow->addWidget(previous);
    bankRow->addWidget(bankBox_);
    bankRow->addWidget(next);
    bankRow->addStretch(1);

    auto* strips = new QGridLayout();
    strips->setHorizontalSpacing(6);
    for (int i = 0; i < kStrips; ++i) {
        const auto at = static_cast<size_t>(i);
        labels_[at] = new QLabel(this);
        labels_[at]->setObjectName(QStringLiteral("Label_Slot_%1").arg(i));
        labels_[at]->setAlignment(Qt::AlignCenter);
        faders_[at] = new QSlider(Qt::Vertical, this);
        faders_[at]->setObjectName(QStringLiteral("Fader_%1").arg(i));
        faders_[at]->setRange(0, 255);
        faders_[at]->setPageStep(16);
        faders_[at]->setMinimumHeight(150);
        faders_[at]->setTickPosition(QSlider::TicksBothSides);
        faders_[at]->setTickInterval(32);
        boxes_[at] = new QSpinBox(this);
        boxes_[at]->setObjectName(QStringLiteral("Level_%1").arg(i));
        boxes_[at]->setRange(0, 255);
        boxes_[at]->setAlignment(Qt::AlignRight);
        boxes_[at]->setButtonSymbols(QAbstractSpinBox::NoButtons);
        boxes_[at]->setFixedWidth(44);
        boxes_[at]->setKeyboardTracking(false);
        strips->addWidget(labels_[at], 0, i, Qt::AlignHCenter);
        strips->addWidget(faders_[at], 1, i, Qt::AlignHCenter);
        strips->addWidget(boxes_[at], 2, i, Qt::AlignHCenter);
        connect(faders_[at], &QSlider::valueChanged, this, [this, i](int value) { StripChanged(i, value); });
        connect(boxes_[at], &QSpinBox::valueChanged, this, [this, i](int value) { StripChanged(i, value); });
    }

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(bankRow);
    layout->addLayout(strips);

    connect(bankBox_, &QComboBox::currentIndexChanged, this, [this](int bank) { ShowBank(bank); });
    connect(previous, &QToolButton::clicked, this, [this] { ShowBank(bank_ > 0 ? bank_ - 1 : bank_); });
    connect(next, &QToolButton::clicked, this, [this] { ShowBank(bank_ + 1 < kBanks ? bank_ + 1 : bank_); });
    ShowBank(0);
}

void FaderDesk::ShowBank(int bank) {
    if (bank < 0 || bank >= kBanks) {
        return;
    }
    bank_ = bank;
    showing_ = true;
    bankBox_->setCurrentIndex(bank);
    for (int i = 0; i < kStrips; ++i) {
        const auto at = static_cast<size_t>(i);
        const int slot = bank * kStrips + i + 1;
        labels_[at]->setText(QString::number(slot));
        faders_[at]->setValue(levels_[static_cast<size_t>(slot) - 1]);
        faders_[at]->setToolTip(QStringLiteral("Slot %1").arg(slot));
        boxes_[at]->setValue(levels_[static_cast<size_t>(slot) - 1]);
    }
    showing_ = false;
}

int FaderDesk::Level(int slot) const {
    if (slot < 1 || slot > kSlots) {
        return 0;
    }
    return levels_[static_cast<size_t>(slot) - 1];
}

void FaderDesk::SetLevel(int slot, int level) {
    if (slot < 1 || slot > kSlots) {
        return;
    }
    const int strip = slot - 1 - bank_ * kStrips;
    if (strip >= 0 && strip < kStrips) {
        faders_[static_cast<size_t>(strip)]->setValue(level);
        return;
    }
    if (levels_[static_cast<size_t>(slot) - 1] != level) {
        levels_[static_cast<size_t>(slot) - 1] = level;
        emit levelChanged(slot, level);
    }
}

void FaderDesk::StripChanged(int strip, int level) {
    const auto at = static_cast<size_t>(strip);
    // Slider and box show the same level.
    if (faders_[at]->value() != level) {
        faders_[at]->setValue(level);
    }
    if (boxes_[at]->value() != level) {
        boxes_[at]->setValue(level);
    }
    if (showing_) {
        return;
    }
    const int slot = bank_ * kStrips + strip + 1;
    if (levels_[static_cast<size_t>(slot) - 1] == level) {
        return;
    }
    levels_[static_cast<size_t>(slot) - 1] = level;
    emit levelChanged(slot, level);
}

} // namespace zol::host
