#pragma once
// Shared pieces of the RDM model tests: the request bytes of RDM transactions, DEVICE_INFO
// answers, and a fixture with a scripted device library and a scripted UI.

#include "device_link/core/Client.h"
#include "device_link/core/ErrTrap.h"
#include "rdm/RDM_Call.h"
#include "tests/support/ScriptedDeviceLibrary.h"
#include "tests/support/ScriptedUi.h"

#include <cstdint>
#include <functional>
#include <gtest/gtest.h>
#include <string>

namespace zol::rdm::testing {

using test::B;
using test::Bytes;
using test::H;

inline Bytes Word(int32_t value) {
    return B({(value >> 8) & 0xFF, value & 0xFF});
}

inline Bytes Long(uint32_t value) {
    return B({static_cast<int>((value >> 24) & 0xFF), static_cast<int>((value >> 16) & 0xFF),
              static_cast<int>((value >> 8) & 0xFF), static_cast<int>(value & 0xFF)});
}

// Command 56 (GET) or 57 (SET): token, sub device high byte first, PID high byte first, data.
inline Bytes Request(int code, int token, int subDevice, int pid, const Bytes& data = {}) {
    return B({code, token, (subDevice >> 8) & 0xFF, subDevice & 0xFF, (pid >> 8) & 0xFF, pid & 0xFF}) + data;
}
inline Bytes Get(int token, int subDevice, int pid, const Bytes& data = {}) {
    return Request(56, token, subDevice, pid, data);
}
inline Bytes Set(int token, int subDevice, int pid, const Bytes& data = {}) {
    return Request(57, token, subDevice, pid, data);
}

struct Info {
    int major = 1;
    int minor = 0;
    int model = 0x0102;
    int category = 0x0101;
    uint32_t software = 0x01020304;
    int footprint = 16;
    int personality = 1;
    int personalities = 2;
    int startAddress = 1;
    int subDevices = 0;
    int sensors = 0;
};

// The 19 bytes of a DEVICE_INFO answer.
inline Bytes DeviceInfo(const Info& i) {
    return B({i.major, i.minor}) + Word(i.model) + Word(i.category) + Long(i.software) + Word(i.footprint) +
           B({i.personality, i.personalities}) + Word(i.startAddress) + Word(i.subDevices) + B({i.sensors});
}

// A run of two-byte PIDs, as SUPPORTED_PARAMETERS carries them.
inline Bytes Pids(std::initializer_list<int> pids) {
    Bytes out;
    for (int p : pids) {
        out += Word(p);
    }
    return out;
}

// A PARAMETER_DESCRIPTION answer for `pid`: command class, min, max, default, description.
inline Bytes ParameterDescription(int pid, int commandClass, uint32_t min, uint32_t max, uint32_t def,
                                  const Bytes& description) {
    return Word(pid) + B({1, 3, commandClass, 0, 0, 0}) + Long(min) + Long(max) + Long(def) + description;
}

class RdmTest : public ::testing::Test {
protected:
    RdmTest() {
        ErrTrap::ResetForTest();
        Client::ResetStateForTest();
    }

    // Scripts the population of a sub device: SUPPORTED_PARAMETERS, DEVICE_INFO, one
    // PARAMETER_DESCRIPTION per manufacturer PID (in the order given), DEVICE_INFO.
    void ExpectPopulation(int token, int subDevice, const Bytes& supported, const Bytes& info,
                          const std::vector<std::pair<int, Bytes>>& descriptions = {}) {
        lib.Expect(Get(token, subDevice, pid::SUPPORTED_PARAMETERS), 0, supported);
        lib.Expect(Get(token, subDevice, pid::DEVICE_INFO), 0, info);
        for (const auto& [manPid, answer] : descriptions) {
            lib.Expect(Get(token, subDevice, pid::PARAMETER_DESCRIPTION, Word(manPid)), 0, answer);
        }
        lib.Expect(Get(token, subDevice, pid::DEVICE_INFO), 0, info);
    }

    // The error a call lets through, or a default error when it ran through.
    static ZolError Thrown(const std::function<void()>& body) {
        try {
            body();
        } catch (const ZolError& error) {
            return error;
        }
        ADD_FAILURE() << "no error was raised";
        return ZolError(0, "", "");
    }

    test::ScriptedDeviceLibrary lib;
    test::ScriptedUi ui;
};

} // namespace zol::rdm::testing
