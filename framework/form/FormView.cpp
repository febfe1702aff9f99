#include "framework/form/FormView.h"

#include "device_link/core/ErrTrap.h"
#include "framework/form/Forms.h"

#include <QCloseEvent>
#include <cmath>

namespace zol {
namespace {
int ToPixels(float twips) {
    return static_cast<int>(std::lround(twips / kTwipsPerPixel));
}
} // namespace

FormView::FormView(const std::string& name, QWidget* parent) : QDialog(parent), name_(name) {
    setObjectName(QString::fromStdString(name));
}

FormView::~FormView() {
    Forms::Remove(this);
    // A view destroyed without being unloaded still tells its controller, so that nothing keeps
    // pointing at it.
    if (form_ && form_->LinkFrm() == this) {
        try {
            form_->OnViewClosing();
        } catch (const ZolError&) {
        } catch (const std::exception&) {
        }
    }
}

float FormView::Left() const {
    return static_cast<float>(frameGeometry().x()) * kTwipsPerPixel;
}
float FormView::Top() const {
    return static_cast<float>(frameGeometry().y()) * kTwipsPerPixel;
}
float FormView::Width() const {
    return static_cast<float>(frameGeometry().width()) * kTwipsPerPixel;
}
float FormView::Height() const {
    return static_cast<float>(frameGeometry().height()) * kTwipsPerPixel;
}

void FormView::SetLeft(float twips) {
    move(ToPixels(twips), frameGeometry().y());
}
void FormView::SetTop(float twips) {
    move(frameGeometry().x(), ToPixels(twips));
}

int FormView::WindowState() const {
    if (isMinimized()) {
        return 1;
    }
    if (isMaximized()) {
        return 2;
    }
    return 0;
}

bool FormView::Visible() const {
    return isVisible();
}

void FormView::SetVisible(bool visible) {
    setVisible(visible);
}

void FormView::Show(bool modal) {
    if (unloading_) {
        // The view closed itself during its first fill: there is nothing to show, and a modal
        // show of it would never return. The error that closed it stays the one reported.
        throw RuntimeFault(rt::ViewUnloaded, "Object was unloaded");
    }
    if (modal) {
        // Returns when the view is hidden or closed.
        exec();
    } else {
        show();
        raise();
    }
}

void FormView::SetControl(const std::shared_ptr<HCF_Form>& form) {
    form_ = form;
    OnControl();
}

void FormView::Unload() {
    if (unloading_) {
        return;
    }
    unloading_ = true;
    Forms::Remove(this);
    // The close steps first, while the view still has its geometry; then away from the screen,
    // which also ends a modal show. The object itself goes when the event loop next runs.
    std::shared_ptr<HCF_Form> form = form_;
    hide();
    if (form) {
        form->OnViewClosing();
    }
    deleteLater();
}

void FormView::closeEvent(QCloseEvent* event) {
    // Closing the window is unloading the view.
    event->ignore();
    Unload();
}

void FormView::reject() {
    // Escape closes the view as its close box does.
    Unload();
}

} // namespace zol
