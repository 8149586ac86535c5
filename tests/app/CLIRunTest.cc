#include <gmock/gmock.h>

#include "core/port/Paths.h"
#include "tests/app/CLITest.h"

namespace ferrivane {
namespace {

using ::testing::IsEmpty;

class CLIRun : public test::CLITest {
  protected:
    static std::string usageOf(const std::string& agentLine, const std::string& defaultLine) {
        return "Ferrivane — opens links in the right Google Chrome profile.\n"
               "\n"
               "Usage:\n"
               "  Ferrivane                       " +
               agentLine +
               "\n"
               "  Ferrivane --test <url> [--from <app>]\n"
               "                                  show which profile a URL would open in; <app> is "
               "a bundle id,\n"
               "                                  app name or a substring of the app path, e.g. "
               "com.tdesktop.Telegram\n"
               "  Ferrivane --status              config path, Chrome profiles, current default "
               "browser\n"
               "  Ferrivane --set-default         " +
               defaultLine +
               "\n"
               "  Ferrivane --restore-default     make Google Chrome the default browser again\n"
               "  Ferrivane --help\n"
               "\n"
               "Config: " +
               rulesPath() +
               "\n"
               "Log:    " +
               logPath() + "\n";
    }
    static std::string usageOnLinux() {
        return usageOf("run as the background agent (what the desktop starts for a link)",
                       "make Ferrivane the default browser");
    }
};

TEST_F(CLIRun, HelpIsTheUsageInTheDesktopsWords) {
    EXPECT_EQ(seen(CLI::Commands::Help{}), (Seen{usageOnLinux(), "", 0}));
    fake.desktop = Desktop::macOS;
    EXPECT_EQ(seen(CLI::Commands::Help{}),
              (Seen{usageOf("run as the background agent (what macOS launches for a link)",
                            "make Ferrivane the default browser (macOS asks you to confirm)"),
                    "", 0}));
}

TEST_F(CLIRun, TestWithoutALinkIsTheUsageAndAStatusOfItsOwn) {
    EXPECT_EQ(seen(CLI::Commands::Test{"", {}}), (Seen{usageOnLinux(), "", 2}));
    EXPECT_EQ(seen(CLI::Commands::Test{"", "Mail"}), (Seen{usageOnLinux(), "", 2}));
}

TEST_F(CLIRun, CommandsLeaveNoLogAndNoRules) {
    std::filesystem::remove_all(Paths::logDirectory());
    seen(CLI::Commands::Help{});
    seen(CLI::Commands::Test{"https://a/", {}});
    seen(CLI::Commands::Status{});
    EXPECT_FALSE(std::filesystem::exists(Paths::logDirectory()));
    EXPECT_FALSE(std::filesystem::exists(Config::fileURL()));
    EXPECT_THAT(fake.calls.of({"browser.launch", "caller.", "dialogs.", "launchLock."}), IsEmpty());
}

}  // namespace
}  // namespace ferrivane
