#pragma once
// A label that reports a left click: the web links and the information lines of the update and
// about views.

#include <QLabel>
#include <QMouseEvent>
#include <functional>

namespace zol {

class ClickLabel : public QLabel {
public:
    using QLabel::QLabel;
    std::function<void()> onClick;

protected:
    void mouseReleaseEvent(QMouseEvent* event) override {
        if (event->button() == Qt::LeftButton && onClick) {
            onClick();
            return;
        }
        QLabel::mouseReleaseEvent(event);
    }
};

} // namespace zol
