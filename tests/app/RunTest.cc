// The process entry. Each case runs in a process of its own, because it changes folder and streams.
#include <functional>
#include <iostream>
#include <sstream>

#include <gmock/gmock.h>

#include "Ferrivane/Run.h"
#include "core/Config.h"
#include "core/Log.h"
#include "tests/app/PrivateHome.h"
#include "tests/support/Child.h"
#include "tests/support/FakePlatform.h"
#include "tests/support/Files.h"
#include "tests/support/TempDir.h"

namespace ferrivane {
namespace {

// Everything that can be seen of a run from outside: each call that matters, the working folder,
// both streams, the status.
std::string seen(const std::vector<std::string>& arguments,
                 const std::function<void(test::FakePlatform&)>& prepare = {}) {
    return test::inChild([&] {
        test::FakePlatform fake;
        if (prepare) prepare(fake);
        const std::ostringstream out;
        const std::ostringstream err;
        std::cout.rdbuf(out.rdbuf());
        std::cerr.rdbuf(err.rdbuf());
        std::filesystem::remove(Config::fileURL());
        const int status = run(arguments, fake.platform());
        std::string text;
        for (const std::string& call : fake.calls.of(
                 {"caller.", "browser.launch", "session.", "userInterface.showSettings"})) {
            text += call + "\n";
        }
        const std::string folder = std::filesystem::current_path();
        return text + "folder: " + (folder == "/" ? folder : "unchanged") +
               "\nout: " + out.str().substr(0, out.str().find('\n')) + "\nerr: " + err.str() +
               "\nstatus: " + std::to_string(status);
    });
}

TEST(Run, LinksAreOpenedFromTheRootFolderBySomebodyDetached) {
    EXPECT_EQ(seen({"https://a/"}),
              "caller.detach\n"
              "caller.opener\n"
              "browser.launch /apps/google-chrome.desktop [--profile-directory=Default] "
              "[https://a/]\n"
              "caller.release 0\n"
              "folder: /\nout: \nerr: \nstatus: 0");
}

TEST(Run, LinkBesideAnOptionIsOpenedAllTheSame) {
    for (const char* option : {"--agent", "-x", "--no-such-option", ""}) {
        const std::string before = seen({option, "https://a/"});
        const std::string after = seen({"https://a/", option});
        EXPECT_EQ(before, after) << option;
        EXPECT_NE(before.find("[https://a/]\ncaller.release 0\n"), std::string::npos) << before;
    }
}

TEST(Run, CommandWinsOverLinks) {
    EXPECT_EQ(seen({"https://a/", "--help"}),
              "folder: unchanged\n"
              "out: Ferrivane — opens links in the right Google Chrome profile.\n"
              "err: \nstatus: 0");
    EXPECT_EQ(seen({"--agent", "--test", "", "https://a/"}),
              "folder: unchanged\n"
              "out: Ferrivane — opens links in the right Google Chrome profile.\n"
              "err: \nstatus: 2");
}

constexpr const char* kQuietEnd = "folder: /\nout: \nerr: \nstatus: 0";

TEST(Run, WithoutALinkItIsTheApplication) {
    const std::vector<std::vector<std::string>> rows{
        {}, {"-x"}, {"no-such-file"}, {"--from", "Mail"}, {"--Agent"}, {"--agent=1"}};
    for (const auto& arguments : rows) {
        EXPECT_EQ(seen(arguments),
                  std::string("session.join\nuserInterface.showSettings\n") + kQuietEnd)
            << (arguments.empty() ? "no argument" : arguments[0]);
    }
}

TEST(Run, AsAgentItShowsNothing) {
    const std::vector<std::vector<std::string>> rows{
        {"--agent"}, {"-x", "--agent"}, {"--agent", "--agent"}, {"no-such-file", "--agent"}};
    for (const auto& arguments : rows) {
        EXPECT_EQ(seen(arguments), std::string("session.join\n") + kQuietEnd);
    }
}

TEST(Run, ASecondStartIsTheReopenEventOfTheFirst) {
    const auto elsewhere = [](test::FakePlatform& fake) {
        fake.session.place = Session::Place::elsewhere;
        fake.activationToken = "token";
    };
    EXPECT_EQ(seen({}, elsewhere),
              std::string("session.join\nsession.reopenResident token\n") + kQuietEnd);
    EXPECT_EQ(seen({"--agent"}, elsewhere), std::string("session.join\n") + kQuietEnd)
        << "of two agents one stays, and nobody asked for the settings";
}

TEST(Run, ALinkOfOurOwnGoesToTheResidentApplication) {
    for (const char* link : {"ferrivane:", "ferrivane://settings", "FERRIVANE:x"}) {
        EXPECT_EQ(seen({link}), std::string("session.reopenResident\n") + kQuietEnd) << link;
    }
    EXPECT_EQ(seen({"ferrivane:", "--agent"}), std::string("session.reopenResident\n") + kQuietEnd);
}

TEST(Run, WithoutASessionALinkOfOurOwnShowsTheSettingsHere) {
    const auto alone = [](test::FakePlatform& fake) {
        fake.session.place = Session::Place::alone;
        fake.session.reopens = false;
        fake.activationToken = "token";
    };
    EXPECT_EQ(seen({"ferrivane:"}, alone),
              std::string("session.reopenResident token\nsession.join\n"
                          "userInterface.showSettings token\n") +
                  kQuietEnd);
}

TEST(Run, BesideLinksOneOfOurOwnDoesNotMakeItTheApplication) {
    EXPECT_EQ(seen({"https://a/", "ferrivane:"}),
              "caller.detach\n"
              "caller.opener\n"
              "browser.launch /apps/google-chrome.desktop [--profile-directory=Default] "
              "[https://a/]\n"
              "caller.release 0\n"
              "session.reopenResident\n"
              "folder: /\nout: \nerr: \nstatus: 0");
}

TEST(Run, BesideLinksOneOfOurOwnThatNobodyTakesIsToldInTheLog) {
    EXPECT_EQ(test::inChild([] {
                  test::FakePlatform fake;
                  fake.session.reopens = false;
                  const int status = run({"ferrivane:", "https://a/"}, fake.platform());
                  Log::shared().flush(std::chrono::seconds(100));
                  const std::string log = test::readText(Log::shared().fileURL);
                  std::filesystem::remove(Log::shared().fileURL);
                  const bool isTold =
                      log.find("[WARN] cannot show the settings: no session bus\n") !=
                      std::string::npos;
                  return (isTold ? "told, " : log) + std::to_string(status);
              }),
              "told, 0");
}

TEST(Run, FileIsNamedAbsolutelyBeforeTheFolderChanges) {
    const test::TempDir dir;
    test::writeText(dir / "page.html", "");
    const std::string text = test::inChild([&] {
        std::filesystem::current_path(dir.path());
        test::FakePlatform fake;
        run({"page.html"}, fake.platform());
        return fake.browser.given ? fake.browser.given->switches.back() : "not launched";
    });
    EXPECT_EQ(text, "file://" + dir.path().string() + "/page.html");
}

TEST(Run, LinksAreLoggedInTheLogOfTheProcess) {
    const std::string text = test::inChild([] {
        test::FakePlatform fake;
        run({"https://logged.example/"}, fake.platform());
        const std::filesystem::path& file = Log::shared().fileURL;
        return (file.string().starts_with(test::privateHome().string()) ? "" : "not private: ") +
               test::readText(file);
    });
    EXPECT_THAT(text, ::testing::StartsWith("20"));
    EXPECT_THAT(text, ::testing::HasSubstr(" [INFO] https://logged.example/… from "));
}

}  // namespace
}  // namespace ferrivane
