#include "overlay/LiveSlide.h"

#include "media/MediaRemoteService.h"
#include "services/PomodoroService.h"

namespace velmora
{

namespace
{

QColor withOpacity(QColor color, float opacity)
{
    color.setAlphaF(opacity);
    return color;
}

const QColor faint = withOpacity(Qt::white, 0.4F);

/// Players send what they find in files: line breaks and tabs would break the one line there is.
QString oneLine(const QString &text)
{
    return text.simplified();
}

LiveSlideLook lookOf(const MediaSlide &slide)
{
    LiveSlideLook look;
    look.symbol = slide.isPlaying ? QStringLiteral("music.note") : QStringLiteral("play.slash");
    look.symbolColor = faint;
    look.isStacked = true;
    look.first = oneLine(slide.title);
    look.second = oneLine(slide.artist);
    look.secondColor = faint;
    return look;
}

LiveSlideLook lookOf(const PomodoroSlide &slide)
{
    LiveSlideLook look;
    look.symbol = slide.phaseLabel == u"WORK" ? QStringLiteral("timer")
                                              : QStringLiteral("cup.and.saucer.fill");
    look.symbolColor = withOpacity(slide.color, 0.85F);
    look.first = slide.time;
    look.firstSize = 10;
    look.isFirstFigure = true;
    look.firstColor = slide.color;
    look.second = slide.phaseLabel;
    look.isSecondMedium = true;
    look.secondColor = faint;
    return look;
}

} // namespace

std::vector<LiveSlide> liveSlides(const MediaRemoteService &media, const PomodoroService &pomodoro)
{
    std::vector<LiveSlide> slides;
    const NowPlayingInfo &playing = media.nowPlaying();
    if (!playing.title.isEmpty()) {
        slides.emplace_back(MediaSlide{playing.title, playing.artist, playing.isPlaying});
    }
    if (pomodoro.isRunning()) {
        slides.emplace_back(
            PomodoroSlide{pomodoro.timeString(), pomodoro.phaseLabel(), pomodoro.phaseColor()});
    }
    return slides;
}

LiveSlideLook lookOf(const LiveSlide &slide)
{
    return std::visit([](const auto &payload) { return lookOf(payload); }, slide);
}

} // namespace velmora
