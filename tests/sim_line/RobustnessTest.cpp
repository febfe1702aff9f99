// Garbage in: commands with random data, responders described with values of the wrong kind,
// packets cut or bit-flipped on their way. Every one ends in a status or a clear error.

#include "Responders.h"

namespace zol::sim::line::test {
namespace {

using namespace rdm;

TEST(Robustness, RandomCommandsGetAStatus) {
    StageLine stage = MakeStage(3);
    Random random(99);
    const uint8_t codes[] = {49, 51, 52, 53, 56, 57, 58, 61};
    for (int i = 0; i < 3000; ++i) {
        const uint8_t code = codes[random.Below(sizeof codes)];
        Bytes data;
        const size_t length = random.Below(12) == 0 ? random.Below(530) : random.Below(12);
        for (size_t b = 0; b < length; ++b)
            data.push_back(char(random.Below(256)));
        // Keep the tokens mostly valid so that the requests reach the responders.
        if ((code == 56 || code == 57 || code == 58) && !data.empty())
            data[0] = char(random.Below(5));
        Bytes response;
        const int32_t status = stage.line->Handle(code, data, response);
        EXPECT_GE(status, 0);
        EXPECT_LE(status, 0x20 + 0xFFFF);
        EXPECT_LE(response.size(), 512u);
        if (random.Below(50) == 0)
            stage.line->Advance(random.Uniform() * 5);
        if (code == 51)
            stage.line->Advance(30);
    }
    // The line still works.
    Discover(*stage.line);
    EXPECT_EQ(Table(*stage.line).size(), 3u);
}

TEST(Robustness, WrongKindsOfValuesInAResponderGiveClearErrors) {
    const json good = SpotResponder();
    const json replacements[] = {json(),         json(true),   json(-1),
                                 json(1.5),      json("text"), json::array(),
                                 json::object(), json(70000),  json::array({1, "x"})};
    Random random(5);
    int refused = 0;
    std::function<void(const json&, json&, int)> visit;
    for (int round = 0; round < 400; ++round) {
        json broken = good;
        // Walk down to a random value and replace it.
        json* at = &broken;
        std::string path;
        for (int depth = 0; depth < 4 && (at->is_object() || at->is_array()) && !at->empty(); ++depth) {
            const size_t pick = random.Below(at->size());
            if (at->is_object()) {
                auto it = at->begin();
                std::advance(it, long(pick));
                path += "." + it.key();
                at = &it.value();
            } else {
                path += "[" + std::to_string(pick) + "]";
                at = &(*at)[pick];
            }
            if (random.Below(3) == 0)
                break;
        }
        *at = replacements[random.Below(std::size(replacements))];
        try {
            RdmLine::FromJson(json::array({broken}), "rig.json: ports[0].responders", 1);
        } catch (const std::runtime_error& error) {
            ++refused;
            EXPECT_EQ(std::string(error.what()).rfind("rig.json: ports[0].responders[0]", 0), 0u)
                << path << ": " << error.what();
        } catch (const std::exception& error) {
            ADD_FAILURE() << path << ": not a rig error: " << error.what();
        }
    }
    EXPECT_GT(refused, 200);
}

TEST(Robustness, NoisyLineNeverConfusesTheAnswers) {
    StageLine stage = MakeStage(4);
    Control(*stage.line, "line noise 0.3");
    int good = 0;
    for (int i = 0; i < 300; ++i) {
        const Answer answer = Get(*stage.line, stage.spot, DEVICE_LABEL);
        if (answer.status == status::kOk) {
            EXPECT_EQ(answer.data, "Spot 1");
            ++good;
        } else {
            EXPECT_EQ(answer.status, status::kMissing) << "a corrupted request gets no answer";
        }
    }
    EXPECT_GT(good, 150);
    EXPECT_LT(good, 280);
    // A pass through the noise may miss a responder whose DUB was corrupted, but it lists nobody
    // who is not there; once the line is quiet again a pass finds everyone.
    const std::set<Uid> present = {kSpotUid, kFogUid, kWallUid};
    for (int pass = 0; pass < 5; ++pass) {
        Discover(*stage.line);
        for (Uid uid : Table(*stage.line))
            EXPECT_TRUE(present.count(uid)) << UidText(uid);
    }
    Control(*stage.line, "line noise 0");
    Discover(*stage.line);
    EXPECT_EQ(Table(*stage.line).size(), 3u);
}

TEST(Robustness, HugeAndOddTimeSteps) {
    StageLine stage = MakeStage();
    stage.line->Advance(-5);
    stage.line->Advance(std::nan(""));
    stage.line->Advance(1e9);
    EXPECT_EQ(Get(*stage.line, stage.spot, DEVICE_LABEL).status, status::kOk);
    EXPECT_EQ(Get(*stage.line, stage.spot, REAL_TIME_CLOCK).data.size(), 7u);
}

} // namespace
} // namespace zol::sim::line::test
