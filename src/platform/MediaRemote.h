#pragma once

#include <QObject>
#include <QVariantHash>

#include <functional>
#include <optional>

namespace velmora
{

/// Keys of the dictionary in which the desktop tells what is playing. A value that is absent or of
/// another type counts as unknown.
namespace NowPlayingKey
{
inline constexpr char title[] = "kMRMediaRemoteNowPlayingInfoTitle";       ///< string
inline constexpr char artist[] = "kMRMediaRemoteNowPlayingInfoArtist";     ///< string
inline constexpr char album[] = "kMRMediaRemoteNowPlayingInfoAlbum";       ///< string
inline constexpr char duration[] = "kMRMediaRemoteNowPlayingInfoDuration"; ///< double, seconds
/// double, seconds, at the moment of the answer
inline constexpr char elapsedTime[] = "kMRMediaRemoteNowPlayingInfoElapsedTime";
/// double; above 0 while it plays
inline constexpr char playbackRate[] = "kMRMediaRemoteNowPlayingInfoPlaybackRate";
/// encoded bytes (QByteArray) or a decoded QImage
inline constexpr char artworkData[] = "kMRMediaRemoteNowPlayingInfoArtworkData";
/// bool; true while the player's own cover is still being fetched: another answer will bring it, or
/// tell that there is none
inline constexpr char artworkPending[] = "velmoraNowPlayingInfoArtworkPending";
} // namespace NowPlayingKey

/// The desktop's one current media item, whichever program plays it.
class MediaRemote : public QObject
{
    Q_OBJECT

public:
    using InfoHandler = std::function<void(const QVariantHash &info)>;

    /// What loading yields; a function that is empty is not available.
    struct Functions {
        /// Answers once, on the main loop, never inside the call. An empty dictionary: no item.
        std::function<void(InfoHandler)> getNowPlayingInfo;
        /// Sends a transport command by its number to the program that plays the current item;
        /// false if there is nobody to send it to or the number means nothing.
        std::function<bool(quint32 command, const QVariantHash *options)> sendCommand;
        /// From here on, the first three signals are sent.
        std::function<void()> registerForNowPlayingNotifications;
    };

    /// Called once. Nothing if the desktop has no such service; `error` then says why.
    [[nodiscard]] virtual std::optional<Functions> load(QString &error) = 0;

Q_SIGNALS:
    void nowPlayingInfoDidChange();
    void nowPlayingApplicationIsPlayingDidChange();
    void nowPlayingApplicationDidChange();

    /// Two players tell of their changes themselves. This one sends its track along: "Player
    /// State", "Name", "Artist", "Album" (strings), "Duration" (milliseconds), "Playback Position"
    /// (seconds).
    void spotifyPlaybackStateChanged(const std::optional<QVariantHash> &userInfo);
    /// And this one only that there is news.
    void appleMusicPlayerInfo();
};

} // namespace velmora
