#include "media/ArtworkLookup.h"

#include "imaging/CoverImage.h"

#include <QLoggingCategory>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QtConcurrent>

#include <algorithm>
#include <nlohmann/json.hpp>

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
constexpr std::chrono::milliseconds patience = 30s;
constexpr qint64 resultsLimit = 1'000'000;
constexpr qint64 imageLimit = 16'000'000;

QString lookupKey(const QString &title, const QString &artist)
{
    return title + u'|' + artist;
}

/// Invalid where the address cannot be formed.
QUrl searchUrl(const QUrl &host, const QString &title, const QString &artist)
{
    // What a query may hold stays as it is, "&" and "+" too.
    const QByteArray term = QUrl::toPercentEncoding(artist + u' ' + title, "!$&'()*+,/:;=?@");
    return QUrl::fromEncoded(host.toEncoded() + "/search?term=" + term + "&entity=song&limit=3",
                             QUrl::StrictMode);
}

/// The address of the first result's cover, in its larger size; invalid if there is none.
QUrl coverUrl(const QByteArray &json)
{
    const auto document = nlohmann::json::parse(json.begin(), json.end(), nullptr, false);
    if (!document.is_object()) {
        return {};
    }
    const auto results = document.find("results");
    if (results == document.end() || !results->is_array() || results->empty() ||
        !results->front().is_object()) {
        return {};
    }
    const auto address = results->front().find("artworkUrl100");
    if (address == results->front().end() || !address->is_string()) {
        return {};
    }
    QString url = QString::fromStdString(address->get<std::string>());
    url.replace(QLatin1String("100x100b"), QLatin1String("600x600b"));
    return QUrl(url, QUrl::StrictMode);
}

/// An error page is an answer like any other; it fails as what it claims to be.
bool isAnswered(const QNetworkReply &reply)
{
    return reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).isValid() &&
           (reply.error() == QNetworkReply::NoError ||
            reply.error() >= QNetworkReply::ContentAccessDenied);
}

} // namespace

ArtworkLookup::ArtworkLookup(Clock &clock, QUrl host)
    : m_clock(clock)
    , m_host(std::move(host))
    , m_artworkCache(cachedImages)
    , m_turns(turnsAtMost)
    , m_turnsCounted(clock.uptime())
{
}

ArtworkLookup::~ArtworkLookup() = default;

QImage ArtworkLookup::cached(const QString &title, const QString &artist) const
{
    const QImage *image = m_artworkCache.object(lookupKey(title, artist));
    return image ? *image : QImage();
}

void ArtworkLookup::start(const QString &title, const QString &artist, Handler found)
{
    const QString key = lookupKey(title, artist);
    if (key.startsWith(u'|') || m_artworkFetchInFlight.contains(key) || !takeTurn()) {
        return;
    }
    m_artworkFetchInFlight.insert(key);
    ++m_running;
    const Search search{key, title, std::move(found)};
    fetch(searchUrl(m_host, title, artist), resultsLimit, search,
          [this, search](const QByteArray &json) { readResults(json, search); });
}

/// Turns come back with time, up to a full allowance.
bool ArtworkLookup::takeTurn()
{
    const auto now = m_clock.uptime();
    const std::chrono::duration<double> passed = now - m_turnsCounted;
    m_turns = std::min(turnsAtMost, m_turns + passed.count() * turnsPerSecond);
    m_turnsCounted = now;
    if (m_running >= atOnce || m_turns < 1) {
        return false;
    }
    m_turns -= 1;
    return true;
}

void ArtworkLookup::fetch(const QUrl &url, qint64 limit, const Search &search, BodyHandler arrived)
{
    if (!url.isValid()) {
        fail(search);
        return;
    }
    if (!m_network) {
        m_network = std::make_unique<QNetworkAccessManager>();
    }
    QNetworkRequest request(url);
    request.setTransferTimeout(static_cast<int>(patience.count()));
    request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    QNetworkReply *reply = m_network->get(request);
    connect(reply, &QNetworkReply::downloadProgress, this, [reply, limit](qint64 received) {
        if (received > limit) {
            reply->abort();
        }
    });
    connect(reply, &QNetworkReply::finished, this,
            [this, reply, search, arrived = std::move(arrived)] {
                reply->deleteLater();
                if (isAnswered(*reply)) {
                    arrived(reply->readAll());
                } else {
                    fail(search);
                }
            });
}

void ArtworkLookup::readResults(const QByteArray &json, const Search &search)
{
    fetch(coverUrl(json), imageLimit, search,
          [this, search](const QByteArray &bytes) { decode(bytes, search); });
}

void ArtworkLookup::decode(const QByteArray &bytes, const Search &search)
{
    QtConcurrent::run(decodeCover, bytes).then(this, [this, search](const QImage &image) {
        if (image.isNull()) {
            fail(search);
        } else {
            succeed(image, search);
        }
    });
}

void ArtworkLookup::succeed(const QImage &image, const Search &search)
{
    --m_running;
    m_artworkCache.insert(search.key, new QImage(image));
    m_artworkFetchInFlight.remove(search.key);
    search.found(image);
}

void ArtworkLookup::fail(const Search &search)
{
    --m_running;
    qCDebug(lcArtwork, "iTunes artwork lookup found nothing for \"%s\"",
            qUtf8Printable(search.title));
    m_pauses[search.key] =
        m_clock.after(pauseAfterFailure, [this, key = search.key] { resume(key); });
}

/// By value: the timer that holds the original goes.
void ArtworkLookup::resume(QString key) // NOLINT(performance-unnecessary-value-param)
{
    m_artworkFetchInFlight.remove(key);
    m_pauses.erase(key);
}

} // namespace velmora
