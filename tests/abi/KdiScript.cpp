// The scripted device library behind tests of the built plug-in: see kdi_script.h.
#include "device_link/kdi.h"
#include "tests/abi/kdi_script.h"

#include <algorithm>
#include <cstring>
#include <deque>
#include <optional>
#include <string>
#include <vector>

#define KDI_SCRIPT_EXPORT extern "C" __attribute__((visibility("default")))

namespace {

using Bytes = std::string;

struct Step {
    Bytes request;
    int32_t status;
    Bytes response;
};

struct Call {
    std::string function;
    Bytes data;
    int32_t argument = 0;
    int32_t result = 0;
};

struct Script {
    std::vector<std::string> ports{"Script Port 1", "Script Port 2"};
    int32_t openResult = 0;
    std::deque<Step> steps;
    std::optional<Step> fallback;
    std::vector<Call> calls;
    int32_t mismatches = 0;
};

Script& script() {
    static Script instance;
    return instance;
}

Bytes BytesOf(const uint8_t* data, int32_t length) {
    if (data == nullptr || length <= 0) {
        return {};
    }
    return Bytes(reinterpret_cast<const char*>(data), static_cast<size_t>(length));
}

int32_t CopyText(const std::string& text, char* buffer, int32_t size) {
    if (buffer == nullptr || size <= 0) {
        return -12;
    }
    const auto n = static_cast<int32_t>(std::min<size_t>(text.size(), static_cast<size_t>(size - 1)));
    std::memcpy(buffer, text.data(), static_cast<size_t>(n));
    buffer[n] = '\0';
    return n;
}

int32_t Record(const std::string& function, int32_t result, int32_t argument = 0, const Bytes& data = {}) {
    script().calls.push_back({function, data, argument, result});
    return result;
}

} // namespace

KDI_SCRIPT_EXPORT void KdiScript_Reset(void) {
    script() = Script{};
}

KDI_SCRIPT_EXPORT void KdiScript_SetPorts(const char* names) {
    auto& ports = script().ports;
    ports.clear();
    std::string text = names != nullptr ? names : "";
    size_t start = 0;
    while (!text.empty() && start <= text.size()) {
        const size_t end = text.find('\n', start);
        ports.push_back(text.substr(start, end == std::string::npos ? std::string::npos : end - start));
        if (end == std::string::npos) {
            break;
        }
        start = end + 1;
    }
}

KDI_SCRIPT_EXPORT void KdiScript_SetOpenResult(int32_t result) {
    script().openResult = result;
}

KDI_SCRIPT_EXPORT void KdiScript_Expect(const uint8_t* request, int32_t requestLength, int32_t status,
                                        const uint8_t* response, int32_t responseLength) {
    script().steps.push_back({BytesOf(request, requestLength), status, BytesOf(response, responseLength)});
}

KDI_SCRIPT_EXPORT void KdiScript_SetFallback(int32_t status, const uint8_t* response,
                                             int32_t responseLength) {
    script().fallback = Step{{}, status, BytesOf(response, responseLength)};
}

KDI_SCRIPT_EXPORT void KdiScript_ClearFallback(void) {
    script().fallback.reset();
}

KDI_SCRIPT_EXPORT int32_t KdiScript_Pending(void) {
    return static_cast<int32_t>(script().steps.size());
}

KDI_SCRIPT_EXPORT int32_t KdiScript_Mismatches(void) {
    return script().mismatches;
}

KDI_SCRIPT_EXPORT int32_t KdiScript_CallCount(void) {
    return static_cast<int32_t>(script().calls.size());
}

KDI_SCRIPT_EXPORT int32_t KdiScript_Call(int32_t index, char* function, int32_t functionSize, uint8_t* data,
                                         int32_t* dataLength, int32_t* argument, int32_t* result) {
    const auto& calls = script().calls;
    if (index < 0 || static_cast<size_t>(index) >= calls.size() || dataLength == nullptr ||
        argument == nullptr || result == nullptr) {
        return -1;
    }
    const Call& call = calls[static_cast<size_t>(index)];
    if (CopyText(call.function, function, functionSize) < 0) {
        return -1;
    }
    const auto n = std::min<size_t>(call.data.size(), static_cast<size_t>(std::max(*dataLength, 0)));
    if (data != nullptr) {
        std::memcpy(data, call.data.data(), n);
    }
    *dataLength = static_cast<int32_t>(call.data.size());
    *argument = call.argument;
    *result = call.result;
    return 0;
}

KDI_SCRIPT_EXPORT int32_t KDI_Command(uint8_t* buffer, int32_t* length) {
    if (buffer == nullptr || length == nullptr || *length < 1 || *length > KDI_BUFFER_SIZE) {
        ++script().mismatches;
        return Record("Command", -12);
    }
    const Bytes request(reinterpret_cast<const char*>(buffer), static_cast<size_t>(*length));
    Step step;
    auto& steps = script().steps;
    if (!steps.empty()) {
        step = steps.front();
        steps.pop_front();
        if (step.request != request) {
            ++script().mismatches;
        }
    } else if (script().fallback) {
        step = *script().fallback;
    } else {
        ++script().mismatches;
        step = Step{{}, -3, {}};
    }
    const size_t n = std::min<size_t>(step.response.size(), KDI_BUFFER_SIZE);
    std::memcpy(buffer, step.response.data(), n);
    *length = static_cast<int32_t>(n);
    return Record("Command", step.status, 0, request);
}

KDI_SCRIPT_EXPORT int32_t KDI_OpenPort(int32_t index) {
    return Record("OpenPort", script().openResult, index);
}

KDI_SCRIPT_EXPORT int32_t KDI_FreePort(void) {
    return Record("FreePort", 0);
}

KDI_SCRIPT_EXPORT int32_t KDI_PortCount(void) {
    return Record("PortCount", static_cast<int32_t>(script().ports.size()));
}

KDI_SCRIPT_EXPORT int32_t KDI_PortName(int32_t index, char* buffer, int32_t size) {
    const auto& ports = script().ports;
    if (index < 1 || static_cast<size_t>(index) > ports.size()) {
        return Record("PortName", -12, index);
    }
    return Record("PortName", CopyText(ports[static_cast<size_t>(index) - 1], buffer, size), index);
}

KDI_SCRIPT_EXPORT int32_t KDI_LastError(char* buffer, int32_t size) {
    return CopyText("scripted device library", buffer, size);
}

KDI_SCRIPT_EXPORT int32_t KDI_Version(char* buffer, int32_t size) {
    return Record("Version", CopyText("KDI script 1.0", buffer, size));
}

KDI_SCRIPT_EXPORT int32_t KDI_Reprogram(const char* path) {
    return Record("Reprogram", -12, 0, path != nullptr ? std::string(path) : std::string());
}

KDI_SCRIPT_EXPORT int32_t KDI_ProgState(void) {
    return Record("ProgState", 0);
}
