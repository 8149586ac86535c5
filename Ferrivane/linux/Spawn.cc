#include "Ferrivane/linux/Spawn.h"

#include <string_view>

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <unistd.h>

namespace ferrivane {
namespace {

constexpr std::string_view kTokenVariable = "XDG_ACTIVATION_TOKEN=";

class Attributes {
  public:
    Attributes() {
        ::posix_spawnattr_init(&attributes_);
        ::posix_spawnattr_setflags(
            &attributes_, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
        sigset_t none;
        ::sigemptyset(&none);
        ::posix_spawnattr_setsigmask(&attributes_, &none);
        sigset_t all;
        ::sigfillset(&all);
        ::posix_spawnattr_setsigdefault(&attributes_, &all);
    }
    ~Attributes() { ::posix_spawnattr_destroy(&attributes_); }
    Attributes(const Attributes&) = delete;
    Attributes& operator=(const Attributes&) = delete;
    const posix_spawnattr_t* get() const { return &attributes_; }

  private:
    posix_spawnattr_t attributes_{};
};

class NullStreams {
  public:
    NullStreams() {
        ::posix_spawn_file_actions_init(&actions_);
        for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
            ::posix_spawn_file_actions_addopen(&actions_, stream, "/dev/null", O_RDWR, 0);
        }
        // Descriptors that somebody gave us are not Chrome's.
        ::posix_spawn_file_actions_addclosefrom_np(&actions_, STDERR_FILENO + 1);
    }
    ~NullStreams() { ::posix_spawn_file_actions_destroy(&actions_); }
    NullStreams(const NullStreams&) = delete;
    NullStreams& operator=(const NullStreams&) = delete;
    const posix_spawn_file_actions_t* get() const { return &actions_; }

  private:
    posix_spawn_file_actions_t actions_{};
};

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (std::string& text : texts) pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

}  // namespace

std::expected<pid_t, int> spawnDetached(const std::vector<std::string>& command,
                                        const std::optional<std::string>& activationToken) {
    std::vector<std::string> environment;
    for (char** variable = environ; *variable != nullptr; ++variable) {
        if (!std::string_view(*variable).starts_with(kTokenVariable)) {
            environment.emplace_back(*variable);
        }
    }
    if (activationToken) environment.push_back(std::string(kTokenVariable) + *activationToken);
    std::vector<std::string> arguments = command;

    const Attributes attributes;
    const NullStreams streams;
    pid_t child = 0;
    const int error =
        ::posix_spawnp(&child, command.front().c_str(), streams.get(), attributes.get(),
                       pointersTo(arguments).data(), pointersTo(environment).data());
    if (error != 0) return std::unexpected(error);
    return child;
}

}  // namespace ferrivane
