#pragma once

#include "platform/Clock.h"

#include <QCache>
#include <QImage>
#include <QObject>
#include <QSet>
#include <QString>
#include <QUrl>

#include <functional>
#include <map>
#include <memory>

class QNetworkAccessManager;

namespace velmora
{

/// Finds covers for tracks whose player brings none along, by a public music search service (JSON
/// over HTTPS). All failures are quiet. Main thread only; images are decoded beside it.
///
/// What limits its rate: one search for a track at a time, a pause of a minute after a search that
/// found nothing, and never more than twenty searches a minute or four at once for all tracks
/// together. Whoever is turned away asks again at the next answer of the player.
class ArtworkLookup : public QObject
{
    Q_OBJECT

public:
    using Handler = std::function<void(const QImage &)>;

    /// `host`: scheme, name and port of the service.
    ArtworkLookup(Clock &clock, QUrl host);
    ~ArtworkLookup() override;
    Q_DISABLE_COPY_MOVE(ArtworkLookup)

    /// The image that an earlier search for this track found; null if there is none.
    [[nodiscard]] QImage cached(const QString &title, const QString &artist) const;

    /// Whether any search is under way.
    [[nodiscard]] bool isSearching() const { return m_running > 0; }

    /// Begins a search; `found` is called if it yields an image, on the main loop.
    void start(const QString &title, const QString &artist, Handler found);

private:
    struct Search {
        QString key;
        QString title;
        Handler found;
    };
    using BodyHandler = std::function<void(const QByteArray &)>;

    [[nodiscard]] bool takeTurn();
    void fetch(const QUrl &url, qint64 limit, const Search &search, BodyHandler arrived);
    void readResults(const QByteArray &json, const Search &search);
    void decode(const QByteArray &bytes, const Search &search);
    void succeed(const QImage &image, const Search &search);
    void fail(const Search &search);
    void resume(QString key);

    Clock &m_clock;
    QUrl m_host;
    std::unique_ptr<QNetworkAccessManager> m_network; ///< made for the first search
    QCache<QString, QImage> m_artworkCache;
    QSet<QString> m_artworkFetchInFlight; ///< or found nothing a moment ago
    std::map<QString, TimerHandle> m_pauses;
    int m_running = 0;
    double m_turns;
    std::chrono::nanoseconds m_turnsCounted;
};

} // namespace velmora
