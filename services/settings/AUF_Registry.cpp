#include "services/settings/AUF_Registry.h"

#include "device_link/core/ErrTrap.h"
#include "framework/seam/Product.h"
#include "framework/seam/UiSeam.h"
#include "services/settings/SettingsFile.h"
#include "services/strings/StrFormat.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <optional>

namespace zol {

namespace sf = settings_file;

namespace {

// A failure of the store with the text the user is shown, and the detail (the file and the system's
// reason) that goes to standard error before the program stops.
class StoreFailure : public std::runtime_error {
public:
    explicit StoreFailure(const std::string& text, std::string detail = {})
        : std::runtime_error(text), detail_(std::move(detail)) {}
    const std::string& Detail() const { return detail_; }

private:
    std::string detail_;
};

struct Identity {
    std::string company = product::kCompany;
    std::string title = product::kTitle;
};

Identity& identity() {
    static Identity instance;
    return instance;
}

std::string ValueName(const std::string& name) {
    std::string trimmed = Text::TrimBlanks(name);
    return trimmed.empty() ? std::string("Default") : trimmed;
}

// "Software\<company>\<title>"; throws the store failure when either part is missing.
std::string SectionOrFail() {
    const std::string company = Text::TrimBlanks(identity().company);
    if (company.empty()) {
        throw StoreFailure("Application Company Name not set");
    }
    const std::string title = Text::TrimBlanks(identity().title);
    if (title.empty()) {
        throw StoreFailure("Application Title is not set");
    }
    return "Software\\" + company + "\\" + title;
}

// The section's file: "registry/Software/KARN/DMX-ZOL.conf" below the settings folder.
std::string SectionPath(const std::string& section) {
    std::string relative;
    for (char c : section) {
        relative += (c == '\\') ? '/' : c;
    }
    return SettingsFolder() + "/registry/" + relative + ".conf";
}

// The stop box with the text, then the end of the program. What went wrong, and in which file,
// goes to standard error first, where it outlives the box.
[[noreturn]] void Fatal(const std::string& text, const std::string& detail) {
    std::fprintf(stderr, "%s: settings store: %s%s%s\n", product::kTitle, text.c_str(),
                 detail.empty() ? "" : ": ", detail.c_str());
    std::fflush(stderr);
    ui().MsgBox(text, vb::Critical);
    ui().Halt();
    std::abort(); // Halt never comes back
}

// The four bytes of an Integer or Long, least significant first, made as the store always has:
// the byte is the value modulo 256 and the value goes on as (value - byte) / 256. A negative value
// gives a negative remainder, which is no character: that fails as an invalid call.
std::string DwordBytes(int32_t value) {
    std::string out;
    int64_t rest = value;
    for (int round = 0; round < 4; ++round) {
        const int64_t byte = rest % 256;
        if (byte < 0 || byte > 255) {
            throw RuntimeFault(rt::InvalidCall, "Invalid procedure call or argument");
        }
        out += static_cast<char>(byte);
        rest = (rest - byte) / 256;
    }
    return out;
}

// Reads four bytes, least significant first, into a 32-bit signed value. The top byte's share
// overflows when its top bit is set.
int32_t DwordValue(const std::string& data) {
    if (data.size() < 4) {
        throw RuntimeFault(rt::SubscriptOutOfRange, "Subscript out of range");
    }
    int64_t value = 0;
    int64_t weight = 1;
    for (size_t i = 0; i < 4; ++i) {
        value += static_cast<uint8_t>(data[i]) * weight;
        if (value > INT32_MAX) {
            throw RuntimeFault(rt::Overflow, "Overflow");
        }
        weight *= 256;
    }
    return static_cast<int32_t>(value);
}

void Write(const std::string& name, const SettingValue& value) {
    int type = 0;
    std::string data;
    if (const auto* text = std::get_if<std::string>(&value)) {
        type = sf::kTypeSz;
        data = *text; // the length handed over is the text's, without the zero
    } else if (const auto* integer = std::get_if<int16_t>(&value)) {
        type = sf::kTypeDword;
        data = DwordBytes(*integer);
    } else if (const auto* number = std::get_if<int32_t>(&value)) {
        type = sf::kTypeDword;
        data = DwordBytes(*number);
    } else if (const auto* flag = std::get_if<bool>(&value)) {
        type = sf::kTypeBinary;
        data = std::string(1, *flag ? '\x01' : '\x00');
    } else {
        const auto& other = std::get<OtherSettingType>(value);
        throw StoreFailure("Data type \"" + other.typeName + "\" not handled");
    }
    const std::string valueName = ValueName(name);
    const std::string section = SectionOrFail();
    const std::string path = SectionPath(section);

    sf::Document document;
    std::string why;
    std::error_code ec;
    std::filesystem::create_directories(std::filesystem::path(path).parent_path(), ec);
    if (ec || sf::Load(path, document, &why) == sf::LoadResult::Failed) {
        throw StoreFailure("Could not open/create registry section \"" + section + "\"",
                           ec ? path + ": " + ec.message() : why);
    }
    // As the system store does for text: a terminating zero is kept after a text that has any.
    if (type == sf::kTypeSz && !data.empty()) {
        data += '\0';
    }
    document.Obtain(section).Set(valueName, type, data);
    if (!sf::WriteAtomic(path, sf::Serialize(document), &why)) {
        throw StoreFailure("Registry Value \"" + valueName + "\" update failed", why);
    }
}

SettingValue Read(const std::string& name, const SettingValue& defaultValue) {
    const std::string valueName = ValueName(name);
    const std::string section = SectionOrFail();
    sf::Document document;
    std::string why;
    switch (sf::Load(SectionPath(section), document, &why)) {
    case sf::LoadResult::Absent:
        return defaultValue;
    case sf::LoadResult::Failed:
        throw StoreFailure("Could not open registry section", why);
    case sf::LoadResult::Loaded:
        break;
    }
    const sf::Section* found = document.Find(section);
    if (found == nullptr) {
        return defaultValue; // a file without the section holds nothing of it
    }
    const sf::StoredValue* stored = found->Find(valueName);
    if (stored == nullptr || stored->data.empty()) {
        return defaultValue;
    }
    switch (stored->type) {
    case sf::kTypeSz:
        return stored->data.substr(0, stored->data.size() - 1);
    case sf::kTypeBinary:
        return stored->data[0] != '\0';
    case sf::kTypeDword:
        return DwordValue(stored->data);
    default:
        throw StoreFailure("Registry Data type not handled");
    }
}

// Runs one store operation; any failure is fatal. The box is shown outside the handler.
template <typename Operation> auto Guarded(Operation operation) -> decltype(operation()) {
    std::string failure;
    std::string detail;
    try {
        return operation();
    } catch (const StoreFailure& e) {
        failure = e.what();
        detail = e.Detail();
    } catch (const std::exception& e) {
        failure = e.what(); // the system's own description of the failure
    }
    Fatal(failure, detail);
}

[[noreturn]] void TypeMismatch() {
    throw RuntimeFault(rt::TypeMismatch, "Type mismatch");
}

// A text as a number, as a numeric text converts: blanks around it, an optional sign, digits and
// an optional fraction, rounded half to even.
std::optional<double> NumberOf(const std::string& text) {
    std::string trimmed = Text::TrimBlanks(text);
    if (trimmed.empty()) {
        return std::nullopt;
    }
    size_t i = 0;
    if (trimmed[i] == '+' || trimmed[i] == '-') {
        ++i;
    }
    bool digits = false;
    bool point = false;
    for (; i < trimmed.size(); ++i) {
        const char c = trimmed[i];
        if (c >= '0' && c <= '9') {
            digits = true;
        } else if (c == '.' && !point) {
            point = true;
        } else {
            return std::nullopt;
        }
    }
    if (!digits) {
        return std::nullopt;
    }
    return std::strtod(trimmed.c_str(), nullptr);
}

int32_t ToLong(double value) {
    const double rounded = std::nearbyint(value); // the default rounding is half to even
    if (rounded < INT32_MIN || rounded > INT32_MAX) {
        throw RuntimeFault(rt::Overflow, "Overflow");
    }
    return static_cast<int32_t>(rounded);
}

} // namespace

std::string SettingsFolder() {
    const char* config = std::getenv("XDG_CONFIG_HOME");
    std::string base;
    if (config != nullptr && *config != '\0') {
        base = config;
    } else {
        const char* home = std::getenv("HOME");
        base = std::string(home != nullptr ? home : ".") + "/.config";
    }
    return base + "/karn-zol";
}

namespace AUF_Registry {

void SetApplicationIdentity(const std::string& company, const std::string& title) {
    identity().company = company;
    identity().title = title;
}

std::string Section() {
    return Guarded([] { return SectionOrFail(); });
}

void WriteValue(const std::string& name, const SettingValue& value) {
    Guarded([&] { Write(name, value); });
}

SettingValue ReadValue(const std::string& name, const SettingValue& defaultValue) {
    return Guarded([&] { return Read(name, defaultValue); });
}

std::string ReadString(const std::string& name, const std::string& defaultValue) {
    const SettingValue value = ReadValue(name, defaultValue);
    if (const auto* text = std::get_if<std::string>(&value)) {
        return *text;
    }
    if (const auto* number = std::get_if<int32_t>(&value)) {
        return std::to_string(*number);
    }
    if (const auto* integer = std::get_if<int16_t>(&value)) {
        return std::to_string(*integer);
    }
    if (const auto* flag = std::get_if<bool>(&value)) {
        return *flag ? "True" : "False";
    }
    TypeMismatch();
}

int32_t ReadLong(const std::string& name, int32_t defaultValue) {
    const SettingValue value = ReadValue(name, defaultValue);
    if (const auto* number = std::get_if<int32_t>(&value)) {
        return *number;
    }
    if (const auto* integer = std::get_if<int16_t>(&value)) {
        return *integer;
    }
    if (const auto* flag = std::get_if<bool>(&value)) {
        return *flag ? -1 : 0;
    }
    if (const auto* text = std::get_if<std::string>(&value)) {
        if (auto number = NumberOf(*text)) {
            return ToLong(*number);
        }
    }
    TypeMismatch();
}

bool ReadBool(const std::string& name, bool defaultValue) {
    const SettingValue value = ReadValue(name, defaultValue);
    if (const auto* flag = std::get_if<bool>(&value)) {
        return *flag;
    }
    if (const auto* number = std::get_if<int32_t>(&value)) {
        return *number != 0;
    }
    if (const auto* integer = std::get_if<int16_t>(&value)) {
        return *integer != 0;
    }
    if (const auto* text = std::get_if<std::string>(&value)) {
        const std::string trimmed = Text::TrimBlanks(*text);
        if (sf::SameName(trimmed, "True")) {
            return true;
        }
        if (sf::SameName(trimmed, "False")) {
            return false;
        }
        if (auto number = NumberOf(trimmed)) {
            return *number != 0.0;
        }
    }
    TypeMismatch();
}

} // namespace AUF_Registry
} // namespace zol
