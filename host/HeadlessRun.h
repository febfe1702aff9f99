#pragma once
// zol-host --headless: loads the plug-in, starts a session on the remembered or first port, sends
// a short chase of levels, reports what the device received, and ends the session.

namespace zol::host {

int RunHeadless(int argc, char** argv);

} // namespace zol::host
