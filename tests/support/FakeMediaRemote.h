#pragma once

#include "platform/MediaRemote.h"

#include <QList>

#include <utility>

namespace velmora
{

/// A desktop's media service that a test speaks for.
class FakeMediaRemote final : public MediaRemote
{
public:
    std::optional<MediaTrack> current; ///< what each question gets as its answer
    int questions = 0;
    QList<PlaybackCommand> commands;

    [[nodiscard]] std::optional<MediaTrack> track() override
    {
        ++questions;
        return current;
    }
    void send(PlaybackCommand command) override { commands << command; }

    /// Tells of a track, once: later questions find nothing, which leaves it on show.
    void answer(const MediaTrack &track)
    {
        current = track;
        Q_EMIT changed();
        current.reset();
    }
};

/// A track at ten of its hundred seconds.
inline MediaTrack playingTrack(const QString &title, const QString &artist = {})
{
    MediaTrack track;
    track.title = title;
    track.artist = artist;
    track.duration = 100;
    track.elapsed = 10;
    track.isPlaying = true;
    return track;
}

} // namespace velmora
