#pragma once
// View scaling. The views' fixed sizes are given in twips and were drawn for a screen of 12 twips a
// pixel; at 15 twips a pixel (96 dots an inch) they are enlarged by 1.26. Qt's layouts size the
// controls from their content, so WinRes only has work for controls placed by hand.

#include <cstdint>

class QWidget;

namespace zol {

inline constexpr double kWinResFactor = 1.26;

// The screen's twips a pixel, 1440 divided by its logical dots an inch, rounded.
int ScreenTwipsPerPixel();
// Tests pretend another screen; 0 goes back to the real one.
void SetScreenTwipsPerPixelForTest(int twipsPerPixel);

// A length in twips times 1.26 when the screen has 15 twips a pixel; otherwise unchanged. Rounded
// half to even.
int32_t ScaleTwips(int32_t twips);
// Twips to pixels at the present screen, rounded.
int TwipsToPixels(double twips);

// Enlarges the view and its hand-placed controls by 1.26 at 15 twips a pixel; at any other value
// nothing changes. Controls managed by a layout are left to the layout.
void WinRes(QWidget* view);

} // namespace zol
