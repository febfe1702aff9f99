#pragma once
// zol-host with its window: loads the plug-in (--plugin PATH, else the one built beside the
// program) and shows the host's window until it is closed.

namespace zol::host {

int RunGui(int argc, char** argv);

} // namespace zol::host
