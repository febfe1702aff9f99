#pragma once
// The plug-in's own names, version and web addresses.

#include <string>

namespace zol::product {

// Name held in the plug-in's version record, as PluginName returns it.
inline constexpr const char* kProductName = "KARN DMX-ZOL MK1 Plugin";
inline constexpr const char* kCompany = "KARN";
inline constexpr const char* kTitle = "DMX-ZOL";
// The plug-in's file name without extension: the source of an error raised with none.
inline constexpr const char* kFileName = "zol-plugin";
inline constexpr const char* kProductCode = "203";

inline constexpr const char* kDefaultWebBase = "http://www.karn-lighting.example";
inline constexpr const char* kDefaultUpdateHost = "www.karn-lighting.example";

int VersionMajor();
int VersionMinor();
int VersionRevision();
// "major.minor.revision"
std::string Version();

// Base address of the maker's web pages ("/product/", "/support"): $ZOL_WEB_BASE, else the
// setting "WebBase", else the built-in default.
std::string WebBase();
// Host name of the update server: $ZOL_UPDATE_HOST, else the setting "UpdateHost", else the
// built-in default.
std::string UpdateHost();


} // namespace zol::product
