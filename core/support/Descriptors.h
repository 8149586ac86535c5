// Whether there are file descriptors for what comes next.
#pragma once

#include <array>
#include <cerrno>
#include <cstddef>

#include <fcntl.h>

#include "core/support/FileDescriptor.h"

namespace ferrivane {

// False while this process has fewer than `Count` left, or the system none.
template<std::size_t Count>
bool descriptorsAreLeft() {
    std::array<FileDescriptor, Count> files;
    for (FileDescriptor& file : files) {
        // A copy is made in a fifth of the time.
        const int descriptor = &file == files.data()
                                   ? ::open("/dev/null", O_RDONLY | O_CLOEXEC)
                                   : ::fcntl(files.front().get(), F_DUPFD_CLOEXEC, 0);
        if (descriptor < 0 && (errno == EMFILE || errno == ENFILE)) return false;
        file = FileDescriptor(descriptor);
    }
    return true;
}

}  // namespace ferrivane
