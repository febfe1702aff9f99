/*
 * The plug-in's C ABI, as a host program sees it (libzol-plugin.so).
 *
 * Order of calls
 *   UDC_Create            makes the plug-in object (one per host; NULL when it cannot be made).
 *   UDC_PluginName        at any time, also before UDC_Init.
 *   UDC_Init              once, before the calls below.
 *   UDC_Configure, UDC_Enable ... UDC_SetChannel* ... UDC_Disable   any number of times.
 *   UDC_Term              last; afterwards every call but UDC_PluginName, UDC_ErrorInfo and
 *                         UDC_Release finds no session and fails with ZOL_PLUGIN_ERR_NO_CONTROL.
 *   UDC_Release           frees the object. The last release unloads every view of the plug-in,
 *                         so the host may unload the library afterwards.
 *
 * Threads and the event loop
 *   Every call is made on one thread, the thread of the host's Qt application object, and the host
 *   runs a Qt event loop between calls: the DMX input poll is a timer, and the plug-in's views are
 *   Qt dialogs. UDC_Configure, and UDC_Enable when no port is chosen yet, show the plug-in's main
 *   panel modally and return when the user closes it; the host's timers and calls may run inside
 *   that wait. If the host has made no QApplication, the plug-in makes one at its first need (with
 *   the "offscreen" platform when there is no display) and keeps it for the life of the process.
 *   A host that made only a QCoreApplication gets ZOL_PLUGIN_ERR_CLIENT_CALL from the calls that
 *   need views.
 *   Message boxes are Qt dialogs. Where nobody can answer them (the "offscreen" platform, or the
 *   environment variable ZOL_UI=console) they are written to standard error and answered with
 *   their first button (Cancel where Retry is offered). ZOL_UI=qt forces Qt dialogs.
 *
 * Results
 *   Each call returns 0 when it ran, or the code of the numbered error the plug-in raised to the
 *   host: 0x1000 and above for the errors of the device link (0x1102 means the local device has
 *   been disconnected), small numbers for run-time faults (91: no session object). The error's
 *   source and description are then available from UDC_ErrorInfo. Boolean results are written to
 *   *result as 1 for true and 0 for false; *result is 0 whenever the call returns an error.
 *   Init and Term report 0 on success, Enable and Disable report 1 whatever happened: this is the
 *   host contract as it stands.
 *
 * Bad arguments
 *   A NULL plugin, a NULL argument pointer (other than the helper, see UDC_Init) or a text buffer
 *   too small for the text and its terminating NUL returns ZOL_PLUGIN_ERR_CLIENT_CALL and does
 *   nothing else; a too small buffer of at least one byte receives an empty string. Buffers of
 *   ZOL_PLUGIN_TEXT_SIZE bytes are always large enough. Texts are UTF-8; line breaks in
 *   descriptions are "\r\n".
 */
#ifndef ZOL_PLUGIN_H
#define ZOL_PLUGIN_H

#include <stdint.h>

#if defined(__GNUC__)
#define ZOL_PLUGIN_API __attribute__((visibility("default")))
#else
#define ZOL_PLUGIN_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* An erroneous call: NULL pointer or too small buffer. */
#define ZOL_PLUGIN_ERR_CLIENT_CALL 0x110C
/* A call after UDC_Term: the session object is gone. */
#define ZOL_PLUGIN_ERR_NO_CONTROL 91
/* A text buffer of this size always holds the plug-in name, an error source or a description. */
#define ZOL_PLUGIN_TEXT_SIZE 1024

/*
 * The host's callback object. The plug-in copies the structure at UDC_Init; `context` must stay
 * valid until UDC_Term. In DMX-in mode the plug-in calls DMXC_DMXIn_SetChannel(context, &slot,
 * &level) for every slot (1..512) of every frame received, five times a second at most. A NULL
 * function pointer stands for a host without the callback: the first delivery then fails with
 * run-time error 438, which ends the input poll.
 */
typedef struct DMXC_Helper {
    void* context;
    void (*DMXC_DMXIn_SetChannel)(void* context, int32_t* slot, int32_t* level);
} DMXC_Helper;

typedef struct UDC_Interface UDC_Interface;

ZOL_PLUGIN_API UDC_Interface* UDC_Create(void);
ZOL_PLUGIN_API void UDC_Release(UDC_Interface* plugin);

/* Each returns 0, or the code of the numbered error the plug-in raised to the host. */

/* "KARN DMX-ZOL MK1 Plugin". */
ZOL_PLUGIN_API int32_t UDC_PluginName(UDC_Interface* plugin, char* name, int32_t size);
/* hostName names the host (the mode is remembered under it), fileName the plug-in's file; helper
 * may be NULL for a host that takes no DMX input. *result: always 0. */
ZOL_PLUGIN_API int32_t UDC_Init(UDC_Interface* plugin, const char* hostName, const char* fileName,
                                const DMXC_Helper* helper, int32_t* result);
/* Shows the main panel modally. *result: 1 when a port is chosen or open afterwards. */
ZOL_PLUGIN_API int32_t UDC_Configure(UDC_Interface* plugin, int32_t* result);
/* Opens the chosen port (asking with the main panel when none is chosen) and starts the session:
 * DMX out sends the levels, DMX in starts the input poll. *result: always 1. */
ZOL_PLUGIN_API int32_t UDC_Enable(UDC_Interface* plugin, int32_t* result);
/* Level 0..255 for slot 1..512, DMX-out mode only. *result: 1 when taken, 0 when out of bounds or
 * in DMX-in mode. Before UDC_Enable the level is kept and sent when the session starts. */
ZOL_PLUGIN_API int32_t UDC_SetChannel(UDC_Interface* plugin, int32_t* slot, int32_t* level, int32_t* result);
/* Stops the session and closes the port. *result: always 1. */
ZOL_PLUGIN_API int32_t UDC_Disable(UDC_Interface* plugin, int32_t* result);
/* Drops the session; a port still open is closed. *result: always 0. */
ZOL_PLUGIN_API int32_t UDC_Term(UDC_Interface* plugin, int32_t* result);
/* Source and description of the last error raised to the host. */
ZOL_PLUGIN_API int32_t UDC_ErrorInfo(UDC_Interface* plugin, char* source, int32_t sourceSize,
                                     char* description, int32_t descriptionSize);

#ifdef __cplusplus
}
#endif

#endif
