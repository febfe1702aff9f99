#pragma once
// Help_About: the plug-in's name, its version, the device library's version and the maker's
// lines. A click anywhere but on the web link closes it.

#include "framework/form/FormView.h"

#include <array>

class QLabel;

namespace zol {

class Help_About : public FormView {
    Q_OBJECT
public:
    explicit Help_About(QWidget* parent = nullptr);

    static constexpr const char* kName = "Help_About";

    void Label_WebLink_Click();
    // A click on a LabelInfo, on Image_logo or on the view.
    void Dismiss_Click();

protected:
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    std::array<QLabel*, 5> labelInfo_{};
    QLabel* imageLogo_ = nullptr;
    QLabel* labelWebLink_ = nullptr;
};

// The maker's two company lines of the about view.
inline constexpr const char* kCompanyLines = "KARN Lighting Controls\r\nStage and Studio Interfaces";

} // namespace zol
