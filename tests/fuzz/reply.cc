// The messages between two starts of Chrome: what the running one answers, and what it is sent.
#include "core/ChromeSingletonMessage.h"
#include "core/support/Text.h"
#include "tests/fuzz/Fuzz.h"

namespace ferrivane::fuzz {
namespace {

using namespace ChromeSingletonMessage;

void checkReply(std::string_view bytes) {
    const Reply reply = Reply::from(bytes);
    require(reply == Reply::from("\r\n " + std::string(bytes) + "\t"), "blanks do not matter");
    require(reply.kind == Reply::Kind::unexpected || reply.text.empty(), "a known one has no text");
    require(reply.text == Text::validUtf8(Text::trim(reply.text)), "the text can be shown");
    if (reply.kind == Reply::Kind::unexpected) {
        require(Reply::from(reply.text) == reply, "the text is the reply");
        require(reply.description().starts_with("unexpected(\""), "it is called unexpected");
    } else {
        require(bytes.find("ACK") != std::string_view::npos ||
                    bytes.find("SHUTDOWN") != std::string_view::npos,
                "nothing is taken for an answer that is not there");
    }
}

// The items are lines here.
void checkMessage(std::string_view text) {
    std::vector<std::string> items = splitAt(text, '\n');
    for (std::string& item : items) std::erase(item, '\0');
    const std::vector<std::string> argv(items.begin() + 1, items.end());
    const std::string message = encode(items[0], argv);
    items.insert(items.begin(), "START");
    require(splitAt(message, '\0') == items, "Chrome splits it into what it was made of");
}

}  // namespace

void run(std::string_view input) {
    checkReply(input);
    checkMessage(input);
}

}  // namespace ferrivane::fuzz
