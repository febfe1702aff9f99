// A settings file of N values: serialised, parsed back and every value looked up by name, and the
// same file written to disk atomically and loaded again. The time per value stays flat as N grows.
#include "services/settings/SettingsFile.h"

#include <benchmark/benchmark.h>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace {

namespace sf = zol::settings_file;

sf::Document MakeDocument(int count) {
    sf::Document document;
    sf::Section& section = document.Obtain("Software\\KARN\\DMX-ZOL");
    for (int i = 0; i < count; ++i) {
        section.Set("View_" + std::to_string(i) + "_PosX", sf::kTypeDword,
                    std::string("\x2A\x00\x00\x00", 4));
    }
    return document;
}

void BM_ParseAndFindEveryValue(benchmark::State& state) {
    const int count = static_cast<int>(state.range(0));
    const std::string text = sf::Serialize(MakeDocument(count));
    for (auto _ : state) {
        std::string error;
        auto parsed = sf::Parse(text, &error);
        const sf::Section* section = parsed->Find("software\\karn\\dmx-zol");
        long found = 0;
        for (int i = 0; i < count; ++i) {
            found += section->Find("view_" + std::to_string(i) + "_posx") != nullptr;
        }
        benchmark::DoNotOptimize(found);
    }
    state.SetItemsProcessed(state.iterations() * count);
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(text.size()));
}
BENCHMARK(BM_ParseAndFindEveryValue)->RangeMultiplier(10)->Range(1000, 100000)->Unit(benchmark::kMillisecond);

void BM_WriteAndLoadFile(benchmark::State& state) {
    const int count = static_cast<int>(state.range(0));
    const sf::Document document = MakeDocument(count);
    const auto folder =
        std::filesystem::temp_directory_path() / ("zol-settings-bench-" + std::to_string(::getpid()));
    const std::string path = (folder / "DMX-ZOL.conf").string();
    for (auto _ : state) {
        std::string error;
        if (!sf::WriteAtomic(path, sf::Serialize(document), &error)) {
            state.SkipWithError(error.c_str());
            break;
        }
        sf::Document back;
        if (sf::Load(path, back, &error) != sf::LoadResult::Loaded) {
            state.SkipWithError(error.c_str());
            break;
        }
        benchmark::DoNotOptimize(back);
    }
    std::error_code ec;
    std::filesystem::remove_all(folder, ec);
    state.SetItemsProcessed(state.iterations() * count);
}
BENCHMARK(BM_WriteAndLoadFile)->RangeMultiplier(10)->Range(1000, 100000)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
