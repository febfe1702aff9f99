#pragma once
// A simulated interface of its own for each test: a Simulator with a chosen rig, its clock
// stopped, so time moves only when the test says "advance".

#include "sim/device/Simulator.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <initializer_list>
#include <string>
#include <thread>

namespace zol::sim::test {

using Bytes = std::string;

inline Bytes B(std::initializer_list<int> values) {
    Bytes out;
    for (int v : values) {
        out += static_cast<char>(v & 0xFF);
    }
    return out;
}

inline std::string DataDir() {
    return ZOL_SIM_TEST_DATA;
}

struct Reply {
    int32_t status = 0;
    Bytes data;
};

// Writes `text` to a fresh file in the test's temporary folder and returns its path.
inline std::string WriteTemp(const std::string& name, const std::string& text) {
    const auto dir =
        std::filesystem::temp_directory_path() /
        ("zol_sim_" + std::string(::testing::UnitTest::GetInstance()->current_test_info()->name()));
    std::filesystem::create_directories(dir);
    const auto path = dir / name;
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << text;
    return path.string();
}

class SimHarness {
public:
    // `rig`: "default" for the built-in rig, otherwise a path. `open`: the port to open, 0 none.
    explicit SimHarness(const std::string& rig = "default", int open = 1) {
        Ctl("rig " + rig);
        Ctl("clock manual");
        if (open > 0) {
            EXPECT_EQ(sim.OpenPort(open), 0);
        }
    }

    Reply Cmd(const Bytes& request) {
        uint8_t buffer[528] = {};
        std::copy(request.begin(), request.end(), buffer);
        int32_t length = static_cast<int32_t>(request.size());
        Reply r;
        r.status = sim.Command(buffer, &length);
        if (length > 0) {
            r.data.assign(reinterpret_cast<const char*>(buffer), static_cast<size_t>(length));
        }
        return r;
    }
    Reply Cmd(std::initializer_list<int> request) { return Cmd(B(request)); }

    // A console command that must succeed; its reply.
    std::string Ctl(const std::string& command) {
        std::string reply;
        const int32_t rc = CtlRc(command, &reply);
        EXPECT_GE(rc, 0) << command << ": " << reply;
        return reply;
    }

    int32_t CtlRc(const std::string& command, std::string* reply = nullptr) {
        char text[4096] = {};
        const int32_t rc = sim.Control(command.c_str(), text, sizeof text);
        if (reply != nullptr) {
            *reply = text;
        }
        return rc;
    }

    std::string LastError() {
        char text[256] = {};
        sim.LastError(text, sizeof text);
        return text;
    }

    // The value of one key=value field of "state".
    std::string State(const std::string& key, int port = 0) {
        const std::string state =
            Ctl((port > 0 ? "port " + std::to_string(port) + " " : std::string()) + "state");
        const auto at = state.find(key + "=");
        if (at == std::string::npos) {
            return "(missing " + key + ")";
        }
        const auto from = at + key.size() + 1;
        return state.substr(from, state.find(' ', from) - from);
    }

    Simulator sim;
};

inline int Le16(const Bytes& b, size_t at) {
    return static_cast<uint8_t>(b[at]) | (static_cast<uint8_t>(b[at + 1]) << 8);
}

} // namespace zol::sim::test
