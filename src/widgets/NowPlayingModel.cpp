#include "widgets/NowPlayingModel.h"

#include <algorithm>
#include <cmath>

namespace velmora
{

namespace
{

using namespace std::chrono_literals;

constexpr auto pollInterval = 1s;
constexpr auto coverPatience = 300ms;
constexpr std::chrono::milliseconds shortestMove = 16ms; // a frame
constexpr std::chrono::milliseconds longestMove = 250ms; // for the seconds of the label
constexpr double pixelsPerMove = 0.25;

} // namespace

QString playbackTimeText(double seconds)
{
    if (!(seconds >= 0) || !std::isfinite(seconds)) {
        return QStringLiteral("0:00");
    }
    // Beyond this a double no longer holds every second, and an integer soon overflows.
    const auto whole = static_cast<qint64>(std::min(seconds, 9e15));
    return QStringLiteral("%1:%2").arg(whole / 60).arg(whole % 60, 2, 10, QLatin1Char('0'));
}

void NowPlayingModel::componentComplete()
{
    connect(m_service, &MediaRemoteService::nowPlayingChanged, this, &NowPlayingModel::takeNews);
    takeNews();
    m_service->refresh();
    m_poll = m_clock->every(pollInterval, [this] { m_service->refresh(); });
}

QString NowPlayingModel::title() const
{
    return hasTrack() ? m_shown.title.simplified() : QStringLiteral("Nothing Playing");
}

void NowPlayingModel::takeNews()
{
    m_shown = m_service->nowPlaying();
    Q_EMIT changed();
    takeCover();
    movePosition();
}

/// The cover of a new track comes a little later than its title, and is often the same.
void NowPlayingModel::takeCover()
{
    if (!m_shown.artwork.isNull() || !hasTrack()) {
        setCover(m_shown.artwork);
    } else if (!m_cover.isNull() && !m_coverWait) {
        m_coverWait = m_clock->after(coverPatience, [this] { setCover({}); });
    }
}

void NowPlayingModel::setCover(const QImage &cover)
{
    m_coverWait.reset();
    const bool isSame = cover == m_cover;
    m_cover = cover; // of two that look the same the new one, as it will come again
    if (!isSame) {
        ++m_coverKey;
        Q_EMIT coverChanged();
    }
}

void NowPlayingModel::movePosition()
{
    const double position = m_shown.position(m_clock->now());
    const double progress =
        m_shown.duration > 0 ? std::clamp(position / m_shown.duration, 0.0, 1.0) : 0.0;
    if (progress != m_progress) {
        m_progress = progress;
        Q_EMIT progressChanged();
    }
    const QString text = playbackTimeText(position);
    if (text != m_positionText) {
        m_positionText = text;
        Q_EMIT positionTextChanged();
    }
    // What stands still, or has arrived, costs nothing.
    if (!m_shown.isPlaying || m_shown.duration <= 0 || progress >= 1) {
        m_nextMove.reset();
        return;
    }
    const double seconds = pixelsPerMove * m_shown.duration / std::max(m_barPixels, 1.0);
    const std::chrono::milliseconds wait(
        static_cast<qint64>(std::min(seconds * 1000, double(longestMove.count()))));
    m_nextMove = m_clock->after(std::max(wait, shortestMove), [this] { movePosition(); });
}

} // namespace velmora
