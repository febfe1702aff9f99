#include "services/update/UpdateProtocol.h"

#include "device_link/core/ErrTrap.h"
#include "services/settings/AUF_Registry.h"
#include "services/settings/SettingsFile.h"
#include "services/strings/StrFormat.h"

#include <cctype>
#include <cstdint>

namespace zol::update {

namespace {

[[noreturn]] void SubscriptOutOfRange() {
    throw RuntimeFault(rt::SubscriptOutOfRange, "Subscript out of range");
}

// Item `index` (from 0) of a split, as the classic array access: past the end is error 9.
const std::string& ItemAt(const std::vector<std::string>& items, size_t index) {
    if (index >= items.size()) {
        SubscriptOutOfRange();
    }
    return items[index];
}

} // namespace

std::vector<std::string> SplitText(const std::string& text, const std::string& delimiter) {
    std::vector<std::string> items;
    if (text.empty()) {
        return items;
    }
    size_t start = 0;
    for (;;) {
        const size_t at = text.find(delimiter, start);
        if (at == std::string::npos) {
            items.push_back(text.substr(start));
            break;
        }
        items.push_back(text.substr(start, at - start));
        start = at + delimiter.size();
    }
    return items;
}

int ToInteger16(const std::string& text) {
    const std::string t = TrimBlanks(text);
    size_t i = 0;
    bool negative = false;
    if (i < t.size() && (t[i] == '+' || t[i] == '-')) {
        negative = t[i] == '-';
        ++i;
    }
    if (i == t.size()) {
        throw RuntimeFault(rt::TypeMismatch, "Type mismatch");
    }
    int64_t value = 0;
    bool tooLarge = false;
    for (; i < t.size(); ++i) {
        if (std::isdigit(static_cast<unsigned char>(t[i])) == 0) {
            throw RuntimeFault(rt::TypeMismatch, "Type mismatch");
        }
        if (!tooLarge) {
            value = value * 10 + (t[i] - '0');
            tooLarge = value > 100000;
        }
    }
    if (negative) {
        value = -value;
    }
    if (tooLarge || value < -32768 || value > 32767) {
        throw RuntimeFault(rt::Overflow, "Overflow");
    }
    return static_cast<int>(value);
}

std::string BuildRequest(const std::string& hostName, const RequestFacts& facts) {
    const std::string userAgent = facts.longName + " (" + facts.winVersion + "; " + facts.servicePack + "; " +
                                  facts.language + "-" + facts.country + ")";
    const std::string query =
        "current=" + facts.appVersion + "&software=" + facts.productCode + "&firmware=1";
    std::string request;
    request += "GET " + std::string(kQueryPath) + query + " HTTP/1.1\r\n";
    request += "Host: " + hostName + "\r\n";
    request += "User-Agent: " + userAgent + "\r\n";
    request += "\r\n";
    return request;
}

Answer ParseAnswer(const std::string& text) {
    const std::vector<std::string> lines = SplitText(text, "\r\n");
    Answer answer;
    size_t next = 0;
    for (; next < lines.size(); ++next) {
        std::string line = TrimBlanks(lines[next]);
        if (line.empty()) {
            ++next;
            break;
        }
        answer.headers.push_back(std::move(line));
    }
    for (; next < lines.size(); ++next) {
        answer.body += TrimBlanks(lines[next]);
    }
    // The status line is the first line of the answer, whatever it holds.
    const std::string first = TrimBlanks(ItemAt(lines, 0));
    answer.status = TrimBlanks(ItemAt(SplitText(first, " "), 1));
    return answer;
}

void StoreBody(const std::string& body) {
    for (const std::string& raw : SplitText(body, "&")) {
        const std::vector<std::string> parts = SplitText(TrimBlanks(raw), "=");
        const std::string& key = ItemAt(parts, 0);
        const std::string value = TrimBlanks(ItemAt(parts, 1));
        if (settings_file::SameName(key, "Software") && !Text::IsVersion(value)) {
            throw BadVersion(value);
        }
        AUF_Registry::WriteValue("Latest_" + key, SettingValue(value));
    }
}

bool IsNewer(const std::string& latest, const std::string& present) {
    const auto newer = Text::VersionFields(latest);
    const auto now = Text::VersionFields(present);
    for (size_t i = 0; i < newer.size(); ++i) {
        const int a = ToInteger16(newer[i]);
        const int b = ToInteger16(now[i]);
        if (a > b) {
            return true;
        }
    }
    return false;
}

} // namespace zol::update
