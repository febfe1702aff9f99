#pragma once
// HCF_Form: the controller that ties a view to its data object and to the view that opened it,
// keeps the view's screen position under "<Name>_PosX"/"<Name>_PosY", carries a return code up
// the chain of modal views, and stops a chain when the local device has gone away.

#include "framework/form/View.h"
#include "framework/seam/DataObject.h"

#include <cstdint>
#include <memory>
#include <string>

namespace zol {

class HCF_Form : public std::enable_shared_from_this<HCF_Form> {
public:
    // A root controller: no linked view, no ancestor.
    static std::shared_ptr<HCF_Form> Create();

    void Initialise(View* linkFrm, const std::shared_ptr<HCF_Form>& ancestor, const DataRef& data);
    bool DataIsSet() const;
    std::string DataClass() const; // "" without data, "Not Stated" when the object cannot say
    DataRef DataObject() const;
    void X_Link(View* linkFrm);
    View* Ancestor(int16_t level);
    void Hide();
    void OpenForm(const std::string& name, bool modal, const DataRef& data = nullptr);
    void Continue(int32_t returnCode);
    void BugOut(int32_t returnCode);

    // For the view: the close steps, run by the view's close notification.
    void OnViewClosing();
    View* LinkFrm() const { return linkFrm_; }
    int32_t ReturnCode() const { return returnCode_; }
    bool Linked() const { return linked_; }

private:
    HCF_Form() = default;
    // The trap of OpenForm: a chain failure leaves through BugOut of the new controller, anything
    // else unloads the target; then the error goes on to the caller.
    [[noreturn]] void HandleOpenFailure(const std::shared_ptr<HCF_Form>& made, View* target);
    View* linkFrm_ = nullptr;
    std::shared_ptr<HCF_Form> ancestor_;
    DataRef data_;
    bool linked_ = false;
    int32_t returnCode_ = 0;
    std::string keyX_, keyY_;
};

} // namespace zol
