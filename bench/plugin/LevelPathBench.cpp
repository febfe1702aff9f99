// The road of one level: SetChannel through the session down to the device library, on a device
// library that only counts. Reports the time per level and the library calls per level (one for a
// slot within the frame, the block only when the frame grows).
#include "device_link/core/Client.h"
#include "device_link/core/DeviceLibrary.h"
#include "plugin/core/UDC_Interface.h"
#include "services/settings/AUF_Registry.h"

#include <benchmark/benchmark.h>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace {

class CountingLibrary final : public zol::DeviceLibrary {
public:
    int32_t Command(uint8_t* buffer, int32_t* length) override {
        ++commands;
        blocks += buffer[0] == 0x22 ? 1 : 0;
        *length = 0;
        return 0;
    }
    int32_t OpenPort(int32_t) override { return 0; }
    int32_t FreePort() override { return 0; }
    int32_t PortCount() override { return 1; }
    int32_t PortName(int32_t, char* buffer, int32_t size) override {
        const std::string name = "Bench";
        const auto n = static_cast<int32_t>(std::min<size_t>(name.size(), static_cast<size_t>(size - 1)));
        name.copy(buffer, static_cast<size_t>(n));
        buffer[n] = '\0';
        return n;
    }
    int32_t LastError(char*, int32_t) override { return 0; }
    int32_t Version(char*, int32_t) override { return 0; }
    int32_t Reprogram(const char*) override { return 0; }
    int32_t ProgState() override { return 0; }
    long commands = 0;
    long blocks = 0;
};

// A session of the host boundary on the counting library, started by hand (no views).
struct Session {
    Session() {
        const auto dir = std::filesystem::temp_directory_path() / "zol-level-bench";
        std::filesystem::create_directories(dir);
        setenv("XDG_CONFIG_HOME", dir.c_str(), 1);
        zol::Client::SetLibrary(&library);
        iface.Control()->Initialise(nullptr, "Bench", "Plugins\\bench");
        iface.Control()->Begin();
    }
    ~Session() { zol::Client::SetLibrary(nullptr); }
    CountingLibrary library;
    zol::UDC_Interface iface;
};

void BM_SetChannelWithinTheFrame(benchmark::State& state) {
    Session session;
    const long before = session.library.commands;
    int32_t level = 0;
    for (auto _ : state) {
        int32_t slot = 1 + (level % 24);
        int32_t value = level & 0xFF;
        benchmark::DoNotOptimize(session.iface.SetChannel(slot, value));
        ++level;
    }
    state.counters["calls_per_level"] =
        static_cast<double>(session.library.commands - before) / static_cast<double>(state.iterations());
}
BENCHMARK(BM_SetChannelWithinTheFrame);

void BM_FrameGrowthTo512(benchmark::State& state) {
    long calls = 0;
    long blocks = 0;
    long levels = 0;
    for (auto _ : state) {
        Session session;
        const long before = session.library.commands;
        for (int32_t slot = 1; slot <= 512; ++slot) {
            int32_t value = 255;
            session.iface.SetChannel(slot, value);
        }
        calls += session.library.commands - before;
        blocks += session.library.blocks - 1; // the first block is Begin's
        levels += 512;
    }
    state.counters["calls_per_level"] = static_cast<double>(calls) / static_cast<double>(levels);
    state.counters["blocks_per_pass"] = static_cast<double>(blocks) / static_cast<double>(state.iterations());
}
BENCHMARK(BM_FrameGrowthTo512);

} // namespace

BENCHMARK_MAIN();
