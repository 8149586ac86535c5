// The message:
//
//     message   = "START" 1*item
//     item      = NUL *byte             the working directory, then every element of argv
//
// UTF-8, no count, no escaping, no terminator. The end of the message is the end of what Chrome
// reads at once. The answer is "ACK" or "SHUTDOWN".
#include "core/ChromeSingletonMessage.h"

#include "core/support/Text.h"

namespace ferrivane::ChromeSingletonMessage {

std::string encode(std::string_view currentDirectory, const std::vector<std::string>& argv) {
    std::string message = "START";
    const auto append = [&](std::string_view item) {
        message.push_back('\0');
        message.append(item);
    };
    append(currentDirectory);
    for (const std::string& argument : argv) append(argument);
    return message;
}

Reply Reply::from(std::string_view bytes) {
    const std::string text = Text::validUtf8(bytes);
    const std::string_view trimmed = Text::trim(text);
    if (trimmed == "ACK") return {Kind::ack, {}};
    if (trimmed == "SHUTDOWN") return {Kind::shutdown, {}};
    return {Kind::unexpected, std::string(trimmed)};
}

std::string Reply::description() const {
    switch (kind) {
        case Kind::ack:
            return "ack";
        case Kind::shutdown:
            return "shutdown";
        case Kind::unexpected:
            break;
    }
    std::string quoted;
    for (const char c : text) {
        if (c == '"' || c == '\\') quoted.push_back('\\');
        quoted.push_back(c);
    }
    return "unexpected(\"" + quoted + "\")";
}

}  // namespace ferrivane::ChromeSingletonMessage
