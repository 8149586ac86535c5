// Hands a command line to a running Chrome over its process singleton socket (Chromium's
// process_singleton_posix.cc). Blocking calls on the caller's thread; no state, no log.
#pragma once

#include <cstddef>
#include <expected>
#include <filesystem>
#include <string>
#include <vector>

#include <sys/types.h>

#include "core/ChromeSingletonMessage.h"

namespace ferrivane::ChromeSingleton {

struct SingletonError {
    enum class Kind {
        pathTooLong,
        messageTooLong,
        connectFailed,
        writeFailed,
        refused,
        noSocket,
        cookieMismatch,
        noReply,
    };

    Kind kind = Kind::noSocket;
    std::string path{};                     // pathTooLong
    std::size_t length = 0;                 // messageTooLong, in bytes
    int code = 0;                           // connectFailed, writeFailed: errno
    ChromeSingletonMessage::Reply reply{};  // refused

    std::string description() const;

    bool operator==(const SingletonError&) const = default;
};

// The user data directory of the located browser.
std::filesystem::path userDataDirectory();

// The path that the link "SingletonSocket" in `directory` holds, after checking that the socket
// belongs to that directory: the link "SingletonCookie" there and the one beside the socket hold
// the same text.
std::expected<std::string, SingletonError> socketPath(const std::filesystem::path& directory);

// Sends argv, whose first element is the path of Chrome's executable, with this process's working
// directory, and returns normally only when Chrome acknowledged it. Whether anything opens is
// Chrome's business from then on.
//
// The timeout, in seconds, bounds each of connecting, sending and receiving; its fraction is
// dropped, and less than one second means no limit. Anything that is not a finite number within 64
// bits stops the process. Signals are held back until the exchange is over.
std::expected<void, SingletonError> notify(const std::vector<std::string>& argv,
                                           const std::string& socketPath, double timeout);

// The process that listens on the socket, found by connecting and closing again, which does Chrome
// no harm. Fails as notify does while connecting.
std::expected<pid_t, SingletonError> listener(const std::string& socketPath);

}  // namespace ferrivane::ChromeSingleton
