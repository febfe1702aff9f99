// Discovery through commands 51, 52, 53 and 49: every responder is found once, whatever the UIDs,
// the collisions and the faulty responders on the line.

#include "LineTestSupport.h"

namespace zol::sim::line::test {
namespace {

std::set<Uid> AsSet(const std::vector<Uid>& uids) {
    return {uids.begin(), uids.end()};
}

struct SetCase {
    UidSet set;
    size_t count;
    bool classic;
};

class DiscoveryOfUidSets : public ::testing::TestWithParam<SetCase> {};

TEST_P(DiscoveryOfUidSets, FindsEveryResponderOnce) {
    const SetCase c = GetParam();
    const std::vector<Uid> uids = MakeUids(c.set, c.count, 1000 + c.count);
    auto line = MakeLine(Responders(uids), 5);
    if (c.classic)
        Control(*line, "line search classic");
    const auto statuses = Discover(*line);
    ASSERT_EQ(statuses.back(), 0);
    EXPECT_EQ(statuses.size(), 1u) << "a clean line reports no error";
    const std::vector<Uid> found = Table(*line);
    EXPECT_EQ(found.size(), uids.size()) << "no UID twice";
    EXPECT_EQ(AsSet(found), AsSet(uids));
    for (const auto& responder : line->GetWire().Responders())
        EXPECT_TRUE(responder->Muted()) << rdm::UidText(responder->GetUid());
}

std::vector<SetCase> AllSetCases() {
    std::vector<SetCase> cases;
    for (UidSet set : {UidSet::Random, UidSet::Sequential, UidSet::OneMaker})
        for (size_t count : {1, 10, 100, 255})
            for (bool classic : {false, true})
                cases.push_back({set, count, classic});
    return cases;
}

INSTANTIATE_TEST_SUITE_P(Sets, DiscoveryOfUidSets, ::testing::ValuesIn(AllSetCases()),
                         [](const ::testing::TestParamInfo<SetCase>& info) {
                             std::string name = UidSetName(info.param.set);
                             name.erase(std::remove(name.begin(), name.end(), ' '), name.end());
                             return name + std::to_string(info.param.count) +
                                    (info.param.classic ? "Classic" : "Improved");
                         });

TEST(Discovery, CollisionsThatAddUpStillFindEveryone) {
    // With every DUB collision adding up bit by bit, many decode as a real UID and some as a ghost.
    for (UidSet set : {UidSet::Random, UidSet::Sequential, UidSet::OneMaker}) {
        const std::vector<Uid> uids = MakeUids(set, 100, 42);
        auto line = MakeLine(Responders(uids), 9);
        Control(*line, "line garble 0");
        const auto statuses = Discover(*line);
        ASSERT_EQ(statuses.back(), 0) << UidSetName(set);
        EXPECT_EQ(AsSet(Table(*line)), AsSet(uids)) << UidSetName(set);
        EXPECT_EQ(Table(*line).size(), uids.size());
    }
}

TEST(Discovery, EveryCollisionGarbledStillFindsEveryone) {
    const std::vector<Uid> uids = MakeUids(UidSet::Random, 60, 3);
    auto line = MakeLine(Responders(uids), 9);
    Control(*line, "line garble 1");
    ASSERT_EQ(Discover(*line).back(), 0);
    EXPECT_EQ(AsSet(Table(*line)), AsSet(uids));
}

TEST(Discovery, GhostUidsAreSplitAwayNotListed) {
    const std::vector<Uid> uids = MakeUids(UidSet::OneMaker, 40, 11);
    auto line = MakeLine(Responders(uids), 2);
    Control(*line, "line ghosts 15");
    const auto statuses = Discover(*line);
    ASSERT_EQ(statuses.back(), 0);
    EXPECT_EQ(statuses.size(), 1u) << "a ghost is not a device that failed to mute";
    EXPECT_LT(line->GetWire().forcedGhosts, 15) << "the collisions produced ghosts";
    EXPECT_EQ(AsSet(Table(*line)), AsSet(uids));
    EXPECT_EQ(Table(*line).size(), uids.size());
}

TEST(Discovery, StatusWordCountsUpWhileTheSearchRuns) {
    const std::vector<Uid> uids = MakeUids(UidSet::Random, 100, 8);
    auto line = MakeLine(Responders(uids), 1);
    ASSERT_EQ(Cmd(*line, 51).status, 0);
    Answer first = Cmd(*line, 52);
    ASSERT_EQ(first.status, 0);
    EXPECT_EQ(first.data, B({0, 1})) << "nothing found yet, searching";

    int lastCount = 0;
    bool sawPartial = false;
    int ticks = 0;
    for (; ticks < 10000; ++ticks) {
        line->Advance(0.25);
        Answer status = Cmd(*line, 52);
        ASSERT_EQ(status.status, 0);
        ASSERT_EQ(status.data.size(), 2u);
        const int count = uint8_t(status.data[0]);
        const int state = uint8_t(status.data[1]);
        EXPECT_GE(count, lastCount);
        lastCount = count;
        if (state == 1 && count > 0 && count < 100)
            sawPartial = true;
        if (state == 0)
            break;
        EXPECT_EQ(state, 1);
    }
    EXPECT_TRUE(sawPartial);
    EXPECT_EQ(lastCount, 100);
    // The pass takes its modelled line time: more than one tick, less than a minute for 100.
    EXPECT_GT(ticks, 1);
    EXPECT_LT(ticks, 240);
    const auto& stats = line->GetWire().Stats();
    EXPECT_NEAR(stats.lineTimeUs / 1e6, line->Now(), 0.3) << "the line was busy all the time";
}

TEST(Discovery, ImprovedSearchUsesFewerDubsThanTheClassicOne) {
    for (UidSet set : {UidSet::Random, UidSet::Sequential, UidSet::OneMaker}) {
        const std::vector<Uid> uids = MakeUids(set, 100, 21);
        auto improved = MakeLine(Responders(uids), 4);
        auto classic = MakeLine(Responders(uids), 4);
        Control(*classic, "line search classic");
        Discover(*improved);
        Discover(*classic);
        const auto& a = improved->GetWire().Stats();
        const auto& b = classic->GetWire().Stats();
        EXPECT_LT(a.dubs, b.dubs) << UidSetName(set);
        EXPECT_LT(a.lineTimeUs, b.lineTimeUs) << UidSetName(set);
    }
}

TEST(Discovery, EmptyLineEndsAtOnceWithNothing) {
    auto line = MakeLine(json::array());
    ASSERT_EQ(Discover(*line).back(), 0);
    EXPECT_TRUE(Table(*line).empty());
    EXPECT_EQ(line->GetWire().Stats().dubs, 1u);
}

TEST(Discovery, ResponderThatIgnoresMuteEndsThePassWithTheMuteError) {
    std::vector<Uid> uids = MakeUids(UidSet::OneMaker, 20, 5);
    json responders = Responders(uids);
    responders[7]["faults"] = {{"ignore_mute", true}};
    auto line = MakeLine(responders, 3);
    const auto statuses = Discover(*line);
    ASSERT_EQ(statuses.size(), 2u);
    EXPECT_EQ(statuses[0], status::kMuteFailed) << "reported once";
    EXPECT_EQ(statuses[1], 0);
    EXPECT_EQ(AsSet(Table(*line)), AsSet(uids)) << "it answered its mute, so it is listed";
    EXPECT_TRUE(line->GetDiscovery().SteppedAround().count(uids[7]));
    EXPECT_EQ(Cmd(*line, 52).status, 0) << "the error is reported only once";
}

TEST(Discovery, ResponderThatNeverMutesIsLeftOutWithTheMuteError) {
    std::vector<Uid> uids = MakeUids(UidSet::OneMaker, 20, 6);
    json responders = Responders(uids);
    responders[11]["faults"] = {{"deaf_to_mute", true}};
    auto line = MakeLine(responders, 3);
    const auto statuses = Discover(*line);
    ASSERT_EQ(statuses.size(), 2u);
    EXPECT_EQ(statuses[0], status::kMuteFailed);
    EXPECT_EQ(statuses[1], 0);
    std::set<Uid> expected = AsSet(uids);
    expected.erase(uids[11]);
    EXPECT_EQ(AsSet(Table(*line)), expected) << "it never confirmed itself, so it is not listed";
    EXPECT_TRUE(line->GetDiscovery().SteppedAround().count(uids[11]));
}

TEST(Discovery, DuplicateUidIsListedOnceWithTheMuteError) {
    std::vector<Uid> uids = MakeUids(UidSet::Sequential, 12, 5);
    json responders = Responders(uids);
    responders.push_back({{"uid", rdm::UidText(uids[4])}, {"label", "twin"}});
    auto line = MakeLine(responders, 3);
    const auto statuses = Discover(*line);
    ASSERT_EQ(statuses.size(), 2u);
    EXPECT_EQ(statuses[0], status::kMuteFailed);
    EXPECT_EQ(statuses[1], 0);
    const auto found = Table(*line);
    EXPECT_EQ(found.size(), uids.size());
    EXPECT_EQ(AsSet(found), AsSet(uids));
    // Both halves answer, so a transaction with it collides.
    EXPECT_EQ(Get(*line, TokenOf(*line, uids[4]), rdm::DEVICE_INFO).status, status::kChecksum);
}

TEST(Discovery, FlakyAndSlowRespondersAreFound) {
    std::vector<Uid> uids = MakeUids(UidSet::Random, 30, 6);
    json responders = Responders(uids);
    responders[3]["faults"] = {{"reply_checksum_errors", 0.3}};
    responders[9]["faults"] = {{"turnaround_us", 1900}, {"late_replies", 0.2}};
    responders[15]["faults"] = {{"dub_preamble", 0}};
    responders[16]["faults"] = {{"dub_preamble", 3}};
    for (uint64_t seed = 1; seed <= 5; ++seed) {
        auto line = MakeLine(responders, seed);
        const auto statuses = Discover(*line);
        EXPECT_EQ(statuses.back(), 0);
        EXPECT_EQ(AsSet(Table(*line)), AsSet(uids)) << "seed " << seed;
    }
}

TEST(Discovery, BabblingResponderGivesTheCorruptionError) {
    std::vector<Uid> uids = MakeUids(UidSet::Random, 10, 6);
    json responders = Responders(uids);
    responders[2]["faults"] = {{"babble", true}};
    auto line = MakeLine(responders, 1);
    const auto statuses = Discover(*line);
    ASSERT_EQ(statuses.size(), 4u);
    for (int32_t s : statuses)
        EXPECT_EQ(s, status::kCorrupting) << "the error stays until the next pass";
    EXPECT_EQ(line->GetDiscovery().GetState(), Discovery::State::Done);
    EXPECT_LT(line->GetDiscovery().Dubs(), 2000u) << "the search gave up early";
    // A new pass clears it (and meets the same babbler).
    EXPECT_EQ(Cmd(*line, 51).status, 0);
    EXPECT_EQ(Cmd(*line, 52).status, 0);
}

TEST(Discovery, IsRepeatableWithTheSameSeed) {
    std::vector<Uid> uids = MakeUids(UidSet::Random, 50, 12);
    json responders = Responders(uids);
    responders[3]["faults"] = {{"reply_checksum_errors", 0.3}};
    auto a = MakeLine(responders, 77);
    auto b = MakeLine(responders, 77);
    Discover(*a);
    Discover(*b);
    EXPECT_EQ(Table(*a), Table(*b));
    EXPECT_EQ(a->GetWire().Stats().Text(), b->GetWire().Stats().Text());
}

TEST(Discovery, TableOrderIsTheOrderFoundAndTokensCountFromOne) {
    std::vector<Uid> uids = MakeUids(UidSet::Sequential, 5, 1);
    auto line = MakeLine(Responders(uids));
    Discover(*line);
    const auto found = Table(*line);
    ASSERT_EQ(found.size(), 5u);
    // Each token addresses the UID at its place in the table.
    for (size_t i = 0; i < found.size(); ++i) {
        Answer label = Get(*line, int(i + 1), rdm::DEVICE_INFO);
        EXPECT_EQ(label.status, 0);
    }
    EXPECT_EQ(Cmd(*line, 53, B({0})).status, status::kConstraint);
    EXPECT_EQ(Cmd(*line, 53, B({6})).status, status::kConstraint);
    EXPECT_EQ(Cmd(*line, 53).status, status::kDataMissing);
    EXPECT_EQ(Cmd(*line, 53, B({1, 1})).status, status::kDataTooLong);
}

TEST(Discovery, NewPassReplacesTheTable) {
    std::vector<Uid> uids = MakeUids(UidSet::Random, 8, 1);
    auto line = MakeLine(Responders(uids));
    Discover(*line);
    ASSERT_EQ(Table(*line).size(), 8u);
    Control(*line, "responder " + rdm::UidText(uids[2]) + " disconnect");
    Discover(*line);
    const auto found = Table(*line);
    EXPECT_EQ(found.size(), 7u);
    EXPECT_FALSE(AsSet(found).count(uids[2]));
}

TEST(Discovery, TransactionsWaitForThePassToEnd) {
    std::vector<Uid> uids = MakeUids(UidSet::Random, 8, 1);
    auto line = MakeLine(Responders(uids));
    Discover(*line);
    ASSERT_EQ(Cmd(*line, 51).status, 0);
    EXPECT_EQ(Get(*line, 1, rdm::DEVICE_INFO).status, status::kBusy);
    EXPECT_EQ(Cmd(*line, 49, Bytes(6, '\1')).status, status::kBusy);
    line->Advance(60);
    EXPECT_EQ(Get(*line, 1, rdm::DEVICE_INFO).status, 0);
}

TEST(Discovery, MuteCommandAddsAnAnsweringDevice) {
    std::vector<Uid> uids = MakeUids(UidSet::Random, 3, 1);
    auto line = MakeLine(Responders(uids));
    Bytes uid;
    rdm::PutUid(uid, uids[1]);
    EXPECT_EQ(Cmd(*line, 49, uid).status, 0);
    EXPECT_EQ(Table(*line), std::vector<Uid>{uids[1]});
    EXPECT_TRUE(line->GetWire().Find(uids[1])->Muted());
    EXPECT_EQ(Cmd(*line, 49, uid).status, 0) << "again: no second entry";
    EXPECT_EQ(Table(*line).size(), 1u);

    Bytes nobody;
    rdm::PutUid(nobody, 0x123400000001ULL);
    EXPECT_EQ(Cmd(*line, 49, nobody).status, status::kMissing);
    EXPECT_EQ(Cmd(*line, 49, uid.substr(0, 5)).status, status::kDataMissing);
    EXPECT_EQ(Cmd(*line, 49, uid + '\0').status, status::kDataTooLong);
}

TEST(Discovery, UnmutesEveryoneAtTheStartOfAPass) {
    std::vector<Uid> uids = MakeUids(UidSet::Random, 4, 1);
    auto line = MakeLine(Responders(uids));
    Discover(*line);
    for (const auto& responder : line->GetWire().Responders())
        ASSERT_TRUE(responder->Muted());
    ASSERT_EQ(Cmd(*line, 51).status, 0);
    line->Advance(0.0005); // the un-mute broadcast
    for (const auto& responder : line->GetWire().Responders())
        EXPECT_FALSE(responder->Muted());
    EXPECT_EQ(line->GetWire().Stats().unmutes, 2u);
}

} // namespace
} // namespace zol::sim::line::test
