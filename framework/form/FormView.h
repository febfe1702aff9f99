#pragma once
// FormView: the base of every view, a Qt top-level dialog that implements View. Its objectName is
// the view name; its controls carry their control names as objectNames ("Button_Exit",
// "Image_Plug_1" for member 1 of a control array), so tests find them by name.

#include "framework/form/HCF_Form.h"
#include "framework/form/View.h"

#include <QDialog>
#include <memory>

namespace zol {

class FormView : public QDialog, public View {
    Q_OBJECT
public:
    explicit FormView(const std::string& name, QWidget* parent = nullptr);
    ~FormView() override;

    std::string Name() const override { return name_; }
    float Left() const override;
    float Top() const override;
    float Width() const override;
    float Height() const override;
    void SetLeft(float twips) override;
    void SetTop(float twips) override;
    int WindowState() const override;
    bool Visible() const override;
    void SetVisible(bool visible) override;
    void Show(bool modal) override;
    void SetControl(const std::shared_ptr<HCF_Form>& form) override;
    void Unload() override;

    // The controller this view was given (empty before SetControl).
    const std::shared_ptr<HCF_Form>& Form() const { return form_; }

protected:
    // Called by SetControl after the controller is kept: a view checks DataClass and fills here.
    virtual void OnControl() {}
    void closeEvent(QCloseEvent* event) override;
    void reject() override;

private:
    std::string name_;
    std::shared_ptr<HCF_Form> form_;
    bool unloading_ = false;
};

// Twips and pixels: 15 twips a pixel at 96 dots an inch.
inline constexpr float kTwipsPerPixel = 15.0f;

} // namespace zol
