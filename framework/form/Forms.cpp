#include "framework/form/Forms.h"

#include "device_link/core/ErrTrap.h"

#include <QCoreApplication>
#include <QEvent>
#include <QGuiApplication>
#include <QScreen>
#include <algorithm>
#include <map>

namespace zol::Forms {
namespace {

std::map<std::string, Factory>& factories() {
    static std::map<std::string, Factory> instance;
    return instance;
}

std::vector<View*>& openViews() {
    static std::vector<View*> instance;
    return instance;
}

float g_screenWidth = -1.0f;
float g_screenHeight = -1.0f;

QRect PrimaryScreenRect() {
    if (qobject_cast<QGuiApplication*>(QCoreApplication::instance()) != nullptr) {
        if (QScreen* screen = QGuiApplication::primaryScreen()) {
            return screen->geometry();
        }
    }
    return QRect(0, 0, 800, 600);
}

} // namespace

void Register(const std::string& name, Factory factory) {
    factories()[name] = std::move(factory);
}

bool IsRegistered(const std::string& name) {
    return factories().count(name) != 0;
}

void Unregister(const std::string& name) {
    factories().erase(name);
}

View* Add(const std::string& name) {
    auto found = factories().find(name);
    if (found == factories().end() || !found->second) {
        throw RuntimeFault(rt::InvalidCall, "Form " + name + " not registered");
    }
    // The factory may be re-entered by a load handler that opens another view; work on a copy.
    Factory make = found->second;
    View* view = make();
    if (view == nullptr) {
        throw RuntimeFault(rt::ObjectNotSet, "Form " + name + " could not be made");
    }
    openViews().push_back(view);
    return view;
}

View* Find(const std::string& name) {
    for (View* view : openViews()) {
        if (view->Name() == name) {
            return view;
        }
    }
    return nullptr;
}

std::vector<View*> All() {
    return openViews();
}

bool IsOpen(const View* view) {
    const auto& views = openViews();
    return std::find(views.begin(), views.end(), view) != views.end();
}

void Remove(View* view) {
    auto& views = openViews();
    views.erase(std::remove(views.begin(), views.end(), view), views.end());
}

void UnloadAll() {
    // Newest first, so a child goes before the view that opened it.
    while (!openViews().empty()) {
        View* view = openViews().back();
        view->Unload();
        Remove(view); // a view whose Unload left it in the list must not stop the loop
    }
    if (QCoreApplication::instance() != nullptr) {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

float ScreenWidth() {
    if (g_screenWidth >= 0) {
        return g_screenWidth;
    }
    return static_cast<float>(PrimaryScreenRect().width()) * 15.0f;
}

float ScreenHeight() {
    if (g_screenHeight >= 0) {
        return g_screenHeight;
    }
    return static_cast<float>(PrimaryScreenRect().height()) * 15.0f;
}

void SetScreenSizeForTest(float widthTwips, float heightTwips) {
    g_screenWidth = widthTwips;
    g_screenHeight = heightTwips;
}

} // namespace zol::Forms
