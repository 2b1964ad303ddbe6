#include "widgets/CalendarModel.h"

#include <algorithm>

namespace velmora
{

QColor onBlack(const QColor &color)
{
    constexpr float darkest = 0.42F; // luma, 0 to 1
    const auto luma = [](const QColor &of) {
        return 0.299F * of.redF() + 0.587F * of.greenF() + 0.114F * of.blueF();
    };
    if (luma(color) >= darkest) {
        return color;
    }
    const QColor bright = QColor::fromHsvF(color.hsvHueF(), color.hsvSaturationF(), 1).toRgb();
    const float white = std::max((darkest - luma(bright)) / (1 - luma(bright)), 0.0F);
    const auto mix = [white](float part) { return part + white * (1 - part); };
    return QColor::fromRgbF(mix(bright.redF()), mix(bright.greenF()), mix(bright.blueF()));
}

void CalendarModel::componentComplete()
{
    connect(m_service, &CalendarService::eventsChanged, this, &CalendarModel::update);
    connect(m_service, &CalendarService::isAuthorizedChanged, this, &CalendarModel::update);
    update();
    scheduleTick();
}

void CalendarModel::update()
{
    const auto &current = m_service->currentEvent();
    const auto &event = current ? current : m_service->nextEvent();
    m_isLive = current.has_value();
    m_content = !m_service->isAuthorized() ? Content::Unauthorized
                : event                    ? Content::Event
                                           : Content::Nothing;
    if (event) {
        show(*event);
    }
    Q_EMIT changed();
}

void CalendarModel::show(const CalendarEventInfo &event)
{
    const QString relative = event.relativeString(m_clock->now());
    const int others = m_service->todayCount() - 1;
    m_color = onBlack(event.color);
    m_status = m_isLive ? tr("LIVE") : relative;
    m_more = others > 0 ? QStringLiteral("+%1").arg(others) : QString();
    m_title = event.title.simplified();
    m_detail = m_isLive ? relative : event.timeRangeString();
}

void CalendarModel::scheduleTick()
{
    const QTime now = m_clock->now().time();
    const std::chrono::milliseconds toNextMinute(60'000 - (now.second() * 1000 + now.msec()));
    m_timer = m_clock->after(toNextMinute, [this] { tick(); });
}

void CalendarModel::tick()
{
    update();
    m_service->refresh();
    scheduleTick();
}

} // namespace velmora
