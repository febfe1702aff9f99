#pragma once
// The RDM line behind one simulated port: the firmware's RDM side (discovery search, table of
// discovered UIDs, transactions with real E1.20 packets) and the virtual responders on the wire.
// The simulated device hands it the RDM commands of its command set and lets modelled time pass.
// All calls are made with the device's lock held; the line keeps no threads of its own.

#include <cstdint>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <string>

namespace zol::sim {

class RdmLine {
public:
    virtual ~RdmLine() = default;

    // Builds the line from a port's "responders" array of the rig file. `where` names the place in
    // the rig for messages ("rig.json: ports[0].responders"). Throws std::runtime_error with a
    // message naming the file and the place when the description is malformed.
    static std::unique_ptr<RdmLine> FromJson(const nlohmann::json& responders, const std::string& where,
                                             uint64_t seed);

    // True for the command codes the line answers: 49, 51, 52, 53, 56, 57, 58, 61.
    static bool Handles(uint8_t code);

    // Runs one command of the device's command set. `data` is what follows the command code;
    // `response` receives the reply bytes. Returns the KDI_Command status.
    virtual int32_t Handle(uint8_t code, const std::string& data, std::string& response) = 0;

    // Lets `seconds` of time pass on the line (discovery advances, ACK_TIMER answers become ready,
    // clocks tick, sensors drift).
    virtual void Advance(double seconds) = 0;

    // Answers a SIM_Control command addressed to the line ("line ...", "responder ..."). Returns
    // false when the command is not the line's.
    virtual bool Control(const std::string& command, std::string& reply) = 0;

    // Back to the state the rig describes (SIM_Control "reset").
    virtual void Reset() = 0;

    // The UID the firmware's requests come from: the device's own. Until it is set the line uses
    // 6B72:00000001.
    virtual void SetControllerUid(uint64_t uid) { (void)uid; }
};

} // namespace zol::sim
