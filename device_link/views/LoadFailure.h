#pragma once
// How a view gives up during its first fill, which runs inside the opener's OpenForm before the
// view is shown. A code for the opener is raised, so that OpenForm's own trap closes the view and
// hands the code on; with no code the view closes itself and the opener's show must not go on
// with it, which is the run-time error of a view unloaded during its own load.

#include "device_link/core/ErrTrap.h"
#include "framework/form/FormView.h"

#include <string>

namespace zol {

inline ErrTrap::BugOutFn LoadBugOut(FormView& view, const std::string& source) {
    return [&view, source](int32_t code) {
        if (code != 0) {
            ErrTrap::Raise(code & 0xFFF, source);
        }
        view.Form()->BugOut(0);
        throw RuntimeFault(rt::ViewUnloaded, "Object was unloaded");
    };
}

} // namespace zol
