#pragma once
// A session on the simulated interface for the RDM model's integration tests and benchmark: loads
// libzol-sim.so as Client's device library, puts the simulator on its manual clock, opens port 1
// and runs discovery. A counting wrapper records the library's Command calls and the time spent
// inside them, so that the time of our own stack can be told apart from the simulator's.

#include "device_link/core/Client.h"
#include "device_link/core/DeviceLibrary.h"
#include "device_link/core/ErrTrap.h"

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <dlfcn.h>
#include <filesystem>
#include <memory>
#include <sstream>
#include <string>

namespace zol::rdm::sim {

// CPU time of the calling thread, in seconds.
inline double ThreadCpuSeconds() {
    timespec ts{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &ts);
    return static_cast<double>(ts.tv_sec) + static_cast<double>(ts.tv_nsec) * 1e-9;
}

// Forwards every call to the loaded library; counts Command calls and the CPU time spent in them.
class CountingLibrary : public DeviceLibrary {
public:
    explicit CountingLibrary(DeviceLibrary& inner) : inner_(inner) {}

    int32_t Command(uint8_t* buffer, int32_t* length) override {
        ++commands;
        const double start = ThreadCpuSeconds();
        const int32_t status = inner_.Command(buffer, length);
        insideSeconds += ThreadCpuSeconds() - start;
        delayed += status == 16 ? 1 : 0;
        parts += status == 18 ? 1 : 0;
        return status;
    }
    int32_t OpenPort(int32_t index) override { return inner_.OpenPort(index); }
    int32_t FreePort() override { return inner_.FreePort(); }
    int32_t PortCount() override { return inner_.PortCount(); }
    int32_t PortName(int32_t index, char* buffer, int32_t size) override {
        return inner_.PortName(index, buffer, size);
    }
    int32_t LastError(char* buffer, int32_t size) override { return inner_.LastError(buffer, size); }
    int32_t Version(char* buffer, int32_t size) override { return inner_.Version(buffer, size); }
    int32_t Reprogram(const char* path) override { return inner_.Reprogram(path); }
    int32_t ProgState() override { return inner_.ProgState(); }

    void Clear() {
        commands = 0;
        delayed = 0;
        parts = 0;
        insideSeconds = 0;
    }

    long commands = 0;
    long delayed = 0; // answers with status 16: the responder answered with ACK_TIMER
    long parts = 0;   // answers with status 18: one part of an overflowing answer
    double insideSeconds = 0;

private:
    DeviceLibrary& inner_;
};

class SimSession {
public:
    // Where the simulated interface is built: $ZOL_BUILD_DIR/bin, else the build folder this
    // program was configured in.
    static std::string LibraryPath() {
        std::string dir;
        if (const char* env = std::getenv("ZOL_BUILD_DIR"); env != nullptr && *env != '\0') {
            dir = env;
        }
#ifdef ZOL_RDM_BUILD_DIR
        if (dir.empty()) {
            dir = ZOL_RDM_BUILD_DIR;
        }
#endif
        return dir + "/bin/" + kSimulatorLibraryName;
    }

    SimSession() = default;
    SimSession(const SimSession&) = delete;
    SimSession& operator=(const SimSession&) = delete;

    ~SimSession() {
        if (portOpen_) {
            try {
                Client::ClosePort();
            } catch (const std::exception&) {
                // the port goes with the simulator's reset anyway
            }
        }
        if (customRig_ && control_ != nullptr) {
            Control("rig default");
        }
        if (installed_) {
            Client::SetLibrary(previous_);
        }
        if (handle_ != nullptr) {
            dlclose(handle_);
        }
    }

    // Loads the library and opens port 1 on a reset simulator with its manual clock. False, with
    // the reason in `why`, when the library or its RDM line or responders are not there.
    // With `rig`, the simulator first loads that rig file instead of the one it has.
    bool Open(std::string& why, const std::string& rig = {}) {
        const std::string path = LibraryPath();
        if (!std::filesystem::exists(path)) {
            why = "the simulated interface is not built: " + path;
            return false;
        }
        handle_ = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
        if (handle_ == nullptr) {
            why = "cannot load " + path;
            return false;
        }
        control_ = reinterpret_cast<ControlFn>(dlsym(handle_, "SIM_Control"));
        if (control_ == nullptr) {
            why = "SIM_Control is missing from " + path;
            return false;
        }
        library_ = LoadDeviceLibrary(path);
        counting_ = std::make_unique<CountingLibrary>(*library_);
        previous_ = Client::SetLibrary(counting_.get());
        installed_ = true;
        Client::ResetStateForTest();
        int rc = 0;
        if (!rig.empty()) {
            customRig_ = true;
            const std::string reply = Control("rig " + rig, &rc);
            if (rc != 0) {
                why = "the simulator refused the rig " + rig + ": " + reply;
                return false;
            }
        }
        Control("reset", &rc);
        Control("clock manual", &rc);
        const std::string responders = Control("port 1 line responders", &rc);
        if (rc != 0 || responders.rfind("error", 0) == 0) {
            why = "the simulated interface has no RDM line: " + responders;
            return false;
        }
        if (responders.empty()) {
            why = "the rig has no responders on port 1";
            return false;
        }
        responderCount_ = 0;
        std::istringstream lines(responders);
        for (std::string line; std::getline(lines, line);) {
            responderCount_ += line.empty() ? 0 : 1;
        }
        Client::OpenPort(1);
        portOpen_ = true;
        return true;
    }

    std::string Control(const std::string& command, int* rc = nullptr) {
        char reply[8192] = {};
        const int32_t result = control_(command.c_str(), reply, sizeof reply);
        if (rc != nullptr) {
            *rc = result < 0 ? -1 : 0;
        }
        return reply;
    }

    void Advance(double seconds) {
        Control("advance " + std::to_string(seconds));
    }

    // Runs a discovery pass to its end and returns the number of responders found; -1 when the
    // pass did not end within `limitSeconds` of simulated time, or ended with a state other than 0.
    int Discover(double limitSeconds = 600) {
        Client::DiscoveryStart();
        for (double waited = 0; waited <= limitSeconds; waited += 0.25) {
            const int32_t status = Client::DiscoveryStatus();
            const int32_t count = status % 256;
            const int32_t state = (status - count) / 256;
            if (state == 0) {
                return count;
            }
            if (state != 1) {
                return -1;
            }
            Advance(0.25);
        }
        return -1;
    }

    // A value of "line stats" such as time_ms or requests.
    double LineStat(const std::string& key) {
        const std::string stats = Control("port 1 line stats");
        const auto at = stats.find(key + "=");
        if (at == std::string::npos) {
            return -1;
        }
        return std::strtod(stats.c_str() + at + key.size() + 1, nullptr);
    }

    int ResponderCount() const {
        return responderCount_;
    }
    CountingLibrary& Counter() {
        return *counting_;
    }

private:
    using ControlFn = int32_t (*)(const char*, char*, int32_t);

    void* handle_ = nullptr;
    ControlFn control_ = nullptr;
    std::unique_ptr<DeviceLibrary> library_;
    std::unique_ptr<CountingLibrary> counting_;
    DeviceLibrary* previous_ = nullptr;
    bool installed_ = false;
    bool portOpen_ = false;
    bool customRig_ = false;
    int responderCount_ = 0;
};

} // namespace zol::rdm::sim
