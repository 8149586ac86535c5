// What one link costs inside a process, step by step: the first link of a process, and the median
// of the following ones, with 200 rules and a catalogue of 1 MB, against a browser that answers at
// once.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "Ferrivane/linux/ChromeLocation.h"
#include "Ferrivane/linux/DesktopEntries.h"
#include "Ferrivane/linux/Senders.h"
#include "bench/Fixtures.h"
#include "core/ChromeProfiles.h"
#include "core/ChromeSingleton.h"
#include "core/Config.h"
#include "core/Matcher.h"
#include "core/port/Paths.h"
#include "tests/support/FakeChrome.h"
#include "tests/support/TempDir.h"

namespace {

using namespace ferrivane;
using Clock = std::chrono::steady_clock;

struct Steps {
    std::vector<std::pair<const char*, double>> milliseconds;

    template<typename Work>
    auto time(const char* name, Work work) {
        const auto start = Clock::now();
        auto result = work();
        milliseconds.emplace_back(
            name, std::chrono::duration<double, std::milli>(Clock::now() - start).count());
        return result;
    }
};

Steps oneLink(const std::filesystem::path& rulesFile, const std::filesystem::path& catalogue,
              const std::string& socket) {
    Steps steps;
    const auto entries = steps.time("registry", [] {
        auto session = DesktopEntries::ofSession();
        (void)ChromeLocator::locate(session, Paths::home(), [](const char* name) {
            const char* value = std::getenv(name);
            return std::string(value != nullptr ? value : "");
        });
        return session;
    });
    const auto opener =
        steps.time("opener", [&] { return Senders::opener(Senders::ownOrigin(), entries); });
    const auto config = steps.time("rules", [&] { return Config::load(rulesFile); });
    const std::string link = "https://somewhere.example/a/path?and=a&query";
    steps.time("decision", [&] { return Matcher::decide(link, opener, *config); });
    steps.time("catalogue", [&] { return ChromeProfiles::load(catalogue); });
    steps.time("exchange", [&] {
        return ChromeSingleton::notify({"/usr/bin/browser", "--profile-directory=Default", link},
                                       socket, 5.0);
    });
    return steps;
}

double median(std::vector<double> values) {
    std::ranges::sort(values);
    return values[values.size() / 2];
}

}  // namespace

int main() {
    const test::TempDir folder;
    const auto rulesFile = folder.path() / "rules.json";
    const auto catalogue = folder.path() / "Local State";
    std::ofstream(rulesFile) << bench::rules();
    std::ofstream(catalogue) << bench::localState();
    test::FakeChrome chrome(folder.path());

    constexpr int kLinks = 101;
    std::vector<Steps> links;
    for (int i = 0; i < kLinks; ++i) {
        links.push_back(oneLink(rulesFile, catalogue, chrome.socketPath()));
    }
    std::printf("%-12s %10s %10s   ms\n", "step", "first", "later");
    double firstTotal = 0;
    double laterTotal = 0;
    for (std::size_t step = 0; step < links[0].milliseconds.size(); ++step) {
        std::vector<double> later;
        for (std::size_t i = 1; i < links.size(); ++i) {
            later.push_back(links[i].milliseconds[step].second);
        }
        const auto [name, first] = links[0].milliseconds[step];
        std::printf("%-12s %10.3f %10.3f\n", name, first, median(later));
        if (std::string_view(name) == "exchange") continue;
        firstTotal += first;
        laterTotal += median(later);
    }
    std::printf("%-12s %10.3f %10.3f\n", "all but the", firstTotal, laterTotal);
    std::printf("exchange\n");
}
