// The parameter catalogue: every standard PID this program knows, its name, whether it may be set,
// and the parameter and result types that GetValue and SetValue use for it. `kHalt` marks an
// operation that was never written for that PID: the call stops the program on the spot. `kNone`
// marks a PID with no case in that operation ("PID Not handled "). The Set column and the types
// are this program's own and differ from the standard in places (DMX_PERSONALITY takes one byte;
// CLEAR_STATUS_ID is settable but its SET stops the program); they are kept as they are.

#include "rdm/tables/RdmTables.h"

namespace zol::rdm::tables {

namespace {
constexpr Signature kNone{Handling::None, RdmType::Empty, RdmType::Empty};
constexpr Signature kHalt{Handling::Halt, RdmType::Empty, RdmType::Empty};
// A parameter type with no result type at all.
constexpr RdmType NoResult = RdmType::Empty;
constexpr RdmType Void = RdmType::Void;
constexpr RdmType Boolean = RdmType::Boolean;
constexpr RdmType Byte = RdmType::Byte;
constexpr RdmType Integer = RdmType::Integer;
constexpr RdmType Long = RdmType::Long;
constexpr RdmType String = RdmType::String;
constexpr RdmType Date = RdmType::Date;
constexpr Signature Typed(RdmType param, RdmType result) {
    return {Handling::Typed, param, result};
}

constexpr PidRow kCatalogue[] = {
    {0x0001, "DISC_UNIQUE_BRANCH", false, kNone, kNone},
    {0x0002, "DISC_MUTE", false, kNone, kNone},
    {0x0003, "DISC_UN_MUTE", false, kNone, kNone},
    {0x0010, "PROXIED_DEVICES", false, kHalt, kHalt},
    {0x0011, "PROXIED_DEVICE_COUNT", false, Typed(Void, Integer), kHalt},
    {0x0015, "COMMS_STATUS", true, Typed(Void, String), Typed(Void, Void)},
    {0x0020, "QUEUED_MESSAGE", false, kHalt, kHalt},
    {0x0030, "STATUS_MESSAGES", false, Typed(Byte, String), Typed(Byte, NoResult)},
    {0x0031, "STATUS_ID_DESCRIPTION", false, Typed(Integer, String), kHalt},
    {0x0032, "CLEAR_STATUS_ID", true, kHalt, kHalt},
    {0x0033, "SUB_DEVICE_STATUS_REPORT_THRESHOLD", true, kHalt, kHalt},
    {0x0050, "SUPPORTED_PARAMETERS", false, Typed(Void, String), kNone},
    {0x0051, "PARAMETER_DESCRIPTION", false, kNone, kHalt},
    {0x0060, "DEVICE_INFO", false, Typed(Void, String), kNone},
    {0x0070, "PRODUCT_DETAIL_ID_LIST", false, Typed(Void, String), kHalt},
    {0x0080, "DEVICE_MODEL_DESCRIPTION", false, Typed(Void, String), kHalt},
    {0x0081, "MANUFACTURER_LABEL", false, Typed(Void, String), kHalt},
    {0x0082, "DEVICE_LABEL", true, Typed(Void, String), Typed(String, Void)},
    {0x0090, "FACTORY_DEFAULTS", true, Typed(Void, Boolean), Typed(Void, Void)},
    {0x00A0, "LANGUAGE_CAPABILITIES", false, Typed(Void, String), kHalt},
    {0x00B0, "LANGUAGE", true, Typed(Void, String), Typed(String, Void)},
    {0x00C0, "SOFTWARE_VERSION_LABEL", false, Typed(Void, String), kHalt},
    {0x00C1, "BOOT_SOFTWARE_VERSION_ID", false, kHalt, kHalt},
    {0x00C2, "BOOT_SOFTWARE_VERSION_LABEL", false, kHalt, kHalt},
    {0x00E0, "DMX_PERSONALITY", true, Typed(Void, Byte), Typed(Byte, Void)},
    {0x00E1, "DMX_PERSONALITY_DESCRIPTION", false, Typed(Byte, String), kHalt},
    {0x00F0, "DMX_START_ADDRESS", true, Typed(Void, Integer), Typed(Integer, Void)},
    {0x0120, "SLOT_INFO", false, kHalt, kHalt},
    {0x0121, "SLOT_DESCRIPTION", false, Typed(Integer, String), kHalt},
    {0x0122, "DEFAULT_SLOT_VALUE", false, kHalt, kHalt},
    {0x0200, "SENSOR_DEFINITION", false, Typed(Byte, String), Typed(Byte, String)},
    {0x0201, "SENSOR_VALUE", true, Typed(Byte, String), Typed(Byte, String)},
    {0x0202, "RECORD_SENSORS", true, kHalt, Typed(Byte, Void)},
    {0x0400, "DEVICE_HOURS", true, Typed(Void, Long), kHalt},
    {0x0401, "LAMP_HOURS", true, Typed(Void, Long), Typed(Long, Void)},
    {0x0402, "LAMP_STRIKES", true, Typed(Void, Long), Typed(Long, Void)},
    {0x0403, "LAMP_STATE", true, Typed(Void, Byte), Typed(Byte, Void)},
    {0x0404, "LAMP_ON_MODE", true, Typed(Void, Byte), Typed(Byte, Void)},
    {0x0405, "DEVICE_POWER_CYCLES", true, Typed(Void, Long), kHalt},
    {0x0500, "DISPLAY_INVERT", true, Typed(Void, Byte), Typed(Byte, Void)},
    {0x0501, "DISPLAY_LEVEL", true, Typed(Void, Byte), Typed(Byte, Void)},
    {0x0600, "PAN_INVERT", true, Typed(Void, Byte), Typed(Byte, Void)},
    {0x0601, "TILT_INVERT", true, Typed(Void, Byte), Typed(Byte, Void)},
    {0x0602, "PAN_TILT_SWAP", true, Typed(Void, Byte), Typed(Byte, Void)},
    {0x0603, "REAL_TIME_CLOCK", true, Typed(Void, Date), Typed(Date, Void)},
    {0x1000, "IDENTIFY_DEVICE", true, Typed(Void, Boolean), Typed(Boolean, Void)},
    {0x1001, "RESET_DEVICE", true, kHalt, Typed(Byte, Void)},
    {0x1010, "POWER_STATE", true, Typed(Void, Byte), Typed(Byte, Void)},
    {0x1020, "PERFORM_SELFTEST", true, Typed(Void, Byte), Typed(Byte, Void)},
    {0x1021, "SELF_TEST_DESCRIPTION", false, Typed(Byte, String), kHalt},
    {0x1030, "CAPTURE_PRESET", true, kHalt, kHalt},
    {0x1031, "PRESET_PLAYBACK", true, kHalt, kHalt},
};
} // namespace

std::span<const PidRow> PidCatalogue() {
    return kCatalogue;
}

const PidRow* FindPid(int32_t pid) {
    for (const auto& row : kCatalogue) {
        if (row.pid == pid) {
            return &row;
        }
    }
    return nullptr;
}

} // namespace zol::rdm::tables
