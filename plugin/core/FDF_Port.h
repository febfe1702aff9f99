#pragma once
// FDF_Port: which local device port is chosen and whether it is open. It remembers the port last
// connected ("PortUsed") across runs, forwards a standing derogation to the device on connect, and
// owns the device status object.

#include "device_link/status/DEV_Status.h"
#include "framework/seam/DataObject.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace zol {

class FDF_Port : public DataObject {
public:
    FDF_Port();
    // A port still open is closed here.
    ~FDF_Port() override;
    FDF_Port(const FDF_Port&) = delete;
    FDF_Port& operator=(const FDF_Port&) = delete;

    std::string DataClass() const override { return "FDF_Port"; }
    int16_t Index() const { return index_; }
    // Chooses port `index` (from 1). Refused with a local error while the port is open.
    void SetIndex(int16_t index);
    const std::shared_ptr<DEV_Status>& IState() const { return iState_; }
    // A port has been chosen; when none has, the port last connected is looked for first.
    bool Ready();
    bool InUse() const { return inUse_; }
    // Looks for the port named by "PortUsed" among the present ports. Returns Stored.
    bool FindLast();
    // Opens the chosen port, probes the device and forwards a standing derogation.
    void Seize();
    void Release();
    // Reads the present ports; returns their number.
    int32_t Items();
    // The name of entry `n` of the last Items (from 1); empty outside the list.
    std::string Item(int32_t n) const;

    const std::string& PortName() const { return portName_; }
    bool Stored() const { return stored_; }

private:
    std::string portName_;
    bool inUse_ = false;
    bool ready_ = false;
    int16_t index_ = 0;
    std::vector<std::string> names_;
    bool stored_ = false;
    std::shared_ptr<DEV_Status> iState_;
};

} // namespace zol
