#include "device_link/core/ErrTrap.h"

#include "device_link/core/Client.h"
#include "framework/seam/Product.h"
#include "framework/seam/UiSeam.h"

#include <new>
#include <utility>

namespace zol {

ZolError::ZolError(int32_t code, std::string source, std::string description)
    : std::runtime_error(description), code_(code), source_(std::move(source)),
      description_(std::move(description)) {}

namespace ErrTrap {

namespace {

struct TrapState {
    int32_t lastCode = 0;
    std::string lastSource;
    std::string lastText;
    std::string localText;
};

TrapState& state() {
    static TrapState instance;
    return instance;
}

constexpr const char* kHexDigits = "0123456789ABCDEF";

// `digits` upper-case hexadecimal digits of the low bits of `value`.
std::string HexDigits(uint32_t value, int digits) {
    std::string out;
    for (int shift = (digits - 1) * 4; shift >= 0; shift -= 4) {
        out += kHexDigits[(value >> shift) & 0x0F];
    }
    return out;
}

struct Entry {
    int32_t code;
    const char* name; // nullptr: the code has no name of its own
    const char* message;
};

// The catalogue. Line breaks inside a message are "\r\n".
constexpr Entry kCatalogue[] = {
    {err::DMX_RX_Timed_Out, "DMX_RX_Timed_Out", "DMX receive stream has timed out"},
    {err::ErrZOL_Constraint, "ErrZOL_Constraint", "Value sent to the local device is out of allowed Range"},
    {err::ErrZOL_CommandInst, "ErrZOL_CommandInst", "The Command sent to the local device is not available"},
    {err::ErrZOL_NotAnOption, "ErrZOL_NotAnOption",
     "An Option used with a command to the \r\nlocal device is not available"},
    {err::ErrZOL_FrameFormat, "ErrZOL_FrameFormat",
     "A frame sent to the local device is incorrectly formatted"},
    {err::ErrZOL_DataTooLong, "ErrZOL_DataTooLong", "A frame sent to the local device is too long"},
    {err::ErrZOL_DataMissing, "ErrZOL_DataMissing",
     "A frame sent to the local device is missing expected data"},
    {err::ErrZOL_SystemMode, "ErrZOL_SystemMode", "Local device not in correct mode for request"},
    {err::ErrZOL_SystemBusy, "ErrZOL_SystemBusy", "The local device is Busy"},
    {err::ErrZOL_DataCheckSum, "ErrZOL_DataCheckSum", "The local device detected a Check Sum Error"},
    {err::ErrZOL_Incompatible, "ErrZOL_Incompatible", "Invalid data received by local device"},
    {err::RDM_Device_Response_Wait, "RDM_Device_Response_Wait", "RDM_Device_Response_Wait"},
    {err::RDM_Device_Response_Overflow, "RDM_Device_Response_Overflow", "RDM_Device_Response_Overflow"},
    {err::ErrRDM_Response_Transac, "ErrRDM_Response_Transac",
     "Unexpected response from remote device\r\nResponse transaction did not match the request"},
    {err::ErrRDM_Response_SubDev, "ErrRDM_Response_SubDev",
     "Response form remote device is from wrong subdevice "},
    {err::ErrRDM_Response_Format, "ErrRDM_Response_Format", "Error in received RDM Frame format"},
    {err::ErrRDM_Response_ChkSum, "ErrRDM_Response_ChkSum",
     "Bad Check Sum in RDM response from remote device"},
    {err::ErrRDM_Response_Missing, "ErrRDM_Response_Missing",
     "Expected reponse from remote device not received"},
    {err::ErrRDM_Response_Identity, nullptr, "Identity of responder not the same as was expected"},
    {err::ErrRDM_Response_Mutex, "ErrRDM_Response_Mutex", "A device failed to mute or is duplicated"},
    {err::ErrRDM_Response_Corrupt, nullptr, "A remote device is corrupting the discovery routine"},
    {err::ErrRDM_Response_UnExpected, "ErrRDM_Response_UnExpected",
     "A response was received from a remote device\r\nNo response was expected"},
    {err::NR_UNKNOWN_PID, "NR_UNKNOWN_PID", "The PID used is not supported by the remote device"},
    {err::NR_FORMAT_ERROR, "NR_FORMAT_ERROR", "The remote device reports a request format error"},
    {err::NR_HARDWARE_FAULT, "NR_HARDWARE_FAULT", "The remote device comand failed due to a Hardware Fault"},
    {err::NR_PROXY_REJECT, "NR_PROXY_REJECT", "NR_PROXY_REJECT"},
    {err::NR_WRITE_PROTECT, "NR_WRITE_PROTECT", "The remote device is write protected"},
    {err::NR_UNSUPPORTED_COMMAND_CLASS, "NR_UNSUPPORTED_COMMAND_CLASS",
     "The Command Class is not supported by the remote device"},
    {err::NR_DATA_OUT_OF_RANGE, "NR_DATA_OUT_OF_RANGE",
     "The value submitted is out of range \r\n for the remote device"},
    {err::NR_BUFFER_FULL, "NR_BUFFER_FULL", "The remote device's buffer is full"},
    {err::NR_PACKET_SIZE_UNSUPPORTED, "NR_PACKET_SIZE_UNSUPPORTED",
     "The remote device does not support the\r\nsize of request packet sent"},
    {err::NR_SUB_DEVICE_OUT_OF_RANGE, "NR_SUB_DEVICE_OUT_OF_RANGE",
     "The remote device does not have this sub device"},
    {err::ErrAPI_Connection, "ErrAPI_Connection",
     "Problem with connection to Equipment\r\nIf problem persists then check USB cables"},
    {err::ErrAPI_DeviceMissig, "ErrAPI_DeviceMissig", "Local device has been disconnected"},
    {err::ErrAPI_Response_Missing, "ErrAPI_Response_Missing", "Local device is not responding"},
    {err::ErrAPI_Response_Short, "ErrAPI_Response_Short", "Local device response truncated"},
    {err::ErrAPI_Response_Format, "ErrAPI_Response_Format", "Response from local device has incorect format"},
    {err::ErrAPI_Response_Match, "ErrAPI_Response_Match",
     "Response from local device does not match request"},
    {err::ErrAPI_ProgFile_Compat, "ErrAPI_ProgFile_Compat", "Binary File not compatible with this device"},
    {err::ErrAPI_ProgFile_Corrupt, "ErrAPI_ProgFile_Corrupt", "Binary File failed Integrity Check"},
    {err::ErrAPI_ProgFile_Path, "ErrAPI_ProgFile_Path", "The file Path was not found"},
    {err::ErrAPI_ProgFile_Name, "ErrAPI_ProgFile_Name", "The file was not found"},
    {err::ErrAPI_ClientCall, "ErrAPI_ClientCall", "An erronious call was made to the API by the application"},
    {err::ErrAPI_PortStatus, "ErrAPI_PortStatus", "Connection Port is in wrong mode"},
    // 0x1164 (ErrAPI_Unexpected), 0x1200 (ErrSYS_Local) carry texts found at the time: see below.
    {err::ErrSYS_Comms, "ErrSYS_Comms", "Communication error with Local Device"},
    {err::ErrSYS_SubDev, "ErrSYS_SubDev", "Remote Equipment Sub Device Error"},
    {err::ErrSYS_Device, "ErrSYS_Device", "Remote Device Equipment Error"},
};

const Entry* Find(int32_t code) {
    for (const Entry& entry : kCatalogue) {
        if (entry.code == code) {
            return &entry;
        }
    }
    return nullptr;
}

bool InBlock(int32_t code) {
    return code >= 0x1000 && code <= 0x1FFF;
}

// A number for a standard exception that is not one of the system's own: the classic run-time
// number of the same kind, so that it stays outside the 0x1000 block.
int32_t NumberOf(const std::exception& error) {
    if (dynamic_cast<const std::bad_alloc*>(&error) != nullptr) {
        return 7; // out of memory
    }
    if (dynamic_cast<const std::overflow_error*>(&error) != nullptr ||
        dynamic_cast<const std::underflow_error*>(&error) != nullptr) {
        return rt::Overflow;
    }
    if (dynamic_cast<const std::out_of_range*>(&error) != nullptr) {
        return rt::SubscriptOutOfRange;
    }
    if (dynamic_cast<const std::invalid_argument*>(&error) != nullptr ||
        dynamic_cast<const std::length_error*>(&error) != nullptr) {
        return rt::InvalidCall;
    }
    if (dynamic_cast<const std::bad_cast*>(&error) != nullptr) {
        return rt::TypeMismatch;
    }
    return 51; // internal error
}

} // namespace

int32_t LastCode() {
    return state().lastCode;
}
const std::string& LastSource() {
    return state().lastSource;
}
const std::string& LastText() {
    return state().lastText;
}
const std::string& LocalText() {
    return state().localText;
}

void ResetForTest() {
    state() = TrapState{};
}

const char* PluginFileName() {
    return product::kFileName;
}

std::string ErrorName(int32_t code) {
    if (code == err::ErrAPI_Unexpected) {
        return std::string("ErrAPI_Unexpected") + kCrLf + Client::LibraryError();
    }
    if (code == err::ErrSYS_Local) {
        return "ErrSYS_Local";
    }
    const Entry* entry = Find(code);
    if (entry == nullptr || entry->name == nullptr) {
        return "Error Code not Elaborated";
    }
    return entry->name;
}

std::string Message(int32_t code) {
    if (code == err::ErrAPI_Unexpected) {
        return std::string("Unexpected Error returned from Application interface") + kCrLf +
               Client::LibraryError();
    }
    if (code == err::ErrSYS_Local) {
        return state().localText;
    }
    if (const Entry* entry = Find(code)) {
        return entry->message;
    }
    return "Error Code $" + HexDigits(static_cast<uint32_t>(code), 2) + " not Elaborated in this version";
}

void Raise(int32_t raw, const std::string& source) {
    const int32_t code = raw | 0x1000;
    TrapState& s = state();
    s.lastCode = code;
    const std::string where = source.empty() ? std::string(PluginFileName()) : source;
    const std::string description = ErrorName(code) + kCrLf + "$" + HexDigits(static_cast<uint32_t>(raw), 3);
    throw ZolError(code, where, description);
}

void RaiseLocal(const std::string& message) {
    TrapState& s = state();
    s.localText = message;
    throw ZolError(err::ErrSYS_Local, "Local Error", message);
}

void TrapForm(const std::function<void()>& closeView, int32_t raw, const std::string& source) {
    TrapState& s = state();
    s.lastCode = raw | 0x1000;
    s.lastSource = source;
    if (closeView) {
        closeView();
    }
}

int32_t Capture(const std::exception_ptr& error) {
    if (!error) {
        const int32_t code = state().lastCode;
        return InBlock(code) ? code : 0;
    }
    int32_t number = 0;
    std::string source;
    std::string text;
    try {
        std::rethrow_exception(error);
    } catch (const ZolError& e) {
        number = e.Code();
        source = e.Source();
        text = e.Description();
    } catch (const RuntimeFault& e) {
        number = e.Number();
        source = PluginFileName();
        text = e.what();
    } catch (const std::exception& e) {
        number = NumberOf(e);
        source = PluginFileName();
        text = e.what();
    }
    // Anything that is not an exception of ours or of the standard library goes on its way
    // unhandled (the rethrow above lets it out of this function).
    TrapState& s = state();
    if (number != rt::ViewUnloaded) {
        s.lastCode = number;
        s.lastText = std::move(text);
        s.lastSource = std::move(source);
    }
    return InBlock(s.lastCode) ? s.lastCode : 0;
}

int32_t Capture() {
    return Capture(std::current_exception());
}

bool Report(const std::string& source, bool canRetry) {
    const TrapState& s = state();
    const std::string message = InBlock(s.lastCode) ? Message(s.lastCode) : s.lastText;
    const int style = canRetry ? (vb::Question | vb::RetryCancel) : (vb::Information | vb::OKOnly);
    const int answer = ui().MsgBox(message, style, source);
    return canRetry && answer == vb::Retry;
}

bool Retry(const std::string& source) {
    return Report(source, true);
}

void ReRaise() {
    const TrapState& s = state();
    throw ZolError(s.lastCode, s.lastSource, s.lastText);
}

bool Attempt(const std::function<void()>& body, const std::function<Outcome(int32_t code)>& handle) {
    for (;;) {
        int32_t code = 0;
        try {
            body();
            return true;
        } catch (const std::exception&) {
            code = Capture(std::current_exception());
        }
        if (handle(code) == Outcome::Stop) {
            return false;
        }
    }
}

bool Standard(const std::string& source, const std::function<void()>& body) {
    return Attempt(body, [&](int32_t code) -> Outcome {
        Report(source, false);
        if (code == err::ErrSYS_Local) {
            return Outcome::Stop;
        }
        ReRaise();
    });
}

bool MissingResponse(const std::string& source, const std::string& retryTitle,
                     const std::function<void()>& body) {
    return Attempt(body, [&](int32_t code) -> Outcome {
        if (code == err::ErrRDM_Response_Missing) {
            if (Report(retryTitle, true)) {
                return Outcome::Retry;
            }
            Raise(err::ErrSYS_Device & 0xFFF, "");
        }
        Report(source, false);
        if (code == err::ErrSYS_Local) {
            return Outcome::Stop;
        }
        ReRaise();
    });
}

bool Device(const std::string& source, const std::string& retryTitle, const std::function<void()>& statement,
            const BugOutFn& bugOut, const SpecialFn& special) {
    return Attempt(statement, [&](int32_t code) -> Outcome {
        if (special && special(code)) {
            return Outcome::Stop;
        }
        switch (code) {
        case err::ErrAPI_Connection:
        case err::ErrAPI_Response_Missing:
            if (Report(retryTitle, true)) {
                return Outcome::Retry; // the failing statement runs again
            }
            if (bugOut) {
                bugOut(err::ErrSYS_Comms);
                return Outcome::Stop;
            }
            Raise(err::ErrSYS_Comms & 0xFFF, source);
        case err::ErrAPI_DeviceMissig:
            // The device is gone: nothing is shown here, the level above reports it.
            if (bugOut) {
                bugOut(code);
                return Outcome::Stop;
            }
            ReRaise();
        case err::ErrSYS_Local:
            Report(source, false);
            return Outcome::Stop;
        default:
            Report(source, false);
            if (bugOut) {
                bugOut(0);
                return Outcome::Stop;
            }
            ReRaise();
        }
    });
}

} // namespace ErrTrap
} // namespace zol
