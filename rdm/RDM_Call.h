#pragma once
// RDM_Call: one parameter (one PID) of one sub device of one remote responder. The catalogue half
// names and classifies the PID; GetValue and SetValue carry a typed value to and from the
// responder, one transaction per call, nothing cached.

#include "framework/seam/DataObject.h"
#include "rdm/RdmValue.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace zol::rdm {

// PIDs the model itself uses.
namespace pid {
inline constexpr int32_t DISC_UNIQUE_BRANCH = 0x0001;
inline constexpr int32_t DISC_MUTE = 0x0002;
inline constexpr int32_t DISC_UN_MUTE = 0x0003;
inline constexpr int32_t STATUS_MESSAGES = 0x0030;
inline constexpr int32_t STATUS_ID_DESCRIPTION = 0x0031;
inline constexpr int32_t SUPPORTED_PARAMETERS = 0x0050;
inline constexpr int32_t PARAMETER_DESCRIPTION = 0x0051;
inline constexpr int32_t DEVICE_INFO = 0x0060;
inline constexpr int32_t PRODUCT_DETAIL_ID_LIST = 0x0070;
inline constexpr int32_t DEVICE_MODEL_DESCRIPTION = 0x0080;
inline constexpr int32_t MANUFACTURER_LABEL = 0x0081;
inline constexpr int32_t DEVICE_LABEL = 0x0082;
inline constexpr int32_t SOFTWARE_VERSION_LABEL = 0x00C0;
inline constexpr int32_t DMX_PERSONALITY = 0x00E0;
inline constexpr int32_t DMX_START_ADDRESS = 0x00F0;
inline constexpr int32_t SENSOR_DEFINITION = 0x0200;
inline constexpr int32_t SENSOR_VALUE = 0x0201;
inline constexpr int32_t RECORD_SENSORS = 0x0202;
inline constexpr int32_t LAMP_HOURS = 0x0401;
inline constexpr int32_t REAL_TIME_CLOCK = 0x0603;
inline constexpr int32_t IDENTIFY_DEVICE = 0x1000;
} // namespace pid

class RDM_Call : public DataObject, public std::enable_shared_from_this<RDM_Call> {
public:
    RDM_Call() = default;

    std::shared_ptr<RDM_Call> Self();
    // Stores the arguments and loads the catalogue data: the table for a standard PID, the
    // responder's PARAMETER_DESCRIPTION for a manufacturer-specific one.
    void Initialise(int16_t token, uint16_t subDevice, int32_t pid, bool required);
    int32_t PID() const { return pid_; }
    std::string DataClass() const override;
    uint8_t Token() const { return static_cast<uint8_t>(token_); }
    const std::string& Description() const { return description_; }
    bool Getable() const { return getable_; }
    bool Setable() const { return setable_; }
    bool Required() const { return required_; }
    // True for a PID in 0x8000 to 0xFFDF.
    bool ManSpec() const;

    // GET of this parameter, with no parameter or with `param`. Returns the typed result, or an
    // empty value after a reported local error.
    RdmValue GetValue();
    RdmValue GetValue(const RdmValue& param);

    // SET of this parameter; with `broadcast` the transaction goes to token 0. The Integer and Long
    // encodings work in place on the caller's value, which is left holding what remains.
    RdmValue SetValue(bool broadcast = false);
    RdmValue SetValue(RdmValue& param, bool broadcast = false);
    RdmValue SetValue(RdmValue&& param, bool broadcast = false);

private:
    void LoadStandardPID();
    void LoadProprietoryPID();
    RdmValue Get(const RdmValue* param);
    RdmValue Set(RdmValue* param, bool broadcast);
    RdmValue Exchange(bool set, RdmValue* param, bool broadcast);

    int16_t token_ = 0;
    uint16_t subDevice_ = 0;
    int32_t pid_ = 0;
    std::string description_;
    int32_t rangeMinimum_ = 0; // from PARAMETER_DESCRIPTION; kept, never read back
    int32_t rangeMaximum_ = 0;
    int32_t defaultValue_ = 0;
    bool getable_ = false;
    bool setable_ = false;
    bool required_ = false;
    bool initialised_ = false;
};

} // namespace zol::rdm
