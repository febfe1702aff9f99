#pragma once
// The device-library seam: the nine KDI_* functions as one small interface, so that Client can
// talk to a library loaded by path in the product and to a scripted fake in tests.

#include <cstdint>
#include <memory>
#include <string>

namespace zol {

class DeviceLibrary {
public:
    virtual ~DeviceLibrary() = default;
    // buffer holds KDI_BUFFER_SIZE bytes; length is the request length in, the response length out.
    virtual int32_t Command(uint8_t* buffer, int32_t* length) = 0;
    virtual int32_t OpenPort(int32_t index) = 0;
    virtual int32_t FreePort() = 0;
    virtual int32_t PortCount() = 0;
    virtual int32_t PortName(int32_t index, char* buffer, int32_t size) = 0;
    virtual int32_t LastError(char* buffer, int32_t size) = 0;
    virtual int32_t Version(char* buffer, int32_t size) = 0;
    virtual int32_t Reprogram(const char* path) = 0;
    virtual int32_t ProgState() = 0;
};

// The result every call of an unusable library gives: Client turns -100 into ErrAPI_Unexpected
// (0x1164), whose description carries LastError's text.
inline constexpr int32_t kLibraryUnavailable = -100;

// Loads the library at `path` with the dynamic loader. A missing file or a missing symbol does not
// throw: the returned object answers every call with kLibraryUnavailable and LastError says why.
std::unique_ptr<DeviceLibrary> LoadDeviceLibrary(const std::string& path);

// Where the plug-in looks: $ZOL_KDI_LIBRARY if set and not empty, otherwise the simulated interface
// library in `pluginDir` (the folder the plug-in itself was loaded from).
std::string DefaultDeviceLibraryPath(const std::string& pluginDir);

// File name of the simulated interface library, as built beside the plug-in.
inline constexpr const char* kSimulatorLibraryName = "libzol-sim.so";

} // namespace zol
