#include "host/gui/InputMonitor.h"

#include <QHelpEvent>
#include <QPainter>
#include <QToolTip>

namespace zol::host {

InputMonitor::InputMonitor(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("InputMonitor"));
    QFont small = font();
    small.setPointSizeF(small.pointSizeF() * 0.85);
    setFont(small);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void InputMonitor::SetLevel(int slot, int level) {
    if (slot < 1 || slot > kSlots || level < 0 || level > 255) {
        ++rejected_;
        return;
    }
    ++received_;
    auto& cell = levels_[static_cast<size_t>(slot) - 1];
    if (cell != level) {
        cell = level;
        update(CellRect(slot - 1));
    }
    emit levelReceived(slot, level);
}

int InputMonitor::Level(int slot) const {
    if (slot < 1 || slot > kSlots) {
        return 0;
    }
    return levels_[static_cast<size_t>(slot) - 1];
}

void InputMonitor::Clear() {
    levels_.fill(0);
    received_ = 0;
    rejected_ = 0;
    update();
}

int InputMonitor::CellWidth() const {
    return fontMetrics().horizontalAdvance(QStringLiteral("000")) + 8;
}
int InputMonitor::CellHeight() const {
    return fontMetrics().height() + 4;
}
int InputMonitor::HeaderWidth() const {
    return fontMetrics().horizontalAdvance(QStringLiteral("000")) + 10;
}

QRect InputMonitor::CellRect(int index) const {
    const int row = index / kColumns;
    const int column = index % kColumns;
    return QRect(HeaderWidth() + column * CellWidth(), CellHeight() + row * CellHeight(), CellWidth(),
                 CellHeight());
}

QSize InputMonitor::sizeHint() const {
    return QSize(HeaderWidth() + kColumns * CellWidth() + 1, (kRows + 1) * CellHeight() + 1);
}

void InputMonitor::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    const QPalette& pal = palette();
    painter.fillRect(rect(), pal.color(QPalette::Base));
    const QColor grid = pal.color(QPalette::Mid);
    const QColor header = pal.color(QPalette::WindowText);

    // Column numbers across the top, the first slot of each row down the side.
    painter.setPen(header);
    for (int column = 0; column < kColumns; ++column) {
        const QRect cell(HeaderWidth() + column * CellWidth(), 0, CellWidth(), CellHeight());
        painter.drawText(cell, Qt::AlignCenter, QString::number(column + 1));
    }
    for (int row = 0; row < kRows; ++row) {
        const QRect cell(0, CellHeight() + row * CellHeight(), HeaderWidth() - 4, CellHeight());
        painter.drawText(cell, Qt::AlignRight | Qt::AlignVCenter, QString::number(row * kColumns + 1));
    }
    for (int i = 0; i < kSlots; ++i) {
        const QRect cell = CellRect(i);
        const int level = levels_[static_cast<size_t>(i)];
        // Amber, stronger with the level.
        QColor fill(255, 176, 0);
        fill.setAlpha(level == 0 ? 0 : 40 + level * 215 / 255);
        painter.fillRect(cell, fill);
        painter.setPen(grid);
        painter.drawRect(cell.adjusted(0, 0, -1, -1));
        painter.setPen(level > 160 ? QColor(Qt::black) : pal.color(QPalette::Text));
        painter.drawText(cell, Qt::AlignCenter, QString::number(level));
    }
}

bool InputMonitor::event(QEvent* event) {
    if (event->type() == QEvent::ToolTip) {
        auto* help = static_cast<QHelpEvent*>(event);
        for (int i = 0; i < kSlots; ++i) {
            if (CellRect(i).contains(help->pos())) {
                QToolTip::showText(
                    help->globalPos(),
                    QStringLiteral("Slot %1: %2").arg(i + 1).arg(levels_[static_cast<size_t>(i)]), this);
                return true;
            }
        }
        QToolTip::hideText();
        event->ignore();
        return true;
    }
    return QWidget::event(event);
}

} // namespace zol::host
