#pragma once
// UDC_Interface: the one class the host sees. Every call of the host enters here and is handed to
// the session object; the class holds nothing else. After Term no session object is left and every
// call that needs one fails with run-time error 91.

#include "plugin/core/HostHelper.h"
#include "plugin/core/UDC_Control.h"

#include <cstdint>
#include <memory>
#include <string>

namespace zol {

class UDC_Interface {
public:
    UDC_Interface();

    // "KARN DMX-ZOL MK1 Plugin", also before Init and after Term.
    std::string PluginName() const;
    // Loads the input task, looks for the port last used and reads the mode. Returns false.
    bool Init(const std::string& hostName, const std::string& fileName, const HostRef& helper);
    // Opens the main panel modally; a running session is paused meanwhile and runs again after.
    // True when a port is chosen or open.
    bool Configure();
    // Starts a session on the chosen port, opening the main panel first when none is chosen.
    // Returns true.
    bool Enable();
    // Mode 0 only: a level 0..255 for a slot 1..512 goes to the session. True when taken.
    bool SetChannel(int32_t& slot, int32_t& level);
    // Ends the session and releases the port. Returns true.
    bool Disable();
    // Drops the session object. Returns false.
    bool Term();

    const std::shared_ptr<UDC_Control>& Control() const { return control_; }

private:
    UDC_Control& Ctl();
    // Opens "User_Main" modally with the session object and keeps the object that comes back.
    void OpenMainPanel();

    std::shared_ptr<UDC_Control> control_;
};

} // namespace zol
