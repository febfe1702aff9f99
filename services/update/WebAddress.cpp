#include "services/update/WebAddress.h"

#include "framework/seam/Product.h"
#include "services/settings/AUF_Registry.h"

#include <cctype>
#include <cstdlib>

namespace zol::web {

namespace {

std::string FromEnv(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr ? std::string(value) : std::string();
}

} // namespace

std::string UpdateHost() {
    std::string value = FromEnv("ZOL_UPDATE_HOST");
    if (value.empty()) {
        value = AUF_Registry::ReadString("UpdateHost", product::kDefaultUpdateHost);
    }
    return value.empty() ? std::string(product::kDefaultUpdateHost) : value;
}

std::string WebBase() {
    std::string value = FromEnv("ZOL_WEB_BASE");
    if (value.empty()) {
        value = AUF_Registry::ReadString("WebBase", product::kDefaultWebBase);
    }
    if (value.empty()) {
        value = product::kDefaultWebBase;
    }
    while (!value.empty() && value.back() == '/') {
        value.pop_back();
    }
    return value;
}

HostPort SplitHostPort(const std::string& text, uint16_t defaultPort) {
    HostPort result{text, defaultPort};
    const size_t colon = text.rfind(':');
    if (colon == std::string::npos || colon == 0 || colon + 1 == text.size() || colon + 6 < text.size()) {
        return result;
    }
    unsigned long port = 0;
    for (size_t i = colon + 1; i < text.size(); ++i) {
        if (std::isdigit(static_cast<unsigned char>(text[i])) == 0) {
            return result;
        }
        port = port * 10 + static_cast<unsigned long>(text[i] - '0');
    }
    if (port == 0 || port > 65535) {
        return result;
    }
    result.host = text.substr(0, colon);
    result.port = static_cast<uint16_t>(port);
    return result;
}

bool IsReservedInvalidName(const std::string& host) {
    std::string name = host;
    if (!name.empty() && name.back() == '.') {
        name.pop_back();
    }
    static const std::string kLabel = "invalid";
    if (name.size() < kLabel.size()) {
        return false;
    }
    const size_t start = name.size() - kLabel.size();
    if (start > 0 && name[start - 1] != '.') {
        return false;
    }
    for (size_t i = 0; i < kLabel.size(); ++i) {
        if (std::tolower(static_cast<unsigned char>(name[start + i])) != kLabel[i]) {
            return false;
        }
    }
    return true;
}

std::string SupportPage() {
    return "http://" + UpdateHost() + "/support/";
}

std::string HomePage() {
    return WebBase() + "/";
}

} // namespace zol::web
