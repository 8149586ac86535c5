// What /proc tells of other processes (proc(5)). Every function answers with nothing when the
// process is gone or belongs to somebody else.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace ferrivane::Processes {

struct Status {
    std::string command;  // cut at 15 bytes by the kernel
    char state = '?';     // 'Z' is a zombie
    pid_t parent = 0;
    std::uint64_t startTime = 0;  // in clock ticks since the system's start
};

std::optional<Status> status(pid_t process);

// The running program's file. One that was replaced by an upgrade keeps its name here.
std::optional<std::filesystem::path> executable(pid_t process);

std::vector<std::string> arguments(pid_t process);
std::optional<std::filesystem::path> workingDirectory(pid_t process);

// The environment that the process was started with. Some programs overwrite it with their title.
std::map<std::string, std::string, std::less<>> environment(pid_t process);

// The path of the process's control group in the unified hierarchy, e.g.
// "/user.slice/…/app.slice/app-org.example.App-42.scope".
std::optional<std::string> controlGroup(pid_t process);

}  // namespace ferrivane::Processes
