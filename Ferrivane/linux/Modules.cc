#include "Ferrivane/linux/Modules.h"

#include <filesystem>
#include <iostream>

#include <dlfcn.h>
#include <unistd.h>

#include "Ferrivane/linux/Processes.h"

namespace ferrivane::Modules {

void* load(const std::string& fileName, const char* entry) {
    const auto folder = Processes::executable(::getpid()).value_or("/").parent_path();
    std::string reason = "not installed";
    for (const auto& file : {folder / fileName, folder / FERRIVANE_MODULE_FOLDER / fileName}) {
        if (::access(file.c_str(), R_OK) != 0) continue;
        void* const module = ::dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
        if (void* const address = module != nullptr ? ::dlsym(module, entry) : nullptr) {
            return address;
        }
        if (const char* const error = ::dlerror()) reason = error;
        break;
    }
    std::cerr << "Ferrivane: cannot load " << fileName << ": " << reason << "\n";
    return nullptr;
}

}  // namespace ferrivane::Modules
