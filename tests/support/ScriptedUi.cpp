#include "tests/support/ScriptedUi.h"

#include <gtest/gtest.h>

namespace zol::test {

namespace {
int FirstButton(int style) {
    switch (style & vb::kButtonMask) {
    case vb::AbortRetryIgnore:
        return vb::Abort;
    case vb::YesNoCancel:
    case vb::YesNo:
        return vb::Yes;
    case vb::RetryCancel:
        return vb::Retry;
    default:
        return vb::OK;
    }
}
} // namespace

ScriptedUi::ScriptedUi() { previous_ = SetUi(this); }

ScriptedUi::~ScriptedUi() {
    SetUi(previous_);
    if (!answers_.empty()) {
        ADD_FAILURE() << answers_.size() << " scripted box answer(s) were never used";
    }
}

void ScriptedUi::Answer(int answer) {
    answers_.push_back([answer](const ShownBox&) { return answer; });
}

void ScriptedUi::Expect(const std::string& prompt, int answer, const std::optional<std::string>& title) {
    answers_.push_back([prompt, answer, title](const ShownBox& box) {
        EXPECT_EQ(box.prompt, prompt);
        if (title) {
            EXPECT_EQ(box.title.value_or("<application title>"), *title);
        }
        return answer;
    });
}

void ScriptedUi::AnswerWith(Answerer answerer) { answers_.push_back(std::move(answerer)); }

int ScriptedUi::MsgBox(const std::string& prompt, int style, const std::optional<std::string>& title) {
    ShownBox box{prompt, style, title, 0};
    if (!answers_.empty()) {
        Answerer next = std::move(answers_.front());
        answers_.pop_front();
        box.answer = next(box);
    } else {
        if (!allowAny_) {
            ADD_FAILURE() << "Unexpected message box titled \"" << title.value_or("<application title>")
                          << "\": " << prompt;
        }
        box.answer = FirstButton(style);
    }
    boxes.push_back(box);
    return box.answer;
}

std::optional<std::string> ScriptedUi::InputBox(const std::string& prompt, const std::string&,
                                                const std::string&) {
    inputPrompts.push_back(prompt);
    if (inputs_.empty()) {
        ADD_FAILURE() << "Unexpected input box: " << prompt;
        return std::nullopt;
    }
    auto answer = inputs_.front();
    inputs_.pop_front();
    return answer;
}

FileDialogResult ScriptedUi::FileDialog(const FileDialogRequest& request) {
    fileRequests.push_back(request);
    if (files_.empty()) {
        ADD_FAILURE() << "Unexpected file dialog: " << request.caption;
        return {};
    }
    auto result = files_.front();
    files_.pop_front();
    return result;
}

void ScriptedUi::Halt() {
    ++halts;
    throw HaltSignal{};
}

} // namespace zol::test
