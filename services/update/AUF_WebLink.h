#pragma once
// AUF_WebLink: opens a web page in the user's browser on behalf of a view.

#include <string>

class QWidget;

namespace zol::AUF_WebLink {

// Opens `url` through the UI seam's OpenUrl. `view` is the window the request comes from; the
// result of the open is ignored, as a browser that does not start is no fault of the view.
void Open(QWidget* view, const std::string& url);

} // namespace zol::AUF_WebLink
