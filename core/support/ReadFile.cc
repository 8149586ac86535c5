#include "core/support/ReadFile.h"

#include <fcntl.h>
#include <sys/stat.h>

#include "core/support/FileDescriptor.h"

namespace ferrivane {

std::expected<std::string, FileError> readFile(const std::filesystem::path& path,
                                               std::size_t spareCapacity) {
    using enum FileError::Operation;
    const auto failed = [&](FileError::Operation operation, int code) {
        return std::unexpected(FileError{operation, path, code});
    };

    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!file) return failed(open, errno);
    struct stat info{};
    if (::fstat(file.get(), &info) != 0) return failed(read, errno);
    if (S_ISDIR(info.st_mode)) return failed(read, EISDIR);
    if (!S_ISREG(info.st_mode)) return failed(read, EINVAL);
    if (info.st_size > static_cast<off_t>(kLargestReadableFile)) return failed(read, EFBIG);

    std::string text;
    std::size_t length = 0;
    // One byte more than the file has, so that the usual read finds the end without growing.
    text.resize(static_cast<std::size_t>(info.st_size) + 1 + spareCapacity);
    for (;;) {
        if (length > kLargestReadableFile) return failed(read, EFBIG);
        if (length + 1 + spareCapacity > text.size()) text.resize(2 * text.size());
        const ssize_t count =
            ::read(file.get(), text.data() + length, text.size() - spareCapacity - length);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return failed(read, errno);
        if (count == 0) break;
        length += static_cast<std::size_t>(count);
    }
    text.resize(length);
    return text;
}

}  // namespace ferrivane
