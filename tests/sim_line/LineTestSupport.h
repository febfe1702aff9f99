#pragma once
// Helpers for driving an RDM line the way the device does: command codes with their data, modelled
// time in large steps, and UID sets for discovery.

#include "sim/line/RdmLineImpl.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <memory>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <vector>

namespace zol::sim::line::test {

using nlohmann::json;
using rdm::Bytes;
using rdm::Uid;

inline std::unique_ptr<LineImpl> MakeLine(const json& responders, uint64_t seed = 1) {
    auto line = RdmLine::FromJson(responders, "test rig: ports[0].responders", seed);
    return std::unique_ptr<LineImpl>(static_cast<LineImpl*>(line.release()));
}

struct Answer {
    int32_t status = -1;
    Bytes data;
};

inline Answer Cmd(RdmLine& line, uint8_t code, const Bytes& data = {}) {
    Answer answer;
    answer.status = line.Handle(code, data, answer.data);
    return answer;
}

inline Bytes B(std::initializer_list<int> values) {
    Bytes out;
    for (int v : values)
        out.push_back(char(v));
    return out;
}

inline Bytes U16(uint16_t value) {
    Bytes out;
    rdm::PutU16(out, value);
    return out;
}

inline Bytes U32(uint32_t value) {
    Bytes out;
    rdm::PutU32(out, value);
    return out;
}

// Data of commands 56 and 57: token, sub device, PID, parameter data.
inline Bytes Header(int token, uint16_t subDevice, uint16_t pid, const Bytes& data = {}) {
    Bytes out(1, char(token));
    rdm::PutU16(out, subDevice);
    rdm::PutU16(out, pid);
    return out + data;
}

inline Answer Get(RdmLine& line, int token, uint16_t pid, const Bytes& data = {}, uint16_t subDevice = 0) {
    return Cmd(line, 56, Header(token, subDevice, pid, data));
}

inline Answer Set(RdmLine& line, int token, uint16_t pid, const Bytes& data = {}, uint16_t subDevice = 0) {
    return Cmd(line, 57, Header(token, subDevice, pid, data));
}

inline std::string Control(RdmLine& line, const std::string& command) {
    std::string reply;
    EXPECT_TRUE(line.Control(command, reply)) << command;
    return reply;
}

// The discovered table as commands 52 and 53 give it.
inline std::vector<Uid> Table(RdmLine& line) {
    std::vector<Uid> uids;
    Answer status = Cmd(line, 52);
    if (status.status != 0 || status.data.size() != 2)
        return uids;
    for (int i = 1; i <= uint8_t(status.data[0]); ++i) {
        Answer item = Cmd(line, 53, Bytes(1, char(i)));
        EXPECT_EQ(item.status, 0);
        EXPECT_EQ(item.data.size(), 6u);
        uids.push_back(rdm::GetUid(item.data, 0));
    }
    return uids;
}

// Starts a pass and lets it run to its end; returns the statuses of command 52 read at the end
// until one gives state 0.
inline std::vector<int32_t> Discover(RdmLine& line, double seconds = 3600) {
    EXPECT_EQ(Cmd(line, 51).status, 0);
    std::vector<int32_t> statuses;
    // Small steps, so that little more time passes than the pass takes.
    for (double t = 0; t < seconds; t += 0.05) {
        line.Advance(0.05);
        const Answer status = Cmd(line, 52);
        if (status.status != 0) {
            statuses.push_back(status.status);
            break;
        }
        EXPECT_EQ(status.data.size(), 2u);
        if (status.data.size() == 2 && status.data[1] == 0) {
            statuses.push_back(0);
            return statuses;
        }
    }
    while (statuses.size() < 4 && (statuses.empty() || statuses.back() != 0)) {
        const Answer status = Cmd(line, 52);
        statuses.push_back(status.status);
        if (status.status == 0) {
            EXPECT_EQ(status.data.size(), 2u);
            EXPECT_EQ(status.data.substr(1), Bytes(1, '\0')) << "pass still running";
        }
    }
    return statuses;
}

// Token of a UID in the table, 0 when missing.
inline int TokenOf(RdmLine& line, Uid uid) {
    const auto uids = Table(line);
    const auto it = std::find(uids.begin(), uids.end(), uid);
    return it == uids.end() ? 0 : int(it - uids.begin()) + 1;
}

enum class UidSet { Random, Sequential, OneMaker };

inline const char* UidSetName(UidSet set) {
    switch (set) {
    case UidSet::Random:
        return "random";
    case UidSet::Sequential:
        return "sequential";
    case UidSet::OneMaker:
        return "one maker";
    }
    return "";
}

// `count` distinct UIDs: random over the whole space, one maker's consecutive serial numbers, or
// random serial numbers of one maker.
inline std::vector<Uid> MakeUids(UidSet set, size_t count, uint64_t seed) {
    Random random(seed);
    std::set<Uid> seen;
    std::vector<Uid> uids;
    while (uids.size() < count) {
        Uid uid = 0;
        switch (set) {
        case UidSet::Random:
            uid = (random.Next() & 0x7FFFFFFFFFFFULL) + 1;
            break;
        case UidSet::Sequential:
            uid = 0x4D4800010000ULL + uids.size() + 1;
            break;
        case UidSet::OneMaker:
            uid = 0x4D4800000000ULL | (random.Next() & 0xFFFFFFFEULL);
            break;
        }
        if (uid != 0 && seen.insert(uid).second)
            uids.push_back(uid);
    }
    return uids;
}

inline json Responders(const std::vector<Uid>& uids) {
    json list = json::array();
    for (Uid uid : uids)
        list.push_back({{"uid", rdm::UidText(uid)}});
    return list;
}

} // namespace zol::sim::line::test
