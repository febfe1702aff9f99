#pragma once
// The typed value that RDM_Call.GetValue and SetValue take and hand back: one of the seven type
// names "Void", "Boolean", "Byte", "Integer", "Long", "String", "Date", or empty (what a call gives
// after it has reported a local error, and what a default-constructed value is).

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

namespace zol::rdm {

using Bytes = std::string;

// The tag of a typed value. `Empty` is no value at all; in the parameter catalogue it also stands
// for "no type" (an operation with a parameter type but no result type).
enum class RdmType : uint8_t { Empty, Void, Boolean, Byte, Integer, Long, String, Date };

// The type name as the checks and messages spell it ("Void", "Byte", ...; "Empty" for Empty).
std::string_view TypeName(RdmType type);

// A calendar date and time, as the REAL_TIME_CLOCK layout carries it.
struct RdmDate {
    int year = 1;
    int month = 1;
    int day = 1;
    int hour = 0;
    int minute = 0;
    int second = 0;

    // The date of `year`-`month`-`day` (false if there is no such day), to which the hours,
    // minutes and seconds are then added as amounts of time: a field over its natural range carries
    // into the next unit. Days outside the years 1 to 9999 are refused as well.
    static bool Compose(int year, int month, int day, int hours, int minutes, int seconds, RdmDate& out);

    friend bool operator==(const RdmDate&, const RdmDate&) = default;
};

class RdmValue {
public:
    RdmValue() = default; // empty

    static RdmValue Void();
    static RdmValue Boolean(bool value);
    static RdmValue Byte(uint8_t value);
    // Outgoing a 16-bit value; incoming a value 0 to 65535.
    static RdmValue Integer(int32_t value);
    static RdmValue Long(int32_t value);
    static RdmValue String(Bytes value);
    static RdmValue Date(const RdmDate& value);

    RdmType Type() const { return type_; }
    std::string_view TypeName() const { return rdm::TypeName(type_); }
    bool IsEmpty() const { return type_ == RdmType::Empty; }

    // Readers. Each answers for its own type; asked of another type they fail with run-time error
    // 13 (type mismatch), except that AsText of an empty value is an empty text.
    bool AsBool() const;
    uint8_t AsByte() const;
    int32_t AsInt() const;        // Integer or Long
    const Bytes& AsBytes() const; // String
    Bytes AsText() const;         // String, or empty text for an empty value
    const RdmDate& AsDate() const;

    // The number held by an Integer or Long value; SetValue's byte loops work on it in place.
    int32_t& NumberRef();

    friend bool operator==(const RdmValue&, const RdmValue&) = default;

private:
    using Data = std::variant<std::monostate, bool, uint8_t, int32_t, Bytes, RdmDate>;
    RdmValue(RdmType type, Data data) : type_(type), data_(std::move(data)) {}

    RdmType type_ = RdmType::Empty;
    Data data_;
};

} // namespace zol::rdm
