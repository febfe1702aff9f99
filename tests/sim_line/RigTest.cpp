// The responders of the bundled rigs, and clear errors for responders a rig describes badly.

#include "LineTestSupport.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace zol::sim::line::test {
namespace {

using namespace rdm;

std::filesystem::path RigFolder() {
    const char* source = std::getenv("ZOL_SOURCE_DIR");
    return std::filesystem::path(source ? source : ZOL_SOURCE_DIR_FALLBACK) / "sim" / "rigs";
}

json LoadRig(const std::string& name) {
    std::ifstream in(RigFolder() / name);
    EXPECT_TRUE(in.good()) << (RigFolder() / name);
    return json::parse(in);
}

std::unique_ptr<LineImpl> PortLine(const std::string& rig, size_t port, uint64_t seed = 1) {
    const json file = LoadRig(rig);
    return MakeLine(file.at("ports").at(port).at("responders"), seed);
}

TEST(Rig, EveryBundledRigParses) {
    int rigs = 0;
    for (const auto& entry : std::filesystem::directory_iterator(RigFolder())) {
        if (entry.path().extension() != ".json")
            continue;
        ++rigs;
        std::ifstream in(entry.path());
        const json rig = json::parse(in);
        for (size_t p = 0; p < rig.at("ports").size(); ++p) {
            const std::string where =
                entry.path().filename().string() + ": ports[" + std::to_string(p) + "].responders";
            EXPECT_NO_THROW(RdmLine::FromJson(rig["ports"][p].value("responders", json::array()), where, 1))
                << where;
        }
    }
    EXPECT_GE(rigs, 2);
}

TEST(Rig, DefaultStageIsFoundAndBehaves) {
    auto line = PortLine("default.json", 0);
    ASSERT_EQ(Discover(*line), std::vector<int32_t>{0});
    ASSERT_EQ(Table(*line).size(), 6u);

    const int spot = TokenOf(*line, 0x7FF120240117ULL);
    const int rack = TokenOf(*line, 0x7FF200000C1AULL);
    const int led = TokenOf(*line, 0x7FF30001A2B3ULL);
    const int fog = TokenOf(*line, 0x7FF400000042ULL);
    const int splitter = TokenOf(*line, 0x7FF500100005ULL);
    const int wall = TokenOf(*line, 0x7FF30002F00DULL);
    ASSERT_TRUE(spot && rack && led && fog && splitter && wall);

    // Moving head: sensors, lamp, two manufacturer parameters described.
    const Bytes spotInfo = Get(*line, spot, DEVICE_INFO).data;
    ASSERT_EQ(spotInfo.size(), 19u);
    EXPECT_EQ(uint8_t(spotInfo[18]), 3u);
    EXPECT_EQ(Get(*line, spot, LAMP_STATE).data, B({1}));
    EXPECT_EQ(Get(*line, spot, PARAMETER_DESCRIPTION, U16(0x8002)).data.substr(20), "Pan/tilt speed limit");
    EXPECT_EQ(Get(*line, spot, DEVICE_HOURS).status, status::kOk);
    EXPECT_EQ(Set(*line, spot, DEVICE_HOURS, U32(0)).status, status::kNack + NR_WRITE_PROTECT);

    // Dimmer rack: twelve sub devices with labels and addresses; a tripped breaker on circuit 7.
    EXPECT_EQ(GetU16(Get(*line, rack, DEVICE_INFO).data, 16), 12u);
    EXPECT_EQ(Get(*line, rack, DEVICE_LABEL, {}, 7).data, "Circuit 7");
    EXPECT_EQ(GetU16(Get(*line, rack, DMX_START_ADDRESS, {}, 12).data, 0), 112u);
    const Answer errors = Get(*line, rack, STATUS_MESSAGES, B({STATUS_ERROR}));
    EXPECT_EQ(errors.status, status::kQueued) << "the warning and the advisory stay queued";
    EXPECT_EQ(errors.data, B({0, 7, STATUS_ERROR, 0, 66, 0, 0, 0, 0}));

    // LED fixture: four personalities with slot descriptions.
    EXPECT_EQ(Get(*line, led, DMX_PERSONALITY).data, B({3, 4}));
    EXPECT_EQ(Get(*line, led, DMX_PERSONALITY_DESCRIPTION, B({4})).data.substr(0, 3), B({4, 0, 8}));
    EXPECT_EQ(Get(*line, led, SLOT_DESCRIPTION, U16(5)).data, B({0, 5}) + "Strobe");

    // Fogger: low fluid queued, measurements answered with ACK_TIMER.
    EXPECT_EQ(Get(*line, fog, DEVICE_LABEL).status, status::kQueued);
    const Answer level = Get(*line, fog, SENSOR_VALUE, B({1}));
    EXPECT_EQ(level.status, status::kDelayed);
    EXPECT_EQ(level.data, B({0, 12}));
    line->Advance(1.2);
    const Answer collected = Cmd(*line, 58, B({fog}));
    EXPECT_EQ(collected.status, status::kOk) << "a collected answer is done; the queue is told later";
    EXPECT_EQ(collected.data.substr(0, 3), B({0x02, 0x01, 1}));
    EXPECT_EQ(Get(*line, fog, DEVICE_LABEL).status, status::kQueued) << "the low-fluid warning still waits";
    EXPECT_EQ(Get(*line, fog, STATUS_ID_DESCRIPTION, U16(0x8001)).data, "Fluid level at %d percent");

    // Splitter: no DMX address.
    EXPECT_EQ(Get(*line, splitter, DMX_START_ADDRESS).data, B({0xFF, 0xFF}));
    EXPECT_EQ(GetU16(Get(*line, splitter, DEVICE_INFO).data, 10), 0u);

    // Pixel processor: its parameter list comes in two parts.
    EXPECT_EQ(Get(*line, wall, SUPPORTED_PARAMETERS).status, status::kOverflow);
    EXPECT_EQ(Get(*line, wall, SUPPORTED_PARAMETERS).status, status::kOk);
}

TEST(Rig, DefaultFaultyPortIsFoundWithTheMuteError) {
    for (uint64_t seed = 1; seed <= 4; ++seed) {
        auto line = PortLine("default.json", 1, seed);
        const auto statuses = Discover(*line);
        ASSERT_EQ(statuses.size(), 2u) << "seed " << seed;
        EXPECT_EQ(statuses[0], status::kMuteFailed);
        EXPECT_EQ(statuses[1], 0);
        const auto found = Table(*line);
        EXPECT_EQ(std::set<Uid>(found.begin(), found.end()),
                  (std::set<Uid>{0x7FF600000101ULL, 0x7FF600000102ULL, 0x7FF70000BEEFULL, 0x7FF800000003ULL,
                                 0x7FF120240118ULL}))
            << "seed " << seed;
        EXPECT_EQ(found.size(), 5u);
    }
}

TEST(Rig, LoadRigHas255RespondersAndAllAreFound) {
    auto line = PortLine("load255.json", 0);
    ASSERT_EQ(line->GetWire().Responders().size(), 255u);
    ASSERT_EQ(Discover(*line), std::vector<int32_t>{0});
    const auto found = Table(*line);
    EXPECT_EQ(found.size(), 255u);
    std::set<Uid> expected;
    for (const auto& responder : line->GetWire().Responders())
        expected.insert(responder->GetUid());
    EXPECT_EQ(std::set<Uid>(found.begin(), found.end()), expected);
}

struct BadCase {
    const char* json;
    const char* message; // part of the error text
};

class BadResponders : public ::testing::TestWithParam<BadCase> {};

TEST_P(BadResponders, GiveAClearError) {
    const json responders = json::parse(GetParam().json);
    try {
        RdmLine::FromJson(responders, "rig.json: ports[0].responders", 1);
        FAIL() << "accepted " << GetParam().json;
    } catch (const std::runtime_error& error) {
        const std::string text = error.what();
        EXPECT_EQ(text.rfind("rig.json: ports[0].responders", 0), 0u) << text;
        EXPECT_NE(text.find(GetParam().message), std::string::npos) << text;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Rig, BadResponders,
    ::testing::Values(
        BadCase{R"({"uid": "7FF1:00000001"})", "expected an array"},
        BadCase{R"([{"label": "x"}])", "[0]: missing \"uid\""},
        BadCase{R"([{"uid": "7FF1-00000001"}])", "[0].uid: expected a UID"},
        BadCase{R"([{"uid": "FFFF:FFFFFFFF"}])", "[0].uid: not a UID"},
        BadCase{R"([{"uid": "7FF1:00000001", "lable": "x"}])", "unknown key \"lable\""},
        BadCase{R"([{"uid": "7FF1:00000001", "label": 7}])", "[0].label: expected a text"},
        BadCase{R"([{"uid": "7FF1:00000001", "label": "012345678901234567890123456789012"}])",
                "longer than 32"},
        BadCase{R"([{"uid": "7FF1:00000001", "start_address": 513}])",
                "[0].start_address: value 513 outside"},
        BadCase{R"([{"uid": "7FF1:00000001", "model_id": "0x1G"}])", "[0].model_id: expected a number"},
        BadCase{R"([{"uid": "7FF1:00000001", "personality": 2}])", "no personalities"},
        BadCase{R"([{"uid": "7FF1:00000001", "personalities": [{"footprint": 2, "slots": [{}]}]}])",
                "[0].personalities[0].slots: expected 2 slots"},
        BadCase{R"([{"uid": "7FF1:00000001", "sensors": [{"range": [10, 0]}]}])",
                "[0].sensors[0].range: lowest above highest"},
        BadCase{R"([{"uid": "7FF1:00000001", "sensors": [{"range": [0, 10], "value": 11}]}])",
                "[0].sensors[0].value"},
        BadCase{R"([{"uid": "7FF1:00000001", "clock": "2024-02-30 10:00:00"}])", "date or time out of range"},
        BadCase{R"([{"uid": "7FF1:00000001", "clock": "yesterday"}])", "expected a date and time"},
        BadCase{R"([{"uid": "7FF1:00000001", "manufacturer_pids": [{"pid": "0x0100"}]}])",
                "manufacturer_pids[0].pid: value 256 outside"},
        BadCase{R"([{"uid": "7FF1:00000001", "manufacturer_pids": [{"pid": "0x8001"}, {"pid": "0x8001"}]}])",
                "given twice"},
        BadCase{R"([{"uid": "7FF1:00000001", "ack_timer": [{"pid": "NO_SUCH_PID"}]}])",
                "ack_timer[0].pid: expected a number"},
        BadCase{R"([{"uid": "7FF1:00000001", "ack_timer": [{"pid": "LAMP_HOURS", "command": "put"}]}])",
                "expected \"get\" or \"set\""},
        BadCase{R"([{"uid": "7FF1:00000001", "overflow": [{"pid": "SLOT_INFO", "part": 0}]}])",
                "overflow[0].part: value 0 outside"},
        BadCase{R"([{"uid": "7FF1:00000001", "faults": {"reply_checksum_errors": 1.5}}])",
                "faults.reply_checksum_errors: value outside"},
        BadCase{R"([{"uid": "7FF1:00000001", "faults": {"explode": true}}])", "unknown key \"explode\""},
        BadCase{R"([{"uid": "7FF1:00000001", "status_messages": [{"type": "panic", "id": 1}]}])",
                "status_messages[0].type"},
        BadCase{
            R"([{"uid": "7FF1:00000001", "sub_devices": [{"count": 3, "footprint": 200, "start_address": 300}]}])",
            "run past 512"},
        BadCase{R"([{"uid": "7FF1:00000001", "sub_devices": [{"uid": "7FF1:00000002"}]}])",
                "sub_devices[0]: unknown key \"uid\""},
        BadCase{R"([{"uid": "7FF1:00000001", "languages": ["english"]}])", "longer than 2"},
        BadCase{R"([{"uid": "7FF1:00000001", "lamp": {"hours": -1}}])", "lamp.hours: value -1 outside"}));

} // namespace
} // namespace zol::sim::line::test
