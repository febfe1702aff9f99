#include "plugin/core/RegisterViews.h"

#include "device_link/views/DeviceViews.h"
#include "plugin/core/IO_Tasks.h"

namespace zol {

void RegisterAllViews() {
    RegisterIoTasks();
    RegisterDeviceViews();
}

} // namespace zol
