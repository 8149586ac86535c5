// The diagnostic and set-up commands of a terminal. They write to the given streams only, never to
// the log, and create no application.
#pragma once

#include <optional>
#include <ostream>
#include <string>
#include <variant>
#include <vector>

#include "Ferrivane/platform/Platform.h"

namespace ferrivane::CLI {

namespace Commands {

struct Test {
    std::string url;  // empty when none was given
    std::optional<std::string> from;
    bool operator==(const Test&) const = default;
};
struct SetDefault {
    std::optional<std::string> bundleId;  // absent: the program itself
    bool operator==(const SetDefault&) const = default;
};
struct Status {
    bool operator==(const Status&) const = default;
};
struct Help {
    bool operator==(const Help&) const = default;
};

}  // namespace Commands

using Command =
    std::variant<Commands::Test, Commands::SetDefault, Commands::Status, Commands::Help>;

// The command among the arguments (without the program's path); absent when the process is to run
// as the application or to open links. Arguments that are no option are skipped without a message.
std::optional<Command> parse(const std::vector<std::string>& arguments);

// Runs the command and returns the process's exit status.
int run(const Command& command, const Platform& platform, std::ostream& out, std::ostream& err);

std::string usage(Desktop desktop);

}  // namespace ferrivane::CLI
