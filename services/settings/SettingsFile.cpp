#include "services/settings/SettingsFile.h"

#include "services/strings/StrFormat.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace zol::settings_file {

namespace {

std::function<bool(WriteStage)>& failHook() {
    static std::function<bool(WriteStage)> hook;
    return hook;
}

bool FailAt(WriteStage stage) {
    return failHook() && failHook()(stage);
}

char Lower(char c) {
    return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
}

std::string Quote(const std::string& text) {
    std::string out = "\"";
    for (char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        switch (c) {
        case '\\':
            out += "\\\\";
            break;
        case '"':
            out += "\\\"";
            break;
        case '\r':
            out += "\\r";
            break;
        case '\n':
            out += "\\n";
            break;
        case '\t':
            out += "\\t";
            break;
        case '\0':
            out += "\\0";
            break;
        default:
            if (byte < 0x20 || byte == 0x7F) {
                out += "\\x" + StrFormat::BytesToHex(std::string(1, c), "");
            } else {
                out += c;
            }
        }
    }
    return out + "\"";
}

std::string Encode(const StoredValue& value) {
    const std::string& d = value.data;
    if (value.type == kTypeSz) {
        if (d.empty()) {
            return "sz:";
        }
        if (d.back() == '\0') {
            return "sz:" + Quote(d.substr(0, d.size() - 1));
        }
    } else if (value.type == kTypeDword && d.size() == 4) {
        // Most significant byte first.
        return "dword:" + StrFormat::BytesToHex(std::string(d.rbegin(), d.rend()), "");
    } else if (value.type == kTypeBinary) {
        return "binary:" + StrFormat::BytesToHex(d, " ");
    }
    return "hex(" + std::to_string(value.type) + "):" + StrFormat::BytesToHex(d, " ");
}

// A cursor over one line.
class LineReader {
public:
    explicit LineReader(const std::string& line) : line_(line) {}
    bool AtEnd() const { return pos_ >= line_.size(); }
    void SkipBlanks() {
        while (pos_ < line_.size() && (line_[pos_] == ' ' || line_[pos_] == '\t')) {
            ++pos_;
        }
    }
    bool Take(const std::string& literal) {
        if (line_.compare(pos_, literal.size(), literal) == 0) {
            pos_ += literal.size();
            return true;
        }
        return false;
    }
    std::optional<std::string> Quoted() {
        if (!Take("\"")) {
            return std::nullopt;
        }
        std::string out;
        while (pos_ < line_.size()) {
            char c = line_[pos_++];
            if (c == '"') {
                return out;
            }
            if (c != '\\') {
                out += c;
                continue;
            }
            if (pos_ >= line_.size()) {
                return std::nullopt;
            }
            c = line_[pos_++];
            switch (c) {
            case '\\':
            case '"':
                out += c;
                break;
            case 'r':
                out += '\r';
                break;
            case 'n':
                out += '\n';
                break;
            case 't':
                out += '\t';
                break;
            case '0':
                out += '\0';
                break;
            case 'x': {
                const auto byte = HexPair();
                if (!byte) {
                    return std::nullopt;
                }
                out += *byte;
                break;
            }
            default:
                return std::nullopt;
            }
        }
        return std::nullopt; // no closing quote
    }
    // Hexadecimal bytes separated by blanks or commas, up to the end of the line.
    std::optional<std::string> HexList() {
        std::string out;
        for (;;) {
            while (pos_ < line_.size() && (line_[pos_] == ' ' || line_[pos_] == '\t' || line_[pos_] == ',')) {
                ++pos_;
            }
            if (AtEnd()) {
                return out;
            }
            const auto byte = HexPair();
            if (!byte) {
                return std::nullopt;
            }
            out += *byte;
            if (!AtEnd() && line_[pos_] != ' ' && line_[pos_] != '\t' && line_[pos_] != ',') {
                return std::nullopt;
            }
        }
    }
    std::optional<int> Decimal() {
        const size_t start = pos_;
        long value = 0;
        while (pos_ < line_.size() && line_[pos_] >= '0' && line_[pos_] <= '9' && pos_ - start < 9) {
            value = value * 10 + (line_[pos_] - '0');
            ++pos_;
        }
        if (pos_ == start) {
            return std::nullopt;
        }
        return static_cast<int>(value);
    }
    std::optional<std::string> Dword() {
        if (pos_ + 8 != line_.size()) {
            return std::nullopt;
        }
        uint32_t value = 0;
        for (size_t i = 0; i < 8; ++i) {
            const int digit = StrFormat::HexDigitValue(line_[pos_ + i]);
            if (digit < 0) {
                return std::nullopt;
            }
            value = value * 16 + static_cast<uint32_t>(digit);
        }
        pos_ += 8;
        std::string out;
        for (int i = 0; i < 4; ++i) {
            out += static_cast<char>((value >> (8 * i)) & 0xFF);
        }
        return out;
    }

private:
    // Two hexadecimal digits at the cursor as one byte, the cursor past them; nothing when they
    // are missing or not hexadecimal.
    std::optional<char> HexPair() {
        if (pos_ + 2 > line_.size()) {
            return std::nullopt;
        }
        const int high = StrFormat::HexDigitValue(line_[pos_]);
        const int low = StrFormat::HexDigitValue(line_[pos_ + 1]);
        if (high < 0 || low < 0) {
            return std::nullopt;
        }
        pos_ += 2;
        return static_cast<char>(high * 16 + low);
    }

    const std::string& line_;
    size_t pos_ = 0;
};

std::optional<StoredValue> ParseValue(const std::string& line, std::string* why) {
    LineReader reader(line);
    StoredValue value;
    auto name = reader.Quoted();
    if (!name) {
        *why = "a value line must start with a quoted name";
        return std::nullopt;
    }
    value.name = *name;
    reader.SkipBlanks();
    if (!reader.Take("=")) {
        *why = "'=' expected after the name";
        return std::nullopt;
    }
    reader.SkipBlanks();
    std::optional<std::string> data;
    if (reader.Take("sz:")) {
        value.type = kTypeSz;
        if (reader.AtEnd()) {
            data = std::string();
        } else if (auto text = reader.Quoted(); text && reader.AtEnd()) {
            data = *text + '\0';
        }
    } else if (reader.Take("dword:")) {
        value.type = kTypeDword;
        data = reader.Dword();
    } else if (reader.Take("binary:")) {
        value.type = kTypeBinary;
        data = reader.HexList();
    } else if (reader.Take("hex(")) {
        auto type = reader.Decimal();
        if (type && reader.Take("):")) {
            value.type = *type;
            data = reader.HexList();
        }
    } else {
        *why = "unknown kind of data";
        return std::nullopt;
    }
    if (!data) {
        *why = "malformed data";
        return std::nullopt;
    }
    value.data = std::move(*data);
    return value;
}

std::string StripLineEnd(std::string line) {
    while (!line.empty() && (line.back() == '\r' || line.back() == ' ' || line.back() == '\t')) {
        line.pop_back();
    }
    size_t start = 0;
    while (start < line.size() && (line[start] == ' ' || line[start] == '\t')) {
        ++start;
    }
    return line.substr(start);
}

std::string SystemError(const std::string& what, const std::string& path, int code) {
    return what + " " + path + ": " + std::strerror(code);
}

// Writes all of `text` to `fd`; when the hook asks, stops half way.
bool WriteAll(int fd, const std::string& text) {
    size_t done = 0;
    const size_t half = text.size() / 2;
    while (done < text.size()) {
        size_t chunk = text.size() - done;
        if (done < half) {
            chunk = half - done;
        }
        const ssize_t n = ::write(fd, text.data() + done, chunk);
        if (n < 0) {
            if (errno == EINTR) {
                continue;
            }
            return false;
        }
        done += static_cast<size_t>(n);
        if (done == half && FailAt(WriteStage::PartWritten)) {
            errno = EIO;
            return false;
        }
    }
    return true;
}

// Removes what writes that were killed half way left behind: temporaries of this file (the prefix
// and six characters) last changed over a minute ago. A write under way elsewhere is younger.
void RemoveStaleTemporaries(const std::filesystem::path& folder, const std::string& prefix) {
    std::error_code ec;
    const auto limit = std::filesystem::file_time_type::clock::now() - std::chrono::minutes(1);
    for (std::filesystem::directory_iterator it(folder, ec), end; !ec && it != end; it.increment(ec)) {
        const std::string name = it->path().filename().string();
        if (name.size() != prefix.size() + 6 || name.compare(0, prefix.size(), prefix) != 0) {
            continue;
        }
        std::error_code timeError;
        const auto changed = std::filesystem::last_write_time(it->path(), timeError);
        if (!timeError && changed < limit && it->is_regular_file(timeError)) {
            std::filesystem::remove(it->path(), timeError);
        }
    }
}

} // namespace

bool SameName(const std::string& a, const std::string& b) {
    if (a.size() != b.size()) {
        return false;
    }
    for (size_t i = 0; i < a.size(); ++i) {
        if (Lower(a[i]) != Lower(b[i])) {
            return false;
        }
    }
    return true;
}

std::string NameKey(const std::string& name) {
    std::string key = name;
    for (char& c : key) {
        c = Lower(c);
    }
    return key;
}

void Section::Reindex() const {
    index_.clear();
    for (size_t i = 0; i < values.size(); ++i) {
        index_.emplace(NameKey(values[i].name), i);
    }
}

const StoredValue* Section::Find(const std::string& valueName) const {
    if (index_.size() != values.size()) {
        Reindex();
    }
    const auto found = index_.find(NameKey(valueName));
    if (found == index_.end() || found->second >= values.size() ||
        !SameName(values[found->second].name, valueName)) {
        return nullptr;
    }
    return &values[found->second];
}

void Section::Set(const std::string& valueName, int type, const std::string& data) {
    if (const StoredValue* present = Find(valueName)) {
        auto& value = values[static_cast<size_t>(present - values.data())];
        value.type = type;
        value.data = data;
        return;
    }
    values.push_back({valueName, type, data});
    index_.emplace(NameKey(valueName), values.size() - 1);
}

void Document::Reindex() const {
    index_.clear();
    for (size_t i = 0; i < sections.size(); ++i) {
        index_.emplace(NameKey(sections[i].name), i);
    }
}

const Section* Document::Find(const std::string& sectionName) const {
    if (index_.size() != sections.size()) {
        Reindex();
    }
    const auto found = index_.find(NameKey(sectionName));
    if (found == index_.end() || found->second >= sections.size() ||
        !SameName(sections[found->second].name, sectionName)) {
        return nullptr;
    }
    return &sections[found->second];
}

Section* Document::Find(const std::string& sectionName) {
    return const_cast<Section*>(static_cast<const Document*>(this)->Find(sectionName));
}

Section& Document::Obtain(const std::string& sectionName) {
    if (Section* found = Find(sectionName)) {
        return *found;
    }
    Section made;
    made.name = sectionName;
    sections.push_back(std::move(made));
    index_.emplace(NameKey(sectionName), sections.size() - 1);
    return sections.back();
}

std::optional<Document> Parse(const std::string& text, std::string* error) {
    Document document;
    Section* current = nullptr;
    size_t lineNumber = 0;
    size_t start = 0;
    auto fail = [&](const std::string& why) -> std::optional<Document> {
        if (error != nullptr) {
            *error = "line " + std::to_string(lineNumber) + ": " + why;
        }
        return std::nullopt;
    };
    if (text.find('\0') != std::string::npos) {
        lineNumber =
            1 + static_cast<size_t>(std::count(
                    text.begin(), text.begin() + static_cast<std::ptrdiff_t>(text.find('\0')), '\n'));
        return fail("a NUL byte in the file");
    }
    while (start <= text.size()) {
        size_t end = text.find('\n', start);
        if (end == std::string::npos) {
            end = text.size();
        }
        ++lineNumber;
        const std::string line = StripLineEnd(text.substr(start, end - start));
        start = end + 1;
        if (line.empty() || line[0] == ';' || line[0] == '#') {
            if (end == text.size()) {
                break;
            }
            continue;
        }
        if (line[0] == '[') {
            if (line.back() != ']' || line.size() < 3) {
                return fail("malformed section header");
            }
            current = &document.Obtain(line.substr(1, line.size() - 2));
        } else {
            if (current == nullptr) {
                return fail("a value before any section header");
            }
            std::string why;
            auto value = ParseValue(line, &why);
            if (!value) {
                return fail(why);
            }
            current->Set(value->name, value->type, value->data);
        }
        if (end == text.size()) {
            break;
        }
    }
    return document;
}

std::string Serialize(const Document& document) {
    std::string out = "; karn-zol settings: edit with care, one value a line\n";
    for (const auto& section : document.sections) {
        out += "\n[" + section.name + "]\n";
        for (const auto& value : section.values) {
            out += Quote(value.name) + "=" + Encode(value) + "\n";
        }
    }
    return out;
}

LoadResult Load(const std::string& path, Document& document, std::string* error) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        const int code = errno;
        if (code == ENOENT || code == ENOTDIR) {
            return LoadResult::Absent;
        }
        if (error != nullptr) {
            *error = SystemError("cannot open", path, code);
        }
        return LoadResult::Failed;
    }
    struct stat info {};
    if (::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode)) {
        ::close(fd);
        if (error != nullptr) {
            *error = path + " is not a regular file";
        }
        return LoadResult::Failed;
    }
    if (static_cast<uint64_t>(info.st_size) > kMaxFileBytes) {
        ::close(fd);
        if (error != nullptr) {
            *error = path + " is too large for a settings file (" + std::to_string(info.st_size) +
                     " bytes, at most " + std::to_string(kMaxFileBytes) + ")";
        }
        return LoadResult::Failed;
    }
    std::string text;
    char chunk[65536];
    for (;;) {
        const ssize_t n = ::read(fd, chunk, sizeof chunk);
        if (n < 0) {
            if (errno == EINTR) {
                continue;
            }
            const int code = errno;
            ::close(fd);
            if (error != nullptr) {
                *error = SystemError("cannot read", path, code);
            }
            return LoadResult::Failed;
        }
        if (n == 0) {
            break;
        }
        text.append(chunk, static_cast<size_t>(n));
        if (text.size() > kMaxFileBytes) { // it grew while being read
            ::close(fd);
            if (error != nullptr) {
                *error = path + " is too large for a settings file";
            }
            return LoadResult::Failed;
        }
    }
    ::close(fd);
    std::string why;
    auto parsed = Parse(text, &why);
    if (!parsed) {
        if (error != nullptr) {
            *error = path + " is corrupt (" + why + ")";
        }
        return LoadResult::Failed;
    }
    document = std::move(*parsed);
    return LoadResult::Loaded;
}

bool WriteAtomic(const std::string& path, const std::string& text, std::string* error) {
    auto fail = [&](const std::string& what) {
        if (error != nullptr) {
            *error = what;
        }
        return false;
    };
    const std::filesystem::path target(path);
    const std::filesystem::path folder = target.parent_path();
    std::error_code ec;
    std::filesystem::create_directories(folder, ec);
    if (ec) {
        return fail("cannot create " + folder.string() + ": " + ec.message());
    }
    // The temporary file lives beside the target, so the rename never crosses file systems.
    std::string tempName = ".";
    tempName += target.filename().string();
    tempName += ".XXXXXX";
    RemoveStaleTemporaries(folder, tempName.substr(0, tempName.size() - 6));
    std::string temp = (folder / tempName).string();
    const int fd = ::mkstemp(temp.data());
    if (fd < 0) {
        return fail(SystemError("cannot create a temporary file in", folder.string(), errno));
    }
    auto abandon = [&](const std::string& what) {
        ::close(fd);
        ::unlink(temp.c_str());
        return fail(what);
    };
    if (FailAt(WriteStage::TempCreated)) {
        return abandon("write of " + path + " interrupted");
    }
    if (!WriteAll(fd, text)) {
        return abandon(SystemError("cannot write", temp, errno));
    }
    if (FailAt(WriteStage::Written)) {
        return abandon("write of " + path + " interrupted");
    }
    if (::fchmod(fd, 0600) != 0 || ::fsync(fd) != 0) {
        return abandon(SystemError("cannot flush", temp, errno));
    }
    if (FailAt(WriteStage::Synced) || FailAt(WriteStage::BeforeRename)) {
        return abandon("write of " + path + " interrupted");
    }
    if (::close(fd) != 0) {
        const int code = errno;
        ::unlink(temp.c_str());
        return fail(SystemError("cannot close", temp, code));
    }
    if (::rename(temp.c_str(), path.c_str()) != 0) {
        const int code = errno;
        ::unlink(temp.c_str());
        return fail(SystemError("cannot replace", path, code));
    }
    // Make the rename itself durable.
    const int dir = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (dir >= 0) {
        ::fsync(dir);
        ::close(dir);
    }
    return true;
}

void SetWriteFailHookForTest(std::function<bool(WriteStage)> hook) {
    failHook() = std::move(hook);
}

} // namespace zol::settings_file
