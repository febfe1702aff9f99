#include "rdm/RdmValue.h"

#include "device_link/core/ErrTrap.h"

#include <chrono>

namespace zol::rdm {

std::string_view TypeName(RdmType type) {
    switch (type) {
    case RdmType::Empty:
        return "Empty";
    case RdmType::Void:
        return "Void";
    case RdmType::Boolean:
        return "Boolean";
    case RdmType::Byte:
        return "Byte";
    case RdmType::Integer:
        return "Integer";
    case RdmType::Long:
        return "Long";
    case RdmType::String:
        return "String";
    case RdmType::Date:
        return "Date";
    }
    return "Empty";
}

bool RdmDate::Compose(int year, int month, int day, int hours, int minutes, int seconds, RdmDate& out) {
    using namespace std::chrono;
    if (year < 1 || year > 9999) {
        return false;
    }
    const year_month_day ymd{std::chrono::year{year}, std::chrono::month{static_cast<unsigned>(month)},
                             std::chrono::day{static_cast<unsigned>(day)}};
    if (month < 1 || day < 1 || !ymd.ok()) {
        return false;
    }
    const auto at = sys_seconds{sys_days{ymd}} + std::chrono::hours{hours} + std::chrono::minutes{minutes} +
                    std::chrono::seconds{seconds};
    const auto date = floor<days>(at);
    const year_month_day result{date};
    const hh_mm_ss time{at - date};
    if (static_cast<int>(result.year()) > 9999) {
        return false;
    }
    out.year = static_cast<int>(result.year());
    out.month = static_cast<int>(static_cast<unsigned>(result.month()));
    out.day = static_cast<int>(static_cast<unsigned>(result.day()));
    out.hour = static_cast<int>(time.hours().count());
    out.minute = static_cast<int>(time.minutes().count());
    out.second = static_cast<int>(time.seconds().count());
    return true;
}

RdmValue RdmValue::Void() {
    return RdmValue(RdmType::Void, std::monostate{});
}

RdmValue RdmValue::Boolean(bool value) {
    return RdmValue(RdmType::Boolean, value);
}

RdmValue RdmValue::Byte(uint8_t value) {
    return RdmValue(RdmType::Byte, value);
}

RdmValue RdmValue::Integer(int32_t value) {
    return RdmValue(RdmType::Integer, value);
}

RdmValue RdmValue::Long(int32_t value) {
    return RdmValue(RdmType::Long, value);
}

RdmValue RdmValue::String(Bytes value) {
    return RdmValue(RdmType::String, std::move(value));
}

RdmValue RdmValue::Date(const RdmDate& value) {
    return RdmValue(RdmType::Date, value);
}

namespace {
[[noreturn]] void Mismatch() {
    throw RuntimeFault(rt::TypeMismatch, "Type mismatch");
}
} // namespace

bool RdmValue::AsBool() const {
    if (type_ != RdmType::Boolean) {
        Mismatch();
    }
    return std::get<bool>(data_);
}

uint8_t RdmValue::AsByte() const {
    if (type_ != RdmType::Byte) {
        Mismatch();
    }
    return std::get<uint8_t>(data_);
}

int32_t RdmValue::AsInt() const {
    if (type_ != RdmType::Integer && type_ != RdmType::Long) {
        Mismatch();
    }
    return std::get<int32_t>(data_);
}

int32_t& RdmValue::NumberRef() {
    if (type_ != RdmType::Integer && type_ != RdmType::Long) {
        Mismatch();
    }
    return std::get<int32_t>(data_);
}

const Bytes& RdmValue::AsBytes() const {
    if (type_ != RdmType::String) {
        Mismatch();
    }
    return std::get<Bytes>(data_);
}

Bytes RdmValue::AsText() const {
    if (type_ == RdmType::Empty) {
        return {};
    }
    return AsBytes();
}

const RdmDate& RdmValue::AsDate() const {
    if (type_ != RdmType::Date) {
        Mismatch();
    }
    return std::get<RdmDate>(data_);
}

} // namespace zol::rdm
