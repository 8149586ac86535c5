// A private X server and its window manager, for tests of windows.
#pragma once

#include <optional>
#include <string>

#include <signal.h>

#include "tests/linux/Program.h"

namespace ferrivane::test {

class Display {
  public:
    Display()
        : server_({"Xvfb", "-displayfd", "1", "-screen", "0", "640x480x24", "-nolisten", "tcp",
                   "-noreset"}),
          name_(":" + server_.readLine()) {}
    ~Display() { server_.terminate(); }
    Display(const Display&) = delete;
    Display& operator=(const Display&) = delete;

    bool isThere() const { return name_.size() > 1; }
    Variables variables() const { return {{"DISPLAY", name_}}; }

  private:
    Program server_;
    const std::string name_;
};

class WindowManager {
  public:
    // Its themes are among the system's data.
    explicit WindowManager(const Display& display)
        : program_({"openbox", "--startup", "echo ready"},
                   {*display.variables().begin(), {"XDG_DATA_DIRS", std::nullopt}}) {
        std::string line;
        do line = program_.readLine();
        while (!line.empty() && line != "ready");
        isThere_ = line == "ready";
    }
    ~WindowManager() { program_.terminate(); }
    WindowManager(const WindowManager&) = delete;
    WindowManager& operator=(const WindowManager&) = delete;

    bool isThere() const { return isThere_; }
    void crash() const { ::kill(program_.pid(), SIGKILL); }

  private:
    Program program_;
    bool isThere_ = false;
};

}  // namespace ferrivane::test
