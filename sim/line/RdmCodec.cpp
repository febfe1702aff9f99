#include "sim/line/RdmCodec.h"

#include <array>
#include <cctype>
#include <cstdio>
#include <stdexcept>
#include <utility>

namespace zol::sim::rdm {

namespace {

struct PidNameRow {
    uint16_t pid;
    const char* name;
};

constexpr std::array<PidNameRow, 50> kPidNames{{
    {DISC_UNIQUE_BRANCH, "DISC_UNIQUE_BRANCH"},
    {DISC_MUTE, "DISC_MUTE"},
    {DISC_UN_MUTE, "DISC_UN_MUTE"},
    {PROXIED_DEVICES, "PROXIED_DEVICES"},
    {PROXIED_DEVICE_COUNT, "PROXIED_DEVICE_COUNT"},
    {COMMS_STATUS, "COMMS_STATUS"},
    {QUEUED_MESSAGE, "QUEUED_MESSAGE"},
    {STATUS_MESSAGES, "STATUS_MESSAGES"},
    {STATUS_ID_DESCRIPTION, "STATUS_ID_DESCRIPTION"},
    {CLEAR_STATUS_ID, "CLEAR_STATUS_ID"},
    {SUB_DEVICE_STATUS_REPORT_THRESHOLD, "SUB_DEVICE_STATUS_REPORT_THRESHOLD"},
    {SUPPORTED_PARAMETERS, "SUPPORTED_PARAMETERS"},
    {PARAMETER_DESCRIPTION, "PARAMETER_DESCRIPTION"},
    {DEVICE_INFO, "DEVICE_INFO"},
    {PRODUCT_DETAIL_ID_LIST, "PRODUCT_DETAIL_ID_LIST"},
    {DEVICE_MODEL_DESCRIPTION, "DEVICE_MODEL_DESCRIPTION"},
    {MANUFACTURER_LABEL, "MANUFACTURER_LABEL"},
    {DEVICE_LABEL, "DEVICE_LABEL"},
    {FACTORY_DEFAULTS, "FACTORY_DEFAULTS"},
    {LANGUAGE_CAPABILITIES, "LANGUAGE_CAPABILITIES"},
    {LANGUAGE, "LANGUAGE"},
    {SOFTWARE_VERSION_LABEL, "SOFTWARE_VERSION_LABEL"},
    {BOOT_SOFTWARE_VERSION_ID, "BOOT_SOFTWARE_VERSION_ID"},
    {BOOT_SOFTWARE_VERSION_LABEL, "BOOT_SOFTWARE_VERSION_LABEL"},
    {DMX_PERSONALITY, "DMX_PERSONALITY"},
    {DMX_PERSONALITY_DESCRIPTION, "DMX_PERSONALITY_DESCRIPTION"},
    {DMX_START_ADDRESS, "DMX_START_ADDRESS"},
    {SLOT_INFO, "SLOT_INFO"},
    {SLOT_DESCRIPTION, "SLOT_DESCRIPTION"},
    {DEFAULT_SLOT_VALUE, "DEFAULT_SLOT_VALUE"},
    {SENSOR_DEFINITION, "SENSOR_DEFINITION"},
    {SENSOR_VALUE, "SENSOR_VALUE"},
    {RECORD_SENSORS, "RECORD_SENSORS"},
    {DEVICE_HOURS, "DEVICE_HOURS"},
    {LAMP_HOURS, "LAMP_HOURS"},
    {LAMP_STRIKES, "LAMP_STRIKES"},
    {LAMP_STATE, "LAMP_STATE"},
    {LAMP_ON_MODE, "LAMP_ON_MODE"},
    {DEVICE_POWER_CYCLES, "DEVICE_POWER_CYCLES"},
    {DISPLAY_INVERT, "DISPLAY_INVERT"},
    {DISPLAY_LEVEL, "DISPLAY_LEVEL"},
    {PAN_INVERT, "PAN_INVERT"},
    {TILT_INVERT, "TILT_INVERT"},
    {PAN_TILT_SWAP, "PAN_TILT_SWAP"},
    {REAL_TIME_CLOCK, "REAL_TIME_CLOCK"},
    {IDENTIFY_DEVICE, "IDENTIFY_DEVICE"},
    {RESET_DEVICE, "RESET_DEVICE"},
    {POWER_STATE, "POWER_STATE"},
    {PERFORM_SELFTEST, "PERFORM_SELFTEST"},
    {SELF_TEST_DESCRIPTION, "SELF_TEST_DESCRIPTION"},
}};

int HexDigit(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

} // namespace

std::string PidName(uint16_t pid) {
    for (const auto& row : kPidNames)
        if (row.pid == pid)
            return row.name;
    return {};
}

int PidByName(const std::string& name) {
    for (const auto& row : kPidNames)
        if (name == row.name)
            return row.pid;
    return -1;
}

const char* DecodeErrorText(DecodeError error) {
    switch (error) {
    case DecodeError::None:
        return "good";
    case DecodeError::Short:
        return "short message";
    case DecodeError::StartCode:
        return "wrong start code";
    case DecodeError::SubStartCode:
        return "wrong sub-start code";
    case DecodeError::LengthMismatch:
        return "length mismatch";
    case DecodeError::PdlMismatch:
        return "parameter data length mismatch";
    case DecodeError::Checksum:
        return "checksum fail";
    }
    return "unknown";
}

uint16_t Checksum(const Bytes& bytes) {
    return Checksum(bytes, bytes.size());
}

uint16_t Checksum(const Bytes& bytes, size_t length) {
    uint32_t sum = 0;
    for (size_t i = 0; i < length && i < bytes.size(); ++i)
        sum += uint8_t(bytes[i]);
    return uint16_t(sum & 0xFFFF);
}

void PutU16(Bytes& out, uint16_t value) {
    out.push_back(char(value >> 8));
    out.push_back(char(value & 0xFF));
}

void PutU32(Bytes& out, uint32_t value) {
    PutU16(out, uint16_t(value >> 16));
    PutU16(out, uint16_t(value & 0xFFFF));
}

void PutUid(Bytes& out, Uid uid) {
    for (int shift = 40; shift >= 0; shift -= 8)
        out.push_back(char((uid >> shift) & 0xFF));
}

uint16_t GetU16(const Bytes& in, size_t offset) {
    return uint16_t((uint8_t(in.at(offset)) << 8) | uint8_t(in.at(offset + 1)));
}

uint32_t GetU32(const Bytes& in, size_t offset) {
    return (uint32_t(GetU16(in, offset)) << 16) | GetU16(in, offset + 2);
}

Uid GetUid(const Bytes& in, size_t offset) {
    Uid uid = 0;
    for (size_t i = 0; i < 6; ++i)
        uid = (uid << 8) | uint8_t(in.at(offset + i));
    return uid;
}

Bytes Encode(const Packet& packet) {
    if (packet.data.size() > kMaxPdl)
        throw std::invalid_argument("RDM parameter data longer than 231 bytes");
    Bytes out;
    out.reserve(kHeaderSize + packet.data.size() + 2);
    out.push_back(char(kStartCode));
    out.push_back(char(kSubStartCode));
    out.push_back(char(kHeaderSize + packet.data.size()));
    PutUid(out, packet.destination);
    PutUid(out, packet.source);
    out.push_back(char(packet.transaction));
    out.push_back(char(packet.portOrType));
    out.push_back(char(packet.messageCount));
    PutU16(out, packet.subDevice);
    out.push_back(char(packet.commandClass));
    PutU16(out, packet.pid);
    out.push_back(char(packet.data.size()));
    out += packet.data;
    PutU16(out, Checksum(out));
    return out;
}

DecodeError Decode(const Bytes& bytes, Packet& packet) {
    if (bytes.size() < kHeaderSize + 2)
        return DecodeError::Short;
    if (uint8_t(bytes[0]) != kStartCode)
        return DecodeError::StartCode;
    if (uint8_t(bytes[1]) != kSubStartCode)
        return DecodeError::SubStartCode;
    const size_t length = uint8_t(bytes[2]);
    if (length < kHeaderSize || length + 2 != bytes.size())
        return DecodeError::LengthMismatch;
    if (Checksum(bytes, length) != GetU16(bytes, length))
        return DecodeError::Checksum;
    const size_t pdl = uint8_t(bytes[23]);
    if (kHeaderSize + pdl != length)
        return DecodeError::PdlMismatch;
    packet.destination = GetUid(bytes, 3);
    packet.source = GetUid(bytes, 9);
    packet.transaction = uint8_t(bytes[15]);
    packet.portOrType = uint8_t(bytes[16]);
    packet.messageCount = uint8_t(bytes[17]);
    packet.subDevice = GetU16(bytes, 18);
    packet.commandClass = uint8_t(bytes[20]);
    packet.pid = GetU16(bytes, 21);
    packet.data = bytes.substr(kHeaderSize, pdl);
    return DecodeError::None;
}

Bytes EncodeDubReply(Uid uid, int preamble) {
    if (preamble < 0)
        preamble = 0;
    if (preamble > 7)
        preamble = 7;
    Bytes out(size_t(preamble), char(0xFE));
    out.push_back(char(0xAA));
    uint16_t sum = 0;
    for (int shift = 40; shift >= 0; shift -= 8) {
        const uint8_t b = uint8_t((uid >> shift) & 0xFF);
        const uint8_t hi = b | 0xAA;
        const uint8_t lo = b | 0x55;
        out.push_back(char(hi));
        out.push_back(char(lo));
        sum = uint16_t(sum + hi + lo);
    }
    out.push_back(char((sum >> 8) | 0xAA));
    out.push_back(char((sum >> 8) | 0x55));
    out.push_back(char((sum & 0xFF) | 0xAA));
    out.push_back(char((sum & 0xFF) | 0x55));
    return out;
}

DubDecode DecodeDubReply(const Bytes& bytes, Uid& uid) {
    size_t pos = 0;
    while (pos < bytes.size() && pos < 7 && uint8_t(bytes[pos]) == 0xFE)
        ++pos;
    if (pos >= bytes.size() || uint8_t(bytes[pos]) != 0xAA)
        return DubDecode::Format;
    ++pos;
    if (bytes.size() - pos < 16)
        return DubDecode::Format;
    auto pair = [&](size_t at, uint8_t& value) {
        const uint8_t a = uint8_t(bytes[at]);
        const uint8_t b = uint8_t(bytes[at + 1]);
        if ((a & 0xAA) != 0xAA || (b & 0x55) != 0x55)
            return false;
        value = a & b;
        return true;
    };
    Uid decoded = 0;
    uint16_t sum = 0;
    for (size_t i = 0; i < 6; ++i) {
        uint8_t b = 0;
        if (!pair(pos + 2 * i, b))
            return DubDecode::Format;
        decoded = (decoded << 8) | b;
        sum = uint16_t(sum + uint8_t(bytes[pos + 2 * i]) + uint8_t(bytes[pos + 2 * i + 1]));
    }
    uint8_t csHi = 0;
    uint8_t csLo = 0;
    if (!pair(pos + 12, csHi) || !pair(pos + 14, csLo))
        return DubDecode::Format;
    uid = decoded;
    if (uint16_t((csHi << 8) | csLo) != sum)
        return DubDecode::Checksum;
    return DubDecode::Valid;
}

std::string UidText(Uid uid) {
    char text[16];
    std::snprintf(text, sizeof text, "%04X:%08X", unsigned(uid >> 32), unsigned(uid & 0xFFFFFFFFULL));
    return text;
}

bool ParseUid(const std::string& text, Uid& uid) {
    std::string digits;
    for (size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == ':' && i == 4 && text.size() == 13)
            continue;
        if (HexDigit(c) < 0)
            return false;
        digits.push_back(c);
    }
    if (digits.size() != 12)
        return false;
    Uid value = 0;
    for (char c : digits)
        value = (value << 4) | Uid(HexDigit(c));
    uid = value;
    return true;
}

} // namespace zol::sim::rdm
