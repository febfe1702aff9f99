#pragma once
// RDM_Detail: the name of one product detail id, as PRODUCT_DETAIL_ID_LIST carries it.

#include "framework/seam/DataObject.h"

#include <cstdint>
#include <string>

namespace zol::rdm {

class RDM_Detail : public DataObject {
public:
    std::string DataClass() const override;
    void Initialise(int32_t typeRef) { typeRef_ = typeRef; }
    int32_t TypeRef() const { return typeRef_; }
    // The table's name, or "Not Defined (<id>)".
    std::string TypeName() const;

private:
    int32_t typeRef_ = 0;
};

} // namespace zol::rdm
