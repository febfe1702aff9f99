#include "host/HeadlessRun.h"

#include "device_link/core/DeviceLibrary.h"
#include "device_link/kdi.h"
#include "host/PluginLoader.h"
#include "services/settings/AUF_Registry.h"

#include <QApplication>
#include <QEventLoop>
#include <QTimer>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

namespace zol::host {
namespace {

constexpr const char* kHostName = "zol-host";

struct Options {
    std::string plugin;
    int slotCount = 8;
    int steps = 16;
    int intervalMs = 50;
};

void Usage() {
    std::fprintf(stderr, "usage: zol-host --headless [--plugin PATH] [--slots 1-512] [--steps N] "
                         "[--interval MS]\n");
}

bool ParseInt(const char* text, int low, int high, int& out) {
    char* end = nullptr;
    const long value = std::strtol(text, &end, 10);
    if (end == text || *end != '\0' || value < low || value > high) {
        return false;
    }
    out = static_cast<int>(value);
    return true;
}

bool Parse(int argc, char** argv, Options& options) {
    options.plugin = PluginLoader::DefaultPath();
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        const bool hasValue = i + 1 < argc;
        if (arg == "--headless") {
            continue;
        }
        if (arg == "--plugin" && hasValue) {
            options.plugin = argv[++i];
        } else if (arg == "--slots" && hasValue) {
            if (!ParseInt(argv[++i], 1, 512, options.slotCount)) {
                return false;
            }
        } else if (arg == "--steps" && hasValue) {
            if (!ParseInt(argv[++i], 0, 100000, options.steps)) {
                return false;
            }
        } else if (arg == "--interval" && hasValue) {
            if (!ParseInt(argv[++i], 0, 60000, options.intervalMs)) {
                return false;
            }
        } else {
            return false;
        }
    }
    return true;
}

// Runs the Qt event loop for `ms` milliseconds, as a host does between its calls; the loop sleeps
// while nothing happens.
void PumpFor(int ms) {
    QEventLoop loop;
    QTimer::singleShot(std::max(ms, 0), Qt::PreciseTimer, &loop, &QEventLoop::quit);
    loop.exec();
}

// The levels received from the device's input in DMX-in mode.
struct Received {
    long count = 0;
    int32_t lastSlot = 0;
    int32_t lastLevel = 0;
};

void OnInput(void* context, int32_t* slot, int32_t* level) {
    auto* received = static_cast<Received*>(context);
    ++received->count;
    received->lastSlot = *slot;
    received->lastLevel = *level;
}

// The device library's tester console, when it has one (the simulated interface does).
using SimControlFn = int32_t (*)(const char*, char*, int32_t);

std::string Query(SimControlFn control, const char* command) {
    std::vector<char> reply(4096);
    const int32_t n = control(command, reply.data(), static_cast<int32_t>(reply.size()));
    if (n < 0) {
        return {};
    }
    return std::string(reply.data());
}

std::vector<int> ParseHex(const std::string& text) {
    std::vector<int> out;
    std::istringstream in(text);
    std::string word;
    while (in >> word) {
        out.push_back(static_cast<int>(std::strtol(word.c_str(), nullptr, 16)));
    }
    return out;
}

std::string Join(const std::vector<int>& values) {
    std::string out;
    for (int v : values) {
        out += (out.empty() ? "" : " ") + std::to_string(v);
    }
    return out;
}

} // namespace

int RunHeadless(int argc, char** argv) {
    Options options;
    if (!Parse(argc, argv, options)) {
        Usage();
        return 2;
    }
    // Nobody can answer a dialog here: views stay off screen and boxes go to the console.
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    setenv("ZOL_UI", "console", 0);
    QApplication app(argc, argv);

    PluginLoader plugin;
    std::string why;
    if (!plugin.Load(options.plugin, why)) {
        std::fprintf(stderr, "zol-host: %s\n", why.c_str());
        return 2;
    }
    const std::filesystem::path pluginPath(plugin.Path());

    // The port: the one the plug-in remembers if it is there, otherwise the first. Without a
    // chosen port Enable would ask with the main panel, which nobody can see here.
    const std::string devicePath = DefaultDeviceLibraryPath(pluginPath.parent_path().string());
    std::unique_ptr<DeviceLibrary> device = LoadDeviceLibrary(devicePath);
    const int32_t count = device->PortCount();
    if (count <= 0) {
        char text[KDI_TEXT_SIZE] = {};
        device->LastError(text, sizeof text);
        // The library's own reason, also when it simply has no port (a simulator whose rig was refused).
        std::fprintf(stderr, "zol-host: the device library %s offers no port (%d%s%s)\n", devicePath.c_str(),
                     count, text[0] != '\0' ? ": " : "", text);
        return 3;
    }
    std::vector<std::string> ports;
    for (int32_t i = 1; i <= count; ++i) {
        char name[KDI_PORT_NAME_SIZE] = {};
        const int32_t n = device->PortName(i, name, sizeof name);
        ports.emplace_back(name, static_cast<size_t>(std::clamp<int32_t>(n, 0, KDI_PORT_NAME_SIZE - 1)));
    }
    const std::string remembered = AUF_Registry::ReadString("PortUsed");
    if (std::find(ports.begin(), ports.end(), remembered) != ports.end()) {
        std::printf("Port: %s (remembered)\n", remembered.c_str());
    } else {
        AUF_Registry::WriteValue("PortUsed", ports.front());
        std::printf("Port: %s (the first of %d)\n", ports.front().c_str(), count);
    }

    UDC_Interface* p = plugin.Create();
    if (p == nullptr) {
        std::fprintf(stderr, "zol-host: the plug-in object could not be made\n");
        return 4;
    }
    int exitCode = 0;
    int32_t result = 0;
    auto failed = [&](const char* call, int32_t code) {
        if (code == 0) {
            return false;
        }
        std::fprintf(stderr, "zol-host: %s failed: %s\n", call, plugin.ErrorText(p, code).c_str());
        exitCode = 4;
        return true;
    };

    char name[ZOL_PLUGIN_TEXT_SIZE];
    if (plugin.PluginName(p, name, sizeof name) == 0) {
        std::printf("Plug-in: %s\n", name);
    }
    Received received;
    const DMXC_Helper helper{&received, &OnInput};
    const std::string fileName = pluginPath.filename().string();
    std::vector<int> sent(static_cast<size_t>(options.slotCount), 0);
    bool inputMode = false;

    if (!failed("UDC_Init", plugin.Init(p, kHostName, fileName.c_str(), &helper, &result)) &&
        !failed("UDC_Enable", plugin.Enable(p, &result))) {
        std::printf("Session started\n");
        // A chase: one slot at full, moving one slot a step. Only the levels that change are sent.
        int lit = 0;
        for (int step = 0; step < options.steps && exitCode == 0; ++step) {
            const int next = step % options.slotCount + 1;
            std::vector<std::pair<int32_t, int32_t>> changes;
            if (lit != 0 && lit != next) {
                changes.emplace_back(lit, 0);
            }
            changes.emplace_back(next, 255);
            std::string line = "step " + std::to_string(step + 1) + ":";
            for (auto [slot, level] : changes) {
                if (failed("UDC_SetChannel", plugin.SetChannel(p, &slot, &level, &result))) {
                    break;
                }
                if (result == 0) {
                    inputMode = true;
                    break;
                }
                sent[static_cast<size_t>(slot) - 1] = level;
                line += " slot " + std::to_string(slot) + " = " + std::to_string(level);
            }
            if (inputMode) {
                break;
            }
            lit = next;
            std::printf("%s\n", line.c_str());
            PumpFor(options.intervalMs);
        }
        if (inputMode) {
            std::printf("The plug-in is in DMX-in mode: listening for %d ms\n",
                        std::max(1000, options.steps * options.intervalMs));
            PumpFor(std::max(1000, options.steps * options.intervalMs));
            std::printf("Received %ld levels from the device's input (last: slot %d = %d)\n", received.count,
                        received.lastSlot, received.lastLevel);
        }

        // What the device received.
        void* handle = dlopen(devicePath.c_str(), RTLD_NOW | RTLD_NOLOAD);
        auto control =
            handle != nullptr ? reinterpret_cast<SimControlFn>(dlsym(handle, "SIM_Control")) : nullptr;
        if (!inputMode && exitCode == 0) {
            const std::string levels = Join(sent);
            if (control != nullptr) {
                const std::vector<int> frame = ParseHex(Query(control, "frame"));
                std::vector<int> first;
                for (size_t i = 1; i < frame.size() && first.size() < sent.size(); ++i) {
                    first.push_back(frame[i]);
                }
                std::printf("Device frame: start code %d, slots 1-%d: %s\n", frame.empty() ? -1 : frame[0],
                            options.slotCount, Join(first).c_str());
                std::printf("Device counters: %s\n", Query(control, "counters").c_str());
                if (first != sent) {
                    // A level that made the frame grow goes out with its slot's next change.
                    std::string differ;
                    for (size_t i = 0; i < sent.size(); ++i) {
                        if (i >= first.size() || first[i] != sent[i]) {
                            differ += (differ.empty() ? "" : ", ") + std::to_string(i + 1);
                        }
                    }
                    std::printf(
                        "The device's frame differs from the levels sent (%s) at slot %s; a level that "
                        "made the frame longer reaches the device with the next change of its slot\n",
                        levels.c_str(), differ.c_str());
                } else {
                    std::printf("The device's frame matches the levels sent\n");
                }
            } else {
                std::printf("Levels sent, slots 1-%d (the device library offers no query): %s\n",
                            options.slotCount, levels.c_str());
            }
        }
        if (handle != nullptr) {
            dlclose(handle);
        }
        if (!failed("UDC_Disable", plugin.Disable(p, &result))) {
            std::printf("Session stopped\n");
        }
    }
    failed("UDC_Term", plugin.Term(p, &result));
    plugin.Release(p);
    plugin.Unload();
    return exitCode;
}

} // namespace zol::host
