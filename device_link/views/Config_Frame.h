#pragma once
// Config_Frame: the view " D M X - Frame Settings", where the user sets the local device's frame
// timing: frame rate, break time, mark time and the RDM response time out. The values live in
// the device, and so do the limits and the rules that tie them; the view writes a value, reads
// back, and says what the device changed.

#include "framework/form/FormView.h"

#include <array>
#include <cstdint>
#include <functional>
#include <string>

class QLabel;
class QLineEdit;
class QPushButton;

namespace zol {

class HCF_Text;
class LoopTimer;

class Config_Frame : public FormView {
    Q_OBJECT
public:
    explicit Config_Frame(QWidget* parent = nullptr);
    ~Config_Frame() override;

    static constexpr const char* kName = "Config_Frame";
    // The one default the plug-in holds; zero asks the device for its own.
    static constexpr int32_t kDefaultFrameRate = 40;

    // The events.
    void Input_FrameRate_AfterUpdate(std::string& value);
    void Input_BreakTime_AfterUpdate(std::string& value);
    void Input_MarkTime_AfterUpdate(std::string& value);
    void Input_DelayTime_AfterUpdate(std::string& value);
    void Button_Defaults_Click();
    void Button_OK_Click();

    // The bindings, in the order frame rate, break time, mark time, RX time out.
    HCF_Text* Input_FrameRate() const { return inputs_[kFrameRate]; }
    HCF_Text* Input_BreakTime() const { return inputs_[kBreakTime]; }
    HCF_Text* Input_MarkTime() const { return inputs_[kMarkTime]; }
    HCF_Text* Input_DelayTime() const { return inputs_[kDelayTime]; }
    // What a field shows.
    std::string Shown(const HCF_Text* input) const;

protected:
    void OnControl() override;

private:
    enum Quantity : size_t { kFrameRate = 0, kBreakTime = 1, kMarkTime = 2, kDelayTime = 3 };
    struct Access {
        std::function<int32_t(int32_t)> get;
        std::function<void(int32_t)> set;
    };

    void Form_Load();
    // Writes the value and returns false when the handler has dealt with a failure.
    bool Write(Quantity quantity, const std::string& procedure, const std::string& value);
    // The range case: the device's limits, then the field back to its former text.
    void ShowRange(Quantity quantity, const std::string& procedure);
    // In a field's event a failure that closes the view does so through Timer_Die, once the event
    // is over; elsewhere at once.
    bool RunStatement(const std::string& procedure, const std::function<void()>& statement,
                      const std::function<bool(int32_t)>& special = {});
    static int32_t ToNumber(const std::string& value);
    // Closes the view with `code` one millisecond after the field's event that failed.
    void DeferBugOut(int32_t code);
    LoopTimer* timerDie_ = nullptr;
    bool inFieldEvent_ = false;
    static const Access& AccessOf(Quantity quantity);

    std::array<QLineEdit*, 4> boxes_{};
    std::array<HCF_Text*, 4> inputs_{};
    QPushButton* buttonDefaults_ = nullptr;
    QPushButton* buttonOK_ = nullptr;
};

} // namespace zol
