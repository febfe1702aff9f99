#pragma once
// A view without a toolkit for tests of the view controller and of the code that opens views: it
// keeps its geometry as floats, records what is done to it, and runs a test's callback when it is
// shown (a modal show "returns" when the callback has run). The views live in a ViewZoo for the
// whole test, so a pointer to an unloaded view stays valid.

#include "framework/form/Forms.h"
#include "framework/form/HCF_Form.h"
#include "framework/form/View.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace zol::test {

class FakeView : public View {
public:
    explicit FakeView(std::string name, std::vector<std::string>* journal = nullptr)
        : name_(std::move(name)), journal_(journal) {
        Note("load");
    }

    std::string Name() const override { return name_; }
    float Left() const override { return left; }
    float Top() const override { return top; }
    float Width() const override { return width; }
    float Height() const override { return height; }
    void SetLeft(float twips) override {
        left = twips;
        Note("left");
    }
    void SetTop(float twips) override {
        top = twips;
        Note("top");
    }
    int WindowState() const override { return windowState; }
    bool Visible() const override { return visible; }
    void SetVisible(bool value) override {
        visible = value;
        Note(value ? "visible" : "hidden");
    }
    void Show(bool modal) override {
        ++shows;
        lastShowModal = modal;
        visible = true;
        Note(modal ? "show modal" : "show");
        if (onShow) {
            onShow(*this);
        }
    }
    void SetControl(const std::shared_ptr<HCF_Form>& form) override {
        this->form = form;
        Note("control");
        dataClassAtControl = form->DataClass();
        if (onControl) {
            onControl(*this);
        }
    }
    void Continue() override {
        ++continues;
        Note("continue");
    }
    void Unload() override {
        if (unloaded) {
            return;
        }
        unloaded = true;
        visible = false;
        Note("unload");
        Forms::Remove(this);
        if (form) {
            form->OnViewClosing();
        }
    }

    float left = 0, top = 0, width = 3000, height = 2000;
    int windowState = 0;
    bool visible = false;
    bool unloaded = false;
    int shows = 0;
    int continues = 0;
    bool lastShowModal = false;
    std::string dataClassAtControl;
    std::shared_ptr<HCF_Form> form;
    std::function<void(FakeView&)> onShow;
    std::function<void(FakeView&)> onControl;

private:
    void Note(const std::string& what) {
        if (journal_ != nullptr) {
            journal_->push_back(name_ + ": " + what);
        }
    }
    std::string name_;
    std::vector<std::string>* journal_;
};

// Owns the fake views a test makes, and registers their names with the factory for its lifetime.
class ViewZoo {
public:
    ~ViewZoo() {
        for (const auto& name : names_) {
            Forms::Unregister(name);
        }
        for (auto& view : views) {
            Forms::Remove(view.get());
        }
    }
    // Registers `name`; each make runs `setup` on the new view.
    void Register(const std::string& name, std::function<void(FakeView&)> setup = {}) {
        names_.push_back(name);
        Forms::Register(name, [this, name, setup] {
            views.push_back(std::make_unique<FakeView>(name, &journal));
            if (setup) {
                setup(*views.back());
            }
            return views.back().get();
        });
    }
    // The last view made under `name`.
    FakeView* Last(const std::string& name) {
        for (auto it = views.rbegin(); it != views.rend(); ++it) {
            if ((*it)->Name() == name) {
                return it->get();
            }
        }
        return nullptr;
    }
    int Made(const std::string& name) const {
        int n = 0;
        for (const auto& view : views) {
            n += view->Name() == name ? 1 : 0;
        }
        return n;
    }

    std::vector<std::unique_ptr<FakeView>> views;
    std::vector<std::string> journal;

private:
    std::vector<std::string> names_;
};

} // namespace zol::test
