#pragma once
// The settings files: one text file per store section, read whole and replaced whole.
//
// A file holds sections, each a header line "[<section>]" followed by value lines
// "<quoted name>=<typed data>". Typed data is one of
//   sz:"text"        type 1, the text followed by a terminating zero
//   sz:              type 1, no bytes at all
//   dword:0000002A   type 4, four bytes written as one 32-bit hexadecimal number
//   binary:01        type 3, bytes in hexadecimal
//   hex(N):41 42     type N, bytes in hexadecimal
// Quoted texts escape \\ \" and control characters (\r \n \t \0 \xHH); other bytes stand as they
// are. Lines starting with ';' or '#' and blank lines are ignored.
//
// A file is replaced atomically: the new text goes to a temporary file in the same folder, is
// flushed to disk, and is then renamed over the old one, so a reader sees the old file or the new
// one and never half of either.

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace zol::settings_file {

inline constexpr int kTypeSz = 1;
inline constexpr int kTypeBinary = 3;
inline constexpr int kTypeDword = 4;

struct StoredValue {
    std::string name;
    int type = 0;
    std::string data; // the stored bytes
};

// Names compare without regard to the case of ASCII letters: the key of a name in the indexes below.
std::string NameKey(const std::string& name);

struct Section {
    std::string name;
    std::vector<StoredValue> values; // in the order first written

    // Names compare without regard to the case of ASCII letters; the first spelling written stays.
    // Look-ups go through an index by name, so a file of many values reads and writes in linear time.
    const StoredValue* Find(const std::string& valueName) const;
    void Set(const std::string& valueName, int type, const std::string& data);

private:
    // Name key -> place in `values`; rebuilt when `values` was changed from outside.
    mutable std::unordered_map<std::string, size_t> index_;
    void Reindex() const;
};

struct Document {
    std::vector<Section> sections;
    Section* Find(const std::string& sectionName);
    const Section* Find(const std::string& sectionName) const;
    Section& Obtain(const std::string& sectionName);

private:
    mutable std::unordered_map<std::string, size_t> index_;
    void Reindex() const;
};

// The largest settings file read; a larger one is refused as not a settings file.
inline constexpr size_t kMaxFileBytes = 4u * 1024u * 1024u;

// Parses a whole file. On a malformed line returns nothing and says which line and why.
std::optional<Document> Parse(const std::string& text, std::string* error);
std::string Serialize(const Document& document);

enum class LoadResult { Loaded, Absent, Failed };
// Reads and parses `path`. Absent: no such file (nor its folder). Failed: it exists but cannot
// be read or is not a settings file; `error` says why.
LoadResult Load(const std::string& path, Document& document, std::string* error);

// Replaces `path` with `text` atomically, creating missing folders. False with `error` on failure;
// the previous file is then untouched.
bool WriteAtomic(const std::string& path, const std::string& text, std::string* error);

// Stages of an atomic write at which a test can make it fail.
enum class WriteStage { TempCreated, PartWritten, Written, Synced, BeforeRename };
// Called at each stage; returning true makes the write fail there. Empty: no hook.
void SetWriteFailHookForTest(std::function<bool(WriteStage)> hook);

// Names compare case-insensitively for ASCII letters.
bool SameName(const std::string& a, const std::string& b);

} // namespace zol::settings_file
