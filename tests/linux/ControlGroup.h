// A control group of the unified hierarchy, below that of this process, as the desktop makes them
// for applications.
#pragma once

#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>

#include <unistd.h>

#include "Ferrivane/linux/Processes.h"
#include "tests/linux/Program.h"

namespace ferrivane::test {

class ControlGroup {
  public:
    // `unit` is a name as "app-org.example.Chat-1.scope". In a folder of its own, for tests may run
    // at the same time.
    explicit ControlGroup(const std::string& unit) {
        const auto root = mountPoint();
        if (!root) return;
        const std::string own = Processes::controlGroup(::getpid()).value_or("/");
        folder_ = *root / own.substr(1) / ("ferrivane-test-" + std::to_string(::getpid())) / unit;
        std::error_code error;
        std::filesystem::create_directories(folder_, error);
        isThere_ = !error;
    }
    // What has run in it has ended.
    ~ControlGroup() {
        for (const auto& folder : {folder_, folder_.parent_path()}) ::rmdir(folder.c_str());
    }
    ControlGroup(const ControlGroup&) = delete;
    ControlGroup& operator=(const ControlGroup&) = delete;

    bool isThere() const { return isThere_; }
    // A command that runs another one in the group; its process is the other one's.
    std::vector<std::string> running(const std::vector<std::string>& command) const {
        std::vector<std::string> result{"sh", "-c", "echo 0 >\"$0/cgroup.procs\" && exec \"$@\"",
                                        folder_};
        result.insert(result.end(), command.begin(), command.end());
        return result;
    }

  private:
    // Of the lines in proc(5)'s mountinfo the one for the unified hierarchy.
    static std::optional<std::filesystem::path> mountPoint() {
        std::ifstream mounts("/proc/self/mountinfo");
        for (std::string line; std::getline(mounts, line);) {
            if (line.find(" - cgroup2 ") == std::string::npos) continue;
            std::istringstream words(line);
            std::string word;
            for (int i = 0; i < 5; ++i) words >> word;
            return word;
        }
        return std::nullopt;
    }

    std::filesystem::path folder_;
    bool isThere_ = false;
};

}  // namespace ferrivane::test
