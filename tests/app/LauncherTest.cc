#include "tests/app/LauncherTest.h"

namespace ferrivane::test {

void LauncherTest::open(const ChromeLauncher::Request& request) {
    ChromeLauncher::open(
        fake.platform(), log, request, [this](const ChromeLauncher::Outcome& outcome) {
            outcomes.push_back(outcome ? *outcome : "error: " + outcome.error().description());
        });
}

std::string LauncherTest::outcomeOf(const ChromeLauncher::Request& request) {
    const std::size_t before = outcomes.size();
    open(request);
    fake.mainLoop.runUntilIdle();
    EXPECT_EQ(outcomes.size(), before + 1) << "the completion is to be called exactly once";
    return outcomes.size() > before ? outcomes.back() : "no outcome";
}

}  // namespace ferrivane::test
