#include "Ferrivane/linux/LaunchLockFile.h"

#include <cerrno>
#include <cstdlib>

#include <fcntl.h>
#include <sys/file.h>

#include "core/port/Paths.h"
#include "core/support/AtomicFile.h"

namespace ferrivane {

std::filesystem::path LaunchLockFile::defaultPath() {
    const char* runtime = std::getenv("XDG_RUNTIME_DIR");  // NOLINT(concurrency-mt-unsafe)
    const bool hasRuntime = runtime != nullptr && runtime[0] == '/';
    return (hasRuntime ? std::filesystem::path(runtime) : Paths::logDirectory()) /
           "ferrivane-launch.lock";
}

bool LaunchLockFile::tryAcquire() {
    if (file_) return false;
    const auto open = [this] {
        return ::open(path_.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
    };
    FileDescriptor file(open());
    if (!file && errno == ENOENT && AtomicFile::createFolders(path_.parent_path())) {
        file = FileDescriptor(open());
    }
    if (!file) return true;
    if (::flock(file.get(), LOCK_EX | LOCK_NB) != 0) return errno != EWOULDBLOCK;
    file_ = std::move(file);
    return true;
}

}  // namespace ferrivane
