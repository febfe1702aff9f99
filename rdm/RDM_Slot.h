#pragma once
// RDM_Slot: the description of one slot definition number, used by the "%L" placeholder of
// status messages.

#include "framework/seam/DataObject.h"

#include <cstdint>
#include <string>

namespace zol::rdm {

class RDM_Slot : public DataObject {
public:
    // Stores the number and looks up its description.
    void Initialise(int32_t ref);
    std::string DataClass() const override;
    // The table's description, or "Undescribed Slot".
    std::string Description() const;

private:
    int32_t ref_ = 0;
    std::string description_;
};

} // namespace zol::rdm
