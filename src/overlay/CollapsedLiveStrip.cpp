#include "overlay/CollapsedLiveStrip.h"

#include <utility>

namespace velmora
{

namespace
{

using namespace std::chrono_literals;

constexpr auto rotationInterval = 5s;
constexpr auto noticeDuration = 3s;
constexpr auto volumePatience = 1500ms;

} // namespace

void CollapsedLiveStrip::componentComplete()
{
    m_rotationClock = m_services->clock()->every(rotationInterval, [this] { rotate(); });
    m_screenCount = m_services->screenCount()->value();
    connect(m_services->screenCount(), &ScreenCount::settled, this,
            &CollapsedLiveStrip::screensChanged);
    connect(m_services->mediaService(), &MediaRemoteService::nowPlayingChanged, this,
            &CollapsedLiveStrip::updateSlides);
    for (const auto signal : {&PomodoroService::isRunningChanged, &PomodoroService::phaseChanged,
                              &PomodoroService::secondsRemainingChanged}) {
        connect(m_services->pomodoroService(), signal, this, &CollapsedLiveStrip::updateSlides);
    }
    connect(m_services->calendarService(), &CalendarService::eventsChanged, this,
            &CollapsedLiveStrip::updateSlides);
    connect(m_services->dropService(), &DropActionsService::lastStatusChanged, this, [this] {
        if (const QString status = m_services->dropService()->lastStatus(); !status.isEmpty()) {
            showNotice(status);
        }
    });
    updateSlides();
    if (!m_missedStatus.isEmpty()) {
        showNotice(m_missedStatus);
    }
}

int CollapsedLiveStrip::currentIndex() const
{
    return m_slideCount == 0 ? 0 : m_rotationIndex % m_slideCount;
}

void CollapsedLiveStrip::rotate()
{
    if (m_slideCount >= 2) {
        m_rotationIndex = (m_rotationIndex + 1) % m_slideCount;
    }
    updateSlides(); // an event's text changes with time
}

void CollapsedLiveStrip::updateSlides()
{
    const auto slides = liveSlides(*m_services->mediaService(), *m_services->pomodoroService(),
                                   *m_services->calendarService(), m_services->clock()->now());
    const int before = std::exchange(m_slideCount, static_cast<int>(slides.size()));
    if (m_rotationIndex >= m_slideCount) {
        m_rotationIndex = 0;
    }
    const int index = currentIndex();
    const LiveSlideLook look = slides.empty() ? LiveSlideLook() : lookOf(slides[size_t(index)]);
    // Answers come each second; most of them say nothing new.
    if (m_slideCount == before && index == m_shownIndex && look == m_look) {
        return;
    }
    m_shownIndex = index;
    m_look = look;
    Q_EMIT slideChanged();
}

void CollapsedLiveStrip::setShowVolume(bool show)
{
    if (show != m_showVolume) {
        m_showVolume = show;
        watchVolume();
        Q_EMIT showVolumeChanged();
    }
}

void CollapsedLiveStrip::setVolumeInUse(bool inUse)
{
    m_isVolumeInUse = inUse;
    watchVolume();
}

void CollapsedLiveStrip::watchVolume()
{
    m_volumeTask.reset();
    if (m_showVolume && !m_isVolumeInUse) {
        m_volumeTask = m_services->clock()->after(volumePatience, [this] { setShowVolume(false); });
    }
}

void CollapsedLiveStrip::showNotice(const QString &text)
{
    setNoticeText(text);
    m_noticeTask = m_services->clock()->after(noticeDuration, [this] { setNoticeText({}); });
}

void CollapsedLiveStrip::setNoticeText(const QString &text)
{
    if (text != m_noticeText) {
        m_noticeText = text;
        Q_EMIT noticeTextChanged();
    }
}

void CollapsedLiveStrip::screensChanged()
{
    const int count = m_services->screenCount()->value();
    const int before = std::exchange(m_screenCount, count);
    if (count > before) {
        showNotice(QStringLiteral("Monitor connected"));
    } else if (count < before) {
        showNotice(QStringLiteral("Monitor disconnected"));
    }
}

} // namespace velmora
