#pragma once

#include "media/ArtworkLookup.h"
#include "media/NowPlayingInfo.h"
#include "platform/Clock.h"
#include "platform/MediaRemote.h"

#include <QObject>
#include <QtQml/qqmlregistration.h>

namespace velmora
{

/// The one media item that the notch shows, and the way to its player. Main thread only.
class MediaRemoteService : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made once by the program")
    /// Notifies at every assignment, also of an equal value.
    Q_PROPERTY(velmora::NowPlayingInfo nowPlaying READ nowPlaying NOTIFY nowPlayingChanged FINAL)

public:
    /// `http` and `store` serve the search for covers; see ArtworkLookup.
    MediaRemoteService(Clock &clock, MediaRemote &remote, HttpGetter &http,
                       const KeyValueStore &store, QObject *parent = nullptr);
    Q_DISABLE_COPY_MOVE(MediaRemoteService)

    [[nodiscard]] const NowPlayingInfo &nowPlaying() const { return m_nowPlaying; }

    /// Asks the desktop once, and applies its answer.
    Q_INVOKABLE void refresh();

    /// Sends a command to the player and changes nothing here: the player tells what became of it.
    void sendCommand(PlaybackCommand command) const;
    Q_INVOKABLE void togglePlayPause() const { sendCommand(PlaybackCommand::togglePlayPause); }
    Q_INVOKABLE void nextTrack() const { sendCommand(PlaybackCommand::nextTrack); }
    Q_INVOKABLE void previousTrack() const { sendCommand(PlaybackCommand::previousTrack); }

Q_SIGNALS:
    void nowPlayingChanged();

private:
    void handleSpotifyNotification(const PlayerNotice &notice);

    [[nodiscard]] NowPlayingInfo infoFrom(const MediaTrack &track) const;
    void keepArtwork(NowPlayingInfo &info) const;
    void apply(const MediaTrack &track);
    void applyAnswerWithoutTitle();
    void setNowPlaying(const NowPlayingInfo &info);
    void lookUpArtwork(const NowPlayingInfo &info);
    void artworkFound(const QString &title, const QImage &image);

    Clock &m_clock;
    MediaRemote &m_remote;
    NowPlayingInfo m_nowPlaying;
    NowPlayingInfo m_lastSpotifyInfo; ///< stands in while the desktop names no track
    ArtworkLookup m_artworkLookup;
    TimerHandle m_startupRetry;
    TimerHandle m_pollTimer;
};

} // namespace velmora
