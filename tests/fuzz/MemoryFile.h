// A file that exists in memory only, for readers that take a path: nothing is left behind when a
// target ends at a fault.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>

#include <sys/mman.h>
#include <unistd.h>

namespace ferrivane::fuzz {

class MemoryFile {
  public:
    MemoryFile() : descriptor_(::memfd_create("fuzz", MFD_CLOEXEC)) {}
    ~MemoryFile() { ::close(descriptor_); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    void write(std::string_view text) const {
        if (::ftruncate(descriptor_, 0) != 0 || ::pwrite(descriptor_, text.data(), text.size(),
                                                         0) != static_cast<ssize_t>(text.size())) {
            std::abort();
        }
    }
    std::filesystem::path path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

  private:
    const int descriptor_;
};

}  // namespace ferrivane::fuzz
