// Applications on a private X server, and what is told of those that run.
#pragma once

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/linux/Display.h"
#include "tests/linux/Entries.h"
#include "tests/linux/Program.h"
#include "tests/support/TempDir.h"

namespace ferrivane::test {

class RunningCase : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(display.isThere()) << "Xvfb does not run";
        ASSERT_TRUE(manager.isThere()) << "openbox does not run";
    }

    Variables variables(const Variables& more = {}) const {
        Variables result = more;
        result.merge(display.variables());
        result.merge(Variables{{"XDG_DATA_HOME", dir.path().string()}});
        return result;
    }
    // A line for each: name, identifier, path, what a rule must say, process.
    std::string running(const Variables& more = {},
                        const std::string& probe = ADAPTER_PROBE) const {
        return outputOf({probe, "running"}, variables(more));
    }
    // The window manager takes its time to list a window, and to forget it.
    ::testing::AssertionResult becomes(const std::string& expected) const {
        std::string last;
        const bool isSo = waitUntil([&] { return (last = running()) == expected + "\n"; });
        return isSo ? ::testing::AssertionSuccess() : ::testing::AssertionFailure() << last;
    }
    // A copy of a program, with an entry; of the one that shows windows.
    std::string windowed(const std::string& name) const { return install(WINDOW_STAND_IN, name); }
    std::string install(const char* program, const std::string& name) const {
        const std::string path = copyProgram(program, dir / "bin" / own(name));
        writeEntry(entryOf(name), name, path);
        return path;
    }
    // Other processes of this test, at work at the same time, have units that this one sees.
    static std::string own(const std::string& name) { return name + std::to_string(::getpid()); }
    static std::string idOf(const std::string& name) { return "org.example." + own(name); }
    std::filesystem::path entryOf(const std::string& name) const {
        return dir / "applications" / (idOf(name) + ".desktop");
    }
    static std::string line(const std::string& name, const std::string& path, pid_t process) {
        const std::string id = idOf(name);
        return name + "|" + id + "|" + path + "|" + id + "|" + std::to_string(process);
    }
    // What a link that `command` sends says of its sender, before its process.
    std::string openerOf(std::vector<std::string> command) const {
        command.insert(command.end(), {ADAPTER_PROBE, "opener"});
        const std::string text = outputOf(command, variables());
        return text.substr(0, text.find('\n'));
    }

    const TempDir dir;
    const Display display;
    const WindowManager manager{display};
};

}  // namespace ferrivane::test
