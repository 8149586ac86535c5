// Does one thing and says how it went: the program that is put under fire. Two calls with
// unmistakable arguments mark where that thing begins and ends.
//
//     fault_probe save FILE RULES          a configuration of so many rules
//     fault_probe log FOLDER FILLER LINE…  lines, after so many kilobytes of others
//     fault_probe profiles FILE            the catalogue, printed
//     fault_probe hand-over FOLDER LINK    to the browser with this folder of user data
#include <charconv>
#include <chrono>
#include <cstdio>
#include <expected>
#include <filesystem>
#include <fstream>
#include <span>
#include <string>
#include <string_view>

#include <unistd.h>

#include "core/ChromeProfiles.h"
#include "core/ChromeSingleton.h"
#include "core/Config.h"
#include "core/Log.h"

namespace {

using namespace ferrivane;

template<typename Work>
auto marked(Work work) {
    (void)!::access("begin of the work", F_OK);
    auto result = work();
    (void)!::access("end of the work", F_OK);
    return result;
}

// The exit status.
template<typename Result>
int told(const Result& result) {
    if (result) return 0;
    std::fprintf(stderr, "%s\n", result.error().description().c_str());
    return 1;
}

int number(std::string_view text) {
    int value = 0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

int save(const char* file, int rules) {
    Config config;
    for (int i = 0; i < rules; ++i) {
        config.rules.emplace_back(Rule::Kind::host, std::to_string(i) + ".example", "Profile 1");
    }
    return told(marked([&] { return config.save(file); }));
}

int log(const char* folder, int filler, std::span<char*> lines) {
    constexpr std::chrono::seconds kLong{60};
    // Calls are counted for each thread. After these the log's has made more calls of every kind
    // than the first one will ever make, so that a number means a call of the log.
    constexpr int kLinesBefore = 100;
    Log log(folder);
    for (int i = 0; i < kLinesBefore; ++i) log.info("before");
    if (!log.flush(kLong)) return 1;
    {
        std::ofstream file(log.fileURL, std::ios::app);
        for (int i = 0; i < filler; ++i) file << std::string(1023, 'f') << '\n';
    }
    return marked([&] {
        for (const char* const line : lines) log.info(line);
        return log.flush(kLong) ? 0 : 1;
    });
}

int profiles(const char* file) {
    const auto found = marked([&] { return ChromeProfiles::load(file); });
    if (found) {
        for (const ChromeProfile& profile : *found) {
            std::printf("%s|%s\n", profile.directory.c_str(), profile.name.c_str());
        }
    }
    return told(found);
}

std::ptrdiff_t openDescriptors() {
    const std::filesystem::directory_iterator folder("/proc/self/fd");
    return std::distance(begin(folder), end(folder));
}

int handOver(const char* userData, const char* link) {
    constexpr double kTimeout = 1;
    const std::ptrdiff_t before = openDescriptors();
    const auto result = marked([&]() -> std::expected<void, ChromeSingleton::SingletonError> {
        const auto socket = ChromeSingleton::socketPath(userData);
        if (!socket) return std::unexpected(socket.error());
        return ChromeSingleton::notify({"/opt/browser", link}, *socket, kTimeout);
    });
    std::printf("%td descriptors left open\n", openDescriptors() - before);
    return told(result);
}

}  // namespace

int main(int argc, char** argv) {
    const std::span<char*> words(argv, static_cast<std::size_t>(argc));
    const std::string_view work = argc > 2 ? words[1] : "";
    if (work == "save" && argc == 4) return save(words[2], number(words[3]));
    if (work == "log" && argc > 4) return log(words[2], number(words[3]), words.subspan(4));
    if (work == "profiles" && argc == 3) return profiles(words[2]);
    if (work == "hand-over" && argc == 4) return handOver(words[2], words[3]);
    std::fprintf(stderr, "usage: see the source\n");
    return 2;
}
