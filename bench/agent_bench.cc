// A link by the session bus, from the call to its arrival in the browser, against the bare exchange
// with the browser; after few links and after many; and what the idle agent costs. With 200 rules,
// a catalogue of 1 MB, and a browser that answers at once.
//
//   agent_bench FERRIVANE
#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gio/gio.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "bench/Fixtures.h"
#include "core/ChromeSingleton.h"
#include "tests/support/FakeChrome.h"
#include "tests/support/Files.h"
#include "tests/support/TempDir.h"

namespace {

using namespace ferrivane;
using Clock = std::chrono::steady_clock;

// A process that ends with this program.
class Process {
  public:
    explicit Process(std::vector<std::string> command, int output = STDOUT_FILENO) {
        std::vector<char*> arguments;
        for (std::string& word : command) arguments.push_back(word.data());
        arguments.push_back(nullptr);
        posix_spawn_file_actions_t actions{};
        ::posix_spawn_file_actions_init(&actions);
        ::posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
        if (::posix_spawnp(&pid_, arguments[0], &actions, nullptr, arguments.data(), environ) !=
            0) {
            std::cerr << "cannot start " << command[0] << "\n";
            std::exit(1);
        }
        ::posix_spawn_file_actions_destroy(&actions);
    }
    ~Process() {
        ::kill(pid_, SIGTERM);
        ::waitpid(pid_, nullptr, 0);
    }
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;
    pid_t pid() const { return pid_; }

  private:
    pid_t pid_ = 0;
};

double millisecondsSince(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

double median(std::vector<double> values) {
    std::ranges::sort(values);
    return values[values.size() / 2];
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

    // From /proc; kilobytes or counts.
    long value(const std::string& file, const std::string& key) const {
        std::ifstream lines("/proc/" + std::to_string(process_.pid()) + "/" + file);
        for (std::string line; std::getline(lines, line);) {
            if (line.starts_with(key)) return std::strtol(line.c_str() + key.size(), nullptr, 10);
        }
        return -1;
    }
    long wakeUps() const {
        long sum = 0;
        const std::string tasks = "/proc/" + std::to_string(process_.pid()) + "/task";
        for (const auto& task : std::filesystem::directory_iterator(tasks)) {
            sum += value("task/" + task.path().filename().string() + "/status",
                         "voluntary_ctxt_switches:");
        }
        return sum;
    }

  private:
    Process process_;
    GDBusConnection* bus_;
};

std::string startBus(Process*& bus) {
    std::array<int, 2> ends{};
    if (::pipe(ends.data()) != 0) std::exit(1);
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

}  // namespace

int main(int count, char** values) {
    if (count < 2) return 2;
    if (std::string(values[1]) == "--peer") return peer();
    const test::TempDir folder;
    const auto set = [](const char* name, const std::string& value) {
        ::setenv(name, value.c_str(), 1);
    };
    for (const char* name : {"XDG_CONFIG_HOME", "XDG_STATE_HOME", "XDG_DATA_HOME", "XDG_DATA_DIRS",
                             "XDG_RUNTIME_DIR", "HOME"}) {
        set(name, folder.path() / name);
        std::filesystem::create_directories(folder.path() / name);
    }
    ::unsetenv("DISPLAY");
    ::unsetenv("WAYLAND_DISPLAY");
    test::FakeChrome chrome(folder.path());
    set("CHROME_USER_DATA_DIR", chrome.userDataDirectory());
    std::ofstream(chrome.userDataDirectory() / "Local State") << bench::localState();
    std::filesystem::create_directories(folder.path() / "XDG_CONFIG_HOME/ferrivane");
    std::ofstream(folder.path() / "XDG_CONFIG_HOME/ferrivane/rules.json") << bench::rules();
    std::filesystem::create_directories(folder.path() / "XDG_DATA_HOME/applications");
    std::ofstream(folder.path() / "XDG_DATA_HOME/applications/chromium.desktop")
        << "[Desktop Entry]\nType=Application\nName=Chromium\nExec=/bin/true\n";

    Process* bus = nullptr;
    set("DBUS_SESSION_BUS_ADDRESS", startBus(bus));
    GDBusConnection* const connection = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr);
    if (connection == nullptr) return 1;
    g_dbus_connection_set_exit_on_close(connection, FALSE);
    {
        const Agent agent(values[1], connection);
        std::size_t arrived = 1;
        chrome.waitForMessages(arrived);
        const auto openOne = [&] {
            const auto start = Clock::now();
            agent.open("https://somewhere.example/a/path?and=a&query");
            chrome.waitForMessages(++arrived);
            return millisecondsSince(start);
        };
        const auto bareExchange = [&] {
            const auto start = Clock::now();
            (void)ChromeSingleton::notify({"/usr/bin/browser", "--profile-directory=Default",
                                           "https://somewhere.example/a/path?and=a&query"},
                                          chrome.socketPath(), 5.0);
            ++arrived;
            return millisecondsSince(start);
        };
        const auto compare = [&](const char* when) {
            std::vector<double> agentTimes;
            std::vector<double> bareTimes;
            for (int i = 0; i < 200; ++i) {
                bareTimes.push_back(bareExchange());
                agentTimes.push_back(openOne());
            }
            std::printf("%-22s bare exchange %.3f ms, link by the bus %.3f ms: %.3f ms more\n",
                        when, median(bareTimes), median(agentTimes),
                        median(agentTimes) - median(bareTimes));
        };
        const auto showMemory = [&](const char* when) {
            std::printf("%-22s PSS %ld kB, of that not shareable %ld kB\n", when,
                        agent.value("smaps_rollup", "Pss:"),
                        agent.value("smaps_rollup", "Private_Dirty:"));
        };
        std::this_thread::sleep_for(std::chrono::seconds(3));
        showMemory("idle, alone");
        {
            std::vector<std::unique_ptr<Process>> peers;
            for (int i = 0; i < 4; ++i) {
                peers.push_back(
                    std::make_unique<Process>(std::vector<std::string>{values[0], "--peer"}));
            }
            std::this_thread::sleep_for(std::chrono::seconds(1));
            showMemory("idle, beside four more");
        }
        const long before = agent.wakeUps();
        std::this_thread::sleep_for(std::chrono::seconds(5));
        std::printf("                       %ld wake-ups in 5 s\n", agent.wakeUps() - before);
        for (int i = 0; i < 10; ++i) openOne();
        compare("after 10 links");
        for (int i = 0; i < 10'000; ++i) openOne();
        compare("after 10,000 links");
        std::this_thread::sleep_for(std::chrono::seconds(3));
        showMemory("idle again, alone");
    }
    delete bus;
    return 0;
}
