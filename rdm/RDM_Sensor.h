#pragma once
// RDM_Sensor: one sensor of one sub device. Its definition is read once at Initialise; its value
// record is read on demand by Update. Raw signed 16-bit values become scaled floating-point values
// in a display unit chosen by UnitScale.

#include "framework/seam/DataObject.h"
#include "rdm/RdmValue.h"

#include <cstdint>
#include <string>

namespace zol::rdm {

class RDM_SubDev;

class RDM_Sensor : public DataObject {
public:
    std::string DataClass() const override;
    // `subDev` is a plain back-reference (the sub device owns its sensors); `item` is 1-based.
    bool Initialise(RDM_SubDev* subDev, uint8_t item);

    int32_t TypeRef() const { return type_; }
    bool HasDelta() const { return hasDelta_; }
    bool Recorder() const { return recorder_; }
    double RangeMin() const { return Scaled(rangeMinimum_); }
    double RangeMax() const { return Scaled(rangeMaximum_); }
    double LimitMin() const { return Scaled(limitMinimum_); }
    double LimitMax() const { return Scaled(limitMaximum_); }
    const std::string& Description() const { return description_; }
    // The value record's words, scaled; computed at each call, no transaction.
    double ValueMin() const;
    double ValueNow() const;
    double ValueMax() const;
    double ValueRec() const;
    std::string TypeName() const;
    const std::string& UnitName() const { return unitName_; }
    std::string UnitDesc() const;
    // Reads the value record (SET with `reset`, else GET); true when it changed.
    bool Update(bool reset);
    // Asks the device to record; false, with no transaction, when it cannot.
    bool RecordNow();
    // Text of a value: "0.0", "0.00", "0.000" for a prefix of 1, 2, 3; plain decimal otherwise.
    std::string Str(double value) const;

    // The power of ten that turns a raw value into a value in the unit name.
    int16_t Scale() const { return scale_; }
    uint8_t SensorNumber() const { return sensorNumber_; }

private:
    void UnitScale();
    double Scaled(int32_t raw) const;
    double RecordWord(int16_t position) const;

    RDM_SubDev* subDev_ = nullptr;
    uint8_t sensorNumber_ = 0;
    Bytes valueRecord_;
    int32_t type_ = 0;
    int32_t unit_ = 0;
    std::string unitName_;
    std::string description_;
    bool recorder_ = false;
    bool hasDelta_ = false;
    uint16_t prefix_ = 0;
    int16_t scale_ = 0;
    int16_t rangeMinimum_ = 0;
    int16_t rangeMaximum_ = 0;
    int16_t limitMinimum_ = 0;
    int16_t limitMaximum_ = 0;
    bool initialised_ = false;
};

} // namespace zol::rdm
