// What the launcher's tests have in common.
#pragma once

#include <string>
#include <vector>

#include "Ferrivane/ChromeLauncher.h"
#include "tests/app/AppTest.h"

namespace ferrivane::test {

class LauncherTest : public AppTest {
  protected:
    static constexpr pid_t kChrome = 42;  // the running browser, where one runs
    static constexpr const char* kLink = "https://work.example/a";

    // Outcomes are collected in `outcomes`: the success text, or "error: " and the description.
    void open(const ChromeLauncher::Request& request);
    // Opens and lets everything that follows happen; the one outcome.
    std::string outcomeOf(const ChromeLauncher::Request& request);

    std::vector<std::string> outcomes;
};

// One link, in whatever profile Chrome chooses.
inline ChromeLauncher::Request linkAlone(std::string url) {
    return {.url = std::move(url)};
}

}  // namespace ferrivane::test
