#include "rdm/RDM_Status.h"

#include "device_link/core/ErrTrap.h"
#include "rdm/RDM_Call.h"
#include "rdm/RDM_Sensor.h"
#include "rdm/RDM_Slot.h"
#include "rdm/RDM_SubDev.h"
#include "rdm/RdmBytes.h"
#include "rdm/tables/RdmTables.h"
#include "services/strings/StrFormat.h"

#include <vector>

namespace zol::rdm {

namespace {

std::vector<std::string> Split(const std::string& text, char delimiter) {
    std::vector<std::string> pieces;
    size_t start = 0;
    for (;;) {
        const size_t at = text.find(delimiter, start);
        if (at == std::string::npos) {
            pieces.push_back(text.substr(start));
            return pieces;
        }
        pieces.push_back(text.substr(start, at - start));
        start = at + 1;
    }
}

// The last blank-separated word of the trimmed text, trimmed; empty when there is none.
std::string LastWord(const std::string& piece) {
    const std::string trimmed = Text::TrimBlanks(piece);
    if (trimmed.empty()) {
        return {};
    }
    return Text::TrimBlanks(Split(trimmed, ' ').back());
}

} // namespace

void RDM_Status::Initialise(const Bytes& data, std::shared_ptr<RDM_SubDev> subDev) {
    ErrTrap::Standard("RDM_Status.Initialise", [&] {
        subDev_ = std::move(subDev);
        ParsData(data);
    });
}

std::string RDM_Status::DataClass() const {
    return "RDM_Status";
}

std::string RDM_Status::StatusTxt() const {
    return std::to_string(statusNumber_) + " - " + statusText_;
}

std::string RDM_Status::MsgID() const {
    return FormatPID(messageId_);
}

std::string RDM_Status::Value1() const {
    return FormatPID(value1_);
}

std::string RDM_Status::Value2() const {
    return FormatPID(value2_);
}

void RDM_Status::ParsData(const Bytes& data) {
    ErrTrap::Standard("RDM_Status.ParsData", [&] {
        const int32_t subRef = StrFormat::WordAt(data, 1, false);
        if (subRef > 32767) {
            throw RuntimeFault(rt::Overflow, "Overflow");
        }
        subDeviceRef_ = static_cast<int16_t>(subRef);
        statusNumber_ = bytes::Str2Byt(data, 3);
        statusText_ = tables::StatusTypeText(statusNumber_);
        messageId_ = StrFormat::WordAt(data, 4, false);
        value1_ = StrFormat::WordAt(data, 6, false);
        value2_ = StrFormat::WordAt(data, 8, false);

        const std::vector<std::string> pieces = Split(" " + MessageTemplate(messageId_), '%');
        int32_t current = value1_;
        std::string result;
        std::string text;
        for (size_t i = 1; i < pieces.size(); ++i) {
            const std::string word = LastWord(pieces[i - 1]);
            const std::string& piece = pieces[i];
            const char placeholder = piece.empty() ? '\0' : piece[0];
            if (placeholder == 'd') {
                text = word == "Sensor" ? SensorText(current) : std::to_string(current);
            } else if (placeholder == 'x') {
                text = FormatPID(current);
            } else if (placeholder == 'L') {
                RDM_Slot slot;
                slot.Initialise(current);
                text = slot.Description();
            }
            // Any other placeholder repeats the text of the one before.
            result += text;
            if (piece.size() > 1) {
                result += piece.substr(1);
            }
            current = value2_;
        }
        message_ = Text::TrimBlanks(pieces[0] + result);
    });
}

std::string RDM_Status::SensorText(int32_t item) {
    if (item < 0 || item > 255) {
        throw RuntimeFault(rt::Overflow, "Overflow");
    }
    RDM_Sensor sensor;
    sensor.Initialise(subDev_.get(), static_cast<uint8_t>(item));
    return sensor.Description();
}

std::string RDM_Status::MessageTemplate(int32_t id) {
    const int32_t number = id >= 32768 ? id - 65535 : id;
    if (const char* fixed = tables::FindStatusTemplate(number)) {
        return fixed;
    }
    if (!subDev_) {
        throw RuntimeFault(rt::ObjectNotSet, "Object variable or With block variable not set");
    }
    if (subDev_->HasCall(pid::STATUS_ID_DESCRIPTION)) {
        return subDev_->ItemPID(pid::STATUS_ID_DESCRIPTION)->GetValue(RdmValue::Integer(number)).AsText();
    }
    return {};
}

} // namespace zol::rdm
