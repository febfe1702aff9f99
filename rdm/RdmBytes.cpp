#include "rdm/RdmBytes.h"

#include "device_link/core/ErrTrap.h"

namespace zol::rdm::bytes {

uint8_t Str2Byt(const Bytes& data, int32_t position) {
    if (position < 1 || static_cast<size_t>(position) > data.size()) {
        return 0;
    }
    return static_cast<uint8_t>(data[static_cast<size_t>(position - 1)]);
}

int32_t Str2Lng(const Bytes& data, int32_t position) {
    uint8_t b[4]; // b[0] least significant
    for (int i = 0; i < 4; ++i) {
        b[3 - i] = Str2Byt(data, position + i);
    }
    int64_t total = 0;
    if ((b[3] & 0x80) != 0) {
        for (int i = 3; i >= 0; --i) {
            total = total * 256 + (255 - b[i]);
        }
        total -= 1;
    } else {
        for (int i = 3; i >= 0; --i) {
            total = total * 256 + b[i];
        }
    }
    return static_cast<int32_t>(total);
}

int16_t Str2Int(const Bytes& data, int32_t position) {
    const int32_t high = Str2Byt(data, position);
    const int32_t low = Str2Byt(data, position + 1);
    if (high >= 0x80) {
        throw RuntimeFault(rt::Overflow, "Overflow");
    }
    return static_cast<int16_t>(high * 256 + low);
}

Bytes Int2Str(int32_t value) {
    if (value < -32768 || value > 32767) {
        throw RuntimeFault(rt::Overflow, "Overflow");
    }
    if (value < 0) {
        value += 65535;
    }
    Bytes out;
    out += static_cast<char>(static_cast<uint8_t>(value / 256));
    out += static_cast<char>(static_cast<uint8_t>(value % 256));
    return out;
}

char Chr(int32_t value) {
    if (value < 0 || value > 255) {
        throw RuntimeFault(rt::InvalidCall, "Invalid procedure call or argument");
    }
    return static_cast<char>(static_cast<uint8_t>(value));
}

} // namespace zol::rdm::bytes
