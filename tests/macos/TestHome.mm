// The folders and the defaults of the person who runs the tests are out of reach.
#include <filesystem>

#import <Cocoa/Cocoa.h>
#include <gtest/gtest.h>

#include "tests/support/FoundationHome.h"

namespace ferrivane::test {
namespace {

const std::filesystem::path home = foundationHome();

// AppKit's views want an application object, be it one that does not run.
class Application : public ::testing::Environment {
  public:
    void SetUp() override {
        [NSApplication.sharedApplication
            setActivationPolicy:NSApplicationActivationPolicyAccessory];
    }
};

// The framework owns it.
const ::testing::Environment* const registered =
    ::testing::AddGlobalTestEnvironment(new Application);

}  // namespace
}  // namespace ferrivane::test
