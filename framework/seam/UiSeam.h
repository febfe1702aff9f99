#pragma once
// The UI seam: every box, beep, pointer change, URL, file dialog and fatal stop of the plug-in goes
// through here. The product installs the Qt implementation (QtUi); tests install a scripted double
// that records every call and answers from a queue.
//
// Texts are UTF-8. A line break inside a system text is "\r\n", so texts compare byte for byte.

#include <optional>
#include <string>
#include <vector>

namespace zol {

// Message box styles and answers, with the values of the classic VB constants.
namespace vb {
enum Style : int {
    OKOnly = 0,
    OKCancel = 1,
    AbortRetryIgnore = 2,
    YesNoCancel = 3,
    YesNo = 4,
    RetryCancel = 5,
    Critical = 16,
    Question = 32,
    Exclamation = 48,
    Information = 64,
    DefaultButton2 = 256,
    DefaultButton3 = 512,
};
enum Answer : int { OK = 1, Cancel = 2, Abort = 3, Retry = 4, Ignore = 5, Yes = 6, No = 7 };
inline constexpr int kButtonMask = 0x0F;
inline constexpr int kIconMask = 0xF0;
} // namespace vb

// Screen mouse pointer values.
inline constexpr int kPointerDefault = 0;
inline constexpr int kPointerHourglass = 11;

// The carriage return and line feed that separate lines of a system text.
inline constexpr const char* kCrLf = "\r\n";

struct FileDialogRequest {
    std::string caption;
    // (description, pattern) pairs, e.g. {"Flash Files ", "*.FUD"}.
    std::vector<std::pair<std::string, std::string>> filters;
    int filterIndex = 1;
    std::string initialDir;
    std::string fileName;
    long flags = 0;    // OFN_* style option bits as given by the caller
    bool save = false; // save dialog instead of open
};

struct FileDialogResult {
    bool chosen = false;            // false: the user cancelled
    std::string folder;             // the folder the user ended in
    std::vector<std::string> names; // chosen file names, without folder
};

class Ui {
public:
    virtual ~Ui() = default;
    // A modal message box. `title` absent means the application's own title. Returns a vb::Answer;
    // closing the box counts as Cancel (or OK for an OK-only box).
    virtual int MsgBox(const std::string& prompt, int style = vb::OKOnly,
                       const std::optional<std::string>& title = std::nullopt) = 0;
    // A modal input box; std::nullopt when the user cancelled (distinct from an empty answer).
    virtual std::optional<std::string> InputBox(const std::string& prompt, const std::string& title = {},
                                                const std::string& defaultText = {}) = 0;
    virtual void Beep() = 0;
    virtual void SetMousePointer(int pointer) = 0;
    virtual int MousePointer() const = 0;
    // Opens a URL in the user's browser; false when nothing could open it.
    virtual bool OpenUrl(const std::string& url) = 0;
    virtual FileDialogResult FileDialog(const FileDialogRequest& request) = 0;
    // The fatal stop: ends the program on the spot. Nothing after it runs.
    [[noreturn]] virtual void Halt() = 0;
};

// The installed implementation. Before anything is installed this is a console fallback that
// answers every box with its first button and ends the program on Halt.
Ui& ui();
// Installs `impl` (not owned) and returns the one it replaces; nullptr restores the fallback.
Ui* SetUi(Ui* impl);

// The end of the program for a fatal stop: standard output and error are flushed, then the process
// exits at once with kHaltExitStatus. No destructor and no exit handler runs, so nothing is written
// on the way out.
inline constexpr int kHaltExitStatus = 3;
[[noreturn]] void EndProgram();

// The application's own title, used where a box names no title.
const char* AppTitle();

} // namespace zol
