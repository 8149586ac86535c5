// Every test of this program starts without anything of the session it runs in, and may leave no
// process behind.
#include <cstdlib>
#include <memory>
#include <string>

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "Ferrivane/linux/Processes.h"
#include "tests/linux/Program.h"
#include "tests/support/Files.h"
#include "tests/support/TempDir.h"

namespace ferrivane::test {
namespace {

bool isOfTheSession(const std::string& name) {
    for (const char* prefix : {"XDG_", "LC_", "LANG", "CHROME_", "GIO_", "DBUS_", "GTK_"}) {
        if (name.starts_with(prefix)) return true;
    }
    for (const char* whole : {"DISPLAY", "WAYLAND_DISPLAY", "DESKTOP_STARTUP_ID", "BROWSER",
                              "APPIMAGE", "APPDIR", "HOME"}) {
        if (name == whole) return true;
    }
    return false;
}

// The children of this process that still live, by their names; they are ended.
std::string endedChildren() {
    std::string names;
    for (const std::string& name : namesIn("/proc")) {
        if (name.find_first_not_of("0123456789") != std::string::npos) continue;
        const pid_t process = std::stoi(name);
        const auto status = Processes::status(process);
        if (!status || status->parent != ::getpid() || status->state == 'Z') continue;
        names += " " + status->command;
        ::kill(process, SIGKILL);
    }
    return names;
}

class CleanEnvironment : public ::testing::Environment {
    void SetUp() override {
        root_ = std::make_unique<TempDir>();
        std::vector<std::string> names;
        for (char** variable = environ; *variable != nullptr; ++variable) {
            const std::string text = *variable;
            names.push_back(text.substr(0, text.find('=')));
        }
        for (const std::string& name : names) {
            if (isOfTheSession(name)) ::unsetenv(name.c_str());  // NOLINT(concurrency-mt-unsafe)
        }
        set("HOME", "home");
        set("XDG_CONFIG_HOME", "config");
        set("XDG_DATA_HOME", "data");
        set("XDG_DATA_DIRS", "shared-data");
        set("XDG_STATE_HOME", "state");
        set("XDG_CACHE_HOME", "cache");
        set("XDG_RUNTIME_DIR", "run");
        // Orphans come to this process, so that none is overlooked.
        ::prctl(PR_SET_CHILD_SUBREAPER, 1);
    }

    void TearDown() override {
        const auto collected = [] {
            pid_t child = 0;
            do child = ::waitpid(-1, nullptr, WNOHANG);
            while (child > 0);
            return child < 0;
        };
        if (!waitUntil(collected)) {
            ADD_FAILURE() << "still running:" << endedChildren();
            waitUntil(collected);
        }
        root_.reset();
    }

    void set(const char* variable, const char* folder) {
        const std::filesystem::path path = *root_ / folder;
        std::filesystem::create_directory(path);
        std::filesystem::permissions(path, std::filesystem::perms::owner_all);
        ::setenv(variable, path.c_str(), 1);  // NOLINT(concurrency-mt-unsafe)
    }

    std::unique_ptr<TempDir> root_;
};

const auto* const kRegistered = ::testing::AddGlobalTestEnvironment(new CleanEnvironment);

}  // namespace
}  // namespace ferrivane::test
