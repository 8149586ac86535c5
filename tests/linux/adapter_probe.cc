// Asks the adapters from a process of its own, as a link's process does: its parents, environment
// and bus connection are its own. Prints one line, of running applications one for each.
//
//   adapter_probe opener                 who sent a link to this process
//   adapter_probe run PROGRAM ARGUMENT…  runs a child and waits, as a start of this very program
//   adapter_probe handler SCHEME
//   adapter_probe set SCHEME ENTRY       makes it the handler
//   adapter_probe setting SCHEME ENTRY   what keeps it from being the handler
//   adapter_probe owner NAME
//   adapter_probe front                  the active window's process and application
//   adapter_probe activate PID
//   adapter_probe running                the running applications to choose from
//   adapter_probe scope PID
//   adapter_probe loop                   a timer and a child's end through the library's loop
//   adapter_probe flag KEY               a preference
//   adapter_probe set-flag KEY
//   adapter_probe open FILE              with the person's application for it
#include <chrono>
#include <cstdio>
#include <iostream>
#include <string>
#include <vector>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "Ferrivane/RunningApp.h"
#include "Ferrivane/linux/DesktopEntries.h"
#include "Ferrivane/linux/DesktopServices.h"
#include "Ferrivane/linux/EventLoop.h"
#include "Ferrivane/linux/LinuxApplications.h"
#include "Ferrivane/linux/LinuxFrontmost.h"
#include "Ferrivane/linux/LinuxPreferences.h"
#include "Ferrivane/linux/LinuxUserInterface.h"
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

std::string describe(const std::vector<RunningApp>& running) {
    std::string lines;
    for (const RunningApp& app : running) {
        lines += (lines.empty() ? "" : "\n") + app.name + "|" + app.bundleId + "|" + app.path +
                 "|" + app.matchValue + "|" + std::to_string(app.id);
    }
    return lines;
}

int runChild(char** arguments) {
    pid_t child = 0;
    if (::posix_spawnp(&child, arguments[0], nullptr, nullptr, arguments, environ) != 0) return 127;
    int status = 0;
    ::waitpid(child, &status, 0);
    return WEXITSTATUS(status);
}

std::string throughTheLibrary() {
    EventLoop loop;
    attachTo(*desktopServices(), loop);
    std::string happened;
    char program[] = "false";
    char* const arguments[] = {program, nullptr};
    pid_t child = 0;
    ::posix_spawnp(&child, program, nullptr, nullptr, arguments, environ);
    loop.watchChild(child, [&](int status) { happened += "child " + std::to_string(status); });
    loop.runUntilIdle();
    loop.after(std::chrono::milliseconds(10), [&] {
        happened += ", timer";
        loop.after({}, [&] { loop.stop(); });
    });
    loop.run();
    return happened;
}

}  // namespace

int main(int count, char** values) {
    const std::string question = count > 1 ? values[1] : "";
    const std::string argument = count > 2 ? values[2] : "";
    if (question == "run" && count > 2) return runChild(values + 2);

    const auto entries = DesktopEntries::ofSession();
    const std::optional<ChromeLocation> noChrome;
    LinuxApplications applications(entries, noChrome);
    const std::string entry = count > 3 ? values[3] : "";
    LinuxFrontmost frontmost(entries);
    if (question == "opener") {
        std::cout << describe(Senders::opener(Senders::ownOrigin(), entries));
    } else if (question == "handler") {
        std::cout << applications.handler(argument).value_or("nothing").string();
    } else if (question == "set") {
        applications.setHandler(entry, argument, [](std::expected<void, PlatformError> result) {
            std::cout << (result ? "accepted" : result.error().text);
        });
    } else if (question == "setting") {
        std::cout << applications.overridingSetting(entry, {argument}).value_or("nothing");
    } else if (question == "owner") {
        const auto processes = applications.running(argument);
        std::cout << (processes.empty() ? "nobody" : std::to_string(processes.front()));
    } else if (question == "front") {
        std::cout << describe(frontmost.current());
    } else if (question == "running") {
        std::cout << describe(RunningApp::current(applications));
    } else if (question == "activate") {
        std::cout << (frontmost.activate(std::stoi(argument)) ? "asked" : "not asked");
    } else if (question == "scope") {
        DesktopServices* services = desktopServices();
        if (services != nullptr) services->moveToOwnScope(std::stoi(argument));
        std::cout << (services != nullptr ? "asked" : "no module");
    } else if (question == "loop") {
        std::cout << throughTheLibrary();
    } else if (question == "flag") {
        std::cout << (LinuxPreferences().flag(argument) ? "set" : "not set");
    } else if (question == "set-flag") {
        LinuxPreferences().setFlag(argument, true);
        std::cout << "done";
    } else if (question == "open") {
        EventLoop loop;
        LinuxPreferences preferences;
        const auto opened = LinuxUserInterface(loop, preferences).openDocument(argument);
        std::cout << (opened ? "opened" : opened.error().text);
    } else {
        return 2;
    }
    std::cout << '\n';
    return 0;
}
