#include "sim/device/FirmwareImage.h"

#include <array>

namespace zol::sim {
namespace {

void PutLe(std::string& out, uint32_t value, int bytes) {
    for (int i = 0; i < bytes; ++i) {
        out += static_cast<char>((value >> (8 * i)) & 0xFF);
    }
}

uint32_t GetLe(const std::string& in, size_t at, int bytes) {
    uint32_t value = 0;
    for (int i = bytes - 1; i >= 0; --i) {
        value = (value << 8) | static_cast<uint8_t>(in[at + static_cast<size_t>(i)]);
    }
    return value;
}

bool Fail(std::string* why, const char* text) {
    if (why != nullptr) {
        *why = text;
    }
    return false;
}

bool IsVersion(const std::string& s) {
    int points = 0;
    size_t digits = 0;
    for (char c : s) {
        if (c >= '0' && c <= '9') {
            ++digits;
        } else if (c == '.' && digits > 0) {
            ++points;
            digits = 0;
        } else {
            return false;
        }
    }
    return digits > 0 && points == 2;
}

} // namespace

uint32_t Crc32(const void* data, size_t size) {
    static const std::array<uint32_t, 256> table = [] {
        std::array<uint32_t, 256> t{};
        for (uint32_t n = 0; n < 256; ++n) {
            uint32_t c = n;
            for (int k = 0; k < 8; ++k) {
                c = (c & 1u) ? 0xEDB88320u ^ (c >> 1) : c >> 1;
            }
            t[n] = c;
        }
        return t;
    }();
    uint32_t crc = 0xFFFFFFFFu;
    const auto* p = static_cast<const uint8_t*>(data);
    for (size_t i = 0; i < size; ++i) {
        crc = table[(crc ^ p[i]) & 0xFFu] ^ (crc >> 8);
    }
    return crc ^ 0xFFFFFFFFu;
}

std::string EncodeImage(const FirmwareImage& image) {
    std::string out = "ZFUD";
    out += static_cast<char>(1);
    out += static_cast<char>(0);
    PutLe(out, image.model, 2);
    std::string version = image.version.substr(0, 15);
    version.resize(16, '\0');
    out += version;
    PutLe(out, image.build, 4);
    PutLe(out, static_cast<uint32_t>(image.payload.size()), 4);
    out += image.payload;
    PutLe(out, Crc32(out.data(), out.size()), 4);
    return out;
}

std::optional<FirmwareImage> DecodeImage(const std::string& bytes, std::string* why) {
    if (bytes.size() < kImageHeaderSize + 4) {
        Fail(why, "the file is shorter than an image header");
        return std::nullopt;
    }
    if (bytes.compare(0, 4, "ZFUD") != 0) {
        Fail(why, "the file is not a firmware image");
        return std::nullopt;
    }
    if (bytes[4] != 1 || bytes[5] != 0) {
        Fail(why, "the image format is unknown");
        return std::nullopt;
    }
    const uint32_t length = GetLe(bytes, 28, 4);
    if (static_cast<size_t>(length) != bytes.size() - kImageHeaderSize - 4) {
        Fail(why, "the payload length does not match the file size");
        return std::nullopt;
    }
    const size_t end = kImageHeaderSize + length;
    if (Crc32(bytes.data(), end) != GetLe(bytes, end, 4)) {
        Fail(why, "the checksum does not match");
        return std::nullopt;
    }
    FirmwareImage image;
    image.model = static_cast<uint16_t>(GetLe(bytes, 6, 2));
    const std::string field = bytes.substr(8, 16);
    image.version = field.substr(0, field.find('\0'));
    if (!IsVersion(image.version) ||
        field.find_first_not_of('\0', image.version.size()) != std::string::npos) {
        Fail(why, "the version field is not three numbers with points");
        return std::nullopt;
    }
    image.build = GetLe(bytes, 24, 4);
    image.payload = bytes.substr(kImageHeaderSize, length);
    return image;
}

} // namespace zol::sim
