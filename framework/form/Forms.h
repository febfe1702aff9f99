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
// For FormView: a view leaves the list as it is destroyed.
void Remove(View* view);

} // namespace zol::Forms
