#include "Ferrivane/linux/LaunchLockFile.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/file.h>

#include "Ferrivane/linux/Environment.h"
#include "core/port/Paths.h"
#include "core/support/AtomicFile.h"

namespace ferrivane {

std::filesystem::path LaunchLockFile::defaultPath() {
    const std::filesystem::path runtime = environment("XDG_RUNTIME_DIR");
    return (runtime.is_absolute() ? runtime : Paths::logDirectory()) / "ferrivane-launch.lock";
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
