#pragma once

#include "platform/MediaRemote.h"

#include <QList>

#include <vector>

namespace velmora
{

/// A desktop's media service that a test speaks for: questions wait until they are answered.
class FakeMediaRemote final : public MediaRemote
{
public:
    bool isThere = true;
    bool canQuery = true;
    bool canSend = true;
    bool isRegistered = false;
    std::vector<InfoHandler> questions;
    QList<quint32> commands;

    [[nodiscard]] std::optional<Functions> load(QString &error) override
    {
        if (!isThere) {
            error = QStringLiteral("no bus");
            return std::nullopt;
        }
        Functions functions;
        if (canQuery) {
            functions.getNowPlayingInfo = [this](InfoHandler handler) {
                questions.push_back(std::move(handler));
            };
        }
        if (canSend) {
            functions.sendCommand = [this](quint32 command, const QVariantHash *) {
                commands << command;
                return true;
            };
        }
        functions.registerForNowPlayingNotifications = [this] { isRegistered = true; };
        return functions;
    }

    /// Answers all that wait.
    void answer(const QVariantHash &info)
    {
        for (const auto &question : std::exchange(questions, {})) {
            question(info);
        }
    }
};

/// An answer that names a track.
inline QVariantHash playingTrack(const QString &title, const QString &artist = {})
{
    return {{QLatin1String(NowPlayingKey::title), title},
            {QLatin1String(NowPlayingKey::artist), artist},
            {QLatin1String(NowPlayingKey::duration), 100.0},
            {QLatin1String(NowPlayingKey::elapsedTime), 10.0},
            {QLatin1String(NowPlayingKey::playbackRate), 1.0}};
}

/// Likewise, with some values of its own.
inline QVariantHash playingTrack(std::initializer_list<std::pair<const char *, QVariant>> changes)
{
    QVariantHash track = playingTrack(QStringLiteral("Song"), QStringLiteral("Them"));
    for (const auto &[key, value] : changes) {
        track.insert(QLatin1String(key), value);
    }
    return track;
}

} // namespace velmora
