// Behaves as a browser does at its start, as far as a launcher sees it. Arguments that it does not
// know are only reported:
//
//   --report=FILE         writes what kind of process it is, then renames the file into place
//   --sleep=MILLISECONDS  before anything below
//   --exit=STATUS, --signal=NUMBER
//   --user-data-dir=FOLDER  makes the lock, then the socket, and listens as long as the folder is
//                           there
//   --socket-later=MILLISECONDS  between the two
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <thread>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

std::string lineOf(const char* file, const std::string& key) {
    std::ifstream lines(file);
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with(key)) return line.substr(key.size());
    }
    return "";
}

void report(const fs::path& file, int count, char** values) {
    const char* token = std::getenv("XDG_ACTIVATION_TOKEN");  // NOLINT(concurrency-mt-unsafe)
    // Before the report itself is opened.
    std::map<int, std::string> descriptors;
    for (int fd = 0; fd < 256; ++fd) {
        std::error_code error;
        const auto target = fs::read_symlink("/proc/self/fd/" + std::to_string(fd), error);
        if (!error) descriptors[fd] = target;
    }
    fs::path unfinished = file;
    unfinished += ".part";
    std::ofstream out(unfinished);
    for (int i = 1; i < count; ++i) {
        if (!std::string(values[i]).starts_with("--report="))
            out << "argument " << values[i] << '\n';
    }
    out << "token " << (token != nullptr ? token : "(none)") << '\n';
    out << "session " << (::getsid(0) == ::getpid() ? "its own" : "another's") << '\n';
    for (const auto& [fd, target] : descriptors) out << fd << " " << target << '\n';
    out << "blocked " << std::stoull(lineOf("/proc/self/status", "SigBlk:"), nullptr, 16) << '\n';
    // Two signals are the C library's own, which ignores them in what it spawns.
    constexpr unsigned long long kLibrarys = 0x180000000;
    const std::string ignored = lineOf("/proc/self/status", "SigIgn:");
    out << "ignored " << (std::stoull(ignored, nullptr, 16) & ~kLibrarys) << '\n';
    out.close();
    fs::rename(unfinished, file);
}

void pause(const std::string& milliseconds) {
    std::this_thread::sleep_for(std::chrono::milliseconds(std::stoi(milliseconds)));
}

// Replaces what a browser that crashed has left behind.
void makeLink(const std::string& text, const fs::path& link) {
    fs::remove(link);
    fs::create_symlink(text, link);
}

void listenIn(const fs::path& folder, const std::string& socketLater) {
    fs::create_directories(folder);
    char host[256] = {};
    ::gethostname(host, sizeof host - 1);
    makeLink(host + ("-" + std::to_string(::getpid())), folder / "SingletonLock");
    pause(socketLater);
    const fs::path socketFolder = folder / ("s" + std::to_string(::getpid()));
    fs::create_directories(socketFolder);
    const std::string path = socketFolder / "SingletonSocket";
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.data(), path.size());
    const int listener = ::socket(AF_UNIX, SOCK_STREAM, 0);
    if (listener < 0 ||
        ::bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        ::listen(listener, 5) != 0) {
        return;
    }
    makeLink("4711", socketFolder / "SingletonCookie");
    makeLink("4711", folder / "SingletonCookie");
    makeLink(path, folder / "SingletonSocket");
    const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(5);
    while (fs::exists(folder) && std::chrono::steady_clock::now() < end) {
        pollfd ready{listener, POLLIN, 0};
        if (::poll(&ready, 1, 20) > 0) ::close(::accept(listener, nullptr, nullptr));
    }
}

}  // namespace

int main(int count, char** values) {
    std::map<std::string, std::string> options{{"sleep", "0"}, {"socket-later", "0"}};
    for (int i = 1; i < count; ++i) {
        const std::string word = values[i];
        const std::size_t equals = word.find('=');
        if (word.starts_with("--") && equals != std::string::npos) {
            options[word.substr(2, equals - 2)] = word.substr(equals + 1);
        }
    }
    if (options.contains("report")) report(options["report"], count, values);
    pause(options["sleep"]);
    if (options.contains("exit")) return std::stoi(options["exit"]);
    if (options.contains("signal")) std::raise(std::stoi(options["signal"]));
    if (options.contains("user-data-dir"))
        listenIn(options["user-data-dir"], options["socket-later"]);
    return 0;
}
