#include "platform/linux/system/PulseSoundOutput.h"

#include <algorithm>
#include <pulse/pulseaudio.h>
#include <utility>

namespace velmora
{

namespace
{

using namespace std::chrono_literals;

constexpr auto lookInterval = 5s;
constexpr auto defaultSink = "@DEFAULT_SINK@";

/// Starts an operation whose answer comes by callback; false if it could not be sent.
bool start(pa_operation *operation)
{
    if (!operation)
        return false;
    pa_operation_unref(operation);
    return true;
}

int toPercent(const pa_cvolume &volume)
{
    const std::uint64_t loudest = pa_cvolume_max(&volume);
    const std::uint64_t percent = (loudest * 100 + PA_VOLUME_NORM / 2) / PA_VOLUME_NORM;
    return static_cast<int>(std::min<std::uint64_t>(percent, 100));
}

pa_volume_t fromPercent(int percent)
{
    return (static_cast<pa_volume_t>(percent) * PA_VOLUME_NORM + 50) / 100;
}

} // namespace

PulseSoundOutput::PulseSoundOutput(Clock &clock)
    : m_clock(clock)
    , m_connection(clock, {[this] { onReady(); }, [this] { onLost(); }})
{
}

PulseSoundOutput::~PulseSoundOutput() = default;

std::optional<int> PulseSoundOutput::volumePercent() const
{
    if (!m_sink)
        return std::nullopt;
    return m_target ? *m_target : toPercent(m_sink->volume);
}

void PulseSoundOutput::setVolumePercent(int percent)
{
    if (!m_sink)
        return;
    m_target = std::clamp(percent, 0, 100);
    m_isTargetSent = false;
    write();
}

void PulseSoundOutput::onReady()
{
    pa_context *const context = m_connection.context();
    pa_context_set_subscribe_callback(context, &PulseSoundOutput::onServerEvent, this);
    constexpr auto events = static_cast<pa_subscription_mask_t>(PA_SUBSCRIPTION_MASK_SINK |
                                                                PA_SUBSCRIPTION_MASK_SERVER);
    start(pa_context_subscribe(context, events, nullptr, nullptr));
    refresh();
}

void PulseSoundOutput::onLost()
{
    m_sink.reset();
    m_arriving.reset();
    m_target.reset();
    m_nextLook.reset();
    m_isQuerying = m_isOutdated = m_isWriting = m_isTargetSent = false;
}

void PulseSoundOutput::onServerEvent(pa_context *, pa_subscription_event_type_t event,
                                     std::uint32_t index, void *self)
{
    auto *const output = static_cast<PulseSoundOutput *>(self);
    const bool isSink = (event & PA_SUBSCRIPTION_EVENT_FACILITY_MASK) == PA_SUBSCRIPTION_EVENT_SINK;
    const bool isChange = (event & PA_SUBSCRIPTION_EVENT_TYPE_MASK) == PA_SUBSCRIPTION_EVENT_CHANGE;
    const bool isOther = output->m_sink && output->m_sink->index != index;
    if (isSink && isChange && isOther)
        return;
    output->refresh();
}

void PulseSoundOutput::refresh()
{
    // The server resolves the name, so one question serves for a new default and for a new volume.
    if (m_isQuerying) {
        m_isOutdated = true;
        return;
    }
    pa_context *const context = m_connection.context();
    m_isOutdated = false;
    m_nextLook.reset();
    m_isQuerying = context && start(pa_context_get_sink_info_by_name(
                                  context, defaultSink, &PulseSoundOutput::onSinkInfo, this));
}

void PulseSoundOutput::onSinkInfo(pa_context *, const pa_sink_info *info, int end, void *self)
{
    auto *const output = static_cast<PulseSoundOutput *>(self);
    if (end == 0 && info && pa_cvolume_valid(&info->volume))
        output->m_arriving = Sink{info->index, info->volume};
    if (end != 0) // the end of the list, or an error: there is no such sink
        output->finishRefresh();
}

void PulseSoundOutput::finishRefresh()
{
    m_isQuerying = false;
    if (const auto sink = std::exchange(m_arriving, std::nullopt)) {
        takeSink(*sink);
    } else {
        m_sink.reset();
        m_target.reset();
        m_nextLook = m_clock.after(lookInterval, [this] { refresh(); });
    }
    if (m_isOutdated)
        refresh();
}

void PulseSoundOutput::takeSink(const Sink &sink)
{
    const bool isOther =
        !m_sink || m_sink->index != sink.index || m_sink->volume.channels != sink.volume.channels;
    m_sink = sink;
    if (isOther || pa_cvolume_max(&sink.volume) > PA_VOLUME_MUTED)
        m_balance = sink.volume;
    // Answers come in the order of the questions: once nothing is being written and nothing has
    // changed meanwhile, this is what the server made of the last write.
    if (!m_isWriting && !m_isOutdated)
        m_target.reset();
}

void PulseSoundOutput::write()
{
    pa_context *const context = m_connection.context();
    if (m_isWriting || !m_target || m_isTargetSent || !context || !m_sink)
        return;
    pa_cvolume volume = m_balance;
    pa_cvolume_scale(&volume, fromPercent(*m_target));
    m_isTargetSent = true;
    m_isWriting = start(pa_context_set_sink_volume_by_index(
        context, m_sink->index, &volume, &PulseSoundOutput::onVolumeWritten, this));
    if (!m_isWriting)
        m_target.reset();
}

void PulseSoundOutput::onVolumeWritten(pa_context *, int, void *self)
{
    auto *const output = static_cast<PulseSoundOutput *>(self);
    output->m_isWriting = false;
    output->write();
    if (!output->m_isWriting)
        output->refresh(); // also where it failed: then this tells the volume that still holds
}

} // namespace velmora
