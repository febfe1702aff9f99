#pragma once
// Where the maker's pages and the update server are: each a setting with a built-in default.
// $ZOL_UPDATE_HOST / $ZOL_WEB_BASE win over the settings "UpdateHost" / "WebBase".

#include <cstdint>
#include <string>

namespace zol::web {

// The update server as "host" or "host:port".
std::string UpdateHost();
// The base address of the maker's web pages, with no ending "/".
std::string WebBase();

struct HostPort {
    std::string host;
    uint16_t port = 80;
};
// Splits "host:port"; with no port, or one that is not a number from 1 to 65535, the port is
// `defaultPort` and the whole text is the host.
HostPort SplitHostPort(const std::string& text, uint16_t defaultPort = 80);

// True for a name under the reserved top-level domain "invalid", which never resolves and is
// therefore never looked up ("updates.example.invalid", "x.INVALID.").
bool IsReservedInvalidName(const std::string& host);

// The support page, at "/support/" of the update server.
std::string SupportPage();
// The maker's home page.
std::string HomePage();

} // namespace zol::web
