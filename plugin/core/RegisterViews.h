#pragma once
// The plug-in's views, registered with the view factory once when the plug-in starts.

namespace zol {

// Registers every view of the plug-in by its name. Each view unit adds its one line here.
void RegisterAllViews();

} // namespace zol
