// zol-fud: writes and checks firmware image files for the simulated interface.
//
//   zol-fud write --model <n> --version <a.b.c> [--build <n>] [--size <bytes> | --payload <file>]
//                 [--corrupt] <out.fud>
//   zol-fud info <file.fud>
//
// --corrupt flips one payload bit after the checksum is made, giving an image that fails the
// integrity check.

#include "sim/device/FirmwareImage.h"

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>

namespace {

int Usage() {
    std::cerr << "usage: zol-fud write --model <n> --version <a.b.c> [--build <n>] "
                 "[--size <bytes> | --payload <file>] [--corrupt] <out.fud>\n"
                 "       zol-fud info <file.fud>\n";
    return 2;
}

bool ReadFile(const std::string& path, std::string& bytes) {
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        return false;
    }
    std::ostringstream text;
    text << in.rdbuf();
    bytes = text.str();
    return true;
}

bool ParseUnsigned(const char* text, unsigned long long max, unsigned long long& value) {
    char* end = nullptr;
    value = std::strtoull(text, &end, 0);
    return end != text && *end == '\0' && value <= max;
}

int Write(int argc, char** argv) {
    zol::sim::FirmwareImage image;
    bool haveModel = false;
    bool corrupt = false;
    unsigned long long size = 4096;
    std::string payloadFile;
    std::string out;
    for (int i = 2; i < argc; ++i) {
        const std::string arg = argv[i];
        unsigned long long n = 0;
        const bool hasValue = i + 1 < argc;
        if (arg == "--model" && hasValue && ParseUnsigned(argv[i + 1], 0xFFFF, n)) {
            image.model = static_cast<uint16_t>(n);
            haveModel = true;
            ++i;
        } else if (arg == "--version" && hasValue) {
            image.version = argv[++i];
        } else if (arg == "--build" && hasValue && ParseUnsigned(argv[i + 1], 0xFFFFFFFFull, n)) {
            image.build = static_cast<uint32_t>(n);
            ++i;
        } else if (arg == "--size" && hasValue && ParseUnsigned(argv[i + 1], 1u << 20, n)) {
            size = n;
            ++i;
        } else if (arg == "--payload" && hasValue) {
            payloadFile = argv[++i];
        } else if (arg == "--corrupt") {
            corrupt = true;
        } else if (out.empty() && !arg.empty() && arg[0] != '-') {
            out = arg;
        } else {
            return Usage();
        }
    }
    if (!haveModel || image.version.empty() || image.version.size() > 15 || out.empty()) {
        return Usage();
    }
    if (!payloadFile.empty()) {
        if (!ReadFile(payloadFile, image.payload)) {
            std::cerr << "zol-fud: cannot read " << payloadFile << "\n";
            return 1;
        }
    } else {
        // A recognisable filler: the byte value runs up with the offset.
        for (unsigned long long i = 0; i < size; ++i) {
            image.payload += static_cast<char>((i * 7 + 3) & 0xFF);
        }
    }
    std::string bytes = zol::sim::EncodeImage(image);
    if (corrupt) {
        if (image.payload.empty()) {
            std::cerr << "zol-fud: --corrupt needs a payload\n";
            return 1;
        }
        bytes[zol::sim::kImageHeaderSize] = static_cast<char>(bytes[zol::sim::kImageHeaderSize] ^ 0x01);
    }
    std::ofstream file(out, std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!file) {
        std::cerr << "zol-fud: cannot write " << out << "\n";
        return 1;
    }
    std::cout << out << ": model " << image.model << ", version " << image.version << ", build "
              << image.build << ", " << image.payload.size() << " payload bytes"
              << (corrupt ? ", corrupted" : "") << "\n";
    return 0;
}

int Info(const char* path) {
    std::string bytes;
    if (!ReadFile(path, bytes)) {
        std::cerr << "zol-fud: cannot read " << path << "\n";
        return 1;
    }
    std::string why;
    const auto image = zol::sim::DecodeImage(bytes, &why);
    if (!image) {
        std::cout << path << ": not a good image: " << why << "\n";
        return 1;
    }
    std::cout << path << ": model " << image->model << ", version " << image->version << ", build "
              << image->build << ", " << image->payload.size() << " payload bytes\n";
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    if (argc >= 2 && std::strcmp(argv[1], "write") == 0) {
        return Write(argc, argv);
    }
    if (argc == 3 && std::strcmp(argv[1], "info") == 0) {
        return Info(argv[2]);
    }
    return Usage();
}
