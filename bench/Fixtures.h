// What the measurements have in common.
#pragma once

#include <string>

#include "core/Config.h"

namespace ferrivane::bench {

// Chrome's catalogue of one profile in a file of a megabyte.
inline std::string localState() {
    std::string text = R"({"profile":{"info_cache":{"Default":{"name":"Home"}}},"experiments":[0)";
    for (int i = 0; text.size() < 1'000'000; ++i) {
        text += R"(,{"name":"experiment-)" + std::to_string(i) + R"(","weight":0.25,"on":true})";
    }
    return text + "]}";
}

// 200 rules, none of which fits.
inline std::string rules() {
    Config config;
    for (int i = 0; i < 200; ++i) {
        const std::string number = std::to_string(i);
        config.rules.emplace_back(Rule::kAllKinds[static_cast<std::size_t>(i) % 3],
                                  "client-" + number + ".example", "Client " + number);
    }
    return *config.encode();
}

}  // namespace ferrivane::bench
