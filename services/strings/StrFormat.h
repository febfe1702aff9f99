#pragma once
// Byte-string and text helpers. A byte string is a std::string whose chars each hold one byte.
// Positions are 1-based, as everywhere in the plug-in's texts.

#include <array>
#include <cstdint>
#include <string>

namespace zol {

namespace StrFormat {
// The value of one hexadecimal digit (either case), or -1 for any other character.
int HexDigitValue(char c);
// Pairs of hex digits to bytes. An odd length gets a "0" appended, in the caller's own text. Any
// other character shows "Hex String " + the text (critical, "Unexpected Error") and halts.
std::string HexToBytes(std::string& hex);
std::string BytesToHex(const std::string& data, const std::string& separator);
// High byte at `position`, low byte at the next; a position beyond the data raises run-time error 5.
int32_t WordAt(const std::string& data, int16_t position, bool isSigned);
} // namespace StrFormat

namespace Text {
std::string QuoteText(const std::string& value);
// Blanks off both ends (spaces only).
std::string TrimBlanks(const std::string& text);
// Item `item` (from 1) of `source` split at `delimiter`; empty past the end.
std::string ItemOf(const std::string& source, int16_t item, const std::string& delimiter);
// The first three fields of a version text "a.b.c", split at "."; a missing or empty field is
// "0". The fields are not read as numbers here: each comparison of versions has its own rule.
std::array<std::string, 3> VersionFields(const std::string& version);
// True when each of the three fields of VersionFields is a whole number of 16 bits (blanks around
// it, an optional sign), so that every compare of versions can read it.
bool IsVersion(const std::string& version);
} // namespace Text

// "$" + four upper-case hex digits (the last four).
std::string FormatPID(int64_t value);

} // namespace zol
