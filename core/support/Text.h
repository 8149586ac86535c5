// Unicode operations on UTF-8 text. Every function takes any bytes: a byte that is not part of
// valid UTF-8 counts as one character of its own and passes through unchanged unless stated
// otherwise. Pure functions; callable from any thread.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace ferrivane::Text {

// `text` without white space and line breaks (Unicode categories Z*, tab to carriage return, next
// line) at both ends.
std::string_view trim(std::string_view text);

// The form in which texts that differ only by case are equal: full case folding (Unicode
// CaseFolding.txt, C + F, no locale) followed by canonical composition. So "ß" folds to "ss", both
// small sigmas fold to one, "İ" to "i" with a dot above, and a composed and a decomposed "é" are
// the same. Diacritics are kept.
std::string foldCase(std::string_view text);

// foldCase for ASCII text only, without allocating more than the result; false, and `folded` left
// unspecified, when `text` is not ASCII.
bool foldAscii(std::string_view text, std::string& folded);

// Whether `part` occurs in `text`, byte for byte. Not std::string::find: memmem is several times
// faster (bench/).
bool contains(std::string_view text, std::string_view part);

bool equalIgnoringCase(std::string_view a, std::string_view b);

// Lower-case mapping and canonical composition. Unlike folding it keeps "ß" and the final sigma,
// which are letters of their own in host names (UTS #46, non-transitional).
std::string lowerCase(std::string_view text);

// The length in bytes of the first `count` characters as a person perceives them (extended grapheme
// clusters, UAX #29); absent when the text has fewer.
std::optional<std::size_t> prefixLength(std::string_view text, std::size_t count);

// `text` with every maximal invalid sequence replaced by U+FFFD.
std::string validUtf8(std::string_view text);

}  // namespace ferrivane::Text
