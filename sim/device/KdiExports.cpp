// The exported C ABI of the simulated interface: the nine KDI_* functions and SIM_Control, each a
// call on the one library-wide simulator.

#include "device_link/kdi.h"
#include "sim/device/Simulator.h"
#include "sim/device/sim_control.h"

namespace {

zol::sim::Simulator& Device() {
    static zol::sim::Simulator device;
    return device;
}

} // namespace

#define ZOL_SIM_EXPORT __attribute__((visibility("default")))

extern "C" {

ZOL_SIM_EXPORT int32_t KDI_Command(uint8_t* buffer, int32_t* length) {
    return Device().Command(buffer, length);
}
ZOL_SIM_EXPORT int32_t KDI_OpenPort(int32_t index) {
    return Device().OpenPort(index);
}
ZOL_SIM_EXPORT int32_t KDI_FreePort(void) {
    return Device().FreePort();
}
ZOL_SIM_EXPORT int32_t KDI_PortCount(void) {
    return Device().PortCount();
}
ZOL_SIM_EXPORT int32_t KDI_PortName(int32_t index, char* buffer, int32_t size) {
    return Device().PortName(index, buffer, size);
}
ZOL_SIM_EXPORT int32_t KDI_LastError(char* buffer, int32_t size) {
    return Device().LastError(buffer, size);
}
ZOL_SIM_EXPORT int32_t KDI_Version(char* buffer, int32_t size) {
    return Device().Version(buffer, size);
}
ZOL_SIM_EXPORT int32_t KDI_Reprogram(const char* path) {
    return Device().Reprogram(path);
}
ZOL_SIM_EXPORT int32_t KDI_ProgState(void) {
    return Device().ProgState();
}
ZOL_SIM_EXPORT int32_t SIM_Control(const char* command, char* reply, int32_t size) {
    return Device().Control(command, reply, size);
}

} // extern "C"
