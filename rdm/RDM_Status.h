#pragma once
// RDM_Status: one nine-byte status message turned into a sentence. The message id picks a
// template whose placeholders are filled with the message's two data values.

#include "framework/seam/DataObject.h"
#include "rdm/RdmValue.h"

#include <cstdint>
#include <memory>
#include <string>

namespace zol::rdm {

class RDM_SubDev;

class RDM_Status : public DataObject {
public:
    // Keeps `subDev` (where descriptions are asked) and parses the record.
    void Initialise(const Bytes& data, std::shared_ptr<RDM_SubDev> subDev);
    std::string DataClass() const override;
    int16_t SubRef() const { return subDeviceRef_; }
    const std::string& Message() const { return message_; }
    int32_t StatusNum() const { return statusNumber_; }
    // "2 - Advisory".
    std::string StatusTxt() const;
    // "$" and four upper-case hex digits.
    std::string MsgID() const;
    std::string Value1() const;
    std::string Value2() const;

private:
    void ParsData(const Bytes& data);
    std::string SensorText(int32_t item);
    std::string MessageTemplate(int32_t id);

    int32_t messageId_ = 0;
    std::shared_ptr<RDM_SubDev> subDev_;
    int16_t subDeviceRef_ = 0;
    int32_t value1_ = 0;
    int32_t value2_ = 0;
    std::string message_;
    std::string statusText_;
    int32_t statusNumber_ = 0;
};

} // namespace zol::rdm
