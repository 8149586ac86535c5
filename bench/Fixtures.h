// What the links of the measurements meet on their road.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include <sys/types.h>

#include "core/Config.h"
#include "tests/support/TempDir.h"

namespace ferrivane::bench {

inline constexpr std::size_t kRules = 200;
inline constexpr std::size_t kCatalogueBytes = 650'000;
inline constexpr int kEntries = 150;
inline const std::string kLink = "https://somewhere.example/a/path?and=a&query";

// Chrome's catalogue of ten profiles in a file of about so many bytes.
std::string localState(std::size_t bytes);

// Rules of all kinds in turn, none of which fits.
Config rules(std::size_t count);

// Desktop entries of 0.3 to 10 kB, such as those of programs that are translated into few or many
// languages.
void writeEntries(const std::filesystem::path& folder, int count);

// A home of its own with rules and desktop entries, in the environment for whatever is started from
// now on, and without a display. The browser in it has yet to be started.
class World {
  public:
    World();
    std::filesystem::path operator/(const char* name) const { return folder_ / name; }

    void install(const std::string& id, const std::filesystem::path& program) const;
    // The browser's folder and what it knows of profiles.
    static void useBrowser(const std::filesystem::path& userDataDirectory);

  private:
    test::TempDir folder_;
};

// Starts a command, whose standard output is `output`; the caller waits for it. One that cannot be
// started ends this program.
pid_t start(std::vector<std::string> command, int output);

// The numbers that a command of the shell prints. Fewer, or a failure, end this program.
std::vector<double> numbersOf(const std::string& command, std::size_t count);

// Runs a command and waits for it. One that fails ends this program. `isSilent`: what it prints is
// lost.
void run(const std::vector<std::string>& command, bool isSilent = false);

// A link's process lives on when its command has ended. From now on such become children of this
// process, and waitForAll waits for every child.
void adoptOrphans();
void waitForAll();

}  // namespace ferrivane::bench
