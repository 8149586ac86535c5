// What one link costs inside a process, step by step, with a browser that answers at once: the
// first link of a process and those that follow, against the bare exchange.
//
//   road_bench
//   road_bench --first    the first link only; a line with milliseconds for each step
#include <cstddef>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "Ferrivane/linux/ChromeLocation.h"
#include "Ferrivane/linux/DesktopEntries.h"
#include "Ferrivane/linux/Environment.h"
#include "Ferrivane/linux/Senders.h"
#include "bench/Fixtures.h"
#include "bench/Table.h"
#include "core/ChromeProfiles.h"
#include "core/ChromeSingleton.h"
#include "core/Config.h"
#include "core/Matcher.h"
#include "core/port/Paths.h"
#include "tests/support/FakeChrome.h"
#include "tests/support/TempDir.h"

namespace {

using namespace ferrivane;

constexpr const char* kSection = "The steps of a link inside a process";

struct Steps {
    std::vector<std::pair<std::string, double>> taken;

    template<typename Work>
    auto time(const char* name, Work work) {
        const auto start = bench::Clock::now();
        auto result = work();
        taken.emplace_back(name, bench::millisecondsSince(start));
        return result;
    }
};

Steps oneLink(const std::string& socket) {
    const std::filesystem::path userData = environment("CHROME_USER_DATA_DIR");
    Steps steps;
    const auto entries = steps.time("find the browser", [] {
        auto session = DesktopEntries::ofSession();
        (void)ChromeLocator::locate(session, Paths::home(), environment);
        return session;
    });
    const auto opener = steps.time("find the sender",
                                   [&] { return Senders::opener(Senders::ownOrigin(), entries); });
    const auto config =
        steps.time("read the rules", [] { return Config::load(Config::fileURL()); });
    if (!config) bench::fail("no rules");
    steps.time("decide", [&] { return Matcher::decide(bench::kLink, opener, *config); });
    (void)steps.time("read the catalogue",
                     [&] { return ChromeProfiles::load(userData / "Local State"); });
    (void)steps.time("exchange", [&] {
        return ChromeSingleton::notify(
            {"/usr/bin/browser", "--profile-directory=Default", bench::kLink}, socket, 5.0);
    });
    return steps;
}

// One link in a new process with the same surroundings.
void addFirst(const char* self, const std::string& socket, std::vector<Steps>& links) {
    Steps steps = links.front();
    const auto taken = bench::numbersOf("'" + std::string(self) + "' --first '" + socket + "'",
                                        steps.taken.size());
    for (std::size_t i = 0; i < taken.size(); ++i) steps.taken[i].second = taken[i];
    links.push_back(std::move(steps));
}

bench::Values step(const std::vector<Steps>& links, std::size_t number) {
    bench::Values values;
    for (std::size_t i = 1; i < links.size(); ++i) values.push_back(links[i].taken[number].second);
    return values;
}

}  // namespace

int main(int count, char** values) {
    if (count == 3 && std::string(values[1]) == "--first") {
        for (const auto& [name, value] : oneLink(values[2]).taken) std::printf("%f ", value);
        return 0;
    }
    if (count != 2) return 2;
    const std::string program = values[1];
    bench::adoptOrphans();
    const bench::World world;
    const test::FakeChrome chrome(world / "browser");
    bench::World::useBrowser(chrome.userDataDirectory());
    std::vector<Steps> later{oneLink(chrome.socketPath())};
    std::vector<Steps> first{later};
    bench::Values starts;
    bench::Values wholes;
    for (int i = 0; i < bench::runs(100); ++i) {
        starts.push_back(bench::milliseconds([&] { bench::run({program, "--help"}, true); }));
        wholes.push_back(bench::milliseconds([&] { bench::run({program, bench::kLink}, true); }));
        addFirst(values[0], chrome.socketPath(), first);
        later.push_back(oneLink(chrome.socketPath()));
    }
    bench::waitForAll();
    const std::size_t steps = later[0].taken.size();
    for (const auto& [links, when] :
         {std::pair(first, ", the first time"), std::pair(later, ", once more")}) {
        const auto exchange = step(links, steps - 1);
        for (std::size_t i = 0; i < steps; ++i) {
            const bool isReference = i == steps - 1;
            bench::row(kSection, links[0].taken[i].first + when, "ms", step(links, i),
                       isReference ? "" : "the exchange there",
                       isReference ? bench::Values() : exchange);
        }
    }
    const auto exchange = step(first, steps - 1);
    bench::row(kSection, "in turns with these: Ferrivane --help", "ms", starts,
               "the exchange there", exchange);
    bench::row(kSection, "in turns with these: a whole link", "ms", wholes, "the exchange there",
               exchange);
    return 0;
}
