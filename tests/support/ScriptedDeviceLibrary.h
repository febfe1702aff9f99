#pragma once
// A scripted device library: a queue of expected KDI_Command requests, each with the status and
// the response bytes to hand back, and a record of every call, so a test states byte for byte what
// crossed the seam. Installs itself as Client's library for its lifetime.

#include "device_link/core/DeviceLibrary.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace zol::test {

using Bytes = std::string;

// Byte string from a list of values: B({0x25, 0x01, 0x00, 0xFF}).
Bytes B(std::initializer_list<int> values);
// Byte string from hex text with optional blanks: H("25 01 00 FF").
Bytes H(const std::string& hex);
// Hex text with blanks, for messages.
std::string Hex(const Bytes& bytes);

struct LibraryCall {
    std::string function; // "Command", "OpenPort", "FreePort", "PortCount", "PortName", ...
    Bytes request;        // Command: code then data; Reprogram: the path
    int32_t argument = 0; // OpenPort/PortName: the index
    int32_t result = 0;   // status or result handed back
    Bytes response;       // Command: the response bytes handed back
};

class ScriptedDeviceLibrary : public DeviceLibrary {
public:
    ScriptedDeviceLibrary(); // installs itself as Client's library
    ~ScriptedDeviceLibrary() override; // restores; fails the test if expected commands are left

    // Expect the next KDI_Command to carry exactly `request` (code then data).
    void Expect(const Bytes& request, int32_t status, const Bytes& response = {});
    // Answer the next KDI_Command whatever it carries.
    void ExpectAny(int32_t status, const Bytes& response = {});
    // With an empty queue, commands go to this responder instead of failing the test.
    using Responder = std::function<int32_t(const Bytes& request, Bytes& response)>;
    void SetFallback(Responder responder) { fallback_ = std::move(responder); }
    size_t Pending() const { return script_.size(); }

    // The other functions answer from these.
    std::vector<std::string> portNames{"ZOL USB 1", "ZOL USB 2"};
    int32_t portCountResult = -999; // -999: the size of portNames
    int32_t openResult = 0;
    int32_t freeResult = 0;
    int32_t portNameResult = -999;  // -999: the name's length
    std::string lastError = "no error";
    std::string version = "KDI 2.1.0 (scripted)";
    int32_t versionResult = -999;   // -999: the text's length
    int32_t reprogramResult = 0;
    std::deque<int32_t> progStates; // ProgState answers in order; the last one repeats
    int32_t progStateDefault = 0;

    // Every call, in order.
    std::vector<LibraryCall> calls;
    // The requests of the Command calls only.
    std::vector<Bytes> Commands() const;
    void ClearCalls() { calls.clear(); }

    int32_t Command(uint8_t* buffer, int32_t* length) override;
    int32_t OpenPort(int32_t index) override;
    int32_t FreePort() override;
    int32_t PortCount() override;
    int32_t PortName(int32_t index, char* buffer, int32_t size) override;
    int32_t LastError(char* buffer, int32_t size) override;
    int32_t Version(char* buffer, int32_t size) override;
    int32_t Reprogram(const char* path) override;
    int32_t ProgState() override;

private:
    struct Step {
        std::optional<Bytes> request;
        int32_t status;
        Bytes response;
    };
    std::deque<Step> script_;
    Responder fallback_;
    DeviceLibrary* previous_ = nullptr;
};

} // namespace zol::test
