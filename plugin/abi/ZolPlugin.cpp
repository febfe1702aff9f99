// The C ABI of the plug-in: each exported function checks its pointers, makes sure a Qt
// application exists, hands the call to the host boundary class and turns an error raised to the
// host into its code, kept with its source and description for UDC_ErrorInfo.
#include "device_link/core/ErrTrap.h"
#include "framework/form/Forms.h"
#include "framework/form/QtUi.h"
#include "framework/seam/Product.h"
#include "framework/seam/UiSeam.h"
#include "plugin/core/RegisterViews.h"
#include "plugin/core/UDC_Interface.h"
#include "plugin/zol_plugin.h"

#include <QApplication>
#include <QGuiApplication>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>

struct UDC_Interface {
    zol::UDC_Interface host;
    std::string lastSource;
    std::string lastDescription;
};

namespace {

using zol::ZolError;

int g_instances = 0;

// The host's callback structure behind the plug-in's host object.
class CHelper final : public zol::HostHelper {
public:
    explicit CHelper(const DMXC_Helper& helper) : helper_(helper) {}
    void DMXC_DMXIn_SetChannel(int32_t& slot, int32_t& level) override {
        if (helper_.DMXC_DMXIn_SetChannel == nullptr) {
            throw zol::RuntimeFault(438, "Object doesn't support this property or method");
        }
        helper_.DMXC_DMXIn_SetChannel(helper_.context, &slot, &level);
    }

private:
    DMXC_Helper helper_;
};

bool HasDisplay() {
    const char* x11 = std::getenv("DISPLAY");
    const char* wayland = std::getenv("WAYLAND_DISPLAY");
    return (x11 != nullptr && *x11 != '\0') || (wayland != nullptr && *wayland != '\0');
}

// Chooses the message boxes: Qt dialogs where someone can answer them, the console otherwise.
void InstallUi() {
    const char* choice = std::getenv("ZOL_UI");
    const std::string wanted = choice != nullptr ? choice : "";
    bool useQt;
    if (wanted == "console") {
        useQt = false;
    } else if (wanted == "qt") {
        useQt = true;
    } else {
        const QString platform = QGuiApplication::platformName();
        useQt = platform != QLatin1String("offscreen") && platform != QLatin1String("minimal");
    }
    zol::SetUi(useQt ? &zol::qtUi() : nullptr);
}

// A Qt application that can show views: the host's, or one made here at the first need.
void EnsureApplication() {
    QCoreApplication* existing = QCoreApplication::instance();
    if (existing == nullptr) {
        if (std::getenv("QT_QPA_PLATFORM") == nullptr && !HasDisplay()) {
            setenv("QT_QPA_PLATFORM", "offscreen", 1);
        }
        // The application keeps references to these for its whole life, which may be longer
        // than the library's: they live on the heap and are never freed.
        static int* argc = new int(1);
        static char** argv = new char* [2] { strdup(zol::product::kFileName), nullptr };
        new QApplication(*argc, argv);
        InstallUi();
        return;
    }
    if (qobject_cast<QApplication*>(existing) == nullptr) {
        zol::ErrTrap::Raise(zol::err::ErrAPI_ClientCall, "The host's Qt application cannot show views");
    }
    static bool uiChosen = false;
    if (!uiChosen) {
        uiChosen = true;
        InstallUi();
    }
}

void Record(UDC_Interface* plugin, const std::string& source, const std::string& description) {
    if (plugin != nullptr) {
        plugin->lastSource = source;
        plugin->lastDescription = description;
    }
}

// Runs `body`, turning an error that reaches the host into its code. Errors of other kinds than
// the system's and the standard library's are not caught: they end the process here.
template <class Body> int32_t Guard(UDC_Interface* plugin, Body&& body) noexcept {
    try {
        body();
        return 0;
    } catch (const ZolError& e) {
        Record(plugin, e.Source(), e.Description());
        return e.Code();
    } catch (const zol::RuntimeFault& e) {
        Record(plugin, zol::product::kFileName, e.what());
        return e.Number();
    } catch (const std::bad_alloc& e) {
        Record(plugin, zol::product::kFileName, "Out of memory");
        return 7;
    } catch (const std::exception& e) {
        Record(plugin, zol::product::kFileName, e.what());
        return 51;
    }
}

// The answer to a bad argument: ErrAPI_ClientCall, named after the function.
int32_t BadCall(UDC_Interface* plugin, const char* function) noexcept {
    return Guard(plugin, [&] { zol::ErrTrap::Raise(zol::err::ErrAPI_ClientCall, function); });
}

// Copies `text` with its NUL into `buffer`; false (and an empty string where possible) when it does
// not fit.
bool CopyText(const std::string& text, char* buffer, int32_t size) {
    if (buffer == nullptr || size <= 0) {
        return false;
    }
    if (text.size() + 1 > static_cast<size_t>(size)) {
        buffer[0] = '\0';
        return false;
    }
    std::memcpy(buffer, text.c_str(), text.size() + 1);
    return true;
}

int32_t Flag(bool value) {
    return value ? 1 : 0;
}

} // namespace

extern "C" {

UDC_Interface* UDC_Create(void) {
    try {
        static const bool registered = [] {
            zol::RegisterAllViews();
            return true;
        }();
        (void)registered;
        auto* plugin = new UDC_Interface();
        ++g_instances;
        return plugin;
    } catch (const std::exception&) {
        return nullptr;
    }
}

void UDC_Release(UDC_Interface* plugin) {
    if (plugin == nullptr) {
        return;
    }
    delete plugin;
    if (--g_instances == 0) {
        Guard(nullptr, [] { zol::Forms::UnloadAll(); });
    }
}

int32_t UDC_PluginName(UDC_Interface* plugin, char* name, int32_t size) {
    if (plugin == nullptr || name == nullptr) {
        return BadCall(plugin, "UDC_PluginName");
    }
    if (!CopyText(plugin->host.PluginName(), name, size)) {
        return BadCall(plugin, "UDC_PluginName");
    }
    return 0;
}

int32_t UDC_Init(UDC_Interface* plugin, const char* hostName, const char* fileName, const DMXC_Helper* helper,
                 int32_t* result) {
    if (plugin == nullptr || hostName == nullptr || fileName == nullptr || result == nullptr) {
        return BadCall(plugin, "UDC_Init");
    }
    *result = 0;
    return Guard(plugin, [&] {
        EnsureApplication();
        zol::HostRef host;
        if (helper != nullptr) {
            host = std::make_shared<CHelper>(*helper);
        }
        *result = Flag(plugin->host.Init(hostName, fileName, host));
    });
}

int32_t UDC_Configure(UDC_Interface* plugin, int32_t* result) {
    if (plugin == nullptr || result == nullptr) {
        return BadCall(plugin, "UDC_Configure");
    }
    *result = 0;
    return Guard(plugin, [&] {
        EnsureApplication();
        *result = Flag(plugin->host.Configure());
    });
}

int32_t UDC_Enable(UDC_Interface* plugin, int32_t* result) {
    if (plugin == nullptr || result == nullptr) {
        return BadCall(plugin, "UDC_Enable");
    }
    *result = 0;
    return Guard(plugin, [&] {
        EnsureApplication();
        *result = Flag(plugin->host.Enable());
    });
}

int32_t UDC_SetChannel(UDC_Interface* plugin, int32_t* slot, int32_t* level, int32_t* result) {
    if (plugin == nullptr || slot == nullptr || level == nullptr || result == nullptr) {
        return BadCall(plugin, "UDC_SetChannel");
    }
    *result = 0;
    return Guard(plugin, [&] {
        EnsureApplication();
        *result = Flag(plugin->host.SetChannel(*slot, *level));
    });
}

int32_t UDC_Disable(UDC_Interface* plugin, int32_t* result) {
    if (plugin == nullptr || result == nullptr) {
        return BadCall(plugin, "UDC_Disable");
    }
    *result = 0;
    return Guard(plugin, [&] {
        EnsureApplication();
        *result = Flag(plugin->host.Disable());
    });
}

int32_t UDC_Term(UDC_Interface* plugin, int32_t* result) {
    if (plugin == nullptr || result == nullptr) {
        return BadCall(plugin, "UDC_Term");
    }
    *result = 0;
    return Guard(plugin, [&] { *result = Flag(plugin->host.Term()); });
}

int32_t UDC_ErrorInfo(UDC_Interface* plugin, char* source, int32_t sourceSize, char* description,
                      int32_t descriptionSize) {
    if (plugin == nullptr || source == nullptr || description == nullptr) {
        return BadCall(nullptr, "UDC_ErrorInfo");
    }
    const std::string lastSource = plugin->lastSource;
    const std::string lastDescription = plugin->lastDescription;
    const bool sourceFits = CopyText(lastSource, source, sourceSize);
    const bool descriptionFits = CopyText(lastDescription, description, descriptionSize);
    if (!sourceFits || !descriptionFits) {
        // The texts stay as they were for a second try with larger buffers.
        return BadCall(nullptr, "UDC_ErrorInfo");
    }
    return 0;
}

} // extern "C"
