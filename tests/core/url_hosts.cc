// Prints the host of each link, "-" for none. Links arrive and hosts leave as hexadecimal bytes,
// one per line, because both may hold anything.
#include <charconv>
#include <iostream>
#include <string>

#include "core/support/Url.h"

int main() {
    for (std::string line; std::getline(std::cin, line);) {
        std::string link;
        for (std::size_t i = 0; i + 1 < line.size(); i += 2) {
            unsigned char byte = 0;
            std::from_chars(line.data() + i, line.data() + i + 2, byte, 16);
            link.push_back(static_cast<char>(byte));
        }
        const auto url = ferrivane::Url::parse(link);
        if (!url || !url->host) {
            std::cout << "-\n";
            continue;
        }
        constexpr std::string_view kDigits = "0123456789abcdef";
        for (const char c : *url->host) {
            const auto byte = static_cast<unsigned char>(c);
            std::cout << kDigits[byte >> 4] << kDigits[byte & 15];
        }
        std::cout << '\n';
    }
}
