#pragma once
// The host's callback object, handed over at Init. The plug-in calls it by name, late-bound:
// DMXC_DMXIn_SetChannel(slot, level), both by reference, for each level received in DMX-in mode.

#include <cstdint>
#include <memory>

namespace zol {

class HostHelper {
public:
    virtual ~HostHelper() = default;
    // A host object that lacks the member answers run-time error 438.
    virtual void DMXC_DMXIn_SetChannel(int32_t& slot, int32_t& level) = 0;
};

using HostRef = std::shared_ptr<HostHelper>;

} // namespace zol
