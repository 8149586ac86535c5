// What the router's tests have in common.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Ferrivane/Router.h"
#include "tests/app/AppTest.h"

namespace ferrivane::test {

class RouterTest : public AppTest {
  protected:
    // Until a test says otherwise: no rules, two profiles.
    RouterTest() {
        writeRules("{}");
        writeCatalogue({{"Default", "Home", {}, {}}, {"Profile 2", "Work", "me@work.example", {}}});
    }

    // Routes, lets everything that follows happen, and returns what was logged.
    std::vector<std::string> logOf(const std::string& url,
                                   const std::optional<Opener>& opener = std::nullopt) {
        router.route(url, opener, std::nullopt,
                     [this](bool opened) { outcomes.push_back(opened); });
        fake.mainLoop.runUntilIdle();
        return newLogLines();
    }

    std::vector<bool> outcomes;
    Router router{fake.platform(), log, rulesFile};
};

}  // namespace ferrivane::test
