// Saves a configuration of so many rules to a file, and says so: the program that is put under
// fire. Two calls with unmistakable arguments mark where the save begins and ends.
#include <charconv>
#include <cstdio>
#include <string_view>

#include <unistd.h>

#include "core/Config.h"

int main(int argc, char** argv) {
    int rules = 0;
    const std::string_view count = argc == 3 ? argv[2] : "";
    if (std::from_chars(count.data(), count.data() + count.size(), rules).ec != std::errc()) {
        std::fprintf(stderr, "usage: %s FILE RULES\n", argv[0]);
        return 2;
    }
    ferrivane::Config config;
    for (int i = 0; i < rules; ++i) {
        config.rules.emplace_back(ferrivane::Rule::Kind::host, std::to_string(i) + ".example",
                                  "Profile 1");
    }
    (void)!::access("/save begins", F_OK);
    const auto saved = config.save(argv[1]);
    (void)!::access("/save ends", F_OK);
    if (saved) return 0;
    std::fprintf(stderr, "%s\n", saved.error().description().c_str());
    return 1;
}
