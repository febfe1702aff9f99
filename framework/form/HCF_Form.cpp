#include "framework/form/HCF_Form.h"

#include "device_link/core/ErrTrap.h"
#include "framework/form/Forms.h"
#include "framework/seam/UiSeam.h"
#include "services/settings/AUF_Registry.h"

#include <cmath>
#include <optional>

namespace zol {
namespace {

// A position in twips as the 16-bit Integer the store keeps (rounded half to even). Nothing when
// it does not fit: the last stored position then stays.
std::optional<int16_t> ToInteger(float twips) {
    const double rounded = std::nearbyint(static_cast<double>(twips));
    if (!(rounded >= -32768.0 && rounded <= 32767.0)) {
        return std::nullopt;
    }
    return static_cast<int16_t>(rounded);
}

// Codes that mean the link to the device, or a device, has failed: a view whose opening fails with
// one of these leaves through BugOut so that its opener learns of it.
bool IsChainFailure(int32_t code) {
    return code == err::ErrAPI_Connection || code == err::ErrAPI_DeviceMissig || code == err::ErrSYS_Comms ||
           code == err::ErrSYS_SubDev || code == err::ErrSYS_Device;
}

} // namespace

std::shared_ptr<HCF_Form> HCF_Form::Create() {
    return std::shared_ptr<HCF_Form>(new HCF_Form());
}

void HCF_Form::Initialise(View* linkFrm, const std::shared_ptr<HCF_Form>& ancestor, const DataRef& data) {
    ErrTrap::Standard("HCF_Form.Initialise", [&] {
        if (linked_) {
            ErrTrap::RaiseLocal("Control already assingned");
        }
        linkFrm_ = linkFrm;
        ancestor_ = ancestor;
        data_ = data;
        linked_ = true;
        if (linkFrm_ == nullptr) {
            throw RuntimeFault(rt::ObjectNotSet, "Object variable or With block variable not set");
        }
        keyX_ = linkFrm_->Name() + "_PosX";
        keyY_ = linkFrm_->Name() + "_PosY";
        const int32_t x = AUF_Registry::ReadLong(keyX_, -1);
        float left;
        float top;
        if (x < 0) {
            left = (Forms::ScreenWidth() - linkFrm_->Width()) / 2.0f;
            top = static_cast<float>(std::nearbyint((Forms::ScreenHeight() - linkFrm_->Height()) / 2.0f));
        } else {
            left = static_cast<float>(x);
            top = static_cast<float>(AUF_Registry::ReadLong(keyY_, 0));
        }
        linkFrm_->SetLeft(left);
        linkFrm_->SetTop(top);
    });
}

bool HCF_Form::DataIsSet() const {
    return data_ != nullptr;
}

std::string HCF_Form::DataClass() const {
    if (!DataIsSet()) {
        return {};
    }
    try {
        return data_->DataClass();
    } catch (const ZolError&) {
        return "Not Stated";
    } catch (const std::exception&) {
        return "Not Stated";
    }
}

DataRef HCF_Form::DataObject() const {
    return data_;
}

void HCF_Form::X_Link(View* linkFrm) {
    if (linked_) {
        ui().MsgBox("Control already assingned", vb::Critical);
        ui().Halt();
    }
    linkFrm_ = linkFrm;
    linked_ = true;
    if (linkFrm_ == nullptr) {
        return;
    }
    keyX_ = linkFrm_->Name() + "_PosX";
    keyY_ = linkFrm_->Name() + "_PosY";
    linkFrm_->SetLeft(0);
    linkFrm_->SetTop(0);
}

View* HCF_Form::Ancestor(int16_t level) {
    if (level <= 0) {
        return linkFrm_;
    }
    if (!ancestor_) {
        throw RuntimeFault(rt::ObjectNotSet, "Object variable or With block variable not set");
    }
    return ancestor_->Ancestor(static_cast<int16_t>(level - 1));
}

void HCF_Form::Hide() {
    if (linkFrm_ == nullptr) {
        ui().MsgBox("Object not linked to a form", vb::OKOnly);
        ui().Halt();
    }
    linkFrm_->SetVisible(false);
}

void HCF_Form::OpenForm(const std::string& name, bool modal, const DataRef& data) {
    // Keeps this controller alive while its own view may close under it.
    auto self = shared_from_this();
    View* target = nullptr;
    std::shared_ptr<HCF_Form> made;
    try {
        target = Forms::Find(name);
        if (target == nullptr) {
            target = Forms::Add(name);
            made = HCF_Form::Create();
            made->Initialise(target, self, data);
            target->SetControl(made);
        }
        if (modal) {
            target->Show(true);
        } else {
            if (linkFrm_ != nullptr) {
                Hide();
            }
            target->Show(false);
        }
        if (returnCode_ != 0) {
            ErrTrap::Raise(returnCode_);
        }
    } catch (const ZolError&) {
        HandleOpenFailure(made, target);
    } catch (const std::exception&) {
        HandleOpenFailure(made, target);
    }
}

void HCF_Form::HandleOpenFailure(const std::shared_ptr<HCF_Form>& made, View* target) {
    const int32_t code = ErrTrap::Capture(std::current_exception());
    if (IsChainFailure(code) && made) {
        made->BugOut(code);
    } else if (target != nullptr && Forms::IsOpen(target)) {
        target->Unload();
    }
    ErrTrap::ReRaise();
}

void HCF_Form::Continue(int32_t returnCode) {
    if (linkFrm_ == nullptr) {
        return;
    }
    ErrTrap::Standard("HCF_Form.Continue" + std::string(kCrLf), [&] { linkFrm_->SetVisible(true); });
    if (linkFrm_ != nullptr) {
        try {
            linkFrm_->Continue();
        } catch (const ZolError&) {
            // A view's own refresh failing does not stop the chain.
        } catch (const std::exception&) {
        }
    }
    returnCode_ = returnCode;
}

void HCF_Form::BugOut(int32_t returnCode) {
    returnCode_ = returnCode;
    if (linkFrm_ != nullptr) {
        linkFrm_->Unload();
    }
}

void HCF_Form::OnViewClosing() {
    if (linkFrm_ == nullptr) {
        return;
    }
    auto self = shared_from_this();
    View* view = linkFrm_;
    if (view->WindowState() != 1) {
        const auto left = ToInteger(view->Left());
        const auto top = ToInteger(view->Top());
        if (left && top) {
            AUF_Registry::WriteValue(keyX_, *left);
            AUF_Registry::WriteValue(keyY_, *top);
        }
    }
    ui().SetMousePointer(kPointerDefault);
    linkFrm_ = nullptr;
    data_.reset();
    if (ancestor_) {
        ancestor_->Continue(returnCode_);
    }
}

} // namespace zol
