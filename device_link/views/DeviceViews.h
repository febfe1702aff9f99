#pragma once
// Registers the views of the local device and of the update check with the view factory:
// Config_Frame, System_Info, Config_Prog, Help_Update and Help_About.

namespace zol {

void RegisterDeviceViews();

} // namespace zol
