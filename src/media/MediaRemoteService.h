#pragma once

#include "media/ArtworkLookup.h"
#include "media/NowPlayingInfo.h"
#include "platform/Clock.h"
#include "platform/MediaRemote.h"

#include <QObject>
#include <QtQml/qqmlregistration.h>

#include <optional>

namespace velmora
{

/// Transport commands, with the numbers under which the desktop knows them.
enum class PlaybackCommand : quint32 {
    play = 0,
    pause = 1,
    togglePlayPause = 2,
    nextTrack = 4,
    previousTrack = 5,
    seekToPosition = 45,
};

/// The one media item that the notch shows, and the way to its player. Main thread only. Without a
/// media service on the desktop it simply shows nothing.
class MediaRemoteService : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made once by the program")
    /// Notifies at every assignment, also of an equal value.
    Q_PROPERTY(velmora::NowPlayingInfo nowPlaying READ nowPlaying NOTIFY nowPlayingChanged FINAL)

public:
    /// `searchHost` is asked for covers that the player does not bring along; see ArtworkLookup.
    MediaRemoteService(Clock &clock, MediaRemote &remote, const QUrl &searchHost,
                       QObject *parent = nullptr);
    ~MediaRemoteService() override;
    Q_DISABLE_COPY_MOVE(MediaRemoteService)

    [[nodiscard]] const NowPlayingInfo &nowPlaying() const { return m_nowPlaying; }

    /// Asks the desktop once. Each answer is applied as it arrives.
    Q_INVOKABLE void refresh();

    /// Sends a command to the player and changes nothing here: the player tells what became of it.
    void sendCommand(PlaybackCommand command, const QVariantHash *options = nullptr) const;
    Q_INVOKABLE void togglePlayPause() const { sendCommand(PlaybackCommand::togglePlayPause); }
    Q_INVOKABLE void nextTrack() const { sendCommand(PlaybackCommand::nextTrack); }
    Q_INVOKABLE void previousTrack() const { sendCommand(PlaybackCommand::previousTrack); }

Q_SIGNALS:
    void nowPlayingChanged();

private:
    void bind(MediaRemote &remote);
    void observe(MediaRemote &remote) const;
    void handleMediaRemoteChange();
    void handleSpotifyNotification(const std::optional<QVariantHash> &userInfo);
    void handleAppleMusicNotification();

    [[nodiscard]] NowPlayingInfo parse(const QVariantHash &answer) const;
    void apply(const QVariantHash &answer);
    void applyAnswerWithoutTitle();
    void setNowPlaying(const NowPlayingInfo &info);
    void lookUpArtwork(const NowPlayingInfo &info);
    void artworkFound(const QString &title, const QImage &image);

    Clock &m_clock;
    MediaRemote::Functions m_remote;
    NowPlayingInfo m_nowPlaying;
    NowPlayingInfo m_lastSpotifyInfo; ///< stands in while the desktop names no track
    ArtworkLookup m_artworkLookup;
    TimerHandle m_startupRetry;
    TimerHandle m_pollTimer;
};

} // namespace velmora
