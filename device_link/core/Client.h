#pragma once
// Client ("API - Client"): the one module that calls the device library. Everything above speaks to
// the local device through Command and the thin wrappers below. Byte strings are std::string whose
// chars each hold one byte value.

#include "device_link/core/DeviceLibrary.h"

#include <cstdint>
#include <string>

namespace zol {

using Bytes = std::string;

namespace Client {

// The installed device library. Until one is installed, the default library is loaded on first
// use (ZOL_KDI_LIBRARY, else the simulated interface beside the plug-in).
DeviceLibrary& Library();
// Installs `library` (not owned) and returns the one it replaces; nullptr goes back to the default.
DeviceLibrary* SetLibrary(DeviceLibrary* library);
// Folder of the plug-in's own shared library (where the default device library is looked for).
std::string PluginFolder();

// ---- The exchange ----
// Sends `code` with `data` and returns the response bytes, waiting through delayed (16) and
// multi-part (18) answers. Raises the numbered error of any other status.
Bytes Command(uint8_t code, const Bytes& data = {});
bool LastQueued();
bool QueueLatch();
void ResetStateForTest();

// ---- Library functions ----
int32_t GetPortCount();
std::string GetPortName(int32_t index);
void OpenPort(int32_t index);
void ClosePort();
std::string LibraryVersion();
std::string LibraryError();
void ReProgram(const std::string& path);
int32_t ProgState();

// ---- Commands ----
std::string DeviceName();      // 0
int32_t DeviceModel();         // 0 with option 1; 1 for firmware that refuses the option
std::string HardwareRev();     // 1
std::string FirmwareRev();     // 2
std::string SerialNumber();    // 3
Bytes UniqueId();              // 4
int32_t GetFrameRate(int32_t index);  // 17; index 1 present, 2 minimum, 3 maximum
void SetFrameRate(int32_t value);     // 18
int32_t GetMarkTime(int32_t index);   // 19
void SetMarkTime(int32_t value);      // 20
int32_t GetBreakTime(int32_t index);  // 21
void SetBreakTime(int32_t value);     // 22
int32_t GetDelayTime(int32_t index);  // 23
void SetDelayTime(int32_t value);     // 24
void SendBlock(const Bytes& data);    // 34: a zero byte, then `data`
void StopOutput();                    // 35
void SendChannel(int32_t slot, int32_t level); // 37
Bytes ReadInput();                    // 40
void DiscoveryMute(const Bytes& ident);        // 49
void DiscoveryStart();                         // 51
int32_t DiscoveryStatus();                     // 52: count + 256 * state
Bytes DiscoveryItem(int32_t index);            // 53
Bytes RdmGet(uint8_t token, uint16_t subDevice, int32_t pid, const Bytes& data = {}); // 56
Bytes RdmSet(uint8_t token, uint16_t subDevice, int32_t pid, const Bytes& data = {}); // 57
Bytes RdmQueued(uint8_t token, uint8_t statusType = 0);                                // 58
bool QueuePending();
void SetBroadcastMask(int32_t mask);           // 61
void ApplyDerogation(const Bytes& code);       // 72
int32_t FirmwareBuild();                       // 79
Bytes ReadMemory(int32_t address, int32_t length);    // 224
Bytes ReadRegisters(int32_t address, int32_t length); // 226

} // namespace Client
} // namespace zol
