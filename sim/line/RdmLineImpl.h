#pragma once
// The firmware's RDM side on one port: the discovery search, the table of discovered UIDs, and the
// transactions of the device's command set, all as real packets on the simulated wire.

#include "sim/line/Discovery.h"
#include "sim/line/RdmLine.h"
#include "sim/line/Wire.h"

#include <optional>

namespace zol::sim::line {

// KDI_Command statuses the line answers with.
namespace status {
constexpr int32_t kOk = 0;
constexpr int32_t kConstraint = 0x01; // a value out of the allowed range (token, index)
constexpr int32_t kNotAvailable = 0x02;
constexpr int32_t kDataTooLong = 0x05;
constexpr int32_t kDataMissing = 0x06;
constexpr int32_t kBusy = 0x08;        // a discovery pass is running
constexpr int32_t kDelayed = 0x10;     // ACK_TIMER: two bytes, the wait in tenths of a second
constexpr int32_t kQueued = 0x11;      // done, the responder has messages queued
constexpr int32_t kOverflow = 0x12;    // one part of an ACK_OVERFLOW answer; ask again for the next
constexpr int32_t kTransaction = 0x13; // the reply's transaction number is not the request's
constexpr int32_t kSubDevice = 0x14;   // the reply is from another sub device
constexpr int32_t kFormat = 0x15;      // the reply is not a well-formed answer to the request
constexpr int32_t kChecksum = 0x16;    // the reply's checksum does not add up
constexpr int32_t kMissing = 0x18;     // no reply
constexpr int32_t kIdentity = 0x1A;    // the reply comes from another UID
constexpr int32_t kMuteFailed = 0x1B;  // a device failed to mute or is duplicated
constexpr int32_t kCorrupting = 0x1C;  // a device is corrupting discovery
constexpr int32_t kUnexpected = 0x1D;  // a reply came where none was expected
constexpr int32_t kNack = 0x20;        // plus the NACK reason
} // namespace status

class LineImpl final : public RdmLine, private DiscoveryBus {
public:
    LineImpl(std::vector<ResponderConfig> responders, uint64_t seed);

    int32_t Handle(uint8_t code, const std::string& data, std::string& response) override;
    void Advance(double seconds) override;
    bool Control(const std::string& command, std::string& reply) override;
    void Reset() override;
    void SetControllerUid(uint64_t uid) override { controller_ = uid & rdm::kMaxUid; }

    // For tests and the benchmark.
    Wire& GetWire() { return wire_; }
    Discovery& GetDiscovery() { return discovery_; }
    double Now() const { return now_; }

private:
    void UnmuteAll(double& cost) override;
    DubOutcome Dub(Uid lower, Uid upper, double& cost) override;
    MuteOutcome Mute(Uid uid, double& cost) override;

    rdm::Packet Request(Uid destination, uint8_t commandClass, uint16_t pid, uint16_t subDevice,
                        const Bytes& data);
    int32_t Transaction(uint8_t commandClass, const std::string& data, std::string& response);
    int32_t CollectQueued(const std::string& data, std::string& response);
    int32_t Status(std::string& response);
    bool LineControl(const std::vector<std::string>& words, std::string& reply);
    bool ResponderControl(const std::vector<std::string>& words, std::string& reply);

    Wire wire_;
    Discovery discovery_;
    double now_ = 0;
    double discoveryClock_ = 0;
    Uid controller_ = 0x6B7200000001ULL;
    uint8_t transaction_ = 0;
    std::optional<uint16_t> mask_;
    bool muteErrorReported_ = false;
};

} // namespace zol::sim::line
