#include "plugin/core/FindForm.h"

#include "framework/form/Forms.h"
#include "framework/seam/UiSeam.h"
#include "services/strings/StrFormat.h"

namespace zol {

View* FindForm(const std::string& name) {
    for (View* view : Forms::All()) {
        if (view->Name() == name) {
            return view;
        }
    }
    ui().MsgBox("Form " + Text::QuoteText(name) + " not found");
    return nullptr;
}

} // namespace zol
