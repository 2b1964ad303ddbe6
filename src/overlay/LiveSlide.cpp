#include "overlay/LiveSlide.h"

#include "media/MediaRemoteService.h"
#include "services/CalendarService.h"

namespace velmora
{

namespace
{

/// Players send what they find in files: line breaks and tabs would break the one line there is.
QString oneLine(const QString &text)
{
    return text.simplified();
}

LiveSlideLook lookOf(const MediaSlide &slide)
{
    LiveSlideLook look;
    look.symbol = slide.isPlaying ? QStringLiteral("music.note") : QStringLiteral("play.slash");
    look.symbolColor = Style::label;
    look.isStacked = true;
    look.first = oneLine(slide.title);
    look.second = oneLine(slide.artist);
    look.secondColor = Style::label;
    return look;
}

LiveSlideLook lookOf(const PomodoroSlide &slide)
{
    LiveSlideLook look;
    look.symbol = slide.phase == PomodoroPhase::work ? QStringLiteral("timer")
                                                     : QStringLiteral("cup.and.saucer.fill");
    look.symbolColor = slide.color;
    look.symbolColor.setAlphaF(Style::strong.alphaF());
    look.first = slide.time;
    look.firstSize = Style::largeText;
    look.isFirstFigure = true;
    look.firstColor = slide.color;
    look.second = slide.phaseLabel;
    look.isSecondMedium = true;
    look.secondColor = Style::label;
    return look;
}

LiveSlideLook lookOf(const CalendarSlide &slide)
{
    LiveSlideLook look;
    look.symbol = QStringLiteral("calendar");
    look.symbolColor = QColor::fromRgbF(0.4F, 0.7F, 1.0F, 0.8F);
    look.isStacked = true;
    look.first = oneLine(slide.title);
    look.second = slide.info;
    look.secondColor = Style::label;
    return look;
}

} // namespace

std::vector<LiveSlide> liveSlides(const MediaRemoteService &media, const PomodoroService &pomodoro,
                                  const CalendarService &calendar, const QDateTime &now)
{
    std::vector<LiveSlide> slides;
    const NowPlayingInfo &playing = media.nowPlaying();
    if (!playing.title.isEmpty()) {
        slides.emplace_back(MediaSlide{playing.title, playing.artist, playing.isPlaying});
    }
    if (pomodoro.isRunning()) {
        slides.emplace_back(PomodoroSlide{pomodoro.timeString(), pomodoro.phase(),
                                          pomodoro.phaseLabel(), pomodoro.phaseColor()});
    }
    const auto &current = calendar.currentEvent();
    if (const auto &event = current ? current : calendar.nextEvent()) {
        slides.emplace_back(CalendarSlide{event->title, event->relativeString(now)});
    }
    return slides;
}

LiveSlideLook lookOf(const LiveSlide &slide)
{
    return std::visit([](const auto &payload) { return lookOf(payload); }, slide);
}

} // namespace velmora
