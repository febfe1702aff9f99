#include "device_link/port_view/Config_Port.h"

#include "device_link/core/ErrTrap.h"
#include "device_link/port_view/FDF_PortEI.h"
#include "framework/bindings/Icons.h"
#include "framework/bindings/ImageControl.h"
#include "framework/bindings/WinRes.h"
#include "framework/form/Forms.h"
#include "plugin/core/FDF_Port.h"

#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QVBoxLayout>

namespace zol {

namespace {

constexpr const char* kControlSet = "Config_Port.Control (Set)";
constexpr const char* kActionConnect = "Config_Port - Action Connect Click";

// An error that leaves an event handler has been shown by its handler already; it ends at the
// message loop, and the view stays as it is.
template <typename Body> void Event(Body&& body) {
    try {
        body();
    } catch (const ZolError&) {
    } catch (const std::exception&) {
    }
}

} // namespace

Config_Port::Config_Port(QWidget* parent) : FormView(kName, parent) {
    setWindowTitle(QStringLiteral("Connection Settings"));
    setWindowIcon(icons::Icon(icons::PlugConnected));

    comboSelectType_ = new QComboBox(this);
    comboSelectType_->setObjectName(QStringLiteral("Combo_SelectType"));
    comboSelectPort_ = new QComboBox(this);
    comboSelectPort_->setObjectName(QStringLiteral("Combo_SelectPort"));
    comboSelectPort_->setMinimumContentsLength(18);
    comboSelectPort_->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);

    imagePlug_[0] = new ImageControl(QStringLiteral("Image_Plug_0"), icons::PlugConnected, 48, this);
    imagePlug_[0]->setToolTip(QStringLiteral("   Disconnect from Equipment  "));
    imagePlug_[1] = new ImageControl(QStringLiteral("Image_Plug_1"), icons::PlugDisconnected, 48, this);
    imagePlug_[1]->setToolTip(QStringLiteral(" Connect to Equipment  "));
    imageExit_ = new ImageControl(QStringLiteral("Image_Exit"), icons::Exit, 32, this);
    imageExit_->setToolTip(QStringLiteral("Close Window"));

    auto* form = new QFormLayout();
    form->addRow(QStringLiteral("Connection type"), comboSelectType_);
    form->addRow(QStringLiteral("Port"), comboSelectPort_);

    auto* actions = new QHBoxLayout();
    actions->addWidget(imagePlug_[0]);
    actions->addWidget(imagePlug_[1]);
    actions->addStretch(1);
    actions->addWidget(imageExit_, 0, Qt::AlignBottom);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addSpacing(6);
    layout->addLayout(actions);
    layout->setSizeConstraint(QLayout::SetFixedSize);

    for (int i = 0; i < 2; ++i) {
        connect(imagePlug_[static_cast<size_t>(i)], &ImageControl::clicked, this,
                [this, i] { Image_Plug_Click(i); });
    }
    connect(imageExit_, &ImageControl::clicked, this, &Config_Port::Image_Exit_Click);

    // Load: the port choice gets its binding, the one connection type is shown and fixed.
    selectPort_.Initialise(comboSelectPort_);
    selectPort_.Change = [this](int16_t value) { Event([&] { SelectPort_Change(value); }); };
    comboSelectType_->addItem(QStringLiteral("USB Port"));
    comboSelectType_->setCurrentIndex(0);
    comboSelectType_->setEnabled(false);
    WinRes(this);
}

void Config_Port::OnControl() {
    ErrTrap::Attempt(
        [&] {
            const std::string dataClass = Form()->DataClass();
            if (dataClass != "FDF_Port") {
                ErrTrap::RaiseLocal("Class Object \"" + dataClass + "\" not handled");
            }
            port_ = std::dynamic_pointer_cast<FDF_Port>(Form()->DataObject());
            portEI_ = dynamic_cast<FDF_PortEI*>(Form()->Ancestor(1));
            if (portEI_ == nullptr) {
                throw RuntimeFault(rt::TypeMismatch, "Type mismatch");
            }
            Refresh();
        },
        [&](int32_t code) -> ErrTrap::Outcome {
            if (code == err::ErrSYS_Local) {
                ErrTrap::Report(kControlSet, false);
                return ErrTrap::Outcome::Stop;
            }
            ErrTrap::Report(code == err::ErrAPI_Connection ? "Connection Port" : kControlSet, false);
            ErrTrap::ReRaise();
        });
}

void Config_Port::Refresh() {
    bool ready = port_->Ready();
    const int32_t count = port_->Items();
    comboSelectPort_->clear();
    for (int32_t i = 1; i <= count; ++i) {
        selectPort_.AddItem(i, port_->Item(i));
    }
    const int16_t index = port_->Index();
    if (index >= 1 && index <= count) {
        selectPort_.Value(index);
    } else {
        ready = false;
    }
    FollowPort(ready);
}

void Config_Port::FollowPort(bool ready) {
    const bool inUse = port_->InUse();
    comboSelectPort_->setEnabled(!inUse);
    if (ready) {
        imagePlug_[0]->setVisible(inUse);
        imagePlug_[1]->setVisible(!inUse);
        imagePlug_[1]->setEnabled(true);
    } else {
        imagePlug_[0]->setVisible(false);
        imagePlug_[1]->setVisible(true);
        imagePlug_[1]->setEnabled(false);
    }
}

void Config_Port::SelectPort_Change(int16_t value) {
    if (!port_) {
        return;
    }
    port_->SetIndex(value);
    imagePlug_[1]->setEnabled(port_->Ready());
}

void Config_Port::Image_Plug_Click(int index) {
    Event([&] {
        ErrTrap::Attempt(
            [&] {
                if (index == 1) {
                    portEI_->Seize();
                } else {
                    portEI_->Release();
                }
                FollowPort(port_->Ready());
            },
            [&](int32_t code) {
                if (code == err::ErrSYS_Comms) {
                    Form()->BugOut(code);
                } else {
                    ErrTrap::Report(kActionConnect, false);
                }
                return ErrTrap::Outcome::Stop;
            });
    });
}

void Config_Port::Image_Exit_Click() {
    Unload();
}

void RegisterConfigPort() {
    Forms::Register(Config_Port::kName, [] { return new Config_Port(); });
}

} // namespace zol
