#include "framework/bindings/ImageControl.h"

#include "framework/bindings/Icons.h"

#include <QEvent>
#include <QIcon>
#include <QMouseEvent>

namespace zol {

ImageControl::ImageControl(const QString& name, const char* picture, int size, QWidget* parent)
    : QLabel(parent), picture_(picture), size_(size) {
    setObjectName(name);
    setFixedSize(size + 4, size + 4);
    setAlignment(Qt::AlignCenter);
    setCursor(Qt::PointingHandCursor);
    SetPicture(picture);
}

void ImageControl::SetPicture(const char* picture) {
    picture_ = picture;
    const QPixmap pixmap = icons::Pixmap(picture, size_, devicePixelRatioF());
    // Greyed while disabled, as a disabled picture button is.
    setPixmap(isEnabled() ? pixmap : QIcon(pixmap).pixmap(QSize(size_, size_), QIcon::Disabled));
}

void ImageControl::mousePressEvent(QMouseEvent* event) {
    event->accept();
}

void ImageControl::mouseReleaseEvent(QMouseEvent* event) {
    event->accept();
    if (!rect().contains(event->position().toPoint())) {
        return;
    }
    const Qt::MouseButton button = event->button();
    emit mouseUp(button);
    if (button == Qt::LeftButton) {
        emit clicked();
    }
}

void ImageControl::changeEvent(QEvent* event) {
    QLabel::changeEvent(event);
    if (event->type() == QEvent::EnabledChange) {
        SetPicture(picture_);
    }
}

} // namespace zol
