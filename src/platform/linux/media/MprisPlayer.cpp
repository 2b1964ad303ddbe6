#include "platform/linux/media/MprisPlayer.h"

#include "platform/linux/dbus/BusValue.h"

#include <QUrl>

#include <algorithm>
#include <cmath>

namespace velmora
{

namespace
{

constexpr qsizetype maximumText = 1000;
constexpr qsizetype maximumAddress = 8192;
constexpr qsizetype maximumInlineArtwork = 24'000'000; // a data: address holds the picture itself
constexpr double perMicrosecond = 1e-6;                // seconds
constexpr double jump = 1; // seconds; less than that is jitter of the player's clock

/// At most so many UTF-16 units, without half a character at the end.
QString cut(const QString &text)
{
    if (text.size() <= maximumText)
        return text.trimmed();
    const bool isHalf = text.at(maximumText - 1).isHighSurrogate();
    return text.left(isHalf ? maximumText - 1 : maximumText).trimmed();
}

/// Several artists come as a list; some players send one string.
QString joinedText(const QVariant &value)
{
    if (value.typeId() != QMetaType::QStringList)
        return cut(toText(value));
    QStringList parts = value.toStringList().mid(0, maximumText);
    parts.removeAll(QString());
    return cut(parts.join(QLatin1String(", ")));
}

QString fileName(const QString &address)
{
    return address.size() > maximumAddress ? QString() : QUrl(address).fileName(QUrl::FullyDecoded);
}

QString artworkAddress(const QString &address)
{
    const bool isInline = address.startsWith(QLatin1String("data:"), Qt::CaseInsensitive);
    return address.size() > (isInline ? maximumInlineArtwork : maximumAddress) ? QString()
                                                                               : address;
}

MprisPlayer::Status statusFrom(const QVariant &value)
{
    const QString text = toText(value);
    if (text == QLatin1String("Playing"))
        return MprisPlayer::Status::Playing;
    return text == QLatin1String("Paused") ? MprisPlayer::Status::Paused
                                           : MprisPlayer::Status::Stopped;
}

} // namespace

MprisTrack MprisTrack::fromMetadata(const QVariant &metadata)
{
    const QVariantMap entries = toDictionary(metadata).value_or(QVariantMap());
    const auto entry = [&entries](const char *key) { return entries.value(QLatin1String(key)); };
    MprisTrack track;
    track.id = cut(toText(entry("mpris:trackid")));
    track.title = cut(toText(entry("xesam:title")));
    if (track.title.isEmpty())
        track.title = cut(fileName(toText(entry("xesam:url"))));
    track.artist = joinedText(entry("xesam:artist"));
    track.album = cut(toText(entry("xesam:album")));
    track.duration = std::max(0.0, toNumber(entry("mpris:length")).value_or(0) * perMicrosecond);
    track.artwork = artworkAddress(toText(entry("mpris:artUrl")));
    return track;
}

void MprisPlayer::takeAll(const QVariantMap &properties, Time now)
{
    QVariantMap complete{{u"PlaybackStatus"_qs, {}}, {u"Metadata"_qs, {}}, {u"Rate"_qs, {}}};
    complete.insert(properties);
    takeChanges(complete, now);
}

void MprisPlayer::takeChanges(const QVariantMap &properties, Time now)
{
    const auto end = properties.constEnd();
    if (const auto rate = properties.constFind(QStringLiteral("Rate")); rate != end)
        setRate(toNumber(*rate).value_or(1), now);
    if (const auto status = properties.constFind(QStringLiteral("PlaybackStatus")); status != end)
        setStatus(statusFrom(*status), now);
    if (const auto metadata = properties.constFind(QStringLiteral("Metadata")); metadata != end)
        setTrack(MprisTrack::fromMetadata(*metadata), now);
    if (const auto position = properties.constFind(QStringLiteral("Position")); position != end)
        takePosition(*position, now);
}

void MprisPlayer::takePosition(const QVariant &microseconds, Time now)
{
    m_isPositionUncertain = false;
    const auto number = toNumber(microseconds);
    if (!number)
        return;
    // mpv is slightly below zero at the start of a track.
    const double seconds = std::max(0.0, *number * perMicrosecond);
    if (std::abs(seconds - position(now)) >= jump)
        ++m_jumpCount;
    setPosition(seconds, now);
}

MediaTrack MprisPlayer::mediaTrack(Time now) const
{
    MediaTrack track;
    track.title = m_track.title;
    track.artist = m_track.artist;
    track.album = m_track.album;
    track.duration = m_track.duration;
    track.elapsed = position(now);
    track.isPlaying = isPlaying();
    return track;
}

double MprisPlayer::position(Time now) const
{
    double seconds = m_position;
    if (isPlaying())
        seconds += m_rate * std::chrono::duration<double>(now - m_positionTime).count();
    return m_track.duration > 0 ? std::min(seconds, m_track.duration) : seconds;
}

void MprisPlayer::setStatus(Status status, Time now)
{
    if (status == m_status)
        return;
    setPosition(position(now), now);
    m_status = status;
    m_isPositionUncertain = true;
}

void MprisPlayer::setRate(double rate, Time now)
{
    const double usable = rate > 0 ? rate : 1; // a rate of 0 is how some say that they are paused
    if (usable == m_rate)
        return;
    setPosition(position(now), now);
    m_rate = usable;
}

void MprisPlayer::setTrack(MprisTrack track, Time now)
{
    if (track.isOtherThan(m_track)) {
        setPosition(0, now);
        m_isPositionUncertain = true;
        ++m_trackCount;
    }
    m_track = std::move(track);
}

void MprisPlayer::setPosition(double seconds, Time now)
{
    m_position = seconds;
    m_positionTime = now;
}

} // namespace velmora
