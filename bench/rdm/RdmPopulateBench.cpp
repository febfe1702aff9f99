// CPU time of the RDM model and Client per transaction against the simulated interface, next to
// the modelled line time of the same transactions: populating the 12-sub-device dimmer rack, and
// every responder of the rig.
//
// Counters per iteration:
//   transactions      device library Command calls (GETs, and the polls of delayed answers)
//   stack_us_per_txn  CPU time of our own code per transaction (total minus the time spent inside
//                     the simulated interface)
//   sim_us_per_txn    CPU time inside the simulated interface per transaction, its clock
//                     advancing during delayed answers included
//   line_ms_per_txn   modelled RDM line time per transaction ("line stats" of the simulator)
//
// ZOL_RDM_TEST_RIG names another rig file to run on.

#include "rdm/RDM_Device.h"
#include "tests/rdm/SimSession.h"
#include "tests/support/FakeClock.h"

#include <benchmark/benchmark.h>
#include <cstdlib>
#include <memory>
#include <string>

namespace zol::rdm {
namespace {

struct Rig {
    sim::SimSession session;
    std::unique_ptr<test::FakeClock> clock;
    std::string why;
    int count = 0;
    int rackToken = 0;
    bool ready = false;
    double pumpSeconds = 0; // CPU time of the simulator's clock advancing while the controller waits
};

Rig& TheRig() {
    static Rig rig;
    static bool opened = false;
    if (opened) {
        return rig;
    }
    opened = true;
    const char* file = std::getenv("ZOL_RDM_TEST_RIG");
    if (!rig.session.Open(rig.why, file != nullptr ? file : "")) {
        return rig;
    }
    rig.clock = std::make_unique<test::FakeClock>(12 * 3600.0, 0.01);
    rig.clock->onPump = [] {
        const double start = sim::ThreadCpuSeconds();
        TheRig().session.Advance(0.01);
        TheRig().pumpSeconds += sim::ThreadCpuSeconds() - start;
    };
    rig.count = rig.session.Discover();
    if (rig.count < 1) {
        rig.why = "discovery found no responder";
        return rig;
    }
    for (int token = 1; token <= rig.count && rig.rackToken == 0; ++token) {
        RDM_Device device;
        device.Initialise(static_cast<int16_t>(token));
        if (device.SUB_DEVICE_COUNT() == 12) {
            rig.rackToken = token;
        }
    }
    rig.ready = true;
    return rig;
}

void Populate(benchmark::State& state, bool wholeRig) {
    Rig& rig = TheRig();
    if (!rig.ready) {
        state.SkipWithError(rig.why.c_str());
        return;
    }
    if (!wholeRig && rig.rackToken == 0) {
        state.SkipWithError("the rig has no responder with 12 sub devices");
        return;
    }
    auto& counter = rig.session.Counter();
    double cpu = 0;
    double inside = 0;
    double lineMs = 0;
    long transactions = 0;
    for (auto _ : state) {
        state.PauseTiming();
        rig.session.Control("port 1 line stats reset");
        counter.Clear();
        rig.pumpSeconds = 0;
        state.ResumeTiming();

        const double start = sim::ThreadCpuSeconds();
        if (wholeRig) {
            for (int token = 1; token <= rig.count; ++token) {
                RDM_Device device;
                benchmark::DoNotOptimize(device.Initialise(static_cast<int16_t>(token)));
            }
        } else {
            RDM_Device device;
            benchmark::DoNotOptimize(device.Initialise(static_cast<int16_t>(rig.rackToken)));
        }
        cpu += sim::ThreadCpuSeconds() - start;

        state.PauseTiming();
        inside += counter.insideSeconds + rig.pumpSeconds;
        transactions += counter.commands;
        lineMs += rig.session.LineStat("time_ms");
        state.ResumeTiming();
    }
    if (transactions == 0) {
        return;
    }
    const auto perTxn = static_cast<double>(transactions);
    state.counters["transactions"] =
        benchmark::Counter(static_cast<double>(transactions), benchmark::Counter::kAvgIterations);
    state.counters["stack_us_per_txn"] = (cpu - inside) / perTxn * 1e6;
    state.counters["sim_us_per_txn"] = inside / perTxn * 1e6;
    state.counters["line_ms_per_txn"] = lineMs / perTxn;
}

void BM_PopulateDimmerRack(benchmark::State& state) {
    Populate(state, false);
}
void BM_PopulateWholeRig(benchmark::State& state) {
    Populate(state, true);
}

BENCHMARK(BM_PopulateDimmerRack)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PopulateWholeRig)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace zol::rdm

BENCHMARK_MAIN();
