// The decision against a bare search for its patterns, reading of Chrome's catalogue and of the
// rules against a plain read of their bytes, and the save against its system calls alone.
//
//   core_bench
//   core_bench --first catalogue|bytes FILE    one reading in a new process; prints the
//   milliseconds
#include <array>
#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

#include <fcntl.h>
#include <string.h>
#include <unistd.h>

#include "bench/Fixtures.h"
#include "bench/Table.h"
#include "core/ChromeProfiles.h"
#include "core/Config.h"
#include "core/Matcher.h"
#include "core/support/ReadFile.h"
#include "core/support/Text.h"
#include "tests/support/TempDir.h"

namespace {

using namespace ferrivane;
using bench::keep;

// Rules that do not match; of kind url, or of all kinds. Every fourth pattern is beyond ASCII if
// wanted.
Config configWith(std::size_t count, bool allKinds, bool beyondAscii) {
    Config config;
    for (std::size_t i = 0; i < count; ++i) {
        const std::string stem = beyondAscii && i % 4 == 0 ? "Größe-Ω-" : "Project-X-";
        config.rules.emplace_back(
            allKinds ? Rule::kAllKinds[i % Rule::kAllKinds.size()] : Rule::Kind::url,
            stem + std::to_string(i) + ".example", "Work");
    }
    return config;
}

std::string linkOf(std::size_t length) {
    std::string link = "https://www.some-company.example/";
    while (link.size() < length) link += "a-part-of-the-path/";
    link.resize(length);
    return link;
}

std::string grouped(std::size_t number) {
    std::string text = std::to_string(number);
    for (std::size_t place = text.size(); place > 3;) text.insert(place -= 3, ",");
    return text;
}

std::string bytes(std::size_t number) {
    if (number >= 1'000'000) return grouped(number / 1'000'000) + " MB";
    return number >= 1000 ? grouped(number / 1000) + " kB" : grouped(number) + " B";
}

void decide(std::size_t count, std::size_t length, bool allKinds, bool beyondAscii) {
    const Config config = configWith(count, allKinds, beyondAscii);
    const std::string link = linkOf(length);
    const std::optional<Opener> opener{{"Mail", "org.example.Mail", "/usr/lib/example/mail"}};
    const std::string folded = Text::foldCase(link);
    std::vector<std::string> patterns;
    patterns.reserve(config.rules.size());
    for (const Rule& rule : config.rules) patterns.push_back(Text::foldCase(rule.match));
    const auto compared = bench::alternate(
        [&] { keep(Matcher::decide(link, opener, config)); },
        [&] {
            for (const std::string& pattern : patterns) {
                keep(::memmem(folded.data(), folded.size(), pattern.data(), pattern.size()));
            }
        });
    const std::string kinds = allKinds      ? " rules of all kinds, a link of "
                              : beyondAscii ? " rules, a quarter beyond ASCII, a link of "
                                            : " rules, a link of ";
    bench::row("Decision", grouped(count) + kinds + bytes(length), "ms", compared.work,
               "memmem of each folded pattern", compared.reference);
}

void decisions() {
    for (const bool beyondAscii : {false, true}) {
        for (const std::size_t count : {10U, 100U, 1'000U, 10'000U, 100'000U}) {
            decide(count, 100, false, beyondAscii);
        }
    }
    for (const std::size_t length : {1'000U, 10'000U, 32'000U, 1'000'000U}) {
        decide(1'000, length, false, false);
    }
    decide(10'000, 32'000, false, false);
    decide(1'000, 100, true, false);
    decide(10'000, 100, true, false);
}

// What a new process takes.
double first(const std::string& self, const std::string& what, const std::filesystem::path& file) {
    return bench::numbersOf("'" + self + "' --first " + what + " '" + file.string() + "'", 1)[0];
}

int readOnce(std::string_view what, const char* file) {
    bool isRead = false;
    const double taken = bench::milliseconds([&] {
        isRead = what == "catalogue" ? ChromeProfiles::load(file).has_value()
                                     : readFile(file).has_value();
    });
    std::printf("%f\n", taken);
    return isRead ? 0 : 1;
}

void catalogue(const std::string& self) {
    const test::TempDir folder;
    const auto file = folder / "Local State";
    for (const std::size_t size : {10'000U, 100'000U, 650'000U, 1'000'000U, 10'000'000U}) {
        std::ofstream(file) << bench::localState(size);
        const auto warm = bench::alternate([&] { keep(ChromeProfiles::load(file)); },
                                           [&] { keep(readFile(file)); });
        bench::row("Chrome's catalogue", bytes(size) + ", once more in a process", "ms", warm.work,
                   "plain read", warm.reference);
        bench::Compared cold;
        for (int run = 0; run < bench::runs(40); ++run) {
            cold.reference.push_back(first(self, "bytes", file));
            cold.work.push_back(first(self, "catalogue", file));
        }
        bench::row("Chrome's catalogue", bytes(size) + ", the first time in a process", "ms",
                   cold.work, "plain read, the first time in a process", cold.reference);
    }
}

bool writeWhole(const std::filesystem::path& path, std::string_view text) {
    const std::string next = path.string() + ".next";
    const int file = ::open(next.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (file < 0) return false;
    const bool isWritten =
        ::write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size()) &&
        ::fsync(file) == 0;
    ::close(file);
    return isWritten && ::rename(next.c_str(), path.c_str()) == 0;
}

void rulesFile() {
    const test::TempDir folder;
    const auto file = folder / "rules.json";
    for (const std::size_t count : {10U, 200U, 1'000U, 10'000U}) {
        const Config config = configWith(count, true, true);
        const std::string text = *config.encode();
        const std::string what = grouped(count) + " rules (" + bytes(text.size()) + ")";
        const auto saved = bench::alternate([&] { keep(config.save(file)); },
                                            [&] { keep(writeWhole(folder / "bare", text)); });
        const auto loaded =
            bench::alternate([&] { keep(Config::load(file)); }, [&] { keep(readFile(file)); });
        bench::row("Rules", what + " read", "ms", loaded.work, "plain read", loaded.reference);
        bench::row("Rules", what + " saved", "ms", saved.work, "write, fsync and rename",
                   saved.reference);
    }
}

}  // namespace

int main(int count, char** values) {
    if (count == 4 && std::string_view(values[1]) == "--first") {
        return readOnce(values[2], values[3]);
    }
    return bench::guarded([&] {
        decisions();
        catalogue(values[0]);
        rulesFile();
        return 0;
    });
}
