#pragma once
// RDM_Device: one discovered responder. It holds the UID, the root device's DEVICE_INFO as read at
// Initialise and the sub devices, root included at index 0, and turns the raw data into display
// texts: version, model, manufacturer, category.

#include "framework/seam/DataObject.h"
#include "rdm/RdmValue.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace zol::rdm {

class RDM_SubDev;

class RDM_Device : public DataObject {
public:
    RDM_Device();
    ~RDM_Device() override;

    std::string DataClass() const override;
    // Reads the UID and DEVICE_INFO of `token` and builds every sub device; true on success.
    bool Initialise(int16_t token);
    // "AA BB : CC DD EE FF".
    std::string UID() const;
    std::string PROTOCOL_VERSION();
    int32_t DEVICE_MODEL_ID();
    std::string DEVICE_MANUFACTURER();
    std::string PRODUCT_CATEGORY();
    int32_t SOFTWARE_VERSION_ID();
    int16_t SUB_DEVICE_COUNT();
    // The raw answer of a QUEUED_MESSAGE request; Client::QueuePending tells whether more wait.
    Bytes Queue(int32_t statusType);
    bool Fault();
    // Sets the flag when `value` is true; it is never cleared.
    void Fault(bool value);
    // The sub device at `index` (0 the root device), or nothing above the count.
    std::shared_ptr<RDM_SubDev> SubDev(int16_t index);

    uint8_t Token() const { return static_cast<uint8_t>(token_); }

private:
    bool fault_ = false;
    int16_t token_ = 0;
    std::string uidText_;
    std::string manufacturerName_;
    Bytes deviceInfo_;
    std::vector<std::shared_ptr<RDM_SubDev>> subDevices_;
    bool initialised_ = false;
};

} // namespace zol::rdm
