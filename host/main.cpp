// zol-host: loads the plug-in through its C ABI and drives it as a lighting host does.
#include "host/HeadlessRun.h"
#include "host/gui/GuiRun.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <initializer_list>

namespace {
// True when there is a screen to open a window on, or a platform has been chosen explicitly.
bool HaveDisplay() {
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
        const char* value = std::getenv(name);
        if (value != nullptr && *value != '\0') {
            return true;
        }
    }
    return false;
}
} // namespace

int main(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--headless") == 0) {
            return zol::host::RunHeadless(argc, argv);
        }
    }
    if (!HaveDisplay()) {
        std::fprintf(stderr, "zol-host: no display; running the headless session (see --headless)\n");
        return zol::host::RunHeadless(argc, argv);
    }
    return zol::host::RunGui(argc, argv);
}
