#pragma once
// FDF_Class: helpers of the port layer.

#include "framework/seam/DataObject.h"

#include <optional>

namespace zol::FDF_Class {

// True when the optional argument is present and holds an object; false when it is missing or
// holds nothing.
bool ObjectSet(const std::optional<DataRef>& value = std::nullopt);

} // namespace zol::FDF_Class
