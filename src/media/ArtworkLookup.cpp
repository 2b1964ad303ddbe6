#include "media/ArtworkLookup.h"

#include "imaging/CoverImage.h"

#include <QJsonDocument>
#include <QJsonValue>
#include <QLoggingCategory>
#include <QtConcurrent>

#include <algorithm>
#include <utility>

namespace velmora
{

namespace
{

using namespace std::chrono_literals;

Q_LOGGING_CATEGORY(lcArtwork, "com.velmora.app.MediaRemote", QtInfoMsg)

constexpr int cachedImages = 24;
constexpr int atOnce = 4;
constexpr double turnsAtMost = 20;
constexpr double turnsPerSecond = turnsAtMost / 60;
constexpr auto pauseAfterFailure = 60s;
constexpr qint64 resultsLimit = 1'000'000;
constexpr qint64 imageLimit = 16'000'000;

QString lookupKey(const QString &title, const QString &artist)
{
    return title + u'|' + artist;
}

/// Invalid where the address cannot be formed.
QUrl searchUrl(const QString &host, const QString &title, const QString &artist)
{
    const QString origin =
        host.contains(QLatin1String("://")) ? host : QLatin1String("https://") + host;
    // What a query may hold stays as it is, "&" and "+" too.
    const QByteArray term = QUrl::toPercentEncoding(artist + u' ' + title, "!$&'()*+,/:;=?@");
    return QUrl::fromEncoded(origin.toUtf8() + "/search?term=" + term + "&entity=song&limit=3",
                             QUrl::StrictMode);
}

/// The address of the first result's cover, in its larger size; invalid if there is none.
QUrl coverUrl(const QByteArray &json)
{
    QString url = QJsonDocument::fromJson(json)[u"results"][0][u"artworkUrl100"].toString();
    url.replace(QLatin1String("100x100b"), QLatin1String("600x600b"));
    return QUrl(url, QUrl::StrictMode);
}

} // namespace

ArtworkLookup::ArtworkLookup(Clock &clock, HttpGetter &http, const KeyValueStore &store)
    : m_clock(clock)
    , m_http(http)
    , m_store(store)
    , m_artworkCache(cachedImages)
    , m_turns(turnsAtMost)
    , m_turnsCounted(clock.uptime())
{
}

QImage ArtworkLookup::cached(const QString &title, const QString &artist) const
{
    const QImage *image = m_artworkCache.object(lookupKey(title, artist));
    return image ? *image : QImage();
}

void ArtworkLookup::start(const QString &title, const QString &artist, Handler found)
{
    const QString key = lookupKey(title, artist);
    const QString host = m_store.string(QStringLiteral("coverSearchHost"))
                             .value_or(QStringLiteral("itunes.apple.com"));
    if (host.isEmpty() || key.startsWith(u'|') || m_searches.contains(key) || !takeTurn()) {
        return;
    }
    m_searches[key] = {title, std::move(found), {}, {}};
    fetch(key, searchUrl(host, title, artist), resultsLimit, [this, key](const QByteArray &json) {
        fetch(key, coverUrl(json), imageLimit,
              [this, key](const QByteArray &bytes) { decode(key, bytes); });
    });
}

/// Turns come back with time, up to a full allowance.
bool ArtworkLookup::takeTurn()
{
    const auto now = m_clock.uptime();
    const std::chrono::duration<double> passed = now - m_turnsCounted;
    m_turns = std::min(turnsAtMost, m_turns + passed.count() * turnsPerSecond);
    m_turnsCounted = now;
    const auto running = std::count_if(m_searches.begin(), m_searches.end(),
                                       [](const auto &each) { return !each.second.pause; });
    if (running >= atOnce || m_turns < 1) {
        return false;
    }
    m_turns -= 1;
    return true;
}

void ArtworkLookup::fetch(const QString &key, const QUrl &url, qint64 limit,
                          std::function<void(const QByteArray &body)> arrived)
{
    m_searches[key].request =
        m_http.get({url, QStringLiteral("cover search"), limit},
                   [this, key, arrived = std::move(arrived)](const auto &answer) {
                       if (answer) {
                           arrived(answer->body);
                       } else {
                           fail(key);
                       }
                   });
}

void ArtworkLookup::decode(const QString &key, const QByteArray &bytes)
{
    QtConcurrent::run(decodeCover, bytes).then(this, [this, key](const QImage &image) {
        if (image.isNull()) {
            fail(key);
        } else {
            succeed(key, image);
        }
    });
}

void ArtworkLookup::succeed(const QString &key, const QImage &image)
{
    const Handler found = std::move(m_searches[key].found);
    m_searches.erase(key);
    m_artworkCache.insert(key, new QImage(image));
    found(image);
}

void ArtworkLookup::fail(const QString &key)
{
    Search &search = m_searches[key];
    qCDebug(lcArtwork, "iTunes artwork lookup found nothing for \"%s\"",
            qUtf8Printable(search.title));
    search.pause =
        m_clock.after(pauseAfterFailure, [this, key] { m_searches.erase(QString(key)); });
}

} // namespace velmora
