#include <filesystem>

#include <gtest/gtest.h>

#include "core/ChromeSingleton.h"
#include "core/port/Paths.h"
#include "tests/support/Child.h"
#include "tests/support/Files.h"
#include "tests/support/Outcome.h"
#include "tests/support/TempDir.h"

namespace ferrivane {
namespace {

using ChromeSingleton::SingletonError;

constexpr const char* kNoSocket = "no singleton socket in Chrome's user data directory";
constexpr const char* kMismatch = "singleton cookie does not match";

class SingletonSocketPath : public ::testing::Test {
  protected:
    SingletonSocketPath() {
        std::filesystem::create_directory(userData);
        std::filesystem::create_directory(socketFolder);
    }
    void link(const std::filesystem::path& folder, const char* name, const std::string& text) {
        std::filesystem::remove_all(folder / name);
        std::filesystem::create_symlink(text, folder / name);
    }
    void linkAll() {
        link(userData, "SingletonSocket", socket);
        link(userData, "SingletonCookie", "123");
        link(socketFolder, "SingletonCookie", "123");
    }
    std::string outcome() const { return test::outcomeOf(ChromeSingleton::socketPath(userData)); }

    const test::TempDir dir;
    const std::filesystem::path userData = dir / "user-data";
    const std::filesystem::path socketFolder = dir / "socket";
    const std::string socket = (socketFolder / "SingletonSocket").string();
};

TEST_F(SingletonSocketPath, IsWhatTheLinkSaysWhetherOrNotItExists) {
    linkAll();
    EXPECT_EQ(ChromeSingleton::socketPath(userData), socket);
    link(userData, "SingletonSocket", (socketFolder / "other name").string());
    EXPECT_EQ(ChromeSingleton::socketPath(userData), (socketFolder / "other name").string());
}

TEST_F(SingletonSocketPath, LinksAreReadNotFollowed) {
    linkAll();
    std::filesystem::create_directory_symlink(socketFolder, dir / "linked");
    const std::string throughLink = (dir / "linked/SingletonSocket").string();
    link(userData, "SingletonSocket", throughLink);
    EXPECT_EQ(ChromeSingleton::socketPath(userData), throughLink);
}

TEST_F(SingletonSocketPath, WithoutASocketLinkThereIsNoSocket) {
    EXPECT_EQ(outcome(), kNoSocket);
    linkAll();
    std::filesystem::remove(userData / "SingletonSocket");
    EXPECT_EQ(outcome(), kNoSocket) << "with a cookie";
    test::writeText(userData / "SingletonSocket", socket);
    EXPECT_EQ(outcome(), kNoSocket) << "a file in the link's place";
    EXPECT_EQ(test::outcomeOf(ChromeSingleton::socketPath(dir / "none")), kNoSocket);
}

TEST_F(SingletonSocketPath, TheCookiesMustBeTheSame) {
    const auto check = [&](const char* name, auto change) {
        linkAll();
        change();
        EXPECT_EQ(outcome(), kMismatch) << name;
    };
    check("none in the user data directory",
          [&] { std::filesystem::remove(userData / "SingletonCookie"); });
    check("none beside the socket",
          [&] { std::filesystem::remove(socketFolder / "SingletonCookie"); });
    check("one character differs", [&] { link(socketFolder, "SingletonCookie", "124"); });
    check("one character less", [&] { link(userData, "SingletonCookie", "12"); });
    check("case differs", [&] {
        link(userData, "SingletonCookie", "a");
        link(socketFolder, "SingletonCookie", "A");
    });
    check("a file beside the socket", [&] {
        std::filesystem::remove(socketFolder / "SingletonCookie");
        test::writeText(socketFolder / "SingletonCookie", "123");
    });
    check("socket in another folder",
          [&] { link(userData, "SingletonSocket", (dir / "elsewhere/SingletonSocket").string()); });
}

TEST_F(SingletonSocketPath, ThatMuchAndNoMoreIsAskedOfTheCookies) {
    linkAll();
    for (const char* text : {"x", "/", "..", "123/", "é\n\xFF"}) {
        link(userData, "SingletonCookie", text);
        link(socketFolder, "SingletonCookie", text);
        EXPECT_EQ(outcome(), "ok") << text;
    }
}

TEST_F(SingletonSocketPath, TheUserDataDirectoryIsThatOfTheLocatedBrowser) {
    EXPECT_EQ(test::inChild([&] {
                  Paths::setChromeUserDataDirectory("/somewhere");
                  return ChromeSingleton::userDataDirectory().string();
              }),
              "/somewhere");
}

TEST(SingletonError, EachHasItsDescription) {
    using enum SingletonError::Kind;
    using ChromeSingletonMessage::Reply;
    const struct {
        SingletonError error;
        const char* description;
    } rows[] = {
        {{.kind = pathTooLong, .path = "/x y"}, "socket path too long: /x y"},
        {{.kind = messageTooLong, .length = 32769},
         "message of 32769 bytes exceeds Chrome's limit"},
        {{.kind = connectFailed, .code = ECONNREFUSED}, "connect failed: Connection refused"},
        {{.kind = connectFailed, .code = ENOENT}, "connect failed: No such file or directory"},
        {{.kind = writeFailed, .code = EPIPE}, "write failed: Broken pipe"},
        {{.kind = refused, .reply = Reply::from("SHUTDOWN")}, "Chrome answered shutdown"},
        {{.kind = refused, .reply = Reply::from("no \"way\"")},
         R"(Chrome answered unexpected("no \"way\""))"},
        {{.kind = noSocket}, kNoSocket},
        {{.kind = cookieMismatch}, kMismatch},
        {{.kind = noReply}, "Chrome did not answer"},
    };
    for (const auto& row : rows) EXPECT_EQ(row.error.description(), row.description);
}

}  // namespace
}  // namespace ferrivane
