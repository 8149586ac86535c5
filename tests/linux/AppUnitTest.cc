#include <gtest/gtest.h>

#include "Ferrivane/linux/AppUnit.h"

namespace ferrivane {
namespace {

using Ids = std::vector<std::string>;

TEST(AppUnit, CandidateIds) {
    const std::string user = "/user.slice/user-1000.slice/user@1000.service/app.slice/";
    const std::string uuid = "8a6d9f0c-1b2e-4c3d-9e8f-0123456789ab";
    const struct {
        const char* name;
        std::string group;
        Ids ids;
    } rows[] = {
        {"a scope", user + "app-org.example.Chat-4711.scope", {"org.example.Chat"}},
        {"a scope with its launcher",
         user + "app-gnome-org.example.Chat-4711.scope",
         {"org.example.Chat", "gnome-org.example.Chat"}},
        {"an id with a dash",
         user + R"(app-gnome-my\x2dchat-4711.scope)",
         {"my-chat", "gnome-my-chat"}},
        {"an id with a dash and no launcher", user + R"(app-my\x2dchat-4711.scope)", {"my-chat"}},
        {"other escapes",
         user + R"(app-KDE-caf\xc3\xa9\x20x-1.scope)",
         {"caf\u00e9 x", "KDE-caf\u00e9 x"}},
        {"what only looks like an escape", user + R"(app-a\xzz\x2\-1.scope)", {R"(a\xzz\x2\)"}},
        {"a Flatpak's scope",
         user + "app-flatpak-org.example.Chat-4711.scope",
         {"org.example.Chat", "flatpak-org.example.Chat"}},
        {"a service", user + "app-org.example.Chat.service", {"org.example.Chat"}},
        {"a service with its launcher",
         user + "app-gnome-org.example.Chat@4711.service",
         {"org.example.Chat", "gnome-org.example.Chat"}},
        {"an application started with the session",
         user + "app-org.example.Chat@autostart.service",
         {"org.example.Chat"}},
        {"a slice of an application",
         user + "app-org.example.Term.slice/vte-spawn-1.scope",
         {"org.example.Term"}},
        {"the inner unit before the outer",
         user + "app-org.example.Term.slice/app-org.example.Chat-1.scope",
         {"org.example.Chat", "org.example.Term"}},
        {"a group below the unit",
         user + "app-org.example.Chat-1.scope/part/of/it",
         {"org.example.Chat"}},
        {"a Snap's scope", user + "snap.chat.chat-" + uuid + ".scope", {"chat_chat"}},
        {"an older Snap's scope", user + "snap.chat.chat." + uuid + ".scope", {"chat_chat"}},
        {"a Snap with dashes",
         user + "snap.my-chat.the-app-" + uuid + ".scope",
         {"my-chat_the-app"}},
        {"a Snap's service", "/system.slice/snap.chat.chat.service", {"chat_chat"}},
        {"half a Snap", user + "snap.chat.scope", {}},
        {"a service of the session", user + "dbus.service", {}},
        {"a session", "/user.slice/user-1000.slice/session-2.scope", {}},
        {"a scope of something else", user + "vte-spawn-1.scope", {}},
        {"the slice of all applications", user, {}},
        {"a unit of another kind", user + "app-org.example.Chat.socket", {}},
        {"a scope without an id", user + "app-.scope", {}},
        {"a scope with a number only", user + "app--4711.scope", {}},
        {"a launcher without an id", user + "app-gnome--4711.scope", {"gnome-"}},
        {"a service without an id", user + "app-@autostart.service", {}},
        {"a unit's name alone", "app-org.example.Chat-4711.scope", {"org.example.Chat"}},
        {"the root", "/", {}},
        {"nothing", "", {}},
        {"slashes", "///", {}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(AppUnit::candidateIds(row.group), row.ids);
    }
}

}  // namespace
}  // namespace ferrivane
