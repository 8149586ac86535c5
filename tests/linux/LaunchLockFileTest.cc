#include <gtest/gtest.h>
#include <unistd.h>

#include "Ferrivane/linux/LaunchLockFile.h"
#include "tests/linux/Program.h"
#include "tests/support/Child.h"
#include "tests/support/Files.h"
#include "tests/support/TempDir.h"

namespace ferrivane {
namespace {

class LaunchLockFileTest : public ::testing::Test {
  protected:
    const test::TempDir dir;
    const std::filesystem::path file = dir / "lock";
    LaunchLockFile lock{file};
    LaunchLockFile other{file};
};

TEST_F(LaunchLockFileTest, OneAtATime) {
    EXPECT_TRUE(lock.tryAcquire());
    EXPECT_FALSE(other.tryAcquire());
    EXPECT_FALSE(lock.tryAcquire()) << "not twice by the same one either";
    lock.release();
    EXPECT_TRUE(other.tryAcquire());
    EXPECT_FALSE(lock.tryAcquire());
    lock.release();
    EXPECT_FALSE(lock.tryAcquire()) << "what it does not hold it cannot release";
    other.release();
    EXPECT_TRUE(lock.tryAcquire());
    EXPECT_EQ(test::modeOf(file), 0600U);
}

TEST_F(LaunchLockFileTest, ItEndsWithTheObject) {
    {
        LaunchLockFile passing(file);
        EXPECT_TRUE(passing.tryAcquire());
        EXPECT_FALSE(lock.tryAcquire());
    }
    EXPECT_TRUE(lock.tryAcquire());
}

TEST_F(LaunchLockFileTest, ItEndsWithTheProcess) {
    {
        const test::Child child([&] {
            while (!other.tryAcquire()) ::usleep(100);
            return ::pause();
        });
        EXPECT_TRUE(test::waitUntil([&] {
            const bool wasFree = lock.tryAcquire();
            lock.release();
            return !wasFree;
        }));
    }
    EXPECT_TRUE(lock.tryAcquire()) << "also by a signal";
}

TEST_F(LaunchLockFileTest, AProgramThatWeStartDoesNotInheritIt) {
    EXPECT_TRUE(lock.tryAcquire());
    const test::Program program({"cat"});
    lock.release();
    EXPECT_TRUE(other.tryAcquire());
}

TEST_F(LaunchLockFileTest, AFileThatCannotBeMadeDoesNotHoldALinkUp) {
    test::writeText(dir / "file", "");
    std::filesystem::create_symlink(dir / "elsewhere", dir / "link");
    for (const auto& path : {dir / "file/lock", dir.path(), dir / "link"}) {
        SCOPED_TRACE(path);
        LaunchLockFile unmakeable(path);
        EXPECT_TRUE(unmakeable.tryAcquire());
        unmakeable.release();
        EXPECT_TRUE(unmakeable.tryAcquire());
    }
    EXPECT_FALSE(std::filesystem::exists(dir / "elsewhere")) << "a link is not followed";
}

TEST_F(LaunchLockFileTest, TheFolderIsMadeWhenMissing) {
    LaunchLockFile first(dir / "state/ferrivane/lock");
    LaunchLockFile second(dir / "state/ferrivane/lock");
    EXPECT_TRUE(first.tryAcquire());
    EXPECT_FALSE(second.tryAcquire());
    EXPECT_EQ(test::modeOf(dir / "state"), 0700U);
}

TEST_F(LaunchLockFileTest, WhereItLies) {
    const auto pathWith = [&](const std::optional<std::string>& runtime) {
        return test::inChild([&] {
            const test::ScopedVariable variable("XDG_RUNTIME_DIR", runtime);
            const test::ScopedVariable state("XDG_STATE_HOME", "/state");
            return LaunchLockFile::defaultPath().string();
        });
    };
    EXPECT_EQ(pathWith("/run/user/1000"), "/run/user/1000/ferrivane-launch.lock");
    for (const auto& none : {std::optional<std::string>(), std::optional<std::string>(""),
                             std::optional<std::string>("relative")}) {
        EXPECT_EQ(pathWith(none), "/state/ferrivane/ferrivane-launch.lock");
    }
}

}  // namespace
}  // namespace ferrivane
