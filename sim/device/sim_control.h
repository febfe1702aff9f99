/*
 * The simulated interface's console for testers and hosts: faults, time, queries. Exported by
 * libzol-sim.so beside the nine KDI_* functions.
 *
 * SIM_Control runs one command (see the README, "Simulated interface") and writes its reply text,
 * NUL-terminated and cut to `size` - 1 characters, into `reply` (which may be null). It returns the
 * length of the whole reply, or -1 when the command is unknown or malformed, with the reason as
 * the reply.
 */
#ifndef ZOL_SIM_CONTROL_H
#define ZOL_SIM_CONTROL_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

int32_t SIM_Control(const char* command, char* reply, int32_t size);

#ifdef __cplusplus
}
#endif

#endif
