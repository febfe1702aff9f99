#include "rdm/RDM_Detail.h"

#include "rdm/tables/RdmTables.h"

namespace zol::rdm {

std::string RDM_Detail::DataClass() const {
    return "RDM_Detail";
}

std::string RDM_Detail::TypeName() const {
    return tables::ProductDetailText(typeRef_);
}

} // namespace zol::rdm
