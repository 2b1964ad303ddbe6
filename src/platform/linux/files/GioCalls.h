#pragma once

#include "platform/linux/files/GObjectPointer.h"
#include "platform/linux/files/GlibLoop.h"

#include <functional>
#include <memory>
#include <utility>

namespace velmora
{

/// The asynchronous calls of one object to GIO. Answers come on the main loop, and are dropped once
/// this object is gone; the calls themselves are then cancelled.
class GioCalls
{
public:
    using Answer = std::function<void(GObject *source, GAsyncResult *result)>;

    GioCalls()
        : m_state(std::make_shared<State>())
    {
    }
    GioCalls(const GioCalls &) = delete;
    GioCalls &operator=(const GioCalls &) = delete;
    ~GioCalls()
    {
        m_state->isGone = true;
        g_cancellable_cancel(m_state->cancellable.get());
    }

    [[nodiscard]] GCancellable *cancellable() const { return m_state->cancellable.get(); }

    /// What to hand over as callback, and, made anew for each call, as its user data.
    static void callback(GObject *source, GAsyncResult *result, gpointer data)
    {
        const std::unique_ptr<Call> call(static_cast<Call *>(data));
        call->state->loop.end();
        if (!call->state->isGone) {
            call->answer(source, result);
        }
    }
    [[nodiscard]] gpointer expect(Answer answer)
    {
        m_state->loop.begin();
        return new Call{m_state, std::move(answer)};
    }

private:
    struct State {
        GObjectPointer<GCancellable> cancellable{g_cancellable_new()};
        GlibLoop loop;
        bool isGone = false;
    };
    struct Call {
        std::shared_ptr<State> state;
        Answer answer;
    };

    std::shared_ptr<State> m_state;
};

} // namespace velmora
