#include "plugin/core/RegisterViews.h"

#include "plugin/core/IO_Tasks.h"

namespace zol {

void RegisterAllViews() {
    RegisterIoTasks();
}

} // namespace zol
