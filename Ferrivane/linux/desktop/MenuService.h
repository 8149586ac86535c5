// A menu of one level that somebody else draws: com.canonical.dbusmenu, version 3.
#pragma once

#include <functional>
#include <vector>

#include <gio/gio.h>

#include "Ferrivane/platform/Menu.h"

namespace ferrivane {

class MenuService {
  public:
    static constexpr const char* path = "/Menu";

    // Answers on this connection, which outlives it.
    MenuService(GDBusConnection* bus, std::vector<MenuItem> items,
                std::function<void(Command)> perform);
    ~MenuService();
    MenuService(const MenuService&) = delete;
    MenuService& operator=(const MenuService&) = delete;

    // Answers a call, then does what the item stands for, if there is one: that may be the end of
    // this process, or of this object.
    void finish(GDBusMethodInvocation* invocation, GVariant* result, gint32 clicked) const;

  private:
    struct Methods;
    static void call(GDBusConnection*, const gchar*, const gchar*, const gchar*,
                     const gchar* methodName, GVariant* arguments,
                     GDBusMethodInvocation* invocation, gpointer menu);
    static GVariant* property(GDBusConnection*, const gchar*, const gchar*, const gchar*,
                              const gchar* propertyName, GError**, gpointer);

    // The items count from 1; 0 is the menu itself.
    const MenuItem* item(gint32 id) const;
    bool isKnown(gint32 id) const { return id == 0 || item(id) != nullptr; }

    GDBusConnection* const bus_;
    const std::vector<MenuItem> items_;
    const std::function<void(Command)> perform_;
    guint registration_ = 0;
};

}  // namespace ferrivane
