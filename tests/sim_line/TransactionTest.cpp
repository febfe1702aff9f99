// Commands 56, 57, 58 and 61: how each answer of a responder maps to the statuses of the device.

#include "Responders.h"

namespace zol::sim::line::test {
namespace {

using namespace rdm;

std::string Fault(StageLine& stage, Uid uid, const std::string& fault) {
    return Control(*stage.line, "responder " + UidText(uid) + " fault " + fault);
}

TEST(Transaction, AckGivesStatusZeroAndTheParameterData) {
    StageLine stage = MakeStage();
    const Answer label = Get(*stage.line, stage.spot, DEVICE_LABEL);
    EXPECT_EQ(label.status, status::kOk);
    EXPECT_EQ(label.data, "Spot 1");
    const Answer set = Set(*stage.line, stage.spot, DEVICE_LABEL, "Spot left");
    EXPECT_EQ(set.status, status::kOk);
    EXPECT_TRUE(set.data.empty());
    EXPECT_EQ(Get(*stage.line, stage.spot, DEVICE_LABEL).data, "Spot left");
}

TEST(Transaction, AckWithMessagesQueuedGives17UntilTheQueueIsRead) {
    StageLine stage = MakeStage();
    // The fogger starts with a low-fluid advisory queued.
    const Answer label = Get(*stage.line, stage.fog, DEVICE_LABEL);
    EXPECT_EQ(label.status, status::kQueued);
    EXPECT_EQ(label.data, "Fogger") << "the data comes with status 17";

    const Answer queued = Cmd(*stage.line, 58, B({stage.fog, STATUS_ADVISORY}));
    EXPECT_EQ(queued.status, status::kOk) << "nothing left queued after this one";
    // PID STATUS_MESSAGES, then one record: sub device 0, advisory, id 82 (low fluid), 3, 0.
    EXPECT_EQ(queued.data, B({0x00, 0x30, 0x00, 0x00, 0x02, 0x00, 0x52, 0x00, 0x03, 0x00, 0x00}));
    EXPECT_EQ(Get(*stage.line, stage.fog, DEVICE_LABEL).status, status::kOk);

    // Asked again with nothing queued, the queue gives an empty STATUS_MESSAGES.
    EXPECT_EQ(Cmd(*stage.line, 58, B({stage.fog, STATUS_ADVISORY})).data, B({0x00, 0x30}));
    // STATUS_GET_LAST_MESSAGE repeats the last answer of the queue.
    EXPECT_EQ(Cmd(*stage.line, 58, B({stage.fog, STATUS_GET_LAST_MESSAGE})).data, B({0x00, 0x30}));

    // The condition comes back a minute after it was reported.
    stage.line->Advance(61);
    EXPECT_EQ(Get(*stage.line, stage.fog, DEVICE_LABEL).status, status::kQueued);
}

TEST(Transaction, AckTimerWaitsThenTheAnswerIsCollected) {
    StageLine stage = MakeStage();
    const Answer first = Get(*stage.line, stage.spot, LAMP_HOURS);
    EXPECT_EQ(first.status, status::kDelayed);
    EXPECT_EQ(first.data, B({0x00, 0x0F})) << "1.5 s in tenths, high byte first";

    // Polled too early: wait again, for what is left.
    stage.line->Advance(1.0);
    const Answer early = Cmd(*stage.line, 58, B({stage.spot}));
    EXPECT_EQ(early.status, status::kDelayed);
    EXPECT_EQ(early.data, B({0x00, 0x05}));

    stage.line->Advance(0.5);
    const Answer answer = Cmd(*stage.line, 58, B({stage.spot}));
    EXPECT_EQ(answer.status, status::kOk);
    // PID LAMP_HOURS, then 310 hours.
    EXPECT_EQ(answer.data, B({0x04, 0x01, 0x00, 0x00, 0x01, 0x36}));

    // A collected answer is gone; the queue is empty again.
    EXPECT_EQ(Cmd(*stage.line, 58, B({stage.spot, STATUS_ERROR})).data, B({0x00, 0x30}));
}

TEST(Transaction, DelayedSetTakesEffectAndADelayedNackArrivesAsNack) {
    StageLine stage = MakeStage();
    const Answer set = Set(*stage.line, stage.spot, DMX_START_ADDRESS, U16(42));
    EXPECT_EQ(set.status, status::kDelayed);
    EXPECT_EQ(set.data, B({0x00, 0x05}));
    stage.line->Advance(0.6);
    const Answer done = Cmd(*stage.line, 58, B({stage.spot}));
    EXPECT_EQ(done.status, status::kOk);
    EXPECT_EQ(done.data, U16(DMX_START_ADDRESS)) << "the PID of the answer, and no data";
    EXPECT_EQ(Get(*stage.line, stage.spot, DMX_START_ADDRESS).data, U16(42));

    ASSERT_EQ(Set(*stage.line, stage.spot, DMX_START_ADDRESS, U16(600)).status, status::kDelayed);
    stage.line->Advance(0.6);
    EXPECT_EQ(Cmd(*stage.line, 58, B({stage.spot})).status, status::kNack + NR_DATA_OUT_OF_RANGE);
}

TEST(Transaction, OverflowComesInPartsThatJoinToTheWholeAnswer) {
    StageLine stage = MakeStage();
    // SLOT_INFO of three slots is 15 bytes, sent five at a time.
    std::vector<Answer> parts;
    const Bytes request = Header(stage.spot, 0, SLOT_INFO);
    for (int i = 0; i < 5; ++i) {
        parts.push_back(Cmd(*stage.line, 56, request));
        if (parts.back().status != status::kOverflow)
            break;
    }
    ASSERT_EQ(parts.size(), 3u);
    EXPECT_EQ(parts[0].status, status::kOverflow);
    EXPECT_EQ(parts[1].status, status::kOverflow);
    EXPECT_EQ(parts[2].status, status::kOk);
    const Bytes joined = parts[0].data + parts[1].data + parts[2].data;
    EXPECT_EQ(joined, B({0, 0, 0, 0x01, 0x01, 0, 1, 0, 0x01, 0x02, 0, 2, 0, 0x00, 0x01}));

    // Another request in between starts the answer over.
    EXPECT_EQ(Cmd(*stage.line, 56, request).status, status::kOverflow);
    EXPECT_EQ(Get(*stage.line, stage.spot, DEVICE_LABEL).status, status::kOk);
    const Answer again = Cmd(*stage.line, 56, request);
    EXPECT_EQ(again.status, status::kOverflow);
    EXPECT_EQ(again.data, parts[0].data);
}

TEST(Transaction, LongParameterListOverflowsOnItsOwn) {
    StageLine stage = MakeStage();
    Bytes joined;
    int parts = 0;
    int32_t last = status::kOverflow;
    while (last == status::kOverflow && parts < 10) {
        const Answer part = Get(*stage.line, stage.wall, SUPPORTED_PARAMETERS);
        last = part.status;
        joined += part.data;
        ++parts;
        EXPECT_LE(part.data.size(), 231u);
        EXPECT_EQ(part.data.size() % 2, 0u) << "parts end on whole PIDs";
    }
    EXPECT_EQ(last, status::kOk);
    EXPECT_EQ(parts, 2);
    ASSERT_EQ(joined.size() % 2, 0u);
    std::set<uint16_t> pids;
    for (size_t i = 0; i < joined.size(); i += 2)
        pids.insert(GetU16(joined, i));
    for (uint16_t pid = 0x9000; pid < 0x9000 + 150; ++pid)
        EXPECT_TRUE(pids.count(pid)) << pid;
    EXPECT_TRUE(pids.count(PARAMETER_DESCRIPTION));
}

TEST(Transaction, CommonChecksGiveTheirNackReasons) {
    StageLine stage = MakeStage();
    LineImpl& line = *stage.line;
    EXPECT_EQ(Get(line, stage.spot, 0x0611).status, status::kNack + NR_UNKNOWN_PID);
    EXPECT_EQ(Get(line, stage.fog, LAMP_HOURS).status, status::kNack + NR_UNKNOWN_PID);
    EXPECT_EQ(Get(line, stage.spot, DEVICE_LABEL, "x").status, status::kNack + NR_FORMAT_ERROR);
    EXPECT_EQ(Set(line, stage.spot, IDENTIFY_DEVICE).status, status::kNack + NR_FORMAT_ERROR);
    EXPECT_EQ(Set(line, stage.spot, DEVICE_LABEL, std::string(33, 'a')).status,
              status::kNack + NR_FORMAT_ERROR);
    EXPECT_EQ(Set(line, stage.spot, DEVICE_POWER_CYCLES, U32(1)).status, status::kNack + NR_WRITE_PROTECT);
    EXPECT_EQ(Set(line, stage.spot, DEVICE_INFO).status, status::kNack + NR_UNSUPPORTED_COMMAND_CLASS);
    EXPECT_EQ(Get(line, stage.spot, RECORD_SENSORS, B({0})).status,
              status::kNack + NR_UNSUPPORTED_COMMAND_CLASS);
    EXPECT_EQ(Set(line, stage.spot, IDENTIFY_DEVICE, B({2})).status, status::kNack + NR_DATA_OUT_OF_RANGE);
    EXPECT_EQ(Get(line, stage.spot, DEVICE_INFO, {}, 3).status, status::kNack + NR_SUB_DEVICE_OUT_OF_RANGE);
    EXPECT_EQ(Get(line, stage.spot, DEVICE_INFO, {}, 0xFFFF).status,
              status::kNack + NR_SUB_DEVICE_OUT_OF_RANGE);
    // Sub devices have their own tables.
    EXPECT_EQ(Get(line, stage.spot, LAMP_HOURS, {}, 1).status, status::kNack + NR_UNKNOWN_PID);
    EXPECT_EQ(Get(line, stage.spot, DEVICE_LABEL, {}, 2).data, "Cell 2");
}

TEST(Transaction, NoReplyGives18) {
    StageLine stage = MakeStage();
    Fault(stage, kSpotUid, "silent");
    EXPECT_EQ(Get(*stage.line, stage.spot, DEVICE_LABEL).status, status::kMissing);
    EXPECT_EQ(Get(*stage.line, stage.spot, DEVICE_LABEL).status, status::kOk) << "one reply only";
    Control(*stage.line, "responder " + UidText(kSpotUid) + " disconnect");
    EXPECT_EQ(Get(*stage.line, stage.spot, DEVICE_LABEL).status, status::kMissing);
}

TEST(Transaction, BadRepliesGiveTheirStatuses) {
    StageLine stage = MakeStage();
    Fault(stage, kSpotUid, "checksum");
    EXPECT_EQ(Get(*stage.line, stage.spot, DEVICE_LABEL).status, status::kChecksum);
    Fault(stage, kSpotUid, "transaction");
    EXPECT_EQ(Get(*stage.line, stage.spot, DEVICE_LABEL).status, status::kTransaction);
    Fault(stage, kSpotUid, "subdevice");
    EXPECT_EQ(Get(*stage.line, stage.spot, DEVICE_LABEL).status, status::kSubDevice);
    Fault(stage, kSpotUid, "malformed");
    EXPECT_EQ(Get(*stage.line, stage.spot, DEVICE_LABEL).status, status::kFormat);
    Fault(stage, kSpotUid, "source");
    EXPECT_EQ(Get(*stage.line, stage.spot, DEVICE_LABEL).status, status::kIdentity);
    EXPECT_EQ(Get(*stage.line, stage.spot, DEVICE_LABEL).status, status::kOk);
}

TEST(Transaction, RepliesWithChecksumErrorsNowAndThen) {
    json flaky = SpotResponder();
    flaky["faults"] = {{"reply_checksum_errors", 0.5}};
    auto line = MakeLine(json::array({flaky}), 3);
    Discover(*line);
    const int token = TokenOf(*line, kSpotUid);
    ASSERT_EQ(token, 1);
    int good = 0, bad = 0;
    for (int i = 0; i < 200; ++i) {
        const int32_t s = Get(*line, token, DEVICE_LABEL).status;
        if (s == status::kOk)
            ++good;
        else if (s == status::kChecksum)
            ++bad;
        else
            ADD_FAILURE() << "status " << s;
    }
    EXPECT_GT(good, 60);
    EXPECT_GT(bad, 60);
}

TEST(Transaction, BroadcastReachesEveryoneAndReturnsNothing) {
    StageLine stage = MakeStage();
    const Answer answer = Set(*stage.line, 0, IDENTIFY_DEVICE, B({1}));
    EXPECT_EQ(answer.status, status::kOk);
    EXPECT_TRUE(answer.data.empty());
    EXPECT_EQ(Get(*stage.line, stage.spot, IDENTIFY_DEVICE).data, B({1}));
    EXPECT_EQ(Get(*stage.line, stage.fog, IDENTIFY_DEVICE).data, B({1}));
    EXPECT_EQ(Get(*stage.line, stage.wall, IDENTIFY_DEVICE).data, B({1}));
}

TEST(Transaction, BroadcastMaskConfinesItToOneMaker) {
    StageLine stage = MakeStage();
    ASSERT_EQ(Cmd(*stage.line, 61, B({0x4D, 0x48})).status, status::kOk);
    EXPECT_EQ(Set(*stage.line, 0, IDENTIFY_DEVICE, B({1})).status, status::kOk);
    EXPECT_EQ(Get(*stage.line, stage.spot, IDENTIFY_DEVICE).data, B({1}));
    EXPECT_EQ(Get(*stage.line, stage.wall, IDENTIFY_DEVICE).data, B({1}));
    EXPECT_EQ(Get(*stage.line, stage.fog, IDENTIFY_DEVICE).data, B({0})) << "another maker";
    // The mask stays set.
    EXPECT_EQ(Set(*stage.line, 0, DEVICE_LABEL, "same").status, status::kOk);
    EXPECT_EQ(Get(*stage.line, stage.fog, DEVICE_LABEL).data, "Fogger");
    EXPECT_EQ(Get(*stage.line, stage.wall, DEVICE_LABEL).data, "same");
    ASSERT_EQ(Cmd(*stage.line, 61, B({0x46, 0x4F})).status, status::kOk);
    EXPECT_EQ(Set(*stage.line, 0, DEVICE_LABEL, "fog").status, status::kOk);
    EXPECT_EQ(Get(*stage.line, stage.fog, DEVICE_LABEL).data, "fog");
    EXPECT_EQ(Get(*stage.line, stage.spot, DEVICE_LABEL).data, "same");

    EXPECT_EQ(Cmd(*stage.line, 61, B({0x46})).status, status::kDataMissing);
    EXPECT_EQ(Cmd(*stage.line, 61, B({0x46, 0x4F, 0})).status, status::kDataTooLong);
}

TEST(Transaction, ReplyToABroadcastIsUnexpected) {
    StageLine stage = MakeStage();
    Fault(stage, kFogUid, "broadcast");
    EXPECT_EQ(Set(*stage.line, 0, IDENTIFY_DEVICE, B({1})).status, status::kUnexpected);
    EXPECT_EQ(Set(*stage.line, 0, IDENTIFY_DEVICE, B({0})).status, status::kOk);
}

TEST(Transaction, SetToAllSubDevices) {
    StageLine stage = MakeStage();
    EXPECT_EQ(Set(*stage.line, stage.spot, DEVICE_LABEL, "All cells", 0xFFFF).status, status::kOk);
    EXPECT_EQ(Get(*stage.line, stage.spot, DEVICE_LABEL, {}, 1).data, "All cells");
    EXPECT_EQ(Get(*stage.line, stage.spot, DEVICE_LABEL, {}, 2).data, "All cells");
    EXPECT_EQ(Get(*stage.line, stage.spot, DEVICE_LABEL, {}, 0).data, "Spot 1");
}

TEST(Transaction, RequestsTheDeviceRefuses) {
    StageLine stage = MakeStage();
    EXPECT_EQ(Cmd(*stage.line, 56, B({1, 0, 0, 0})).status, status::kDataMissing);
    EXPECT_EQ(Cmd(*stage.line, 57, Header(1, 0, DEVICE_LABEL, std::string(232, 'a'))).status,
              status::kDataTooLong);
    EXPECT_EQ(Get(*stage.line, 9, DEVICE_LABEL).status, status::kConstraint) << "no such token";
    EXPECT_EQ(Cmd(*stage.line, 58).status, status::kDataMissing);
    EXPECT_EQ(Cmd(*stage.line, 58, B({0})).status, status::kConstraint);
    EXPECT_EQ(Cmd(*stage.line, 58, B({1, 2, 3})).status, status::kDataTooLong);
    EXPECT_EQ(Cmd(*stage.line, 58, B({stage.spot, 7})).status, status::kNack + NR_DATA_OUT_OF_RANGE);
    std::string response;
    EXPECT_EQ(stage.line->Handle(60, {}, response), status::kNotAvailable);
}

TEST(Transaction, EveryPacketCostsLineTime) {
    StageLine stage = MakeStage();
    LineStats before = stage.line->GetWire().Stats();
    Get(*stage.line, stage.spot, DEVICE_LABEL);
    LineStats after = stage.line->GetWire().Stats();
    // Request of 26 bytes, 200-220 us turnaround, reply of 32 bytes (6 of label), inter-packet gap.
    const double low = FrameTime(26) + 200 + FrameTime(32) + kInterPacketGap;
    EXPECT_GE(after.lineTimeUs - before.lineTimeUs, low);
    EXPECT_LE(after.lineTimeUs - before.lineTimeUs, low + 20);
    EXPECT_EQ(after.packets - before.packets, 2u);

    before = after;
    Fault(stage, kSpotUid, "silent");
    Get(*stage.line, stage.spot, DEVICE_LABEL);
    after = stage.line->GetWire().Stats();
    EXPECT_DOUBLE_EQ(after.lineTimeUs - before.lineTimeUs, FrameTime(26) + kResponseTimeout);
    EXPECT_EQ(after.timeouts - before.timeouts, 1u);

    const std::string text = Control(*stage.line, "line stats");
    EXPECT_NE(text.find("dubs="), std::string::npos);
    EXPECT_NE(text.find("mutes="), std::string::npos);
    EXPECT_NE(text.find("time_ms="), std::string::npos);
    EXPECT_NE(text.find("packets="), std::string::npos);
    EXPECT_EQ(Control(*stage.line, "line stats reset"), "ok");
    EXPECT_EQ(stage.line->GetWire().Stats().packets, 0u);
}

TEST(Transaction, ControlCommandsOfTheLine) {
    StageLine stage = MakeStage();
    std::string reply;
    EXPECT_FALSE(stage.line->Control("dmx level 1 255", reply)) << "not the line's";
    EXPECT_TRUE(stage.line->Control("line frobnicate", reply));
    EXPECT_EQ(reply.rfind("error: ", 0), 0u);
    EXPECT_TRUE(stage.line->Control("responder 1234:00000000 info", reply));
    EXPECT_EQ(reply.rfind("error: ", 0), 0u);
    EXPECT_TRUE(stage.line->Control("responder #1 fault nonsense", reply));
    EXPECT_EQ(reply.rfind("error: ", 0), 0u);
    EXPECT_TRUE(stage.line->Control("line noise 2", reply));
    EXPECT_EQ(reply.rfind("error: ", 0), 0u);
    const std::string info = Control(*stage.line, "responder #1 info");
    EXPECT_NE(info.find("uid=4D48:00000101"), std::string::npos) << info;
    EXPECT_NE(info.find("label=Spot 1"), std::string::npos) << info;
    EXPECT_NE(Control(*stage.line, "line responders").find("464F:00000007 Fogger"), std::string::npos);
    EXPECT_NE(Control(*stage.line, "line table").find(std::to_string(stage.fog) + " 464F:00000007"),
              std::string::npos);
}

TEST(Transaction, ResetReturnsTheLineToTheRig) {
    StageLine stage = MakeStage();
    Set(*stage.line, stage.spot, DEVICE_LABEL, "changed");
    Cmd(*stage.line, 61, B({0x46, 0x4F}));
    stage.line->Reset();
    EXPECT_TRUE(Table(*stage.line).empty());
    Discover(*stage.line);
    const int spot = TokenOf(*stage.line, kSpotUid);
    EXPECT_EQ(Get(*stage.line, spot, DEVICE_LABEL).data, "Spot 1");
    // The mask is gone: a broadcast reaches every maker again.
    EXPECT_EQ(Set(*stage.line, 0, IDENTIFY_DEVICE, B({1})).status, status::kOk);
    EXPECT_EQ(Get(*stage.line, spot, IDENTIFY_DEVICE).data, B({1}));
}

} // namespace
} // namespace zol::sim::line::test
