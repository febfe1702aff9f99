#pragma once
// Paths of the build, for tests that load the built plug-in or the simulated interface.

#include <string>

namespace zol::test {
// The build's bin folder (plug-in, device library, tools), from ZOL_BUILD_DIR.
std::string BinDir();
// The source tree, from ZOL_SOURCE_DIR.
std::string SourceDir();
// Runs Qt's event loop for `ms` milliseconds (real time).
void PumpFor(int ms);
} // namespace zol::test
