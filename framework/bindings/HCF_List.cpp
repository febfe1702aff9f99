#include "framework/bindings/HCF_List.h"

#include "framework/bindings/WinRes.h"
#include "framework/seam/UiSeam.h"
#include "services/strings/StrFormat.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QStyledItemDelegate>
#include <QTreeWidget>
#include <algorithm>
#include <numeric>

namespace zol {

namespace {

QColor ColourOf(int32_t colour) {
    const auto c = static_cast<uint32_t>(colour);
    return QColor(static_cast<int>(c & 0xFF), static_cast<int>((c >> 8) & 0xFF),
                  static_cast<int>((c >> 16) & 0xFF));
}

// Rows of one fixed height, so that the control shows exactly its number of rows.
class RowDelegate : public QStyledItemDelegate {
public:
    explicit RowDelegate(QObject* parent) : QStyledItemDelegate(parent) {}
    int rowHeight = 17;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override {
        QSize size = QStyledItemDelegate::sizeHint(option, index);
        size.setHeight(rowHeight);
        return size;
    }
};

void NotInitialised() {
    ui().MsgBox("Object not yet initialised");
    ui().Halt();
}

} // namespace

HCF_List::HCF_List(QObject* parent) : QObject(parent) {}

HCF_List::~HCF_List() {
    if (myLink_) {
        myLink_->removeEventFilter(this);
        myLink_->viewport()->removeEventFilter(this);
    }
}

QTreeWidget* HCF_List::Control() const {
    return myLink_.data();
}

void HCF_List::Initialise(QTreeWidget* control, int32_t rows) {
    if (ready_) {
        ui().MsgBox("Control already assingned", vb::Critical);
        ui().Halt();
        return;
    }
    myLink_ = control;
    linkObject_ = control;
    ready_ = true;
    const auto height = static_cast<int16_t>((rows + 1) * 206 + 20);
    rows_ = rows;
    if (myLink_) {
        myLink_->setColumnCount(0);
        myLink_->setRootIsDecorated(false);
        myLink_->setItemsExpandable(false);
        myLink_->setUniformRowHeights(true);
        myLink_->setAllColumnsShowFocus(true);
        myLink_->setSortingEnabled(false);
        myLink_->setEditTriggers(QAbstractItemView::NoEditTriggers);
        myLink_->setSelectionBehavior(QAbstractItemView::SelectRows);
        myLink_->setSelectionMode(QAbstractItemView::SingleSelection);
        myLink_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        myLink_->setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
        myLink_->header()->setStretchLastSection(false);
        myLink_->header()->setSectionsMovable(false);
        myLink_->header()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
        myLink_->setItemDelegate(new RowDelegate(myLink_));
        myLink_->installEventFilter(this);
        myLink_->viewport()->installEventFilter(this);
    }
    SetHeight(ScaleTwips(height));
}

void HCF_List::SetHeight(int32_t twips) {
    heightTwips_ = twips;
    if (!myLink_) {
        return;
    }
    const int pixels = TwipsToPixels(twips);
    myLink_->setFixedHeight(pixels);
    // The header and the rows share the height equally: rows + 1 lines.
    const int frame = myLink_->frameWidth();
    const int line = std::max((pixels - 2 * frame) / (rows_ + 1), myLink_->fontMetrics().height() + 2);
    static_cast<RowDelegate*>(myLink_->itemDelegate())->rowHeight = line;
    myLink_->header()->setFixedHeight(line);
}

void HCF_List::SetWidth(int32_t twips) {
    widthTwips_ = twips;
    if (myLink_) {
        myLink_->setFixedWidth(TwipsToPixels(twips) + 2 * myLink_->frameWidth());
    }
}

void HCF_List::AddCol(const std::string& title, int32_t widthTwips) {
    if (!ready_) {
        NotInitialised();
        return;
    }
    const int32_t width = ScaleTwips(widthTwips);
    widths_.push_back(width);
    if (myLink_) {
        const int column = static_cast<int>(widths_.size()) - 1;
        myLink_->setColumnCount(column + 1);
        myLink_->headerItem()->setText(column, QString::fromStdString(title));
        myLink_->headerItem()->setTextAlignment(column, Qt::AlignLeft | Qt::AlignVCenter);
        myLink_->setColumnWidth(column, TwipsToPixels(width));
    }
    totalWidth_ = std::accumulate(widths_.begin(), widths_.end(), 0);
    SetWidth(totalWidth_ + 2);
}

void HCF_List::AddRow(int32_t key, const std::string& fields, const std::string& delimiter, int32_t colour) {
    if (!ready_) {
        NotInitialised();
        return;
    }
    if (!myLink_) {
        return;
    }
    const int count = myLink_->topLevelItemCount();
    int place = count; // 0-based: after the last row
    for (int i = 0; i < count; ++i) {
        const long rowKey = myLink_->topLevelItem(i)->text(0).toLong();
        if (rowKey == key) {
            return;
        }
        if (rowKey > key) {
            place = i;
            break;
        }
    }
    auto* item = new QTreeWidgetItem();
    item->setText(0, QString::number(key));
    const QColor shade = ColourOf(colour);
    item->setForeground(0, shade);
    const int columns = static_cast<int>(widths_.size());
    for (int i = 1; i < columns; ++i) {
        item->setText(i, QString::fromStdString(Text::ItemOf(fields, static_cast<int16_t>(i), delimiter)));
        item->setForeground(i, shade);
    }
    myLink_->insertTopLevelItem(place, item);
    if (myLink_->topLevelItemCount() == rows_ + 1) {
        // The scroll bar has just appeared.
        SetWidth(totalWidth_ + 250);
    }
}

void HCF_List::DelRow(int16_t key) {
    if (key == index_) {
        index_ = 0;
    }
    if (!myLink_) {
        return;
    }
    const QString text = QString::number(key);
    for (int i = 0; i < myLink_->topLevelItemCount(); ++i) {
        if (myLink_->topLevelItem(i)->text(0) == text) {
            delete myLink_->takeTopLevelItem(i);
            break;
        }
    }
    if (myLink_->topLevelItemCount() == rows_) {
        SetWidth(totalWidth_);
    }
}

void HCF_List::DelAll() {
    if (myLink_) {
        const int count = myLink_->topLevelItemCount();
        for (int i = 0; i < count; ++i) {
            delete myLink_->takeTopLevelItem(0);
        }
    }
    SetWidth(totalWidth_);
    index_ = 0;
}

void HCF_List::Terminate() {
    widths_.clear();
    ready_ = false;
    if (myLink_) {
        myLink_->removeEventFilter(this);
        myLink_->viewport()->removeEventFilter(this);
    }
    myLink_ = nullptr;
    linkObject_ = nullptr;
}

void HCF_List::ForeColor(int32_t colour) {
    if (!myLink_) {
        return;
    }
    const auto selected = myLink_->selectedItems();
    if (selected.isEmpty()) {
        return;
    }
    const QColor shade = ColourOf(colour);
    for (int i = 0; i < myLink_->columnCount(); ++i) {
        selected.front()->setForeground(i, shade);
    }
}

int16_t HCF_List::SelectedKey(bool* found) const {
    *found = false;
    if (!myLink_) {
        return 0;
    }
    const auto selected = myLink_->selectedItems();
    if (selected.isEmpty()) {
        return 0;
    }
    *found = true;
    return static_cast<int16_t>(selected.front()->text(0).toLong());
}

void HCF_List::FollowSelection() {
    bool found = false;
    const int16_t key = SelectedKey(&found);
    if (found && key != index_) {
        index_ = key;
        if (OnChange) {
            OnChange(key);
        }
    }
}

void HCF_List::Click() {
    FollowSelection();
    if (lastButton_ == 2) {
        if (ClickR) {
            ClickR(index_);
        }
    } else if (ClickL) {
        ClickL(index_);
    }
}

void HCF_List::DoubleClick() {
    bool found = false;
    const int16_t key = SelectedKey(&found);
    if (found && DblClick) {
        DblClick(key);
    }
}

void HCF_List::KeyUp(int keyCode) {
    if (keyCode != 38 && keyCode != 40) {
        return;
    }
    FollowSelection();
}

bool HCF_List::eventFilter(QObject* watched, QEvent* event) {
    // While the list is being destroyed it is no longer a tree widget, and its viewport's last
    // events are not ours to handle.
    if (linkObject_.isNull() || qobject_cast<QTreeWidget*>(linkObject_.data()) == nullptr) {
        return QObject::eventFilter(watched, event);
    }
    if (watched == myLink_->viewport()) {
        switch (event->type()) {
        case QEvent::MouseButtonPress: {
            const auto button = static_cast<QMouseEvent*>(event)->button();
            lastButton_ = button == Qt::LeftButton     ? 1
                          : button == Qt::RightButton  ? 2
                          : button == Qt::MiddleButton ? 4
                                                       : 0;
            return false;
        }
        case QEvent::MouseButtonRelease: {
            const auto button = static_cast<QMouseEvent*>(event)->button();
            if (afterDoubleClick_) {
                // The second release of a double click is not a click of its own.
                afterDoubleClick_ = false;
                return false;
            }
            if (button == Qt::LeftButton || button == Qt::RightButton) {
                Click();
            }
            return false;
        }
        case QEvent::MouseButtonDblClick:
            afterDoubleClick_ = true;
            DoubleClick();
            return false;
        default:
            return false;
        }
    }
    if (watched == myLink_.data() && event->type() == QEvent::KeyRelease) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        KeyUp(key == Qt::Key_Up ? 38 : key == Qt::Key_Down ? 40 : 0);
    }
    return false;
}

} // namespace zol
