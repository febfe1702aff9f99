#pragma once
// Responders used by the transaction and behaviour tests, written as a rig would hold them.

#include "LineTestSupport.h"

namespace zol::sim::line::test {

constexpr Uid kSpotUid = 0x4D4800000101ULL; // maker 4D48
constexpr Uid kFogUid = 0x464F00000007ULL;  // maker 464F
constexpr Uid kWallUid = 0x4D4800000200ULL; // maker 4D48, long parameter list

inline json SpotResponder() {
    return json::parse(R"({
        "uid": "4D48:00000101",
        "label": "Spot 1",
        "model": "Orbit 575 Spot",
        "model_id": "0x0101",
        "category": "0x0101",
        "software_version_id": "0x02030001",
        "software_version": "2.3.1",
        "boot_software_version_id": 7,
        "boot_software_version": "boot 1.1",
        "manufacturer": "Marrow Hill Lighting",
        "product_details": ["0x0002", "0x0101"],
        "personalities": [
            {"footprint": 3, "description": "Basic 3ch", "slots": [
                {"type": 0, "id": "0x0101", "description": "Pan", "default": 128},
                {"type": 0, "id": "0x0102", "description": "Tilt", "default": 127},
                {"type": 0, "id": "0x0001", "description": "", "default": 0}]},
            {"footprint": 12, "description": "Extended 12ch"},
            {"footprint": 0, "description": "Standalone"}
        ],
        "personality": 1,
        "start_address": 10,
        "sensors": [
            {"type": 0, "unit": 1, "prefix": 0, "range": [-40, 150], "normal": [10, 60],
             "description": "Head temperature", "value": 41, "drift": 2},
            {"type": 1, "unit": 2, "range": [0, 300], "normal": [207, 253], "value": 230,
             "recorded": false, "lowest_highest": false, "description": "Mains voltage"}
        ],
        "device_hours": 1200,
        "power_cycles": 85,
        "lamp": {"hours": 310, "strikes": 95, "state": 0, "on_mode": 1},
        "display": {"invert": 2, "level": 200},
        "pan_tilt": {"pan_invert": false, "tilt_invert": true, "swap": false},
        "clock": "2024-05-01 19:30:00",
        "languages": ["en", "de"],
        "power_state": 255,
        "self_tests": [{"number": 1, "description": "Pan and tilt home", "seconds": 4},
                       {"number": 2, "description": "Colour wheel", "seconds": 3}],
        "status_messages": [],
        "status_descriptions": {"0x8001": "Fan %d stalled"},
        "manufacturer_pids": [
            {"pid": "0x8001", "description": "Fan mode", "type": "unsigned_byte",
             "min": 0, "max": 3, "default": 1},
            {"pid": "0x8002", "description": "Owner tag", "type": "ascii", "size": 16,
             "value": "MH-0042"},
            {"pid": "0x8100", "count": 3, "description": "Zone %d trim", "type": "signed_word",
             "min": -100, "max": 100, "default": 0, "command_class": "get_set"},
            {"pid": "0x8200", "description": "Run time", "type": "unsigned_dword",
             "command_class": "get", "value": 123456}
        ],
        "ack_timer": [
            {"pid": "LAMP_HOURS", "command": "get", "seconds": 1.5},
            {"pid": "DMX_START_ADDRESS", "command": "set", "seconds": 0.5}
        ],
        "overflow": [{"pid": "SLOT_INFO", "part": 5}],
        "write_protected": ["DEVICE_POWER_CYCLES"],
        "sub_devices": [
            {"count": 2, "label": "Cell %d", "model": "Cell", "footprint": 1, "start_address": 20,
             "sensors": [{"type": 0, "unit": 1, "range": [0, 100], "value": 30, "description": "Cell temperature"}]}
        ]
    })");
}

inline json FogResponder() {
    return json::parse(R"({
        "uid": "464F:00000007",
        "label": "Fogger",
        "model": "Haze 900",
        "category": "0x0600",
        "footprint": 2,
        "start_address": 100,
        "status_messages": [{"type": "advisory", "id": 82, "values": [3, 0], "repeat": 60}],
        "clock": "2023-01-01 00:00:00"
    })");
}

// A device with more parameters than fit one answer.
inline json WallResponder() {
    return json::parse(R"({
        "uid": "4D48:00000200",
        "label": "LED wall processor",
        "manufacturer_pids": [
            {"pid": "0x9000", "count": 150, "description": "Panel %d gamma", "type": "unsigned_byte"}
        ]
    })");
}

// The three responders discovered, with their tokens.
struct StageLine {
    std::unique_ptr<LineImpl> line;
    int spot = 0, fog = 0, wall = 0;
};

inline StageLine MakeStage(uint64_t seed = 1) {
    StageLine stage;
    stage.line = MakeLine(json::array({SpotResponder(), FogResponder(), WallResponder()}), seed);
    Discover(*stage.line);
    stage.spot = TokenOf(*stage.line, kSpotUid);
    stage.fog = TokenOf(*stage.line, kFogUid);
    stage.wall = TokenOf(*stage.line, kWallUid);
    EXPECT_TRUE(stage.spot && stage.fog && stage.wall);
    return stage;
}

} // namespace zol::sim::line::test
