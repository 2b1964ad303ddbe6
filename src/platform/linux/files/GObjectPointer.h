#pragma once

#include <gio/gio.h>
#include <memory>

namespace velmora
{

struct GObjectRelease {
    void operator()(gpointer object) const { g_object_unref(object); }
};

/// Holds one reference to an object of GIO.
template<typename T>
using GObjectPointer = std::unique_ptr<T, GObjectRelease>;

struct GErrorRelease {
    void operator()(GError *error) const { g_error_free(error); }
};

using GErrorPointer = std::unique_ptr<GError, GErrorRelease>;

} // namespace velmora
