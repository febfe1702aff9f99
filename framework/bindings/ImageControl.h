#pragma once
// ImageControl: a picture that acts as a button, as the views' image controls do. It shows one of
// the product's pictures, greyed while disabled, and reports the button of every mouse release over
// it; a left release is also a click.

#include <QLabel>

namespace zol {

class ImageControl : public QLabel {
    Q_OBJECT
public:
    // `name`: the control name (objectName), `picture`: one of icons::..., `size` in pixels.
    ImageControl(const QString& name, const char* picture, int size, QWidget* parent = nullptr);
    void SetPicture(const char* picture);
    const char* Picture() const { return picture_; }

signals:
    void clicked();
    void mouseUp(Qt::MouseButton button);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    const char* picture_;
    int size_;
};

} // namespace zol
