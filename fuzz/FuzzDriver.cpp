// A driver for the fuzz targets when they are not built against libFuzzer: runs the target over its
// seed inputs and over a bounded number of deterministic mutations of them, so the suite exercises
// every target on each run. With file arguments it runs exactly those inputs (a crash reproducer).
//
// Built with clang and -DZOL_LIBFUZZER=ON the same targets link against libFuzzer instead.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);
// Seed inputs of the target, one string each.
std::vector<std::string> ZolFuzzSeeds();

namespace {

void Run(const std::string& input) {
    LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(input.data()), input.size());
}

std::string Mutate(std::string input, std::mt19937& rng, const std::vector<std::string>& seeds) {
    std::uniform_int_distribution<int> byte(0, 255);
    const int rounds = 1 + static_cast<int>(rng() % 4);
    for (int r = 0; r < rounds; ++r) {
        switch (rng() % 6) {
        case 0: // flip a bit
            if (!input.empty()) {
                input[rng() % input.size()] ^= static_cast<char>(1u << (rng() % 8));
            }
            break;
        case 1: // replace a byte
            if (!input.empty()) {
                input[rng() % input.size()] = static_cast<char>(byte(rng));
            }
            break;
        case 2: // insert a byte
            input.insert(input.begin() + static_cast<long>(rng() % (input.size() + 1)),
                         static_cast<char>(byte(rng)));
            break;
        case 3: // cut the tail
            if (!input.empty()) {
                input.resize(rng() % input.size());
            }
            break;
        case 4: { // splice with another seed
            const std::string& other = seeds[rng() % seeds.size()];
            if (!other.empty()) {
                size_t at = rng() % other.size();
                input += other.substr(at, rng() % (other.size() - at + 1));
            }
            break;
        }
        default: // duplicate a run
            if (!input.empty()) {
                size_t at = rng() % input.size();
                input.insert(at, input.substr(at, 1 + rng() % 16));
            }
            break;
        }
    }
    return input;
}

} // namespace

int main(int argc, char** argv) {
    if (argc > 1 && std::string(argv[1]) != "--iterations") {
        for (int i = 1; i < argc; ++i) {
            std::ifstream in(argv[i], std::ios::binary);
            Run(std::string(std::istreambuf_iterator<char>(in), {}));
        }
        return 0;
    }
    long iterations = 20000;
    if (argc > 2) {
        iterations = std::strtol(argv[2], nullptr, 10);
    }
    std::vector<std::string> seeds = ZolFuzzSeeds();
    seeds.emplace_back();
    for (const auto& seed : seeds) {
        Run(seed);
    }
    std::mt19937 rng(20261121u);
    std::vector<std::string> pool = seeds;
    for (long i = 0; i < iterations; ++i) {
        std::string input = Mutate(pool[rng() % pool.size()], rng, seeds);
        Run(input);
        if (pool.size() < 256 && rng() % 8 == 0) {
            pool.push_back(std::move(input));
        }
    }
    std::printf("%ld inputs run\n", iterations + static_cast<long>(seeds.size()));
    return 0;
}
