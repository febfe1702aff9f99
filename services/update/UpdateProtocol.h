#pragma once
// The update query and its answer: building the one GET request, reading the answer's status line
// and body, storing the body's key and value pairs as "Latest_<key>", and comparing version texts.
// Failures are the classic run-time faults (9 for a missing part, 13 for a part that is not a
// number, 6 for one that does not fit 16 bits), so that the view's handler treats them alike.

#include "device_link/core/ErrTrap.h"
#include "services/strings/StrFormat.h"

#include <string>
#include <vector>

namespace zol::update {

// The facts about this computer that travel in the request.
struct RequestFacts {
    std::string longName;
    std::string winVersion;
    std::string servicePack;
    std::string language;
    std::string country;
    std::string appVersion;
    std::string productCode;
};

inline constexpr const char* kQueryPath = "/support/updates.php?";
// The most the answer is read in its one read.
inline constexpr int kAnswerLimit = 2048;

// "GET /support/updates.php?current=...&software=...&firmware=1 HTTP/1.1", "Host: ",
// "User-Agent: " and an empty line, each ended by CR LF.
std::string BuildRequest(const std::string& hostName, const RequestFacts& facts);

struct Answer {
    std::vector<std::string> headers; // trimmed, up to the first empty line
    std::string body;                 // the remaining lines, trimmed, empty ones dropped, joined
    std::string status;               // second word of the first line
};

// Splits an answer as the check reads it. An answer with no first line, or a first line with no
// second word, raises run-time error 9.
Answer ParseAnswer(const std::string& text);

// A version the server sent under the key "Software" that no compare could read.
class BadVersion : public RuntimeFault {
public:
    explicit BadVersion(std::string value)
        : RuntimeFault(rt::TypeMismatch, "Type mismatch"), value_(std::move(value)) {}
    const std::string& Value() const { return value_; }

private:
    std::string value_;
};

// Writes each "key=value" item of the body under "Latest_" + key. An item without "=" raises
// run-time error 9 after the items before it have been written. A "Software" value that is not a
// version (Text::IsVersion) is never written: it raises BadVersion there, so a broken or hostile
// server cannot leave a value behind that fails every later compare.
void StoreBody(const std::string& body);

// True when `latest` is newer than `present`. Both are split at "." and taken as three parts; an
// empty part counts as 0. The walk only looks for a greater latest part: a lower one does not end
// it, so 1.5.0 against 2.0.0 counts as newer.
bool IsNewer(const std::string& latest, const std::string& present);

// The split of the classic Split function: an empty text gives no items at all.
std::vector<std::string> SplitText(const std::string& text, const std::string& delimiter);
// Blanks off both ends (spaces only).
using Text::TrimBlanks;
// A part of a version as a 16-bit integer: blanks around are allowed, then an optional sign and
// digits. Anything else raises run-time error 13, a value outside 16 bits error 6.
int ToInteger16(const std::string& text);

} // namespace zol::update
