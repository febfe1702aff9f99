// A rig file comes from the user: the simulated interface takes it or refuses it with a message
// naming the file, and nothing else may happen.
#include "sim/device/Rig.h"

#include <cstdio>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

std::vector<std::string> ZolFuzzSeeds() {
    return {zol::sim::DefaultRigText(), "{\"ports\":[{}]}", "[]"};
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    try {
        zol::sim::Rig rig = zol::sim::ParseRig(text, "fuzz.json");
        (void)rig;
    } catch (const zol::sim::RigError& error) {
        if (std::string(error.what()).find("fuzz.json") == std::string::npos) {
            std::fprintf(stderr, "a refused rig must name its file: %s\n", error.what());
            std::abort();
        }
    }
    return 0;
}
