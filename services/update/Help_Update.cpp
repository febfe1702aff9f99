#include "services/update/Help_Update.h"

#include "device_link/core/ErrTrap.h"
#include "device_link/status/DEV_Status.h"
#include "device_link/status/SYS_Status.h"
#include "framework/seam/Product.h"
#include "framework/seam/UiSeam.h"
#include "services/settings/AUF_Registry.h"
#include "services/strings/StrFormat.h"
#include "services/update/AUF_WebLink.h"
#include "services/update/ClickLabel.h"
#include "services/update/UpdateProtocol.h"
#include "services/update/WebAddress.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QPushButton>
#include <QTcpSocket>
#include <QVBoxLayout>

namespace zol {

namespace {

constexpr const char* kSource = "Help_Update";

} // namespace

Help_Update::Help_Update(QWidget* parent) : FormView(kName, parent) {
    setWindowTitle(QString::fromUtf8(AppTitle()) + QStringLiteral(" Updates"));

    labelTitle_ = new QLabel(this);
    labelTitle_->setObjectName("Label_Title");
    QFont titleFont = labelTitle_->font();
    titleFont.setBold(true);
    titleFont.setPointSizeF(titleFont.pointSizeF() * 1.3);
    labelTitle_->setFont(titleFont);

    labelAdvice_ =
        new QLabel(QStringLiteral("Please wait while the server is contacted for the latest updates"), this);
    labelAdvice_->setObjectName("Label_Advice");
    labelAdvice_->setWordWrap(true);
    labelAdvice_->setMinimumHeight(48);
    labelAdvice_->setAlignment(Qt::AlignLeft | Qt::AlignTop);

    auto* link = new ClickLabel(QStringLiteral("Click here for support"), this);
    link->setObjectName("Label_WebLink");
    link->setStyleSheet(QStringLiteral("color: #1a4fb5; text-decoration: underline;"));
    link->setCursor(Qt::PointingHandCursor);
    link->onClick = [this] { Label_WebLink_Click(); };
    link->setVisible(false);
    labelWebLink_ = link;

    buttonExit_ = new QPushButton(QStringLiteral("Exit"), this);
    buttonExit_->setObjectName("Button_Exit");
    buttonExit_->setToolTip(QStringLiteral("Close the window"));
    connect(buttonExit_, &QPushButton::clicked, this, [this] { Button_Exit_Click(); });

    auto* bottom = new QHBoxLayout;
    bottom->addWidget(labelWebLink_);
    bottom->addStretch(1);
    bottom->addWidget(buttonExit_);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(labelTitle_);
    layout->addSpacing(8);
    layout->addWidget(labelAdvice_, 1);
    layout->addLayout(bottom);
    setMinimumWidth(420);
    resize(420, 170);

    winsock_ = new QTcpSocket(this);
    winsock_->setObjectName("Winsock");
    connect(winsock_, &QTcpSocket::connected, this, [this] { Winsock_Connect(); });
    connect(winsock_, &QTcpSocket::readyRead, this, [this] { Winsock_DataArrival(); });
    // Queued: the error event may close the view, which must not happen inside the socket's own
    // signal.
    connect(
        winsock_, &QTcpSocket::errorOccurred, this,
        [this](QAbstractSocket::SocketError error) {
            // A peer that ends the connection in good order is the control's close event, which
            // the check does not handle; once the check has closed the socket itself, nothing
            // more arrives.
            if (closedByCheck_ || error == QAbstractSocket::RemoteHostClosedError) {
                return;
            }
            Winsock_Error(static_cast<int>(error), winsock_->errorString().toStdString());
        },
        Qt::QueuedConnection);
}

Help_Update::~Help_Update() = default;

void Help_Update::OnControl() {
    // Any data but none or a DEV_Status is refused with a message, and the check runs all the same.
    ErrTrap::Standard(std::string(kSource) + ".Control (Set)", [this] {
        const std::string dataClass = Form()->DataClass();
        if (dataClass.empty()) {
            return;
        }
        if (dataClass != "DEV_Status") {
            ErrTrap::RaiseLocal("Class object " + Text::QuoteText(dataClass) + " not handled");
        }
        iState_ = std::dynamic_pointer_cast<DEV_Status>(Form()->DataObject());
    });
    StartCheck();
}

void Help_Update::StartCheck() {
    labelTitle_->setText(QString::fromUtf8(AppTitle()) + QStringLiteral(" Updates"));
    sState_ = std::make_shared<SYS_Status>();
    hostName_ = web::UpdateHost();
    const web::HostPort server = web::SplitHostPort(hostName_, 80);
    closedByCheck_ = false;
    winsock_->abort();
    if (web::IsReservedInvalidName(server.host)) {
        // Names under ".invalid" never resolve: they are not looked up, and the check meets the
        // host-not-found event as it would after a failed lookup.
        QMetaObject::invokeMethod(
            this,
            [this] {
                if (!closedByCheck_) {
                    Winsock_Error(kSocketHostNotFound, "Host not found");
                }
            },
            Qt::QueuedConnection);
    } else {
        winsock_->connectToHost(QString::fromStdString(server.host), server.port);
    }
    ui().SetMousePointer(kPointerHourglass);
}

void Help_Update::Winsock_Connect() {
    update::RequestFacts facts;
    facts.longName = sState_->LongName();
    facts.winVersion = sState_->WinVersion();
    facts.servicePack = sState_->ServicePack();
    facts.language = sState_->Language();
    facts.country = sState_->Country();
    facts.appVersion = sState_->AppVersion();
    facts.productCode = sState_->ProductCode();
    const std::string request = update::BuildRequest(hostName_, facts);
    winsock_->write(request.data(), static_cast<qint64>(request.size()));
}

void Help_Update::Winsock_DataArrival() {
    latest_.clear();
    try {
        // One read of at most 2048 characters; whatever comes later has no reader.
        const QByteArray data = winsock_->read(update::kAnswerLimit);
        closedByCheck_ = true;
        winsock_->abort();

        const update::Answer answer = update::ParseAnswer(data.toStdString());
        if (answer.status != "200") {
            ui().MsgBox("Error Code " + answer.status + " returned from server", vb::Exclamation,
                        std::string("Checking for Updates"));
            return;
        }
        update::StoreBody(answer.body);
        ui().SetMousePointer(kPointerDefault);
        Compare();
    } catch (const update::BadVersion& e) {
        latest_ = e.Value();
        ui().MsgBox("Server Data Error\r\n[" + latest_ + "]", vb::Critical,
                    std::string("Update Information"));
    } catch (const ZolError&) {
        ui().MsgBox("Server Data Error\r\n[" + latest_ + "]", vb::Critical,
                    std::string("Update Information"));
    } catch (const std::exception&) {
        ui().MsgBox("Server Data Error\r\n[" + latest_ + "]", vb::Critical,
                    std::string("Update Information"));
    }
}

void Help_Update::Compare() {
    latest_ = AUF_Registry::ReadString("Latest_Software", "");
    if (!Text::IsVersion(latest_)) {
        latest_.clear(); // a value no compare can read counts as absent
    }
    const std::string productName = product::kProductName;
    const bool newer = !latest_.empty() && update::IsNewer(latest_, sState_->AppVersion());
    if (!newer) {
        labelAdvice_->setText(
            QString::fromStdString(productName + " is up to date. No updates are currently available."));
        return;
    }
    labelAdvice_->setText(
        QString::fromStdString("A more recent version of " + productName + " is available for download."));
    const int answer = ui().MsgBox("Would you like to downnload version " + latest_ + " now",
                                   vb::YesNo | vb::Question, productName + " Update");
    if (answer == vb::Yes) {
        AUF_WebLink::Open(this, web::SupportPage());
    }
}

void Help_Update::Winsock_Error(int number, const std::string& description) {
    closedByCheck_ = true;
    winsock_->abort();
    ui().SetMousePointer(kPointerDefault);
    labelWebLink_->setVisible(true);
    if (number == kSocketHostNotFound) {
        labelAdvice_->setText(QStringLiteral(
            "Server could not be contacted. Please check you internet connection and try again."));
        return;
    }
    // The view goes first; the box follows with nothing of the view left to touch.
    Unload();
    ui().MsgBox(description, vb::Exclamation, std::string("Server Connection Error"));
}

void Help_Update::Unload() {
    closedByCheck_ = true;
    winsock_->abort();
    FormView::Unload();
}

void Help_Update::Label_WebLink_Click() {
    AUF_WebLink::Open(this, web::SupportPage());
}

void Help_Update::Button_Exit_Click() {
    Unload();
}

} // namespace zol
