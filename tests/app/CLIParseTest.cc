#include <gtest/gtest.h>

#include "Ferrivane/CLI.h"

namespace ferrivane {
namespace {

using CLI::Command;
using CLI::Commands::Help;
using CLI::Commands::SetDefault;
using CLI::Commands::Status;
using DryRun = CLI::Commands::Test;

TEST(CLIParse, FindsTheCommandAmongTheArguments) {
    const struct {
        const char* name;
        std::vector<std::string> arguments;
        std::optional<Command> command;
    } rows[] = {
        {"nothing", {}, {}},
        {"help", {"--help"}, Help{}},
        {"help in short", {"-h"}, Help{}},
        {"status", {"--status"}, Status{}},
        {"default browser", {"--set-default"}, SetDefault{}},
        {"Chrome as the default browser", {"--restore-default"}, SetDefault{"com.google.Chrome"}},
        {"a link to test", {"--test", "https://a/"}, DryRun{"https://a/", {}}},
        {"a link from somebody",
         {"--test", "https://a/", "--from", "Mail"},
         DryRun{"https://a/", "Mail"}},
        {"the sender first",
         {"--from", "Mail", "--test", "https://a/"},
         DryRun{"https://a/", "Mail"}},

        {"the last command counts", {"--status", "--help"}, Help{}},
        {"the last command counts, the other way round", {"--help", "--status"}, Status{}},
        {"the last of three", {"--help", "--restore-default", "--set-default"}, SetDefault{}},
        {"a test wins over a command before it", {"--help", "--test", "x"}, DryRun{"x", {}}},
        {"a test wins over a command after it", {"--test", "x", "--status"}, DryRun{"x", {}}},
        {"the last link counts", {"--test", "x", "--test", "y"}, DryRun{"y", {}}},
        {"the last sender counts", {"--from", "a", "--test", "x", "--from", "b"}, DryRun{"x", "b"}},

        {"a test without a link", {"--test"}, DryRun{"", {}}},
        {"a test without a link, from somebody", {"--from", "Mail", "--test"}, DryRun{"", "Mail"}},
        {"a test without a link after a test", {"--test", "x", "--test"}, DryRun{"", {}}},
        {"a test without a link after a command", {"--status", "--test"}, DryRun{"", {}}},
        {"an empty link", {"--test", ""}, DryRun{"", {}}},
        {"an empty link after a link", {"--test", "x", "--test", ""}, DryRun{"", {}}},
        {"a link that looks like an option", {"--test", "--status"}, DryRun{"--status", {}}},
        {"a link that looks like its own option", {"--test", "--test"}, DryRun{"--test", {}}},
        {"a link that looks like the sender's option",
         {"--test", "--from", "Mail"},
         DryRun{"--from", {}}},
        {"a sender that looks like an option",
         {"--test", "x", "--from", "--status"},
         DryRun{"x", "--status"}},
        {"an empty sender", {"--test", "x", "--from", ""}, DryRun{"x", ""}},
        {"no sender behind its option", {"--test", "x", "--from"}, DryRun{"x", {}}},
        {"no sender behind its option forgets an earlier one",
         {"--from", "a", "--test", "x", "--from"},
         DryRun{"x", {}}},
        {"a sender alone", {"--from", "Mail"}, {}},
        {"a sender's option alone", {"--from"}, {}},

        {"unknown arguments alone", {"-x", "--agent", "https://a/"}, {}},
        {"unknown arguments around a command", {"-x", "--status", "https://a/"}, Status{}},
        {"unknown arguments around a test", {"-x", "--test", "x", "y"}, DryRun{"x", {}}},
        {"the agent beside a command", {"--agent", "--status"}, Status{}},
        {"an empty argument", {""}, {}},
        {"options are compared exactly",
         {"--HELP", "-H", "--statu", "--status ", "--test=x", "test"},
         {}},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(CLI::parse(row.arguments) == row.command, true) << row.name;
    }
}

}  // namespace
}  // namespace ferrivane
