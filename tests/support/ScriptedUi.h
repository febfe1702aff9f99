#pragma once
// A scripted UI for tests: records every box, beep, pointer change, URL and file dialog, answers
// boxes from a queue, and fails the test on a box nobody expected. Halt throws HaltSignal (which
// is not a std::exception, so no handler of the plug-in swallows it).

#include "framework/seam/UiSeam.h"

#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace zol::test {

struct HaltSignal {};

struct ShownBox {
    std::string prompt;
    int style = 0;
    std::optional<std::string> title;
    int answer = 0;
    int Buttons() const { return style & vb::kButtonMask; }
    int Icon() const { return style & vb::kIconMask; }
};

class ScriptedUi : public Ui {
public:
    using Answerer = std::function<int(const ShownBox&)>;

    ScriptedUi();  // installs itself
    ~ScriptedUi() override; // restores the previous UI; fails the test if answers are left over

    // Queue the answer to the next box.
    void Answer(int answer);
    // Queue an answer and check the box's prompt (and title, when given) when it comes.
    void Expect(const std::string& prompt, int answer, const std::optional<std::string>& title = std::nullopt);
    // Queue a callback that sees the box and returns the answer (it may act while the box is open).
    void AnswerWith(Answerer answerer);
    // Let any number of boxes through with their first button, recording them, without failing.
    void AllowAnyBoxes(bool allow = true) { allowAny_ = allow; }

    void QueueInput(std::optional<std::string> answer) { inputs_.push_back(std::move(answer)); }
    void QueueFileDialog(FileDialogResult result) { files_.push_back(std::move(result)); }

    int MsgBox(const std::string& prompt, int style, const std::optional<std::string>& title) override;
    std::optional<std::string> InputBox(const std::string& prompt, const std::string& title,
                                        const std::string& defaultText) override;
    void Beep() override { ++beeps; }
    void SetMousePointer(int pointer) override {
        pointer_ = pointer;
        pointerHistory.push_back(pointer);
    }
    int MousePointer() const override { return pointer_; }
    bool OpenUrl(const std::string& url) override {
        urls.push_back(url);
        return true;
    }
    FileDialogResult FileDialog(const FileDialogRequest& request) override;
    [[noreturn]] void Halt() override;

    std::vector<ShownBox> boxes;
    std::vector<std::string> inputPrompts;
    std::vector<FileDialogRequest> fileRequests;
    std::vector<std::string> urls;
    std::vector<int> pointerHistory;
    int beeps = 0;
    int halts = 0;
    size_t PendingAnswers() const { return answers_.size(); }

private:
    std::deque<Answerer> answers_;
    std::deque<std::optional<std::string>> inputs_;
    std::deque<FileDialogResult> files_;
    int pointer_ = kPointerDefault;
    bool allowAny_ = false;
    Ui* previous_ = nullptr;
};

} // namespace zol::test
