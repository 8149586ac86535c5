// Whether there are file descriptors for what comes next.
#pragma once

#include <cstddef>

namespace ferrivane {

// False while this process has fewer than `count` left, or the system none. Takes a few
// microseconds; callable from any thread.
bool descriptorsAreLeft(std::size_t count);

}  // namespace ferrivane
