#pragma once
// RDM_SubDev: one addressable part of a responder (0 is the root device). It owns the list of the
// parameters that can be used on it, one RDM_Call each, ascending by PID, and its sensors, made on
// first use. The list is what the device declares in SUPPORTED_PARAMETERS plus what every device
// must have.

#include "framework/seam/DataObject.h"
#include "rdm/RDM_Call.h"
#include "rdm/RdmValue.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace zol::rdm {

class RDM_Sensor;

class RDM_SubDev : public DataObject, public std::enable_shared_from_this<RDM_SubDev> {
public:
    RDM_SubDev();
    ~RDM_SubDev() override;

    std::string DataClass() const override;
    // Builds the parameter list and sizes the sensor list; true on success.
    bool Initialise(int16_t token, uint16_t index);
    // GET of DEVICE_INFO; the response becomes the device info the cached readers use.
    void Refresh();
    uint8_t Token() const { return static_cast<uint8_t>(token_); }

    // Cached readers of the device info; they run no transaction.
    std::string RDM_PROTOCOL_VERSION();
    std::string DEVICE_MODEL_ID();
    std::string PRODUCT_CATEGORY();
    std::string SOFTWARE_VERSION_ID();
    uint8_t DMX512_PERSONALITY_USED();
    uint8_t DMX512_PERSONALITY_COUNT();
    int16_t DMX512_FOOTPRINT();
    int16_t DMX512_START_ADDRESS();
    int16_t SUB_DEVICE_COUNT();
    uint16_t SENSOR_COUNT();

    uint16_t Index() const { return index_; }
    int16_t CallCount() const { return static_cast<int16_t>(calls_.size()); }
    std::shared_ptr<RDM_SubDev> Self();
    bool HasCall(int32_t pid);
    std::shared_ptr<RDM_Call> ItemPID(int32_t pid);
    // The call at 1-based place `seq`; nothing above the count.
    std::shared_ptr<RDM_Call> ItemSeq(int16_t seq);
    bool Fault() const { return fault_; }
    // Sets the flag when `value` is true; it is never cleared.
    void Fault(bool value);
    // The sensor at 1-based place `item`, read on first use and kept.
    std::shared_ptr<RDM_Sensor> SensorItem(uint8_t item);

private:
    struct WorkEntry {
        int32_t pid;
        bool listed; // came out of SUPPORTED_PARAMETERS
    };
    static void AddCall(std::vector<WorkEntry>& list, int32_t pid);

    bool fault_ = false;
    int16_t token_ = 0;
    uint16_t index_ = 0;
    Bytes deviceInfo_;
    std::vector<std::shared_ptr<RDM_Call>> calls_;     // place n is calls_[n - 1]
    std::vector<std::shared_ptr<RDM_Sensor>> sensors_; // place n is sensors_[n - 1]
    bool initialised_ = false;
};

} // namespace zol::rdm
