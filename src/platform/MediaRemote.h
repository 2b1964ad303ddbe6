#pragma once

#include <QImage>
#include <QObject>
#include <QString>

#include <optional>

namespace velmora
{

/// What a player tells of the track that it plays.
struct MediaTrack {
    QString title; ///< empty: it names none
    QString artist;
    QString album;
    double duration = 0; ///< seconds; 0 if unknown
    double elapsed = 0;  ///< seconds, now
    bool isPlaying = false;
    QImage artwork; ///< null if there is none, or none yet
    /// The player names a cover that is still being fetched: another change will bring it, or tell
    /// that there is none.
    bool isArtworkPending = false;
};

enum class PlaybackState { Stopped, Paused, Playing };

/// What a player that announces its changes says of itself.
struct PlayerNotice {
    PlaybackState state = PlaybackState::Stopped;
    MediaTrack track; ///< without its picture
};

enum class PlaybackCommand { togglePlayPause, nextTrack, previousTrack };

/// The desktop's one current media item, whichever program plays it. Main thread only.
class MediaRemote : public QObject
{
    Q_OBJECT

public:
    /// As far as it is known now. Nothing: no program plays or pauses anything.
    [[nodiscard]] virtual std::optional<MediaTrack> track() = 0;

    /// To the program that plays the current item; lost if there is none. Its effect shows as a
    /// change.
    virtual void send(PlaybackCommand command) = 0;

Q_SIGNALS:
    void changed();

    /// Two players announce their changes themselves: this one with its track,
    void spotifyChanged(const velmora::PlayerNotice &notice);
    /// this one only that there is news.
    void appleMusicChanged();
};

} // namespace velmora
