#include "plugin/core/UDC_Interface.h"

#include "device_link/core/ErrTrap.h"
#include "framework/form/Forms.h"
#include "framework/form/HCF_Form.h"
#include "framework/seam/Product.h"
#include "plugin/core/IO_Tasks.h"

namespace zol {
namespace {
constexpr int32_t kMaxSlot = 512;
constexpr int32_t kMaxLevel = 255;
} // namespace

UDC_Interface::UDC_Interface() : control_(std::make_shared<UDC_Control>()) {}

UDC_Control& UDC_Interface::Ctl() {
    if (!control_) {
        throw RuntimeFault(rt::ObjectNotSet, "Object variable or With block variable not set");
    }
    return *control_;
}

std::string UDC_Interface::PluginName() const {
    return product::kProductName;
}

bool UDC_Interface::Init(const std::string& hostName, const std::string& fileName, const HostRef& helper) {
    if (Forms::Find(IO_Tasks::kName) == nullptr) {
        Forms::Add(IO_Tasks::kName);
    }
    Ctl().Port()->FindLast();
    const std::string section = "Plugins\\" + fileName;
    Ctl().Initialise(helper, hostName, section);
    return false;
}

void UDC_Interface::OpenMainPanel() {
    // One root controller for this call; it goes when the call ends.
    std::shared_ptr<HCF_Form> form = HCF_Form::Create();
    DataRef data = control_;
    form->OpenForm("User_Main", true, data);
    control_ = std::dynamic_pointer_cast<UDC_Control>(data);
}

bool UDC_Interface::Configure() {
    bool result = false;
    ErrTrap::Standard(std::string(product::kProductName) + " - Configure", [&] {
        if (Ctl().Port()->InUse()) {
            Ctl().Pause();
            OpenMainPanel();
            if (!Ctl().Port()->InUse()) {
                Ctl().Port()->Seize();
            }
            Ctl().Begin();
        } else {
            OpenMainPanel();
            if (Ctl().Port()->InUse()) {
                Ctl().Finish();
                Ctl().Port()->Release();
            }
        }
        result = Ctl().Port()->Ready() || Ctl().Port()->InUse();
    });
    return result;
}

bool UDC_Interface::Enable() {
    if (!Ctl().Port()->Ready()) {
        OpenMainPanel();
    }
    if (Ctl().Port()->Ready()) {
        Ctl().Port()->Seize();
        Ctl().Begin();
    }
    return true;
}

bool UDC_Interface::SetChannel(int32_t& slot, int32_t& level) {
    bool result = false;
    ErrTrap::Standard(std::string(product::kProductName) + " - Channel Update", [&] {
        if (Ctl().Mode() == 1) {
            return;
        }
        if (level < 0 || level > kMaxLevel || slot < 1 || slot > kMaxSlot) {
            return;
        }
        Ctl().Update(static_cast<int16_t>(slot), static_cast<uint8_t>(level));
        result = true;
    });
    return result;
}

bool UDC_Interface::Disable() {
    Ctl().Finish();
    Ctl().Port()->Release();
    return true;
}

bool UDC_Interface::Term() {
    control_.reset();
    return false;
}

} // namespace zol
