#include "device_link/port_view/FDF_Class.h"

namespace zol::FDF_Class {

bool ObjectSet(const std::optional<DataRef>& value) {
    return value.has_value() && *value != nullptr;
}

} // namespace zol::FDF_Class
