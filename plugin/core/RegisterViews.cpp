#include "plugin/core/RegisterViews.h"

#include "device_link/views/DeviceViews.h"
#include "plugin/core/IO_Tasks.h"
#include "plugin/panel/User_Main.h"

namespace zol {

void RegisterAllViews() {
    RegisterIoTasks();
    RegisterMainPanelViews();
    RegisterDeviceViews();
}

} // namespace zol
