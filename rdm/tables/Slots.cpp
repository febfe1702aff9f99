// Slot definition numbers and their descriptions, used by the "%L" placeholder of status messages.
// "Colour Wheel" is number 201 (0x00C9); 0x0201 has no row.

#include "rdm/tables/RdmTables.h"

namespace zol::rdm::tables {

namespace {
constexpr IdText kSlots[] = {
    {0x0001, "Intensity"},
    {0x0002, "Intensity Master"},
    {0x00C9, "Colour Wheel"},
    {0x0101, "Pan"},
    {0x0102, "Tilt"},
    {0x0202, "Subtractive Colour Mixer - Cyan/Blue"},
    {0x0203, "Subtractive Colour Mixer - Yellow/Amber"},
    {0x0204, "Subtractive Colour Mixer - Magenta"},
    {0x0205, "Additive Colour Mixer - Red"},
    {0x0206, "Additive Colour Mixer - Green"},
    {0x0207, "Additive Colour Mixer - Blue"},
    {0x0208, "Colour Temperature Correction"},
    {0x0209, "Colour Scroll"},
    {0x0210, "Colour Semaphore"},
    {0x0301, "Static gobo wheel"},
    {0x0302, "Rotating gobo wheel"},
    {0x0303, "Prism wheel"},
    {0x0304, "Effects wheel"},
    {0x0401, "Beam size iris"},
    {0x0402, "Edge/Lens focus"},
    {0x0403, "Frost/Diffusion"},
    {0x0404, "Strobe/Shutter"},
    {0x0405, "Zoom lens"},
    {0x0406, "Framing shutter"},
    {0x0407, "Framing shutter rotation"},
    {0x0408, "Douser"},
    {0x0409, "Barn Door"},
    {0x0502, "Lamp control functions"},
    {0x0503, "Overall speed setting applied to multiple or all parameters"},
    {0x0504, "Macro control"},
};
} // namespace

std::span<const IdText> Slots() {
    return kSlots;
}

std::string SlotText(int32_t number) {
    for (const auto& row : kSlots) {
        if (row.id == number) {
            return row.text;
        }
    }
    return "Undescribed Slot";
}

} // namespace zol::rdm::tables
