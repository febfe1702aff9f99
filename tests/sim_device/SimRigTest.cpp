// Rig files: the built-in rig, the shipped ones, and malformed rigs refused with the file and place.

#include "SimHarness.h"

#include <nlohmann/json.hpp>

namespace zol::sim::test {
namespace {

// Loads `text` as a rig file and returns what the library says about it.
std::string Refusal(SimHarness& h, const std::string& name, const std::string& text) {
    const std::string path = WriteTemp(name, text);
    std::string reply;
    EXPECT_EQ(h.CtlRc("rig " + path, &reply), -1) << text;
    EXPECT_EQ(h.sim.PortCount(), 0);
    const std::string error = h.LastError();
    EXPECT_EQ(error, reply);
    EXPECT_EQ(error.rfind("Rig refused: " + path + ": ", 0), 0u) << error;
    return error.substr(std::string("Rig refused: ").size() + path.size() + 2);
}

TEST(SimRig, TheBuiltInRigLeavesEachPortItsResponders) {
    const auto rig = nlohmann::json::parse(DefaultRigText());
    ASSERT_EQ(rig.at("ports").size(), 2u);
    for (const auto& port : rig.at("ports")) {
        ASSERT_TRUE(port.contains("responders"));
        EXPECT_TRUE(port.at("responders").is_array());
    }
    const Rig parsed = ParseRig(DefaultRigText(), kDefaultRigLabel);
    EXPECT_EQ(parsed.ports[0].name, "ZOL USB 1");
    EXPECT_EQ(parsed.ports[1].name, "ZOL USB 2");
    EXPECT_FALSE(parsed.ports[1].optionByte);
}

TEST(SimRig, EveryShippedRigLoads) {
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(ZOL_SIM_RIG_DIR)) {
        if (entry.path().extension() != ".json") {
            continue;
        }
        SimHarness h(entry.path().string(), 0);
        EXPECT_GT(h.sim.PortCount(), 0) << entry.path() << ": " << h.LastError();
        ++count;
    }
    EXPECT_GE(count, 1);
}

TEST(SimRig, SyntaxErrorNamesFileLineAndColumn) {
    SimHarness h("default", 0);
    EXPECT_EQ(Refusal(h, "syntax.json", "{\n  \"ports\": [\n    {\"name\": \"A\",}\n  ]\n}\n"),
              "line 3, column 18: not valid JSON");
}

TEST(SimRig, AValueNestedTenThousandDeepIsRefusedWithItsPlaceAndNotACrash) {
    SimHarness h("default", 0);
    std::string deep = "{\n \"name\": \"deep\",\n \"comment\": ";
    deep += std::string(10000, '[') + std::string(10000, ']');
    deep += ",\n \"ports\": []\n}\n";
    // The document is level 1; the first bracket stands at column 13 of line 3, so the 64th bracket
    // (column 76) is the first one too deep.
    EXPECT_EQ(Refusal(h, "deep.json", deep), "line 3, column 76: nested deeper than 64 levels");
}

TEST(SimRig, BracketsInsideTextsDoNotCountAsNesting) {
    std::string rig = "{\"name\": \"" + std::string(100, '[') + "\\\"{\", \"ports\": [{\"name\": \"A\"}]}";
    EXPECT_NO_THROW(ParseRig(rig, "brackets.json"));
}

TEST(SimRig, AMissingFileIsNamed) {
    SimHarness h("default", 0);
    std::string reply;
    EXPECT_EQ(h.CtlRc("rig /no/such/rig.json", &reply), -1);
    EXPECT_EQ(reply, "Rig refused: /no/such/rig.json: the rig file cannot be read");
    EXPECT_EQ(h.sim.PortCount(), 0);
}

TEST(SimRig, PortsAreRequired) {
    SimHarness h("default", 0);
    EXPECT_EQ(Refusal(h, "noports.json", R"({"name": "x"})"), "ports: is missing");
    EXPECT_EQ(Refusal(h, "listports.json", R"({"ports": {}})"), "ports: must be a list");
}

TEST(SimRig, ATopLevelThatIsNoObjectIsRefused) {
    SimHarness h("default", 0);
    EXPECT_EQ(Refusal(h, "array.json", "[1, 2]"), "top level: must be an object");
}

TEST(SimRig, AWrongTypeNamesThePlace) {
    SimHarness h("default", 0);
    EXPECT_EQ(Refusal(h, "type.json", R"({"ports": [{"name": "A"}, {"name": "B",
        "timing": {"frame_rate": {"max": "fast"}}}]})"),
              "ports[1].timing.frame_rate.max: must be an integer from 1 to 255");
}

TEST(SimRig, AnUnknownKeyIsRefused) {
    SimHarness h("default", 0);
    EXPECT_EQ(Refusal(h, "key.json", R"({"ports": [{"name": "A", "identity": {"colour": "red"}}]})"),
              "ports[0].identity.colour: is not a known key");
}

TEST(SimRig, APortNeedsAName) {
    SimHarness h("default", 0);
    EXPECT_EQ(Refusal(h, "name.json", R"({"ports": [{}]})"), "ports[0].name: is missing");
    EXPECT_EQ(Refusal(h, "twice.json", R"({"ports": [{"name": "A"}, {"name": "A"}]})"),
              "ports[1].name: \"A\" is used by another port");
}

TEST(SimRig, LimitsMustHoldTheirDefault) {
    SimHarness h("default", 0);
    EXPECT_EQ(Refusal(h, "limits.json", R"({"ports": [{"name": "A",
        "timing": {"break_us": {"default": 50, "min": 92, "max": 200}}}]})"),
              "ports[0].timing.break_us.default: must lie from min to max");
    EXPECT_EQ(Refusal(h, "minmax.json", R"({"ports": [{"name": "A",
        "timing": {"mark_us": {"min": 300, "max": 200}}}]})"),
              "ports[0].timing.mark_us: min is above max");
}

TEST(SimRig, TimingThatCannotBeCoupledIsRefused) {
    SimHarness h("default", 0);
    EXPECT_EQ(Refusal(h, "coupling.json", R"({"ports": [{"name": "A",
        "timing": {"rx_timeout_ms": {"default": 10, "min": 10, "max": 40}}}]})"),
              "ports[0].timing: frame_rate.max with rx_timeout_ms.min and frame_reserve_ms exceed the frame "
              "period");
}

TEST(SimRig, IdentityValuesAreChecked) {
    SimHarness h("default", 0);
    EXPECT_EQ(Refusal(h, "fw.json", R"({"ports": [{"name": "A", "identity": {"firmware": "1.2"}}]})"),
              "ports[0].identity.firmware: must be three numbers with points between them");
    EXPECT_EQ(Refusal(h, "serial.json", R"({"ports": [{"name": "A", "identity": {"serial": "12a"}}]})"),
              "ports[0].identity.serial: must be decimal digits");
    EXPECT_EQ(Refusal(h, "uid.json", R"({"ports": [{"name": "A", "identity": {"uid": "6B72:0001"}}]})"),
              "ports[0].identity.uid: must be twelve hexadecimal digits");
    EXPECT_EQ(Refusal(h, "model.json", R"({"ports": [{"name": "A", "identity": {"model": 70000}}]})"),
              "ports[0].identity.model: must be an integer from 0 to 65535");
}

TEST(SimRig, InputSourceIsChecked) {
    SimHarness h("default", 0);
    EXPECT_EQ(Refusal(h, "src.json", R"({"ports": [{"name": "A", "input": {"source": "radio"}}]})"),
              "ports[0].input.source: must be one of none, generated, alternate, faulty, lost, loopback");
    EXPECT_EQ(Refusal(h, "self.json",
                      R"({"ports": [{"name": "A", "input": {"source": "loopback", "from_port": 1}}]})"),
              "ports[0].input.from_port: must name another port of the rig, from 1");
}

TEST(SimRig, RespondersMustBeAList) {
    SimHarness h("default", 0);
    EXPECT_EQ(Refusal(h, "resp.json", R"({"ports": [{"name": "A", "responders": {}}]})"),
              "ports[0].responders: must be a list");
}

TEST(SimRig, ARefusedRigLeavesNoPortsAndSaysWhy) {
    SimHarness h("default", 0);
    Refusal(h, "bad.json", "{");
    const std::string why = h.LastError();
    EXPECT_EQ(h.sim.OpenPort(1), -12);
    EXPECT_EQ(h.LastError(), why);
    char name[64];
    EXPECT_EQ(h.sim.PortName(1, name, sizeof name), -12);
    EXPECT_EQ(h.LastError(), why);
    // The next good rig brings them back.
    h.Ctl("rig default");
    EXPECT_EQ(h.sim.PortCount(), 2);
    EXPECT_EQ(h.LastError(), "No error");
}

TEST(SimRig, ARigWithoutPortsIsAnEmptyBench) {
    const std::string rig = WriteTemp("none.json", R"({"name": "Nothing plugged in", "ports": []})");
    SimHarness h(rig, 0);
    EXPECT_EQ(h.sim.PortCount(), 0);
    EXPECT_EQ(h.LastError(), "No error");
}

TEST(SimRig, TimeScaleSpeedsTheRealClock) {
    const std::string rig = WriteTemp("fast.json", R"({"time_scale": 100, "ports": [{"name": "A"}]})");
    SimHarness h(rig);
    h.Ctl("clock real");
    ASSERT_EQ(h.Cmd({0x22, 0x00, 0x00, 1}).status, 0);
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_GE(std::stoll(h.Ctl("frames")), 100); // 5 modelled seconds at 40 frames a second
}

} // namespace
} // namespace zol::sim::test
