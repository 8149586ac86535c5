// What the fuzz targets share. Each target is one source that defines run().
#pragma once

#include <cstdio>
#include <cstdlib>
#include <source_location>
#include <string>
#include <string_view>
#include <vector>

namespace ferrivane::fuzz {

// Does with one input what the target is for. Whatever is not as it must be ends the process.
void run(std::string_view input);

inline void require(bool holds, const char* what,
                    std::source_location where = std::source_location::current()) {
    if (holds) return;
    std::fprintf(stderr, "%s:%u: does not hold: %s\n", where.file_name(),
                 static_cast<unsigned>(where.line()), what);
    std::abort();
}

// The parts between separators: one more than there are of these.
inline std::vector<std::string> splitAt(std::string_view text, char separator) {
    std::vector<std::string> parts;
    for (;;) {
        const std::size_t end = text.find(separator);
        parts.emplace_back(text.substr(0, end));
        if (end == std::string_view::npos) return parts;
        text.remove_prefix(end + 1);
    }
}

}  // namespace ferrivane::fuzz
