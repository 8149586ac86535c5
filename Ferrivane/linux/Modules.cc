#include "Ferrivane/linux/Modules.h"

#include <iostream>

#include <dlfcn.h>
#include <unistd.h>

#include "Ferrivane/linux/Processes.h"
#include "Ferrivane/linux/Version.h"

namespace ferrivane::Modules {
namespace {

std::string ofThisVersion(const std::string& name) {
    return name + "-" + std::string(buildVersion()) + ".so";
}

}  // namespace

std::string desktop() {
    return ofThisVersion("ferrivane-desktop");
}

std::string windows() {
    return ofThisVersion("ferrivane-ui");
}

std::optional<std::filesystem::path> find(const std::string& fileName) {
    const auto folder = Processes::executable(::getpid()).value_or("/").parent_path();
    for (const auto& file : {folder / fileName, folder / FERRIVANE_MODULE_FOLDER / fileName}) {
        if (::access(file.c_str(), R_OK) == 0) return file;
    }
    return std::nullopt;
}

void* load(const std::string& fileName, const char* entry) {
    std::string reason = "not installed";
    if (const auto file = find(fileName)) {
        void* const module = ::dlopen(file->c_str(), RTLD_NOW | RTLD_LOCAL);
        if (void* const address = module != nullptr ? ::dlsym(module, entry) : nullptr) {
            return address;
        }
        const char* const error = ::dlerror();  // NOLINT(concurrency-mt-unsafe)
        if (error != nullptr) reason = error;
    }
    std::cerr << "Ferrivane: cannot load " << fileName << ": " << reason << "\n";
    return nullptr;
}

}  // namespace ferrivane::Modules
