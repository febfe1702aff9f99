#pragma once
// FaderDesk: the host's desk for the 512 slots, shown a bank of 16 faders at a time. Each fader has
// its slot number, a slider and a level box in which a level can be typed. Every change the user
// makes is told by levelChanged; choosing another bank changes nothing.

#include <QWidget>
#include <array>

class QComboBox;
class QLabel;
class QSlider;
class QSpinBox;

namespace zol::host {

class FaderDesk : public QWidget {
    Q_OBJECT
public:
    static constexpr int kSlots = 512;
    static constexpr int kStrips = 16;
    static constexpr int kBanks = kSlots / kStrips;

    explicit FaderDesk(QWidget* parent = nullptr);

    // Shows bank `bank` (from 0): slots bank * 16 + 1 to bank * 16 + 16.
    void ShowBank(int bank);
    int Bank() const { return bank_; }
    // The level the desk holds for `slot` (1..512).
    int Level(int slot) const;
    // Sets a level as the user would: the fader moves (if its bank is shown) and levelChanged follows.
    void SetLevel(int slot, int level);

    QSlider* Fader(int strip) const { return faders_.at(static_cast<size_t>(strip)); }
    QSpinBox* LevelBox(int strip) const { return boxes_.at(static_cast<size_t>(strip)); }

signals:
    void levelChanged(int slot, int level);

private:
    void StripChanged(int strip, int level);

    QComboBox* bankBox_ = nullptr;
    std::array<QLabel*, kStrips> labels_{};
    std::array<QSlider*, kStrips> faders_{};
    std::array<QSpinBox*, kStrips> boxes_{};
    std::array<int, kSlots> levels_{};
    int bank_ = 0;
    bool showing_ = false;
};

} // namespace zol::host
