#include "core/support/AtomicFile.h"

#include <atomic>
#include <charconv>
#include <string>

#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>

#include "core/support/FileDescriptor.h"

namespace ferrivane::AtomicFile {
namespace {

using enum FileError::Operation;
using Result = std::expected<void, FileError>;

// Temporary files are named ".<file>.<pid>-<number>.tmp", so that the next writer can tell whose
// they are.
constexpr std::string_view kSuffix = ".tmp";

std::string temporaryPrefix(const std::filesystem::path& target) {
    return "." + target.filename().string() + ".";
}

// The pid in a temporary file's name, or 0 when the name is not of that form.
pid_t writerOf(std::string_view name, std::string_view prefix) {
    if (!name.starts_with(prefix) || !name.ends_with(kSuffix)) return 0;
    name.remove_prefix(prefix.size());
    pid_t pid = 0;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), pid);
    if (error != std::errc() || end == name.data() + name.size() || *end != '-') return 0;
    return pid;
}

void removeLeftovers(const std::filesystem::path& target) {
    DIR* directory = ::opendir(target.parent_path().c_str());
    if (directory == nullptr) return;
    const std::string prefix = temporaryPrefix(target);
    while (const dirent* entry = ::readdir(directory)) {  // NOLINT(concurrency-mt-unsafe)
        const pid_t writer = writerOf(entry->d_name, prefix);
        if (writer > 0 && ::kill(writer, 0) != 0 && errno == ESRCH) {
            ::unlinkat(::dirfd(directory), entry->d_name, 0);
        }
    }
    ::closedir(directory);
}

// Follows symbolic links by hand: the last target need not exist yet.
std::expected<std::filesystem::path, FileError> resolveLinks(std::filesystem::path path) {
    constexpr int kMostLinks = 40;  // as Linux itself allows
    for (int i = 0; i < kMostLinks; ++i) {
        std::error_code error;
        const std::filesystem::path target = std::filesystem::read_symlink(path, error);
        if (error) return path;
        path = target.is_absolute() ? target : path.parent_path() / target;
    }
    return std::unexpected(FileError{open, path, ELOOP});
}

int writeAll(int fd, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::write(fd, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return errno;
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return 0;
}

int fill(FileDescriptor file, const std::filesystem::path& target, std::string_view bytes) {
    struct stat old{};
    if (::stat(target.c_str(), &old) == 0 && ::fchmod(file.get(), old.st_mode & 07777) != 0) {
        return errno;
    }
    if (const int code = writeAll(file.get(), bytes); code != 0) return code;
    if (::fsync(file.get()) != 0) return errno;
    // Some file systems report a full disk only here.
    return ::close(file.release()) == 0 ? 0 : errno;
}

}  // namespace

Result createFolders(const std::filesystem::path& folder) {
    if (folder.empty() || ::mkdir(folder.c_str(), 0700) == 0) return {};
    int code = errno;
    if (code == ENOENT && folder.has_relative_path()) {
        if (auto parent = createFolders(folder.parent_path()); !parent) return parent;
        code = ::mkdir(folder.c_str(), 0700) == 0 ? 0 : errno;
    }
    std::error_code error;
    if (code == 0 || (code == EEXIST && std::filesystem::is_directory(folder, error))) return {};
    return std::unexpected(FileError{createFolder, folder, code});
}

Result write(const std::filesystem::path& path, std::string_view bytes) {
    const auto target = resolveLinks(path);
    if (!target) return std::unexpected(target.error());
    if (auto folder = createFolders(target->parent_path()); !folder) return folder;
    removeLeftovers(*target);

    static std::atomic<unsigned> counter = 0;
    const std::string name = temporaryPrefix(*target) + std::to_string(::getpid()) + "-" +
                             std::to_string(++counter) + std::string(kSuffix);
    const std::filesystem::path temporary = target->parent_path() / name;
    FileDescriptor file(
        ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (!file) return std::unexpected(FileError{open, temporary, errno});

    if (const int code = fill(std::move(file), *target, bytes); code != 0) {
        ::unlink(temporary.c_str());
        return std::unexpected(FileError{FileError::Operation::write, *target, code});
    }
    if (::rename(temporary.c_str(), target->c_str()) != 0) {
        const int code = errno;
        ::unlink(temporary.c_str());
        return std::unexpected(FileError{replace, *target, code});
    }
    // The new contents are in place; whether the folder's entry is on the disk yet is not a failure
    // of the save.
    const FileDescriptor directory(
        ::open(target->parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (directory) ::fsync(directory.get());
    return {};
}

}  // namespace ferrivane::AtomicFile
