#include "platform/linux/media/ArtworkLoader.h"

#include "imaging/CoverImage.h"
#include "platform/linux/UniqueFd.h"

#include <QFile>
#include <QFutureWatcher>
#include <QSet>
#include <QUrl>
#include <QtConcurrentRun>

#include <algorithm>
#include <utility>

namespace velmora
{

namespace
{

using namespace std::chrono_literals;

constexpr auto startInterval = 100ms;
constexpr auto patience = 20s; // a dead network drive answers never
constexpr qint64 maximumBytes = 16'777'216;

// Sixteen covers at most, and fewer if they are large.
constexpr qsizetype cacheKilobytes = 8192;
constexpr qsizetype leastCost = cacheKilobytes / 16;

// These take their time and run beside the main loop; they touch nothing shared.

/// Without an image if there is none, or if the key is among those known already.
Cover decodeFile(const QString &path, const QSet<QString> &knownKeys)
{
    const UniqueFd descriptor = openPlainFile(QFile::encodeName(path).constData());
    struct stat status = {};
    if (!descriptor.isOpen() || ::fstat(descriptor.get(), &status) != 0 ||
        status.st_size > maximumBytes)
        return {};
    // Players use one temporary file for one cover after another.
    const auto key = QStringLiteral("%1:%2:%3.%4:%5")
                         .arg(status.st_ino)
                         .arg(status.st_size)
                         .arg(status.st_mtim.tv_sec)
                         .arg(status.st_mtim.tv_nsec)
                         .arg(path);
    if (knownKeys.contains(key))
        return {key, QImage()};
    QFile file;
    file.open(descriptor.get(), QIODevice::ReadOnly | QIODevice::Unbuffered);
    return {key, decodeCover(file.read(status.st_size))};
}

/// Of an address that holds the data itself ("data:image/png;base64,…").
Cover decodeInline(const QString &address)
{
    const qsizetype comma = address.indexOf(u',');
    if (comma < 0)
        return {};
    const QByteArray body = QByteArray::fromPercentEncoding(address.mid(comma + 1).toLatin1());
    const bool isBase64 =
        address.left(comma).endsWith(QLatin1String(";base64"), Qt::CaseInsensitive);
    return {{}, decodeCover(isBase64 ? QByteArray::fromBase64(body) : body)};
}

} // namespace

ArtworkLoader::ArtworkLoader(Clock &clock, HttpGetter &http)
    : m_clock(clock)
    , m_http(http)
    , m_cache(cacheKilobytes)
    , m_threads(std::make_unique<QThreadPool>())
    , m_starts(clock, startInterval, [this] { startNext(); })
{
    m_threads->setMaxThreadCount(2); // the second one for when the first hangs
}

ArtworkLoader::~ArtworkLoader()
{
    // A thread that hangs in a read would hold up the end of the program.
    constexpr int milliseconds = 200;
    if (!m_threads->waitForDone(milliseconds))
        static_cast<void>(m_threads.release());
}

void ArtworkLoader::want(const QString &address)
{
    m_wanted = address;
    m_image = QImage();
    m_state = address.isEmpty() ? State::None : State::Loading;
    m_isWaiting = !address.isEmpty();
    if (m_download) {
        if (address == m_downloading) {
            m_isWaiting = false;
            return;
        }
        // Nobody waits for a slow server on behalf of a track that is over.
        m_download.reset();
        finish({});
    } else if (m_isWaiting && !m_isRunning) {
        m_starts.request();
    }
}

void ArtworkLoader::startNext()
{
    if (m_isRunning || !m_isWaiting)
        return;
    m_isWaiting = false;
    m_isRunning = true;
    m_patience = m_clock.after(patience, [this] {
        m_download.reset();
        finish({});
    });
    const QString scheme = m_wanted.left(6).section(u':', 0, 0).toLower();
    if (m_wanted.startsWith(u'/'))
        startFile(m_wanted);
    else if (scheme == QLatin1String("file"))
        startFile(QUrl(m_wanted).toLocalFile());
    else if (scheme == QLatin1String("http") || scheme == QLatin1String("https"))
        startDownload(m_wanted);
    else if (scheme == QLatin1String("data"))
        decodeAside([address = m_wanted] { return decodeInline(address); });
    else
        finish({});
}

void ArtworkLoader::startFile(const QString &path)
{
    const auto keys = m_cache.keys();
    decodeAside([path, known = QSet<QString>(keys.begin(), keys.end())] {
        return decodeFile(path, known);
    });
}

void ArtworkLoader::startDownload(const QString &address)
{
    if (m_cache.contains(address)) {
        finish({address, QImage()});
        return;
    }
    m_downloading = address;
    const HttpRequest request{QUrl(address), QStringLiteral("cover"), maximumBytes};
    m_download = m_http.get(request, [this, address](const auto &answer) {
        const auto bytes = answer && answer->status == 200 ? answer->body : QByteArray();
        decodeAside([address, bytes] { return Cover{address, decodeCover(bytes)}; });
        m_download.reset(); // last, since this is a part of it
    });
}

void ArtworkLoader::decodeAside(std::function<Cover()> decoding)
{
    // QFuture::then would go on inside this call if the decoding was faster.
    auto *const watcher = new QFutureWatcher<Cover>(this);
    connect(watcher, &QFutureWatcherBase::finished, this, [this, watcher, load = m_load] {
        watcher->deleteLater();
        if (load == m_load)
            finish(watcher->result());
    });
    watcher->setFuture(QtConcurrent::run(m_threads.get(), std::move(decoding)));
}

void ArtworkLoader::finish(const Cover &result)
{
    ++m_load;
    m_isRunning = false;
    m_patience.reset();
    QImage image = result.image;
    if (const QImage *const cached = m_cache.object(result.key); image.isNull() && cached)
        image = *cached;
    else if (!image.isNull() && !result.key.isEmpty())
        m_cache.insert(result.key, new QImage(image),
                       std::max<qsizetype>(leastCost, image.sizeInBytes() / 1024));
    if (m_isWaiting) {
        m_starts.request();
    } else if (m_state == State::Loading) {
        m_state = image.isNull() ? State::Failed : State::Ready;
        m_image = image;
        Q_EMIT settled();
    }
}

} // namespace velmora
