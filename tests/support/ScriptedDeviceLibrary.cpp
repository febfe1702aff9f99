#include "tests/support/ScriptedDeviceLibrary.h"

#include "device_link/core/Client.h"
#include "device_link/kdi.h"

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>

namespace zol::test {

Bytes B(std::initializer_list<int> values) {
    Bytes out;
    for (int v : values) {
        out.push_back(static_cast<char>(static_cast<uint8_t>(v)));
    }
    return out;
}

Bytes H(const std::string& hex) {
    Bytes out;
    int nibble = -1;
    for (char c : hex) {
        int v;
        if (c >= '0' && c <= '9') {
            v = c - '0';
        } else if (c >= 'a' && c <= 'f') {
            v = c - 'a' + 10;
        } else if (c >= 'A' && c <= 'F') {
            v = c - 'A' + 10;
        } else {
            continue;
        }
        if (nibble < 0) {
            nibble = v;
        } else {
            out.push_back(static_cast<char>(nibble * 16 + v));
            nibble = -1;
        }
    }
    return out;
}

std::string Hex(const Bytes& bytes) {
    static const char* digits = "0123456789ABCDEF";
    std::string out;
    for (unsigned char c : bytes) {
        if (!out.empty()) {
            out += ' ';
        }
        out += digits[c >> 4];
        out += digits[c & 15];
    }
    return out;
}

namespace {
int32_t CopyOut(const std::string& text, char* buffer, int32_t size) {
    if (buffer == nullptr || size <= 0) {
        return -1;
    }
    auto n = static_cast<int32_t>(std::min<size_t>(text.size(), static_cast<size_t>(size)));
    std::memcpy(buffer, text.data(), static_cast<size_t>(n));
    if (n < size) {
        buffer[n] = '\0';
    }
    return n;
}
} // namespace

ScriptedDeviceLibrary::ScriptedDeviceLibrary() { previous_ = Client::SetLibrary(this); }

ScriptedDeviceLibrary::~ScriptedDeviceLibrary() {
    Client::SetLibrary(previous_);
    if (!script_.empty()) {
        ADD_FAILURE() << script_.size() << " expected device command(s) were never sent; next: "
                      << (script_.front().request ? Hex(*script_.front().request) : std::string("<any>"));
    }
}

void ScriptedDeviceLibrary::Expect(const Bytes& request, int32_t status, const Bytes& response) {
    script_.push_back({request, status, response});
}

void ScriptedDeviceLibrary::ExpectAny(int32_t status, const Bytes& response) {
    script_.push_back({std::nullopt, status, response});
}

std::vector<Bytes> ScriptedDeviceLibrary::Commands() const {
    std::vector<Bytes> out;
    for (const auto& call : calls) {
        if (call.function == "Command") {
            out.push_back(call.request);
        }
    }
    return out;
}

int32_t ScriptedDeviceLibrary::Command(uint8_t* buffer, int32_t* length) {
    EXPECT_NE(buffer, nullptr);
    EXPECT_NE(length, nullptr);
    if (buffer == nullptr || length == nullptr) {
        return -12;
    }
    EXPECT_GE(*length, 1);
    EXPECT_LE(*length, KDI_BUFFER_SIZE);
    const auto inLength = std::clamp<int32_t>(*length, 0, KDI_BUFFER_SIZE);
    Bytes request(reinterpret_cast<const char*>(buffer), static_cast<size_t>(inLength));
    int32_t status;
    Bytes response;
    if (!script_.empty()) {
        Step step = script_.front();
        script_.pop_front();
        if (step.request) {
            EXPECT_EQ(Hex(request), Hex(*step.request)) << "device command " << calls.size() + 1;
        }
        status = step.status;
        response = step.response;
    } else if (fallback_) {
        status = fallback_(request, response);
    } else {
        ADD_FAILURE() << "Unexpected device command: " << Hex(request);
        status = -3;
    }
    response.resize(std::min<size_t>(response.size(), KDI_BUFFER_SIZE));
    std::memcpy(buffer, response.data(), response.size());
    *length = static_cast<int32_t>(response.size());
    calls.push_back({"Command", request, 0, status, response});
    return status;
}

int32_t ScriptedDeviceLibrary::OpenPort(int32_t index) {
    calls.push_back({"OpenPort", {}, index, openResult, {}});
    return openResult;
}

int32_t ScriptedDeviceLibrary::FreePort() {
    calls.push_back({"FreePort", {}, 0, freeResult, {}});
    return freeResult;
}

int32_t ScriptedDeviceLibrary::PortCount() {
    int32_t result = portCountResult == -999 ? static_cast<int32_t>(portNames.size()) : portCountResult;
    calls.push_back({"PortCount", {}, 0, result, {}});
    return result;
}

int32_t ScriptedDeviceLibrary::PortName(int32_t index, char* buffer, int32_t size) {
    std::string name;
    if (index >= 1 && static_cast<size_t>(index) <= portNames.size()) {
        name = portNames[static_cast<size_t>(index) - 1];
    }
    int32_t result = CopyOut(name, buffer, size);
    if (portNameResult != -999) {
        result = portNameResult;
    }
    calls.push_back({"PortName", {}, index, result, name});
    return result;
}

int32_t ScriptedDeviceLibrary::LastError(char* buffer, int32_t size) {
    int32_t result = CopyOut(lastError, buffer, size);
    calls.push_back({"LastError", {}, 0, result, lastError});
    return result;
}

int32_t ScriptedDeviceLibrary::Version(char* buffer, int32_t size) {
    int32_t result = CopyOut(version, buffer, size);
    if (versionResult != -999) {
        result = versionResult;
    }
    calls.push_back({"Version", {}, 0, result, version});
    return result;
}

int32_t ScriptedDeviceLibrary::Reprogram(const char* path) {
    calls.push_back({"Reprogram", path ? std::string(path) : std::string(), 0, reprogramResult, {}});
    return reprogramResult;
}

int32_t ScriptedDeviceLibrary::ProgState() {
    int32_t result = progStateDefault;
    if (!progStates.empty()) {
        result = progStates.front();
        if (progStates.size() > 1) {
            progStates.pop_front();
        }
    }
    calls.push_back({"ProgState", {}, 0, result, {}});
    return result;
}

} // namespace zol::test
