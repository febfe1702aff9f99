#pragma once
// Looks a loaded view up by name for the session object.

#include "framework/form/View.h"

#include <string>

namespace zol {

// The open view named `name`; when there is none, shows "Form "<name>" not found" and returns null.
View* FindForm(const std::string& name);

} // namespace zol
