// Asks the adapters from a process of its own, as a link's process does: its parents, environment
// and bus connection are its own. Prints one line.
//
//   adapter_probe opener                 who sent a link to this process
//   adapter_probe run PROGRAM ARGUMENT…  runs a child and waits, as a start of this very program
//   adapter_probe handler SCHEME
//   adapter_probe owner NAME
//   adapter_probe front                  the active window's process and application
//   adapter_probe activate PID
//   adapter_probe scope PID
#include <cstdio>
#include <iostream>
#include <string>
#include <vector>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "Ferrivane/linux/DesktopEntries.h"
#include "Ferrivane/linux/DesktopServices.h"
#include "Ferrivane/linux/LinuxApplications.h"
#include "Ferrivane/linux/LinuxFrontmost.h"
#include "Ferrivane/linux/Senders.h"

namespace {

using namespace ferrivane;

std::string describe(const std::optional<Opener>& opener) {
    if (!opener) return "nobody";
    return opener->name.value_or("-") + "|" + opener->bundleId.value_or("-") + "|" +
           opener->path.value_or("-");
}

std::string describe(const std::optional<Frontmost::Application>& front) {
    if (!front) return "unknown";
    return (front->process ? std::to_string(*front->process) : "-") + "|" +
           front->name.value_or("-");
}

int runChild(char** arguments) {
    pid_t child = 0;
    if (::posix_spawnp(&child, arguments[0], nullptr, nullptr, arguments, environ) != 0) return 127;
    int status = 0;
    ::waitpid(child, &status, 0);
    return WEXITSTATUS(status);
}

}  // namespace

int main(int count, char** values) {
    const std::string question = count > 1 ? values[1] : "";
    const std::string argument = count > 2 ? values[2] : "";
    if (question == "run" && count > 2) return runChild(values + 2);

    const auto entries = DesktopEntries::ofSession();
    const std::optional<ChromeLocation> noChrome;
    const LinuxApplications applications(entries, noChrome);
    LinuxFrontmost frontmost(entries);
    if (question == "opener") {
        std::cout << describe(Senders::opener(Senders::ownOrigin(), entries));
    } else if (question == "handler") {
        std::cout << applications.handler(argument).value_or("nothing").string();
    } else if (question == "owner") {
        const auto processes = applications.running(argument);
        std::cout << (processes.empty() ? "nobody" : std::to_string(processes.front()));
    } else if (question == "front") {
        std::cout << describe(frontmost.current());
    } else if (question == "activate") {
        std::cout << (frontmost.activate(std::stoi(argument)) ? "asked" : "not asked");
    } else if (question == "scope") {
        DesktopServices* services = desktopServices();
        if (services != nullptr) services->moveToOwnScope(std::stoi(argument));
        std::cout << (services != nullptr ? "asked" : "no module");
    } else {
        return 2;
    }
    std::cout << '\n';
    return 0;
}
