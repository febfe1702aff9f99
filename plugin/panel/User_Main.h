#pragma once
// User_Main: the main panel, titled "  KARN DMX-ZOL Plugin". It shows the connection, offers the
// mode, and is the way in to every other view. Its data object is the session (UDC_Control); all
// that the user sees is repainted from the port by UpdateView. It is the FDF_PortEI of the
// connection view: Seize and Release are its connect and disconnect actions.

#include "device_link/port_view/FDF_PortEI.h"
#include "framework/form/FormView.h"

#include <array>
#include <memory>
#include <string>

class QAction;
class QLabel;
class QMenu;
class QPushButton;
class QRadioButton;
class QTimer;

namespace zol {

class ImageControl;
class UDC_Control;

class User_Main : public FormView, public FDF_PortEI {
    Q_OBJECT
public:
    static constexpr const char* kName = "User_Main";
    static constexpr const char* kTitle = "  KARN DMX-ZOL Plugin";

    explicit User_Main(QWidget* parent = nullptr);

    // Connect: with a port chosen it opens it at once, otherwise Config_Port lets the user choose.
    void Seize() override;
    // Disconnect.
    void Release() override;
    // Repaints menus, pictures, the RDM button and the status bar from the port.
    void UpdateView();

    const std::shared_ptr<UDC_Control>& Control() const { return control_; }

protected:
    void OnControl() override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void BuildMenus();
    void BuildControls();
    void Initialise();
    void PluginUpdateQuestion();
    void FirmwareUpdateQuestion();
    // The repaint after a failed connect or disconnect.
    void HandleConnectionError(const std::string& source);
    void ShowDisconnected();
    void ShowPortState();

    // The openings of other views.
    void OpenConfigPort(const std::string& source);
    void OpenDeviceInfo(const std::string& source);
    void OpenConfigFrame();
    void OpenDeviceSelect();
    void OpenHelpAbout();
    void OpenHelpUpdate();
    void SelectProgFile(const std::string& source);
    // Opens a view whose failures of the link run the disconnect action.
    void OpenOnLink(const std::string& source, const std::string& view, const DataRef& data);

    void Image_Plug_Click(int index);
    void Image_DMX_Click(int index);
    void Image_Device_MouseUp(Qt::MouseButton button);
    void Label_WebLink_Click();
    void PopUp_ShortCut_Menu_Click(int index);
    void ShowPopup(QMenu* menu);

    std::shared_ptr<UDC_Control> control_;

    // Menus and popups.
    QMenu* menuFile_ = nullptr;
    QAction* menuFileOpen_ = nullptr;
    QAction* menuFileExit_ = nullptr;
    QMenu* menuConnection_ = nullptr;
    QAction* menuConnectionSettings_ = nullptr;
    QAction* menuConnectOn_ = nullptr;
    QAction* menuConnectOff_ = nullptr;
    QMenu* menuTools_ = nullptr;
    QAction* menuToolsDeviceInfo_ = nullptr;
    QAction* menuToolsRdm_ = nullptr;
    QMenu* menuHelp_ = nullptr;
    QAction* menuHelpContent_ = nullptr;
    QAction* menuHelpAbout_ = nullptr;
    QAction* menuHelpUpdate_ = nullptr;
    QMenu* popupPc0_ = nullptr;
    QMenu* popupPc1_ = nullptr;
    QMenu* popupZol_ = nullptr;
    QMenu* popupRdm_ = nullptr;
    QMenu* popupShortCut_ = nullptr;

    // Controls.
    std::array<QRadioButton*, 2> optionMode_{};
    QPushButton* buttonManage_ = nullptr;
    ImageControl* imageDevice_ = nullptr;
    std::array<ImageControl*, 2> imagePlug_{};
    std::array<ImageControl*, 2> imageDmx_{};
    QLabel* labelWebLink_ = nullptr;
    QLabel* statusPanel1_ = nullptr;
    QTimer* cycleTime_ = nullptr;
    QTimer* reDiscover_ = nullptr;
    QTimer* threadShortCut_ = nullptr;
};

// Registers User_Main and Config_Port with the view factory.
void RegisterMainPanelViews();

} // namespace zol
