#pragma once

#include "platform/MediaRemote.h"

#include <QString>
#include <QVariantMap>

#include <chrono>
#include <utility>

namespace velmora
{

/// What a player tells of its track. Texts are at most 1,000 characters long.
struct MprisTrack {
    QString id;
    QString title; ///< without one, the file's name
    QString artist;
    QString album;
    double duration = 0; ///< seconds; 0 if unknown
    QString artwork;     ///< address of the cover; empty if there is none

    bool operator==(const MprisTrack &) const = default;

    [[nodiscard]] static MprisTrack fromMetadata(const QVariant &metadata);

    /// False if only what is known of the same track has changed.
    [[nodiscard]] bool isOtherThan(const MprisTrack &other) const
    {
        return id != other.id || title != other.title;
    }
};

/// The state of one player as it is known from its messages. Knows no bus; times are
/// `Clock::uptime`.
class MprisPlayer
{
public:
    using Status = PlaybackState;
    using Time = std::chrono::nanoseconds;

    /// All properties at once: what is not among them has its default.
    void takeAll(const QVariantMap &properties, Time now);
    /// Some properties; the others stay.
    void takeChanges(const QVariantMap &properties, Time now);
    /// Microseconds, as the player sends them.
    void takePosition(const QVariant &microseconds, Time now);

    [[nodiscard]] Status status() const { return m_status; }
    [[nodiscard]] bool isPlaying() const { return m_status == Status::Playing; }
    [[nodiscard]] const MprisTrack &track() const { return m_track; }
    /// A stopped player may name the track it would begin with; that is not being played.
    [[nodiscard]] bool hasItem() const
    {
        return m_status != Status::Stopped && !m_track.title.isEmpty();
    }

    /// As the rest of the program knows it, without its picture.
    [[nodiscard]] MediaTrack mediaTrack(Time now) const;
    /// Seconds, computed from the last position that is known.
    [[nodiscard]] double position(Time now) const;
    [[nodiscard]] Time positionAge(Time now) const { return now - m_positionTime; }

    /// Counts the tracks and the jumps of the position, so that others can see that there was one.
    [[nodiscard]] int trackCount() const { return m_trackCount; }
    [[nodiscard]] int jumpCount() const { return m_jumpCount; }
    /// Whether, since this was last asked, a change has made the position uncertain.
    [[nodiscard]] bool takePositionDoubt() { return std::exchange(m_isPositionUncertain, false); }

private:
    void setStatus(Status status, Time now);
    void setRate(double rate, Time now);
    void setTrack(MprisTrack track, Time now);
    void setPosition(double seconds, Time now);

    Status m_status = Status::Stopped;
    double m_rate = 1; ///< above 0, also while paused
    MprisTrack m_track;
    double m_position = 0; ///< seconds, at m_positionTime
    Time m_positionTime{0};
    bool m_isPositionUncertain = false;
    int m_trackCount = 0;
    int m_jumpCount = 0;
};

} // namespace velmora
