// The settings file parser meets whatever is on disk: it must refuse a malformed file with a
// message, never crash, and what it accepts must survive a write and a read unchanged.
#include "services/settings/SettingsFile.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

using namespace zol::settings_file;

std::vector<std::string> ZolFuzzSeeds() {
    return {
        "[Software\\KARN\\DMX-ZOL]\n\"PortUsed\"=sz:\"ZOL USB 1\"\n\"DeviceModel\"=dword:00000002\n",
        "; comment\n[a]\n\"Flag\"=binary:01\n\"Empty\"=sz:\n\"Odd\"=hex(7):41 42\n",
        "[x]\n\"Name\\\"q\"=sz:\"line\\r\\nbreak\\x01\\0\"\n",
    };
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    std::string error;
    auto document = Parse(text, &error);
    if (!document) {
        if (error.empty()) {
            std::fprintf(stderr, "a refused settings file must say why\n");
            std::abort();
        }
        return 0;
    }
    const std::string written = Serialize(*document);
    std::string again;
    auto reread = Parse(written, &again);
    if (!reread || Serialize(*reread) != written) {
        std::fprintf(stderr, "settings file does not survive a write and a read: %s\n", again.c_str());
        std::abort();
    }
    return 0;
}
