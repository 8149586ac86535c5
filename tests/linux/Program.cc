#include "tests/linux/Program.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <stdexcept>
#include <system_error>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "Ferrivane/linux/Processes.h"
#include "tests/support/Files.h"

namespace ferrivane::test {
namespace {

using namespace std::chrono_literals;

struct Pipe {
    FileDescriptor reading;
    FileDescriptor writing;

    Pipe() {
        std::array<int, 2> ends{};
        if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
            throw std::system_error(errno, std::generic_category(), "pipe");
        }
        reading = FileDescriptor(ends[0]);
        writing = FileDescriptor(ends[1]);
    }
};

std::vector<std::string> environmentWith(const Variables& variables) {
    std::vector<std::string> result;
    for (char** variable = environ; *variable != nullptr; ++variable) {
        const std::string text = *variable;
        if (!variables.contains(text.substr(0, text.find('=')))) result.push_back(text);
    }
    for (const auto& [name, value] : variables) {
        if (value) result.push_back(name + "=" + *value);
    }
    return result;
}

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (std::string& text : texts) pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

void set(const std::string& name, const std::optional<std::string>& value) {
    if (value) {
        ::setenv(name.c_str(), value->c_str(), 1);  // NOLINT(concurrency-mt-unsafe)
    } else {
        ::unsetenv(name.c_str());  // NOLINT(concurrency-mt-unsafe)
    }
}

int collect(pid_t process) {
    int status = 0;
    while (::waitpid(process, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

}  // namespace

Program::Program(const std::vector<std::string>& command, const Variables& variables) {
    Pipe input;
    Pipe output;
    Pipe started;  // ends when the program has been started, and holds a byte when it could not be
    std::vector<std::string> arguments = command;
    std::vector<std::string> environment = environmentWith(variables);
    const std::vector<char*> argumentPointers = pointersTo(arguments);
    const std::vector<char*> environmentPointers = pointersTo(environment);
    const pid_t parent = ::getpid();
    pid_ = ::fork();
    if (pid_ < 0) throw std::system_error(errno, std::generic_category(), "fork");
    if (pid_ == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGTERM);  // should the test itself come to a sudden end
        if (::getppid() != parent) ::_exit(126);
        ::dup2(input.reading.get(), STDIN_FILENO);
        ::dup2(output.writing.get(), STDOUT_FILENO);
        ::execvpe(argumentPointers[0], argumentPointers.data(), environmentPointers.data());
        (void)!::write(started.writing.get(), "", 1);
        ::_exit(127);
    }
    started.writing.reset();
    char failure = 0;
    if (::read(started.reading.get(), &failure, 1) == 1) {
        collect(pid_);
        throw std::runtime_error(command[0] + " cannot be started");
    }
    input_ = std::move(input.writing);
    output_ = std::move(output.reading);
}

Program::~Program() {
    if (pid_ <= 0) return;
    input_.reset();
    if (!waitUntil([this] { return isGone(pid_); }, 2s)) ::kill(pid_, SIGTERM);
    collect(pid_);
}

std::string Program::readLine() {
    std::string line;
    char c = 0;
    while (::read(output_.get(), &c, 1) == 1 && c != '\n') line.push_back(c);
    return line;
}

std::string Program::readAll() {
    std::string text;
    std::array<char, 4096> block{};
    for (;;) {
        const ssize_t count = ::read(output_.get(), block.data(), block.size());
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return text;
        text.append(block.data(), static_cast<std::size_t>(count));
    }
}

int Program::end() {
    input_.reset();
    return collect(std::exchange(pid_, -1));
}

int Program::terminate() {
    ::kill(pid_, SIGTERM);
    return end();
}

std::string outputOf(const std::vector<std::string>& command, const Variables& variables) {
    Program program(command, variables);
    program.closeInput();
    std::string text = program.readAll();
    if (const int status = program.end(); status != 0) {
        text += command[0] + " ended with " + std::to_string(status);
    }
    return text;
}

std::filesystem::path copyProgram(const std::filesystem::path& program,
                                  const std::filesystem::path& copy) {
    std::filesystem::create_directories(copy.parent_path());
    std::filesystem::copy_file(program, copy);
    return copy;
}

std::filesystem::path writeScript(const std::filesystem::path& file, std::string_view text) {
    std::filesystem::create_directories(file.parent_path());
    writeText(file, text);
    std::filesystem::permissions(file, std::filesystem::perms::owner_all);
    return file;
}

bool waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds limit) {
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) return false;
        std::this_thread::sleep_for(2ms);
    }
    return true;
}

bool isGone(pid_t process) {
    const auto status = Processes::status(process);
    return !status || status->state == 'Z';
}

ScopedVariable::ScopedVariable(std::string name, const std::optional<std::string>& value)
    : name_(std::move(name)) {
    const char* before = std::getenv(name_.c_str());  // NOLINT(concurrency-mt-unsafe)
    if (before != nullptr) before_ = before;
    set(name_, value);
}

ScopedVariable::~ScopedVariable() {
    set(name_, before_);
}

}  // namespace ferrivane::test
