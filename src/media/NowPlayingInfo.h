#pragma once

#include <QDateTime>
#include <QImage>
#include <QString>
#include <QtQml/qqmlregistration.h>

namespace velmora
{

/// What is playing, as told by one answer. Copies are independent; the image is shared.
struct NowPlayingInfo {
    Q_GADGET
    QML_VALUE_TYPE(nowPlayingInfo)
    Q_PROPERTY(QString title MEMBER title)
    Q_PROPERTY(QString artist MEMBER artist)
    Q_PROPERTY(QString album MEMBER album)
    Q_PROPERTY(QImage artwork MEMBER artwork)
    Q_PROPERTY(double duration MEMBER duration)
    Q_PROPERTY(bool isPlaying MEMBER isPlaying)

public:
    QString title; ///< empty: there is no item
    QString artist;
    QString album;
    QImage artwork;            ///< null if none is known
    double duration = 0;       ///< seconds; 0 if unknown
    double elapsedAtFetch = 0; ///< seconds, as it was at `fetchTimestamp`
    QDateTime fetchTimestamp;  ///< when the answer arrived, by the local wall clock
    bool isPlaying = false;
    bool hasOwnArtwork = false; ///< the player names a cover itself, which may be on its way still

    /// No item. One value for the whole process, with the time of its first use.
    [[nodiscard]] static const NowPlayingInfo &empty();

    /// Seconds into the track at the time `now`. While it plays it rises with the clock up to the
    /// length; a track of unknown length is not extrapolated.
    [[nodiscard]] double position(const QDateTime &now) const;

    /// Position and image take no part: views skip what differs in these only.
    friend bool operator==(const NowPlayingInfo &a, const NowPlayingInfo &b)
    {
        return a.title == b.title && a.artist == b.artist && a.album == b.album &&
               a.isPlaying == b.isPlaying && a.duration == b.duration;
    }
};

} // namespace velmora
