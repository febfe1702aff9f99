#include "device_link/views/DeviceViews.h"

#include "device_link/views/Config_Frame.h"
#include "device_link/views/Config_Prog.h"
#include "device_link/views/System_Info.h"
#include "framework/form/Forms.h"
#include "services/update/Help_About.h"
#include "services/update/Help_Update.h"

namespace zol {

void RegisterDeviceViews() {
    Forms::Register(Config_Frame::kName, [] { return new Config_Frame; });
    Forms::Register(System_Info::kName, [] { return new System_Info; });
    Forms::Register(Config_Prog::kName, [] { return new Config_Prog; });
    Forms::Register(Help_Update::kName, [] { return new Help_Update; });
    Forms::Register(Help_About::kName, [] { return new Help_About; });
}

} // namespace zol
