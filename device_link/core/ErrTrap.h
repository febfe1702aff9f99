#pragma once
// ErrTrap: the one error mechanism. Every fault is a numbered error (code, source, description)
// thrown as a ZolError, captured by the nearest handler and shown in a message box.
//
// Handlers catch `const ZolError&` and `const std::exception&`; never swallow other exception
// types (a test double's Halt travels as one of those and must reach the test).

#include <cstdint>
#include <exception>
#include <functional>
#include <stdexcept>
#include <string>

namespace zol {

// A numbered error of the catalogue, or one raised with any other number.
class ZolError : public std::runtime_error {
public:
    ZolError(int32_t code, std::string source, std::string description);
    int32_t Code() const { return code_; }
    const std::string& Source() const { return source_; }
    const std::string& Description() const { return description_; }

private:
    int32_t code_;
    std::string source_;
    std::string description_;
};

// A run-time fault of the program itself, numbered as the classic run-time errors are
// (5 invalid call, 6 overflow, 9 subscript out of range, 13 type mismatch, 364 view unloaded
// during its own load). These lie outside the 0x1000 block, so Capture returns 0 for them.
class RuntimeFault : public std::runtime_error {
public:
    RuntimeFault(int32_t number, const std::string& text) : std::runtime_error(text), number_(number) {}
    int32_t Number() const { return number_; }

private:
    int32_t number_;
};

namespace rt {
inline constexpr int32_t InvalidCall = 5;
inline constexpr int32_t Overflow = 6;
inline constexpr int32_t SubscriptOutOfRange = 9;
inline constexpr int32_t TypeMismatch = 13;
inline constexpr int32_t ObjectNotSet = 91;
inline constexpr int32_t ViewUnloaded = 364;
} // namespace rt

// Codes of the catalogue.
namespace err {
inline constexpr int32_t DMX_RX_Timed_Out = 11;
inline constexpr int32_t ErrZOL_Constraint = 0x1001;
inline constexpr int32_t ErrZOL_CommandInst = 0x1002;
inline constexpr int32_t ErrZOL_NotAnOption = 0x1003;
inline constexpr int32_t ErrZOL_FrameFormat = 0x1004;
inline constexpr int32_t ErrZOL_DataTooLong = 0x1005;
inline constexpr int32_t ErrZOL_DataMissing = 0x1006;
inline constexpr int32_t ErrZOL_SystemMode = 0x1007;
inline constexpr int32_t ErrZOL_SystemBusy = 0x1008;
inline constexpr int32_t ErrZOL_DataCheckSum = 0x100A;
inline constexpr int32_t ErrZOL_Incompatible = 0x100B;
inline constexpr int32_t RDM_Device_Response_Wait = 0x1010;
inline constexpr int32_t RDM_Device_Response_Overflow = 0x1012;
inline constexpr int32_t ErrRDM_Response_Transac = 0x1013;
inline constexpr int32_t ErrRDM_Response_SubDev = 0x1014;
inline constexpr int32_t ErrRDM_Response_Format = 0x1015;
inline constexpr int32_t ErrRDM_Response_ChkSum = 0x1016;
inline constexpr int32_t ErrRDM_Response_Missing = 0x1018;
inline constexpr int32_t ErrRDM_Response_Identity = 0x101A; // no name in the catalogue
inline constexpr int32_t ErrRDM_Response_Mutex = 0x101B;
inline constexpr int32_t ErrRDM_Response_Corrupt = 0x101C; // no name in the catalogue
inline constexpr int32_t ErrRDM_Response_UnExpected = 0x101D;
inline constexpr int32_t NR_UNKNOWN_PID = 0x1020;
inline constexpr int32_t NR_FORMAT_ERROR = 0x1021;
inline constexpr int32_t NR_HARDWARE_FAULT = 0x1022;
inline constexpr int32_t NR_PROXY_REJECT = 0x1023;
inline constexpr int32_t NR_WRITE_PROTECT = 0x1024;
inline constexpr int32_t NR_UNSUPPORTED_COMMAND_CLASS = 0x1025;
inline constexpr int32_t NR_DATA_OUT_OF_RANGE = 0x1026;
inline constexpr int32_t NR_BUFFER_FULL = 0x1027;
inline constexpr int32_t NR_PACKET_SIZE_UNSUPPORTED = 0x1028;
inline constexpr int32_t NR_SUB_DEVICE_OUT_OF_RANGE = 0x1029;
inline constexpr int32_t ErrAPI_Connection = 0x1101;
inline constexpr int32_t ErrAPI_DeviceMissig = 0x1102;
inline constexpr int32_t ErrAPI_Response_Missing = 0x1103;
inline constexpr int32_t ErrAPI_Response_Short = 0x1104;
inline constexpr int32_t ErrAPI_Response_Format = 0x1105;
inline constexpr int32_t ErrAPI_Response_Match = 0x1106;
inline constexpr int32_t ErrAPI_ProgFile_Compat = 0x1107;
inline constexpr int32_t ErrAPI_ProgFile_Corrupt = 0x1108;
inline constexpr int32_t ErrAPI_ProgFile_Path = 0x1109;
inline constexpr int32_t ErrAPI_ProgFile_Name = 0x110A;
inline constexpr int32_t ErrAPI_ClientCall = 0x110C;
inline constexpr int32_t ErrAPI_PortStatus = 0x110E;
inline constexpr int32_t ErrAPI_Unexpected = 0x1164;
inline constexpr int32_t ErrSYS_Local = 0x1200;
inline constexpr int32_t ErrSYS_Comms = 0x1201;
inline constexpr int32_t ErrSYS_SubDev = 0x1202;
inline constexpr int32_t ErrSYS_Device = 0x1203;
} // namespace err

namespace ErrTrap {

// Module state, one copy for the whole plug-in.
int32_t LastCode();
const std::string& LastSource();
const std::string& LastText();
const std::string& LocalText();
// Clears the module state (tests only; the plug-in never clears it).
void ResetForTest();

// The plug-in's file name, used as the source when Raise gets an empty one.
const char* PluginFileName();

// Throws 0x1000 | raw with the catalogue's name, a line break and "$" + three hex digits as
// description. An empty source becomes the plug-in's file name.
[[noreturn]] void Raise(int32_t raw, const std::string& source = {});
// Throws ErrSYS_Local (0x1200) with source "Local Error" and `message`, kept as LocalText.
[[noreturn]] void RaiseLocal(const std::string& message);
// Records code and source and closes the view through `closeView`.
void TrapForm(const std::function<void()>& closeView, int32_t raw, const std::string& source);

// The catalogue's name of a code ("Error Code not Elaborated" when unknown); for 0x1164 a line
// break and the device library's error text follow.
std::string ErrorName(int32_t code);
// The catalogue's message of a code, as Report shows it.
std::string Message(int32_t code);

// Reads the error being handled (call inside a catch block, or pass the exception). Unless it is
// run-time error 364, LastCode/LastText/LastSource take it. Returns LastCode if it lies in
// 0x1000..0x1FFF, otherwise 0.
int32_t Capture();
int32_t Capture(const std::exception_ptr& error);

// Shows the message of the last captured error in a box titled `source`. CanRetry false: an
// information box with OK; true: a question box with Retry and Cancel. True only on Retry.
bool Report(const std::string& source, bool canRetry);
bool Retry(const std::string& source);
// Throws LastCode, LastSource, LastText again.
[[noreturn]] void ReRaise();

// ---- The handler patterns ----

// What a handler does once it has dealt with an error.
enum class Outcome { Retry, Stop };
// The loop under every pattern: runs `body`; on an error captures it and hands the code Capture
// returned to `handle`, outside the catch block (a box's message loop may raise errors of its
// own). `handle` shows the error, throws, or says what comes next: Retry runs `body` again, Stop
// gives up. Returns true when `body` ran through.
bool Attempt(const std::function<void()>& body, const std::function<Outcome(int32_t code)>& handle);

// Standard pattern: runs `body`; on an error captures it, reports it under `source`, and for any
// code but ErrSYS_Local throws it again. Returns true when `body` ran through.
bool Standard(const std::string& source, const std::function<void()>& body);

// Missing-response pattern: the standard pattern, except that a missing RDM response (0x1018)
// asks Report(retryTitle, true) first: Retry runs `body` again, Cancel raises 0x1203.
bool MissingResponse(const std::string& source, const std::string& retryTitle,
                     const std::function<void()>& body);

// How a device- or range-pattern handler gives up: close the view with BugOut(code). Empty means
// the handler has no view and raises instead.
using BugOutFn = std::function<void(int32_t code)>;
// A handler's own cases, asked first: return true when the code was dealt with.
using SpecialFn = std::function<bool(int32_t code)>;

// Device pattern around one failing statement, which runs again on Retry:
//  0x1101/0x1103: Report(retryTitle, true); Retry runs `statement` again, Cancel gives up with
//                 0x1201 (BugOut, or Raise(0x201));
//  0x1102: gives up with the code, nothing shown;
//  0x1200: Report(source, false);
//  others: Report(source, false), then BugOut(0) or ReRaise.
// `special` is asked before these cases. Returns true when `statement` ran through.
bool Device(const std::string& source, const std::string& retryTitle, const std::function<void()>& statement,
            const BugOutFn& bugOut = {}, const SpecialFn& special = {});

} // namespace ErrTrap
} // namespace zol
