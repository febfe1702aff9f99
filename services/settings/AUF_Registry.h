#pragma once
// AUF_Registry: the plug-in's persistent per-user settings, named values under the section
// "Software\<company>\<title>". Reads and writes at once, caches nothing; a failure of the store
// itself is fatal (a stop box, then Halt).
//
// Values are typed as the store keeps them: String, Integer (16-bit), Long (32-bit), Boolean.
// Reading returns the type that was stored, not the type of the default.

#include <cstdint>
#include <string>
#include <variant>

namespace zol {

// The four value families: String, Integer, Long, Boolean. `Other` stands for a value of a type
// the store does not handle (its type name is carried for the message).
struct OtherSettingType {
    std::string typeName;
};
using SettingValue = std::variant<std::string, int16_t, int32_t, bool, OtherSettingType>;

namespace AUF_Registry {

// The company and title the section is formed from (the plug-in's own; tests may change them).
void SetApplicationIdentity(const std::string& company, const std::string& title);
std::string Section(); // "Software\<company>\<title>"; fatal when either is empty

void WriteValue(const std::string& name, const SettingValue& value);
SettingValue ReadValue(const std::string& name, const SettingValue& defaultValue);

// Conveniences with the usual coercion of a stored value to the wanted family
// (a number read as text gives its digits; text that is not a number raises run-time error 13).
std::string ReadString(const std::string& name, const std::string& defaultValue = {});
int32_t ReadLong(const std::string& name, int32_t defaultValue = 0);
bool ReadBool(const std::string& name, bool defaultValue = false);

} // namespace AUF_Registry

// The host's per-user application settings (GetSetting / SaveSetting): string values keyed by
// application, section and name, in a file of their own.
namespace AppSettings {
std::string GetSetting(const std::string& app, const std::string& section, const std::string& key,
                       const std::string& defaultValue = {});
void SaveSetting(const std::string& app, const std::string& section, const std::string& key,
                 const std::string& value);
} // namespace AppSettings

// Where the files live: $XDG_CONFIG_HOME (default ~/.config) + "/karn-zol".
std::string SettingsFolder();

} // namespace zol
