#include "services/update/AUF_WebLink.h"

#include "framework/seam/UiSeam.h"

namespace zol::AUF_WebLink {

void Open(QWidget* view, const std::string& url) {
    static_cast<void>(view);
    static_cast<void>(ui().OpenUrl(url));
}

} // namespace zol::AUF_WebLink
