#pragma once
// HCF_Combo: a drop-down box whose entries each carry a 32-bit value. The view selects by value and
// hears of a new selection through one event, Change, with that value. The box gets a fixed
// keyboard discipline: enter moves on, escape goes back to the entry the box had when the focus
// arrived, left and up move up, right and down move down, and every other key is swallowed.

#include <QObject>
#include <QPointer>
#include <cstdint>
#include <functional>
#include <string>

class QComboBox;

namespace zol {

class HCF_Combo : public QObject {
    Q_OBJECT
public:
    explicit HCF_Combo(QObject* parent = nullptr);
    ~HCF_Combo() override;

    // Takes the box; a null box is ignored. A second box is a fault of the program: a stop box
    // "Instance may not be re-assigned" and the program stops.
    void Initialise(QComboBox* box);
    // The selected entry's value. With no entry selected: run-time error 381.
    int32_t Value() const;
    // Selects the first entry holding `value`. An unknown value shows "Index value <n> not found in
    // list" and raises error 9; the selection stays as it was.
    void Value(int32_t value);
    // The selected entry's text ("" with none).
    std::string Text() const;
    bool HasItem(int32_t value) const;
    // Adds an entry at the end, or in its sorted place when the box has the property "sorted" set.
    void AddItem(int32_t value, const std::string& text);
    int16_t Items() const;
    // Back to the entry of the last focus change, without a Change.
    void Revert();

    // The new value after a selection.
    std::function<void(int16_t value)> Change;

    QComboBox* Box() const;
    int16_t Restore() const { return restore_; }
    bool Reverting() const { return reverting_; }
    bool Assigned() const { return assigned_; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void SelectionClick();
    void TextChange(const QString& text);
    void RaiseChange(int16_t value);

    QPointer<QComboBox> linkBox_;
    // The same box seen as a plain object, so that events can be matched to it without a cast.
    QPointer<QObject> linkObject_;
    int16_t restore_ = -1;
    bool reverting_ = false;
    bool assigned_ = false;
    bool adding_ = false;
};

} // namespace zol
