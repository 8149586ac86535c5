// Whether there are file descriptors for what comes next.
#pragma once

#include <array>
#include <cerrno>
#include <cstddef>

#include <fcntl.h>

#include "core/support/FileDescriptor.h"

namespace ferrivane {

// False while this process, or the system, has fewer than `Count` left. Costs a few microseconds.
template<std::size_t Count>
bool descriptorsAreLeft() {
    std::array<FileDescriptor, Count> files;
    for (FileDescriptor& file : files) {
        file = FileDescriptor(::open("/dev/null", O_RDONLY | O_CLOEXEC));
        if (!file && (errno == EMFILE || errno == ENFILE)) return false;
    }
    return true;
}

}  // namespace ferrivane
