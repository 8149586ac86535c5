// Runs a target without a fuzzer: over every file of a folder, then over so many inputs made of
// these, the same in every run. Where one ends the process it is printed first.
//
//     TARGET FOLDER COUNT
#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <random>

#include "tests/fuzz/Fuzz.h"
#include "tests/support/Files.h"

// Sanitizers end the process without a signal.
// NOLINTNEXTLINE(bugprone-reserved-identifier)
extern "C" void __sanitizer_set_death_callback(void (*callback)()) __attribute__((weak));

namespace {

std::string input;  // the present one

void printInput() {
    std::fputs("the input, in hexadecimal: ", stderr);
    for (const char c : input) std::fprintf(stderr, "%02x", static_cast<unsigned char>(c));
    std::fputs("\n", stderr);
}

void printAtAbort(int number) {
    printInput();
    std::signal(number, SIG_DFL);
    std::raise(number);
}

// The standard's distributions differ from library to library.
class Random {
  public:
    std::size_t below(std::size_t end) { return end == 0 ? 0 : engine_() % end; }

  private:
    std::mt19937 engine_;
};

std::string changed(const std::vector<std::string>& seeds, Random& random) {
    std::string text = seeds[random.below(seeds.size())];
    const auto piece = [&](const std::string& from) {
        const std::size_t start = random.below(from.size() + 1);
        return from.substr(start, random.below(std::min<std::size_t>(from.size() - start, 40) + 1));
    };
    for (std::size_t changes = 1 + random.below(6); changes > 0; --changes) {
        const std::size_t place = random.below(text.size() + 1);
        const auto byte = static_cast<char>(random.below(256));
        switch (random.below(6)) {
            case 0:
                text.insert(place, piece(seeds[random.below(seeds.size())]));
                break;
            case 1:
                text.insert(place, piece(text));
                break;
            case 2:
                text.erase(place, random.below(8));
                break;
            case 3:
                text.insert(place, 1, byte);
                break;
            case 4:
                if (place < text.size()) text[place] = byte;
                break;
            default:
                if (place < text.size()) {
                    text[place] = static_cast<char>(text[place] ^ (1 << random.below(8)));
                }
        }
    }
    return text;
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 3) return 2;
    if (__sanitizer_set_death_callback != nullptr) __sanitizer_set_death_callback(printInput);
    std::signal(SIGABRT, printAtAbort);

    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(arguments[1])) {
        files.push_back(entry.path());
    }
    std::ranges::sort(files);
    std::vector<std::string> seeds;
    for (const auto& file : files) {
        input = seeds.emplace_back(ferrivane::test::readText(file));
        ferrivane::fuzz::run(input);
    }
    if (seeds.empty()) return 2;
    Random random;
    const int more = std::atoi(arguments[2]);
    for (int i = 0; i < more; ++i) {
        input = changed(seeds, random);
        ferrivane::fuzz::run(input);
    }
    std::cout << seeds.size() << " files and " << more << " inputs made of them\n";
}
