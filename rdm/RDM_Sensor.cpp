#include "rdm/RDM_Sensor.h"

#include "device_link/core/ErrTrap.h"
#include "rdm/RDM_Call.h"
#include "rdm/RDM_SubDev.h"
#include "rdm/RdmBytes.h"
#include "rdm/tables/RdmTables.h"
#include "services/strings/StrFormat.h"

#include <charconv>
#include <cmath>

namespace zol::rdm {

namespace {

std::shared_ptr<RDM_Call> Require(RDM_SubDev* subDev, int32_t pid) {
    if (subDev == nullptr) {
        throw RuntimeFault(rt::ObjectNotSet, "Object variable or With block variable not set");
    }
    auto call = subDev->ItemPID(pid);
    if (!call) {
        throw RuntimeFault(rt::ObjectNotSet, "Object variable or With block variable not set");
    }
    return call;
}

} // namespace

std::string RDM_Sensor::DataClass() const {
    return "RDM_Sensor";
}

bool RDM_Sensor::Initialise(RDM_SubDev* subDev, uint8_t item) {
    const std::string source = "RDM_Sensor.Initialise";
    auto step = [&](const std::function<void()>& body) {
        return ErrTrap::Attempt(body, [&](int32_t code) -> ErrTrap::Outcome {
            switch (code) {
            case err::ErrSYS_Local:
                ErrTrap::Report(source, false);
                return ErrTrap::Outcome::Stop;
            case err::ErrRDM_Response_Transac:
            case err::ErrRDM_Response_Missing:
                if (ErrTrap::Report("Remote Equipment Sensor", true)) {
                    return ErrTrap::Outcome::Retry;
                }
                ErrTrap::Raise(err::ErrSYS_SubDev & 0xFFF, "");
            case err::ErrSYS_Comms:
                ErrTrap::ReRaise();
            default:
                ErrTrap::Report(source, false);
                ErrTrap::ReRaise();
            }
        });
    };

    // 1. The back-reference and the 0-based sensor number.
    if (!step([&] {
            subDev_ = subDev;
            if (item < 1) {
                throw RuntimeFault(rt::Overflow, "Overflow");
            }
            sensorNumber_ = static_cast<uint8_t>(item - 1);
        })) {
        return false;
    }

    // 2. The definition.
    Bytes definition;
    if (!step([&] {
            definition =
                Require(subDev_, pid::SENSOR_DEFINITION)->GetValue(RdmValue::Byte(sensorNumber_)).AsText();
        })) {
        return false;
    }

    // 3. to 7. Its fields, then the unit.
    if (!step([&] {
            type_ = bytes::Str2Byt(definition, 2);
            unit_ = bytes::Str2Byt(definition, 3);
            prefix_ = bytes::Str2Byt(definition, 4);
            rangeMinimum_ = static_cast<int16_t>(StrFormat::WordAt(definition, 5, true));
            rangeMaximum_ = static_cast<int16_t>(StrFormat::WordAt(definition, 7, true));
            limitMinimum_ = static_cast<int16_t>(StrFormat::WordAt(definition, 9, true));
            limitMaximum_ = static_cast<int16_t>(StrFormat::WordAt(definition, 11, true));
            const uint8_t support = bytes::Str2Byt(definition, 13);
            recorder_ = (support & 0x01) != 0;
            hasDelta_ = (support & 0x03) > 1;
            description_ = definition.size() > 13 ? definition.substr(13) : std::string();
            if (!description_.empty() && description_.back() == '\0') {
                description_.pop_back();
            }
            UnitScale();
        })) {
        return false;
    }

    // 8. The first value record.
    if (!step([&] { Update(false); })) {
        return false;
    }

    initialised_ = true;
    return true;
}

void RDM_Sensor::UnitScale() {
    const int32_t prefix = prefix_;
    const int32_t base = prefix >= 17 ? (prefix & 0x0F) : -prefix;
    int range = 0;
    switch (prefix) {
    case 4:
    case 5:
    case 6:
        range = -1;
        break;
    case 7:
    case 8:
    case 9:
        range = -2;
        break;
    case 20:
    case 21:
    case 22:
        range = 1;
        break;
    case 23:
    case 24:
    case 25:
        range = 2;
        break;
    default:
        range = 0;
        break;
    }
    if (const tables::UnitCell* cell = tables::FindUnit(unit_, range)) {
        unitName_ = cell->name;
        scale_ = static_cast<int16_t>(base + cell->shift);
    } else {
        unitName_ = "Not Defined (" + std::to_string(unit_) + ")";
        scale_ = static_cast<int16_t>(base);
    }
}

double RDM_Sensor::Scaled(int32_t raw) const {
    return raw * std::pow(10.0, scale_);
}

double RDM_Sensor::RecordWord(int16_t position) const {
    return Scaled(StrFormat::WordAt(valueRecord_, position, true));
}

double RDM_Sensor::ValueMin() const {
    return RecordWord(4);
}
double RDM_Sensor::ValueNow() const {
    return RecordWord(2);
}
double RDM_Sensor::ValueMax() const {
    return RecordWord(6);
}
double RDM_Sensor::ValueRec() const {
    return RecordWord(8);
}

std::string RDM_Sensor::TypeName() const {
    return tables::SensorTypeText(type_);
}

std::string RDM_Sensor::UnitDesc() const {
    return tables::UnitDescriptionText(unit_);
}

bool RDM_Sensor::Update(bool reset) {
    try {
        auto call = Require(subDev_, pid::SENSOR_VALUE);
        const RdmValue answer = reset ? call->SetValue(RdmValue::Byte(sensorNumber_))
                                      : call->GetValue(RdmValue::Byte(sensorNumber_));
        const Bytes record = answer.AsText();
        if (record == valueRecord_) {
            return false;
        }
        valueRecord_ = record;
        return true;
    } catch (const std::exception&) {
        ErrTrap::Capture(std::current_exception());
        ErrTrap::ReRaise();
    }
}

bool RDM_Sensor::RecordNow() {
    try {
        if (subDev_ == nullptr || !subDev_->HasCall(pid::RECORD_SENSORS)) {
            return false;
        }
        subDev_->ItemPID(pid::RECORD_SENSORS)->SetValue(RdmValue::Byte(sensorNumber_));
        return true;
    } catch (const std::exception&) {
        ErrTrap::Capture(std::current_exception());
        ErrTrap::ReRaise();
    }
}

std::string RDM_Sensor::Str(double value) const {
    char buffer[64];
    std::to_chars_result done{};
    if (prefix_ >= 1 && prefix_ <= 3) {
        done = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed, prefix_);
    } else {
        done = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::general, 15);
    }
    std::string text(buffer, done.ptr);
    for (char& c : text) {
        if (c == 'e') {
            c = 'E';
        }
    }
    return text;
}

} // namespace zol::rdm
