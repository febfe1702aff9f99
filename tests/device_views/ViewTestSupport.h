#pragma once
// Helpers shared by the local-device view tests: event-loop waits, a frame-timing device model
// for the scripted library, and closing views between tests.

#include "device_link/core/Client.h"
#include "framework/form/Forms.h"
#include "tests/support/ScriptedDeviceLibrary.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEvent>
#include <QTest>
#include <algorithm>
#include <cstdint>
#include <functional>
#include <string>

namespace zol::test {

// Pumps the event loop until `done` holds or `ms` have passed; true when it held.
inline bool WaitFor(const std::function<bool()>& done, int ms = 5000) {
    QElapsedTimer clock;
    clock.start();
    while (!done()) {
        if (clock.elapsed() > ms) {
            return false;
        }
        QTest::qWait(5);
    }
    return true;
}

// Unloads every open view and lets the deferred deletions run.
inline void CloseAllViews() {
    Forms::UnloadAll();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

// A device's frame timing as the scripted library answers it: present value, minimum and maximum
// of each quantity, with refusals of out-of-range values (status 1) and, when `coupled`, a time out
// that must be at least 100 / frame rate ms: a lower rate lengthens the time out, a shorter time
// out raises the rate.
struct FrameModel {
    struct Quantity {
        int32_t value, minimum, maximum, deviceDefault;
    };
    Quantity rate{40, 1, 44, 40};
    Quantity breakTime{176, 88, 1000, 176};
    Quantity markTime{12, 8, 1000, 12};
    Quantity delay{3, 0, 50, 3};
    bool coupled = true;
    bool refuseFortyRate = false;
    int32_t refuseStatus = 0; // when not 0: every set answers this status

    static int32_t Word(const Bytes& r, size_t at) {
        return static_cast<unsigned char>(r[at]) + 256 * static_cast<unsigned char>(r[at + 1]);
    }
    static Bytes Three(const Quantity& q) { return B({q.value, q.minimum, q.maximum}); }
    static Bytes Six(const Quantity& q) {
        return B({q.value & 0xFF, q.value >> 8, q.minimum & 0xFF, q.minimum >> 8, q.maximum & 0xFF,
                  q.maximum >> 8});
    }
    static int32_t MinimumDelayFor(int32_t frameRate) {
        return frameRate > 0 ? (100 + frameRate - 1) / frameRate : 0;
    }

    int32_t Set(Quantity& q, int32_t value) {
        if (refuseStatus != 0) {
            return refuseStatus;
        }
        if (value == 0 && &q != &rate) {
            q.value = q.deviceDefault;
            return 0;
        }
        if (value < q.minimum || value > q.maximum) {
            return 1;
        }
        q.value = value;
        return 0;
    }

    int32_t Respond(const Bytes& request, Bytes& response) {
        const auto code = static_cast<unsigned char>(request[0]);
        switch (code) {
        case 17:
            response = Three(rate);
            return 0;
        case 18: {
            const int32_t value = static_cast<unsigned char>(request[1]);
            if (refuseFortyRate && value == 40) {
                return 1;
            }
            const int32_t status = Set(rate, value);
            if (status == 0 && coupled) {
                delay.value = std::max(delay.value, MinimumDelayFor(rate.value));
            }
            return status;
        }
        case 19:
            response = Six(markTime);
            return 0;
        case 20:
            return Set(markTime, Word(request, 1));
        case 21:
            response = Six(breakTime);
            return 0;
        case 22:
            return Set(breakTime, Word(request, 1));
        case 23:
            response = Three(delay);
            return 0;
        case 24: {
            const int32_t status = Set(delay, static_cast<unsigned char>(request[1]));
            if (status == 0 && coupled) {
                while (rate.value < rate.maximum && delay.value < MinimumDelayFor(rate.value)) {
                    ++rate.value;
                }
            }
            return status;
        }
        default:
            return 2; // command not known
        }
    }

    void Attach(ScriptedDeviceLibrary& library) {
        library.SetFallback(
            [this](const Bytes& request, Bytes& response) { return Respond(request, response); });
    }
};

} // namespace zol::test
