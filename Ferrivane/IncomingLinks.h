// How links and files reach the program.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace ferrivane::IncomingLinks {

// The links among the operands of the command, in their order. An operand that begins with a URI
// scheme and ":" is a link and stays as it is. One that names an existing file becomes its file
// URL, relative names being looked up in `directory`. Everything else is skipped: options, and what
// could be taken for one by whoever the link is handed to. Links in the program's own scheme are
// requests to the application, not links to open, and are skipped too.
std::vector<std::string> fromOperands(const std::vector<std::string>& operands,
                                      const std::filesystem::path& directory);

// The file URL (RFC 8089) of an absolute path.
std::string fileURL(const std::filesystem::path& path);

}  // namespace ferrivane::IncomingLinks
