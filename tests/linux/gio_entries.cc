// Prints what the desktop's own library says of desktop entries, for a comparison with our reader:
// of every installed one, then of each id on the command line. A record per entry, fields apart:
// id, file, name, "visible" or "", the words of the Exec line.
#include <cstdio>
#include <memory>
#include <string>

#include <gio/gdesktopappinfo.h>

namespace {

constexpr char kFieldEnd = '\x1F';
constexpr char kRecordEnd = '\x1E';

void printField(const char* text) {
    std::fputs(text != nullptr ? text : "", stdout);
    std::fputc(kFieldEnd, stdout);
}

void print(GDesktopAppInfo* entry) {
    GAppInfo* const application = G_APP_INFO(entry);
    std::string id = g_app_info_get_id(application);
    id.resize(id.size() - sizeof ".desktop" + 1);
    printField(id.c_str());
    printField(g_desktop_app_info_get_filename(entry));
    printField(g_app_info_get_name(application));
    printField(g_desktop_app_info_get_nodisplay(entry) == 0 ? "visible" : "");
    gchar** words = nullptr;
    const char* line = g_app_info_get_commandline(application);
    if (line != nullptr && g_shell_parse_argv(line, nullptr, &words, nullptr) != 0) {
        for (gchar** word = words; *word != nullptr; ++word) printField(*word);
    }
    g_strfreev(words);
    std::fputc(kRecordEnd, stdout);
}

}  // namespace

int main(int count, char** values) {
    GList* const all = g_app_info_get_all();
    for (GList* item = all; item != nullptr; item = item->next) {
        print(G_DESKTOP_APP_INFO(item->data));
    }
    g_list_free_full(all, g_object_unref);
    for (int i = 1; i < count; ++i) {
        const std::string id = std::string(values[i]) + ".desktop";
        GDesktopAppInfo* const entry = g_desktop_app_info_new(id.c_str());
        if (entry == nullptr) continue;
        print(entry);
        g_object_unref(entry);
    }
    return 0;
}
