// The RDM model against the simulated interface's rig: discovery, a whole RDM_Device for every
// responder, sensors, status messages of the dimmer rack, manufacturer PIDs, and responders that
// answer with ACK_TIMER or in parts giving the same values as ones that answer at once.
//
// The tests skip, saying why, when the simulated interface or its RDM line is not built.

#include "rdm/RDM_Call.h"
#include "rdm/RDM_Device.h"
#include "rdm/RDM_Sensor.h"
#include "rdm/RDM_Status.h"
#include "rdm/RDM_SubDev.h"
#include "rdm/tables/RdmTables.h"
#include "services/strings/StrFormat.h"
#include "tests/rdm/SimSession.h"
#include "tests/support/FakeClock.h"
#include "tests/support/ScriptedUi.h"

#include <cstdio>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <vector>

namespace zol::rdm {
namespace {

using sim::SimSession;

std::string SourceDir() {
    if (const char* env = std::getenv("ZOL_SOURCE_DIR"); env != nullptr && *env != '\0') {
        return env;
    }
#ifdef ZOL_RDM_SOURCE_DIR
    return ZOL_RDM_SOURCE_DIR;
#else
    return ".";
#endif
}

// "MMMM:DDDDDDDD", as the simulator's console names a responder.
std::string ConsoleUid(const Bytes& uid) {
    const std::string hex = StrFormat::BytesToHex(uid, "");
    return hex.size() == 12 ? hex.substr(0, 4) + ":" + hex.substr(4) : hex;
}

std::string Render(const RdmValue& value) {
    switch (value.Type()) {
    case RdmType::Empty:
        return "empty";
    case RdmType::Void:
        return "void";
    case RdmType::Boolean:
        return value.AsBool() ? "true" : "false";
    case RdmType::Byte:
        return "byte " + std::to_string(value.AsByte());
    case RdmType::Integer:
    case RdmType::Long:
        return std::string(value.TypeName()) + " " + std::to_string(value.AsInt());
    case RdmType::String:
        return "string " + StrFormat::BytesToHex(value.AsBytes(), " ");
    case RdmType::Date: {
        const RdmDate& d = value.AsDate();
        char text[64];
        std::snprintf(text, sizeof text, "date %04d-%02d-%02d %02d:%02d:%02d", d.year, d.month, d.day, d.hour,
                      d.minute, d.second);
        return text;
    }
    }
    return "?";
}

// The rig the tests run on: $ZOL_RDM_TEST_RIG when set, otherwise the simulator's default rig.
std::string RigFile() {
    if (const char* env = std::getenv("ZOL_RDM_TEST_RIG"); env != nullptr && *env != '\0') {
        return env;
    }
    return {};
}

// Collects the queued messages of a device that keeps messages (QUEUED_MESSAGE, advisories and
// worse) until the local device
// stops reporting more. A delayed answer that completes while messages are queued comes back with
// status 17, and its data then keeps the two PID bytes of the poll reply in front: the tests that
// compare values drain the queue first.
void Drain(RDM_Device& device) {
    auto root = device.SubDev(0);
    if (!root->HasCall(0x0020) && !root->HasCall(pid::STATUS_MESSAGES)) {
        return; // a responder that keeps no messages
    }
    for (int round = 0; round < 32; ++round) {
        device.Queue(2);
        if (!Client::QueuePending()) {
            return;
        }
    }
    ADD_FAILURE() << "the queue of " << device.UID() << " does not drain";
}

class RigTest : public ::testing::Test {
protected:
    RigTest() : rig(RigFile()) {}

    void SetUp() override {
        ErrTrap::ResetForTest();
        std::string why;
        if (!session.Open(why, rig)) {
            if (why.find("refused the rig") != std::string::npos) {
                FAIL() << why;
            }
            GTEST_SKIP() << why;
        }
        clock = std::make_unique<test::FakeClock>(12 * 3600.0, 0.01);
        clock->onPump = [this] { session.Advance(clock->step); };
        count = session.Discover();
        ASSERT_GE(count, 1) << "discovery did not end with responders found";
        for (int token = 1; token <= count; ++token) {
            uids.push_back(Client::DiscoveryItem(token));
        }
    }

    std::shared_ptr<RDM_Device> Build(int token) {
        auto device = std::make_shared<RDM_Device>();
        EXPECT_TRUE(device->Initialise(static_cast<int16_t>(token)));
        return device;
    }

    std::vector<std::shared_ptr<RDM_Device>> BuildAll() {
        std::vector<std::shared_ptr<RDM_Device>> devices;
        for (int token = 1; token <= count; ++token) {
            devices.push_back(Build(token));
        }
        return devices;
    }

    std::string rig;
    SimSession session;
    test::ScriptedUi ui;
    std::unique_ptr<test::FakeClock> clock;
    int count = 0;
    std::vector<Bytes> uids;
};

TEST_F(RigTest, DiscoveryFindsEveryResponderAndEachBecomesADevice) {
    EXPECT_EQ(count, session.ResponderCount());
    const auto devices = BuildAll();
    std::set<std::string> seen;
    for (size_t i = 0; i < devices.size(); ++i) {
        RDM_Device& device = *devices[i];
        const std::string text = StrFormat::BytesToHex(uids[i], " ");
        EXPECT_EQ(device.UID(), text.substr(0, 6) + ":" + text.substr(text.size() - 12));
        seen.insert(device.UID());
        auto root = device.SubDev(0);
        ASSERT_NE(root, nullptr);
        EXPECT_TRUE(root->HasCall(pid::DEVICE_INFO));
        EXPECT_TRUE(root->HasCall(pid::DISC_MUTE));
        EXPECT_FALSE(device.PRODUCT_CATEGORY().empty());
        EXPECT_FALSE(device.DEVICE_MANUFACTURER().empty());
        for (int16_t index = 0; index <= device.SUB_DEVICE_COUNT(); ++index) {
            auto subDev = device.SubDev(index);
            ASSERT_NE(subDev, nullptr);
            EXPECT_EQ(subDev->Index(), index);
            subDev->Refresh();
            EXPECT_EQ(subDev->RDM_PROTOCOL_VERSION(), "1.00");
        }
        EXPECT_FALSE(device.Fault());
    }
    EXPECT_EQ(seen.size(), devices.size());
    EXPECT_TRUE(ui.boxes.empty());
}

TEST_F(RigTest, EverySensorReadsItsDefinitionAndValue) {
    int sensors = 0;
    for (const auto& device : BuildAll()) {
        Drain(*device);
        for (int16_t index = 0; index <= device->SUB_DEVICE_COUNT(); ++index) {
            auto subDev = device->SubDev(index);
            subDev->Refresh();
            for (uint16_t item = 1; item <= subDev->SENSOR_COUNT(); ++item) {
                auto sensor = subDev->SensorItem(static_cast<uint8_t>(item));
                ASSERT_NE(sensor, nullptr);
                ++sensors;
                EXPECT_FALSE(sensor->Description().empty());
                EXPECT_FALSE(sensor->UnitName().empty());
                EXPECT_LE(sensor->RangeMin(), sensor->RangeMax()) << sensor->Description();
                EXPECT_LE(sensor->LimitMin(), sensor->LimitMax()) << sensor->Description();
                const double now = sensor->ValueNow();
                EXPECT_GE(now, sensor->RangeMin()) << sensor->Description();
                EXPECT_LE(now, sensor->RangeMax()) << sensor->Description();
                sensor->Update(false);
                EXPECT_FALSE(sensor->Str(sensor->ValueNow()).empty());
                EXPECT_EQ(subDev->SensorItem(static_cast<uint8_t>(item)), sensor);
            }
        }
    }
    EXPECT_GT(sensors, 0) << "the rig has no sensors";
    EXPECT_TRUE(ui.boxes.empty());
}

TEST_F(RigTest, DimmerRackStatusMessagesBecomeSentences) {
    std::shared_ptr<RDM_Device> rack;
    Bytes rackUid;
    for (int token = 1; token <= count && !rack; ++token) {
        auto device = Build(token);
        if (device->SUB_DEVICE_COUNT() == 12) {
            rack = device;
            rackUid = uids[static_cast<size_t>(token - 1)];
        }
    }
    ASSERT_TRUE(rack) << "no responder with 12 sub devices";
    auto root = rack->SubDev(0);
    ASSERT_TRUE(root->HasCall(pid::STATUS_MESSAGES)) << "the dimmer rack does not list STATUS_MESSAGES";

    // A warning of our own: phase 2 over current at 16 A, raised by sub device 3.
    const std::string console = "port 1 responder " + ConsoleUid(rackUid) + " status 3 51 2 16 3";
    int rc = 0;
    EXPECT_EQ(session.Control(console, &rc), "ok");
    // A sensor message, when sub device 3 has a sensor: sensor 1 over temperature at 80 degrees.
    auto third = rack->SubDev(3);
    third->Refresh();
    std::string sensorName;
    if (third->SENSOR_COUNT() >= 1) {
        sensorName = third->SensorItem(1)->Description();
        EXPECT_EQ(session.Control("port 1 responder " + ConsoleUid(rackUid) + " status 3 33 1 80 3"), "ok");
    }

    std::vector<std::string> sentences;
    for (int round = 0; round < 8; ++round) {
        const RdmValue answer = root->ItemPID(pid::STATUS_MESSAGES)->GetValue(RdmValue::Byte(2));
        ASSERT_EQ(answer.Type(), RdmType::String);
        const Bytes& data = answer.AsBytes();
        ASSERT_EQ(data.size() % 9, 0u) << StrFormat::BytesToHex(data, " ");
        if (data.empty()) {
            break;
        }
        for (size_t at = 0; at < data.size(); at += 9) {
            const Bytes record = data.substr(at, 9);
            const int32_t subRef = StrFormat::WordAt(record, 1, false);
            RDM_Status status;
            status.Initialise(record, rack->SubDev(static_cast<int16_t>(subRef)));
            EXPECT_EQ(status.SubRef(), subRef);
            EXPECT_NE(status.StatusTxt().find(" - "), std::string::npos);
            sentences.push_back(status.Message());
        }
    }
    EXPECT_NE(std::find(sentences.begin(), sentences.end(), "Phase 2 over current at 16A."), sentences.end())
        << "sentences read: " << ::testing::PrintToString(sentences);
    if (!sensorName.empty()) {
        const std::string expected = "Sensor " + sensorName + " over temp at 80 °C";
        EXPECT_NE(std::find(sentences.begin(), sentences.end(), expected), sentences.end())
            << "sentences read: " << ::testing::PrintToString(sentences);
    }
    EXPECT_TRUE(ui.boxes.empty());
}

TEST_F(RigTest, ManufacturerPidIsDescribedByParameterDescription) {
    int described = 0;
    for (int token = 1; token <= count; ++token) {
        auto device = Build(token);
        auto root = device->SubDev(0);
        for (int16_t seq = 1; seq <= root->CallCount(); ++seq) {
            auto call = root->ItemSeq(seq);
            if (!call->ManSpec()) {
                continue;
            }
            ++described;
            EXPECT_TRUE(root->HasCall(pid::PARAMETER_DESCRIPTION));
            // The description is the PARAMETER_DESCRIPTION answer from its 21st byte on.
            const Bytes raw = Client::RdmGet(
                static_cast<uint8_t>(token), 0, pid::PARAMETER_DESCRIPTION,
                Bytes{static_cast<char>(call->PID() >> 8), static_cast<char>(call->PID() & 0xFF)});
            ASSERT_GE(raw.size(), 20u);
            EXPECT_EQ(call->Description(), raw.size() > 20 ? raw.substr(20) : "No description available");
            EXPECT_NE(call->Description(), "Manufacturer-Spesific PID (Error)");
            EXPECT_EQ(call->Getable(), (raw[4] & 1) != 0);
            EXPECT_EQ(call->Setable(), (raw[4] & 2) != 0);
            if (call->Getable()) {
                const RdmValue value = call->GetValue(RdmValue::String(""));
                EXPECT_EQ(value.Type(), RdmType::String);
                EXPECT_EQ(value.AsBytes(), Client::RdmGet(static_cast<uint8_t>(token), 0, call->PID()));
            }
        }
    }
    EXPECT_GT(described, 0) << "no responder lists a manufacturer PID";
    EXPECT_TRUE(ui.boxes.empty());
}

// ---- Delayed and multi-part answers ----

// PIDs whose value moves with the time that passes between two reads.
bool MovesWithTime(int32_t number) {
    return number == 0x0603 || number == 0x0400 || number == 0x0401 || number == 0x0015;
}

// Every value our stack reads of a device: its sub devices' info and parameter lists, every
// parameter that a GET without parameter reads, manufacturer PIDs, and the sensors. QUEUED_MESSAGE
// is left out: a responder that answers with ACK_TIMER lists it, its twin that answers at once
// need not.
std::vector<std::string> Snapshot(RDM_Device& device, test::ScriptedUi& ui) {
    std::vector<std::string> lines;
    auto guarded = [&](const std::string& what, const std::function<std::string()>& read) {
        const size_t boxes = ui.boxes.size();
        std::string text;
        try {
            text = read();
        } catch (const ZolError& error) {
            text = "error " + std::to_string(error.Code());
        }
        for (size_t b = boxes; b < ui.boxes.size(); ++b) {
            text += " | box " + ui.boxes[b].title.value_or("") + ": " + ui.boxes[b].prompt;
        }
        lines.push_back(what + " = " + text);
    };
    for (int16_t index = 0; index <= device.SUB_DEVICE_COUNT(); ++index) {
        auto subDev = device.SubDev(index);
        const std::string at = "sub " + std::to_string(index) + " ";
        guarded(at + "info", [&] {
            subDev->Refresh();
            return subDev->RDM_PROTOCOL_VERSION() + " " + subDev->DEVICE_MODEL_ID() + " " +
                   subDev->PRODUCT_CATEGORY() + " " + subDev->SOFTWARE_VERSION_ID() + " " +
                   std::to_string(subDev->DMX512_START_ADDRESS()) + " " +
                   std::to_string(subDev->SENSOR_COUNT());
        });
        for (int16_t seq = 1; seq <= subDev->CallCount(); ++seq) {
            auto call = subDev->ItemSeq(seq);
            if (call->PID() == 0x0020) {
                continue;
            }
            if (call->PID() == pid::SUPPORTED_PARAMETERS) {
                guarded(at + "supported", [&] {
                    const Bytes list = call->GetValue().AsBytes();
                    std::string text;
                    for (size_t i = 0; i + 1 < list.size(); i += 2) {
                        const int32_t listed = StrFormat::WordAt(list, static_cast<int16_t>(i + 1), false);
                        text += listed == 0x0020 ? std::string() : FormatPID(listed) + " ";
                    }
                    return text;
                });
                continue;
            }
            const std::string name = at + FormatPID(call->PID()) + " " + call->Description() +
                                     (call->Required() ? " required" : "");
            if (call->ManSpec()) {
                if (call->Getable()) {
                    guarded(name, [&] { return Render(call->GetValue(RdmValue::String(""))); });
                } else {
                    lines.push_back(name);
                }
                continue;
            }
            const tables::PidRow* row = tables::FindPid(call->PID());
            if (row == nullptr || row->get.handling != tables::Handling::Typed ||
                row->get.param != RdmType::Void || MovesWithTime(call->PID())) {
                lines.push_back(name);
                continue;
            }
            guarded(name, [&] { return Render(call->GetValue()); });
        }
        for (uint16_t item = 1; item <= subDev->SENSOR_COUNT(); ++item) {
            guarded(at + "sensor " + std::to_string(item), [&] {
                auto sensor = subDev->SensorItem(static_cast<uint8_t>(item));
                return sensor->Description() + " " + sensor->TypeName() + " " + sensor->UnitName() + " " +
                       sensor->Str(sensor->RangeMin()) + ".." + sensor->Str(sensor->RangeMax()) + " now " +
                       sensor->Str(sensor->ValueNow());
            });
        }
    }
    return lines;
}

// The default rig with a twin of every responder that answers with ACK_TIMER or in parts: the
// same responder under another UID, answering at once. Sensors hold still in both, so that the
// time spent waiting does not change what they read.
std::string TwinRig(std::map<std::string, std::string>& twinOf, std::set<std::string>& delayed) {
    const std::string source = RigFile().empty() ? SourceDir() + "/sim/rigs/default.json" : RigFile();
    std::ifstream in(source);
    if (!in) {
        return {};
    }
    nlohmann::json rig = nlohmann::json::parse(in);
    auto& responders = rig["ports"][0]["responders"];
    auto still = [](nlohmann::json& unit) {
        if (unit.contains("sensors")) {
            for (auto& sensor : unit["sensors"]) {
                sensor.erase("drift");
            }
        }
    };
    nlohmann::json twins = nlohmann::json::array();
    for (auto& responder : responders) {
        still(responder);
        if (responder.contains("sub_devices")) {
            for (auto& sub : responder["sub_devices"]) {
                still(sub);
            }
        }
        if (!responder.contains("ack_timer") && !responder.contains("overflow")) {
            continue;
        }
        nlohmann::json twin = responder;
        twin.erase("ack_timer");
        twin.erase("overflow");
        std::string uid = responder["uid"].get<std::string>();
        // Same manufacturer, device id with its top bit flipped.
        const std::string device = uid.substr(5);
        char flipped[9];
        std::snprintf(flipped, sizeof flipped, "%08lX",
                      std::strtoul(device.c_str(), nullptr, 16) ^ 0x40000000UL);
        twin["uid"] = uid.substr(0, 5) + flipped;
        twinOf[uid] = twin["uid"].get<std::string>();
        if (responder.contains("ack_timer")) {
            delayed.insert(uid);
        }
        twins.push_back(twin);
    }
    for (auto& twin : twins) {
        responders.push_back(twin);
    }
    const std::string path = ::testing::TempDir() + "rdm_twin_rig.json";
    std::ofstream(path) << rig.dump(2);
    return path;
}

class TwinRigTest : public RigTest {
protected:
    void SetUp() override {
        rig = TwinRig(twinOf, delayed);
        if (rig.empty()) {
            GTEST_SKIP() << "the default rig file is not at " << SourceDir() << "/sim/rigs/default.json";
        }
        if (twinOf.empty()) {
            GTEST_SKIP() << "the default rig has no responder with ACK_TIMER or overflow";
        }
        RigTest::SetUp();
    }

    int TokenOf(const std::string& consoleUid) {
        for (size_t i = 0; i < uids.size(); ++i) {
            if (ConsoleUid(uids[i]) == consoleUid) {
                return static_cast<int>(i + 1);
            }
        }
        return 0;
    }

    std::map<std::string, std::string> twinOf;
    std::set<std::string> delayed; // the originals that answer with ACK_TIMER
};

TEST_F(TwinRigTest, AckTimerAndOverflowAnswersGiveTheSameValuesAsDirectAnswers) {
    ui.AllowAnyBoxes();
    for (const auto& [original, twin] : twinOf) {
        const int delayedToken = TokenOf(original);
        const int direct = TokenOf(twin);
        ASSERT_GT(delayedToken, 0) << original;
        ASSERT_GT(direct, 0) << twin;
        session.Control("port 1 line stats reset");
        const long pumps = clock->pumps;
        auto slow = Build(delayedToken);
        Drain(*slow);
        const auto slowValues = Snapshot(*slow, ui);
        const double slowRequests = session.LineStat("requests");
        if (delayed.count(original) != 0) {
            EXPECT_GT(clock->pumps, pumps) << original << " never made the controller wait";
        }
        session.Control("port 1 line stats reset");
        auto fast = Build(direct);
        Drain(*fast);
        const auto fastValues = Snapshot(*fast, ui);
        const double fastRequests = session.LineStat("requests");
        EXPECT_EQ(slowValues, fastValues) << original << " against " << twin;
        // The delayed or multi-part answers cost more line traffic than the direct ones.
        EXPECT_GT(slowRequests, fastRequests) << original;
    }
}

// A responder whose parameter list takes more than one answer (ACK_OVERFLOW): the parts are joined
// into the whole list, so every manufacturer PID of the rig is there, described by the device.
TEST_F(RigTest, OverflowingParameterListIsJoinedWhole) {
    std::ifstream in(RigFile().empty() ? SourceDir() + "/sim/rigs/default.json" : RigFile());
    ASSERT_TRUE(in.good());
    const nlohmann::json file = nlohmann::json::parse(in);
    std::string uid;
    std::map<int32_t, std::string> expected; // manufacturer PID and its description
    for (const auto& responder : file["ports"][0]["responders"]) {
        std::map<int32_t, std::string> pids;
        for (const auto& entry : responder.value("manufacturer_pids", nlohmann::json::array())) {
            const auto number = [](const nlohmann::json& v) {
                return v.is_string() ? static_cast<int32_t>(std::stol(v.get<std::string>(), nullptr, 0))
                                     : v.get<int32_t>();
            };
            const int32_t first = number(entry["pid"]);
            const int32_t n = entry.contains("count") ? number(entry["count"]) : 1;
            const std::string text = entry.value("description", std::string());
            for (int32_t i = 0; i < n; ++i) {
                std::string description = text;
                if (const size_t mark = text.find("%d"); mark != std::string::npos) {
                    description = text.substr(0, mark) + std::to_string(i + 1) + text.substr(mark + 2);
                    description.resize(std::min<size_t>(description.size(), 32));
                }
                pids[first + i] = description;
            }
        }
        if (pids.size() > expected.size()) {
            expected = pids;
            uid = responder["uid"].get<std::string>();
        }
    }
    if (expected.size() < 116) { // 232 bytes of PIDs or more take two answers
        GTEST_SKIP() << "no responder lists enough PIDs to need more than one answer";
    }
    int token = 0;
    for (size_t i = 0; i < uids.size(); ++i) {
        token = ConsoleUid(uids[i]) == uid ? static_cast<int>(i + 1) : token;
    }
    ASSERT_GT(token, 0);

    session.Counter().Clear();
    auto device = Build(token);
    EXPECT_GT(session.Counter().parts, 0) << "the parameter list came in one answer";
    auto root = device->SubDev(0);
    std::map<int32_t, std::string> read;
    for (int16_t seq = 1; seq <= root->CallCount(); ++seq) {
        auto call = root->ItemSeq(seq);
        if (call->ManSpec()) {
            // The description comes as the device sends it; a text with a NUL at its end keeps it.
            std::string description = call->Description();
            if (!description.empty() && description.back() == '\0') {
                description.pop_back();
            }
            read[call->PID()] = description;
            EXPECT_FALSE(call->Required());
        }
    }
    EXPECT_EQ(read, expected);
    EXPECT_TRUE(root->HasCall(pid::PARAMETER_DESCRIPTION));
    const Bytes list = root->ItemPID(pid::SUPPORTED_PARAMETERS)->GetValue().AsBytes();
    EXPECT_EQ(list.size() % 2, 0u);
    EXPECT_GE(list.size(), 2 * expected.size());
    EXPECT_TRUE(ui.boxes.empty());
}

// A delayed answer collected while the responder has messages queued reads as a direct answer
// does: the interface reports the collection as done and tells of the queue at the next exchange.
TEST_F(RigTest, DelayedAnswerWithMessagesQueuedReadsAsADirectAnswer) {
    std::ifstream in(RigFile().empty() ? SourceDir() + "/sim/rigs/default.json" : RigFile());
    ASSERT_TRUE(in.good());
    const nlohmann::json file = nlohmann::json::parse(in);
    std::string uid;
    for (const auto& responder : file["ports"][0]["responders"]) {
        for (const auto& timer : responder.value("ack_timer", nlohmann::json::array())) {
            const auto& p = timer["pid"];
            const bool sensorValue =
                p.is_string() ? p.get<std::string>() == "SENSOR_VALUE" : p.get<int>() == 0x0201;
            if (sensorValue && timer.value("command", std::string("get")) == "get" &&
                responder.value("sensors", nlohmann::json::array()).size() > 0) {
                uid = responder["uid"].get<std::string>();
            }
        }
    }
    if (uid.empty()) {
        GTEST_SKIP() << "no responder answers SENSOR_VALUE with ACK_TIMER";
    }
    int token = 0;
    for (size_t i = 0; i < uids.size(); ++i) {
        token = ConsoleUid(uids[i]) == uid ? static_cast<int>(i + 1) : token;
    }
    ASSERT_GT(token, 0);
    EXPECT_EQ(session.Control("port 1 responder " + uid + " status 2 17"), "ok");

    const long pumps = clock->pumps;
    const Bytes delayed = Client::RdmGet(static_cast<uint8_t>(token), 0, pid::SENSOR_VALUE, Bytes(1, '\0'));
    EXPECT_GT(clock->pumps, pumps) << "the answer was waited for";
    ASSERT_EQ(delayed.size(), 9u) << StrFormat::BytesToHex(delayed, " ");
    EXPECT_EQ(delayed[0], '\0');
    // The next exchange tells of the queued messages.
    (void)Client::RdmGet(static_cast<uint8_t>(token), 0, pid::DEVICE_INFO);
    EXPECT_TRUE(Client::LastQueued());
    EXPECT_TRUE(Client::QueuePending());
}

} // namespace
} // namespace zol::rdm
