#include "plugin/panel/User_Main.h"

#include "device_link/core/ErrTrap.h"
#include "device_link/port_view/Config_Port.h"
#include "device_link/status/DEV_Status.h"
#include "device_link/status/SYS_Status.h"
#include "device_link/views/FirmwareSelect.h"
#include "framework/bindings/Icons.h"
#include "framework/bindings/ImageControl.h"
#include "framework/bindings/WinRes.h"
#include "framework/form/Forms.h"
#include "framework/seam/UiSeam.h"
#include "plugin/core/UDC_Control.h"
#include "services/update/AUF_WebLink.h"
#include "services/update/WebAddress.h"

#include <QActionGroup>
#include <QCursor>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QMouseEvent>
#include <QPushButton>
#include <QRadioButton>
#include <QStatusBar>
#include <QTimer>
#include <QVBoxLayout>

namespace zol {

namespace {

const std::string kView = User_Main::kName;

// An error that leaves an event handler has been shown by its handler already; it ends at the
// message loop, and the panel stays open.
template <typename Body> void Event(Body&& body) {
    try {
        body();
    } catch (const ZolError&) {
    } catch (const std::exception&) {
    }
}

// Runs `body`; on an error captures it and returns its code (LastCode), 0 when all went well.
int32_t Trapped(const std::function<void()>& body) {
    int32_t code = 0;
    ErrTrap::Attempt(body, [&](int32_t) {
        code = ErrTrap::LastCode();
        return ErrTrap::Outcome::Stop;
    });
    return code;
}

// When `status` knows of a more recent version, asks whether to download it: Yes opens the support
// page, any other answer hushes `status` so that the question is not asked again.
template <typename Status>
void UpdateQuestion(QWidget* view, const std::shared_ptr<Status>& status, const std::string& news,
                    const std::string& title) {
    if (!status || !status->Updates()) {
        return;
    }
    const int answer =
        ui().MsgBox(news + kCrLf + "Do you want to download it now", vb::YesNo | vb::Question, title);
    if (answer == vb::Yes) {
        AUF_WebLink::Open(view, web::WebBase() + "/support");
    } else {
        status->Hush();
    }
}

QAction* AddEntry(QMenu* menu, const char* name, const char* text) {
    QAction* action = menu->addAction(QString::fromUtf8(text));
    action->setObjectName(QString::fromUtf8(name));
    return action;
}

QMenu* MakePopup(QWidget* parent, const char* name) {
    auto* menu = new QMenu(parent);
    menu->setObjectName(QString::fromUtf8(name));
    return menu;
}

} // namespace

User_Main::User_Main(QWidget* parent) : FormView(kName, parent) {
    setWindowTitle(QString::fromUtf8(kTitle));
    setWindowIcon(icons::Icon(icons::Device));
    BuildMenus();
    BuildControls();
    // Load: the view is resized and the RDM button gets its caption.
    WinRes(this);
    buttonManage_->setText(QStringLiteral("Configure RDM\nFixtures\n"));
}

void User_Main::BuildMenus() {
    auto* bar = new QMenuBar(this);
    bar->setObjectName(QStringLiteral("MenuBar"));
    bar->setNativeMenuBar(false);

    menuFile_ = bar->addMenu(QStringLiteral("File"));
    menuFile_->setObjectName(QStringLiteral("Menu_File"));
    menuFileOpen_ = AddEntry(menuFile_, "Menu_File_Open", "&Load");
    menuFileExit_ = AddEntry(menuFile_, "Menu_File_Exit", "&Exit");

    menuConnection_ = bar->addMenu(QStringLiteral("Connection"));
    menuConnection_->setObjectName(QStringLiteral("Menu_Connection"));
    menuConnectionSettings_ = AddEntry(menuConnection_, "Menu_Connection_Settings", "&Settings");
    menuConnection_->addSeparator();
    menuConnectOn_ = AddEntry(menuConnection_, "Menu_Connect_On", "&Connect");
    menuConnectOff_ = AddEntry(menuConnection_, "Menu_Connect_Off", "&Disconnect");

    menuTools_ = bar->addMenu(QStringLiteral("Tools"));
    menuTools_->setObjectName(QStringLiteral("Menu_Tools"));
    menuToolsDeviceInfo_ = AddEntry(menuTools_, "Menu_Tools_DeviceInfo", "&Device Info");
    menuToolsRdm_ = AddEntry(menuTools_, "Menu_Tools_RDM", "&Remote Manager");

    menuHelp_ = bar->addMenu(QStringLiteral("Help"));
    menuHelp_->setObjectName(QStringLiteral("Menu_Help"));
    menuHelpContent_ = AddEntry(menuHelp_, "Menu_HelpContent", "&Contents");
    menuHelpAbout_ = AddEntry(menuHelp_, "Menu_Help_About", "&About ");
    menuHelpUpdate_ = AddEntry(menuHelp_, "Menu_Help_Update", "&Updates");

    popupPc0_ = MakePopup(this, "PopupMenu_PC0");
    QAction* popUpConnection = AddEntry(popupPc0_, "PopUp_Connection", "&Connection");
    popupPc1_ = MakePopup(this, "PopupMenu_PC1");
    AddEntry(popupPc1_, "PopUp_CtrlDesk", "&Control Desk");
    AddEntry(popupPc1_, "PopUp_ChlMonitor", "&Channel Monitor");
    popupZol_ = MakePopup(this, "PopupMenu_ZOL");
    QAction* popUpDeviceInfo = AddEntry(popupZol_, "PopUp_DeviceInfo", "&Device Info");
    QAction* popUpReprogram = AddEntry(popupZol_, "PopUp_Reprogram", "&Reprogram");
    popupRdm_ = MakePopup(this, "PopupMenu_RDM");
    AddEntry(popupRdm_, "PopUp_Discover", "&Discover");
    popupShortCut_ = MakePopup(this, "PopUp_ShortCut");
    const char* shortCuts[] = {"Identify", "All Settings", "DMX Settings", "DMX Control", "Sensors", "Clock"};
    for (int i = 0; i < 6; ++i) {
        const std::string name = "PopUp_ShortCut_Menu_" + std::to_string(i);
        QAction* member = AddEntry(popupShortCut_, name.c_str(), shortCuts[i]);
        connect(member, &QAction::triggered, this, [this, i] { PopUp_ShortCut_Menu_Click(i); });
    }

    connect(menuFileOpen_, &QAction::triggered, this,
            [this] { SelectProgFile(kView + ".Menu_FileOpen_Click"); });
    connect(menuFileExit_, &QAction::triggered, this, [this] { Unload(); });
    connect(menuConnectionSettings_, &QAction::triggered, this,
            [this] { OpenConfigPort(kView + ".Menu_Settings_Click"); });
    connect(menuConnectOn_, &QAction::triggered, this, [this] { Image_Plug_Click(1); });
    connect(menuConnectOff_, &QAction::triggered, this, [this] { Image_Plug_Click(0); });
    connect(menuToolsDeviceInfo_, &QAction::triggered, this,
            [this] { OpenDeviceInfo(kView + ".Menu_DeviceInfo_Click"); });
    connect(menuToolsRdm_, &QAction::triggered, this, [this] { OpenDeviceSelect(); });
    connect(menuHelpAbout_, &QAction::triggered, this, [this] { OpenHelpAbout(); });
    connect(menuHelpUpdate_, &QAction::triggered, this, [this] { OpenHelpUpdate(); });
    connect(popUpConnection, &QAction::triggered, this,
            [this] { OpenConfigPort(kView + ".PopUp_Connection_Click"); });
    connect(popUpDeviceInfo, &QAction::triggered, this,
            [this] { OpenDeviceInfo(kView + ".PopUp_DeviceInfo_Click"); });
    connect(popUpReprogram, &QAction::triggered, this,
            [this] { SelectProgFile(kView + ".PopUp_Reprogram_Click"); });
    // PopUp_Discover, PopUp_CtrlDesk, PopUp_ChlMonitor and Menu_HelpContent do nothing.

    auto* layout = new QVBoxLayout(this);
    layout->setMenuBar(bar);
}

void User_Main::BuildControls() {
    auto* layout = static_cast<QVBoxLayout*>(this->layout());

    // The tools: the local device, the plug (one of two pictures at one place), the frame settings.
    auto* frameTools = new QGroupBox(QStringLiteral("  Tools "), this);
    frameTools->setObjectName(QStringLiteral("Frame_Tools"));
    imageDevice_ = new ImageControl(QStringLiteral("Image_Device"), icons::Device, 48, frameTools);
    imageDevice_->setToolTip(QStringLiteral(" Local Device "));
    imagePlug_[0] = new ImageControl(QStringLiteral("Image_Plug_0"), icons::PlugConnected, 48, frameTools);
    imagePlug_[0]->setToolTip(QStringLiteral("   Disconnect from Equipment  "));
    imagePlug_[1] = new ImageControl(QStringLiteral("Image_Plug_1"), icons::PlugDisconnected, 48, frameTools);
    imagePlug_[1]->setToolTip(QStringLiteral(" Connect to Equipment  "));
    imageDmx_[0] = new ImageControl(QStringLiteral("Image_DMX_0"), icons::DmxFrameOff, 48, frameTools);
    imageDmx_[1] = new ImageControl(QStringLiteral("Image_DMX_1"), icons::DmxFrame, 48, frameTools);
    for (ImageControl* image : imageDmx_) {
        image->setToolTip(QStringLiteral("  DMX and RDM Frame Settings  "));
    }
    auto* tools = new QGridLayout(frameTools);
    tools->setHorizontalSpacing(14);
    tools->addWidget(imageDevice_, 0, 0);
    tools->addWidget(imagePlug_[0], 0, 1);
    tools->addWidget(imagePlug_[1], 0, 1);
    tools->addWidget(imageDmx_[0], 0, 2);
    tools->addWidget(imageDmx_[1], 0, 2);

    // The mode.
    auto* frameMode = new QGroupBox(QStringLiteral("Mode"), this);
    frameMode->setObjectName(QStringLiteral("Frame_Mode"));
    optionMode_[0] = new QRadioButton(QStringLiteral("Out"), frameMode);
    optionMode_[0]->setObjectName(QStringLiteral("Option_Mode_0"));
    optionMode_[1] = new QRadioButton(QStringLiteral("In"), frameMode);
    optionMode_[1]->setObjectName(QStringLiteral("Option_Mode_1"));
    auto* modes = new QVBoxLayout(frameMode);
    modes->addWidget(optionMode_[0]);
    modes->addWidget(optionMode_[1]);

    buttonManage_ = new QPushButton(QStringLiteral("Manage RDM  Fixtures"), this);
    buttonManage_->setObjectName(QStringLiteral("Button_Manage"));
    buttonManage_->setMinimumWidth(120);
    buttonManage_->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Expanding);

    auto* top = new QHBoxLayout();
    top->addWidget(frameTools);
    top->addWidget(frameMode);
    top->addWidget(buttonManage_);
    layout->addLayout(top);

    labelWebLink_ = new QLabel(QStringLiteral("KARN Web Site"), this);
    labelWebLink_->setObjectName(QStringLiteral("Label_WebLink"));
    labelWebLink_->setCursor(Qt::PointingHandCursor);
    labelWebLink_->setStyleSheet(QStringLiteral("color: #1a5fb4; text-decoration: underline;"));
    labelWebLink_->installEventFilter(this);
    layout->addWidget(labelWebLink_, 0, Qt::AlignRight);

    auto* statusBar = new QStatusBar(this);
    statusBar->setObjectName(QStringLiteral("sbStatusBar"));
    statusBar->setSizeGripEnabled(false);
    statusPanel1_ = new QLabel(QStringLiteral("Disconnected"), statusBar);
    statusPanel1_->setObjectName(QStringLiteral("sbStatusBar_Panel_1"));
    statusPanel1_->setMinimumWidth(140);
    statusBar->addWidget(statusPanel1_, 1);
    layout->addWidget(statusBar);
    layout->setSizeConstraint(QLayout::SetFixedSize);

    cycleTime_ = new QTimer(this);
    cycleTime_->setObjectName(QStringLiteral("CycleTime"));
    cycleTime_->setInterval(250);
    reDiscover_ = new QTimer(this);
    reDiscover_->setObjectName(QStringLiteral("ReDiscover"));
    reDiscover_->setInterval(1);
    threadShortCut_ = new QTimer(this);
    threadShortCut_->setObjectName(QStringLiteral("Thread_ShortCut"));
    threadShortCut_->setInterval(1);

    for (int i = 0; i < 2; ++i) {
        const auto at = static_cast<size_t>(i);
        connect(imagePlug_[at], &ImageControl::clicked, this, [this, i] { Image_Plug_Click(i); });
        connect(imageDmx_[at], &ImageControl::clicked, this, [this, i] { Image_DMX_Click(i); });
        connect(optionMode_[at], &QRadioButton::toggled, this, [this, i](bool on) {
            if (on && control_) {
                Event([&] { control_->SetMode(i); });
            }
        });
    }
    connect(imageDevice_, &ImageControl::mouseUp, this,
            [this](Qt::MouseButton b) { Image_Device_MouseUp(b); });
    connect(buttonManage_, &QPushButton::clicked, this, [this] { OpenDeviceSelect(); });
}

bool User_Main::eventFilter(QObject* watched, QEvent* event) {
    if (watched == labelWebLink_ && event->type() == QEvent::MouseButtonRelease &&
        static_cast<QMouseEvent*>(event)->button() == Qt::LeftButton) {
        Label_WebLink_Click();
        return true;
    }
    return FormView::eventFilter(watched, event);
}

// ---- The data object ----

void User_Main::OnControl() {
    ErrTrap::Standard(kView + ".Control (Set)", [&] {
        if (Form()->DataIsSet()) {
            const std::string dataClass = Form()->DataClass();
            if (dataClass == "UDC_Control") {
                control_ = std::dynamic_pointer_cast<UDC_Control>(Form()->DataObject());
            } else if (!dataClass.empty()) {
                ErrTrap::RaiseLocal("Class Object \"" + dataClass + "\" not handled");
            }
        }
        Initialise();
    });
}

void User_Main::Initialise() {
    ErrTrap::Standard(kView + ".Initialise", [&] {
        if (!control_) {
            throw RuntimeFault(rt::ObjectNotSet, "Object variable or With block variable not set");
        }
        const int32_t mode = control_->Mode();
        if (mode == 0 || mode == 1) {
            optionMode_[static_cast<size_t>(mode)]->setChecked(true);
        }
        UpdateView();
        PluginUpdateQuestion();
    });
}

void User_Main::UpdateView() {
    ErrTrap::Standard(kView + ".UpdateView", [&] {
        if (!control_) {
            throw RuntimeFault(rt::ObjectNotSet, "Object variable or With block variable not set");
        }
        const bool c = control_->Port()->InUse();
        menuFileOpen_->setEnabled(c);
        menuToolsDeviceInfo_->setEnabled(c);
        menuToolsRdm_->setEnabled(c);
        menuConnectOff_->setEnabled(c);
        imageDmx_[1]->setVisible(c);
        buttonManage_->setEnabled(c);
        menuConnectionSettings_->setEnabled(!c);
        menuConnectOn_->setEnabled(!c);
        imageDmx_[0]->setVisible(!c);
        imagePlug_[0]->setVisible(c);
        imagePlug_[1]->setVisible(!c);
        statusPanel1_->setText(c ? QStringLiteral("Connected") : QStringLiteral("Disconnected"));
    });
}

// ---- The update questions ----

void User_Main::PluginUpdateQuestion() {
    UpdateQuestion(this, control_->SState(), "A more recent version of this Plugin is available.",
                   "DMXControl Plugin Upgrade");
}

void User_Main::FirmwareUpdateQuestion() {
    UpdateQuestion(this, control_->Port()->IState(),
                   "A more recent version of the firmware is available for your interface.",
                   "Firmware Upgrade");
}

// ---- Connect and disconnect ----

void User_Main::Seize() {
    const int32_t code = Trapped([&] {
        if (!control_) {
            throw RuntimeFault(rt::ObjectNotSet, "Object variable or With block variable not set");
        }
        imagePlug_[1]->setEnabled(false);
        const auto& port = control_->Port();
        if (port->Ready()) {
            statusPanel1_->setText(QStringLiteral("Searching..."));
            statusPanel1_->repaint();
            port->Seize();
            ui().SetMousePointer(kPointerDefault);
            FirmwareUpdateQuestion();
        } else {
            Form()->OpenForm(Config_Port::kName, true, port);
        }
        imagePlug_[1]->setEnabled(true);
        UpdateView();
    });
    if (code != 0) {
        HandleConnectionError(kView + ".Image_Plug_Click");
        ShowPortState();
    }
}

void User_Main::Release() {
    const int32_t code = Trapped([&] {
        if (!control_) {
            throw RuntimeFault(rt::ObjectNotSet, "Object variable or With block variable not set");
        }
        imagePlug_[0]->setEnabled(false);
        control_->Port()->Release();
        imagePlug_[0]->setEnabled(true);
        UpdateView();
    });
    if (code != 0) {
        HandleConnectionError(kView + " - Action Port Release");
        ShowPortState();
    }
}

void User_Main::ShowPortState() {
    // After a failed connect or disconnect the panel shows the state the port is really in, with
    // both plugs usable again.
    imagePlug_[0]->setEnabled(true);
    imagePlug_[1]->setEnabled(true);
    if (control_) {
        UpdateView();
    }
}

void User_Main::ShowDisconnected() {
    imagePlug_[0]->setVisible(false);
    imagePlug_[0]->setEnabled(true);
    imagePlug_[1]->setVisible(true);
    imagePlug_[1]->setEnabled(true);
    statusPanel1_->setText(QStringLiteral("Disconnected"));
}

void User_Main::HandleConnectionError(const std::string& source) {
    // Nothing goes further: the display recovers and the panel stays open.
    switch (ErrTrap::LastCode()) {
    case err::ErrAPI_Connection:
        ShowDisconnected();
        ErrTrap::Report("Local Device Connection", false);
        break;
    case err::ErrSYS_Comms:
        // The port has reported it.
        ShowDisconnected();
        break;
    default:
        ErrTrap::Report(source, false);
        break;
    }
}

void User_Main::Image_Plug_Click(int index) {
    if (index == 1) {
        Seize();
    } else {
        Release();
    }
}

// ---- The openings ----

void User_Main::OpenOnLink(const std::string& source, const std::string& view, const DataRef& data) {
    Event([&] {
        const int32_t code = Trapped([&] { Form()->OpenForm(view, true, data); });
        switch (code) {
        case 0:
            return;
        case err::ErrAPI_DeviceMissig:
        case err::ErrSYS_Comms:
            // The link is gone: disconnect, as a click on the connected plug does.
            Release();
            return;
        case err::ErrSYS_Local:
            ErrTrap::Report(source, false);
            return;
        default:
            ErrTrap::Report(source, false);
            ErrTrap::ReRaise();
        }
    });
}

void User_Main::Image_DMX_Click(int index) {
    if (index == 1) {
        OpenConfigFrame();
    }
}

void User_Main::OpenConfigFrame() {
    OpenOnLink(kView + " - DMX Setup Click", "Config_Frame", nullptr);
}

void User_Main::OpenDeviceSelect() {
    OpenOnLink(kView + ".PopUp_Discover_Click", "Device_Select", nullptr);
}

void User_Main::OpenDeviceInfo(const std::string& source) {
    if (!control_) {
        return;
    }
    OpenOnLink(source, "System_Info", control_->Port()->IState());
}

void User_Main::OpenConfigPort(const std::string& source) {
    Event([&] {
        ErrTrap::Standard(source, [&] {
            if (!control_) {
                throw RuntimeFault(rt::ObjectNotSet, "Object variable or With block variable not set");
            }
            Form()->OpenForm(Config_Port::kName, true, control_->Port());
        });
    });
}

void User_Main::OpenHelpAbout() {
    Event([&] {
        ErrTrap::Standard(kView + ".Menu_HelpAbout_Click", [&] { Form()->OpenForm("Help_About", true); });
    });
}

void User_Main::OpenHelpUpdate() {
    Event([&] {
        ErrTrap::Standard(kView + ".Menu_HelpUpdate_Click", [&] {
            if (!control_) {
                throw RuntimeFault(rt::ObjectNotSet, "Object variable or With block variable not set");
            }
            Form()->OpenForm("Help_Update", true, control_->Port()->IState());
        });
    });
}

void User_Main::SelectProgFile(const std::string& source) {
    Event([&] {
        ErrTrap::Standard(source, [&] {
            if (!control_) {
                throw RuntimeFault(rt::ObjectNotSet, "Object variable or With block variable not set");
            }
            zol::SelectProgFile(*Form(), control_->Port()->IState(), [this] { Release(); });
        });
    });
}

void User_Main::Image_Device_MouseUp(Qt::MouseButton button) {
    if (!control_) {
        return;
    }
    if (control_->Port()->InUse()) {
        if (button == Qt::LeftButton) {
            OpenDeviceInfo(kView + ".Menu_DeviceInfo_Click");
        } else if (button == Qt::RightButton) {
            ShowPopup(popupZol_);
        }
    } else if (button == Qt::RightButton) {
        ShowPopup(popupPc0_);
    }
}

void User_Main::ShowPopup(QMenu* menu) {
    menu->popup(QCursor::pos());
}

void User_Main::Label_WebLink_Click() {
    AUF_WebLink::Open(this, web::WebBase() + "/product/");
}

void User_Main::PopUp_ShortCut_Menu_Click(int index) {
    // The short-cut feature is unfinished: the choice is kept and the timer started, and nothing
    // answers it.
    threadShortCut_->setProperty("Tag", index);
    threadShortCut_->start();
}

void RegisterMainPanelViews() {
    Forms::Register(User_Main::kName, [] { return new User_Main(); });
    RegisterConfigPort();
}

} // namespace zol
