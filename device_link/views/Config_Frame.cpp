#include "device_link/views/Config_Frame.h"

#include "device_link/core/Client.h"
#include "device_link/core/ErrTrap.h"
#include "device_link/views/LoadFailure.h"
#include "framework/bindings/HCF_Text.h"
#include "framework/form/Forms.h"
#include "framework/seam/LoopClock.h"
#include "framework/seam/UiSeam.h"
#include "services/strings/StrFormat.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace zol {

namespace {

constexpr const char* kSource = "Config_Frame";
constexpr const char* kRetryTitle = "DMX Frame Configuration";
constexpr const char* kRangeTitle = "Setting out of range";

struct FieldDef {
    const char* box;
    const char* binding;
    const char* mask;
    const char* tip;
    const char* caption;
};

// In the order of the load.
constexpr FieldDef kFields[] = {
    {"Text_FrameRate", "Input_FrameRate", "09", "Frames / second", "Frame Rate"},
    {"Text_BreakTime", "Input_BreakTime", "0099", "Frame Break Time in us", "Break Time"},
    {"Text_MarkTime", "Input_MarkTime", "0999", "Frame Mark time in us", "Mark Time"},
    {"TextDelayTime", "Input_DelayTime", "09", "RDM response time out in ms (0 = default)", "RX Time Out"},
};

} // namespace

const Config_Frame::Access& Config_Frame::AccessOf(Quantity quantity) {
    static const std::array<Access, 4> access = {
        Access{Client::GetFrameRate, Client::SetFrameRate},
        Access{Client::GetBreakTime, Client::SetBreakTime},
        Access{Client::GetMarkTime, Client::SetMarkTime},
        Access{Client::GetDelayTime, Client::SetDelayTime},
    };
    return access[quantity];
}

Config_Frame::Config_Frame(QWidget* parent) : FormView(kName, parent) {
    setWindowTitle(QStringLiteral(" D M X - Frame Settings"));

    auto* grid = new QGridLayout;
    for (size_t i = 0; i < boxes_.size(); ++i) {
        const FieldDef& field = kFields[i];
        auto* caption = new QLabel(QString::fromUtf8(field.caption), this);
        caption->setObjectName(QStringLiteral("Label_%1").arg(i));
        auto* box = new QLineEdit(this);
        box->setObjectName(QString::fromUtf8(field.box));
        box->setToolTip(QString::fromUtf8(field.tip));
        box->setFixedWidth(64);
        auto* unit = new QLabel(QString::fromUtf8(field.tip), this);
        unit->setObjectName(QStringLiteral("Label_Unit_%1").arg(i));
        unit->setStyleSheet(QStringLiteral("color: #555;"));
        boxes_[i] = box;
        grid->addWidget(caption, static_cast<int>(i), 0);
        grid->addWidget(box, static_cast<int>(i), 1);
        grid->addWidget(unit, static_cast<int>(i), 2);
    }
    grid->setHorizontalSpacing(10);
    grid->setVerticalSpacing(8);

    buttonDefaults_ = new QPushButton(QStringLiteral("Defaults"), this);
    buttonDefaults_->setObjectName("Button_Defaults");
    buttonDefaults_->setAutoDefault(false);
    connect(buttonDefaults_, &QPushButton::clicked, this, [this] { Button_Defaults_Click(); });
    buttonOK_ = new QPushButton(QStringLiteral("OK"), this);
    buttonOK_->setObjectName("Button_OK");
    buttonOK_->setAutoDefault(false);
    buttonOK_->setEnabled(false);
    connect(buttonOK_, &QPushButton::clicked, this, [this] { Button_OK_Click(); });

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(buttonDefaults_);
    buttons->addStretch(1);
    buttons->addWidget(buttonOK_);

    timerDie_ = new LoopTimer(QStringLiteral("Timer_Die"), 1, this);
    connect(timerDie_, &LoopTimer::timeout, this, [this] {
        timerDie_->SetEnabled(false);
        if (Forms::IsOpen(this)) {
            Form()->BugOut(timerDie_->Tag);
        }
    });

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(grid);
    layout->addSpacing(6);
    layout->addLayout(buttons);
}

Config_Frame::~Config_Frame() = default;

void Config_Frame::OnControl() {
    // The view works on the device itself and takes no data object.
    if (Form()->DataIsSet()) {
        ErrTrap::RaiseLocal("Class object " + Text::QuoteText(Form()->DataClass()) + " not handled");
    }
    Form_Load();
}

void Config_Frame::Form_Load() {
    const std::string source = std::string(kSource) + ".Form_Load";
    for (size_t i = 0; i < inputs_.size(); ++i) {
        auto* input = new HCF_Text(this);
        input->Assign(boxes_[i]);
        input->Mask(kFields[i].mask);
        inputs_[i] = input;
        const Access& access = AccessOf(static_cast<Quantity>(i));
        if (!ErrTrap::Device(
                source, kRetryTitle, [&] { input->Text(std::to_string(access.get(1))); },
                LoadBugOut(*this, source))) {
            return;
        }
    }
    // The fields' events run inside their bindings: a failure there closes the view afterwards.
    const auto fieldEvent = [this](void (Config_Frame::*event)(std::string&)) {
        return [this, event](std::string& value) {
            inFieldEvent_ = true;
            struct Leave {
                bool& flag;
                ~Leave() { flag = false; }
            } leave{inFieldEvent_};
            (this->*event)(value);
        };
    };
    inputs_[kFrameRate]->AfterUpdate = fieldEvent(&Config_Frame::Input_FrameRate_AfterUpdate);
    inputs_[kBreakTime]->AfterUpdate = fieldEvent(&Config_Frame::Input_BreakTime_AfterUpdate);
    inputs_[kMarkTime]->AfterUpdate = fieldEvent(&Config_Frame::Input_MarkTime_AfterUpdate);
    inputs_[kDelayTime]->AfterUpdate = fieldEvent(&Config_Frame::Input_DelayTime_AfterUpdate);
    buttonOK_->setEnabled(true);
}

std::string Config_Frame::Shown(const HCF_Text* input) const {
    std::string text = input->Text();
    const size_t end = text.find('\0');
    if (end != std::string::npos) {
        text.resize(end);
    }
    return text;
}

int32_t Config_Frame::ToNumber(const std::string& value) {
    int32_t number = 0;
    for (char c : value) {
        if (c >= '0' && c <= '9') {
            number = number * 10 + (c - '0');
        }
    }
    return number;
}

bool Config_Frame::RunStatement(const std::string& procedure, const std::function<void()>& statement,
                                const std::function<bool(int32_t)>& special) {
    return ErrTrap::Device(
        std::string(kSource) + "." + procedure, kRetryTitle, statement,
        [this](int32_t code) {
            if (inFieldEvent_) {
                DeferBugOut(code);
            } else {
                Form()->BugOut(code);
            }
        },
        special);
}

void Config_Frame::DeferBugOut(int32_t code) {
    timerDie_->Tag = code;
    timerDie_->SetEnabled(true);
}

void Config_Frame::ShowRange(Quantity quantity, const std::string& procedure) {
    const Access& access = AccessOf(quantity);
    int32_t minimum = 0;
    int32_t maximum = 0;
    if (!RunStatement(procedure, [&] {
            minimum = access.get(2);
            maximum = access.get(3);
        })) {
        return;
    }
    ui().MsgBox("Valid values are from " + std::to_string(minimum) + " to " + std::to_string(maximum),
                vb::Exclamation, std::string(kRangeTitle));
    inputs_[quantity]->Revert();
}

bool Config_Frame::Write(Quantity quantity, const std::string& procedure, const std::string& value) {
    return RunStatement(
        procedure, [&] { AccessOf(quantity).set(ToNumber(value)); },
        [&](int32_t code) {
            if (code == err::ErrZOL_Constraint) {
                ShowRange(quantity, procedure);
                return true;
            }
            if (code == err::ErrZOL_SystemMode && quantity == kDelayTime) {
                ErrTrap::Report("RDM Response Timing", false);
                inputs_[quantity]->Revert();
                return true;
            }
            return false;
        });
}

void Config_Frame::Input_FrameRate_AfterUpdate(std::string& value) {
    const std::string procedure = "Input_FrameRate_AfterUpdate";
    if (!Write(kFrameRate, procedure, value)) {
        return;
    }
    // The device may have moved the time out to suit the new rate.
    RunStatement(procedure, [this] {
        // Compared as numbers: a time out typed as "05" is the 5 the device reads back.
        const int32_t delay = Client::GetDelayTime(1);
        if (delay != ToNumber(Shown(inputs_[kDelayTime]))) {
            inputs_[kDelayTime]->Text(std::to_string(delay));
            ui().MsgBox("The RX Time Out has been adjusted for the new value", vb::Information,
                        std::string("Frame Rate"));
        }
    });
}

void Config_Frame::Input_BreakTime_AfterUpdate(std::string& value) {
    Write(kBreakTime, "Input_BreakTime_AfterUpdate", value);
}

void Config_Frame::Input_MarkTime_AfterUpdate(std::string& value) {
    Write(kMarkTime, "Input_MarkTime_AfterUpdate", value);
}

void Config_Frame::Input_DelayTime_AfterUpdate(std::string& value) {
    const std::string procedure = "Input_DelayTime_AfterUpdate";
    if (!Write(kDelayTime, procedure, value)) {
        return;
    }
    // The device may have moved the frame rate to suit the new time out.
    RunStatement(procedure, [this] {
        const std::string rate = std::to_string(Client::GetFrameRate(1));
        if (rate != Shown(inputs_[kFrameRate])) {
            inputs_[kFrameRate]->Text(rate);
            ui().MsgBox("The Frame Rate has been adjusted for the new value", vb::Information,
                        std::string("RX Time Out"));
        }
    });
}

void Config_Frame::Button_Defaults_Click() {
    struct Step {
        const char* item;
        Quantity quantity;
        int32_t value;
    };
    static constexpr Step kSteps[] = {
        {"Frame Rate", kFrameRate, kDefaultFrameRate},
        {"Break Time", kBreakTime, 0},
        {"Mark Time", kMarkTime, 0},
        {"Delay Time", kDelayTime, 0},
    };
    for (const Step& step : kSteps) {
        const Access& access = AccessOf(step.quantity);
        const bool ran = RunStatement(
            "Button_Defaults_Click",
            [&] {
                access.set(step.value);
                inputs_[step.quantity]->Text(std::to_string(access.get(1)));
            },
            [&](int32_t code) {
                if (code != err::ErrZOL_Constraint) {
                    return false;
                }
                ui().MsgBox("Item " + std::string(step.item) + " default is out of range", vb::Exclamation,
                            std::string(kRangeTitle));
                return true;
            });
        if (!ran) {
            return;
        }
    }
}

void Config_Frame::Button_OK_Click() {
    Unload();
}

} // namespace zol
