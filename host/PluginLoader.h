#pragma once
// Loads the plug-in's shared library with the dynamic loader and finds its C ABI.

#include "plugin/zol_plugin.h"

#include <string>

namespace zol::host {

class PluginLoader {
public:
    PluginLoader() = default;
    ~PluginLoader();
    PluginLoader(const PluginLoader&) = delete;
    PluginLoader& operator=(const PluginLoader&) = delete;

    // Loads the library at `path`; false with the reason in `why` when it or one of its functions
    // is missing.
    bool Load(const std::string& path, std::string& why);
    // Unloads the library (after the last UDC_Release).
    void Unload();
    bool Loaded() const { return handle_ != nullptr; }
    const std::string& Path() const { return path_; }

    // The plug-in file next to the running program.
    static std::string DefaultPath();
    // The text of the plug-in's last error, "0x1102 zol-plugin: ErrAPI_DeviceMissig $102".
    std::string ErrorText(UDC_Interface* plugin, int32_t code) const;

    decltype(&UDC_Create) Create = nullptr;
    decltype(&UDC_Release) Release = nullptr;
    decltype(&UDC_PluginName) PluginName = nullptr;
    decltype(&UDC_Init) Init = nullptr;
    decltype(&UDC_Configure) Configure = nullptr;
    decltype(&UDC_Enable) Enable = nullptr;
    decltype(&UDC_SetChannel) SetChannel = nullptr;
    decltype(&UDC_Disable) Disable = nullptr;
    decltype(&UDC_Term) Term = nullptr;
    decltype(&UDC_ErrorInfo) ErrorInfo = nullptr;

private:
    void* handle_ = nullptr;
    std::string path_;
};

} // namespace zol::host
