// zol-host: loads the plug-in through its C ABI and drives it as a lighting host does.
#include "host/HeadlessRun.h"

#include <cstdio>
#include <cstring>

int main(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--headless") == 0) {
            return zol::host::RunHeadless(argc, argv);
        }
    }
    std::fprintf(stderr, "zol-host: the windowed host is not part of this build; run zol-host --headless\n");
    return 2;
}
