#include "rdm/RDM_Call.h"

#include "device_link/core/Client.h"
#include "device_link/core/ErrTrap.h"
#include "framework/seam/UiSeam.h"
#include "rdm/RdmBytes.h"
#include "rdm/tables/RdmTables.h"
#include "services/strings/StrFormat.h"

namespace zol::rdm {

namespace {

using bytes::Chr;
using tables::Handling;

constexpr int32_t kManSpecFirst = 0x8000;
constexpr int32_t kManSpecLast = 0xFFDF;
constexpr int32_t kReservedFirst = 0x7FE0;
constexpr int32_t kReservedLast = 0x7FFF;

const char* const kManSpecError = "Manufacturer-Spesific PID (Error)";

// An expected type, or none at all (a type name that is empty).
using MaybeType = std::optional<RdmType>;

std::string NameOf(const MaybeType& type) {
    return type ? std::string(TypeName(*type)) : std::string();
}

std::string Quoted(std::string_view text) {
    return Text::QuoteText(std::string(text));
}

// The text of a failed response check: the message, a line break and the response in hex.
[[noreturn]] void BadResponse(const std::string& message, const Bytes& response) {
    ErrTrap::RaiseLocal(message + kCrLf + StrFormat::BytesToHex(response, " "));
}

} // namespace

std::shared_ptr<RDM_Call> RDM_Call::Self() {
    return shared_from_this();
}

std::string RDM_Call::DataClass() const {
    return "RDM_Call";
}

bool RDM_Call::ManSpec() const {
    return pid_ >= kManSpecFirst && pid_ <= kManSpecLast;
}

void RDM_Call::Initialise(int16_t token, uint16_t subDevice, int32_t pid, bool required) {
    const std::string source = "RDM_Call.Initialise";
    token_ = token;
    subDevice_ = subDevice;
    pid_ = pid;
    required_ = required;
    ErrTrap::MissingResponse(source, "Device PID Error (" + FormatPID(pid_) + ")", [&] {
        if (ManSpec()) {
            LoadProprietoryPID();
        } else {
            LoadStandardPID();
        }
        initialised_ = true;
    });
}

void RDM_Call::LoadStandardPID() {
    if (ManSpec()) {
        LoadProprietoryPID();
        return;
    }
    if (pid_ >= kReservedFirst) {
        description_ = "ESTA Reserved Future RDM Development";
        return;
    }
    if (const tables::PidRow* row = tables::FindPid(pid_)) {
        description_ = row->description;
        setable_ = row->setable;
        return;
    }
    description_ = "Not in standard " + Text::QuoteText(FormatPID(pid_));
    setable_ = true;
}

void RDM_Call::LoadProprietoryPID() {
    const std::string source = "RDM_Call.LoadProprietoryPID";
    ErrTrap::Attempt(
        [&] {
            Bytes request;
            request += static_cast<char>((pid_ >> 8) & 0xFF);
            request += static_cast<char>(pid_ & 0xFF);
            const Bytes response = Client::RdmGet(Token(), subDevice_, pid::PARAMETER_DESCRIPTION, request);
            if (response.size() < 20) {
                ErrTrap::Raise(err::ErrRDM_Response_Format & 0xFFF, "");
            }
            const uint8_t commandClass = bytes::Str2Byt(response, 5);
            getable_ = (commandClass & 0x01) != 0;
            setable_ = (commandClass & 0x02) != 0;
            rangeMinimum_ = bytes::Str2Lng(response, 9);
            rangeMaximum_ = bytes::Str2Lng(response, 13);
            defaultValue_ = bytes::Str2Lng(response, 17);
            if (response.size() <= 20) {
                description_ = "No description available";
            } else {
                description_ = response.substr(20);
            }
        },
        [&](int32_t code) -> ErrTrap::Outcome {
            switch (code) {
            case err::NR_FORMAT_ERROR:
            case err::NR_DATA_OUT_OF_RANGE:
                description_ = kManSpecError;
                ErrTrap::Report("Device Parameter Description", false);
                return ErrTrap::Outcome::Stop;
            case err::ErrRDM_Response_Missing:
                if (ErrTrap::Report("Device - PARAMETER_DESCRIPTION", true)) {
                    return ErrTrap::Outcome::Retry;
                }
                description_ = kManSpecError;
                rangeMinimum_ = 0;
                rangeMaximum_ = 0;
                defaultValue_ = 0;
                getable_ = false;
                setable_ = false;
                return ErrTrap::Outcome::Stop;
            case err::ErrRDM_Response_ChkSum:
                ErrTrap::ReRaise();
            case err::ErrSYS_Local:
                ErrTrap::Report(source, false);
                return ErrTrap::Outcome::Stop;
            default:
                ErrTrap::Report(source, false);
                ErrTrap::ReRaise();
            }
        });
}

RdmValue RDM_Call::GetValue() {
    return Get(nullptr);
}

RdmValue RDM_Call::GetValue(const RdmValue& param) {
    return Get(&param);
}

RdmValue RDM_Call::SetValue(bool broadcast) {
    return Set(nullptr, broadcast);
}

RdmValue RDM_Call::SetValue(RdmValue& param, bool broadcast) {
    return Set(&param, broadcast);
}

RdmValue RDM_Call::SetValue(RdmValue&& param, bool broadcast) {
    return Set(&param, broadcast);
}

RdmValue RDM_Call::Get(const RdmValue* param) {
    const std::string source = "RDM_Call.GetValue";
    int32_t code = 0;
    try {
        // A GET never writes to its parameter; the exchange works on a copy.
        std::optional<RdmValue> copy;
        if (param != nullptr) {
            copy = *param;
        }
        return Exchange(false, copy ? &*copy : nullptr, false);
    } catch (const std::exception&) {
        code = ErrTrap::Capture(std::current_exception());
    }
    switch (code) {
    case err::ErrSYS_Local:
        ErrTrap::Report(source, false);
        return {};
    case err::NR_UNKNOWN_PID:
        ErrTrap::Report(description_ + " (" + FormatPID(pid_) + ")", false);
        ErrTrap::ReRaise();
    case err::NR_FORMAT_ERROR:
    case err::NR_DATA_OUT_OF_RANGE:
    case err::ErrRDM_Response_Transac:
    case err::ErrRDM_Response_Missing:
    case err::ErrRDM_Response_ChkSum:
    case err::ErrAPI_Connection:
    case err::ErrAPI_DeviceMissig:
    case err::ErrAPI_Response_Missing:
        ErrTrap::ReRaise();
    default: // NR_UNSUPPORTED_COMMAND_CLASS, ErrRDM_Response_UnExpected and any other
        ErrTrap::Report(source, false);
        ErrTrap::ReRaise();
    }
}

RdmValue RDM_Call::Set(RdmValue* param, bool broadcast) {
    const std::string source = "RDM_Call.SetValue";
    int32_t code = 0;
    try {
        return Exchange(true, param, broadcast);
    } catch (const std::exception&) {
        code = ErrTrap::Capture(std::current_exception());
    }
    switch (code) {
    case err::ErrSYS_Local:
        ErrTrap::Report(source, false);
        return {};
    case err::NR_UNKNOWN_PID:
    case err::NR_FORMAT_ERROR:
    case err::NR_DATA_OUT_OF_RANGE:
    case err::NR_UNSUPPORTED_COMMAND_CLASS:
    case err::ErrRDM_Response_Transac:
    case err::ErrRDM_Response_Missing:
    case err::ErrRDM_Response_UnExpected:
    case err::ErrAPI_Connection:
    case err::ErrAPI_DeviceMissig:
    case err::ErrAPI_Response_Missing:
        ErrTrap::ReRaise();
    default: // ErrRDM_Response_ChkSum and any other
        ErrTrap::Report(source, false);
        ErrTrap::ReRaise();
    }
}

RdmValue RDM_Call::Exchange(bool set, RdmValue* param, bool broadcast) {
    // 1. The passed type.
    const RdmType passed = param ? param->Type() : RdmType::Void;
    const std::string passedName(TypeName(passed));

    // 2. The expected parameter type and the result type.
    MaybeType expected;
    MaybeType result;
    if (ManSpec()) {
        expected = RdmType::String;
        result = RdmType::String;
    } else if (!set && pid_ >= kReservedFirst && pid_ <= kReservedLast) {
        // Both stay empty: the type check below fails.
    } else {
        const tables::PidRow* row = tables::FindPid(pid_);
        const tables::Signature* signature = row ? (set ? &row->set : &row->get) : nullptr;
        if (signature != nullptr && signature->handling == Handling::Halt) {
            ui().Halt();
        }
        if (signature == nullptr || signature->handling == Handling::None) {
            ErrTrap::RaiseLocal("PID Not handled " + Text::QuoteText(FormatPID(pid_)));
        }
        expected = signature->param;
        if (signature->result != RdmType::Empty) {
            result = signature->result;
        }
    }

    // 3. The type check.
    if (!expected || passed != *expected) {
        std::string text = passed == RdmType::Void ? std::string("No parameter passed")
                                                   : "Parameter type " + Quoted(passedName) + " passed";
        text += kCrLf;
        text += expected == RdmType::Void ? std::string("No parameter expected")
                                          : "Expecting parameter type " + Quoted(NameOf(expected));
        ErrTrap::RaiseLocal(text);
    }

    // 4. The parameter data.
    Bytes data;
    switch (*expected) {
    case RdmType::Void:
        break;
    case RdmType::Boolean:
        data += static_cast<char>(param->AsBool() ? 1 : 0);
        break;
    case RdmType::Byte:
        data += static_cast<char>(param->AsByte());
        break;
    case RdmType::Integer:
    case RdmType::Long:
        if (!set && *expected == RdmType::Integer) {
            data = bytes::Int2Str(param->AsInt());
            break;
        }
        if (!set) {
            ErrTrap::RaiseLocal("Parameter Type " + Quoted(passedName) + " not handled");
        } else {
            // Low byte first off the caller's own value, each byte put in front of the data.
            int32_t& value = param->NumberRef();
            const int count = *expected == RdmType::Integer ? 2 : 4;
            for (int i = 0; i < count; ++i) {
                const int32_t low = value % 256;
                value = (value - low) / 256;
                data.insert(data.begin(), Chr(low));
            }
        }
        break;
    case RdmType::String:
        data = param->AsBytes();
        break;
    case RdmType::Date:
        if (!set) {
            ErrTrap::RaiseLocal("Parameter Type " + Quoted(passedName) + " not handled");
        } else {
            const RdmDate& date = param->AsDate();
            data = bytes::Int2Str(date.year);
            data += Chr(date.month);
            data += Chr(date.day);
            data += Chr(date.hour);
            data += Chr(date.minute);
            data += Chr(date.second);
        }
        break;
    case RdmType::Empty:
        if (set) {
            ErrTrap::RaiseLocal("Data type " + Quoted(passedName) + " for PID " + Quoted(description_) +
                                " Not handled");
        }
        ErrTrap::RaiseLocal("Parameter Type " + Quoted(passedName) + " not handled");
    }

    // 5. The transaction.
    const Bytes response = set ? Client::RdmSet(broadcast ? 0 : Token(), subDevice_, pid_, data)
                               : Client::RdmGet(Token(), subDevice_, pid_, data);

    // 6. The response, by the result type.
    const RdmType want = result.value_or(RdmType::Empty);
    switch (want) {
    case RdmType::Void:
        if (!response.empty()) {
            BadResponse("No response data was expected in call", response);
        }
        return RdmValue::Void();
    case RdmType::Boolean:
        if (response.size() != 1) {
            BadResponse("Unexpected data returned from call", response);
        }
        return RdmValue::Boolean(response[0] != 0);
    case RdmType::Byte:
        if (response.size() != 1) {
            BadResponse("Invalid data returned from call", response);
        }
        return RdmValue::Byte(static_cast<uint8_t>(response[0]));
    case RdmType::Integer:
        if (response.size() != 2) {
            BadResponse("Invalid data returned from call", response);
        }
        return RdmValue::Integer(StrFormat::WordAt(response, 1, false));
    case RdmType::String:
        return RdmValue::String(response);
    case RdmType::Long:
        if (set) {
            break;
        }
        if (response.size() != 4) {
            BadResponse("Invalid data returned from call", response);
        }
        return RdmValue::Long(bytes::Str2Lng(response, 1));
    case RdmType::Date: {
        if (set) {
            break;
        }
        if (response.size() != 7) {
            ErrTrap::Raise(err::ErrRDM_Response_Format & 0xFFF, "");
        }
        RdmDate date;
        if (!RdmDate::Compose(StrFormat::WordAt(response, 1, false), bytes::Str2Byt(response, 3),
                              bytes::Str2Byt(response, 4), bytes::Str2Byt(response, 5),
                              bytes::Str2Byt(response, 6), bytes::Str2Byt(response, 7), date)) {
            throw RuntimeFault(rt::TypeMismatch, "Type mismatch");
        }
        return RdmValue::Date(date);
    }
    case RdmType::Empty:
        break;
    }
    ErrTrap::RaiseLocal("Type " + Quoted(passedName) + " conversion, not handled");
}

} // namespace zol::rdm
