#include "plugin/core/UDC_Control.h"

#include "device_link/core/Client.h"
#include "device_link/core/ErrTrap.h"
#include "framework/seam/Product.h"
#include "plugin/core/FindForm.h"
#include "plugin/core/IO_Tasks.h"
#include "services/settings/AUF_Registry.h"
#include "services/strings/StrFormat.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>

namespace zol {
namespace {

constexpr const char* kSettingName = "DMXInActive";

// A stored value that reads as true: the word True in any case, or a number other than 0.
bool ReadsTrue(const std::string& stored) {
    const std::string value = Text::TrimBlanks(stored);
    std::string lower = value;
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (lower == "true") {
        return true;
    }
    if (value.empty()) {
        return false;
    }
    char* end = nullptr;
    const double number = std::strtod(value.c_str(), &end);
    return end != nullptr && *end == '\0' && number != 0.0;
}

IO_Tasks* AsInputTask(View* view) {
    auto* tasks = dynamic_cast<IO_Tasks*>(view);
    if (tasks == nullptr) {
        throw RuntimeFault(rt::ObjectNotSet, "Object variable or With block variable not set");
    }
    return tasks;
}

} // namespace

UDC_Control::UDC_Control()
    : port_(std::make_shared<FDF_Port>()), sState_(std::make_shared<SYS_Status>()),
      levels_(static_cast<size_t>(kSlots), '\0') {}

void UDC_Control::SetMode(int32_t mode) {
    if (mode == mode_) {
        return;
    }
    AppSettings::SaveSetting(appName_, section_, kSettingName, mode != 0 ? "True" : "False");
    mode_ = mode;
}

void UDC_Control::Initialise(const HostRef& helper, const std::string& hostName, const std::string& section) {
    helper_ = helper;
    appName_ = hostName;
    section_ = section;
    settingName_ = kSettingName;
    mode_ = ReadsTrue(AppSettings::GetSetting(appName_, section_, settingName_, "False")) ? 1 : 0;
}

void UDC_Control::SendLevels() {
    // A NUL in front of the levels; SendBlock puts a further one in front.
    Client::SendBlock(std::string(1, '\0') + levels_.substr(0, static_cast<size_t>(slotCount_)));
}

void UDC_Control::Begin() {
    int32_t code = 0;
    try {
        if (mode_ == 0) {
            SendLevels();
        } else {
            AsInputTask(FindForm(IO_Tasks::kName))->Begin(helper_);
        }
        paused_ = false;
        active_ = true;
        return;
    } catch (const std::exception&) {
        code = ErrTrap::Capture(std::current_exception());
    }
    ErrTrap::Report(std::string(product::kProductName) + " - Start Function", false);
    if (code != err::ErrSYS_Local) {
        ErrTrap::ReRaise();
    }
}

void UDC_Control::StopSession() {
    if (mode_ == 0) {
        Client::StopOutput();
    } else {
        AsInputTask(FindForm(IO_Tasks::kName))->Finish();
    }
}

void UDC_Control::Pause() {
    if (!active_ || paused_) {
        return;
    }
    StopSession();
    paused_ = true;
}

void UDC_Control::Finish() {
    if (!active_) {
        return;
    }
    if (!paused_) {
        StopSession();
    } else {
        paused_ = false;
    }
    active_ = false;
}

void UDC_Control::Update(int16_t slot, uint8_t level) {
    if (slot < 1 || slot > kSlots) {
        throw RuntimeFault(rt::InvalidCall, "Invalid procedure call or argument");
    }
    levels_[static_cast<size_t>(slot) - 1] = static_cast<char>(level);
    if (!active_ || paused_) {
        return;
    }
    if (slot > slotCount_) {
        // The block goes out with the old length, so the level just written waits for the next
        // change of its slot or the next Begin.
        SendLevels();
        slotCount_ = slot;
        return;
    }
    Client::SendChannel(slot, level);
}

View* UDC_Control::FindForm(const std::string& name) {
    return zol::FindForm(name);
}

} // namespace zol
