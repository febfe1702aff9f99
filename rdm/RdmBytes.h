#pragma once
// Readers and writers of the multi-byte values in RDM parameter data (high byte first), with the
// model's own arithmetic. Positions are 1-based.

#include "rdm/RdmValue.h"

#include <cstdint>

namespace zol::rdm::bytes {

// The byte at `position`, or 0 when the position lies beyond the data.
uint8_t Str2Byt(const Bytes& data, int32_t position);

// Four bytes from `position`, high byte first, into a signed value. A first byte with bit 7 set
// takes the complement path: the complements (255 - byte) are accumulated and 1 is subtracted, so
// 0xFFFFFFFF reads -1, 0xFFFFFFFE reads 0 and 0xFFFFFFFD reads 1. Bytes beyond the data read 0.
int32_t Str2Lng(const Bytes& data, int32_t position);

// High byte times 256 plus low byte in 16-bit signed arithmetic: a high byte of 0x80 or more
// overflows (run-time error 6). Bytes beyond the data read 0.
int16_t Str2Int(const Bytes& data, int32_t position);

// A 16-bit signed value to two bytes, high byte first. A negative value has 65535 added, so -1
// goes out as 0xFF 0xFE. A value outside the 16-bit range overflows (run-time error 6).
Bytes Int2Str(int32_t value);

// The character of a byte value; a value outside 0 to 255 is an invalid call (run-time error 5).
char Chr(int32_t value);

} // namespace zol::rdm::bytes
