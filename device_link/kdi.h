/*
 * The device library's C ABI: nine functions that any library driving the local device exports.
 * The plug-in loads such a library by path (ZOL_KDI_LIBRARY, otherwise the simulated interface
 * installed beside the plug-in) and calls it from the host's one thread, one call at a time.
 *
 * Every function reports failure by a negative result; KDI_Command returns a status code
 * (0 done, 16 delayed, 17 done with queued messages, 18 more to come, others are errors).
 */
#ifndef ZOL_KDI_H
#define ZOL_KDI_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#define KDI_BUFFER_SIZE 528
#define KDI_PORT_NAME_SIZE 64
#define KDI_TEXT_SIZE 256

/* 528-byte buffer: request in (code, then data), response out; length in and out. */
int32_t KDI_Command(uint8_t* buffer, int32_t* length);
int32_t KDI_OpenPort(int32_t index); /* 1-based */
int32_t KDI_FreePort(void);
int32_t KDI_PortCount(void);
int32_t KDI_PortName(int32_t index, char* buffer, int32_t size);
int32_t KDI_LastError(char* buffer, int32_t size);
int32_t KDI_Version(char* buffer, int32_t size);
int32_t KDI_Reprogram(const char* path);
int32_t KDI_ProgState(void);

#ifdef __cplusplus
}
#endif

#endif
