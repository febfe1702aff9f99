#include "device_link/core/DeviceLibrary.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>

namespace zol {
namespace {

int32_t CopyText(const std::string& text, char* buffer, int32_t size) {
    if (buffer == nullptr || size <= 0) {
        return -1;
    }
    const auto n = static_cast<int32_t>(std::min<size_t>(text.size(), static_cast<size_t>(size - 1)));
    std::memcpy(buffer, text.data(), static_cast<size_t>(n));
    buffer[n] = '\0';
    return n;
}

// A library that could not be loaded: every call fails and LastError says why.
class UnavailableLibrary final : public DeviceLibrary {
public:
    explicit UnavailableLibrary(std::string why) : why_(std::move(why)) {}
    int32_t Command(uint8_t*, int32_t*) override { return kLibraryUnavailable; }
    int32_t OpenPort(int32_t) override { return kLibraryUnavailable; }
    int32_t FreePort() override { return kLibraryUnavailable; }
    int32_t PortCount() override { return kLibraryUnavailable; }
    int32_t PortName(int32_t, char*, int32_t) override { return kLibraryUnavailable; }
    int32_t LastError(char* buffer, int32_t size) override { return CopyText(why_, buffer, size); }
    int32_t Version(char*, int32_t) override { return kLibraryUnavailable; }
    int32_t Reprogram(const char*) override { return kLibraryUnavailable; }
    int32_t ProgState() override { return kLibraryUnavailable; }

private:
    std::string why_;
};

class LoadedLibrary final : public DeviceLibrary {
public:
    using CommandFn = int32_t (*)(uint8_t*, int32_t*);
    using IntFn = int32_t (*)(int32_t);
    using VoidFn = int32_t (*)();
    using NameFn = int32_t (*)(int32_t, char*, int32_t);
    using TextFn = int32_t (*)(char*, int32_t);
    using PathFn = int32_t (*)(const char*);

    LoadedLibrary(void* handle, CommandFn command, IntFn open, VoidFn freePort, VoidFn count, NameFn name,
                  TextFn lastError, TextFn version, PathFn reprogram, VoidFn progState)
        : handle_(handle), command_(command), open_(open), free_(freePort), count_(count), name_(name),
          lastError_(lastError), version_(version), reprogram_(reprogram), progState_(progState) {}
    ~LoadedLibrary() override { dlclose(handle_); }
    LoadedLibrary(const LoadedLibrary&) = delete;
    LoadedLibrary& operator=(const LoadedLibrary&) = delete;

    int32_t Command(uint8_t* buffer, int32_t* length) override { return command_(buffer, length); }
    int32_t OpenPort(int32_t index) override { return open_(index); }
    int32_t FreePort() override { return free_(); }
    int32_t PortCount() override { return count_(); }
    int32_t PortName(int32_t index, char* buffer, int32_t size) override { return name_(index, buffer, size); }
    int32_t LastError(char* buffer, int32_t size) override { return lastError_(buffer, size); }
    int32_t Version(char* buffer, int32_t size) override { return version_(buffer, size); }
    int32_t Reprogram(const char* path) override { return reprogram_(path); }
    int32_t ProgState() override { return progState_(); }

private:
    void* handle_;
    CommandFn command_;
    IntFn open_;
    VoidFn free_;
    VoidFn count_;
    NameFn name_;
    TextFn lastError_;
    TextFn version_;
    PathFn reprogram_;
    VoidFn progState_;
};

} // namespace

std::unique_ptr<DeviceLibrary> LoadDeviceLibrary(const std::string& path) {
    void* handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) {
        const char* why = dlerror();
        return std::make_unique<UnavailableLibrary>("Device library could not be loaded: " +
                                                    std::string(why ? why : path));
    }
    std::string missing;
    auto symbol = [&](const char* name) -> void* {
        void* p = dlsym(handle, name);
        if (p == nullptr) {
            missing += missing.empty() ? name : std::string(", ") + name;
        }
        return p;
    };
    // Converting the object pointers dlsym gives to function pointers is what POSIX promises works.
    auto command = reinterpret_cast<LoadedLibrary::CommandFn>(symbol("KDI_Command"));
    auto open = reinterpret_cast<LoadedLibrary::IntFn>(symbol("KDI_OpenPort"));
    auto freePort = reinterpret_cast<LoadedLibrary::VoidFn>(symbol("KDI_FreePort"));
    auto count = reinterpret_cast<LoadedLibrary::VoidFn>(symbol("KDI_PortCount"));
    auto name = reinterpret_cast<LoadedLibrary::NameFn>(symbol("KDI_PortName"));
    auto lastError = reinterpret_cast<LoadedLibrary::TextFn>(symbol("KDI_LastError"));
    auto version = reinterpret_cast<LoadedLibrary::TextFn>(symbol("KDI_Version"));
    auto reprogram = reinterpret_cast<LoadedLibrary::PathFn>(symbol("KDI_Reprogram"));
    auto progState = reinterpret_cast<LoadedLibrary::VoidFn>(symbol("KDI_ProgState"));
    if (!missing.empty()) {
        dlclose(handle);
        return std::make_unique<UnavailableLibrary>("Device library " + path + " lacks " + missing);
    }
    return std::make_unique<LoadedLibrary>(handle, command, open, freePort, count, name, lastError, version,
                                           reprogram, progState);
}

std::string DefaultDeviceLibraryPath(const std::string& pluginDir) {
    const char* env = std::getenv("ZOL_KDI_LIBRARY");
    if (env != nullptr && *env != '\0') {
        return env;
    }
    std::string dir = pluginDir.empty() ? std::string(".") : pluginDir;
    if (dir.back() != '/') {
        dir += '/';
    }
    return dir + kSimulatorLibraryName;
}

} // namespace zol
