// The decision against the number of rules and the length of the link, and reading of the two files
// against a plain read of their bytes.
#include <filesystem>
#include <fstream>
#include <string>

#include <benchmark/benchmark.h>
#include <unistd.h>

#include "core/ChromeProfiles.h"
#include "core/Config.h"
#include "core/Matcher.h"
#include "core/support/ReadFile.h"

namespace {

using namespace ferrivane;

// Rules of mixed kinds that do not match; every fourth pattern is beyond ASCII if wanted.
Config configWith(std::size_t count, bool beyondAscii) {
    Config config;
    for (std::size_t i = 0; i < count; ++i) {
        const std::string number = std::to_string(i);
        const std::string stem = beyondAscii && i % 4 == 0 ? "Größe-Ω-" : "Project-X-";
        switch (i % 3) {
            case 0:
                config.rules.emplace_back(Rule::Kind::url, stem + number + "/path", "Work");
                break;
            case 1:
                config.rules.emplace_back(Rule::Kind::host, stem + number + ".example", "Work");
                break;
            default:
                config.rules.emplace_back(Rule::Kind::app, stem + number, "Work");
        }
    }
    return config;
}

std::string linkOf(std::size_t length) {
    std::string link = "https://www.some-company.example/";
    while (link.size() < length) link += "a-part-of-the-path/";
    link.resize(length);
    return link;
}

const Opener kOpener{"Mail", "org.example.Mail", "/usr/lib/example/mail"};

void decide(benchmark::State& state, bool beyondAscii) {
    const Config config = configWith(static_cast<std::size_t>(state.range(0)), beyondAscii);
    const std::string link = linkOf(static_cast<std::size_t>(state.range(1)));
    for (auto _ : state) {
        benchmark::DoNotOptimize(Matcher::decide(link, kOpener, config));
    }
}

void decideAscii(benchmark::State& state) {
    decide(state, false);
}
void decideQuarterBeyondAscii(benchmark::State& state) {
    decide(state, true);
}

BENCHMARK(decideAscii)
    ->ArgNames({"rules", "link"})
    ->Args({100, 100})
    ->Args({1000, 100})
    ->Args({10000, 100})
    ->Args({1000, 1000})
    ->Args({1000, 10000})
    ->Args({1000, 100000})
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(decideQuarterBeyondAscii)
    ->ArgNames({"rules", "link"})
    ->Args({100, 100})
    ->Args({1000, 100})
    ->Args({10000, 100})
    ->Unit(benchmark::kMicrosecond);

class TemporaryFile {
  public:
    TemporaryFile(const std::string& name, const std::string& text)
        : path_(std::filesystem::temp_directory_path() /
                ("ferrivane-bench-" + std::to_string(::getpid()) + "-" + name)) {
        std::ofstream(path_, std::ios::binary) << text;
    }
    ~TemporaryFile() {
        std::error_code ignored;
        std::filesystem::remove(path_, ignored);
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    const std::filesystem::path& path() const { return path_; }

  private:
    std::filesystem::path path_;
};

// A catalogue of ten profiles in a file of about so many bytes.
std::string localState(std::size_t bytes) {
    std::string text = R"({"profile":{"info_cache":{"Default":{"name":"Home"})";
    for (int i = 1; i < 10; ++i) {
        text += R"(,"Profile )" + std::to_string(i) +
                R"(":{"name":"Client","user_name":"a@b.example"})";
    }
    text += R"(}},"experiments":[0)";
    for (int i = 0; text.size() < bytes; ++i) {
        text += R"(,{"name":"experiment-)" + std::to_string(i) + R"(","weight":0.25,"on":true})";
    }
    return text + "]}";
}

void readCatalogue(benchmark::State& state) {
    const TemporaryFile file("local-state", localState(static_cast<std::size_t>(state.range(0))));
    for (auto _ : state) benchmark::DoNotOptimize(ChromeProfiles::load(file.path()));
}

void readCatalogueBytesOnly(benchmark::State& state) {
    const TemporaryFile file("local-state", localState(static_cast<std::size_t>(state.range(0))));
    for (auto _ : state) benchmark::DoNotOptimize(readFile(file.path()));
}

void readRules(benchmark::State& state) {
    const auto text = configWith(static_cast<std::size_t>(state.range(0)), false).encode();
    const TemporaryFile file("rules", *text);
    for (auto _ : state) benchmark::DoNotOptimize(Config::load(file.path()));
}

BENCHMARK(readCatalogue)
    ->ArgName("bytes")
    ->Arg(10'000)
    ->Arg(1'000'000)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(readCatalogueBytesOnly)
    ->ArgName("bytes")
    ->Arg(10'000)
    ->Arg(1'000'000)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(readRules)->ArgName("rules")->Arg(200)->Arg(10'000)->Unit(benchmark::kMicrosecond);

}  // namespace
