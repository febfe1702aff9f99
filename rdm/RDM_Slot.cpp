#include "rdm/RDM_Slot.h"

#include "device_link/core/ErrTrap.h"
#include "rdm/tables/RdmTables.h"

namespace zol::rdm {

void RDM_Slot::Initialise(int32_t ref) {
    ErrTrap::Standard("RDM_Slot.Initialise", [&] {
        ref_ = ref;
        description_ = tables::SlotText(ref);
    });
}

std::string RDM_Slot::DataClass() const {
    return "RDM_Slot";
}

std::string RDM_Slot::Description() const {
    std::string text;
    ErrTrap::Standard("RDM_Slot.Description (Get)", [&] { text = description_; });
    return text;
}

} // namespace zol::rdm
