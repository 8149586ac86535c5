#include <gtest/gtest.h>

#include "core/ChromeSingletonMessage.h"

namespace ferrivane {
namespace {

using namespace std::string_literals;
using ChromeSingletonMessage::encode;
using ChromeSingletonMessage::Reply;

TEST(SingletonMessage, IsStartAndEachItemBehindAZeroByte) {
    const struct {
        const char* name;
        std::string directory;
        std::vector<std::string> argv;
        std::string message;
    } rows[] = {
        {"no arguments", "/", {}, "START\0/"s},
        {"empty directory and argument", "", {""}, "START\0\0"s},
        {"empty directory alone", "", {}, "START\0"s},
        {"a link",
         "/",
         {"/opt/chrome", "--profile-directory=Profile 2", "https://a.b/?c#d"},
         "START\0/\0/opt/chrome\0--profile-directory=Profile 2\0https://a.b/?c#d"s},
        {"letters beyond ASCII", "/für", {"é", "😀"}, "START\0/für\0é\0😀"s},
        {"invalid UTF-8, line breaks, quotes", "/", {"\xFF\n\"\\ "}, "START\0/\0\xFF\n\"\\ "s},
        {"a zero byte is not escaped", "/", {"a\0b"s}, "START\0/\0a\0b"s},
        {"an empty last argument", "/", {"a", ""}, "START\0/\0a\0"s},
    };
    for (const auto& row : rows)
        EXPECT_EQ(encode(row.directory, row.argv), row.message) << row.name;
    EXPECT_EQ(encode("/", {std::string(100'000, 'x')}).size(), 100'008U) << "no limit here";
    EXPECT_EQ(ChromeSingletonMessage::maximumLength, 32768U);
}

TEST(SingletonReply, IsAckOrShutdownOrAnythingElse) {
    using enum Reply::Kind;
    const struct {
        const char* name;
        std::string bytes;
        Reply reply;
        std::string description;
    } rows[] = {
        {"ACK", "ACK", {ack, {}}, "ack"},
        {"line feed behind", "ACK\n", {ack, {}}, "ack"},
        {"blank before", " ACK", {ack, {}}, "ack"},
        {"carriage return and line feed", "ACK\r\n", {ack, {}}, "ack"},
        {"lower case", "ack", {unexpected, "ack"}, R"(unexpected("ack"))"},
        {"SHUTDOWN", "SHUTDOWN", {shutdown, {}}, "shutdown"},
        {"SHUTDOWN and a line feed", "SHUTDOWN\n", {shutdown, {}}, "shutdown"},
        {"shutdown in lower case",
         "shutdown",
         {unexpected, "shutdown"},
         R"(unexpected("shutdown"))"},
        {"nothing", "", {unexpected, ""}, R"(unexpected(""))"},
        {"blanks", " \r\n", {unexpected, ""}, R"(unexpected(""))"},
        {"first part", "A", {unexpected, "A"}, R"(unexpected("A"))"},
        {"more", "ACK ACK", {unexpected, "ACK ACK"}, R"(unexpected("ACK ACK"))"},
        {"zero byte behind", "ACK\0"s, {unexpected, "ACK\0"s}, "unexpected(\"ACK\0\")"s},
        {"quotes and backslashes",
         R"( "a\b" )",
         {unexpected, R"("a\b")"},
         R"(unexpected("\"a\\b\""))"},
        {"16 bytes that cut a character",
         "0123456789abcde\xC3",
         {unexpected, "0123456789abcde\uFFFD"},
         "unexpected(\"0123456789abcde\uFFFD\")"},
        {"cut inside three bytes",
         "0123456789abcd\xE2\x82",
         {unexpected, "0123456789abcd\uFFFD"},
         "unexpected(\"0123456789abcd\uFFFD\")"},
        {"ACK and a cut character",
         "ACK\xE2\x82",
         {unexpected, "ACK\uFFFD"},
         "unexpected(\"ACK\uFFFD\")"},
        {"no-break space around", "\u00A0ACK\u2028", {ack, {}}, "ack"},
    };
    for (const auto& row : rows) {
        const Reply reply = Reply::from(row.bytes);
        EXPECT_EQ(reply, row.reply) << row.name;
        EXPECT_EQ(reply.description(), row.description) << row.name;
    }
}

}  // namespace
}  // namespace ferrivane
