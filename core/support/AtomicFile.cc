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

std::atomic<unsigned> lastNumber = 0;  // of this process's temporary files

bool isLeftover(std::string_view name, std::string_view prefix) {
    if (!name.starts_with(prefix) || !name.ends_with(kSuffix)) return false;
    const char* const end = name.data() + name.size() - kSuffix.size();
    pid_t pid = 0;
    const auto [dash, error] = std::from_chars(name.data() + prefix.size(), end, pid);
    if (error != std::errc() || dash == end || *dash != '-' || pid <= 0) return false;
    if (pid != ::getpid()) return ::kill(pid, 0) != 0 && errno == ESRCH;
    // An earlier process had our pid, as is usual in a container, unless we used this number.
    unsigned number = 0;
    const auto [last, numberError] = std::from_chars(dash + 1, end, number);
    return numberError == std::errc() && last == end && number > lastNumber;
}

std::filesystem::path folderOf(const std::filesystem::path& target) {
    return target.has_parent_path() ? target.parent_path() : ".";
}

void removeLeftovers(const std::filesystem::path& target) {
    DIR* directory = ::opendir(folderOf(target).c_str());
    if (directory == nullptr) return;
    const std::string prefix = temporaryPrefix(target);
    while (const dirent* entry = ::readdir(directory)) {  // NOLINT(concurrency-mt-unsafe)
        if (isLeftover(entry->d_name, prefix)) {
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
        const bool isNoLink = error == std::errc::invalid_argument ||
                              error == std::errc::no_such_file_or_directory ||
                              error == std::errc::not_a_directory;
        if (isNoLink) return path;
        // Not knowing, we would replace a link by a file.
        if (error) return std::unexpected(FileError{open, path, error.value()});
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
    if (::stat(target.c_str(), &old) == 0) {
        if (::fchmod(file.get(), old.st_mode & 07777) != 0) return errno;
    } else if (errno != ENOENT) {
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

    const std::string name = temporaryPrefix(*target) + std::to_string(::getpid()) + "-" +
                             std::to_string(++lastNumber) + std::string(kSuffix);
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
        ::open(folderOf(*target).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (directory) ::fsync(directory.get());
    return {};
}

}  // namespace ferrivane::AtomicFile
