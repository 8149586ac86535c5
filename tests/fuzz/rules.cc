// rules.json: what is read and written again stays the same, and another parser agrees on what is
// JSON.
#include <algorithm>

#include <simdjson.h>

#include "core/Config.h"
#include "core/support/Text.h"
#include "tests/fuzz/Fuzz.h"

namespace ferrivane::fuzz {
namespace {

// All but the identifiers, which are fresh for every rule read.
bool isSame(const Config& a, const Config& b) {
    return a.defaultProfile == b.defaultProfile && a.logFullURLs == b.logFullURLs &&
           std::ranges::equal(a.rules, b.rules, [](const Rule& x, const Rule& y) {
               return x.kind == y.kind && x.match == y.match && x.profile == y.profile &&
                      x.comment == y.comment;
           });
}

// Whether the text is JSON to the other parser; absent where it has limits of its own.
std::optional<bool> isJson(std::string_view text) {
    static simdjson::dom::parser parser;
    if (text.starts_with("\uFEFF")) text.remove_prefix(3);  // some versions skip it
    const auto error = parser.parse(text.data(), text.size()).error();
    if (error == simdjson::DEPTH_ERROR || error == simdjson::NUMBER_ERROR) {
        return std::nullopt;
    }
    return error == simdjson::SUCCESS;
}

void checkError(const ConfigError& error, std::string_view json) {
    const bool isSyntax = error.kind == ConfigError::Kind::syntax;
    require(isSyntax || error.kind == ConfigError::Kind::value, "the file is not to blame");
    const auto breaks = static_cast<std::size_t>(std::ranges::count(json, '\n'));
    require(error.line >= 1 && error.line <= breaks + 1, "the line is one of the text's");
    require(!isSyntax || (error.column >= 1 && error.column <= json.size() + 1),
            "the column is one of the text's");
    require(!error.detail.empty() && Text::validUtf8(error.detail) == error.detail,
            "the words can be shown");
    require(error.detail.size() < 300, "the words are short");
    if (isSyntax && error.detail != "a number is too large") {
        require(!isJson(json).value_or(false), "it is no JSON to another parser");
    }
}

}  // namespace

void run(std::string_view input) {
    const auto config = Config::decode(input);
    if (!config) return checkError(config.error(), input);
    require(isJson(input).value_or(true), "what is read is JSON to another parser");

    const auto text = config->encode();
    require(text.has_value(), "what was read can be written");
    const auto again = Config::decode(*text);
    require(again && isSame(*config, *again), "it is read again as it was");
    require(again->encode() == text, "it is written again as it was");
    if (!input.starts_with("\uFEFF")) {
        const auto marked = Config::decode("\uFEFF" + std::string(input));
        require(marked && isSame(*config, *marked), "a byte-order mark changes nothing");
    }

    // Moving there and back.
    Config moved = *config;
    for (const Rule& rule : config->rules) {
        moved.moveRule(rule.id, 1);
        moved.moveRule(rule.id, config->rules.front().id);
    }
    const bool hasAll = std::ranges::is_permutation(moved.rules, config->rules);
    require(hasAll, "moving rules loses none");
}

}  // namespace ferrivane::fuzz
