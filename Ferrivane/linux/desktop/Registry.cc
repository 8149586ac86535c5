#include "Ferrivane/linux/desktop/Registry.h"

#include <algorithm>
#include <sstream>

#include <gio/gdesktopappinfo.h>

#include "Ferrivane/linux/desktop/GObjects.h"

namespace ferrivane::Registry {
namespace {

struct KeyFileRelease {
    void operator()(GKeyFile* file) const { g_key_file_unref(file); }
};
struct ListRelease {
    void operator()(gchar** list) const { g_strfreev(list); }
};

ObjectPointer<GAppInfo> defaultApplication(std::string_view scheme) {
    return ObjectPointer<GAppInfo>(
        g_app_info_get_default_for_uri_scheme(std::string(scheme).c_str()));
}

std::string contentType(std::string_view scheme) {
    return "x-scheme-handler/" + std::string(scheme);
}

bool names(const std::filesystem::path& list, const std::string& type, const char* id) {
    const std::unique_ptr<GKeyFile, KeyFileRelease> file(g_key_file_new());
    if (!g_key_file_load_from_file(file.get(), list.c_str(), G_KEY_FILE_NONE, nullptr))
        return false;
    const std::unique_ptr<gchar*, ListRelease> defaults(g_key_file_get_string_list(
        file.get(), "Default Applications", type.c_str(), nullptr, nullptr));
    return defaults && g_strv_contains(defaults.get(), id);
}

}  // namespace

std::optional<std::filesystem::path> handler(std::string_view scheme) {
    const auto application = defaultApplication(scheme);
    if (!application || !G_IS_DESKTOP_APP_INFO(application.get())) return std::nullopt;
    const char* file = g_desktop_app_info_get_filename(G_DESKTOP_APP_INFO(application.get()));
    return file != nullptr ? std::optional<std::filesystem::path>(file) : std::nullopt;
}

std::expected<void, std::string> setHandler(const std::string& id, std::string_view scheme) {
    const std::string name = id + ".desktop";
    const ObjectPointer<GDesktopAppInfo> application(g_desktop_app_info_new(name.c_str()));
    if (!application) return std::unexpected("the desktop knows no usable " + name);
    GError* error = nullptr;
    if (!g_app_info_set_as_default_for_type(G_APP_INFO(application.get()),
                                            contentType(scheme).c_str(), &error)) {
        const ErrorPointer held(error);
        return std::unexpected(error != nullptr ? error->message : "the desktop refused");
    }
    return {};
}

std::optional<std::filesystem::path> overridingList(std::string_view scheme) {
    const auto application = defaultApplication(scheme);
    const char* id = application ? g_app_info_get_id(application.get()) : nullptr;
    const char* desktops = g_getenv("XDG_CURRENT_DESKTOP");
    if (id == nullptr || desktops == nullptr) return std::nullopt;
    std::istringstream stream(desktops);
    for (std::string desktop; std::getline(stream, desktop, ':');) {
        std::ranges::transform(desktop, desktop.begin(), g_ascii_tolower);
        auto list = std::filesystem::path(g_get_user_config_dir()) / (desktop + "-mimeapps.list");
        if (names(list, contentType(scheme), id)) return list;
    }
    return std::nullopt;
}

}  // namespace ferrivane::Registry
