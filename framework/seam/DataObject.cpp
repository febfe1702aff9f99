#include "framework/seam/DataObject.h"

#include "device_link/core/ErrTrap.h"

namespace zol {

std::string DataObject::DataClass() const {
    throw RuntimeFault(438, "Object doesn't support this property or method");
}

} // namespace zol
