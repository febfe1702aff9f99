#pragma once
// UDC_Control: the session. It owns the port, the system status and the 512-slot level buffer,
// remembers the mode (0 DMX out, 1 DMX in) in the host's application settings, and decides how a
// level reaches the wire: the whole block at Begin and when the frame has to grow, one slot at a
// time otherwise.

#include "device_link/status/SYS_Status.h"
#include "framework/seam/DataObject.h"
#include "plugin/core/FDF_Port.h"
#include "plugin/core/HostHelper.h"

#include <cstdint>
#include <memory>
#include <string>

namespace zol {

class View;

class UDC_Control : public DataObject {
public:
    static constexpr int16_t kInitialSlotCount = 24;
    static constexpr int32_t kSlots = 512;

    UDC_Control();

    std::string DataClass() const override { return "UDC_Control"; }
    const std::shared_ptr<FDF_Port>& Port() const { return port_; }
    const std::shared_ptr<SYS_Status>& SState() const { return sState_; }
    int32_t Mode() const { return mode_; }
    // 0 or 1; a change is written to the setting "DMXInActive" and takes effect at the next Begin.
    void SetMode(int32_t mode);
    void Initialise(const HostRef& helper, const std::string& hostName, const std::string& section);
    void Begin();
    void Pause();
    void Finish();
    // Writes the level into the buffer and, in a running session, sends it at once.
    void Update(int16_t slot, uint8_t level);

    int16_t SlotCount() const { return slotCount_; }
    const std::string& Levels() const { return levels_; }
    bool Active() const { return active_; }
    bool Paused() const { return paused_; }
    const HostRef& Helper() const { return helper_; }
    const std::string& AppName() const { return appName_; }
    const std::string& Section() const { return section_; }
    const std::string& SettingName() const { return settingName_; }

private:
    void SendLevels();
    void StopSession();
    View* FindForm(const std::string& name);

    std::shared_ptr<FDF_Port> port_;
    std::shared_ptr<SYS_Status> sState_;
    int32_t mode_ = 0;
    int16_t slotCount_ = kInitialSlotCount;
    std::string levels_;
    bool active_ = false;
    bool paused_ = false;
    HostRef helper_;
    std::string appName_;
    std::string section_;
    std::string settingName_;
};

} // namespace zol
