// One process per link, from its start to the browser's answer and to its own end, with a browser
// that answers at once; against the bare exchange and against a program that prints one line. For
// several senders: what spawns the links is a copy of this program, in the sender's place.
//
//   link_bench FERRIVANE SENDER MINIMAL
//   link_bench --links N FERRIVANE             nothing but links, of an unknown sender: for a
//   profiler
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include <sys/resource.h>

#include "bench/Fixtures.h"
#include "bench/Table.h"
#include "core/ChromeSingleton.h"
#include "tests/support/FakeChrome.h"
#include "tests/support/TempDir.h"

namespace {

using namespace ferrivane;
using bench::run;
using bench::waitForAll;

constexpr const char* kSection = "A link by a process of its own";

// Milliseconds of all processes below that have been waited for.
double processorTime() {
    rusage usage{};
    ::getrusage(RUSAGE_CHILDREN, &usage);
    const auto milliseconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) / 1e3;
    };
    return milliseconds(usage.ru_utime) + milliseconds(usage.ru_stime);
}

// The sender's part.
class Sending {
  public:
    explicit Sending(std::string program) : program_(std::move(program)) {
        bench::adoptOrphans();
        bench::World::useBrowser(chrome_.userDataDirectory());
    }

    void measure(const std::string& sender, const std::string& minimal) {
        bench::Values exchanges;
        bench::Values minimals;
        bench::Values answered;
        bench::Values ended;
        for (int i = -3; i < bench::runs(150); ++i) {
            const double exchange = bench::milliseconds([&] { bareExchange(); });
            const double least = bench::milliseconds([&] { run({minimal}, true); });
            bench::Clock::time_point arrival;
            std::thread browser([&] {
                chrome_.waitForMessages(arrived_ + 1);
                arrival = bench::Clock::now();
            });
            const auto start = bench::Clock::now();
            run({program_, bench::kLink}, true);
            const double end = bench::millisecondsSince(start);
            browser.join();
            const std::chrono::duration<double, std::milli> answer = arrival - start;
            ++arrived_;
            std::this_thread::sleep_for(std::chrono::milliseconds(15));
            if (i < 0) continue;
            exchanges.push_back(exchange);
            minimals.push_back(least);
            answered.push_back(answer.count());
            ended.push_back(end);
        }
        bench::row(kSection, sender + ": until the browser has it", "ms", answered,
                   "bare exchange with the browser", exchanges);
        bench::row(kSection, sender + ": until the command has ended", "ms", ended,
                   "program that prints one line", minimals);

        constexpr int kLinks = 40;
        const auto each = [&](const std::function<void()>& work) {
            waitForAll();
            const double before = processorTime();
            for (int i = 0; i < kLinks; ++i) work();
            waitForAll();
            return bench::Values{(processorTime() - before) / kLinks};
        };
        const auto ofLinks = each([&] { run({program_, bench::kLink}, true); });
        bench::row(kSection, sender + ": processor time of all its processes", "ms", ofLinks,
                   "program that prints one line", each([&] { run({minimal}, true); }));
    }

    void send(int links) {
        for (int i = 0; i < links; ++i) run({program_, bench::kLink}, true);
        waitForAll();
    }

  private:
    void bareExchange() {
        (void)ChromeSingleton::notify(
            {"/usr/bin/browser", "--profile-directory=Default", bench::kLink}, chrome_.socketPath(),
            5.0);
        ++arrived_;
    }

    const std::string program_;
    const test::TempDir folder_;
    test::FakeChrome chrome_{folder_.path()};
    std::size_t arrived_ = 0;
};

}  // namespace

int main(int count, char** values) {
    const std::vector<std::string> arguments(values + 1, values + count);
    if (arguments.size() == 4 && arguments[0] == "--send") {
        Sending(arguments[1]).measure(arguments[2], arguments[3]);
        return 0;
    }
    if (arguments.size() == 3 && arguments[0] == "--just-send") {
        Sending(arguments[1]).send(std::stoi(arguments[2]));
        return 0;
    }
    if (arguments.size() != 3) return 2;

    const bench::World world;
    const auto copy = [&](const std::string& program, const char* name) {
        std::filesystem::create_directories(world / "apps");
        const auto path = world / "apps" / name;
        std::filesystem::copy_file(program, path);
        return path.string();
    };
    const std::string self = "/proc/self/exe";
    const std::string stranger = copy(self, "stranger");
    if (arguments[0] == "--links") {
        run({stranger, "--just-send", arguments[2], arguments[1]});
        return 0;
    }
    const std::string mail = copy(self, "mail");
    world.install("mail", mail);
    const std::string chat = copy(self, "chat");
    world.install("org.example.Chat", chat);
    const std::string console = copy(arguments[1], "console");
    world.install("org.example.Console", console);
    const auto send = [&](const std::string& name) {
        return std::vector<std::string>{"--send", arguments[0], name, arguments[2]};
    };
    const auto joined = [](std::vector<std::string> first, const std::vector<std::string>& rest) {
        first.insert(first.end(), rest.begin(), rest.end());
        return first;
    };
    run(joined({mail}, send("a program with an entry of its own name")));
    run(joined({chat}, send("a program with an entry of another name")));
    run(joined({console, "/bin/sh", "-c", "\"$@\"; exit $?", "sh", stranger},
               send("a script in a terminal")));
    run(joined({stranger}, send("a program that no entry knows")));
    return 0;
}
