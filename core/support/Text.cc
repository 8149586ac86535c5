#include "core/support/Text.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <vector>

#include <string.h>
#include <utf8proc.h>

namespace ferrivane::Text {
namespace {

using CodePoint = utf8proc_int32_t;

struct Character {
    CodePoint value;  // below 0: an invalid sequence
    std::size_t length;
};

// Decodes the character at the start of `text`, which is not empty. The length of an invalid
// sequence is that of its longest prefix that could begin a character (Unicode 15, table 3-7).
Character decodeFirst(std::string_view text) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char lead = byte(0);
    if (lead < 0x80) return {lead, 1};
    if (lead < 0xC2 || lead > 0xF4) return {-1, 1};
    const std::size_t length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    CodePoint value = lead & (0xFF >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) {
        if (i == text.size()) return {-1, i};
        unsigned char lowest = 0x80;
        unsigned char highest = 0xBF;
        if (i == 1 && lead == 0xE0) lowest = 0xA0;   // overlong
        if (i == 1 && lead == 0xED) highest = 0x9F;  // surrogates
        if (i == 1 && lead == 0xF0) lowest = 0x90;   // overlong
        if (i == 1 && lead == 0xF4) highest = 0x8F;  // beyond U+10FFFF
        if (byte(i) < lowest || byte(i) > highest) return {-1, i};
        value = (value << 6) | (byte(i) & 0x3F);
    }
    return {value, length};
}

bool isSpace(CodePoint c) {
    if (c < 0x80) return (c >= 0x09 && c <= 0x0D) || c == ' ';
    if (c == 0x85) return true;
    const utf8proc_category_t category = utf8proc_category(c);
    return category == UTF8PROC_CATEGORY_ZS || category == UTF8PROC_CATEGORY_ZL ||
           category == UTF8PROC_CATEGORY_ZP;
}

bool isAscii(std::string_view text) {
    const char* position = text.data();
    const char* const end = position + text.size();
    for (; end - position >= 8; position += 8) {
        std::uint64_t block;
        std::memcpy(&block, position, sizeof block);
        if ((block & 0x8080808080808080U) != 0) return false;
    }
    return std::all_of(position, end, [](char c) { return (c & 0x80) == 0; });
}

constexpr auto kAsciiLower = [] {
    std::array<char, 128> table{};
    for (std::size_t i = 0; i < table.size(); ++i) {
        table[i] = static_cast<char>(i >= 'A' && i <= 'Z' ? i + ('a' - 'A') : i);
    }
    return table;
}();

char asciiLower(char c) {
    return kAsciiLower[static_cast<unsigned char>(c)];
}

// Appends `text`, which is valid UTF-8, mapped by utf8proc.
void appendMapped(std::string& out, std::string_view text, int options) {
    // A set of flags. NOLINTNEXTLINE(clang-analyzer-optin.core.EnumCastOutOfRange)
    const auto flags = static_cast<utf8proc_option_t>(options);
    const auto* bytes = reinterpret_cast<const utf8proc_uint8_t*>(text.data());
    const auto size = static_cast<utf8proc_ssize_t>(text.size());
    std::array<CodePoint, 128> small;
    std::vector<CodePoint> large;
    CodePoint* buffer = small.data();
    utf8proc_ssize_t count = utf8proc_decompose(
        bytes, size, buffer, static_cast<utf8proc_ssize_t>(small.size()) - 1, flags);
    if (count >= static_cast<utf8proc_ssize_t>(small.size())) {
        large.resize(static_cast<std::size_t>(count) + 1);  // reencode ends its text with a zero
        buffer = large.data();
        count = utf8proc_decompose(bytes, size, buffer, count, flags);
    }
    const utf8proc_ssize_t length = count < 0 ? count : utf8proc_reencode(buffer, count, flags);
    if (length < 0) {
        out.append(text);  // cannot happen for valid text; keep it rather than lose it
    } else {
        out.append(reinterpret_cast<const char*>(buffer), static_cast<std::size_t>(length));
    }
}

// Maps the valid stretches of `text` and copies the bytes between them.
std::string mapped(std::string_view text, int options) {
    std::string out;
    out.reserve(text.size());
    std::size_t start = 0;
    std::size_t position = 0;
    while (position < text.size()) {
        const Character character = decodeFirst(text.substr(position));
        if (character.value < 0) {
            appendMapped(out, text.substr(start, position - start), options);
            out.append(text.substr(position, character.length));
            start = position + character.length;
        }
        position += character.length;
    }
    appendMapped(out, text.substr(start), options);
    return out;
}

void appendUtf8(std::string& out, CodePoint c) {
    std::array<utf8proc_uint8_t, 4> bytes;
    const utf8proc_ssize_t length = utf8proc_encode_char(c, bytes.data());
    out.append(reinterpret_cast<const char*>(bytes.data()), static_cast<std::size_t>(length));
}

}  // namespace

std::string_view trim(std::string_view text) {
    while (!text.empty()) {
        const Character first = decodeFirst(text);
        if (first.value < 0 || !isSpace(first.value)) break;
        text.remove_prefix(first.length);
    }
    while (!text.empty()) {
        std::size_t start = text.size() - 1;
        while (start > 0 && text.size() - start < 4 && (text[start] & 0xC0) == 0x80) --start;
        const Character last = decodeFirst(text.substr(start));
        if (last.value < 0 || last.length != text.size() - start || !isSpace(last.value)) break;
        text.remove_suffix(last.length);
    }
    return text;
}

bool contains(std::string_view text, std::string_view part) {
    if (part.empty() || text.empty()) return part.empty();
    return ::memmem(text.data(), text.size(), part.data(), part.size()) != nullptr;
}

bool foldAscii(std::string_view text, std::string& folded) {
    if (!isAscii(text)) return false;
    folded.resize(text.size());
    std::ranges::transform(text, folded.begin(), asciiLower);
    return true;
}

std::string foldCase(std::string_view text) {
    std::string folded;
    if (foldAscii(text, folded)) return folded;
    // First in canonical order: folding makes a letter of a mark (U+0345), which keeps others from
    // changing places (Unicode 15, D145).
    return mapped(mapped(text, UTF8PROC_STABLE | UTF8PROC_DECOMPOSE),
                  UTF8PROC_STABLE | UTF8PROC_COMPOSE | UTF8PROC_CASEFOLD);
}

bool equalIgnoringCase(std::string_view a, std::string_view b) {
    return foldCase(a) == foldCase(b);
}

std::string lowerCase(std::string_view text) {
    std::string lower;
    if (foldAscii(text, lower)) return lower;
    lower.clear();
    while (!text.empty()) {
        const Character character = decodeFirst(text);
        if (character.value < 0) {
            lower.append(text.substr(0, character.length));
        } else if (character.value == 0x130) {
            lower.append("i\u0307");  // the only letter whose lower case is two (SpecialCasing.txt)
        } else {
            appendUtf8(lower, utf8proc_tolower(character.value));
        }
        text.remove_prefix(character.length);
    }
    return mapped(lower, UTF8PROC_STABLE | UTF8PROC_COMPOSE);
}

std::optional<std::size_t> prefixLength(std::string_view text, std::size_t count) {
    std::size_t position = 0;
    std::size_t complete = 0;
    CodePoint previous = -1;
    utf8proc_int32_t state = 0;
    while (position < text.size()) {
        const Character character = decodeFirst(text.substr(position));
        // Each invalid sequence stands alone, as do its neighbours.
        const bool breaks =
            position > 0 && (character.value < 0 || previous < 0 ||
                             utf8proc_grapheme_break_stateful(previous, character.value, &state));
        if (breaks && ++complete == count) return position;
        if (character.value < 0 || previous < 0) state = 0;
        previous = character.value;
        position += character.length;
    }
    if (position > 0) ++complete;
    if (count == 0 || complete == count) return count == 0 ? 0 : position;
    return std::nullopt;
}

std::string validUtf8(std::string_view text) {
    std::string out;
    while (!text.empty()) {
        const Character character = decodeFirst(text);
        out.append(character.value < 0 ? "\uFFFD" : text.substr(0, character.length));
        text.remove_prefix(character.length);
    }
    return out;
}

}  // namespace ferrivane::Text
