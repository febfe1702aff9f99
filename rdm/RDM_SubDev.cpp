#include "rdm/RDM_SubDev.h"

#include "device_link/core/Client.h"
#include "device_link/core/ErrTrap.h"
#include "rdm/RDM_Sensor.h"
#include "rdm/RdmBytes.h"
#include "rdm/tables/RdmTables.h"
#include "services/strings/StrFormat.h"

#include <cstdio>

namespace zol::rdm {

namespace {

const std::string kClass = "RDM_SubDev";

// A word of the data by WordAt, with a position that must fit WordAt's 16-bit argument.
int32_t Word(const Bytes& data, int32_t position, bool isSigned) {
    if (position > 32767) {
        throw RuntimeFault(rt::Overflow, "Overflow");
    }
    return StrFormat::WordAt(data, static_cast<int16_t>(position), isSigned);
}

// A value that must fit a 16-bit signed result.
int16_t Narrow(int32_t value) {
    if (value < -32768 || value > 32767) {
        throw RuntimeFault(rt::Overflow, "Overflow");
    }
    return static_cast<int16_t>(value);
}

// Runs `body` under the standard pattern with the source "RDM_SubDev" + `suffix`; after a reported
// local error the result is the type's empty value.
template <typename T, typename F> T Guarded(const char* suffix, F&& body) {
    T result{};
    ErrTrap::Standard(kClass + suffix, [&] { result = body(); });
    return result;
}

} // namespace

RDM_SubDev::RDM_SubDev() = default;
RDM_SubDev::~RDM_SubDev() = default;

std::string RDM_SubDev::DataClass() const {
    return "RDM_SubDev";
}

std::shared_ptr<RDM_SubDev> RDM_SubDev::Self() {
    return shared_from_this();
}

void RDM_SubDev::AddCall(std::vector<WorkEntry>& list, int32_t pid) {
    for (const auto& entry : list) {
        if (entry.pid == pid) {
            return;
        }
    }
    list.push_back({pid, false});
}

bool RDM_SubDev::Initialise(int16_t token, uint16_t index) {
    const std::string source = kClass + ".Initialise";
    const std::string title =
        (index == 0 ? std::string("Root Device ") : "Sub Device " + std::to_string(index)) +
        " Initialisation";

    // Runs one step of the sequence; a retry repeats that step. False: a local error was reported
    // and the sequence ends there.
    auto step = [&](const std::function<void()>& body) {
        return ErrTrap::Attempt(body, [&](int32_t code) -> ErrTrap::Outcome {
            switch (code) {
            case err::ErrAPI_Connection:
            case err::ErrAPI_Response_Missing:
                if (ErrTrap::Report(title, true)) {
                    return ErrTrap::Outcome::Retry;
                }
                ErrTrap::Raise(err::ErrSYS_Comms & 0xFFF, "");
            case err::ErrRDM_Response_Missing:
                if (ErrTrap::Report(title, true)) {
                    return ErrTrap::Outcome::Retry;
                }
                ErrTrap::Raise(err::ErrSYS_Device & 0xFFF, "");
            case err::ErrSYS_Local:
                ErrTrap::Report(source, false);
                return ErrTrap::Outcome::Stop;
            case err::ErrSYS_Device:
                ErrTrap::ReRaise();
            default:
                ErrTrap::Report(source, false);
                ErrTrap::ReRaise();
            }
        });
    };

    // 1. Token and index.
    token_ = token;
    index_ = index;

    // 2. The two calls every sub device has, both required.
    std::shared_ptr<RDM_Call> info;
    std::shared_ptr<RDM_Call> supported;
    if (!step([&] {
            info = std::make_shared<RDM_Call>();
            info->Initialise(token, index, pid::DEVICE_INFO, true);
            supported = std::make_shared<RDM_Call>();
            supported->Initialise(token, index, pid::SUPPORTED_PARAMETERS, true);
        })) {
        return false;
    }

    // 3. What the device declares.
    Bytes declared;
    if (!step([&] { declared = supported->GetValue().AsText(); })) {
        return false;
    }

    // 4. One entry per two bytes, the count rounded half to even.
    std::vector<WorkEntry> work;
    bool manufacturerSeen = false;
    if (!step([&] {
            work.clear();
            manufacturerSeen = false;
            size_t count = declared.size() / 2;
            if (declared.size() % 2 == 1 && count % 2 == 1) {
                ++count;
            }
            for (size_t i = 1; i <= count; ++i) {
                const int32_t listedPid = Word(declared, static_cast<int32_t>(2 * i - 1), false);
                work.push_back({listedPid, true});
                if (listedPid >= 0x8000 && listedPid <= 0xFFDF) {
                    manufacturerSeen = true;
                }
            }
        })) {
        return false;
    }

    // 5. and 6. The PIDs the program insists on.
    if (index == 0) {
        AddCall(work, pid::DISC_UNIQUE_BRANCH);
        AddCall(work, pid::DISC_MUTE);
        AddCall(work, pid::DISC_UN_MUTE);
    }
    AddCall(work, pid::DEVICE_INFO);
    AddCall(work, pid::IDENTIFY_DEVICE);
    AddCall(work, pid::SUPPORTED_PARAMETERS);
    AddCall(work, pid::SOFTWARE_VERSION_LABEL);

    // 7. A start address of 1 or more adds DMX_START_ADDRESS.
    if (!step([&] {
            const Bytes answer = info->GetValue().AsText();
            if (Word(answer, 15, true) >= 1) {
                AddCall(work, pid::DMX_START_ADDRESS);
            }
        })) {
        return false;
    }

    // 8. Manufacturer PIDs are described through PARAMETER_DESCRIPTION.
    if (manufacturerSeen) {
        AddCall(work, pid::PARAMETER_DESCRIPTION);
    }

    // 9. Bubble sort from the top, ascending by PID.
    bool swapped = true;
    while (swapped) {
        swapped = false;
        for (size_t j = work.size(); j-- > 1;) {
            if (work[j - 1].pid > work[j].pid) {
                std::swap(work[j - 1], work[j]);
                swapped = true;
            }
        }
    }

    // 10. One call per entry; a PID is required when the device did not list it.
    calls_.assign(work.size(), nullptr);
    for (size_t i = 0; i < work.size(); ++i) {
        if (!step([&] {
                const WorkEntry& entry = work[i];
                if (entry.pid == pid::SUPPORTED_PARAMETERS) {
                    calls_[i] = supported;
                } else if (entry.pid == pid::DEVICE_INFO) {
                    calls_[i] = info;
                } else {
                    auto call = std::make_shared<RDM_Call>();
                    call->Initialise(token, index, entry.pid, !entry.listed);
                    calls_[i] = std::move(call);
                }
            })) {
            return false;
        }
    }

    // 11. The sensor list, sized from the sensor count; no sensor is read yet.
    if (!step([&] {
            const Bytes answer = info->GetValue().AsText();
            sensors_.assign(bytes::Str2Byt(answer, 19), nullptr);
        })) {
        return false;
    }

    // 12.
    initialised_ = true;
    return true;
}

void RDM_SubDev::Refresh() {
    deviceInfo_ = Client::RdmGet(Token(), index_, pid::DEVICE_INFO);
}

std::string RDM_SubDev::RDM_PROTOCOL_VERSION() {
    return Guarded<std::string>(".RDM_PROTOCOL_VERSION (Get)", [&] {
        char minor[8];
        std::snprintf(minor, sizeof minor, "%02u", static_cast<unsigned>(bytes::Str2Byt(deviceInfo_, 2)));
        return std::to_string(bytes::Str2Byt(deviceInfo_, 1)) + "." + minor;
    });
}

std::string RDM_SubDev::DEVICE_MODEL_ID() {
    return Guarded<std::string>(".DEVICE_MODEL_ID (Get)", [&] {
        return deviceInfo_.empty() ? std::string() : std::to_string(Word(deviceInfo_, 3, false));
    });
}

std::string RDM_SubDev::PRODUCT_CATEGORY() {
    return Guarded<std::string>(".PRODUCT_CATEGORY (Get)", [&] {
        if (deviceInfo_.empty()) {
            return std::string();
        }
        const int32_t category = Word(deviceInfo_, 5, false);
        return FormatPID(category) + " - " + tables::CategoryText(category);
    });
}

std::string RDM_SubDev::SOFTWARE_VERSION_ID() {
    return Guarded<std::string>(".SOFTWARE_VERSION_ID (Get)", [&] {
        if (deviceInfo_.empty()) {
            return std::string();
        }
        return std::to_string(Guarded<int32_t>(".Str2Lng", [&] { return bytes::Str2Lng(deviceInfo_, 7); }));
    });
}

uint8_t RDM_SubDev::DMX512_PERSONALITY_USED() {
    return Guarded<uint8_t>(".DMX512_PERSONALITY_USED (Get)",
                            [&] { return bytes::Str2Byt(deviceInfo_, 13); });
}

uint8_t RDM_SubDev::DMX512_PERSONALITY_COUNT() {
    return Guarded<uint8_t>(".DMX512_PERSONALITY_COUNT (Get)",
                            [&] { return bytes::Str2Byt(deviceInfo_, 14); });
}

int16_t RDM_SubDev::DMX512_FOOTPRINT() {
    return Guarded<int16_t>(".DMX512_FOOTPRINT (Get)", [&]() -> int16_t {
        return deviceInfo_.empty() ? 0 : Narrow(Word(deviceInfo_, 11, false));
    });
}

int16_t RDM_SubDev::DMX512_START_ADDRESS() {
    return Guarded<int16_t>(".DMX512_START_ADDRESS", [&]() -> int16_t {
        if (deviceInfo_.empty()) {
            return 0;
        }
        const int32_t address = Word(deviceInfo_, 15, true);
        return address >= 1 ? static_cast<int16_t>(address) : 0;
    });
}

int16_t RDM_SubDev::SUB_DEVICE_COUNT() {
    return Guarded<int16_t>(".SUB_DEVICE_COUNT", [&]() -> int16_t {
        return deviceInfo_.empty() ? 0 : Narrow(Word(deviceInfo_, 17, false));
    });
}

uint16_t RDM_SubDev::SENSOR_COUNT() {
    return Guarded<uint16_t>(".SENSOR_COUNT", [&]() -> uint16_t { return bytes::Str2Byt(deviceInfo_, 19); });
}

bool RDM_SubDev::HasCall(int32_t pid) {
    return Guarded<bool>(".HasCall", [&] {
        for (const auto& call : calls_) {
            if (call->PID() == pid) {
                return true;
            }
        }
        return false;
    });
}

std::shared_ptr<RDM_Call> RDM_SubDev::ItemPID(int32_t pid) {
    return Guarded<std::shared_ptr<RDM_Call>>(".ItemPID", [&]() -> std::shared_ptr<RDM_Call> {
        for (const auto& call : calls_) {
            if (call->PID() == pid) {
                return call;
            }
        }
        return nullptr;
    });
}

std::shared_ptr<RDM_Call> RDM_SubDev::ItemSeq(int16_t seq) {
    return Guarded<std::shared_ptr<RDM_Call>>(".ItemSeq", [&]() -> std::shared_ptr<RDM_Call> {
        if (seq > CallCount()) {
            return nullptr;
        }
        if (seq < 1) {
            throw RuntimeFault(rt::SubscriptOutOfRange, "Subscript out of range");
        }
        return calls_[static_cast<size_t>(seq - 1)];
    });
}

void RDM_SubDev::Fault(bool value) {
    if (value) {
        fault_ = true;
    }
}

std::shared_ptr<RDM_Sensor> RDM_SubDev::SensorItem(uint8_t item) {
    const std::string source = kClass + ".SensorItem";
    int32_t code = 0;
    try {
        if (item > sensors_.size()) {
            ErrTrap::RaiseLocal("Sensor Item Requested is out of range");
        }
        if (item < 1) {
            throw RuntimeFault(rt::SubscriptOutOfRange, "Subscript out of range");
        }
        auto& entry = sensors_[item - 1];
        if (!entry) {
            auto sensor = std::make_shared<RDM_Sensor>();
            sensor->Initialise(this, item);
            entry = std::move(sensor);
        }
        return entry;
    } catch (const std::exception&) {
        code = ErrTrap::Capture(std::current_exception());
    }
    if (code == err::ErrSYS_Comms || code == err::ErrSYS_Device) {
        ErrTrap::ReRaise();
    }
    ErrTrap::Report(source, false);
    if (code == err::ErrSYS_Local) {
        return nullptr;
    }
    ErrTrap::ReRaise();
}

} // namespace zol::rdm
