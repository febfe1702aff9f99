#include "framework/seam/Product.h"

#include <cstdlib>

namespace zol::product {

int VersionMajor() { return ZOL_VERSION_MAJOR; }
int VersionMinor() { return ZOL_VERSION_MINOR; }
int VersionRevision() { return ZOL_VERSION_PATCH; }

std::string Version() {
    return std::to_string(VersionMajor()) + "." + std::to_string(VersionMinor()) + "." +
           std::to_string(VersionRevision());
}

namespace {
std::string FromEnv(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr ? std::string(value) : std::string();
}
} // namespace

// The settings fallbacks ("WebBase", "UpdateHost") are read by the settings-aware wrappers in
// services; this layer has no store, so it answers the environment or the default.
std::string WebBase() {
    std::string env = FromEnv("ZOL_WEB_BASE");
    return env.empty() ? kDefaultWebBase : env;
}

std::string UpdateHost() {
    std::string env = FromEnv("ZOL_UPDATE_HOST");
    return env.empty() ? kDefaultUpdateHost : env;
}

} // namespace zol::product
