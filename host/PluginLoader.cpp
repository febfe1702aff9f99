#include "host/PluginLoader.h"

#include <cstdio>
#include <dlfcn.h>
#include <filesystem>
#include <unistd.h>

namespace zol::host {
namespace {

template <class F> bool Find(void* handle, const char* name, F& out, std::string& missing) {
    out = reinterpret_cast<F>(dlsym(handle, name));
    if (out == nullptr) {
        missing += missing.empty() ? name : std::string(", ") + name;
        return false;
    }
    return true;
}

} // namespace

PluginLoader::~PluginLoader() {
    Unload();
}

bool PluginLoader::Load(const std::string& path, std::string& why) {
    Unload();
    handle_ = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle_ == nullptr) {
        const char* error = dlerror();
        why = "the plug-in could not be loaded: " + std::string(error != nullptr ? error : path);
        return false;
    }
    std::string missing;
    Find(handle_, "UDC_Create", Create, missing);
    Find(handle_, "UDC_Release", Release, missing);
    Find(handle_, "UDC_PluginName", PluginName, missing);
    Find(handle_, "UDC_Init", Init, missing);
    Find(handle_, "UDC_Configure", Configure, missing);
    Find(handle_, "UDC_Enable", Enable, missing);
    Find(handle_, "UDC_SetChannel", SetChannel, missing);
    Find(handle_, "UDC_Disable", Disable, missing);
    Find(handle_, "UDC_Term", Term, missing);
    Find(handle_, "UDC_ErrorInfo", ErrorInfo, missing);
    if (!missing.empty()) {
        why = path + " is not a plug-in: it lacks " + missing;
        Unload();
        return false;
    }
    path_ = path;
    return true;
}

void PluginLoader::Unload() {
    if (handle_ != nullptr) {
        dlclose(handle_);
        handle_ = nullptr;
    }
    Create = nullptr;
    Release = nullptr;
    PluginName = nullptr;
    Init = nullptr;
    Configure = nullptr;
    Enable = nullptr;
    SetChannel = nullptr;
    Disable = nullptr;
    Term = nullptr;
    ErrorInfo = nullptr;
}

std::string PluginLoader::DefaultPath() {
    std::error_code ec;
    const auto self = std::filesystem::read_symlink("/proc/self/exe", ec);
    const std::filesystem::path dir = ec ? std::filesystem::current_path() : self.parent_path();
    return (dir / "libzol-plugin.so").string();
}

std::string PluginLoader::ErrorText(UDC_Interface* plugin, int32_t code) const {
    char number[16];
    std::snprintf(number, sizeof number, "0x%X", static_cast<unsigned>(code));
    std::string text = number;
    if (ErrorInfo == nullptr || plugin == nullptr) {
        return text;
    }
    char source[ZOL_PLUGIN_TEXT_SIZE];
    char description[ZOL_PLUGIN_TEXT_SIZE];
    if (ErrorInfo(plugin, source, sizeof source, description, sizeof description) != 0) {
        return text;
    }
    std::string flat = description;
    for (size_t at = flat.find("\r\n"); at != std::string::npos; at = flat.find("\r\n", at)) {
        flat.replace(at, 2, " ");
    }
    return text + " " + source + ": " + flat;
}

} // namespace zol::host
