#include "device_link/core/Client.h"

#include "device_link/core/ErrTrap.h"
#include "device_link/kdi.h"
#include "framework/seam/LoopClock.h"
#include "framework/seam/UiSeam.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <filesystem>
#include <memory>
#include <optional>

namespace zol::Client {

namespace {

constexpr int kBufferSize = KDI_BUFFER_SIZE;
constexpr uint8_t kPollCode = 0x3A; // ":", the code of command 58
constexpr int32_t kStatusDone = 0;
constexpr int32_t kStatusWait = 16;
constexpr int32_t kStatusQueued = 17;
constexpr int32_t kStatusOverflow = 18;

struct ClientState {
    bool lastQueued = false;
    bool queueLatch = false;
};

ClientState& state() {
    static ClientState instance;
    return instance;
}

DeviceLibrary* g_installed = nullptr;

DeviceLibrary& DefaultLibrary() {
    static std::unique_ptr<DeviceLibrary> library =
        LoadDeviceLibrary(DefaultDeviceLibraryPath(PluginFolder()));
    return *library;
}

char ByteChar(int32_t value) {
    return static_cast<char>(static_cast<uint8_t>(value & 0xFF));
}

int32_t ByteAt(const Bytes& data, size_t offset) {
    return offset < data.size() ? static_cast<uint8_t>(data[offset]) : 0;
}

// A one-byte argument: anything but 0..255 is an invalid call, as converting it to a character is.
char CheckedByte(int32_t value) {
    if (value < 0 || value > 255) {
        throw RuntimeFault(rt::InvalidCall, "Invalid procedure call or argument");
    }
    return ByteChar(value);
}

// 16-bit values of local device commands go low byte first.
Bytes Word16LE(int32_t value) {
    return Bytes{ByteChar(value), ByteChar(value >> 8)};
}

// The negative result of a library function as the absolute value, without overflow.
int32_t Magnitude(int32_t result) {
    return static_cast<int32_t>(-static_cast<int64_t>(result));
}

// A text the library wrote into `buffer`: the first `length` characters, never past the buffer.
std::string TextOf(const char* buffer, int32_t length, int32_t size) {
    const int32_t n = std::clamp(length, 0, size);
    return std::string(buffer, static_cast<size_t>(n));
}

Bytes DropTrailingNul(Bytes text) {
    if (!text.empty() && text.back() == '\0') {
        text.pop_back();
    }
    return text;
}

// The time of day made continuous over midnight for one wait: a reading far below the previous
// one means the clock wrapped, and a day is added so that a deadline past midnight is reached.
class WaitClock {
public:
    WaitClock() : last_(loopClock().TimeOfDay()) {}
    double Now() {
        const double t = loopClock().TimeOfDay();
        if (t < last_ - 43200.0) {
            base_ += 86400.0;
        }
        last_ = t;
        return base_ + t;
    }

private:
    double base_ = 0.0;
    double last_;
};

[[noreturn]] void EndOnBadReply(const std::string& title) {
    ui().MsgBox("Un expected response from Local device", vb::Exclamation, title);
    ui().Halt();
    std::abort(); // Halt never comes back
}

} // namespace

DeviceLibrary& Library() {
    return g_installed != nullptr ? *g_installed : DefaultLibrary();
}

DeviceLibrary* SetLibrary(DeviceLibrary* library) {
    DeviceLibrary* previous = g_installed;
    g_installed = library;
    return previous;
}

namespace {

// The file mapped at `address`, from the process's own map (always an absolute path), or from the
// dynamic loader made absolute.
std::string ModuleFileOf(const void* address) {
    const auto where = reinterpret_cast<uintptr_t>(address);
    if (std::FILE* maps = std::fopen("/proc/self/maps", "r")) {
        char line[4096];
        std::string found;
        while (found.empty() && std::fgets(line, sizeof line, maps) != nullptr) {
            unsigned long start = 0;
            unsigned long end = 0;
            int pathAt = 0;
            if (std::sscanf(line, "%lx-%lx %*s %*s %*s %*s %n", &start, &end, &pathAt) >= 2 &&
                where >= start && where < end && pathAt > 0 && line[pathAt] == '/') {
                found = line + pathAt;
                while (!found.empty() && (found.back() == '\n' || found.back() == '\r')) {
                    found.pop_back();
                }
            }
        }
        std::fclose(maps);
        if (!found.empty()) {
            return found;
        }
    }
    Dl_info info{};
    if (dladdr(address, &info) == 0 || info.dli_fname == nullptr || *info.dli_fname == '\0') {
        return {};
    }
    std::error_code ec;
    const auto absolute = std::filesystem::absolute(info.dli_fname, ec);
    return ec ? std::string(info.dli_fname) : absolute.string();
}

} // namespace

std::string PluginFolder() {
    const std::string path = ModuleFileOf(reinterpret_cast<const void*>(&PluginFolder));
    const auto slash = path.rfind('/');
    if (slash == std::string::npos) {
        return ".";
    }
    return slash == 0 ? std::string("/") : path.substr(0, slash);
}

// ---- The exchange ----

Bytes Command(uint8_t code, const Bytes& data) {
    if (data.size() + 1 > static_cast<size_t>(kBufferSize)) {
        throw RuntimeFault(rt::InvalidCall, "Invalid procedure call or argument");
    }
    ClientState& s = state();
    std::array<uint8_t, kBufferSize> buffer{};
    bool waiting = false;
    double deadline = 0.0;
    Bytes response;
    std::optional<WaitClock> clock; // started by the first delayed answer

    for (;;) {
        s.lastQueued = false;
        int32_t length;
        if (waiting) {
            buffer[0] = kPollCode;
            buffer[1] = static_cast<uint8_t>(ByteAt(data, 0));
            length = 2;
            // The deadline is compared at single precision, as the time of day is kept.
            // The message loop runs while the answer is prepared; the wait sleeps in it until an
            // event or the deadline, so it costs no processor time while nothing happens.
            for (double now = clock->Now(); static_cast<float>(now) <= static_cast<float>(deadline);
                 now = clock->Now()) {
                loopClock().WaitEvents(deadline - now + 0.001);
            }
        } else {
            buffer[0] = code;
            std::copy(data.begin(), data.end(), buffer.begin() + 1);
            length = static_cast<int32_t>(data.size()) + 1;
        }

        const int32_t status = Library().Command(buffer.data(), &length);

        const bool answered = status == kStatusDone || status == kStatusWait || status == kStatusQueued ||
                              status == kStatusOverflow;
        if (answered) {
            // A library that claims a response longer than the buffer it was handed cannot have
            // written it: the reply has the wrong form. A negative length, or a delayed answer or
            // poll reply too short for its two leading bytes, is a truncated reply.
            if (length > kBufferSize) {
                ui().SetMousePointer(kPointerDefault);
                ErrTrap::Raise(err::ErrAPI_Response_Format & 0xFFF);
            }
            if (length < 0 || ((status == kStatusWait || (status == kStatusDone && waiting)) && length < 2)) {
                ui().SetMousePointer(kPointerDefault);
                ErrTrap::Raise(err::ErrAPI_Response_Short & 0xFFF);
            }
        }
        const auto bytes = [&](size_t from) {
            return Bytes(reinterpret_cast<const char*>(buffer.data()) + from,
                         static_cast<size_t>(length) - from);
        };

        switch (status) {
        case kStatusDone:
            if (waiting) {
                // The first two bytes of a poll reply are the PID of the answer.
                response += bytes(2);
                ui().SetMousePointer(kPointerDefault);
            } else {
                response += bytes(0);
            }
            return response;
        case kStatusWait: {
            ui().SetMousePointer(kPointerHourglass);
            const int tenths = buffer[0] * 256 + buffer[1];
            if (!clock) {
                clock.emplace();
            }
            deadline = clock->Now() + tenths / 10.0;
            waiting = true;
            continue;
        }
        case kStatusQueued:
            response += bytes(0);
            s.queueLatch = true;
            s.lastQueued = true;
            return response;
        case kStatusOverflow:
            response += bytes(0);
            if (response.empty()) {
                ErrTrap::Raise(err::ErrRDM_Response_Format & 0xFFF);
            }
            continue;
        default: {
            const int32_t raw = status < 0 ? Magnitude(status) + 256 : status;
            ui().SetMousePointer(kPointerDefault);
            ErrTrap::Raise(raw);
        }
        }
    }
}

bool LastQueued() {
    return state().lastQueued;
}
bool QueueLatch() {
    return state().queueLatch;
}
void ResetStateForTest() {
    state() = ClientState{};
}

// ---- Library functions ----

namespace {

// Raises `raw` for a failed library call; a library that could not be loaded at all raises
// ErrAPI_Unexpected instead, whose text names the library and the loader's reason.
[[noreturn]] void RaiseResult(int32_t result, int32_t raw, const std::string& source) {
    if (result == kLibraryUnavailable) {
        ErrTrap::Raise(err::ErrAPI_Unexpected & 0xFFF, source);
    }
    ErrTrap::Raise(raw, source);
}

} // namespace

int32_t GetPortCount() {
    const int32_t result = Library().PortCount();
    if (result < 0) {
        RaiseResult(result, Magnitude(result), "API-GetPortCount");
    }
    return result;
}

std::string GetPortName(int32_t index) {
    std::array<char, KDI_PORT_NAME_SIZE> buffer{};
    const int32_t result = Library().PortName(index, buffer.data(), KDI_PORT_NAME_SIZE);
    if (result < 0) {
        ErrTrap::Raise(Magnitude(result) | 0x100, "API-GetPortName");
    }
    return TextOf(buffer.data(), result, KDI_PORT_NAME_SIZE);
}

void OpenPort(int32_t index) {
    const int32_t result = Library().OpenPort(index);
    if (result < 0) {
        ErrTrap::Raise(Magnitude(result) + 256, "USB-OpenPort");
    }
}

void ClosePort() {
    const int32_t result = Library().FreePort();
    if (result < 0) {
        ErrTrap::Raise(Magnitude(result) + 256, "USB-Disconnect");
    }
}

std::string LibraryVersion() {
    std::array<char, KDI_TEXT_SIZE> buffer{};
    const int32_t result = Library().Version(buffer.data(), KDI_TEXT_SIZE);
    if (result < 0) {
        RaiseResult(result, Magnitude(result), "");
    }
    return TextOf(buffer.data(), result, KDI_TEXT_SIZE);
}

std::string LibraryError() {
    std::array<char, KDI_TEXT_SIZE> buffer{};
    const int32_t result = Library().LastError(buffer.data(), KDI_TEXT_SIZE);
    return TextOf(buffer.data(), result, KDI_TEXT_SIZE);
}

void ReProgram(const std::string& path) {
    const int32_t result = Library().Reprogram(path.c_str());
    if (result < 0) {
        ErrTrap::Raise(Magnitude(result) + 256, "ZOL_ReProgram");
    }
}

int32_t ProgState() {
    const int32_t result = Library().ProgState();
    if (result < 0) {
        ErrTrap::Raise(Magnitude(result) + 256, "ZOL_ProgStatus");
    }
    return result;
}

// ---- Commands ----

std::string DeviceName() {
    return Command(0);
}

int32_t DeviceModel() {
    Bytes reply;
    try {
        reply = Command(0, Bytes(1, '\x01'));
    } catch (const ZolError& e) {
        if (e.Code() == err::ErrZOL_DataTooLong) {
            return 1; // firmware that does not take the option byte
        }
        throw;
    }
    return ByteAt(reply, 0) + 256 * ByteAt(reply, 1);
}

std::string HardwareRev() {
    return Command(1);
}
std::string FirmwareRev() {
    return DropTrailingNul(Command(2, Bytes(1, '\x01')));
}
std::string SerialNumber() {
    return DropTrailingNul(Command(3, Bytes(1, '\x01')));
}
Bytes UniqueId() {
    return Command(4);
}

namespace {

Bytes CheckedReply(uint8_t code, size_t expected, const std::string& title) {
    Bytes reply = Command(code);
    if (reply.size() != expected) {
        EndOnBadReply(title);
    }
    return reply;
}

void CheckIndex(int32_t index) {
    if (index < 1 || index > 3) {
        throw RuntimeFault(rt::InvalidCall, "Invalid procedure call or argument");
    }
}

int32_t ByteValue(uint8_t code, int32_t index, const std::string& title) {
    const Bytes reply = CheckedReply(code, 3, title);
    CheckIndex(index);
    return ByteAt(reply, static_cast<size_t>(index - 1));
}

int32_t TimeValue(uint8_t code, int32_t index, const std::string& title) {
    const Bytes reply = CheckedReply(code, 6, title);
    CheckIndex(index);
    const auto at = static_cast<size_t>(index - 1) * 2;
    return ByteAt(reply, at) + 256 * (ByteAt(reply, at + 1) & 0x7F);
}

} // namespace

int32_t GetFrameRate(int32_t index) {
    return ByteValue(17, index, "Get Frame Rate");
}
void SetFrameRate(int32_t value) {
    Command(18, Bytes(1, CheckedByte(value)));
}
int32_t GetMarkTime(int32_t index) {
    return TimeValue(19, index, "Get Mark Time");
}
void SetMarkTime(int32_t value) {
    Command(20, Word16LE(value));
}
int32_t GetBreakTime(int32_t index) {
    return TimeValue(21, index, "Get Break Time");
}
void SetBreakTime(int32_t value) {
    Command(22, Word16LE(value));
}
int32_t GetDelayTime(int32_t index) {
    return ByteValue(23, index, "Get Delay Time");
}
void SetDelayTime(int32_t value) {
    Command(24, Bytes(1, CheckedByte(value)));
}

void SendBlock(const Bytes& data) {
    Command(34, Bytes(1, '\0') + data);
}
void StopOutput() {
    Command(35);
}

void SendChannel(int32_t slot, int32_t level) {
    Command(37, Bytes{ByteChar(slot), ByteChar(slot >> 8), CheckedByte(level)});
}

Bytes ReadInput() {
    return Command(40, Bytes(1, '\x01'));
}

void DiscoveryMute(const Bytes& ident) {
    if (ident.size() != 6) {
        ui().MsgBox("Ident Length = " + std::to_string(ident.size()), vb::OKOnly,
                    std::string("Invalid Identity"));
        return;
    }
    Command(49, ident);
}

void DiscoveryStart() {
    Command(51);
}

int32_t DiscoveryStatus() {
    const Bytes reply = Command(52);
    if (reply.size() < 2) {
        return 0;
    }
    return ByteAt(reply, 0) + 256 * ByteAt(reply, 1);
}

Bytes DiscoveryItem(int32_t index) {
    return Command(53, Bytes(1, CheckedByte(index)));
}

namespace {

// token, sub device (high byte first), PID (low 16 bits, high byte first), parameter data
Bytes TransactionHeader(uint8_t token, uint16_t subDevice, int32_t pid, const Bytes& data) {
    Bytes request;
    request.reserve(5 + data.size());
    request += static_cast<char>(token);
    request += ByteChar(subDevice >> 8);
    request += ByteChar(subDevice);
    request += ByteChar(pid >> 8);
    request += ByteChar(pid);
    request += data;
    return request;
}

} // namespace

Bytes RdmGet(uint8_t token, uint16_t subDevice, int32_t pid, const Bytes& data) {
    return Command(56, TransactionHeader(token, subDevice, pid, data));
}

Bytes RdmSet(uint8_t token, uint16_t subDevice, int32_t pid, const Bytes& data) {
    return Command(57, TransactionHeader(token, subDevice, pid, data));
}

Bytes RdmQueued(uint8_t token, uint8_t statusType) {
    Bytes request(1, static_cast<char>(token));
    if (statusType != 0) {
        request += static_cast<char>(statusType);
    }
    Bytes reply = Command(58, request);
    state().queueLatch = state().lastQueued;
    return reply;
}

bool QueuePending() {
    return state().queueLatch;
}

void SetBroadcastMask(int32_t mask) {
    if (mask >= 0x10000) {
        ui().MsgBox("Broadcast Mask value is out of range", vb::Critical);
        return;
    }
    if (mask < 0) {
        throw RuntimeFault(rt::InvalidCall, "Invalid procedure call or argument");
    }
    Command(61, Bytes{ByteChar(mask >> 8), ByteChar(mask)});
}

void ApplyDerogation(const Bytes& code) {
    Command(72, code);
}

int32_t FirmwareBuild() {
    // Numbered errors of the exchange go to the caller's handler. A run-time fault on the way is
    // shown here as "(number) text" and gives 0.
    Bytes reply;
    bool faulted = false;
    try {
        reply = Command(79);
    } catch (const ZolError&) {
        throw;
    } catch (const std::exception&) {
        ErrTrap::Capture(std::current_exception());
        faulted = true;
    }
    if (faulted) {
        ui().MsgBox("(" + std::to_string(ErrTrap::LastCode()) + ") " + ErrTrap::LastText());
        return 0;
    }
    if (reply.size() != 4) {
        ui().MsgBox("Unexpected response form device", vb::OKOnly, std::string("Firmware Build N°"));
        return 0;
    }
    // Least significant byte first. A top byte of 0x80 or more overflows a 32-bit value: the
    // result is then 0, with no message.
    if (ByteAt(reply, 3) >= 0x80) {
        return 0;
    }
    return ByteAt(reply, 0) + (ByteAt(reply, 1) << 8) + (ByteAt(reply, 2) << 16) + (ByteAt(reply, 3) << 24);
}

Bytes ReadMemory(int32_t address, int32_t length) {
    return Command(224, Word16LE(address) + Word16LE(length));
}

Bytes ReadRegisters(int32_t address, int32_t length) {
    return Command(226, Word16LE(address) + Word16LE(length));
}

} // namespace zol::Client
