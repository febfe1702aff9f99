#pragma once
// Config_Prog: follows a firmware upload that runs inside the device library. A 250 ms timer polls
// the upload state; the view shows the percentage, "Configuring." while the device writes the
// image, and how the upload ended: "Success ", "Error n" or "Timed Out".

#include "framework/form/FormView.h"

#include <array>
#include <cstdint>

class QLabel;
class QProgressBar;
class QPushButton;
class QTimer;

namespace zol {

class Config_Prog : public FormView {
    Q_OBJECT
public:
    explicit Config_Prog(QWidget* parent = nullptr);

    static constexpr const char* kName = "Config_Prog";
    static constexpr int kTickMs = 250;
    // Ticks with no change before the upload counts as stalled: while uploading, and while the
    // device configures itself.
    static constexpr int kUploadPatience = 20;
    static constexpr int kConfigurePatience = 120;

    // One tick of TimerUpdate. A failure the tick cannot deal with is shown and thrown on.
    void TimerUpdate_Timer();
    void ButtonExit_Click();

    // State, for tests.
    int32_t Last() const { return last_; }
    int16_t Same() const { return same_; }
    bool Configuring() const { return configuring_; }
    QTimer* TimerUpdate() const { return timerUpdate_; }

private:
    std::array<QLabel*, 4> labelInfo_{};
    QProgressBar* progressUpload_ = nullptr;
    QLabel* imageGood_ = nullptr;
    QPushButton* buttonExit_ = nullptr;
    QTimer* timerUpdate_ = nullptr;

    int32_t last_ = 0;
    int16_t same_ = 0;
    bool configuring_ = false;
};

} // namespace zol
