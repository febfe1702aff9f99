#include "framework/bindings/WinRes.h"

#include <QFrame>
#include <QGroupBox>
#include <QGuiApplication>
#include <QLayout>
#include <QScreen>
#include <QWidget>
#include <cmath>

namespace zol {

namespace {
int g_testTwipsPerPixel = 0;

int Scaled(int value) {
    return static_cast<int>(std::nearbyint(value * kWinResFactor));
}

// Whether `layout` or one of its nested layouts places `widget`.
bool InLayout(QLayout* layout, const QWidget* widget) {
    if (layout == nullptr) {
        return false;
    }
    if (layout->menuBar() == widget) {
        return true;
    }
    for (int i = 0; i < layout->count(); ++i) {
        QLayoutItem* item = layout->itemAt(i);
        if (item->widget() == widget || InLayout(item->layout(), widget)) {
            return true;
        }
    }
    return false;
}
bool IsContainer(const QWidget* widget, const QWidget* view) {
    return widget == view || qobject_cast<const QGroupBox*>(widget) != nullptr ||
           widget->metaObject() == &QWidget::staticMetaObject ||
           widget->metaObject() == &QFrame::staticMetaObject;
}

} // namespace

int ScreenTwipsPerPixel() {
    if (g_testTwipsPerPixel > 0) {
        return g_testTwipsPerPixel;
    }
    const QScreen* screen = QGuiApplication::primaryScreen();
    const double dpi = screen != nullptr ? screen->logicalDotsPerInchX() : 96.0;
    return dpi > 0 ? static_cast<int>(std::lround(1440.0 / dpi)) : 15;
}

void SetScreenTwipsPerPixelForTest(int twipsPerPixel) {
    g_testTwipsPerPixel = twipsPerPixel;
}

int32_t ScaleTwips(int32_t twips) {
    if (ScreenTwipsPerPixel() != 15) {
        return twips;
    }
    return static_cast<int32_t>(std::nearbyint(twips * kWinResFactor));
}

int TwipsToPixels(double twips) {
    return static_cast<int>(std::lround(twips / ScreenTwipsPerPixel()));
}

void WinRes(QWidget* view) {
    if (view == nullptr || ScreenTwipsPerPixel() != 15) {
        return;
    }
    const auto children = view->findChildren<QWidget*>();
    for (QWidget* child : children) {
        QWidget* parent = child->parentWidget();
        // Only controls that the view placed by hand on the view itself or on one of its plain
        // containers; the inner parts of a control are placed by the control.
        if (child->isWindow() || parent == nullptr || !IsContainer(parent, view) ||
            InLayout(parent->layout(), child)) {
            continue;
        }
        const QRect g = child->geometry();
        child->setGeometry(Scaled(g.x()), Scaled(g.y()), Scaled(g.width()), Scaled(g.height()));
    }
    if (view->layout() == nullptr) {
        view->resize(Scaled(view->width()), Scaled(view->height()));
    }
}

} // namespace zol
