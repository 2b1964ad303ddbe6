#pragma once

#include "platform/SoundOutput.h"
#include "platform/linux/system/PulseConnection.h"

#include <cstdint>
#include <optional>
#include <pulse/subscribe.h>
#include <pulse/volume.h>

struct pa_sink_info;

namespace velmora
{

/// The default sink of a PulseAudio or PipeWire server. The server tells of each change, so reading
/// costs nothing and an idle server no wake-ups. Only a server that names no sink is asked again
/// every 5 seconds: one that changes its default may say so before it can tell of the new one.
class PulseSoundOutput final : public SoundOutput
{
public:
    /// Connects in a later turn of the main loop. The clock has to outlive the object.
    explicit PulseSoundOutput(Clock &clock);
    PulseSoundOutput(const PulseSoundOutput &) = delete;
    PulseSoundOutput &operator=(const PulseSoundOutput &) = delete;
    ~PulseSoundOutput() override;

    /// The volume of the loudest channel, which is what other volume controls show, and at most 100
    /// even where the server amplifies. A volume that is on its way to the server counts as set.
    [[nodiscard]] std::optional<int> volumePercent() const override;

    /// Keeps the balance of the channels. Of calls in quick succession the last one counts.
    void setVolumePercent(int percent) override;

private:
    struct Sink {
        std::uint32_t index;
        pa_cvolume volume;
    };

    static void onServerEvent(pa_context *context, pa_subscription_event_type_t event,
                              std::uint32_t index, void *self);
    static void onSinkInfo(pa_context *context, const pa_sink_info *info, int end, void *self);
    static void onVolumeWritten(pa_context *context, int success, void *self);

    void onReady();
    void onLost();
    void refresh();
    void finishRefresh();
    void takeSink(const Sink &sink);
    void write();

    Clock &m_clock;
    std::optional<Sink> m_sink;
    std::optional<Sink> m_arriving; ///< answer of a query that has not ended yet
    pa_cvolume m_balance{};         ///< the last volume that was not silence
    bool m_isQuerying = false;
    bool m_isOutdated = false;   ///< something changed while the query was under way
    std::optional<int> m_target; ///< asked for and not yet confirmed by the server
    bool m_isWriting = false;
    bool m_isTargetSent = false;
    TimerHandle m_nextLook; ///< runs while there is no sink

    PulseConnection m_connection; ///< last: its end cancels all callbacks into the others
};

} // namespace velmora
