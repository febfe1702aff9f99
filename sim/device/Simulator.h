#pragma once
// The simulated interface library: the ports of a rig, the one open port, the faults a tester can
// inject, the modelled clock, and the trace of every call. Each public operation is one function
// of the exported C ABI and takes the lock for its whole run.

#include "sim/device/DevicePort.h"
#include "sim/device/Rig.h"

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace zol::sim {

// Library results (negative) of the C ABI.
namespace result {
inline constexpr int32_t kConnection = -1;
inline constexpr int32_t kDeviceMissing = -2;
inline constexpr int32_t kNotResponding = -3;
inline constexpr int32_t kImageIncompatible = -7;
inline constexpr int32_t kImageCorrupt = -8;
inline constexpr int32_t kFolderNotFound = -9;
inline constexpr int32_t kFileNotFound = -10;
inline constexpr int32_t kBadCall = -12;
inline constexpr int32_t kPortState = -14;
} // namespace result

// One line per call to a file, flushed at once so a reader sees it while the library runs.
class Trace {
public:
    ~Trace() { Close(); }
    bool Open(const std::string& path);
    void Close();
    bool On() const { return file_ != nullptr; }
    void Line(const std::string& text);

private:
    std::FILE* file_ = nullptr;
};

class Simulator {
public:
    Simulator();
    ~Simulator();
    Simulator(const Simulator&) = delete;
    Simulator& operator=(const Simulator&) = delete;

    int32_t Command(uint8_t* buffer, int32_t* length);
    int32_t OpenPort(int32_t index);
    int32_t FreePort();
    int32_t PortCount();
    int32_t PortName(int32_t index, char* buffer, int32_t size);
    int32_t LastError(char* buffer, int32_t size);
    int32_t Version(char* buffer, int32_t size);
    int32_t Reprogram(const char* path);
    int32_t ProgState();
    // The tester's console; see the README for the commands. Returns the length of the whole
    // reply text (which may be longer than `size` - 1), or -1 with the reason in the reply.
    int32_t Control(const char* command, char* reply, int32_t size);

    // True when the RDM line is built into this library.
    static bool LineAvailable();

private:
    using Lock = std::lock_guard<std::mutex>;

    void EnsureLoaded();
    void LoadFromEnvironment();
    void LoadRig(const std::string& path); // empty: the built-in rig
    void WireLoopbacks();
    void Tick();
    void AdvanceBy(double seconds);
    double WallSeconds() const;
    bool Fault(const std::string& function, int32_t& code);
    int32_t Fail(int32_t code, const std::string& why);
    DevicePort* Open() const;
    std::string NoSuchPort(int32_t index) const;
    int32_t ControlText(const std::string& command, std::string& reply);
    int32_t PortControl(DevicePort& port, const std::vector<std::string>& words, const std::string& rest,
                        std::string& reply);
    void TraceLine(const std::string& text);

    std::mutex mutex_;
    bool loaded_ = false;
    std::string rigPath_;
    Rig rig_;
    std::vector<std::unique_ptr<DevicePort>> ports_;
    int open_ = 0; // 1-based, 0 none
    std::string lastError_ = "No error";
    std::string rigError_; // why the rig was refused; empty when it was taken
    Trace trace_;

    // Per port (index from 0): the tester's faults.
    std::vector<bool> unplugged_;
    std::vector<int> silent_; // calls left not responding; -1 until "respond"
    std::vector<int> busy_;   // commands left answered with status 8
    // Function name to (code, calls left).
    std::map<std::string, std::pair<int32_t, int>> failures_;

    // The clock: simulated seconds. Real mode follows the steady clock times a speed; manual mode
    // moves only by "advance".
    bool manual_ = false;
    double speed_ = 1.0;
    std::chrono::steady_clock::time_point wallBase_;
    double simBase_ = 0;
    double now_ = 0;
};

} // namespace zol::sim
