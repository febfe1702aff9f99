#pragma once
// Every object handed to a view answers its own class name. The model, the port layer and the
// session objects derive from DataObject; a view checks DataClass before it takes an object.

#include <memory>
#include <string>

namespace zol {

class DataObject {
public:
    virtual ~DataObject() = default;
    // The class name ("UDC_Control", "FDF_Port", "RDM_SubDev", ...). The default stands for an
    // object that has no such member: it throws, and HCF_Form::DataClass then reads "Not Stated".
    virtual std::string DataClass() const;
};

// Objects are reference counted and end with their last reference.
using DataRef = std::shared_ptr<DataObject>;

} // namespace zol
