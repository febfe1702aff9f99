#pragma once
// ANSI E1.20 packets as they travel on the simulated line: the RDM message (start code 0xCC) with
// its 16-bit additive checksum, and the DISC_UNIQUE_BRANCH reply with its preamble, separator and
// encoded EUID. Byte strings hold one byte per character, as everywhere in the device.

#include <cstdint>
#include <string>

namespace zol::sim::rdm {

using Bytes = std::string;
using Uid = uint64_t; // 48 bits: manufacturer id in the upper 16, device id in the lower 32

constexpr Uid kBroadcastUid = 0xFFFFFFFFFFFFULL;
constexpr Uid kMaxUid = 0xFFFFFFFFFFFEULL; // highest UID a responder may have
constexpr Uid VendorcastUid(uint16_t manufacturer) {
    return (Uid(manufacturer) << 32) | 0xFFFFFFFFULL;
}
constexpr uint16_t ManufacturerOf(Uid uid) {
    return uint16_t(uid >> 32);
}

constexpr uint8_t kStartCode = 0xCC;
constexpr uint8_t kSubStartCode = 0x01;
constexpr size_t kHeaderSize = 24; // start code up to and including the PDL
constexpr size_t kMaxPdl = 231;    // largest parameter data of one message
constexpr uint16_t kSubDeviceAll = 0xFFFF;

// Command classes.
enum CommandClass : uint8_t {
    kDiscovery = 0x10,
    kDiscoveryResponse = 0x11,
    kGet = 0x20,
    kGetResponse = 0x21,
    kSet = 0x30,
    kSetResponse = 0x31,
};

// Response types (the port id / response type field of a response).
enum ResponseType : uint8_t {
    kAck = 0x00,
    kAckTimer = 0x01,
    kNackReason = 0x02,
    kAckOverflow = 0x03,
};

// NACK reason codes.
enum NackReason : uint16_t {
    NR_UNKNOWN_PID = 0x0000,
    NR_FORMAT_ERROR = 0x0001,
    NR_HARDWARE_FAULT = 0x0002,
    NR_PROXY_REJECT = 0x0003,
    NR_WRITE_PROTECT = 0x0004,
    NR_UNSUPPORTED_COMMAND_CLASS = 0x0005,
    NR_DATA_OUT_OF_RANGE = 0x0006,
    NR_BUFFER_FULL = 0x0007,
    NR_PACKET_SIZE_UNSUPPORTED = 0x0008,
    NR_SUB_DEVICE_OUT_OF_RANGE = 0x0009,
};

// Status types of status messages and QUEUED_MESSAGE.
enum StatusType : uint8_t {
    STATUS_NONE = 0x00,
    STATUS_GET_LAST_MESSAGE = 0x01,
    STATUS_ADVISORY = 0x02,
    STATUS_WARNING = 0x03,
    STATUS_ERROR = 0x04,
    STATUS_ADVISORY_CLEARED = 0x12,
    STATUS_WARNING_CLEARED = 0x13,
    STATUS_ERROR_CLEARED = 0x14,
};

// The parameter ids the line and its responders know.
enum Pid : uint16_t {
    DISC_UNIQUE_BRANCH = 0x0001,
    DISC_MUTE = 0x0002,
    DISC_UN_MUTE = 0x0003,
    PROXIED_DEVICES = 0x0010,
    PROXIED_DEVICE_COUNT = 0x0011,
    COMMS_STATUS = 0x0015,
    QUEUED_MESSAGE = 0x0020,
    STATUS_MESSAGES = 0x0030,
    STATUS_ID_DESCRIPTION = 0x0031,
    CLEAR_STATUS_ID = 0x0032,
    SUB_DEVICE_STATUS_REPORT_THRESHOLD = 0x0033,
    SUPPORTED_PARAMETERS = 0x0050,
    PARAMETER_DESCRIPTION = 0x0051,
    DEVICE_INFO = 0x0060,
    PRODUCT_DETAIL_ID_LIST = 0x0070,
    DEVICE_MODEL_DESCRIPTION = 0x0080,
    MANUFACTURER_LABEL = 0x0081,
    DEVICE_LABEL = 0x0082,
    FACTORY_DEFAULTS = 0x0090,
    LANGUAGE_CAPABILITIES = 0x00A0,
    LANGUAGE = 0x00B0,
    SOFTWARE_VERSION_LABEL = 0x00C0,
    BOOT_SOFTWARE_VERSION_ID = 0x00C1,
    BOOT_SOFTWARE_VERSION_LABEL = 0x00C2,
    DMX_PERSONALITY = 0x00E0,
    DMX_PERSONALITY_DESCRIPTION = 0x00E1,
    DMX_START_ADDRESS = 0x00F0,
    SLOT_INFO = 0x0120,
    SLOT_DESCRIPTION = 0x0121,
    DEFAULT_SLOT_VALUE = 0x0122,
    SENSOR_DEFINITION = 0x0200,
    SENSOR_VALUE = 0x0201,
    RECORD_SENSORS = 0x0202,
    DEVICE_HOURS = 0x0400,
    LAMP_HOURS = 0x0401,
    LAMP_STRIKES = 0x0402,
    LAMP_STATE = 0x0403,
    LAMP_ON_MODE = 0x0404,
    DEVICE_POWER_CYCLES = 0x0405,
    DISPLAY_INVERT = 0x0500,
    DISPLAY_LEVEL = 0x0501,
    PAN_INVERT = 0x0600,
    TILT_INVERT = 0x0601,
    PAN_TILT_SWAP = 0x0602,
    REAL_TIME_CLOCK = 0x0603,
    IDENTIFY_DEVICE = 0x1000,
    RESET_DEVICE = 0x1001,
    POWER_STATE = 0x1010,
    PERFORM_SELFTEST = 0x1020,
    SELF_TEST_DESCRIPTION = 0x1021,
};

// Name of a standard PID ("DEVICE_INFO"), or empty when the line does not know it.
std::string PidName(uint16_t pid);
// The PID of a standard name, or -1.
int PidByName(const std::string& name);

// One RDM message. For a request `portOrType` is the port id; for a response the response type.
struct Packet {
    Uid destination = 0;
    Uid source = 0;
    uint8_t transaction = 0;
    uint8_t portOrType = 0;
    uint8_t messageCount = 0;
    uint16_t subDevice = 0;
    uint8_t commandClass = 0;
    uint16_t pid = 0;
    Bytes data;

    bool operator==(const Packet&) const = default;
};

// Why a received byte string is not a good packet.
enum class DecodeError {
    None,
    Short,          // fewer bytes than the smallest message with its checksum
    StartCode,      // first byte is not 0xCC
    SubStartCode,   // second byte is not 0x01
    LengthMismatch, // message length field disagrees with the bytes received
    PdlMismatch,    // PDL disagrees with the message length
    Checksum,       // checksum does not add up
};

const char* DecodeErrorText(DecodeError error);

// The 16-bit additive checksum of `bytes` (sum of all byte values, modulo 65536).
uint16_t Checksum(const Bytes& bytes);
// The same over the first `length` bytes.
uint16_t Checksum(const Bytes& bytes, size_t length);

// The whole message: header, parameter data, checksum. The message length is computed; a
// parameter data longer than 231 bytes throws std::invalid_argument.
Bytes Encode(const Packet& packet);

// Parses and checks a message. On DecodeError::None `packet` holds it.
DecodeError Decode(const Bytes& bytes, Packet& packet);

// The reply to DISC_UNIQUE_BRANCH: `preamble` bytes 0xFE (0 to 7), the separator 0xAA, the twelve
// bytes of the encoded UID (each byte once OR 0xAA, once OR 0x55) and the four of the encoded
// checksum over those twelve.
Bytes EncodeDubReply(Uid uid, int preamble = 7);

enum class DubDecode {
    Valid,
    Format,   // no separator, short, or an encoded byte without its fixed bits
    Checksum, // well formed but the checksum does not match the UID
};

// Decodes a DISC_UNIQUE_BRANCH reply as received (perhaps the sum of several on the wire).
DubDecode DecodeDubReply(const Bytes& bytes, Uid& uid);

// Text form of a UID: "4D48:00000101".
std::string UidText(Uid uid);
// Parses "4D48:00000101" or twelve hexadecimal digits; false when malformed.
bool ParseUid(const std::string& text, Uid& uid);

// Big-endian helpers for parameter data.
void PutU16(Bytes& out, uint16_t value);
void PutU32(Bytes& out, uint32_t value);
void PutUid(Bytes& out, Uid uid);
uint16_t GetU16(const Bytes& in, size_t offset);
uint32_t GetU32(const Bytes& in, size_t offset);
Uid GetUid(const Bytes& in, size_t offset);

} // namespace zol::sim::rdm
