#pragma once
// Config_Port: the view "Connection Settings", in which the user picks a port and connects. Its data
// object is the FDF_Port; connecting and disconnecting go through the FDF_PortEI of the view that
// opened it (the main panel), so that the panel's display follows.

#include "framework/bindings/HCF_Combo.h"
#include "framework/form/FormView.h"

#include <array>
#include <memory>

class QComboBox;

namespace zol {

class FDF_Port;
class FDF_PortEI;
class ImageControl;

class Config_Port : public FormView {
    Q_OBJECT
public:
    static constexpr const char* kName = "Config_Port";
    explicit Config_Port(QWidget* parent = nullptr);

    // Image_Plug(1) connects, Image_Plug(0) disconnects.
    void Image_Plug_Click(int index);
    void Image_Exit_Click();

protected:
    void OnControl() override;

private:
    void Refresh();
    void SelectPort_Change(int16_t value);
    // The plug pictures and the port choice follow the port's state.
    void FollowPort(bool ready);

    QComboBox* comboSelectType_ = nullptr;
    QComboBox* comboSelectPort_ = nullptr;
    std::array<ImageControl*, 2> imagePlug_{};
    ImageControl* imageExit_ = nullptr;
    HCF_Combo selectPort_;
    std::shared_ptr<FDF_Port> port_;
    FDF_PortEI* portEI_ = nullptr;
};

// Registers Config_Port with the view factory.
void RegisterConfigPort();

} // namespace zol
