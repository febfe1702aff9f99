#include "device_link/views/System_Info.h"

#include "device_link/core/Client.h"
#include "device_link/core/ErrTrap.h"
#include "device_link/status/DEV_Status.h"
#include "device_link/views/LoadFailure.h"
#include "services/strings/StrFormat.h"

#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>
#include <cstdio>

namespace zol {

namespace {

constexpr const char* kSource = "System_Info";

QString Q(const std::string& text) {
    return QString::fromStdString(text);
}

} // namespace

std::string SerialAsNumber(const std::string& text) {
    size_t i = 0;
    auto skipBlanks = [&] {
        while (i < text.size() && (text[i] == ' ' || text[i] == '\t' || text[i] == '\r' || text[i] == '\n')) {
            ++i;
        }
    };
    skipBlanks();
    bool negative = false;
    if (i < text.size() && (text[i] == '-' || text[i] == '+')) {
        negative = text[i] == '-';
        ++i;
    }
    std::string digits;
    for (;; ++i) {
        skipBlanks();
        if (i >= text.size() || text[i] < '0' || text[i] > '9') {
            break;
        }
        if (!(digits.empty() && text[i] == '0')) {
            digits += text[i];
        }
    }
    if (digits.empty()) {
        return "0";
    }
    if (digits.size() <= 15) {
        return (negative ? "-" : "") + digits;
    }
    // Beyond fifteen digits the number is shown in exponent form, as a double prints.
    double value = 0;
    for (char c : digits) {
        value = value * 10 + (c - '0');
    }
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%.14E", negative ? -value : value);
    std::string out = buffer;
    const size_t e = out.find('E');
    std::string mantissa = out.substr(0, e);
    while (!mantissa.empty() && mantissa.back() == '0') {
        mantissa.pop_back();
    }
    if (!mantissa.empty() && mantissa.back() == '.') {
        mantissa.pop_back();
    }
    return mantissa + out.substr(e);
}

std::string FormatUniqueId(const std::string& uid) {
    const std::string head = uid.substr(0, std::min<size_t>(2, uid.size()));
    const std::string tail = uid.size() > 2 ? uid.substr(2) : std::string();
    std::string text = StrFormat::BytesToHex(head, " ");
    if (!tail.empty()) {
        text += " : " + StrFormat::BytesToHex(tail, " ");
    }
    return text;
}

System_Info::System_Info(QWidget* parent) : FormView(kName, parent) {
    setWindowTitle(QStringLiteral("  Device Information"));

    frameId_ = new QGroupBox(this);
    frameId_->setObjectName("FrameID");

    static const char* const kCaptions[] = {"", "Serial N\u00b0",
                                            "Hardware Rev :", "Firmware Rev :", "Unique ID :"};
    auto* grid = new QGridLayout(frameId_);
    for (size_t i = 0; i < labelInfo_.size(); ++i) {
        labelName_[i] = new QLabel(QString::fromUtf8(kCaptions[i]), frameId_);
        labelName_[i]->setObjectName(QStringLiteral("LabelName_%1").arg(i));
        labelName_[i]->setAlignment(Qt::AlignRight | Qt::AlignTop);
        labelInfo_[i] = new QLabel(frameId_);
        labelInfo_[i]->setObjectName(QStringLiteral("LabelInfo_%1").arg(i));
        labelInfo_[i]->setTextInteractionFlags(Qt::TextSelectableByMouse);
        labelInfo_[i]->setMinimumWidth(170);
        grid->addWidget(labelName_[i], static_cast<int>(i), 0);
        grid->addWidget(labelInfo_[i], static_cast<int>(i), 1);
    }
    // The device's name heads the frame; it has no caption of its own.
    labelName_[0]->setVisible(false);
    QFont nameFont = labelInfo_[0]->font();
    nameFont.setBold(true);
    labelInfo_[0]->setFont(nameFont);
    grid->removeWidget(labelInfo_[0]);
    grid->addWidget(labelInfo_[0], 0, 0, 1, 2, Qt::AlignHCenter);
    grid->setVerticalSpacing(6);
    grid->setHorizontalSpacing(12);

    auto* ok = new QPushButton(QStringLiteral("OK"), this);
    ok->setObjectName("Button_OK");
    connect(ok, &QPushButton::clicked, this, [this] { Unload(); });

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(frameId_);
    layout->addWidget(ok, 0, Qt::AlignRight);
}

void System_Info::OnControl() {
    if (!Form()->DataIsSet()) {
        return;
    }
    const std::string dataClass = Form()->DataClass();
    if (dataClass != "DEV_Status") {
        ErrTrap::RaiseLocal("Class object " + Text::QuoteText(dataClass) + " not handled");
    }
    iState_ = std::dynamic_pointer_cast<DEV_Status>(Form()->DataObject());
    Initialise();
}

void System_Info::Initialise() {
    const std::string source = std::string(kSource) + ".Form_Load";
    ErrTrap::Device(
        source, source,
        [this] {
            labelInfo_[0]->setText(Q(Client::DeviceName()));
            labelInfo_[1]->setText(Q(SerialAsNumber(Client::SerialNumber())));
            labelInfo_[2]->setText(Q(Client::HardwareRev()));
            const std::string firmware = Client::FirmwareRev();
            const int32_t build = Client::FirmwareBuild();
            labelInfo_[3]->setText(
                Q(firmware + "\r\n  Build " + std::to_string(build)).replace("\r\n", "\n"));
            labelInfo_[4]->setText(Q(FormatUniqueId(Client::UniqueId())));
        },
        LoadBugOut(*this, source));
}

} // namespace zol
