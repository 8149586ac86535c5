// Real programs that run during a test and never outlive it.
#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <sys/types.h>

#include "core/support/FileDescriptor.h"

namespace ferrivane::test {

// Variables that a program gets besides this process's own; absent ones are taken away.
using Variables = std::map<std::string, std::optional<std::string>>;

// A child that ends when its standard input does; both standard streams are ours. It is looked for
// on the PATH. A copy of `sender` that runs "cat" is such a program under any name.
class Program {
  public:
    explicit Program(const std::vector<std::string>& command, const Variables& variables = {});
    // Closes its input; what does not end by that in good time is terminated.
    ~Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    pid_t pid() const { return pid_; }
    // The next line of its output, or what is left of it.
    std::string readLine();
    std::string readAll();
    void closeInput() { input_.reset(); }
    // Closes its input and waits: the exit status, or minus the signal that ended it.
    int end();
    // For those that do not end by themselves.
    int terminate();

  private:
    pid_t pid_ = -1;
    FileDescriptor input_;
    FileDescriptor output_;
};

// What a program writes to its standard output until it ends. A failure is added as a last line.
std::string outputOf(const std::vector<std::string>& command, const Variables& variables = {});

// A copy of a program under another name; missing folders are made.
std::filesystem::path copyProgram(const std::filesystem::path& program,
                                  const std::filesystem::path& copy);
// A text file that may be executed.
std::filesystem::path writeScript(const std::filesystem::path& file, std::string_view text);

// The mode of what programs of other users may read and run.
inline constexpr auto kForEverybody =
    std::filesystem::perms::owner_all | std::filesystem::perms::group_read |
    std::filesystem::perms::group_exec | std::filesystem::perms::others_read |
    std::filesystem::perms::others_exec;

// Waits until `condition` holds; false when it does not come true within the limit, which is for
// failures only.
bool waitUntil(const std::function<bool()>& condition,
               std::chrono::milliseconds limit = std::chrono::seconds(20));

// Ended, be it that nobody has asked for its exit status yet.
bool isGone(pid_t process);

// A variable of this process's environment while the object lives.
class ScopedVariable {
  public:
    ScopedVariable(std::string name, const std::optional<std::string>& value);
    ~ScopedVariable();
    ScopedVariable(const ScopedVariable&) = delete;
    ScopedVariable& operator=(const ScopedVariable&) = delete;

  private:
    const std::string name_;
    std::optional<std::string> before_;
};

}  // namespace ferrivane::test
