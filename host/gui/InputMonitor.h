#pragma once
// InputMonitor: a grid of the 512 slots with the levels the plug-in has delivered from the device's
// DMX input, 32 slots a row, each cell shaded by its level.

#include <QWidget>
#include <array>

namespace zol::host {

class InputMonitor : public QWidget {
    Q_OBJECT
public:
    static constexpr int kSlots = 512;
    static constexpr int kColumns = 32;
    static constexpr int kRows = kSlots / kColumns;

    explicit InputMonitor(QWidget* parent = nullptr);

    // A level delivered for `slot` (1..512); others are counted and dropped.
    void SetLevel(int slot, int level);
    int Level(int slot) const;
    // Levels delivered so far, and those outside 1..512 or 0..255.
    long Received() const { return received_; }
    long Rejected() const { return rejected_; }
    void Clear();

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

signals:
    void levelReceived(int slot, int level);

protected:
    void paintEvent(QPaintEvent* event) override;
    bool event(QEvent* event) override;

private:
    QRect CellRect(int index) const;
    int CellWidth() const;
    int CellHeight() const;
    int HeaderWidth() const;

    std::array<int, kSlots> levels_{};
    long received_ = 0;
    long rejected_ = 0;
};

} // namespace zol::host
