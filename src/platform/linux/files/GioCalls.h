#pragma once

#include "platform/linux/files/LocalFile.h"

#include <functional>
#include <utility>

namespace velmora
{

/// The asynchronous calls of one object to GIO. Answers come on the main loop, since Qt runs on
/// GLib's, and are dropped once this object is gone; the calls themselves are then cancelled.
class GioCalls
{
public:
    using Answer = std::function<void(GObject *source, GAsyncResult *result)>;

    GioCalls() = default;
    GioCalls(const GioCalls &) = delete;
    GioCalls &operator=(const GioCalls &) = delete;
    ~GioCalls() { g_cancellable_cancel(cancellable()); }

    [[nodiscard]] GCancellable *cancellable() const { return m_cancellable.get(); }

    /// What to hand over as callback, and, made anew for each call, as its user data.
    static void callback(GObject *source, GAsyncResult *result, gpointer data)
    {
        const std::unique_ptr<Call> call(static_cast<Call *>(data));
        if (g_cancellable_is_cancelled(call->cancellable.get()) == 0) {
            call->answer(source, result);
        }
    }
    [[nodiscard]] gpointer expect(Answer answer) const
    {
        auto *const cancellable = G_CANCELLABLE(g_object_ref(m_cancellable.get()));
        return new Call{GObjectPointer<GCancellable>(cancellable), std::move(answer)};
    }

private:
    struct Call {
        GObjectPointer<GCancellable> cancellable; ///< cancelled once nobody waits any more
        Answer answer;
    };

    GObjectPointer<GCancellable> m_cancellable{g_cancellable_new()};
};

} // namespace velmora
