// Random requests and damaged rigs: the device answers with a status, never with a crash.

#include "SimHarness.h"

#include <random>
#include <set>

namespace zol::sim::test {
namespace {

TEST(SimRobustness, RandomRequestsGetAStatusAndAReplyThatFits) {
    SimHarness h;
    h.Ctl("factory on");
    std::mt19937 random(20240417);
    const std::set<int32_t> device = {0, 1, 2, 3, 4, 5, 6, 7, 8};
    for (int i = 0; i < 20000; ++i) {
        // Mostly known codes, with lengths around what they take.
        const int code = (i % 4 == 0)
                             ? static_cast<int>(random() % 256)
                             : std::vector<int>{0,  1,  2,  3,  4,  17, 18, 19, 20,  21, 22,
                                                23, 24, 34, 35, 37, 40, 72, 79, 224, 226}[random() % 21];
        const size_t length = (i % 50 == 0) ? random() % 528 : random() % 8;
        Bytes request(1, static_cast<char>(code));
        for (size_t b = 0; b < length; ++b) {
            request += static_cast<char>(random() % 256);
        }
        const Reply r = h.Cmd(request);
        if (code == 49 || code == 51 || code == 52 || code == 53 || code == 56 || code == 57 || code == 58 ||
            code == 61) {
            EXPECT_LE(r.data.size(), 528u); // the RDM line has statuses of its own
            continue;
        }
        ASSERT_TRUE(device.count(r.status) == 1) << "code " << code << " status " << r.status;
        ASSERT_LE(r.data.size(), 528u);
        if (i % 1000 == 0) {
            h.Ctl("advance 0.3");
        }
    }
    // The device still works as it should.
    h.Ctl("reset");
    ASSERT_EQ(h.sim.OpenPort(1), 0);
    EXPECT_EQ(h.Cmd({0x00, 0x01}).data, B({2, 0}));
}

TEST(SimRobustness, DamagedRigsAreTakenOrRefusedWithAReason) {
    const std::string good = DefaultRigText();
    std::mt19937 random(7);
    SimHarness h("default", 0);
    int refused = 0;
    for (int i = 0; i < 100; ++i) {
        std::string text = good;
        const int edits = 1 + static_cast<int>(random() % 3);
        for (int e = 0; e < edits; ++e) {
            const size_t at = random() % text.size();
            switch (random() % 3) {
            case 0:
                text.erase(at, 1 + random() % 8);
                break;
            case 1:
                text[at] = static_cast<char>(random() % 128);
                break;
            default:
                text.insert(at, 1, "{}[]\",:0-9 "[random() % 11]);
                break;
            }
        }
        const std::string path = WriteTemp("damaged.json", text);
        std::string reply;
        const int32_t rc = h.CtlRc("rig " + path, &reply);
        if (rc < 0) {
            ++refused;
            EXPECT_EQ(reply.rfind("Rig refused: " + path + ": ", 0), 0u) << reply;
            EXPECT_EQ(h.sim.PortCount(), 0);
        } else {
            EXPECT_GE(h.sim.PortCount(), 0);
        }
    }
    EXPECT_GT(refused, 0);
}

} // namespace
} // namespace zol::sim::test
