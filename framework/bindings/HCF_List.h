#pragma once
// HCF_List: a report list whose rows each have a numeric key, shown as decimal text in the first
// column. Rows stay sorted by key, the control's width follows its columns (and makes room for the
// scroll bar once there are more rows than it shows), and clicks reach the view with the row's key.
//
// Widths and heights are in twips. At 15 twips a pixel they are enlarged by 1.26 (WinRes.h).
// Colours are 0x00BBGGRR, blue in the high byte (ListColour builds one).

#include <QObject>
#include <QPointer>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

class QTreeWidget;
class QTreeWidgetItem;

namespace zol {

constexpr int32_t ListColour(int red, int green, int blue) {
    return red | (green << 8) | (blue << 16);
}

class HCF_List : public QObject {
    Q_OBJECT
public:
    explicit HCF_List(QObject* parent = nullptr);
    ~HCF_List() override;

    // Takes the control and sizes its height for `rows` rows. A second Initialise before Terminate
    // is a fault of the program: "Control already assingned" and the program stops.
    void Initialise(QTreeWidget* control, int32_t rows);
    // Adds a column; the control's width follows. Before Initialise: "Object not yet initialised"
    // and the program stops.
    void AddCol(const std::string& title, int32_t widthTwips);
    // Adds a row in its sorted place; a key already present leaves that row as it is.
    void AddRow(int32_t key, const std::string& fields, const std::string& delimiter, int32_t colour);
    void DelRow(int16_t key);
    void DelAll();
    void Terminate();
    // Key of the row last selected; 0 for none.
    int16_t Index() const { return index_; }
    // Colour of the selected row and all its sub-items; nothing when no row is selected.
    void ForeColor(int32_t colour);

    // Events, each with the row key.
    std::function<void(int16_t key)> ClickL;
    std::function<void(int16_t key)> ClickR;
    std::function<void(int16_t key)> DblClick;
    std::function<void(int16_t key)> OnChange;

    QTreeWidget* Control() const;
    bool Ready() const { return ready_; }
    int32_t Rows() const { return rows_; }
    const std::vector<int32_t>& Widths() const { return widths_; }
    int32_t TotalWidth() const { return totalWidth_; }
    // The control's width and height as last set, in twips.
    int32_t WidthTwips() const { return widthTwips_; }
    int32_t HeightTwips() const { return heightTwips_; }
    int16_t LastButton() const { return lastButton_; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void SetWidth(int32_t twips);
    void SetHeight(int32_t twips);
    int16_t SelectedKey(bool* found) const;
    // Takes the selected row's key as the index; a key other than the index goes to OnChange.
    void FollowSelection();
    void Click();
    void DoubleClick();
    void KeyUp(int keyCode);

    QPointer<QTreeWidget> myLink_;
    // The same list seen as a plain object, so that events can be matched to it without a cast.
    QPointer<QObject> linkObject_;
    int16_t index_ = 0;
    int32_t rows_ = 0;
    std::vector<int32_t> widths_;
    int32_t totalWidth_ = 0;
    int16_t lastButton_ = 0;
    bool ready_ = false;
    int32_t widthTwips_ = 0;
    int32_t heightTwips_ = 0;
    bool afterDoubleClick_ = false;
};

} // namespace zol
