#include "Ferrivane/linux/desktop/KeyFile.h"

#include <memory>

#include <glib.h>

namespace ferrivane::KeyFile {
namespace {

constexpr const char* kGroup = "Preferences";

struct Release {
    void operator()(GKeyFile* keys) const { g_key_file_unref(keys); }
};

std::unique_ptr<GKeyFile, Release> load(const std::filesystem::path& file) {
    std::unique_ptr<GKeyFile, Release> keys(g_key_file_new());
    g_key_file_load_from_file(keys.get(), file.c_str(), G_KEY_FILE_KEEP_COMMENTS, nullptr);
    return keys;
}

}  // namespace

bool flag(const std::filesystem::path& file, const std::string& key) {
    return g_key_file_get_boolean(load(file).get(), kGroup, key.c_str(), nullptr) != FALSE;
}

bool setFlag(const std::filesystem::path& file, const std::string& key, bool value) {
    const auto keys = load(file);
    g_key_file_set_boolean(keys.get(), kGroup, key.c_str(), value ? TRUE : FALSE);
    return g_key_file_save_to_file(keys.get(), file.c_str(), nullptr) != FALSE;
}

}  // namespace ferrivane::KeyFile
