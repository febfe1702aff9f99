/*
 * libzol-kdi-script.so: a device library for tests of the built plug-in. It exports the nine
 * KDI_* functions of device_link/kdi.h and these script controls: a test queues the requests it
 * expects with the status and response to hand back, lets the plug-in run, and reads back the
 * record of every call, so it states byte for byte what crossed the seam.
 */
#ifndef ZOL_KDI_SCRIPT_H
#define ZOL_KDI_SCRIPT_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Forgets the script, the record and the ports; two ports "Script Port 1" and "Script Port 2". */
void KdiScript_Reset(void);
/* Port names, separated by '\n'; an empty text means no port. */
void KdiScript_SetPorts(const char* names);
/* Result of the next KDI_OpenPort (0 until changed). */
void KdiScript_SetOpenResult(int32_t result);
/* Expect the next KDI_Command to carry exactly `request` (code then data). A different request
 * is counted as a mismatch and still answered. */
void KdiScript_Expect(const uint8_t* request, int32_t requestLength, int32_t status, const uint8_t* response,
                      int32_t responseLength);
/* The answer to a KDI_Command when the queue is empty (otherwise: status -3, and a mismatch). */
void KdiScript_SetFallback(int32_t status, const uint8_t* response, int32_t responseLength);
void KdiScript_ClearFallback(void);
/* Expected requests not yet sent. */
int32_t KdiScript_Pending(void);
/* Requests that did not match what was expected, or came with nothing expected and no fallback. */
int32_t KdiScript_Mismatches(void);
/* The record: number of calls, and call `index` (from 0). `function` receives the name without
 * the KDI_ prefix ("Command", "OpenPort", ...); `data` the request of a Command; `argument` the
 * index of OpenPort and PortName; `result` what was handed back. Returns 0, or -1 for no such call
 * or a NULL pointer. */
int32_t KdiScript_CallCount(void);
int32_t KdiScript_Call(int32_t index, char* function, int32_t functionSize, uint8_t* data,
                       int32_t* dataLength, int32_t* argument, int32_t* result);

#ifdef __cplusplus
}
#endif

#endif
