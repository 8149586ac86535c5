#include "Ferrivane/linux/desktop/StatusNotifier.h"

#include <memory>
#include <string_view>
#include <utility>

#include "Ferrivane/linux/desktop/GObjects.h"
#include "Ferrivane/linux/desktop/MenuService.h"
#include "Ferrivane/linux/desktop/SessionBus.h"
#include "Ferrivane/linux/desktop/StatusIcon.h"

namespace ferrivane::StatusNotifier {
namespace {

constexpr const char* kPath = "/StatusNotifierItem";
constexpr const char* kWatcher = "org.kde.StatusNotifierWatcher";
// Signals are declared because panels look for them; nothing ever changes.
constexpr const char* kDescription = R"xml(
<node>
  <interface name="org.kde.StatusNotifierItem">
    <property name="Category" type="s" access="read"/>
    <property name="Id" type="s" access="read"/>
    <property name="Title" type="s" access="read"/>
    <property name="Status" type="s" access="read"/>
    <property name="WindowId" type="i" access="read"/>
    <property name="IconThemePath" type="s" access="read"/>
    <property name="IconName" type="s" access="read"/>
    <property name="IconPixmap" type="a(iiay)" access="read"/>
    <property name="IconAccessibleDesc" type="s" access="read"/>
    <property name="OverlayIconName" type="s" access="read"/>
    <property name="OverlayIconPixmap" type="a(iiay)" access="read"/>
    <property name="AttentionIconName" type="s" access="read"/>
    <property name="AttentionIconPixmap" type="a(iiay)" access="read"/>
    <property name="AttentionMovieName" type="s" access="read"/>
    <property name="ToolTip" type="(sa(iiay)ss)" access="read"/>
    <property name="ItemIsMenu" type="b" access="read"/>
    <property name="Menu" type="o" access="read"/>
    <method name="Activate">
      <arg type="i" name="x" direction="in"/>
      <arg type="i" name="y" direction="in"/>
    </method>
    <method name="SecondaryActivate">
      <arg type="i" name="x" direction="in"/>
      <arg type="i" name="y" direction="in"/>
    </method>
    <method name="ContextMenu">
      <arg type="i" name="x" direction="in"/>
      <arg type="i" name="y" direction="in"/>
    </method>
    <method name="Scroll">
      <arg type="i" name="delta" direction="in"/>
      <arg type="s" name="orientation" direction="in"/>
    </method>
    <method name="ProvideXdgActivationToken">
      <arg type="s" name="token" direction="in"/>
    </method>
    <signal name="NewTitle"/>
    <signal name="NewIcon"/>
    <signal name="NewAttentionIcon"/>
    <signal name="NewOverlayIcon"/>
    <signal name="NewToolTip"/>
    <signal name="NewStatus">
      <arg type="s" name="status"/>
    </signal>
  </interface>
</node>)xml";

GVariant* noPixmaps() {
    return g_variant_new("a(iiay)", nullptr);
}

// One icon, with a connection of its own to the bus: when that ends, every panel drops the icon.
class Shown {
  public:
    Shown(ObjectPointer<GDBusConnection> bus, StatusItem item, std::function<void(Command)> perform)
        : bus_(std::move(bus)),
          item_(std::move(item)),
          menu_(bus_.get(), item_.items, std::move(perform)) {
        static GDBusNodeInfo* const description =
            g_dbus_node_info_new_for_xml(kDescription, nullptr);
        static const GDBusInterfaceVTable table{call, property, nullptr, {}};
        registration_ = g_dbus_connection_register_object(
            bus_.get(), kPath, description->interfaces[0], &table, this, nullptr, nullptr);
        // Told at once of a watcher that is there, and of every one that comes.
        watch_ = g_bus_watch_name_on_connection(bus_.get(), kWatcher, G_BUS_NAME_WATCHER_FLAGS_NONE,
                                                watcherCame, nullptr, nullptr, nullptr);
    }

    ~Shown() {
        g_bus_unwatch_name(watch_);
        if (registration_ != 0) g_dbus_connection_unregister_object(bus_.get(), registration_);
        g_dbus_connection_close(bus_.get(), nullptr, nullptr, nullptr);
    }

    Shown(const Shown&) = delete;
    Shown& operator=(const Shown&) = delete;

    std::optional<std::string> takeActivationToken() { return std::exchange(token_, std::nullopt); }

  private:
    static void watcherCame(GDBusConnection* bus, const gchar*, const gchar* owner, gpointer) {
        g_dbus_connection_call(bus, owner, "/StatusNotifierWatcher", kWatcher,
                               "RegisterStatusNotifierItem",
                               g_variant_new("(s)", g_dbus_connection_get_unique_name(bus)),
                               nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr, nullptr);
    }

    // The panel draws the menu itself. Nothing is meant to happen on the other buttons and the
    // wheel.
    static void call(GDBusConnection*, const gchar*, const gchar*, const gchar*,
                     const gchar* methodName, GVariant* arguments,
                     GDBusMethodInvocation* invocation, gpointer data) {
        Shown& shown = *static_cast<Shown*>(data);
        constexpr gint32 kFirst = 1;
        const bool isActivation = std::string_view(methodName) == "Activate";
        if (std::string_view(methodName) == "ProvideXdgActivationToken") {
            const char* token = nullptr;
            g_variant_get(arguments, "(&s)", &token);
            shown.keep(token);
        }
        shown.menu_.finish(invocation, nullptr, isActivation ? kFirst : 0);
    }

    void keep(std::string_view token) {
        constexpr std::size_t kLongest = 4096;
        token_.reset();
        if (!token.empty() && token.size() <= kLongest) token_ = token;
    }

    static GVariant* property(GDBusConnection*, const gchar*, const gchar*, const gchar*,
                              const gchar* propertyName, GError**, gpointer data) {
        const StatusItem& item = static_cast<const Shown*>(data)->item_;
        const std::string_view name = propertyName;
        if (name == "Category") return g_variant_new_string("ApplicationStatus");
        if (name == "Id") return g_variant_new_string("com.hollowmere.ferrivane");
        if (name == "Status") return g_variant_new_string("Active");
        if (name == "Title" || name == "IconAccessibleDesc") {
            return g_variant_new_string(item.accessibilityDescription.c_str());
        }
        if (name == "ToolTip") {
            return g_variant_new("(s@a(iiay)ss)", "", noPixmaps(), item.toolTip.c_str(), "");
        }
        if (name == "IconName") return g_variant_new_string(StatusIcon::name());
        if (name == "IconPixmap") return StatusIcon::pixmaps();
        if (name == "Menu") return g_variant_new_object_path(MenuService::path);
        if (name == "ItemIsMenu") return g_variant_new_boolean(FALSE);
        if (name == "WindowId") return g_variant_new_int32(0);
        if (name.ends_with("Pixmap")) return noPixmaps();
        return g_variant_new_string("");
    }

    const ObjectPointer<GDBusConnection> bus_;
    const StatusItem item_;
    const MenuService menu_;
    std::optional<std::string> token_;
    guint registration_ = 0;
    guint watch_ = 0;
};

std::unique_ptr<Shown>& shown() {
    static std::unique_ptr<Shown> item;
    return item;
}

}  // namespace

void show(const StatusItem& item, std::function<void(Command)> perform) {
    remove();
    if (auto bus = SessionBus::another()) {
        shown() = std::make_unique<Shown>(std::move(bus), item, std::move(perform));
    }
}

void remove() {
    shown().reset();
}

std::optional<std::string> takeActivationToken() {
    return shown() ? shown()->takeActivationToken() : std::nullopt;
}

}  // namespace ferrivane::StatusNotifier
