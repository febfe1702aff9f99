#include "sim/device/Simulator.h"

#include "sim/device/FirmwareImage.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace zol::sim {
namespace {

constexpr int32_t kBufferSize = 528;
constexpr const char* kVersion = "ZOL-SIM KDI 1.0.3 (simulated interface)";

std::string Hex(const uint8_t* bytes, size_t size) {
    static const char* digits = "0123456789ABCDEF";
    std::string out;
    for (size_t i = 0; i < size; ++i) {
        if (i > 0) {
            out += ' ';
        }
        out += digits[bytes[i] >> 4];
        out += digits[bytes[i] & 0x0F];
    }
    return out;
}

std::string Hex(const std::string& bytes) {
    return Hex(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
}

std::string Quote(const std::string& text) {
    return "\"" + text + "\"";
}

// Copies a text into a caller's buffer with a closing NUL; the result is the length copied.
int32_t CopyOut(const std::string& text, char* buffer, int32_t size) {
    const auto n = static_cast<int32_t>(std::min<size_t>(text.size(), static_cast<size_t>(size - 1)));
    std::memcpy(buffer, text.data(), static_cast<size_t>(n));
    buffer[n] = '\0';
    return n;
}

std::vector<std::string> Words(const std::string& text) {
    std::istringstream in(text);
    std::vector<std::string> words;
    std::string w;
    while (in >> w) {
        words.push_back(w);
    }
    return words;
}

bool ToInt(const std::string& text, long long& value) {
    if (text.empty()) {
        return false;
    }
    char* end = nullptr;
    errno = 0;
    value = std::strtoll(text.c_str(), &end, 0);
    return errno == 0 && end != nullptr && *end == '\0';
}

bool ToNumber(const std::string& text, double& value) {
    if (text.empty()) {
        return false;
    }
    char* end = nullptr;
    value = std::strtod(text.c_str(), &end);
    return end != nullptr && *end == '\0' && std::isfinite(value);
}

const char* ModeName(LineMode mode) {
    switch (mode) {
    case LineMode::Transmit:
        return "transmit";
    case LineMode::Receive:
        return "receive";
    case LineMode::Idle:
        break;
    }
    return "idle";
}

const char* SourceName(InputSource source) {
    switch (source) {
    case InputSource::Generated:
        return "generated";
    case InputSource::Alternate:
        return "alternate";
    case InputSource::Faulty:
        return "faulty";
    case InputSource::Lost:
        return "lost";
    case InputSource::Loopback:
        return "loopback";
    case InputSource::None:
        break;
    }
    return "none";
}

const char* kHelp = "reload | rig <file>|default | reset | trace <file>|off | clock manual|real [speed] | "
                    "advance <seconds> | time | ports | fail <function> <code> [count] | fail clear | "
                    "[port <n>] unplug | replug | silent [count] | respond | busy <count> | state | "
                    "counters | frame | slot <n> | frames | derogation | input <source> [arg] | "
                    "factory on|off | upload-time <upload> <configure> | upload-fail <percent> <error>|off | "
                    "line ... | responder ...";

} // namespace

bool Trace::Open(const std::string& path) {
    Close();
    file_ = std::fopen(path.c_str(), "a");
    return file_ != nullptr;
}

void Trace::Close() {
    if (file_ != nullptr) {
        std::fclose(file_);
        file_ = nullptr;
    }
}

void Trace::Line(const std::string& text) {
    if (file_ != nullptr) {
        std::fputs(text.c_str(), file_);
        std::fputc('\n', file_);
        std::fflush(file_);
    }
}

Simulator::Simulator() = default;
Simulator::~Simulator() = default;

bool Simulator::LineAvailable() {
#if defined(ZOL_SIM_HAVE_LINE)
    return true;
#else
    return false;
#endif
}

void Simulator::EnsureLoaded() {
    if (!loaded_) {
        LoadFromEnvironment();
    }
}

void Simulator::LoadFromEnvironment() {
    const char* trace = std::getenv("ZOL_SIM_TRACE");
    if (trace != nullptr && *trace != '\0') {
        trace_.Open(trace);
    } else {
        trace_.Close();
    }
    const char* rig = std::getenv("ZOL_SIM_RIG");
    LoadRig(rig != nullptr ? rig : "");
}

void Simulator::LoadRig(const std::string& path) {
    loaded_ = true;
    rigPath_ = path;
    ports_.clear();
    unplugged_.clear();
    silent_.clear();
    busy_.clear();
    failures_.clear();
    open_ = 0;
    rigError_.clear();
    try {
        rig_ = path.empty() ? ParseRig(DefaultRigText(), kDefaultRigLabel) : LoadRigFile(path);
        for (size_t i = 0; i < rig_.ports.size(); ++i) {
            ports_.push_back(std::make_unique<DevicePort>(rig_.ports[i], static_cast<int>(i + 1)));
        }
        lastError_ = "No error";
    } catch (const std::exception& e) {
        // A rig that cannot be used leaves a library without ports that says why.
        ports_.clear();
        rig_ = Rig{};
        rig_.file = path.empty() ? kDefaultRigLabel : path;
        rigError_ = std::string("Rig refused: ") + e.what();
        lastError_ = rigError_;
    }
    WireLoopbacks();
    unplugged_.assign(ports_.size(), false);
    silent_.assign(ports_.size(), 0);
    busy_.assign(ports_.size(), 0);
    manual_ = false;
    speed_ = rig_.timeScale;
    wallBase_ = std::chrono::steady_clock::now();
    simBase_ = 0;
    now_ = 0;
}

void Simulator::WireLoopbacks() {
    for (size_t i = 0; i < ports_.size(); ++i) {
        const int from = rig_.ports[i].input.fromPort;
        const bool wired = from >= 1 && static_cast<size_t>(from) <= ports_.size();
        ports_[i]->SetLoopSource(wired ? ports_[static_cast<size_t>(from) - 1].get() : nullptr);
    }
}

double Simulator::WallSeconds() const {
    const auto elapsed = std::chrono::steady_clock::now() - wallBase_;
    return simBase_ + std::chrono::duration<double>(elapsed).count() * speed_;
}

void Simulator::Tick() {
    EnsureLoaded();
    if (!manual_) {
        AdvanceBy(WallSeconds() - now_);
    }
}

void Simulator::AdvanceBy(double dt) {
    if (dt <= 0) {
        return;
    }
    now_ += dt;
    for (auto& port : ports_) {
        port->Advance(dt, now_);
    }
}

bool Simulator::Fault(const std::string& function, int32_t& code) {
    auto it = failures_.find(function);
    if (it == failures_.end()) {
        return false;
    }
    code = it->second.first;
    if (--it->second.second <= 0) {
        failures_.erase(it);
    }
    lastError_ = "Injected failure of " + function + " (" + std::to_string(code) + ")";
    return true;
}

int32_t Simulator::Fail(int32_t code, const std::string& why) {
    lastError_ = why;
    return code;
}

std::string Simulator::NoSuchPort(int32_t index) const {
    // With a refused rig the reason for having no ports is what the host needs to see.
    if (ports_.empty() && !rigError_.empty()) {
        return rigError_;
    }
    const auto count = ports_.size();
    return "Port " + std::to_string(index) + " does not exist: the rig has " + std::to_string(count) +
           " port" + (count == 1 ? "" : "s");
}

DevicePort* Simulator::Open() const {
    return open_ > 0 ? ports_[static_cast<size_t>(open_) - 1].get() : nullptr;
}

void Simulator::TraceLine(const std::string& text) {
    trace_.Line(text);
}

int32_t Simulator::Command(uint8_t* buffer, int32_t* length) {
    Lock lock(mutex_);
    Tick();
    std::string request;
    std::string response;
    int32_t rc = 0;
    const bool argsOk = buffer != nullptr && length != nullptr && *length >= 0 && *length <= kBufferSize;
    if (argsOk) {
        request.assign(reinterpret_cast<const char*>(buffer), static_cast<size_t>(*length));
    }
    DevicePort* port = Open();
    const size_t index = static_cast<size_t>(open_ > 0 ? open_ - 1 : 0);
    if (!argsOk) {
        rc = Fail(result::kBadCall, "KDI_Command: the buffer or the length is not valid");
    } else if (port == nullptr) {
        rc = Fail(result::kPortState, "KDI_Command: no port is open");
    } else if (unplugged_[index]) {
        rc = Fail(result::kDeviceMissing, "The local device has been disconnected");
    } else if (silent_[index] != 0) {
        if (silent_[index] > 0) {
            --silent_[index];
        }
        rc = Fail(result::kNotResponding, "The local device is not responding");
    } else if (Fault("command", rc)) {
        // the injected code stands
    } else if (busy_[index] > 0) {
        --busy_[index];
        rc = 8;
    } else if (request.empty()) {
        rc = 4; // no command code: a frame of the wrong format
    } else {
        rc = port->Command(static_cast<uint8_t>(request[0]), request.substr(1), response, now_);
        if (response.size() > static_cast<size_t>(kBufferSize)) {
            response.resize(kBufferSize);
        }
    }
    if (argsOk) {
        std::memcpy(buffer, response.data(), response.size());
        *length = static_cast<int32_t>(response.size());
    }
    if (trace_.On()) {
        TraceLine("KDI_Command " + Hex(request) + " -> " + std::to_string(rc) + " |" +
                  (response.empty() ? "" : " " + Hex(response)));
    }
    return rc;
}

int32_t Simulator::OpenPort(int32_t index) {
    Lock lock(mutex_);
    Tick();
    int32_t rc = 0;
    const auto count = static_cast<int32_t>(ports_.size());
    if (Fault("open", rc)) {
    } else if (index < 1 || index > count) {
        rc = Fail(result::kBadCall, NoSuchPort(index));
    } else if (open_ != 0) {
        rc = Fail(result::kPortState, "Port " + std::to_string(open_) + " is already open");
    } else if (unplugged_[static_cast<size_t>(index) - 1]) {
        // Nothing answers on the USB side: a connection failure, not a device lost mid-session.
        rc = Fail(result::kConnection,
                  "The local device of port " + std::to_string(index) + " is not connected");
    } else if (silent_[static_cast<size_t>(index) - 1] != 0) {
        rc = Fail(result::kNotResponding, "The local device is not responding");
    } else {
        open_ = index;
    }
    if (trace_.On()) {
        TraceLine("KDI_OpenPort(" + std::to_string(index) + ") -> " + std::to_string(rc));
    }
    return rc;
}

int32_t Simulator::FreePort() {
    Lock lock(mutex_);
    Tick();
    int32_t rc = 0;
    if (Fault("free", rc)) {
    } else if (open_ == 0) {
        rc = Fail(result::kPortState, "KDI_FreePort: no port is open");
    } else {
        // The handle goes in any case; a vanished device cannot confirm it.
        if (unplugged_[static_cast<size_t>(open_) - 1]) {
            rc = Fail(result::kDeviceMissing, "The local device has been disconnected");
        }
        open_ = 0;
    }
    if (trace_.On()) {
        TraceLine("KDI_FreePort() -> " + std::to_string(rc));
    }
    return rc;
}

int32_t Simulator::PortCount() {
    Lock lock(mutex_);
    Tick();
    int32_t rc = 0;
    if (!Fault("count", rc)) {
        rc = static_cast<int32_t>(ports_.size());
    }
    if (trace_.On()) {
        TraceLine("KDI_PortCount() -> " + std::to_string(rc));
    }
    return rc;
}

int32_t Simulator::PortName(int32_t index, char* buffer, int32_t size) {
    Lock lock(mutex_);
    Tick();
    int32_t rc = 0;
    std::string name;
    if (Fault("name", rc)) {
    } else if (buffer == nullptr || size <= 0) {
        rc = Fail(result::kBadCall, "KDI_PortName: no buffer");
    } else if (index < 1 || index > static_cast<int32_t>(ports_.size())) {
        rc = Fail(result::kBadCall, NoSuchPort(index));
    } else {
        name = ports_[static_cast<size_t>(index) - 1]->Spec().name;
        rc = CopyOut(name, buffer, size);
        name.resize(static_cast<size_t>(rc));
    }
    if (trace_.On()) {
        TraceLine("KDI_PortName(" + std::to_string(index) + ") -> " + std::to_string(rc) +
                  (rc >= 0 ? " " + Quote(name) : ""));
    }
    return rc;
}

int32_t Simulator::LastError(char* buffer, int32_t size) {
    Lock lock(mutex_);
    EnsureLoaded();
    int32_t rc = result::kBadCall;
    if (buffer != nullptr && size > 0) {
        rc = CopyOut(lastError_, buffer, size);
    }
    if (trace_.On()) {
        TraceLine("KDI_LastError() -> " + std::to_string(rc) +
                  (rc >= 0 ? " " + Quote(lastError_.substr(0, static_cast<size_t>(rc))) : ""));
    }
    return rc;
}

int32_t Simulator::Version(char* buffer, int32_t size) {
    Lock lock(mutex_);
    Tick();
    int32_t rc = 0;
    const std::string text =
        std::string(kVersion) + ", rig " + Quote(rig_.name.empty() ? rig_.file : rig_.name);
    if (Fault("version", rc)) {
    } else if (buffer == nullptr || size <= 0) {
        rc = Fail(result::kBadCall, "KDI_Version: no buffer");
    } else {
        rc = CopyOut(text, buffer, size);
    }
    if (trace_.On()) {
        TraceLine("KDI_Version() -> " + std::to_string(rc) +
                  (rc >= 0 ? " " + Quote(text.substr(0, static_cast<size_t>(rc))) : ""));
    }
    return rc;
}

int32_t Simulator::Reprogram(const char* path) {
    Lock lock(mutex_);
    Tick();
    namespace fs = std::filesystem;
    int32_t rc = 0;
    DevicePort* port = Open();
    const size_t index = static_cast<size_t>(open_ > 0 ? open_ - 1 : 0);
    if (Fault("reprogram", rc)) {
    } else if (path == nullptr) {
        rc = Fail(result::kBadCall, "KDI_Reprogram: no path");
    } else if (port == nullptr) {
        rc = Fail(result::kPortState, "KDI_Reprogram: no port is open");
    } else if (unplugged_[index]) {
        rc = Fail(result::kDeviceMissing, "The local device has been disconnected");
    } else if (silent_[index] != 0) {
        rc = Fail(result::kNotResponding, "The local device is not responding");
    } else if (port->Uploading()) {
        rc = Fail(result::kPortState, "KDI_Reprogram: a transfer is already running");
    } else {
        const fs::path file(path);
        std::error_code ec;
        const fs::path folder = file.parent_path();
        if (!folder.empty() && !fs::is_directory(folder, ec)) {
            rc = Fail(result::kFolderNotFound, "Folder not found: " + folder.string());
        } else if (!fs::is_regular_file(file, ec)) {
            rc = Fail(result::kFileNotFound, "File not found: " + file.string());
        } else {
            const auto size = fs::file_size(file, ec);
            std::string bytes;
            if (!ec && size <= kImageMaxSize) {
                std::ifstream in(file, std::ios::binary);
                std::ostringstream text;
                text << in.rdbuf();
                bytes = text.str();
            }
            std::string why = "the file is too large";
            const auto image = bytes.empty() ? std::nullopt : DecodeImage(bytes, &why);
            if (!image) {
                rc = Fail(result::kImageCorrupt,
                          "Image " + file.string() + " failed its integrity check: " + why);
            } else if (image->model != port->Spec().model) {
                rc = Fail(result::kImageIncompatible,
                          "Image " + file.string() + " is for model " + std::to_string(image->model) +
                              ", the device is model " + std::to_string(port->Spec().model));
            } else {
                port->StartUpload(*image, now_);
            }
        }
    }
    if (trace_.On()) {
        TraceLine("KDI_Reprogram(" + Quote(path != nullptr ? path : "(null)") + ") -> " + std::to_string(rc));
    }
    return rc;
}

int32_t Simulator::ProgState() {
    Lock lock(mutex_);
    Tick();
    int32_t rc = 0;
    DevicePort* port = Open();
    const size_t index = static_cast<size_t>(open_ > 0 ? open_ - 1 : 0);
    if (Fault("progstate", rc)) {
    } else if (port == nullptr) {
        rc = Fail(result::kPortState, "KDI_ProgState: no port is open");
    } else if (unplugged_[index]) {
        rc = Fail(result::kDeviceMissing, "The local device has been disconnected");
    } else if (silent_[index] != 0) {
        rc = Fail(result::kNotResponding, "The local device is not responding");
    } else {
        rc = port->UploadState(now_);
    }
    if (trace_.On()) {
        TraceLine("KDI_ProgState() -> " + std::to_string(rc));
    }
    return rc;
}

int32_t Simulator::Control(const char* command, char* reply, int32_t size) {
    Lock lock(mutex_);
    std::string text;
    int32_t rc = -1;
    if (command == nullptr) {
        text = "no command";
    } else {
        rc = ControlText(command, text);
    }
    if (reply != nullptr && size > 0) {
        CopyOut(text, reply, size);
    }
    if (trace_.On()) {
        TraceLine("SIM_Control(" + Quote(command != nullptr ? command : "(null)") + ") -> " +
                  std::to_string(rc) + " " + Quote(text.size() > 200 ? text.substr(0, 200) + "..." : text));
    }
    return rc < 0 ? rc : static_cast<int32_t>(text.size());
}

int32_t Simulator::ControlText(const std::string& command, std::string& reply) {
    auto words = Words(command);
    if (words.empty()) {
        reply = "no command";
        return -1;
    }
    const std::string& verb = words[0];
    // Commands of the library as a whole.
    if (verb == "reload" || (verb == "rig" && words.size() == 2)) {
        if (verb == "reload") {
            LoadFromEnvironment();
        } else {
            LoadRig(words[1] == "default" ? "" : words[1]);
        }
        if (!rigError_.empty()) {
            reply = rigError_;
            return -1;
        }
        reply = "rig " + Quote(rig_.file) + " with " + std::to_string(ports_.size()) + " ports";
        return 0;
    }
    if (verb == "help") {
        reply = kHelp;
        return 0;
    }
    if (verb == "trace" && words.size() == 2) {
        if (words[1] == "off") {
            trace_.Close();
            reply = "trace off";
            return 0;
        }
        if (!trace_.Open(words[1])) {
            reply = "cannot write " + words[1];
            return -1;
        }
        reply = "trace " + words[1];
        return 0;
    }
    Tick();
    if (verb == "reset" && words.size() == 1) {
        open_ = 0;
        failures_.clear();
        for (size_t i = 0; i < ports_.size(); ++i) {
            unplugged_[i] = false;
            silent_[i] = 0;
            busy_[i] = 0;
            ports_[i]->ResetToRig();
        }
        WireLoopbacks();
        lastError_ = "No error";
        reply = "reset";
        return 0;
    }
    if (verb == "clock" && words.size() >= 2) {
        double speed = rig_.timeScale;
        if (words[1] == "manual" && words.size() == 2) {
            manual_ = true;
            simBase_ = now_;
            reply = "clock manual";
            return 0;
        }
        if (words[1] == "real" &&
            (words.size() == 2 || (words.size() == 3 && ToNumber(words[2], speed) && speed > 0))) {
            manual_ = false;
            speed_ = speed;
            simBase_ = now_;
            wallBase_ = std::chrono::steady_clock::now();
            reply = "clock real";
            return 0;
        }
    }
    if (verb == "advance" && words.size() == 2) {
        double seconds = 0;
        if (ToNumber(words[1], seconds) && seconds >= 0 && seconds <= 86400) {
            if (!manual_) {
                simBase_ += seconds;
            }
            AdvanceBy(seconds);
            reply = std::to_string(now_);
            return 0;
        }
    }
    if (verb == "time" && words.size() == 1) {
        reply = std::to_string(now_);
        return 0;
    }
    if (verb == "ports" && words.size() == 1) {
        for (const auto& port : ports_) {
            reply += (reply.empty() ? "" : "\n") + std::to_string(port->Number()) + " " + port->Spec().name;
        }
        return 0;
    }
    if (verb == "fail") {
        static const char* kFunctions[] = {"command", "open",    "free",      "count",
                                           "name",    "version", "reprogram", "progstate"};
        long long code = 0;
        long long count = 1;
        if (words.size() == 2 && words[1] == "clear") {
            failures_.clear();
            reply = "no failures";
            return 0;
        }
        if ((words.size() == 3 || words.size() == 4) &&
            std::find(std::begin(kFunctions), std::end(kFunctions), words[1]) != std::end(kFunctions) &&
            ToInt(words[2], code) && code < 0 && code >= -255 &&
            (words.size() == 3 || (ToInt(words[3], count) && count > 0 && count < 1000000))) {
            failures_[words[1]] = {static_cast<int32_t>(code), static_cast<int>(count)};
            reply = words[1] + " fails with " + words[2];
            return 0;
        }
        reply =
            "usage: fail command|open|free|count|name|version|reprogram|progstate <negative code> [count]";
        return -1;
    }

    // Commands of one port: "port <n>" chooses it, otherwise the open port, otherwise port 1.
    size_t first = 0;
    int number = open_ > 0 ? open_ : 1;
    if (verb == "port") {
        long long n = 0;
        if (words.size() < 3 || !ToInt(words[1], n) || n < 1 || n > static_cast<long long>(ports_.size())) {
            reply = "usage: port <n> <command>, n from 1 to " + std::to_string(ports_.size());
            return -1;
        }
        number = static_cast<int>(n);
        first = 2;
    }
    if (ports_.empty()) {
        reply = "the rig has no ports";
        return -1;
    }
    words.erase(words.begin(), words.begin() + static_cast<std::ptrdiff_t>(first));
    // The rest of the text from the port command on, for the line.
    std::string rest = command;
    for (size_t skip = 0; skip < first; ++skip) {
        rest = rest.substr(rest.find_first_not_of(" \t"));
        rest = rest.substr(std::min(rest.size(), rest.find_first_of(" \t")));
    }
    const auto start = rest.find_first_not_of(" \t");
    rest = start == std::string::npos ? std::string() : rest.substr(start);
    return PortControl(*ports_[static_cast<size_t>(number) - 1], words, rest, reply);
}

int32_t Simulator::PortControl(DevicePort& port, const std::vector<std::string>& words,
                               const std::string& rest, std::string& reply) {
    const size_t i = static_cast<size_t>(port.Number()) - 1;
    const std::string& verb = words[0];
    const size_t n = words.size();
    long long a = 0;
    long long b = 0;
    double x = 0;
    double y = 0;
    if (verb == "line" || verb == "responder") {
        if (!port.HasLine()) {
            reply = "the RDM line is not part of this build";
            return -1;
        }
        if (!port.LineControl(rest, reply)) {
            reply = "unknown command: " + rest + " (try help)";
            return -1;
        }
        // The line answers a malformed command with a reply that starts "error:".
        return reply.rfind("error:", 0) == 0 ? -1 : 0;
    }
    if (verb == "unplug" && n == 1) {
        unplugged_[i] = true;
        port.AbortUpload(2);
        reply = "port " + std::to_string(port.Number()) + " unplugged";
        return 0;
    }
    if (verb == "replug" && n == 1) {
        if (unplugged_[i]) {
            unplugged_[i] = false;
            port.PowerUp();
        }
        reply = "port " + std::to_string(port.Number()) + " plugged in";
        return 0;
    }
    if (verb == "silent" && (n == 1 || (n == 2 && ToInt(words[1], a) && a > 0 && a < 1000000))) {
        silent_[i] = n == 1 ? -1 : static_cast<int>(a);
        reply = "port " + std::to_string(port.Number()) + " not responding";
        return 0;
    }
    if (verb == "respond" && n == 1) {
        silent_[i] = 0;
        reply = "port " + std::to_string(port.Number()) + " responding";
        return 0;
    }
    if (verb == "busy" && n == 2 && ToInt(words[1], a) && a >= 0 && a < 1000000) {
        busy_[i] = static_cast<int>(a);
        reply = "busy for " + words[1] + " commands";
        return 0;
    }
    if (verb == "state" && n == 1) {
        std::ostringstream s;
        const auto& d = port.Derogation();
        s << "port=" << port.Number() << " open=" << (open_ == port.Number() ? "yes" : "no")
          << " plugged=" << (unplugged_[i] ? "no" : "yes") << " mode=" << ModeName(port.Mode())
          << " rate=" << port.FrameRate() << " break=" << port.BreakUs() << " mark=" << port.MarkUs()
          << " rx_timeout=" << port.RxTimeoutMs() << " model=" << port.Spec().model
          << " firmware=" << port.Firmware() << " build=" << port.Build()
          << " input=" << SourceName(port.Input().source)
          << " factory=" << (port.FactoryMode() ? "yes" : "no")
          << " derogation=" << Hex(d.data(), d.size()).erase(2, 1).erase(4, 1)
          << " upload=" << port.UploadState(now_) << " busy=" << busy_[i] << " silent=" << silent_[i];
        reply = s.str();
        return 0;
    }
    if (verb == "counters" && n == 1) {
        reply = "frames_sent=" + std::to_string(port.FramesSent()) +
                " frames_received=" + std::to_string(port.FramesReceived()) +
                " commands=" + std::to_string(port.Commands()) +
                " input_reads=" + std::to_string(port.InputReads());
        return 0;
    }
    if (verb == "frames" && n == 1) {
        reply = std::to_string(port.FramesSent());
        return 0;
    }
    if (verb == "frame" && n == 1) {
        const uint8_t sc = port.StartCode();
        reply = Hex(&sc, 1) + " " + Hex(port.Frame().data(), port.Frame().size());
        return 0;
    }
    if (verb == "slot" && n == 2 && ToInt(words[1], a) && a >= 1 && a <= kSlots) {
        reply = std::to_string(port.Frame()[static_cast<size_t>(a) - 1]);
        return 0;
    }
    if (verb == "derogation" && n == 1) {
        reply = Hex(port.Derogation().data(), port.Derogation().size());
        return 0;
    }
    if (verb == "factory" && n == 2 && (words[1] == "on" || words[1] == "off")) {
        port.SetFactoryMode(words[1] == "on");
        reply = "factory " + words[1];
        return 0;
    }
    if (verb == "upload-time" && n == 3 && ToNumber(words[1], x) && ToNumber(words[2], y) && x > 0 && y > 0) {
        port.SetUploadTimes(x, y);
        reply = "upload " + words[1] + " s, configure " + words[2] + " s";
        return 0;
    }
    if (verb == "upload-fail") {
        if (n == 2 && words[1] == "off") {
            port.ArmUploadFailure(0, 0);
            reply = "upload-fail off";
            return 0;
        }
        if (n == 3 && ToInt(words[1], a) && ToInt(words[2], b) && a >= 1 && a <= 99 && b >= 1 && b <= 155) {
            port.ArmUploadFailure(static_cast<int>(a), static_cast<int>(b));
            reply = "the next transfer fails at " + words[1] + " % with error " + words[2];
            return 0;
        }
        reply = "usage: upload-fail <percent 1-99> <error 1-155> | off";
        return -1;
    }
    if (verb == "input" && n >= 2) {
        InputSpec input = port.Input();
        const std::string& source = words[1];
        bool ok = n == 2;
        if (source == "none") {
            input.source = InputSource::None;
        } else if (source == "generated") {
            input.source = InputSource::Generated;
        } else if (source == "faulty") {
            input.source = InputSource::Faulty;
        } else if (source == "lost") {
            input.source = InputSource::Lost;
        } else if (source == "alternate") {
            input.source = InputSource::Alternate;
            if (n == 3) {
                ok = ToInt(words[2], a) && a >= 0 && a <= 255;
                input.startCode = static_cast<int>(a);
            }
        } else if (source == "loopback") {
            input.source = InputSource::Loopback;
            ok = n == 3 && ToInt(words[2], a) && a >= 1 && a <= static_cast<long long>(ports_.size()) &&
                 a != port.Number();
            if (ok) {
                input.fromPort = static_cast<int>(a);
                port.SetLoopSource(ports_[static_cast<size_t>(a) - 1].get());
            }
        } else {
            ok = false;
        }
        if (ok) {
            port.SetInput(input);
            reply = std::string("input ") + SourceName(input.source);
            return 0;
        }
        reply = "usage: input none|generated|faulty|lost|alternate [start code]|loopback <port>";
        return -1;
    }
    reply = "unknown command: " + rest + " (try help)";
    return -1;
}

} // namespace zol::sim
