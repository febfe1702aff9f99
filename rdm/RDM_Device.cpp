#include "rdm/RDM_Device.h"

#include "device_link/core/Client.h"
#include "device_link/core/ErrTrap.h"
#include "rdm/RDM_Call.h"
#include "rdm/RDM_SubDev.h"
#include "rdm/RdmBytes.h"
#include "rdm/tables/RdmTables.h"
#include "services/strings/StrFormat.h"

namespace zol::rdm {

namespace {

const std::string kClass = "RDM_Device";

template <typename T, typename F> T Guarded(const char* suffix, F&& body) {
    T result{};
    ErrTrap::Standard(kClass + suffix, [&] { result = body(); });
    return result;
}

} // namespace

RDM_Device::RDM_Device() = default;
RDM_Device::~RDM_Device() = default;

std::string RDM_Device::DataClass() const {
    return "RDM_Device";
}

bool RDM_Device::Initialise(int16_t token) {
    const std::string source = kClass + ".Initialise";
    int32_t code = 0;
    try {
        token_ = token;
        uidText_ = StrFormat::BytesToHex(Client::DiscoveryItem(token), " ");
        deviceInfo_ = Client::RdmGet(Token(), 0, pid::DEVICE_INFO);
        if (deviceInfo_.empty()) {
            ErrTrap::Raise(err::ErrRDM_Response_Format & 0xFFF, "Device Information");
        }
        const int16_t count = bytes::Str2Int(deviceInfo_, 17);
        subDevices_.assign(static_cast<size_t>(count) + 1, nullptr);
        for (int32_t index = 0; index <= count; ++index) {
            auto subDev = std::make_shared<RDM_SubDev>();
            subDevices_[static_cast<size_t>(index)] = subDev;
            subDev->Initialise(token, static_cast<uint16_t>(index));
        }
        initialised_ = true;
        return true;
    } catch (const std::exception&) {
        code = ErrTrap::Capture(std::current_exception());
    }
    switch (code) {
    case err::ErrRDM_Response_Format:
    case err::ErrRDM_Response_Missing:
    case err::ErrSYS_Device:
        ErrTrap::Report("Remote Device Initialisation", false);
        ErrTrap::Raise(err::ErrSYS_Device & 0xFFF, "");
    case err::ErrSYS_Local:
        ErrTrap::Report(source, false);
        return false;
    default:
        ErrTrap::Report(source, false);
        ErrTrap::ReRaise();
    }
}

std::string RDM_Device::UID() const {
    const std::string head = uidText_.substr(0, 6);
    const std::string tail = uidText_.size() > 12 ? uidText_.substr(uidText_.size() - 12) : uidText_;
    return head + ":" + tail;
}

std::string RDM_Device::PROTOCOL_VERSION() {
    return std::to_string(bytes::Str2Byt(deviceInfo_, 1)) + "." +
           std::to_string(bytes::Str2Byt(deviceInfo_, 2));
}

int32_t RDM_Device::DEVICE_MODEL_ID() {
    // The suffix is spelled without the second underscore.
    return Guarded<int32_t>(".DEVICE_MODELID (Get)", [&] { return bytes::Str2Int(deviceInfo_, 3); });
}

std::string RDM_Device::DEVICE_MANUFACTURER() {
    const std::string source = kClass + ".DEVICE_MANUFACTURER (Get)";
    int32_t code = 0;
    try {
        if (!manufacturerName_.empty()) {
            return manufacturerName_;
        }
        if (subDevices_.empty() || !subDevices_[0]) {
            throw RuntimeFault(rt::ObjectNotSet, "Object variable or With block variable not set");
        }
        const auto& root = subDevices_[0];
        if (root->HasCall(pid::MANUFACTURER_LABEL)) {
            manufacturerName_ = root->ItemPID(pid::MANUFACTURER_LABEL)->GetValue().AsText();
        } else {
            // The key is read from the UID text: the character codes of the first two hex digits.
            manufacturerName_ = tables::ManufacturerText(bytes::Str2Int(uidText_, 1));
        }
        return manufacturerName_;
    } catch (const std::exception&) {
        code = ErrTrap::Capture(std::current_exception());
    }
    switch (code) {
    case err::ErrRDM_Response_Missing:
    case err::ErrAPI_Connection:
    case err::ErrAPI_DeviceMissig:
    case err::ErrAPI_Response_Missing:
    case err::ErrSYS_Comms:
        ErrTrap::ReRaise();
    default:
        ErrTrap::Report(source, false);
        if (code == err::ErrSYS_Local) {
            return {};
        }
        ErrTrap::ReRaise();
    }
}

std::string RDM_Device::PRODUCT_CATEGORY() {
    return Guarded<std::string>(".PRODUCT_CATEGORY (Get)",
                                [&] { return tables::CategoryText(bytes::Str2Int(deviceInfo_, 5)); });
}

int32_t RDM_Device::SOFTWARE_VERSION_ID() {
    return Guarded<int32_t>(".SOFTWARE_VERSION_ID", [&] { return bytes::Str2Lng(deviceInfo_, 7); });
}

int16_t RDM_Device::SUB_DEVICE_COUNT() {
    return Guarded<int16_t>(".SUB_DEVICE_COUNT (Get)", [&] {
        return static_cast<int16_t>(static_cast<int32_t>(subDevices_.size()) - 1);
    });
}

Bytes RDM_Device::Queue(int32_t statusType) {
    const std::string source = kClass + ".Queue";
    Bytes queued;
    ErrTrap::MissingResponse(source, "Message Queue", [&] {
        if (statusType < 0 || statusType > 255) {
            throw RuntimeFault(rt::Overflow, "Overflow");
        }
        queued = Client::RdmQueued(Token(), static_cast<uint8_t>(statusType));
    });
    return queued;
}

bool RDM_Device::Fault() {
    return Guarded<bool>(".Fault (Get)", [&] {
        if (fault_) {
            return true;
        }
        for (const auto& subDev : subDevices_) {
            if (subDev && subDev->Fault()) {
                fault_ = true;
                return true;
            }
        }
        return false;
    });
}

void RDM_Device::Fault(bool value) {
    if (value) {
        fault_ = true;
    }
}

std::shared_ptr<RDM_SubDev> RDM_Device::SubDev(int16_t index) {
    return Guarded<std::shared_ptr<RDM_SubDev>>(".SubDev", [&]() -> std::shared_ptr<RDM_SubDev> {
        if (index > SUB_DEVICE_COUNT()) {
            return nullptr;
        }
        if (index < 0) {
            throw RuntimeFault(rt::SubscriptOutOfRange, "Subscript out of range");
        }
        return subDevices_[static_cast<size_t>(index)];
    });
}

} // namespace zol::rdm
