// Owning pointers for what GLib hands out.
#pragma once

#include <memory>

#include <gio/gio.h>

namespace ferrivane {

struct ObjectRelease {
    void operator()(gpointer object) const { g_object_unref(object); }
};
template<typename T>
using ObjectPointer = std::unique_ptr<T, ObjectRelease>;

struct VariantRelease {
    void operator()(GVariant* variant) const { g_variant_unref(variant); }
};
using VariantPointer = std::unique_ptr<GVariant, VariantRelease>;

struct ErrorRelease {
    void operator()(GError* error) const { g_error_free(error); }
};
using ErrorPointer = std::unique_ptr<GError, ErrorRelease>;

struct MemoryRelease {
    void operator()(gchar* text) const { g_free(text); }
};
using TextPointer = std::unique_ptr<gchar, MemoryRelease>;

}  // namespace ferrivane
