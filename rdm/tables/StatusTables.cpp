// Status message templates by message id, and the names of the status types. A template's
// placeholders are "%d" (a number, or a sensor's description after the word "Sensor"), "%x" (a
// "$" and four hex digits), "%L" (a slot description); any other letter repeats the text of the
// placeholder before it. Row 52 reads "%A" and "currents", and stands so.

#include "rdm/tables/RdmTables.h"

namespace zol::rdm::tables {

namespace {
constexpr IdText kTemplates[] = {
    {1, "%L failed calibration"},
    {2, "%L sensor not found"},
    {3, "%L sensor always on"},
    {17, "Lamp doused"},
    {18, "Lamp failed to strike"},
    {33, "Sensor %d over temp at %d °C"},
    {34, "Sensor %d under temp at %d °C"},
    {35, "Sensor %d out of range"},
    {49, "Phase %d over voltage at %dV."},
    {50, "Phase %d under voltage at %dV."},
    {51, "Phase %d over current at %dA."},
    {52, "Phase %d under currents at %A."},
    {53, "Phase %d is at %d°"},
    {54, "Phase %d Error."},
    {55, "%d Amps"},
    {56, "%d Volts"},
    {65, "No Dimmer"},
    {66, "Tripped Breaker"},
    {67, "%d Watts"},
    {68, "Dimmer Failure"},
    {69, "Panic Mode"},
    {80, "%L ready"},
    {81, "%L not ready"},
    {82, "%L low fluid"},
};

constexpr IdText kStatusTypes[] = {
    {0, "No Status"},
    {2, "Advisory"},
    {3, "Warning"},
    {4, "Error"},
};
} // namespace

std::span<const IdText> StatusTemplates() {
    return kTemplates;
}

const char* FindStatusTemplate(int32_t id) {
    for (const auto& row : kTemplates) {
        if (row.id == id) {
            return row.text;
        }
    }
    return nullptr;
}

std::span<const IdText> StatusTypes() {
    return kStatusTypes;
}

std::string StatusTypeText(int32_t number) {
    for (const auto& row : kStatusTypes) {
        if (row.id == number) {
            return row.text;
        }
    }
    return "Unknown";
}

} // namespace zol::rdm::tables
