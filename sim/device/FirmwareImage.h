#pragma once
// Firmware image files ("FUD"): what the interface accepts for reprogramming.
//
// Layout, multi-byte values little-endian:
//   offset  size  field
//   0       4     magic "ZFUD"
//   4       1     format, 1
//   5       1     reserved, 0
//   6       2     model number the image is built for
//   8       16    firmware version, three numbers with points, NUL padded
//   24      4     build number
//   28      4     payload length n
//   32      n     payload
//   32+n    4     CRC-32 (IEEE 802.3) of bytes 0 to 32+n-1

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace zol::sim {

inline constexpr size_t kImageHeaderSize = 32;
inline constexpr size_t kImageMaxSize = 16u * 1024u * 1024u;

struct FirmwareImage {
    uint16_t model = 0;
    std::string version; // "1.5.0"
    uint32_t build = 0;
    std::string payload;
};

uint32_t Crc32(const void* data, size_t size);

// The bytes of an image file. The version must be at most 15 characters.
std::string EncodeImage(const FirmwareImage& image);

// Reads an image file's bytes; nothing when any check fails (`why` says which).
std::optional<FirmwareImage> DecodeImage(const std::string& bytes, std::string* why = nullptr);

} // namespace zol::sim
