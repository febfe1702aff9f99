#pragma once
// What a view offers its controller (HCF_Form). Views are Qt top-level dialogs deriving from
// FormView (FormView.h), which implements all of this; a concrete view adds its controls, its
// SetControl and, optionally, Continue.

#include <memory>
#include <string>

namespace zol {

class HCF_Form;

class View {
public:
    virtual ~View() = default;
    // The fixed view name, also the name the factory makes it under ("User_Main").
    virtual std::string Name() const = 0;
    // Geometry in twips (15 a pixel at 96 dots an inch).
    virtual float Left() const = 0;
    virtual float Top() const = 0;
    virtual float Width() const = 0;
    virtual float Height() const = 0;
    virtual void SetLeft(float twips) = 0;
    virtual void SetTop(float twips) = 0;
    // 0 normal, 1 minimised, 2 maximised.
    virtual int WindowState() const = 0;
    virtual bool Visible() const = 0;
    virtual void SetVisible(bool visible) = 0;
    // Modal: returns when the view has closed or been hidden.
    virtual void Show(bool modal) = 0;
    // Receives the controller. The view keeps it (it keeps the chain alive).
    virtual void SetControl(const std::shared_ptr<HCF_Form>& form) = 0;
    // Called when a child view has closed; a view refreshes itself here. Default: nothing.
    virtual void Continue() {}
    // Closes the view: the close notification reaches the controller, then the view is destroyed.
    virtual void Unload() = 0;
};

} // namespace zol
