// A full discovery pass on the simulated line for 1, 10, 100 and 255 responders with random,
// sequential and one-maker UIDs: DUBs, mutes and modelled line time of the line's search next to
// the classic binary search on the same UID sets. Each figure is the mean over five UID sets (and
// line seeds). The wall time is that of the improved pass in the simulator.

#include "sim/line/RdmLineImpl.h"

#include <benchmark/benchmark.h>
#include <nlohmann/json.hpp>
#include <set>

namespace {

using namespace zol::sim;
using zol::sim::line::LineImpl;
using zol::sim::line::Random;
using zol::sim::rdm::Uid;

enum Set { kRandom = 0, kSequential = 1, kOneMaker = 2 };

std::vector<Uid> MakeUids(int set, size_t count, uint64_t seed) {
    Random random(seed);
    std::set<Uid> seen;
    std::vector<Uid> uids;
    const Uid base = 0x4D4800010000ULL + random.Below(0x10000) * 0x100;
    while (uids.size() < count) {
        Uid uid = 0;
        if (set == kRandom)
            uid = (random.Next() & 0x7FFFFFFFFFFFULL) + 1;
        else if (set == kSequential)
            uid = base + uids.size() + 1;
        else
            uid = 0x4D4800000000ULL | (random.Next() & 0xFFFFFFFEULL);
        if (seen.insert(uid).second)
            uids.push_back(uid);
    }
    return uids;
}

struct Figures {
    double dubs = 0, mutes = 0, lineMs = 0;
    size_t found = 0;
};

Figures RunPass(const std::vector<Uid>& uids, uint64_t seed, bool classic) {
    nlohmann::json responders = nlohmann::json::array();
    for (Uid uid : uids)
        responders.push_back({{"uid", rdm::UidText(uid)}});
    auto made = RdmLine::FromJson(responders, "bench", seed);
    auto* line = static_cast<LineImpl*>(made.get());
    std::string reply;
    if (classic)
        line->Control("line search classic", reply);
    std::string response;
    line->Handle(51, {}, response);
    line->Advance(36000);
    const auto& stats = line->GetWire().Stats();
    Figures f;
    f.dubs = double(stats.dubs);
    f.mutes = double(stats.mutes);
    f.lineMs = stats.lineTimeUs / 1000.0;
    f.found = line->GetDiscovery().Table().size();
    return f;
}

constexpr int kSamples = 5;

void BM_Discovery(benchmark::State& state) {
    const int set = int(state.range(0));
    const auto count = size_t(state.range(1));
    std::vector<std::vector<Uid>> sets;
    for (int s = 0; s < kSamples; ++s)
        sets.push_back(MakeUids(set, count, 100 + s * 7 + count));

    Figures improved, classic;
    for (int s = 0; s < kSamples; ++s) {
        const Figures a = RunPass(sets[s], s + 1, false);
        const Figures b = RunPass(sets[s], s + 1, true);
        if (a.found != count || b.found != count)
            state.SkipWithError("a responder was not found");
        improved.dubs += a.dubs / kSamples;
        improved.mutes += a.mutes / kSamples;
        improved.lineMs += a.lineMs / kSamples;
        classic.dubs += b.dubs / kSamples;
        classic.mutes += b.mutes / kSamples;
        classic.lineMs += b.lineMs / kSamples;
    }
    int s = 0;
    for (auto _ : state) {
        const Figures f = RunPass(sets[s], s + 1, false);
        benchmark::DoNotOptimize(f.dubs);
        s = (s + 1) % kSamples;
    }
    state.SetLabel(set == kRandom ? "random" : set == kSequential ? "sequential" : "one maker");
    state.counters["dubs"] = improved.dubs;
    state.counters["mutes"] = improved.mutes;
    state.counters["line_ms"] = improved.lineMs;
    state.counters["classic_dubs"] = classic.dubs;
    state.counters["classic_mutes"] = classic.mutes;
    state.counters["classic_line_ms"] = classic.lineMs;
}

BENCHMARK(BM_Discovery)
    ->ArgsProduct({{kRandom, kSequential, kOneMaker}, {1, 10, 100, 255}})
    ->ArgNames({"set", "responders"})
    ->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
