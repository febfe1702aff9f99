#pragma once
// QtUi: the UI seam on Qt widgets. Message boxes are QMessageBox with the VB buttons, icons and
// default button of the style (closing a box answers Cancel, or OK for an OK-only box), the input
// box is QInputDialog, the mouse pointer 11 is the wait cursor as an application override, URLs go
// to the desktop's browser, file dialogs are QFileDialog, and Halt ends the process.

#include "framework/seam/UiSeam.h"

namespace zol {

class QtUi : public Ui {
public:
    int MsgBox(const std::string& prompt, int style = vb::OKOnly,
               const std::optional<std::string>& title = std::nullopt) override;
    std::optional<std::string> InputBox(const std::string& prompt, const std::string& title = {},
                                        const std::string& defaultText = {}) override;
    void Beep() override;
    void SetMousePointer(int pointer) override;
    int MousePointer() const override { return pointer_; }
    bool OpenUrl(const std::string& url) override;
    FileDialogResult FileDialog(const FileDialogRequest& request) override;
    [[noreturn]] void Halt() override;

private:
    int pointer_ = kPointerDefault;
    int overrides_ = 0; // override cursors this object has pushed
};

// The one QtUi of the process.
QtUi& qtUi();

} // namespace zol
