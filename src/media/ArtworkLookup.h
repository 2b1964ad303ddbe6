#pragma once

#include "platform/Clock.h"
#include "platform/HttpGetter.h"
#include "platform/KeyValueStore.h"

#include <QCache>
#include <QImage>
#include <QObject>
#include <QString>

#include <functional>
#include <map>

namespace velmora
{

/// Finds covers for tracks whose player brings none along, by a public music search service (JSON
/// over HTTPS). Its host is the setting `coverSearchHost`; none is asked if that is empty. All
/// failures are quiet. Main thread only; images are decoded beside it.
///
/// What limits its rate: one request at a time, one search for a track, a pause of a minute after a
/// search that found nothing, and never more than twenty searches a minute or four that wait.
/// Whoever is turned away asks again at the next answer of the player.
class ArtworkLookup : public QObject
{
    Q_OBJECT

public:
    using Handler = std::function<void(const QImage &)>;

    ArtworkLookup(Clock &clock, HttpGetter &http, const KeyValueStore &store);

    /// The image that an earlier search for this track found; null if there is none.
    [[nodiscard]] QImage cached(const QString &title, const QString &artist) const;

    /// Begins a search; `found` is called if it yields an image, on the main loop.
    void start(const QString &title, const QString &artist, Handler found);

private:
    struct Search {
        QString title;
        Handler found;
        HttpHandle request;
        TimerHandle pause; ///< after a failure
    };

    [[nodiscard]] bool takeTurn();
    void fetch(const QString &key, const QUrl &url, qint64 limit,
               std::function<void(const QByteArray &body)> arrived);
    void decode(const QString &key, const QByteArray &bytes);
    void succeed(const QString &key, const QImage &image);
    void fail(const QString &key);

    Clock &m_clock;
    HttpGetter &m_http;
    const KeyValueStore &m_store;
    QCache<QString, QImage> m_artworkCache;
    std::map<QString, Search> m_searches; ///< by title and artist: under way, or pausing
    double m_turns;
    std::chrono::nanoseconds m_turnsCounted;
};

} // namespace velmora
