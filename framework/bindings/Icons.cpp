#include "framework/bindings/Icons.h"

#include <QPainter>
#include <QSvgRenderer>

// The resources of a static library are registered by hand, once, before the first picture.
static void InitIconResources() {
    Q_INIT_RESOURCE(icons);
}

namespace zol::icons {

namespace {
void EnsureResources() {
    static const bool done = [] {
        InitIconResources();
        return true;
    }();
    (void)done;
}
} // namespace

QString Path(const char* name) {
    EnsureResources();
    return QStringLiteral(":/zol/icons/") + QString::fromLatin1(name) + QStringLiteral(".svg");
}

QPixmap Pixmap(const char* name, int size, qreal devicePixelRatio) {
    QSvgRenderer renderer(Path(name));
    const int pixels = qRound(size * devicePixelRatio);
    QPixmap pixmap(pixels, pixels);
    pixmap.fill(Qt::transparent);
    if (renderer.isValid()) {
        QPainter painter(&pixmap);
        renderer.render(&painter);
    }
    pixmap.setDevicePixelRatio(devicePixelRatio);
    return pixmap;
}

QIcon Icon(const char* name) {
    QIcon icon;
    for (int size : {16, 24, 32, 48, 64}) {
        icon.addPixmap(Pixmap(name, size));
    }
    return icon;
}

} // namespace zol::icons
