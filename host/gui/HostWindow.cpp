#include "host/gui/HostWindow.h"

#include "host/gui/FaderDesk.h"
#include "host/gui/InputMonitor.h"

#include <QAction>
#include <QCloseEvent>
#include <QGroupBox>
#include <QIcon>
#include <QLabel>
#include <QStatusBar>
#include <QToolBar>
#include <QVBoxLayout>
#include <filesystem>

static void InitHostResources() {
    Q_INIT_RESOURCE(host);
}

namespace zol::host {

HostWindow::HostWindow(PluginLoader& loader, QWidget* parent) : QMainWindow(parent), loader_(loader) {
    InitHostResources();
    setObjectName(QStringLiteral("HostWindow"));
    setWindowTitle(QStringLiteral("zol-host"));
    setWindowIcon(QIcon(QStringLiteral(":/host/icons/fader.svg")));

    auto* tools = addToolBar(QStringLiteral("Plug-in"));
    tools->setObjectName(QStringLiteral("ToolBar_Plugin"));
    tools->setMovable(false);
    tools->setToolButtonStyle(Qt::ToolButtonTextOnly);
    configure_ = tools->addAction(QStringLiteral("Configure..."), this, &HostWindow::Configure);
    configure_->setObjectName(QStringLiteral("Action_Configure"));
    configure_->setToolTip(QStringLiteral("Open the plug-in's main panel"));
    enable_ = tools->addAction(QStringLiteral("Enable"), this, &HostWindow::Enable);
    enable_->setObjectName(QStringLiteral("Action_Enable"));
    enable_->setToolTip(QStringLiteral("Start the session on the chosen port"));
    disable_ = tools->addAction(QStringLiteral("Disable"), this, &HostWindow::Disable);
    disable_->setObjectName(QStringLiteral("Action_Disable"));
    disable_->setToolTip(QStringLiteral("Stop the session and close the port"));
    term_ = tools->addAction(QStringLiteral("Term"), this, &HostWindow::Term);
    term_->setObjectName(QStringLiteral("Action_Term"));
    term_->setToolTip(QStringLiteral("End the plug-in"));

    auto* central = new QWidget(this);
    auto* layout = new QVBoxLayout(central);

    auto* deskBox = new QGroupBox(QStringLiteral("Levels to the plug-in (SetChannel)"), central);
    deskBox->setObjectName(QStringLiteral("Group_Desk"));
    desk_ = new FaderDesk(deskBox);
    auto* deskLayout = new QVBoxLayout(deskBox);
    deskLayout->addWidget(desk_);
    layout->addWidget(deskBox);

    auto* monitorBox = new QGroupBox(QStringLiteral("DMX input from the plug-in (DMX-in mode)"), central);
    monitorBox->setObjectName(QStringLiteral("Group_Monitor"));
    monitor_ = new InputMonitor(monitorBox);
    received_ = new QLabel(QStringLiteral("Levels received: 0"), monitorBox);
    received_->setObjectName(QStringLiteral("Label_Received"));
    auto* monitorLayout = new QVBoxLayout(monitorBox);
    monitorLayout->addWidget(monitor_, 0, Qt::AlignHCenter);
    monitorLayout->addWidget(received_);
    layout->addWidget(monitorBox);
    setCentralWidget(central);

    status_ = new QLabel(this);
    status_->setObjectName(QStringLiteral("Label_Status"));
    status_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    session_ = new QLabel(this);
    session_->setObjectName(QStringLiteral("Label_Session"));
    statusBar()->addWidget(status_, 1);
    statusBar()->addPermanentWidget(session_);
    SetSession(QStringLiteral("not started"));

    connect(desk_, &FaderDesk::levelChanged, this, &HostWindow::SendLevel);
    connect(monitor_, &InputMonitor::levelReceived, this, [this] {
        // The count follows at most once per batch of deliveries.
        received_->setText(QStringLiteral("Levels received: %1").arg(monitor_->Received()));
    });
    UpdateActions();
}

HostWindow::~HostWindow() {
    Shutdown();
}

QString HostWindow::StatusText() const {
    return status_->text();
}
QString HostWindow::SessionText() const {
    return session_->text();
}

void HostWindow::SetSession(const QString& state) {
    session_->setText(QStringLiteral("Session: ") + state);
}

bool HostWindow::Check(const char* call, int32_t code) {
    lastCode_ = code;
    if (code == 0) {
        return true;
    }
    status_->setText(QString::fromLatin1(call) + QStringLiteral(" failed: ") +
                     QString::fromStdString(loader_.ErrorText(plugin_, code)));
    return false;
}

bool HostWindow::Start(const std::string& hostName) {
    plugin_ = loader_.Create();
    if (plugin_ == nullptr) {
        status_->setText(QStringLiteral("The plug-in object could not be made"));
        UpdateActions();
        return false;
    }
    char name[ZOL_PLUGIN_TEXT_SIZE] = {};
    if (Check("PluginName", loader_.PluginName(plugin_, name, sizeof name))) {
        pluginName_ = name;
        setWindowTitle(QStringLiteral("zol-host - ") + QString::fromStdString(pluginName_));
    }
    helper_ = DMXC_Helper{this, &HostWindow::OnInput};
    const std::string fileName = std::filesystem::path(loader_.Path()).filename().string();
    int32_t result = 0;
    initialised_ =
        Check("Init", loader_.Init(plugin_, hostName.c_str(), fileName.c_str(), &helper_, &result));
    if (initialised_) {
        status_->setText(QStringLiteral("Loaded ") + QString::fromStdString(loader_.Path()));
        SetSession(QStringLiteral("disabled"));
    }
    UpdateActions();
    return true;
}

void HostWindow::Configure() {
    if (plugin_ == nullptr) {
        return;
    }
    int32_t result = 0;
    if (Check("Configure", loader_.Configure(plugin_, &result))) {
        status_->setText(result != 0 ? QStringLiteral("Configure: a port is ready")
                                     : QStringLiteral("Configure: no port is chosen"));
    }
    UpdateActions();
}

void HostWindow::Enable() {
    if (plugin_ == nullptr) {
        return;
    }
    int32_t result = 0;
    if (Check("Enable", loader_.Enable(plugin_, &result))) {
        enabled_ = true;
        SetSession(QStringLiteral("enabled"));
        status_->setText(QStringLiteral("Enabled"));
    }
    UpdateActions();
}

void HostWindow::Disable() {
    if (plugin_ == nullptr) {
        return;
    }
    int32_t result = 0;
    if (Check("Disable", loader_.Disable(plugin_, &result))) {
        status_->setText(QStringLiteral("Disabled"));
    }
    enabled_ = false;
    SetSession(ended_ ? QStringLiteral("ended") : QStringLiteral("disabled"));
    UpdateActions();
}

void HostWindow::Term() {
    if (plugin_ == nullptr || ended_) {
        return;
    }
    int32_t result = 0;
    if (Check("Term", loader_.Term(plugin_, &result))) {
        status_->setText(QStringLiteral("The plug-in has ended"));
    }
    ended_ = true;
    enabled_ = false;
    SetSession(QStringLiteral("ended"));
    UpdateActions();
}

void HostWindow::Shutdown() {
    if (plugin_ == nullptr) {
        return;
    }
    if (enabled_) {
        Disable();
    }
    Term();
    loader_.Release(plugin_);
    plugin_ = nullptr;
    UpdateActions();
}

void HostWindow::SendLevel(int slot, int level) {
    if (plugin_ == nullptr) {
        return;
    }
    int32_t s = slot;
    int32_t l = level;
    int32_t result = 0;
    if (!Check("SetChannel", loader_.SetChannel(plugin_, &s, &l, &result))) {
        return;
    }
    if (result == 0) {
        status_->setText(QStringLiteral("Slot %1: level %2 not taken (the plug-in is in DMX-in mode)")
                             .arg(slot)
                             .arg(level));
    } else {
        status_->setText(QStringLiteral("Slot %1 = %2").arg(slot).arg(level));
    }
}

void HostWindow::UpdateActions() {
    const bool usable = plugin_ != nullptr && initialised_ && !ended_;
    configure_->setEnabled(usable);
    enable_->setEnabled(usable);
    disable_->setEnabled(usable && enabled_);
    term_->setEnabled(usable);
    desk_->setEnabled(usable);
}

void HostWindow::OnInput(void* context, int32_t* slot, int32_t* level) {
    auto* window = static_cast<HostWindow*>(context);
    if (window != nullptr && slot != nullptr && level != nullptr) {
        window->monitor_->SetLevel(*slot, *level);
    }
}

void HostWindow::closeEvent(QCloseEvent* event) {
    Shutdown();
    event->accept();
}

} // namespace zol::host
