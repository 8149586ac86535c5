#include "Ferrivane/linux/DesktopServices.h"

#include <iostream>

#include <dlfcn.h>
#include <unistd.h>

#include "Ferrivane/linux/Processes.h"

namespace ferrivane {
namespace {

// Beside the executable in a build, in the library folder once installed.
void* openModule() {
    const auto executable = Processes::executable(::getpid()).value_or("/");
    const std::filesystem::path built = executable.parent_path() / FERRIVANE_DESKTOP_MODULE;
    const std::filesystem::path installed =
        executable.parent_path() / FERRIVANE_MODULE_FOLDER / FERRIVANE_DESKTOP_MODULE;
    for (const std::filesystem::path& file : {built, installed}) {
        if (::access(file.c_str(), R_OK) == 0) return ::dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    }
    return nullptr;
}

DesktopServices* load() {
    if (void* module = openModule()) {
        using Create = DesktopServices* (*)();
        if (const auto create =
                reinterpret_cast<Create>(::dlsym(module, "ferrivane_desktop_services"))) {
            return create();
        }
    }
    std::cerr << "Ferrivane: " << FERRIVANE_DESKTOP_MODULE << " cannot be loaded\n";
    return nullptr;
}

}  // namespace

DesktopServices* desktopServices() {
    static DesktopServices* const services = load();
    return services;
}

}  // namespace ferrivane
