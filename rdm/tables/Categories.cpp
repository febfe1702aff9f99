// Product categories of DEVICE_INFO. The high byte picks the base text, the low byte a suffix; a
// low byte with no row leaves the base text alone. For high byte 0x09 the low byte's text replaces
// the base. The trailing blank of "Scene " belongs to the text.

#include "rdm/tables/RdmTables.h"

namespace zol::rdm::tables {

namespace {
constexpr IdText kNoSuffix[] = {{-1, ""}};
constexpr IdText kFixture[] = {
    {1, " - Fixed"}, {2, " - Moving Yoke"}, {3, " - Moving Mirror"}, {255, " - Controlable"}};
constexpr IdText kFixtureAccessory[] = {{0, " accessory"},       {1, " colour changer"},
                                        {2, " yoke controller"}, {3, " mirror controller"},
                                        {4, " effects disc"},    {5, " beam controller"}};
constexpr IdText kEffects[] = {{1, " - Atmospheric"}, {2, " - Pyro"}};
constexpr IdText kDimmer[] = {{1, " - AC resistive"}, {2, " - Fluorescent"},    {3, " - High Voltage"},
                              {4, " - Switching"},    {5, " - AC Low Voltage"}, {7, " - DC control"},
                              {8, " - PWM control"},  {9, " - LED control"}};
constexpr IdText kDataInterface[] = {{1, " - Distribution"}, {2, " - Protocol"}};
constexpr IdText kAudioVisual[] = {{1, "Audio Equipment"}, {2, "Video Equipment"}};

constexpr std::span<const IdText> None() {
    return std::span<const IdText>(kNoSuffix, 0);
}

constexpr CategoryRow kCategories[] = {
    {0x00, "Not Declared", None(), false},
    {0x01, "Luminary", kFixture, false},
    {0x02, "Luminary", kFixtureAccessory, false},
    {0x03, "Projector", None(), false},
    {0x04, "Effects", kEffects, false},
    {0x05, "Dimmer", kDimmer, false},
    {0x06, "Power", None(), false},
    {0x07, "Scene ", None(), false},
    {0x08, "Data Interface", kDataInterface, false},
    {0x09, "Audio Visual", kAudioVisual, true},
    {0x0A, "Monitoring", None(), false},
    {0x70, "Controller", None(), false},
    {0x71, "Test Equipment", None(), false},
    {-1, "Proprietory Equipment", None(), false},
};
} // namespace

std::span<const CategoryRow> Categories() {
    return kCategories;
}

std::string CategoryText(int32_t category) {
    const int32_t high = (category / 256) & 0xFF;
    const int32_t low = category & 0xFF;
    const CategoryRow* found = &kCategories[std::size(kCategories) - 1];
    for (const auto& row : kCategories) {
        if (row.high == high) {
            found = &row;
            break;
        }
    }
    std::string text = found->base;
    for (const auto& entry : found->lowTexts) {
        if (entry.id == low) {
            text = found->lowReplaces ? std::string(entry.text) : text + entry.text;
            break;
        }
    }
    return text;
}

} // namespace zol::rdm::tables
