// A folder of its own for one test, removed with everything in it when the test ends. Its path is
// short, so that sockets fit.
#pragma once

#include <cerrno>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>

#include <stdlib.h>

namespace ferrivane::test {

class TempDir {
  public:
    TempDir() {
        std::string name = "/tmp/fv-XXXXXX";
        if (::mkdtemp(name.data()) == nullptr) {
            throw std::system_error(errno, std::generic_category(), name);
        }
        path_ = std::filesystem::canonical(name);  // on macOS /tmp is a link
    }
    ~TempDir() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::filesystem::path& path() const { return path_; }
    std::filesystem::path operator/(std::string_view name) const { return path_ / name; }

  private:
    std::filesystem::path path_;
};

}  // namespace ferrivane::test
