#pragma once
// The product's own pictures (SVG in the resources): the plug connected and disconnected, the local
// device, the DMX frame settings (and their greyed form), and exit.

#include <QIcon>
#include <QPixmap>
#include <QString>

namespace zol::icons {

inline constexpr const char* PlugConnected = "plug_connected";
inline constexpr const char* PlugDisconnected = "plug_disconnected";
inline constexpr const char* Device = "device";
inline constexpr const char* DmxFrame = "dmx_frame";
inline constexpr const char* DmxFrameOff = "dmx_frame_off";
inline constexpr const char* Exit = "exit";

// The resource path of a picture (":/zol/icons/<name>.svg").
QString Path(const char* name);
// The picture drawn at `size` device-independent pixels, sharp at the screen's pixel ratio.
QPixmap Pixmap(const char* name, int size, qreal devicePixelRatio = 1.0);
QIcon Icon(const char* name);

} // namespace zol::icons
