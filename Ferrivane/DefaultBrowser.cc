#include "Ferrivane/DefaultBrowser.h"

namespace ferrivane::DefaultBrowser {

std::optional<std::filesystem::path> handler(const Applications& applications,
                                             std::string_view scheme) {
    return applications.handler(scheme);
}

}  // namespace ferrivane::DefaultBrowser
