// zol-rdm: discovers the RDM responders on one port of the local device and lists what each one
// says about itself: identity, DMX footprint and address, sensors and parameters. It talks to the
// device library through Client exactly as the plug-in does, so it works on the simulated
// interface and on a real one alike.
#include "device_link/core/Client.h"
#include "device_link/core/ErrTrap.h"
#include "rdm/RDM_Call.h"
#include "rdm/RDM_Device.h"
#include "rdm/RDM_Sensor.h"
#include "rdm/RDM_SubDev.h"
#include "services/strings/StrFormat.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QThread>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

struct Options {
    std::string library;
    int port = 1;
    bool parameters = false;
    double timeoutSeconds = 60;
};

void Usage() {
    std::fprintf(stderr, "usage: zol-rdm [--library PATH] [--port N] [--parameters] [--timeout SECONDS]\n");
}

bool Parse(int argc, char** argv, Options& options) {
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        const bool hasValue = i + 1 < argc;
        if (arg == "--library" && hasValue) {
            options.library = argv[++i];
        } else if (arg == "--port" && hasValue) {
            options.port = std::atoi(argv[++i]);
            if (options.port < 1) {
                return false;
            }
        } else if (arg == "--timeout" && hasValue) {
            options.timeoutSeconds = std::atof(argv[++i]);
        } else if (arg == "--parameters") {
            options.parameters = true;
        } else {
            return false;
        }
    }
    return true;
}

// Runs a discovery pass as the discovery view does, polling the status every 250 ms. Returns the
// number of responders found, or -1 when the pass did not end in time.
int Discover(double timeoutSeconds) {
    zol::Client::DiscoveryStart();
    QElapsedTimer timer;
    timer.start();
    int lastCount = -1;
    while (timer.elapsed() < static_cast<qint64>(timeoutSeconds * 1000)) {
        int32_t status = 0;
        try {
            status = zol::Client::DiscoveryStatus();
        } catch (const zol::ZolError& error) {
            // A garbled status, a missing answer or a responder that would not mute does not end
            // the pass: the next poll goes on, as the discovery view does.
            const int32_t code = error.Code();
            if (code != zol::err::ErrRDM_Response_Format && code != zol::err::ErrRDM_Response_Missing &&
                code != zol::err::ErrRDM_Response_Mutex) {
                throw;
            }
            std::fprintf(stderr, "\n%s\n", error.Description().c_str());
            QThread::msleep(250);
            continue;
        }
        const int32_t count = status % 256;
        const int32_t state = (status - count) / 256;
        if (count != lastCount) {
            std::fprintf(stderr, "\rdiscovering: %d found", count);
            lastCount = count;
        }
        if (state == 0) {
            std::fprintf(stderr, "\n");
            return count;
        }
        QThread::msleep(250);
    }
    std::fprintf(stderr, "\n");
    return -1;
}

void ListSubDevice(zol::rdm::RDM_SubDev& sub, bool parameters) {
    // The readers below work on the device information of the last refresh.
    sub.Refresh();
    const uint16_t index = sub.Index();
    std::printf("  %s %u: DMX footprint %d, start address %d, personality %u of %u, %u sensor(s)\n",
                index == 0 ? "root device" : "sub device", index, sub.DMX512_FOOTPRINT(),
                sub.DMX512_START_ADDRESS(), sub.DMX512_PERSONALITY_USED(), sub.DMX512_PERSONALITY_COUNT(),
                sub.SENSOR_COUNT());
    for (uint16_t item = 1; item <= sub.SENSOR_COUNT(); ++item) {
        auto sensor = sub.SensorItem(static_cast<uint8_t>(item));
        if (sensor) {
            sensor->Update(false);
            std::printf("    sensor %u \"%s\": %s %s\n", item, sensor->Description().c_str(),
                        sensor->Str(sensor->ValueNow()).c_str(), sensor->UnitName().c_str());
        }
    }
    if (parameters) {
        for (int16_t seq = 1; seq <= sub.CallCount(); ++seq) {
            auto call = sub.ItemSeq(seq);
            if (call) {
                std::printf("    %s %s%s\n", zol::FormatPID(call->PID()).c_str(), call->Description().c_str(),
                            call->Required() ? " (required)" : "");
            }
        }
    }
}

} // namespace

int main(int argc, char** argv) {
    Options options;
    if (!Parse(argc, argv, options)) {
        Usage();
        return 2;
    }
    QCoreApplication app(argc, argv);
    std::unique_ptr<zol::DeviceLibrary> library;
    if (!options.library.empty()) {
        library = zol::LoadDeviceLibrary(options.library);
        zol::Client::SetLibrary(library.get());
    }
    try {
        zol::Client::OpenPort(options.port);
    } catch (const zol::ZolError& error) {
        std::fprintf(stderr, "zol-rdm: port %d could not be opened: 0x%X %s\n", options.port, error.Code(),
                     error.Description().c_str());
        return 1;
    }
    int status = 0;
    try {
        const int found = Discover(options.timeoutSeconds);
        if (found < 0) {
            std::fprintf(stderr, "zol-rdm: the discovery pass did not end within %.0f s\n",
                         options.timeoutSeconds);
            status = 1;
        } else {
            std::printf("%d responder(s) on port %d\n", found, options.port);
        }
        for (int token = 1; token <= found; ++token) {
            auto device = std::make_shared<zol::rdm::RDM_Device>();
            bool read = false;
            try {
                read = device->Initialise(static_cast<int16_t>(token));
            } catch (const zol::ZolError& error) {
                // One responder that fails does not hide the others.
                std::fprintf(stderr, "token %d: 0x%X %s\n", token, error.Code(), error.Description().c_str());
            }
            if (!read) {
                std::printf("%d: %s could not be read\n", token,
                            zol::StrFormat::BytesToHex(zol::Client::DiscoveryItem(token), " ").c_str());
                status = 1;
                continue;
            }
            std::printf("%d: %s  %s, %s, model %d, software %d, %d sub device(s)\n", token,
                        device->UID().c_str(), device->DEVICE_MANUFACTURER().c_str(),
                        device->PRODUCT_CATEGORY().c_str(), device->DEVICE_MODEL_ID(),
                        device->SOFTWARE_VERSION_ID(), device->SUB_DEVICE_COUNT());
            for (int16_t index = 0; index <= device->SUB_DEVICE_COUNT(); ++index) {
                if (auto sub = device->SubDev(index)) {
                    ListSubDevice(*sub, options.parameters);
                }
            }
        }
    } catch (const zol::ZolError& error) {
        std::fprintf(stderr, "zol-rdm: 0x%X %s\n", error.Code(), error.Description().c_str());
        status = 1;
    }
    try {
        zol::Client::ClosePort();
    } catch (const zol::ZolError&) {
    }
    zol::Client::SetLibrary(nullptr);
    return status;
}
