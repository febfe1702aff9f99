// Bad device replies: random answers and random failure statuses to every request of a device's
// population, its sensors and its status messages give numbered errors, run-time faults or
// reported boxes, never a crash, a hang or an exception of another kind.

#include "rdm/RDM_Device.h"
#include "rdm/RDM_Sensor.h"
#include "rdm/RDM_Status.h"
#include "rdm/RDM_SubDev.h"
#include "tests/rdm/RdmTestSupport.h"
#include "tests/support/FakeClock.h"

#include <random>

namespace zol::rdm::testing {
namespace {

class RandomReplies : public RdmTest {
protected:
    RandomReplies() : random(20240501) {
        ui.AllowAnyBoxes();
        lib.SetFallback([this](const Bytes& request, Bytes& response) { return Answer(request, response); });
    }

    Bytes RandomBytes(size_t most) {
        Bytes out(std::uniform_int_distribution<size_t>(0, most)(random), '\0');
        for (char& c : out) {
            c = static_cast<char>(std::uniform_int_distribution<int>(0, 255)(random));
        }
        return out;
    }

    int32_t Answer(const Bytes& request, Bytes& response) {
        const int roll = std::uniform_int_distribution<int>(0, 99)(random);
        if (roll < 4) {
            static const int32_t failures[] = {0x13, 0x15, 0x16, 0x18, 0x1D, 0x20,
                                               0x21, 0x25, 0x26, -1,   -2,   8};
            return failures[std::uniform_int_distribution<size_t>(0, std::size(failures) - 1)(random)];
        }
        if (roll < 6) {
            response = B({0x00, 0x03}); // a short wait, then the answer
            return 16;
        }
        if (roll < 8) {
            response = RandomBytes(8);
            return 18;
        }
        const auto code = static_cast<uint8_t>(request[0]);
        if (code == 56 && request.size() >= 6 && request[4] == 0x00 && request[5] == 0x60) {
            // DEVICE_INFO: random, with a small sub device count so that a pass stays short.
            response = RandomBytes(24);
            if (response.size() >= 18) {
                response[16] = 0;
                response[17] = static_cast<char>(std::uniform_int_distribution<int>(0, 3)(random));
            }
            return 0;
        }
        if (code == 56 && request.size() >= 6 && request[4] == 0x00 && request[5] == 0x50) {
            // SUPPORTED_PARAMETERS: mostly whole PIDs, some of them the ones the model reads.
            static const int known[] = {0x0030, 0x0031, 0x0081, 0x0200, 0x0201, 0x0202, 0x8001, 0x0060};
            const int n = std::uniform_int_distribution<int>(0, 6)(random);
            for (int i = 0; i < n; ++i) {
                const int p = known[std::uniform_int_distribution<size_t>(0, std::size(known) - 1)(random)];
                response += Word(p);
            }
            if (std::uniform_int_distribution<int>(0, 9)(random) == 0) {
                response += RandomBytes(3);
            }
            return 0;
        }
        response = RandomBytes(40);
        return 0;
    }

    std::mt19937 random;
    test::FakeClock clock;
};

TEST_F(RandomReplies, PopulationSensorsAndStatusNeverFailOutsideNumberedErrors) {
    int built = 0;
    int raised = 0;
    auto attempt = [&](const std::function<void()>& body) {
        try {
            body();
        } catch (const ZolError&) {
            ++raised;
        } catch (const RuntimeFault&) {
            ++raised; // a value read from a record that is too short, with no handler of its own
        }
    };
    for (int round = 0; round < 1000; ++round) {
        RDM_Device device;
        bool ready = false;
        attempt([&] { ready = device.Initialise(1); });
        if (!ready) {
            continue;
        }
        ++built;
        for (int16_t index = 0; index <= device.SUB_DEVICE_COUNT(); ++index) {
            auto subDev = device.SubDev(index);
            attempt([&] {
                subDev->Refresh();
                (void)subDev->PRODUCT_CATEGORY();
                (void)subDev->DMX512_START_ADDRESS();
            });
            for (uint16_t item = 1; item <= 4; ++item) {
                attempt([&] {
                    if (auto sensor = subDev->SensorItem(static_cast<uint8_t>(item))) {
                        sensor->Update(false);
                        (void)sensor->Str(sensor->ValueNow());
                    }
                });
            }
            attempt([&] {
                RDM_Status status;
                status.Initialise(RandomBytes(12), subDev);
                (void)status.Message();
            });
        }
        attempt([&] { (void)device.DEVICE_MANUFACTURER(); });
        attempt([&] { (void)device.PRODUCT_CATEGORY(); });
    }
    EXPECT_GT(built, 0);
    EXPECT_GT(raised, 0);
    EXPECT_FALSE(ui.boxes.empty());
}

} // namespace
} // namespace zol::rdm::testing
