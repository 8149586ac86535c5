// How links and files reach the program.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace ferrivane::IncomingLinks {

struct Operands {
    std::vector<std::string> links;  // in the order of the operands
    bool askForSettings = false;     // there is a link in the program's own scheme
};

// An operand that begins with a URI scheme and ":" is a link and stays as it is. One that names an
// existing file becomes its file URL, relative names being looked up in `directory`. Everything
// else is skipped: options, and what could be taken for one by whoever the link is handed to.
Operands fromOperands(const std::vector<std::string>& operands,
                      const std::filesystem::path& directory);

// A link in the program's own scheme, in any case: a request to the application, not to be opened.
bool isOwn(std::string_view url);

// The file URL (RFC 8089) of an absolute path.
std::string fileURL(const std::filesystem::path& path);

}  // namespace ferrivane::IncomingLinks
