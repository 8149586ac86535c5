#include "tests/support/Files.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <iterator>
#include <system_error>

#include <sys/stat.h>

namespace ferrivane::test {
namespace {

[[noreturn]] void fail(const std::filesystem::path& path) {
    throw std::system_error(errno, std::generic_category(), path.string());
}

}  // namespace

std::string readText(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) fail(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

void writeText(const std::filesystem::path& path, std::string_view bytes) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (!file) fail(path);
}

unsigned modeOf(const std::filesystem::path& path) {
    struct stat info{};
    if (::stat(path.c_str(), &info) != 0) fail(path);
    return info.st_mode & 07777U;
}

void setMode(const std::filesystem::path& path, unsigned mode) {
    if (::chmod(path.c_str(), mode) != 0) fail(path);
}

std::vector<std::string> namesIn(const std::filesystem::path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        names.push_back(entry.path().filename().string());
    }
    std::ranges::sort(names);
    return names;
}

std::size_t openDescriptors() {
    return namesIn("/dev/fd").size();
}

}  // namespace ferrivane::test
