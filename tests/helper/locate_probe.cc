// Prints what the program itself finds, each text ended by a NUL: the bundled script or nothing,
// Chrome's user data directory, its executable or nothing, and the words of its command.
#include <iostream>

#include "Ferrivane/linux/ChromeLocation.h"
#include "Ferrivane/linux/Environment.h"
#include "Ferrivane/linux/LinuxScripts.h"
#include "core/port/Paths.h"

int main() {
    using namespace ferrivane;
    EventLoop loop;
    std::cout << LinuxScripts(loop).bundledHelper().value_or("").string() << '\0';
    const auto chrome =
        ChromeLocator::locate(DesktopEntries::ofSession(), Paths::home(), environment);
    if (!chrome) {
        std::cout << Paths::chromeUserDataDirectory().string() << '\0' << '\0';
        return 0;
    }
    std::cout << chrome->userDataDirectory.string() << '\0' << chrome->executable.string() << '\0';
    for (const std::string& word : chrome->command) std::cout << word << '\0';
    return 0;
}
