// zol-host: loads the plug-in through its C ABI and drives it as a lighting host does.
#include "host/HeadlessRun.h"
#include "host/gui/GuiRun.h"

#include <cstring>

int main(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--headless") == 0) {
            return zol::host::RunHeadless(argc, argv);
        }
    }
    return zol::host::RunGui(argc, argv);
}
