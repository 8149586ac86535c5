#include "Ferrivane/linux/desktop/MenuService.h"

#include <algorithm>
#include <set>
#include <string>
#include <string_view>
#include <utility>

#include "Ferrivane/linux/desktop/GObjects.h"
#include "Ferrivane/linux/desktop/MenuProperties.h"

namespace ferrivane {
namespace {

constexpr const char* kDescription = R"xml(
<node>
  <interface name="com.canonical.dbusmenu">
    <property name="Version" type="u" access="read"/>
    <property name="TextDirection" type="s" access="read"/>
    <property name="Status" type="s" access="read"/>
    <property name="IconThemePath" type="as" access="read"/>
    <method name="GetLayout">
      <arg type="i" name="parentId" direction="in"/>
      <arg type="i" name="recursionDepth" direction="in"/>
      <arg type="as" name="propertyNames" direction="in"/>
      <arg type="u" name="revision" direction="out"/>
      <arg type="(ia{sv}av)" name="layout" direction="out"/>
    </method>
    <method name="GetGroupProperties">
      <arg type="ai" name="ids" direction="in"/>
      <arg type="as" name="propertyNames" direction="in"/>
      <arg type="a(ia{sv})" name="properties" direction="out"/>
    </method>
    <method name="GetProperty">
      <arg type="i" name="id" direction="in"/>
      <arg type="s" name="name" direction="in"/>
      <arg type="v" name="value" direction="out"/>
    </method>
    <method name="Event">
      <arg type="i" name="id" direction="in"/>
      <arg type="s" name="eventId" direction="in"/>
      <arg type="v" name="data" direction="in"/>
      <arg type="u" name="timestamp" direction="in"/>
    </method>
    <method name="EventGroup">
      <arg type="a(isvu)" name="events" direction="in"/>
      <arg type="ai" name="idErrors" direction="out"/>
    </method>
    <method name="AboutToShow">
      <arg type="i" name="id" direction="in"/>
      <arg type="b" name="needUpdate" direction="out"/>
    </method>
    <method name="AboutToShowGroup">
      <arg type="ai" name="ids" direction="in"/>
      <arg type="ai" name="updatesNeeded" direction="out"/>
      <arg type="ai" name="idErrors" direction="out"/>
    </method>
    <signal name="ItemsPropertiesUpdated">
      <arg type="a(ia{sv})" name="updatedProps"/>
      <arg type="a(ias)" name="removedProps"/>
    </signal>
    <signal name="LayoutUpdated">
      <arg type="u" name="revision"/>
      <arg type="i" name="parent"/>
    </signal>
    <signal name="ItemActivationRequested">
      <arg type="i" name="id"/>
      <arg type="u" name="timestamp"/>
    </signal>
  </interface>
</node>)xml";

constexpr guint32 kRevision = 1;  // the menu never changes
constexpr std::string_view kClicked = "clicked";

// Those of the names, or all without any name: a{sv}.
GVariant* dictionary(const MenuProperties& all, const std::set<std::string, std::less<>>& names) {
    GVariantBuilder chosen;
    g_variant_builder_init(&chosen, G_VARIANT_TYPE_VARDICT);
    for (const auto& [name, value] : all) {
        if (names.empty() || names.contains(std::string_view(name))) {
            g_variant_builder_add(&chosen, "{sv}", name, value.get());
        }
    }
    return g_variant_builder_end(&chosen);
}

std::set<std::string, std::less<>> texts(GVariant* array) {
    std::set<std::string, std::less<>> result;
    GVariantIter iterator;
    g_variant_iter_init(&iterator, array);
    const char* text = nullptr;
    while (g_variant_iter_next(&iterator, "&s", &text) != FALSE) result.emplace(text);
    return result;
}

// However often one is named, it is answered for once.
std::set<gint32> numbers(GVariant* array) {
    gsize count = 0;
    const auto* const first =
        static_cast<const gint32*>(g_variant_get_fixed_array(array, &count, sizeof(gint32)));
    return {first, first + count};
}

GVariant* array(const std::set<gint32>& ids) {
    GVariantBuilder result;
    g_variant_builder_init(&result, G_VARIANT_TYPE("ai"));
    for (const gint32 id : ids) g_variant_builder_add(&result, "i", id);
    return g_variant_builder_end(&result);
}

}  // namespace

// The methods, by their names in the description.
struct MenuService::Methods {
    const MenuService& menu;
    GDBusMethodInvocation* invocation;
    GVariant* arguments;

    VariantPointer argument(gsize index) const {
        return VariantPointer(g_variant_get_child_value(arguments, index));
    }
    gint32 id() const { return g_variant_get_int32(argument(0).get()); }
    void returns(GVariant* result) const {
        g_dbus_method_invocation_return_value(invocation, result);
    }
    void refuse(const char* reason) const {
        g_dbus_method_invocation_return_error_literal(invocation, G_DBUS_ERROR,
                                                      G_DBUS_ERROR_INVALID_ARGS, reason);
    }
    void refuseUnknown() const { refuse("The menu has no such item."); }

    // (ia{sv}av)
    static GVariant* node(gint32 id, const MenuItem* item,
                          const std::set<std::string, std::less<>>& names,
                          GVariantBuilder* children) {
        return g_variant_new("(i@a{sv}av)", id, dictionary(menuProperties(item), names), children);
    }

    void getLayout() const {
        if (!menu.isKnown(id())) return refuseUnknown();
        const auto names = texts(argument(2).get());
        GVariantBuilder children;
        g_variant_builder_init(&children, G_VARIANT_TYPE("av"));
        const bool isDeep = g_variant_get_int32(argument(1).get()) != 0;
        for (gint32 child = 1; id() == 0 && isDeep && menu.isKnown(child); ++child) {
            g_variant_builder_add(&children, "v", node(child, menu.item(child), names, nullptr));
        }
        returns(g_variant_new("(u@(ia{sv}av))", kRevision,
                              node(id(), menu.item(id()), names, &children)));
    }

    void getGroupProperties() const {
        const auto ids = numbers(argument(0).get());
        const auto names = texts(argument(1).get());
        GVariantBuilder groups;
        g_variant_builder_init(&groups, G_VARIANT_TYPE("a(ia{sv})"));
        for (gint32 each = 0; menu.isKnown(each); ++each) {
            if (!ids.empty() && !ids.contains(each)) continue;
            g_variant_builder_add(&groups, "(i@a{sv})", each,
                                  dictionary(menuProperties(menu.item(each)), names));
        }
        returns(g_variant_new("(a(ia{sv}))", &groups));
    }

    void getProperty() const {
        if (!menu.isKnown(id())) return refuseUnknown();
        const std::string_view name = g_variant_get_string(argument(1).get(), nullptr);
        const auto all = menuProperties(menu.item(id()));
        const auto found = std::ranges::find(all, name, &MenuProperties::value_type::first);
        if (found == all.end()) return refuse("The item has no such property.");
        returns(g_variant_new("(v)", found->second.get()));
    }

    void event() const {
        if (!menu.isKnown(id())) return refuseUnknown();
        const bool isClick = g_variant_get_string(argument(1).get(), nullptr) == kClicked;
        menu.finish(invocation, nullptr, isClick ? id() : 0);
    }

    void eventGroup() const {
        std::set<gint32> unknown;
        gint32 clicked = 0;  // a person clicks one at a time
        const auto events = argument(0);
        GVariantIter iterator;
        g_variant_iter_init(&iterator, events.get());
        gint32 each = 0;
        const char* name = nullptr;
        while (g_variant_iter_next(&iterator, "(i&svu)", &each, &name, nullptr, nullptr) != FALSE) {
            if (!menu.isKnown(each)) {
                unknown.insert(each);
            } else if (clicked == 0 && name == kClicked) {
                clicked = each;
            }
        }
        menu.finish(invocation, g_variant_new("(@ai)", array(unknown)), clicked);
    }

    void aboutToShow() const {
        if (!menu.isKnown(id())) return refuseUnknown();
        returns(g_variant_new("(b)", FALSE));
    }

    void aboutToShowGroup() const {
        auto ids = numbers(argument(0).get());
        std::erase_if(ids, [this](gint32 each) { return menu.isKnown(each); });
        returns(g_variant_new("(@ai@ai)", array({}), array(ids)));
    }
};

void MenuService::call(GDBusConnection*, const gchar*, const gchar*, const gchar*,
                       const gchar* methodName, GVariant* arguments,
                       GDBusMethodInvocation* invocation, gpointer menu) {
    const Methods methods{*static_cast<const MenuService*>(menu), invocation, arguments};
    const std::string_view method = methodName;
    if (method == "GetLayout") return methods.getLayout();
    if (method == "GetGroupProperties") return methods.getGroupProperties();
    if (method == "GetProperty") return methods.getProperty();
    if (method == "Event") return methods.event();
    if (method == "EventGroup") return methods.eventGroup();
    if (method == "AboutToShow") return methods.aboutToShow();
    methods.aboutToShowGroup();
}

GVariant* MenuService::property(GDBusConnection*, const gchar*, const gchar*, const gchar*,
                                const gchar* propertyName, GError**, gpointer) {
    const std::string_view name = propertyName;
    if (name == "Version") return g_variant_new_uint32(3);
    if (name == "TextDirection") return g_variant_new_string("ltr");
    if (name == "Status") return g_variant_new_string("normal");
    return g_variant_new_strv(nullptr, 0);  // IconThemePath
}

MenuService::MenuService(GDBusConnection* bus, std::vector<MenuItem> items,
                         std::function<void(Command)> perform)
    : bus_(bus), items_(std::move(items)), perform_(std::move(perform)) {
    static GDBusNodeInfo* const description = g_dbus_node_info_new_for_xml(kDescription, nullptr);
    static const GDBusInterfaceVTable table{call, property, nullptr, {}};
    registration_ = g_dbus_connection_register_object(bus_, path, description->interfaces[0],
                                                      &table, this, nullptr, nullptr);
}

MenuService::~MenuService() {
    if (registration_ != 0) g_dbus_connection_unregister_object(bus_, registration_);
}

const MenuItem* MenuService::item(gint32 id) const {
    const auto index = static_cast<std::size_t>(id) - 1;
    return id > 0 && index < items_.size() ? &items_[index] : nullptr;
}

void MenuService::finish(GDBusMethodInvocation* invocation, GVariant* result,
                         gint32 clicked) const {
    g_dbus_method_invocation_return_value(invocation, result);
    const MenuItem* const chosen = item(clicked);
    if (chosen == nullptr || chosen->command == Command::separator) return;
    g_dbus_connection_flush_sync(bus_, nullptr, nullptr);
    const auto perform = perform_;  // it may take the icon away, and this with it
    perform(chosen->command);
}

}  // namespace ferrivane
