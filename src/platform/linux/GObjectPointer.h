#pragma once

#include <glib-object.h>
#include <memory>

namespace velmora
{

struct GObjectRelease {
    void operator()(gpointer object) const { g_object_unref(object); }
};

/// Holds one reference to an object of GLib's.
template<typename T>
using GObjectPointer = std::unique_ptr<T, GObjectRelease>;

} // namespace velmora
