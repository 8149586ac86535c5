#include "tests/app/PrivateHome.h"

#include <memory>

#include <gtest/gtest.h>
#include <stdlib.h>

#include "tests/support/TempDir.h"
#ifdef __APPLE__
#include "tests/support/FoundationHome.h"
#endif

namespace ferrivane::test {
namespace {

std::unique_ptr<TempDir> home;  // goes away with the process
#ifdef __APPLE__
const std::filesystem::path foundation = foundationHome();
#endif

class PrivateHome : public ::testing::Environment {
  public:
    void SetUp() override {
        if (home) return;  // the tests are being repeated, and some folders are found out once
        home = std::make_unique<TempDir>();
        // NOLINTBEGIN(concurrency-mt-unsafe)
        for (const char* variable : {"XDG_DATA_HOME", "XDG_RUNTIME_DIR", "APP_SANDBOX_CONTAINER_ID",
                                     "CHROME_USER_DATA_DIR", "CHROME_CONFIG_HOME"}) {
            ::unsetenv(variable);
        }
        ::setenv("HOME", home->path().c_str(), 1);
        ::setenv("XDG_CONFIG_HOME", (*home / "config").c_str(), 1);
        ::setenv("XDG_STATE_HOME", (*home / "state").c_str(), 1);
        // NOLINTEND(concurrency-mt-unsafe)
    }
};

// The framework owns it.
const ::testing::Environment* const registered =
    ::testing::AddGlobalTestEnvironment(new PrivateHome);

}  // namespace

std::filesystem::path privateHome() {
#ifdef __APPLE__
    return foundation;
#else
    return home->path();
#endif
}

}  // namespace ferrivane::test
