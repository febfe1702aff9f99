#include "device_link/status/DEV_Status.h"

#include "device_link/core/Client.h"
#include "device_link/core/ErrTrap.h"
#include "services/settings/AUF_Registry.h"
#include "services/strings/StrFormat.h"

#include <cctype>
#include <cstdint>
#include <limits>

namespace zol {
namespace {

// One field of a version as a number: blanks alone are 0.
int64_t FieldValue(const std::string& text) {
    const std::string field = Text::TrimBlanks(text);
    if (field.empty()) {
        return 0;
    }
    bool negative = false;
    size_t i = 0;
    if (field[0] == '+' || field[0] == '-') {
        negative = field[0] == '-';
        i = 1;
    }
    if (i >= field.size()) {
        throw RuntimeFault(rt::TypeMismatch, "Type mismatch");
    }
    int64_t value = 0;
    for (; i < field.size(); ++i) {
        if (!std::isdigit(static_cast<unsigned char>(field[i]))) {
            throw RuntimeFault(rt::TypeMismatch, "Type mismatch");
        }
        value = value * 10 + (field[i] - '0');
        if (value > std::numeric_limits<int32_t>::max()) {
            throw RuntimeFault(rt::Overflow, "Overflow");
        }
    }
    return negative ? -value : value;
}

// The handler of the two probes: a device that does not know the command ends the probe quietly,
// a local error is shown, anything else is shown and goes on up.
void ProbeFailed(const std::string& source) {
    const int32_t code = ErrTrap::Capture(std::current_exception());
    if (code == err::ErrZOL_CommandInst) {
        return;
    }
    ErrTrap::Report(source, false);
    if (code == err::ErrSYS_Local) {
        return;
    }
    ErrTrap::ReRaise();
}

} // namespace

namespace Versions {

int Compare(const std::string& stored, const std::string& present) {
    const auto storedFields = Text::VersionFields(stored);
    const auto presentFields = Text::VersionFields(present);
    for (size_t i = 0; i < storedFields.size(); ++i) {
        const int64_t a = FieldValue(storedFields[i]);
        const int64_t b = FieldValue(presentFields[i]);
        if (a > b) {
            return 1;
        }
        if (b > a) {
            return -1;
        }
    }
    return 0;
}

bool AnyFieldGreater(const std::string& stored, const std::string& present) {
    const auto storedFields = Text::VersionFields(stored);
    const auto presentFields = Text::VersionFields(present);
    for (size_t i = 0; i < storedFields.size(); ++i) {
        if (FieldValue(storedFields[i]) > FieldValue(presentFields[i])) {
            return true;
        }
    }
    return false;
}

} // namespace Versions

std::string DEV_Status::DefaultFirmware(int32_t model) {
    switch (model) {
    case 1:
        return "0.3.010";
    case 2:
        return "0.0.002";
    default:
        return "0.0.0";
    }
}

void DEV_Status::Probe(bool quiet) {
    ProbeFactory();
    ProbeUpdates();
    if (quiet) {
        hushed_ = false;
    }
}

void DEV_Status::ProbeFactory() {
    try {
        Client::ReadMemory(0, 1);
        factoryMode_ = true;
    } catch (const std::exception&) {
        ProbeFailed("DEV_Status.ProbeFactory");
    }
}

void DEV_Status::ProbeUpdates() {
    try {
        const int32_t model = Client::DeviceModel();
        if (model < std::numeric_limits<int16_t>::min() || model > std::numeric_limits<int16_t>::max()) {
            throw RuntimeFault(rt::Overflow, "Overflow");
        }
        AUF_Registry::WriteValue("DeviceModel", static_cast<int16_t>(model));
        const std::string newest =
            AUF_Registry::ReadString("ModelFirmware-" + std::to_string(model), DefaultFirmware(model));
        updateFound_ = Versions::Compare(newest, Client::FirmwareRev()) > 0;
    } catch (const std::exception&) {
        ProbeFailed("DEV_Status.ProbeUpdates");
    }
}

} // namespace zol
