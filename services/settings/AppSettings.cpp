#include "device_link/core/ErrTrap.h"
#include "services/settings/AUF_Registry.h"
#include "services/settings/SettingsFile.h"

namespace zol::AppSettings {

namespace sf = settings_file;

namespace {

// The application's file: "apps/<application>.conf" below the settings folder. Characters that
// do not belong in a file name are written as %XX.
std::string ApplicationPath(const std::string& app) {
    static constexpr const char* kHexDigits = "0123456789ABCDEF";
    std::string name;
    for (size_t i = 0; i < app.size(); ++i) {
        const auto c = static_cast<unsigned char>(app[i]);
        const bool plain = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') ||
                           c == ' ' || c == '_' || c == '-' || (c == '.' && i > 0) || c >= 0x80;
        if (plain) {
            name += static_cast<char>(c);
        } else {
            name += '%';
            name += kHexDigits[c >> 4];
            name += kHexDigits[c & 0x0F];
        }
    }
    return SettingsFolder() + "/apps/" + name + ".conf";
}

// Application, section and key must name something; a section cannot hold a line break or a
// closing bracket at its end, which the file could not keep apart.
void CheckKeys(const std::string& app, const std::string& section, const std::string& key) {
    const bool badSection =
        section.find_first_of("\r\n") != std::string::npos || section.back() == ']' || section.front() == '[';
    if (app.empty() || section.empty() || key.empty() || badSection) {
        throw RuntimeFault(rt::InvalidCall, "Invalid procedure call or argument");
    }
}

} // namespace

std::string GetSetting(const std::string& app, const std::string& section, const std::string& key,
                       const std::string& defaultValue) {
    if (app.empty() || section.empty() || key.empty()) {
        throw RuntimeFault(rt::InvalidCall, "Invalid procedure call or argument");
    }
    sf::Document document;
    std::string why;
    switch (sf::Load(ApplicationPath(app), document, &why)) {
    case sf::LoadResult::Absent:
        return defaultValue;
    case sf::LoadResult::Failed:
        // Path/File access error: the caller's handler shows it; the file is left as it is.
        throw RuntimeFault(75, "Settings could not be read: " + why);
    case sf::LoadResult::Loaded:
        break;
    }
    const sf::Section* found = document.Find(section);
    const sf::StoredValue* value = found != nullptr ? found->Find(key) : nullptr;
    if (value == nullptr) {
        return defaultValue;
    }
    std::string text = value->data;
    if (value->type == sf::kTypeSz && !text.empty() && text.back() == '\0') {
        text.pop_back();
    }
    return text;
}

void SaveSetting(const std::string& app, const std::string& section, const std::string& key,
                 const std::string& value) {
    CheckKeys(app, section, key);
    const std::string path = ApplicationPath(app);
    sf::Document document;
    std::string why;
    if (sf::Load(path, document, &why) == sf::LoadResult::Failed) {
        // A file that cannot be read is not replaced: the settings it holds are kept.
        throw RuntimeFault(75, "Settings could not be saved: " + why);
    }
    document.Obtain(section).Set(key, sf::kTypeSz, value + '\0');
    if (!sf::WriteAtomic(path, sf::Serialize(document), &why)) {
        throw RuntimeFault(75, "Settings could not be saved: " + why);
    }
}

} // namespace zol::AppSettings
