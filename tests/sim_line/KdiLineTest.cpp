// The RDM line inside libzol-sim.so, driven through the exported KDI_Command and SIM_Control as
// the plug-in and a tester drive it: the bundled rigs, discovery, a delayed answer and an answer in
// parts.

#include <cstdint>
#include <cstring>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using CommandFn = int32_t (*)(uint8_t*, int32_t*);
using IntFn = int32_t (*)(int32_t);
using VoidFn = int32_t (*)();
using ControlFn = int32_t (*)(const char*, char*, int32_t);

using Bytes = std::string;

class Library {
public:
    Library() {
        handle_ = dlopen(ZOL_SIM_LIBRARY, RTLD_NOW | RTLD_LOCAL);
        if (handle_ == nullptr)
            return;
        command_ = reinterpret_cast<CommandFn>(dlsym(handle_, "KDI_Command"));
        openPort_ = reinterpret_cast<IntFn>(dlsym(handle_, "KDI_OpenPort"));
        freePort_ = reinterpret_cast<VoidFn>(dlsym(handle_, "KDI_FreePort"));
        control_ = reinterpret_cast<ControlFn>(dlsym(handle_, "SIM_Control"));
    }
    bool Loaded() const { return handle_ && command_ && openPort_ && freePort_ && control_; }

    std::string Control(const std::string& text) {
        char reply[4096] = {};
        const int32_t rc = control_(text.c_str(), reply, sizeof reply);
        return rc < 0 ? "error: " + std::string(reply) : std::string(reply);
    }

    // Loads a rig, runs the clock by hand and opens a port.
    void Start(const std::string& rig, int port) {
        freePort_();
        ASSERT_EQ(Control("rig " + rig).rfind("rig ", 0), 0u) << rig;
        ASSERT_EQ(Control("clock manual").rfind("error", 0), std::string::npos);
        ASSERT_GE(openPort_(port), 0);
    }

    struct Answer {
        int32_t status = 0;
        Bytes data;
    };

    Answer Command(uint8_t code, const Bytes& data = {}) {
        uint8_t buffer[528] = {};
        buffer[0] = code;
        std::memcpy(buffer + 1, data.data(), data.size());
        int32_t length = int32_t(data.size() + 1);
        Answer answer;
        answer.status = command_(buffer, &length);
        if (length > 0 && length <= 528)
            answer.data.assign(reinterpret_cast<const char*>(buffer), size_t(length));
        return answer;
    }

    void Advance(double seconds) { Control("advance " + std::to_string(seconds)); }

private:
    void* handle_ = nullptr;
    CommandFn command_ = nullptr;
    IntFn openPort_ = nullptr;
    VoidFn freePort_ = nullptr;
    ControlFn control_ = nullptr;
};

Library& Lib() {
    static Library library;
    return library;
}

Bytes B(std::initializer_list<int> values) {
    Bytes out;
    for (int v : values)
        out.push_back(char(v));
    return out;
}

Bytes Header(int token, int subDevice, int pid) {
    return B({token, subDevice >> 8, subDevice & 0xFF, pid >> 8, pid & 0xFF});
}

std::string Rig(const char* name) {
    return std::string(ZOL_SIM_RIG_DIR) + "/" + name;
}

// Runs a pass and returns the table.
std::vector<Bytes> Discover(Library& lib, std::vector<int32_t>* statuses = nullptr) {
    EXPECT_EQ(lib.Command(51).status, 0);
    std::vector<Bytes> uids;
    for (int tick = 0; tick < 400; ++tick) {
        lib.Advance(0.25);
        const auto status = lib.Command(52);
        if (statuses)
            statuses->push_back(status.status);
        if (status.status != 0)
            continue;
        EXPECT_EQ(status.data.size(), 2u);
        if (status.data.size() == 2 && status.data[1] == 0) {
            for (int i = 1; i <= uint8_t(status.data[0]); ++i) {
                const auto item = lib.Command(53, B({i}));
                EXPECT_EQ(item.status, 0);
                uids.push_back(item.data);
            }
            break;
        }
    }
    return uids;
}

int TokenOf(const std::vector<Bytes>& uids, const Bytes& uid) {
    for (size_t i = 0; i < uids.size(); ++i)
        if (uids[i] == uid)
            return int(i + 1);
    return 0;
}

class KdiLine : public ::testing::Test {
protected:
    void SetUp() override {
        if (!Lib().Loaded())
            GTEST_FAIL() << "cannot load " << ZOL_SIM_LIBRARY << ": " << dlerror();
    }
};

TEST_F(KdiLine, DefaultStageThroughTheLibrary) {
    Library& lib = Lib();
    lib.Start(Rig("default.json"), 1);
    std::vector<int32_t> statuses;
    const auto uids = Discover(lib, &statuses);
    ASSERT_EQ(uids.size(), 6u);
    EXPECT_GT(statuses.size(), 1u) << "the pass takes modelled time";
    for (int32_t s : statuses)
        EXPECT_EQ(s, 0);

    const int spot = TokenOf(uids, B({0x7F, 0xF1, 0x20, 0x24, 0x01, 0x17}));
    ASSERT_NE(spot, 0);
    const auto label = lib.Command(56, Header(spot, 0, 0x0082));
    EXPECT_EQ(label.status, 0);
    EXPECT_EQ(label.data, "Spot USL");
    EXPECT_EQ(lib.Command(57, Header(spot, 0, 0x0082) + "Spot 2").status, 0);
    EXPECT_EQ(lib.Command(56, Header(spot, 0, 0x0082)).data, "Spot 2");
    EXPECT_EQ(lib.Command(56, Header(spot, 0, 0x0400) + "x").status, 0x21) << "NR_FORMAT_ERROR";

    // The hazer measures slowly: status 16 with the wait, then command 58 collects the answer.
    const int fog = TokenOf(uids, B({0x7F, 0xF4, 0x00, 0x00, 0x00, 0x42}));
    ASSERT_NE(fog, 0);
    const auto delayed = lib.Command(56, Header(fog, 0, 0x0201) + B({0}));
    EXPECT_EQ(delayed.status, 16);
    EXPECT_EQ(delayed.data, B({0x00, 0x0C}));
    lib.Advance(1.3);
    const auto collected = lib.Command(58, B({fog}));
    EXPECT_EQ(collected.status, 0) << "the collected answer is done";
    ASSERT_EQ(collected.data.size(), 11u);
    EXPECT_EQ(collected.data.substr(0, 3), B({0x02, 0x01, 0x00}));
    EXPECT_EQ(lib.Command(56, Header(fog, 0, 0x0082)).status, 17) << "its low-fluid warning is still queued";

    // The pixel processor's parameter list comes in two parts.
    const int wall = TokenOf(uids, B({0x7F, 0xF3, 0x00, 0x02, 0xF0, 0x0D}));
    ASSERT_NE(wall, 0);
    const auto first = lib.Command(56, Header(wall, 0, 0x0050));
    const auto second = lib.Command(56, Header(wall, 0, 0x0050));
    EXPECT_EQ(first.status, 18);
    EXPECT_EQ(second.status, 0);
    // 130 of its own, PARAMETER_DESCRIPTION, and model, maker, label, factory defaults, reset and
    // comms status.
    EXPECT_EQ((first.data.size() + second.data.size()) / 2, 137u);

    const std::string stats = lib.Control("line stats");
    EXPECT_NE(stats.find("dubs="), std::string::npos) << stats;
    EXPECT_NE(stats.find("found=6"), std::string::npos) << stats;
}

TEST_F(KdiLine, FaultyPortReportsTheMuteErrorOnce) {
    Library& lib = Lib();
    lib.Start(Rig("default.json"), 2);
    std::vector<int32_t> statuses;
    const auto uids = Discover(lib, &statuses);
    EXPECT_EQ(uids.size(), 5u);
    int muteErrors = 0;
    for (int32_t s : statuses) {
        if (s == 0x1B)
            ++muteErrors;
        else
            EXPECT_EQ(s, 0);
    }
    EXPECT_EQ(muteErrors, 1);
}

TEST_F(KdiLine, LoadRigFinds255) {
    Library& lib = Lib();
    lib.Start(Rig("load255.json"), 1);
    EXPECT_EQ(Discover(lib).size(), 255u);
}

} // namespace
