#include "framework/seam/UiSeam.h"

#include "framework/seam/Product.h"

#include <cstdio>
#include <cstdlib>

namespace zol {
namespace {

// Used until the product or a test installs its own: a console that answers every box with its
// first button. It keeps a plug-in usable by a host without a display.
class ConsoleUi final : public Ui {
public:
    int MsgBox(const std::string& prompt, int style, const std::optional<std::string>& title) override {
        std::fprintf(stderr, "[%s] %s\n", title ? title->c_str() : AppTitle(), prompt.c_str());
        switch (style & vb::kButtonMask) {
        case vb::OKCancel:
        case vb::OKOnly:
            return vb::OK;
        case vb::AbortRetryIgnore:
            return vb::Abort;
        case vb::YesNoCancel:
        case vb::YesNo:
            return vb::Yes;
        case vb::RetryCancel:
            return vb::Cancel; // never loop on a console nobody answers
        default:
            return vb::OK;
        }
    }
    std::optional<std::string> InputBox(const std::string&, const std::string&, const std::string&) override {
        return std::nullopt;
    }
    void Beep() override { std::fputc('\a', stderr); }
    void SetMousePointer(int pointer) override { pointer_ = pointer; }
    int MousePointer() const override { return pointer_; }
    bool OpenUrl(const std::string& url) override {
        std::fprintf(stderr, "open %s\n", url.c_str());
        return false;
    }
    FileDialogResult FileDialog(const FileDialogRequest&) override { return {}; }
    [[noreturn]] void Halt() override { EndProgram(); }

private:
    int pointer_ = kPointerDefault;
};

ConsoleUi& consoleUi() {
    static ConsoleUi instance;
    return instance;
}

Ui* g_ui = nullptr;

} // namespace

Ui& ui() {
    return g_ui ? *g_ui : consoleUi();
}

Ui* SetUi(Ui* impl) {
    Ui* previous = g_ui;
    g_ui = impl;
    return previous;
}

const char* AppTitle() {
    return product::kTitle;
}

} // namespace zol

namespace zol {

void EndProgram() {
    std::fflush(nullptr);
    std::_Exit(kHaltExitStatus);
}

} // namespace zol
