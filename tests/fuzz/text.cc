// Folding, trimming and counting of characters.
#include "core/support/Text.h"

#include "tests/fuzz/Fuzz.h"

namespace ferrivane::fuzz {
namespace {

bool contains(std::string_view whole, std::string_view part) {
    return part.data() >= whole.data() && part.data() + part.size() <= whole.data() + whole.size();
}

void checkTrim(std::string_view text) {
    const std::string_view trimmed = Text::trim(text);
    require(contains(text, trimmed), "trimmed text is a part of the text");
    require(Text::trim(trimmed) == trimmed, "trimming is done at once");
    const std::string spaced = "\u2003\r\n" + std::string(trimmed) + " \u00A0\u0085";
    require(Text::trim(spaced) == trimmed, "white space around is trimmed");
}

void checkCase(std::string_view text) {
    const std::string folded = Text::foldCase(text);
    require(Text::foldCase(folded) == folded, "folding is done at once");
    const std::string lower = Text::lowerCase(text);
    require(Text::lowerCase(lower) == lower, "lower case is reached at once");
    require(Text::equalIgnoringCase(text, lower), "lower case is the same text but for case");
    const bool isValid = Text::validUtf8(text) == text;
    require(!isValid || Text::validUtf8(folded) == folded, "folding makes no invalid text");
    require(!isValid || Text::validUtf8(lower) == lower, "lower case is no invalid text");
    std::string ascii;
    if (Text::foldAscii(text, ascii)) {
        require(ascii == folded && ascii == lower, "there is one way to fold ASCII");
    }
}

void checkValid(std::string_view text) {
    const std::string valid = Text::validUtf8(text);
    require(Text::validUtf8(valid) == valid, "valid text stays as it is");
    require(valid.size() <= 3 * text.size(), "each byte becomes at most one replacement");
}

void checkCharacters(std::string_view text) {
    std::size_t count = 0;
    std::size_t length = 0;
    require(Text::prefixLength(text, 0) == 0, "no characters are no bytes");
    while (const auto next = Text::prefixLength(text, count + 1)) {
        require(*next > length && *next <= text.size(), "each character has bytes of its own");
        ++count;
        length = *next;
        const std::string_view prefix = text.substr(0, length);
        require(Text::prefixLength(prefix, count) == length, "a prefix has so many characters");
        require(!Text::prefixLength(prefix, count + 1), "and no more");
        if (count == 40) return;  // every step counts from the start
    }
    require(length == text.size(), "the characters are the text");
}

}  // namespace

void run(std::string_view input) {
    checkTrim(input);
    checkCase(input);
    checkValid(input);
    checkCharacters(input);
}

}  // namespace ferrivane::fuzz
