#include "Ferrivane/linux/desktop/Registry.h"

#include <string>

#include <gio/gdesktopappinfo.h>

#include "Ferrivane/linux/desktop/GObjects.h"

namespace ferrivane::Registry {

std::optional<std::filesystem::path> handler(std::string_view scheme) {
    const ObjectPointer<GAppInfo> application(
        g_app_info_get_default_for_uri_scheme(std::string(scheme).c_str()));
    if (!application || !G_IS_DESKTOP_APP_INFO(application.get())) return std::nullopt;
    const char* file = g_desktop_app_info_get_filename(G_DESKTOP_APP_INFO(application.get()));
    return file != nullptr ? std::optional<std::filesystem::path>(file) : std::nullopt;
}

}  // namespace ferrivane::Registry
