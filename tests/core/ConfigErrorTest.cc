#include <gtest/gtest.h>

#include "core/Config.h"
#include "tests/support/Outcome.h"

namespace ferrivane {
namespace {

using test::outcomeOf;

struct Row {
    const char* name;
    std::string json;
    const char* description;
};

void check(const std::vector<Row>& rows) {
    for (const Row& row : rows) {
        EXPECT_EQ(outcomeOf(Config::decode(row.json)), row.description) << row.name;
    }
}

TEST(ConfigError, SyntaxErrorsNameLineAndColumn) {
    check({
        {"empty file", "",
         "line 1, column 1: syntax error while parsing value - unexpected end of input; expected "
         "'[', '{', or a literal"},
        {"byte-order mark alone", "\xEF\xBB\xBF",
         "line 1, column 1: syntax error while parsing value - unexpected end of input; expected "
         "'[', '{', or a literal"},
        {"not JSON", "nonsense",
         "line 1, column 2: syntax error while parsing value - invalid literal"},
        {"a comment", "{\n  // mine\n}",
         "line 2, column 3: syntax error while parsing object key - invalid literal; expected "
         "string literal"},
        {"forgotten comma", "{\n  \"defaultProfile\": \"A\"\n  \"rules\": []\n}",
         "line 3, column 9: syntax error while parsing object - unexpected string literal; "
         "expected '}'"},
        {"comma too many", "{\"rules\": [],\n}",
         "line 2, column 1: syntax error while parsing object key - unexpected '}'; expected "
         "string literal"},
        {"cut in the middle", "{\"rules\": [\n{\"kind\":",
         "line 2, column 8: syntax error while parsing value - unexpected end of input; expected "
         "'[', '{', or a literal"},
        {"text after the end", "{}\n\n  x",
         "line 3, column 3: syntax error while parsing value - invalid literal; expected end of "
         "input"},
        {"a second document", "{} {}",
         "line 1, column 4: syntax error while parsing value - unexpected '{'; expected end of "
         "input"},
        {"columns are characters, not bytes", "{\"éé\" 1}",
         "line 1, column 7: syntax error while parsing object separator - unexpected number "
         "literal; expected ':'"},
        {"the byte-order mark takes no column", "\xEF\xBB\xBF{x",
         "line 1, column 2: syntax error while parsing object key - invalid literal; expected "
         "string literal"},
        {"line break in a text", "{\"x\": \"a\nb\"}",
         "line 1, column 9: syntax error while parsing value - invalid string: control character "
         "U+000A (LF) must be escaped to \\u000A or \\n"},
        {"invalid UTF-8", "{\"x\": \"\xFF\"}",
         "line 1, column 8: syntax error while parsing value - invalid string: ill-formed UTF-8 "
         "byte"},
        {"words of ours before invalid UTF-8", "{\"x\": \"'; expected \xFF\"}",
         "line 1, column 20: syntax error while parsing value - invalid string: ill-formed UTF-8 "
         "byte"},
        {"forgotten comma in a list", "{\"x\": [1 2]}",
         "line 1, column 10: syntax error while parsing array - unexpected number literal; "
         "expected "
         "']'"},
        {"half a surrogate pair", R"({"x": "\ud800"})",
         "line 1, column 14: syntax error while parsing value - invalid string: surrogate "
         "U+D800..U+DBFF must be followed by U+DC00..U+DFFF"},
        {"a NUL behind the end", std::string("{\n}\0", 4), "line 2, column 2: a NUL character"},
        {"text behind a NUL", std::string("{}\0{\"rules\": 1}", 15),
         "line 1, column 3: a NUL character"},
        {"a NUL between values", std::string("{\"x\": 1\0}", 9),
         "line 1, column 8: syntax error while parsing object - unexpected end of input; expected "
         "'}'"},
        {"UTF-16", std::string("\xFF\xFE{\0}\0", 6),
         "line 1, column 1: syntax error while parsing value - invalid literal"},
        {"a number beyond all bounds", "{\"x\": 1e400}",
         "line 1, column 11: a number is too large"},
    });
}

TEST(ConfigError, ValueErrorsNameThePlaceAndWhatWasExpected) {
    const std::string rule = R"({"kind": "url", "match": "m", "profile": "p"})";
    check({
        {"top level is an array", "[]", "line 1: top level: expected an object, found an array"},
        {"top level is a number", "\n3", "line 2: top level: expected an object, found a number"},
        {"top level is null", "null", "line 1: top level: expected an object, found null"},
        {"capital letter in a kind",
         "{\n\"rules\": [\n" + rule + ",\n" + rule +
             ",\n{\n\"match\": \"m\",\n\"kind\": \"Host\"}]}",
         R"(line 7: rules[2].kind: "Host" is not one of url, host, app)"},
        {"empty kind", R"({"rules": [{"kind": ""}]})",
         R"(line 1: rules[0].kind: "" is not one of url, host, app)"},
        {"kind missing", R"({"rules": [{"match": "m", "profile": "p"}]})",
         "line 1: rules[0].kind: missing"},
        {"match missing", R"({"rules": [{"kind": "url", "profile": "p"}]})",
         "line 1: rules[0].match: missing"},
        {"profile missing in the second of three rules",
         "{\"rules\": [" + rule + ",\n{\n\"kind\": \"url\",\n\"match\": \"m\"},\n" + rule + "]}",
         "line 2: rules[1].profile: missing"},
        {"all of a rule missing", "{\"rules\": [{}]}", "line 1: rules[0].kind: missing"},
        {"keys of one rule do not count for the next", "{\"rules\": [" + rule + ", {}]}",
         "line 1: rules[1].kind: missing"},
        {"first of equal kinds is wrong", R"({"rules": [{"kind": "x", "kind": "url"}]})",
         R"(line 1: rules[0].kind: "x" is not one of url, host, app)"},
    });
}

TEST(ConfigError, EveryValueOfAWrongTypeIsNamed) {
    const struct {
        const char* place;
        const char* before;
        const char* after;
        const char* expected;
    } places[] = {
        {"defaultProfile", "{\"defaultProfile\":\n", "\n}", "a string"},
        {"rules", "{\"rules\":\n", "\n}", "an array"},
        {"logFullURLs", "{\"logFullURLs\":\n", "\n}", "true or false"},
        {"rules[0]", "{\"rules\": [\n", "\n]}", "an object"},
        {"rules[0].kind", "{\"rules\": [{\"kind\":\n", "\n}]}", "a string"},
        {"rules[0].match", "{\"rules\": [{\"match\":\n", "\n}]}", "a string"},
        {"rules[0].profile", "{\"rules\": [{\"profile\":\n", "\n}]}", "a string"},
        {"rules[0].comment", "{\"rules\": [{\"comment\":\n", "\n}]}", "a string"},
    };
    const struct {
        const char* json;
        const char* found;
        std::string_view accepted;  // what the type is when it is expected
    } values[] = {
        {"3", "a number", "-"},
        {"-4", "a number", "-"},
        {"0.5", "a number", "-"},
        {"true", "a boolean", "true or false"},
        {"\"t\"", "a string", "a string"},
        {"{}", "an object", "an object"},
        {"[]", "an array", "an array"},
    };
    for (const auto& place : places) {
        for (const auto& value : values) {
            if (value.accepted == place.expected) continue;
            const std::string json = std::string(place.before) + value.json + place.after;
            EXPECT_EQ(outcomeOf(Config::decode(json)), std::string("line 2: ") + place.place +
                                                           ": expected " + place.expected +
                                                           ", found " + value.found);
        }
    }
    for (const char* place : {"kind", "match", "profile"}) {
        const std::string json = std::string("{\"rules\": [{\"") + place + "\": null}]}";
        EXPECT_EQ(outcomeOf(Config::decode(json)),
                  std::string("line 1: rules[0].") + place + ": expected a string, found null");
    }
    EXPECT_EQ(outcomeOf(Config::decode("{\"rules\": [null]}")),
              "line 1: rules[0]: expected an object, found null");
}

TEST(ConfigError, LongTextsDoNotReachTheDescription) {
    const std::string megabyte(1'000'000, 'x');
    const std::string kind = std::string(59, 'x') + "é" + megabyte;
    EXPECT_EQ(
        outcomeOf(Config::decode("{\"rules\": [{\"kind\": \"" + kind + "\"}]}")),
        "line 1: rules[0].kind: \"" + std::string(59, 'x') + "…\" is not one of url, host, app");
    for (const std::string& json : {
             "{\"x\": \"" + megabyte,
             "{\"x\": \"'; expected " + megabyte,
             "{\"x\": " + megabyte,
             "{\"x\": 1" + std::string(1'000'000, '0') + "}",
             "{\"" + megabyte + "\": \"\x01\"}",
             "{\"rules\": [{\"" + megabyte + "\": tru}]}",
         }) {
        const std::string description = outcomeOf(Config::decode(json));
        EXPECT_TRUE(description.starts_with("line 1, column ")) << description.substr(0, 200);
        EXPECT_LT(description.size(), 250U) << description.substr(0, 200);
    }
}

TEST(ConfigError, DescriptionsOfTheOtherKinds) {
    const ConfigError file{
        .kind = ConfigError::Kind::file,
        .fileError = {FileError::Operation::open, "/x/rules.json", ENOENT},
    };
    EXPECT_EQ(file.description(), "open failed: No such file or directory");
    EXPECT_EQ((ConfigError{.kind = ConfigError::Kind::encoding, .detail = "a text"}).description(),
              "a text");
    EXPECT_EQ(file, file);
    EXPECT_NE(file, ConfigError());
}

}  // namespace
}  // namespace ferrivane
