// A link by the session bus, from the call to its arrival in the browser, against the bare exchange
// with the browser, and what the idle agent costs beside a program that only waits for the bus;
// after few links and after many. The browser answers at once.
//
//   agent_bench FERRIVANE
#include <array>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gio/gio.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include "bench/Fixtures.h"
#include "bench/Table.h"
#include "core/ChromeSingleton.h"
#include "tests/support/FakeChrome.h"

namespace {

using namespace ferrivane;

// A process that ends with this program.
class Process {
  public:
    explicit Process(std::vector<std::string> command, int output = STDOUT_FILENO)
        : pid_(bench::start(std::move(command), output)) {}
    ~Process() {
        ::kill(pid_, SIGTERM);
        ::waitpid(pid_, nullptr, 0);
    }
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;
    pid_t pid() const { return pid_; }

  private:
    const pid_t pid_;
};

// From /proc; kilobytes or counts.
double value(pid_t process, const std::string& file, const std::string& key) {
    std::ifstream lines("/proc/" + std::to_string(process) + "/" + file);
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with(key)) return std::strtod(line.c_str() + key.size(), nullptr);
    }
    return -1;
}

double wakeUps(pid_t process) {
    double sum = 0;
    const std::string tasks = "/proc/" + std::to_string(process) + "/task";
    for (const auto& task : std::filesystem::directory_iterator(tasks)) {
        sum += value(process, "task/" + task.path().filename().string() + "/status",
                     "voluntary_ctxt_switches:");
    }
    return sum;
}

class Agent {
  public:
    Agent(const std::string& program, GDBusConnection* bus)
        : process_({program, "--agent"}), bus_(bus) {
        while (!open("ferrivane-bench:")) std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }

    bool open(const std::string& link) const {
        const std::array<const char*, 2> links{link.c_str(), nullptr};
        GVariant* const reply = g_dbus_connection_call_sync(
            bus_, "com.hollowmere.ferrivane", "/com/hollowmere/ferrivane",
            "org.freedesktop.Application", "Open",
            g_variant_new("(^as@a{sv})", links.data(), g_variant_new("a{sv}", nullptr)), nullptr,
            G_DBUS_CALL_FLAGS_NO_AUTO_START, -1, nullptr, nullptr);
        if (reply != nullptr) g_variant_unref(reply);
        return reply != nullptr;
    }

    pid_t pid() const { return process_.pid(); }

  private:
    Process process_;
    GDBusConnection* bus_;
};

std::string startBus(Process*& bus) {
    std::array<int, 2> ends{};
    if (::pipe(ends.data()) != 0) bench::fail("no pipe");
    bus = new Process({"dbus-daemon", "--session", "--nofork", "--print-address"}, ends[1]);
    ::close(ends[1]);
    std::string address;
    for (char c = 0; ::read(ends[0], &c, 1) == 1 && c != '\n';) address.push_back(c);
    return address;
}

// Another program of the session that uses the desktop's library.
int peer() {
    GMainLoop* const loop = g_main_loop_new(nullptr, FALSE);
    GDBusConnection* const bus = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr);
    g_list_free_full(g_app_info_get_all(), g_object_unref);
    g_main_loop_run(loop);
    return bus != nullptr ? 0 : 1;
}

// The measurements of one agent.
class Course {
  public:
    Course(const char* self, const Agent& agent, test::FakeChrome& chrome)
        : self_(self), agent_(agent), chrome_(chrome) {}

    void links(int count) {
        for (int i = 0; i < count; ++i) openOne();
    }

    // `how`: when, and sent by whom.
    void compare(const std::string& how) {
        bench::Values links;
        bench::Values exchanges;
        for (int i = 0; i < bench::runs(500); ++i) {
            exchanges.push_back(bench::milliseconds([&] { bareExchange(); }));
            links.push_back(bench::milliseconds([&] { openOne(); }));
        }
        bench::row("A link by the resident agent", how + ": from the call until the browser has it",
                   "ms", links, "bare exchange with the browser", exchanges);
    }

    void idle(const std::string& when) const {
        const std::string section = "The idle agent";
        const auto kilobytes = [](pid_t process, const char* key) {
            return bench::Values{value(process, "smaps_rollup", key)};
        };
        std::this_thread::sleep_for(std::chrono::seconds(3));
        bench::row(section, when + ", alone: proportional memory", "kB",
                   kilobytes(agent_.pid(), "Pss:"));
        {
            std::vector<std::unique_ptr<Process>> peers;
            constexpr std::size_t kPeers = 4;
            peers.reserve(kPeers);
            while (peers.size() < kPeers) {
                peers.push_back(
                    std::make_unique<Process>(std::vector<std::string>{self_, "--peer"}));
            }
            std::this_thread::sleep_for(std::chrono::seconds(1));
            const std::string reference = "program that waits for the bus";
            const pid_t peer = peers[0]->pid();
            bench::row(section, when + ", beside four others: proportional memory", "kB",
                       kilobytes(agent_.pid(), "Pss:"), reference, kilobytes(peer, "Pss:"));
            bench::row(section, when + ", beside four others: its own memory", "kB",
                       kilobytes(agent_.pid(), "Private_Dirty:"), reference,
                       kilobytes(peer, "Private_Dirty:"));
            const double before = wakeUps(agent_.pid());
            const double ofPeer = wakeUps(peer);
            const int seconds = bench::isQuick() ? 2 : 10;
            std::this_thread::sleep_for(std::chrono::seconds(seconds));
            bench::row(section, when + ": wake-ups in " + std::to_string(seconds) + " s", "",
                       {wakeUps(agent_.pid()) - before}, reference, {wakeUps(peer) - ofPeer});
        }
    }

  private:
    void openOne() {
        agent_.open(bench::kLink);
        chrome_.waitForMessages(++arrived_);
    }
    void bareExchange() {
        (void)ChromeSingleton::notify(
            {"/usr/bin/browser", "--profile-directory=Default", bench::kLink}, chrome_.socketPath(),
            5.0);
        ++arrived_;
    }

    const char* self_;
    const Agent& agent_;
    test::FakeChrome& chrome_;
    std::size_t arrived_ = 1;  // the agent was asked whether it is there
};

}  // namespace

int main(int count, char** values) {
    if (count < 2) return 2;
    if (std::string(values[1]) == "--peer") return peer();
    const bench::World world;
    test::FakeChrome chrome(world / "browser");
    bench::World::useBrowser(chrome.userDataDirectory());

    Process* started = nullptr;
    const std::string address = startBus(started);
    const std::unique_ptr<Process> bus(started);
    ::setenv("DBUS_SESSION_BUS_ADDRESS", address.c_str(), 1);  // NOLINT(concurrency-mt-unsafe)
    GDBusConnection* const connection = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr);
    if (connection == nullptr) return 1;
    g_dbus_connection_set_exit_on_close(connection, FALSE);

    const Agent agent(values[1], connection);
    chrome.waitForMessages(1);
    Course course(values[0], agent, chrome);
    const std::string stranger = ", sent by a program that no entry knows";
    course.links(10);
    course.idle("after 10 links");
    course.compare("after 10 links" + stranger);
    course.links(bench::isQuick() ? 1'000 : 10'000);
    const std::string when = bench::isQuick() ? "after 1,000 links" : "after 10,000 links";
    course.compare(when + stranger);
    course.idle(when);
    world.install("agent_bench", std::filesystem::read_symlink("/proc/self/exe"));
    course.compare(when + ", sent by a program with an entry of its own name");
    return 0;
}
