#include "services/strings/StrFormat.h"

#include "device_link/core/ErrTrap.h"
#include "framework/seam/UiSeam.h"

namespace zol {

namespace {

constexpr const char* kHexDigits = "0123456789ABCDEF";

} // namespace

namespace StrFormat {

int HexDigitValue(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    if (c >= 'A' && c <= 'F') {
        return c - 'A' + 10;
    }
    if (c >= 'a' && c <= 'f') {
        return c - 'a' + 10;
    }
    return -1;
}

std::string HexToBytes(std::string& hex) {
    if (hex.size() % 2 != 0) {
        hex += "0";
    }
    std::string out;
    out.reserve(hex.size() / 2);
    int high = 0;
    for (size_t i = 0; i < hex.size(); ++i) {
        const int value = HexDigitValue(hex[i]);
        if (value < 0) {
            // A text that is not hexadecimal here is a fault of the program: it stops on the spot.
            ui().MsgBox("Hex String " + hex, vb::Critical, std::string("Unexpected Error"));
            ui().Halt();
        }
        if (i % 2 == 0) {
            high = value * 16;
        } else {
            out.push_back(static_cast<char>(static_cast<unsigned char>(high + value)));
        }
    }
    return out;
}

std::string BytesToHex(const std::string& data, const std::string& separator) {
    std::string out;
    out.reserve(data.size() * (2 + separator.size()));
    for (unsigned char byte : data) {
        if (!out.empty()) {
            out += separator;
        }
        out += kHexDigits[byte >> 4];
        out += kHexDigits[byte & 0x0F];
    }
    return out;
}

int32_t WordAt(const std::string& data, int16_t position, bool isSigned) {
    if (position < 1 || static_cast<size_t>(position) + 1 > data.size()) {
        throw RuntimeFault(rt::InvalidCall, "Invalid procedure call or argument");
    }
    const auto high = static_cast<unsigned char>(data[static_cast<size_t>(position) - 1]);
    const auto low = static_cast<unsigned char>(data[static_cast<size_t>(position)]);
    int32_t value = high * 256 + low;
    if (isSigned && value >= 32768) {
        value -= 65536;
    }
    return value;
}

} // namespace StrFormat

namespace Text {

std::string QuoteText(const std::string& value) {
    return "\"" + value + "\"";
}

std::string TrimBlanks(const std::string& text) {
    const size_t first = text.find_first_not_of(' ');
    if (first == std::string::npos) {
        return {};
    }
    const size_t last = text.find_last_not_of(' ');
    return text.substr(first, last - first + 1);
}

std::string ItemOf(const std::string& source, int16_t item, const std::string& delimiter) {
    if (delimiter.empty()) {
        // Nothing to split at: the whole text is the first and only item.
        return item <= 1 ? source : std::string();
    }
    size_t start = 0;
    for (int16_t passed = 1; passed < item; ++passed) {
        const size_t found = source.find(delimiter, start);
        if (found == std::string::npos) {
            return {};
        }
        start = found + delimiter.size();
    }
    const size_t end = source.find(delimiter, start);
    return source.substr(start, end == std::string::npos ? std::string::npos : end - start);
}

std::array<std::string, 3> VersionFields(const std::string& version) {
    std::array<std::string, 3> fields;
    for (size_t i = 0; i < fields.size(); ++i) {
        fields[i] = ItemOf(version, static_cast<int16_t>(i + 1), ".");
        if (fields[i].empty()) {
            fields[i] = "0";
        }
    }
    return fields;
}

bool IsVersion(const std::string& version) {
    for (const std::string& raw : VersionFields(version)) {
        const std::string field = TrimBlanks(raw);
        size_t i = (!field.empty() && (field[0] == '+' || field[0] == '-')) ? 1 : 0;
        if (i >= field.size() || field.size() - i > 5) {
            return false;
        }
        long value = 0;
        for (; i < field.size(); ++i) {
            if (field[i] < '0' || field[i] > '9') {
                return false;
            }
            value = value * 10 + (field[i] - '0');
        }
        if (value > (field[0] == '-' ? 32768 : 32767)) {
            return false;
        }
    }
    return true;
}

} // namespace Text

std::string FormatPID(int64_t value) {
    // The last four hexadecimal digits of the value (a negative value as its two's complement).
    const auto low = static_cast<uint32_t>(static_cast<uint64_t>(value) & 0xFFFFu);
    std::string out = "$";
    for (int shift = 12; shift >= 0; shift -= 4) {
        out += kHexDigits[(low >> shift) & 0x0F];
    }
    return out;
}

} // namespace zol
