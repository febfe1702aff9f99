#include "services/update/Help_About.h"

#include "device_link/core/Client.h"
#include "framework/seam/Product.h"
#include "framework/seam/UiSeam.h"
#include "services/update/AUF_WebLink.h"
#include "services/update/ClickLabel.h"
#include "services/update/WebAddress.h"

#include <QGridLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QPixmap>
#include <functional>

namespace zol {

namespace {

// The maker's mark, drawn rather than loaded: a lamp beam over the initial.
QPixmap DrawLogo() {
    QPixmap pixmap(72, 72);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0x1a, 0x4f, 0xb5));
    painter.drawRoundedRect(QRectF(2, 2, 68, 68), 10, 10);
    painter.setBrush(QColor(0xff, 0xd5, 0x4a, 200));
    QPolygonF beam;
    beam << QPointF(36, 10) << QPointF(14, 62) << QPointF(58, 62);
    painter.drawPolygon(beam);
    painter.setPen(Qt::white);
    QFont font = painter.font();
    font.setBold(true);
    font.setPixelSize(28);
    painter.setFont(font);
    painter.drawText(QRectF(2, 24, 68, 40), Qt::AlignCenter, QStringLiteral("K"));
    return pixmap;
}

} // namespace

Help_About::Help_About(QWidget* parent) : FormView(kName, parent) {
    setWindowTitle(QStringLiteral("About ") + QString::fromUtf8(AppTitle()));

    auto* logo = new ClickLabel(this);
    logo->setObjectName("Image_logo");
    logo->setPixmap(DrawLogo());
    logo->onClick = [this] { Dismiss_Click(); };
    imageLogo_ = logo;

    for (size_t i = 0; i < labelInfo_.size(); ++i) {
        auto* label = new ClickLabel(this);
        label->setObjectName(QStringLiteral("LabelInfo_%1").arg(i));
        label->onClick = [this] { Dismiss_Click(); };
        labelInfo_[i] = label;
    }
    QFont titleFont = labelInfo_[0]->font();
    titleFont.setBold(true);
    titleFont.setPointSizeF(titleFont.pointSizeF() * 1.3);
    labelInfo_[0]->setFont(titleFont);

    auto* link = new ClickLabel(QString::fromStdString(web::HomePage()), this);
    link->setObjectName("Label_WebLink");
    link->setStyleSheet(QStringLiteral("color: #1a4fb5; text-decoration: underline;"));
    link->setCursor(Qt::PointingHandCursor);
    link->onClick = [this] { Label_WebLink_Click(); };
    labelWebLink_ = link;

    auto* layout = new QGridLayout(this);
    layout->addWidget(imageLogo_, 0, 0, 3, 1, Qt::AlignTop);
    for (size_t i = 0; i < labelInfo_.size(); ++i) {
        layout->addWidget(labelInfo_[i], static_cast<int>(i), 1);
    }
    layout->addWidget(labelWebLink_, 5, 1);
    layout->setHorizontalSpacing(16);

    // Filled at load. A library whose version call fails raises its error here, and the view
    // never shows.
    labelInfo_[0]->setText(QStringLiteral("About ") + QString::fromUtf8(AppTitle()));
    labelInfo_[1]->setText(QString::fromUtf8(product::kProductName));
    labelInfo_[2]->setText(QString::fromStdString("SW Revision: " + product::Version()));
    labelInfo_[3]->setText(QString::fromStdString("API Version: " + Client::LibraryVersion()));
    labelInfo_[4]->setText(
        QString::fromUtf8(kCompanyLines).replace(QStringLiteral("\r\n"), QStringLiteral("\n")));
}

void Help_About::Label_WebLink_Click() {
    AUF_WebLink::Open(this, web::HomePage());
}

void Help_About::Dismiss_Click() {
    Unload();
}

void Help_About::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) {
        Dismiss_Click();
        return;
    }
    FormView::mouseReleaseEvent(event);
}

} // namespace zol
