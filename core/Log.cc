#include "core/Log.h"

#include <array>
#include <cstdio>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include "core/port/Paths.h"
#include "core/support/AtomicFile.h"
#include "core/support/FileDescriptor.h"

namespace ferrivane {
namespace {

// "yyyy-MM-dd HH:mm:ss.SSS", local time.
std::string formatted(std::chrono::system_clock::time_point time) {
    const auto milliseconds =
        std::chrono::duration_cast<std::chrono::milliseconds>(time.time_since_epoch()).count();
    const auto seconds = static_cast<time_t>(milliseconds / 1000);
    tm local{};
    ::localtime_r(&seconds, &local);
    std::array<char, 80> text{};
    const int length =
        std::snprintf(text.data(), text.size(), "%04d-%02d-%02d %02d:%02d:%02d.%03d",
                      local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour,
                      local.tm_min, local.tm_sec, static_cast<int>(milliseconds % 1000));
    return {text.data(), static_cast<std::size_t>(length)};
}

// As a rule one call of write(2) per line; the loop is for a disk that fills up. False when a part
// is missing.
bool writeLine(int fd, std::string_view line) {
    while (!line.empty()) {
        const ssize_t count = ::write(fd, line.data(), line.size());
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return false;
        line.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

bool lock(int fd) {
    while (::flock(fd, LOCK_EX) != 0) {
        if (errno != EINTR) return false;
    }
    return true;
}

}  // namespace

Log& Log::shared() {
    static Log* const log = new Log(Paths::logDirectory());
    return *log;
}

Log::Log(const std::filesystem::path& directory)
    : fileURL(directory / kFileName), queue("com.hollowmere.ferrivane.log") {
    (void)AtomicFile::createFolders(directory);
}

void Log::write(std::string_view level, std::string message) {
    queue.async([this, time = std::chrono::system_clock::now(), level, text = std::move(message)] {
        append(time, level, text);
    });
}

void Log::append(Time time, std::string_view level, std::string_view message) const {
    std::string line = formatted(time);
    line.append(" [").append(level).append("] ").append(message).append("\n");
    if (echoToStderr) (void)writeLine(STDERR_FILENO, line);

    // The lock lives on the folder's own descriptor, so that no further file appears.
    const FileDescriptor folder(
        ::open(fileURL.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const bool isLocked = folder && lock(folder.get());
    // Two that move it aside at the same time lose a generation, so whoever has no lock leaves it
    // to those that have as long as there may be any.
    rotateIfNeeded(isLocked ? maxBytes : 2 * maxBytes);
    // Not blocking: somebody may have put a pipe in the file's place.
    const FileDescriptor file(::open(
        fileURL.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, 0600));
    struct stat info{};
    if (file && ::fstat(file.get(), &info) == 0 && S_ISREG(info.st_mode)) {
        const bool isWhole = writeLine(file.get(), line);
        // The next line is not to follow half of this one. Unlocked, it could be there already.
        if (!isWhole && isLocked) (void)!::ftruncate(file.get(), info.st_size);
    }
}

void Log::rotateIfNeeded(std::uint64_t limit) const {
    struct stat info{};
    if (::stat(fileURL.c_str(), &info) != 0 || !S_ISREG(info.st_mode)) return;
    if (static_cast<std::uint64_t>(info.st_size) <= limit) return;
    std::filesystem::path older = fileURL;
    older += ".1";
    (void)::rename(fileURL.c_str(), older.c_str());
}

}  // namespace ferrivane
