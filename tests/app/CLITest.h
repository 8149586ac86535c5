// What the tests of the command line have in common.
#pragma once

#include <sstream>
#include <string>

#include "Ferrivane/CLI.h"
#include "core/Config.h"
#include "core/port/Paths.h"
#include "tests/app/AppTest.h"
#include "tests/support/Files.h"

namespace ferrivane::test {

class CLITest : public AppTest {
  protected:
    struct Seen {
        std::string out;
        std::string err;
        int status = 0;
        bool operator==(const Seen&) const = default;
        friend std::ostream& operator<<(std::ostream& stream, const Seen& seen) {
            return stream << seen.out << "err: " << seen.err << "\nstatus: " << seen.status;
        }
    };

    // No rules file yet, and none for the next test of this process.
    CLITest() {
        std::filesystem::create_directories(Config::fileURL().parent_path());
        removeOwnRules();
    }
    ~CLITest() override { removeOwnRules(); }

    static void removeOwnRules() {
        std::error_code ignored;
        std::filesystem::remove(Config::fileURL(), ignored);
    }

    // The file that the commands read.
    static void writeOwnRules(std::string_view json) { writeText(Config::fileURL(), json); }

    Seen seen(const CLI::Command& command) {
        std::ostringstream out;
        std::ostringstream err;
        const int status = CLI::run(command, fake.platform(), out, err);
        return {out.str(), err.str(), status};
    }

    static std::string logPath() { return (Paths::logDirectory() / Log::kFileName).string(); }
    static std::string rulesPath() { return Config::fileURL().string(); }
};

}  // namespace ferrivane::test
