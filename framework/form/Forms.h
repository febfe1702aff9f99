#pragma once
// The view factory by name and the list of open views.

#include "framework/form/View.h"

#include <functional>
#include <string>
#include <vector>

namespace zol::Forms {

using Factory = std::function<View*()>;

// Registers the maker of a view name. Each view unit offers a Register...() function that the
// plug-in calls once at start; tests register small test views.
void Register(const std::string& name, Factory factory);
bool IsRegistered(const std::string& name);
void Unregister(const std::string& name);

// Makes and loads the view `name` and adds it to the open views. An unknown name raises the
// run-time error the factory gives ("Form <name> not registered").
View* Add(const std::string& name);
// The first open view whose Name equals `name` exactly, or nullptr.
View* Find(const std::string& name);
// The open views, oldest first.
std::vector<View*> All();
// True while `view` is in the list of open views.
bool IsOpen(const View* view);
// For FormView: a view leaves the list as it is unloaded or destroyed.
void Remove(View* view);
// Unloads every open view, newest first, and deletes those waiting for deletion. Used when the
// plug-in is released, so that no view outlives the code that made it.
void UnloadAll();

// The screen's size in twips (the primary screen; 800 x 600 pixels without a GUI application).
float ScreenWidth();
float ScreenHeight();
// Tests: a fixed screen size in twips; a negative value goes back to the real screen.
void SetScreenSizeForTest(float widthTwips, float heightTwips);

} // namespace zol::Forms
