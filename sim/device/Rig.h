#pragma once
// The rig: what the simulated interface is made of. One JSON file describes the ports, and for each
// its identity, options, frame-timing limits, DMX input source and the responders on its RDM line.

#include <array>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <vector>

namespace zol::sim {

// A rig that cannot be used. The message names the file and the place in it.
class RigError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// One adjustable quantity of the frame timing: the value chosen by 0 and the accepted range.
struct Limits {
    int def = 0;
    int min = 0;
    int max = 0;
};

enum class InputSource { None, Generated, Alternate, Faulty, Lost, Loopback };

struct InputSpec {
    InputSource source = InputSource::None;
    int startCode = 0x17;     // Alternate: the start code of every frame
    int slots = 512;          // levels per frame (Generated, Alternate)
    double rate = 40.0;       // frames per second arriving (Generated, Alternate, Faulty)
    double stepSeconds = 1.0; // Generated, Alternate: the levels move on once per step
    int fromPort = 0;         // Loopback: the port (from 1) whose output arrives here
};

struct PortSpec {
    std::string name;

    // Identity.
    std::string deviceName;
    int model = 2;
    bool optionByte = true; // false: older firmware that refuses the option byte of command 0
    std::string hardwareRev;
    std::string firmware; // three numbers with points between them
    std::string serial;   // decimal digits
    std::array<uint8_t, 6> uid{};
    uint32_t build = 0;
    std::vector<int> unsupported; // command codes this firmware does not know

    // Options.
    bool factoryMode = false;
    double uploadSeconds = 4.0;
    double configureSeconds = 2.0;
    uint64_t seed = 1;

    // Frame timing.
    Limits frameRate{40, 1, 44};
    Limits breakUs{176, 92, 2000};
    Limits markUs{20, 12, 2000};
    Limits rxTimeoutMs{10, 1, 40};
    int frameReserveMs = 15;

    InputSpec input;

    nlohmann::json responders = nlohmann::json::array();
    std::string respondersWhere; // "file: ports[0].responders"
};

struct Rig {
    std::string file; // the label used in messages: the path, or "default rig"
    std::string name;
    double timeScale = 1.0;
    std::vector<PortSpec> ports;
};

// Label of the rig built into the library.
inline constexpr const char* kDefaultRigLabel = "default rig";

// The rig file built into the library (sim/rigs/default.json).
std::string DefaultRigText();

// Parses and checks a rig. `file` is the label for messages. Throws RigError.
Rig ParseRig(const std::string& text, const std::string& file);

// Reads and parses a rig file. Throws RigError (also when the file cannot be read).
Rig LoadRigFile(const std::string& path);

// "6B72:00010417" from six bytes.
std::string FormatUid(const std::array<uint8_t, 6>& uid);

} // namespace zol::sim
