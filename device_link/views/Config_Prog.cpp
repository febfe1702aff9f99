#include "device_link/views/Config_Prog.h"

#include "device_link/core/Client.h"
#include "device_link/core/ErrTrap.h"
#include "framework/seam/UiSeam.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPixmap>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

namespace zol {

namespace {

constexpr const char* kSource = "Config_Prog";

// The tick shown when the image has gone in well.
QPixmap DrawTick() {
    QPixmap pixmap(40, 40);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0x2e, 0x9e, 0x44));
    painter.drawEllipse(QRectF(2, 2, 36, 36));
    QPen pen(Qt::white, 4.5, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
    painter.setPen(pen);
    painter.drawPolyline(QPolygonF() << QPointF(11, 21) << QPointF(17, 27) << QPointF(29, 13));
    return pixmap;
}

} // namespace

Config_Prog::Config_Prog(QWidget* parent) : FormView(kName, parent) {
    setWindowTitle(QStringLiteral("Firmware Reprogram"));

    for (size_t i = 0; i < labelInfo_.size(); ++i) {
        labelInfo_[i] = new QLabel(this);
        labelInfo_[i]->setObjectName(QStringLiteral("LabelInfo_%1").arg(i));
    }
    labelInfo_[0]->setText(QStringLiteral("Reprogram"));
    QFont headFont = labelInfo_[0]->font();
    headFont.setBold(true);
    headFont.setPointSizeF(headFont.pointSizeF() * 1.2);
    labelInfo_[0]->setFont(headFont);
    labelInfo_[1]->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    labelInfo_[1]->setMinimumWidth(50);
    labelInfo_[2]->setMinimumWidth(150);
    labelInfo_[3]->setText(QStringLiteral("Please Wait"));
    labelInfo_[3]->setVisible(false);

    progressUpload_ = new QProgressBar(this);
    progressUpload_->setObjectName("ProgressUpload");
    progressUpload_->setRange(0, 100);
    progressUpload_->setValue(0);
    progressUpload_->setTextVisible(false);

    imageGood_ = new QLabel(this);
    imageGood_->setObjectName("ImageGood");
    imageGood_->setPixmap(DrawTick());
    imageGood_->setFixedSize(40, 40);
    imageGood_->setVisible(false);

    buttonExit_ = new QPushButton(QStringLiteral("Exit"), this);
    buttonExit_->setObjectName("ButtonExit");
    buttonExit_->setToolTip(QStringLiteral("Close Window"));
    buttonExit_->setEnabled(false);
    connect(buttonExit_, &QPushButton::clicked, this, [this] { ButtonExit_Click(); });

    auto* head = new QHBoxLayout;
    head->addWidget(labelInfo_[0]);
    head->addStretch(1);
    head->addWidget(imageGood_);

    auto* bar = new QHBoxLayout;
    bar->addWidget(progressUpload_, 1);
    bar->addWidget(labelInfo_[1]);

    auto* state = new QHBoxLayout;
    state->addWidget(labelInfo_[2]);
    state->addStretch(1);
    state->addWidget(labelInfo_[3]);

    auto* bottom = new QHBoxLayout;
    bottom->addStretch(1);
    bottom->addWidget(buttonExit_);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(head);
    layout->addLayout(bar);
    layout->addLayout(state);
    layout->addStretch(1);
    layout->addLayout(bottom);
    setMinimumWidth(380);
    resize(380, 170);

    timerUpdate_ = new QTimer(this);
    timerUpdate_->setObjectName("TimerUpdate");
    timerUpdate_->setInterval(kTickMs);
    connect(timerUpdate_, &QTimer::timeout, this, [this] {
        // What a tick could not deal with has been shown to the user already; the timer has
        // stopped and the exit button waits.
        try {
            TimerUpdate_Timer();
        } catch (const ZolError&) {
        } catch (const std::exception&) {
        }
    });
    timerUpdate_->start();
}

void Config_Prog::TimerUpdate_Timer() {
    const std::string source = std::string(kSource) + ".TimerUpdate_Timer";
    try {
        int32_t s = Client::ProgState();
        bool end = false;
        if (s == last_) {
            ++same_;
            const int patience = last_ == 100 ? kConfigurePatience : kUploadPatience;
            if (same_ > patience) {
                labelInfo_[2]->setText(QStringLiteral("Timed Out"));
                end = true;
            }
        } else {
            same_ = 0;
            if (last_ == 0) {
                labelInfo_[2]->setText(QStringLiteral("Uploading Image"));
                ui().SetMousePointer(kPointerHourglass);
            }
            last_ = s;
            if (s == 0) {
                labelInfo_[2]->setText(QStringLiteral("Success "));
                ui().SetMousePointer(kPointerDefault);
                imageGood_->setVisible(true);
                end = true;
            } else if (s == 100) {
                labelInfo_[2]->setText(QStringLiteral("Configuring."));
                labelInfo_[3]->setVisible(true);
                configuring_ = true;
            } else if (s > 100) {
                labelInfo_[2]->setText(QStringLiteral("Error ") + QString::number(s - 100));
                // From here the failed upload counts as complete.
                s = 100;
                last_ = s;
                end = true;
            }
            if (s != 0) {
                labelInfo_[1]->setText(QString::number(last_) + QStringLiteral(" %"));
                progressUpload_->setValue(s);
            }
        }
        if (configuring_) {
            // Blinks: visible while bit 1 of the count is set, so it turns every two ticks.
            labelInfo_[2]->setVisible((same_ & 2) != 0);
        }
        if (end) {
            labelInfo_[2]->setVisible(true);
            labelInfo_[3]->setVisible(false);
            timerUpdate_->stop();
            buttonExit_->setEnabled(true);
            ui().Beep();
        }
    } catch (const ZolError&) {
        timerUpdate_->stop();
        buttonExit_->setEnabled(true);
        ui().SetMousePointer(kPointerDefault);
        const int32_t code = ErrTrap::Capture();
        switch (code) {
        case err::ErrAPI_Connection:
        case err::ErrAPI_Response_Missing:
            Form()->BugOut(code);
            return;
        case err::ErrAPI_DeviceMissig:
        case err::ErrAPI_ProgFile_Compat:
        case err::ErrAPI_ProgFile_Corrupt:
            ErrTrap::Report("Firmware image upload", false);
            Form()->BugOut(code);
            return;
        case err::ErrSYS_Local:
            ErrTrap::Report(source, false);
            return;
        default:
            ErrTrap::Report(source, false);
            throw;
        }
    } catch (const std::exception&) {
        timerUpdate_->stop();
        buttonExit_->setEnabled(true);
        ui().SetMousePointer(kPointerDefault);
        ErrTrap::Capture();
        ErrTrap::Report(source, false);
        throw;
    }
}

void Config_Prog::ButtonExit_Click() {
    Unload();
}

} // namespace zol
