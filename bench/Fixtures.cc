#include "bench/Fixtures.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string_view>

#include <fcntl.h>
#include <spawn.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "bench/Table.h"
#include "core/support/FileDescriptor.h"

namespace ferrivane::bench {
namespace {

constexpr std::array<std::string_view, 46> kLanguages{
    "ar", "bg", "ca", "cs", "da", "de", "el",    "en_GB", "eo",    "es",       "et", "eu",
    "fi", "fr", "gl", "he", "hr", "hu", "id",    "is",    "it",    "ja",       "ko", "lt",
    "lv", "nb", "nl", "nn", "pl", "pt", "ro",    "ru",    "sk",    "sl",       "sr", "sv",
    "ta", "th", "tr", "uk", "vi", "wa", "zh_CN", "zh_TW", "pt_BR", "sr@latin",
};

void set(const char* name, const std::string& value) {
    ::setenv(name, value.c_str(), 1);  // NOLINT(concurrency-mt-unsafe)
}

}  // namespace

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

Config rules(std::size_t count) {
    Config config;
    for (std::size_t i = 0; i < count; ++i) {
        const std::string number = std::to_string(i);
        config.rules.emplace_back(Rule::kAllKinds[i % Rule::kAllKinds.size()],
                                  "client-" + number + ".example", "Client " + number);
    }
    return config;
}

void writeEntries(const std::filesystem::path& folder, int count) {
    std::filesystem::create_directories(folder);
    constexpr std::array<std::pair<std::string_view, std::string_view>, 3> kTexts{{
        {"Name", "Example"},
        {"GenericName", "Editor of one kind of document"},
        {"Comment", "Opens, changes and prints documents of one kind, and shows what is in others"},
    }};
    for (int i = 0; i < count; ++i) {
        const std::string number = std::to_string(i);
        const std::string program = "program-" + number;
        std::ofstream file(folder / ("org.example.Program" + number + ".desktop"));
        file << "[Desktop Entry]\nType=Application\nVersion=1.0\n";
        const auto languages = static_cast<std::size_t>(i) * 7 % (kLanguages.size() + 1);
        for (const auto& [key, text] : kTexts) {
            file << key << '=' << text << ' ' << number << '\n';
            for (std::size_t language = 0; language < languages; ++language) {
                file << key << '[' << kLanguages[language] << "]=" << text << " – größer, "
                     << number << '\n';
            }
        }
        file << "Exec=/usr/bin/" << program << " --open %U\nIcon=" << program
             << "\nTerminal=false\nCategories=Office;\nMimeType=text/plain;application/x-kind-"
             << number << ";\n";
        if (i % 4 == 0) {
            file << "Actions=new;\n\n[Desktop Action new]\nName=New\nExec=/usr/bin/" << program
                 << " --new\n";
        }
    }
}

World::World() {
    for (const char* name : {"HOME", "XDG_CONFIG_HOME", "XDG_STATE_HOME", "XDG_DATA_HOME",
                             "XDG_DATA_DIRS", "XDG_CONFIG_DIRS", "XDG_RUNTIME_DIR"}) {
        std::filesystem::create_directories(folder_ / name);
        set(name, folder_ / name);
    }
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "DESKTOP_STARTUP_ID"}) {
        ::unsetenv(name);  // NOLINT(concurrency-mt-unsafe)
    }
    set("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + (folder_ / "no-bus").string());
    (void)rules(kRules).save(folder_ / "XDG_CONFIG_HOME/ferrivane/rules.json");
    writeEntries(folder_ / "XDG_DATA_DIRS/applications", kEntries);
    install("chromium", "/bin/true");
}

void World::install(const std::string& id, const std::filesystem::path& program) const {
    const auto folder = folder_ / "XDG_DATA_HOME/applications";
    std::filesystem::create_directories(folder);
    std::ofstream(folder / (id + ".desktop")) << "[Desktop Entry]\nType=Application\nName=" << id
                                              << "\nExec=" << program.string() << " %U\n";
}

void World::useBrowser(const std::filesystem::path& userDataDirectory) {
    set("CHROME_USER_DATA_DIR", userDataDirectory);
    std::ofstream(userDataDirectory / "Local State") << localState(kCatalogueBytes);
}

pid_t start(std::vector<std::string> command, int output) {
    std::vector<char*> arguments;
    arguments.reserve(command.size() + 1);
    for (std::string& word : command) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions{};
    ::posix_spawn_file_actions_init(&actions);
    pid_t process = 0;
    const bool isStarted =
        ::posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO) == 0 &&
        ::posix_spawnp(&process, arguments[0], &actions, nullptr, arguments.data(), environ) == 0;
    ::posix_spawn_file_actions_destroy(&actions);
    if (!isStarted) fail("cannot start " + command[0]);
    return process;
}

std::vector<double> numbersOf(const std::string& command, std::size_t count) {
    FILE* const output = ::popen(command.c_str(), "r");  // NOLINT(concurrency-mt-unsafe)
    if (output == nullptr) fail("cannot run " + command);
    std::vector<double> numbers;
    numbers.reserve(count);
    for (double number = 0; std::fscanf(output, "%lf", &number) == 1;) numbers.push_back(number);
    if (::pclose(output) != 0 || numbers.size() != count) fail("no figures from " + command);
    return numbers;
}

void run(const std::vector<std::string>& command, bool isSilent) {
    static const FileDescriptor nowhere(::open("/dev/null", O_WRONLY | O_CLOEXEC));
    int status = 1;
    ::waitpid(start(command, isSilent ? nowhere.get() : STDOUT_FILENO), &status, 0);
    if (status != 0) fail(command[0] + " failed");
}

void adoptOrphans() {
    ::prctl(PR_SET_CHILD_SUBREAPER, 1);
}

void waitForAll() {
    while (::waitpid(-1, nullptr, 0) > 0) {
    }
}

}  // namespace ferrivane::bench
