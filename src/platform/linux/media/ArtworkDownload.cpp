#include "platform/linux/media/ArtworkDownload.h"

#include "platform/linux/media/ArtworkDecoder.h"

#include <QNetworkRequest>

#include <chrono>
#include <utility>

namespace velmora
{

namespace
{

constexpr std::chrono::milliseconds silenceTimeout = std::chrono::seconds(10);
constexpr int maximumRedirects = 5;

QNetworkRequest requestFor(const QUrl &url)
{
    QNetworkRequest request(url);
    request.setTransferTimeout(static_cast<int>(silenceTimeout.count()));
    request.setMaximumRedirectsAllowed(maximumRedirects);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                         QNetworkRequest::NoLessSafeRedirectPolicy);
    for (const auto attribute :
         {QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::CookieSaveControlAttribute,
          QNetworkRequest::AuthenticationReuseAttribute})
        request.setAttribute(attribute, QNetworkRequest::Manual);
    // Pictures are compressed already, and a few bytes shall not unpack into many.
    request.setRawHeader("Accept-Encoding", "identity");
    return request;
}

} // namespace

ArtworkDownload::~ArtworkDownload()
{
    cancel();
}

void ArtworkDownload::start(const QUrl &url, Handler handler)
{
    cancel();
    if (!m_network)
        m_network = std::make_unique<QNetworkAccessManager>();
    QNetworkReply *const reply = m_network->get(requestFor(url));
    m_reply = reply;
    connect(reply, &QNetworkReply::metaDataChanged, this, &ArtworkDownload::checkSize);
    connect(reply, &QNetworkReply::readyRead, this, &ArtworkDownload::checkSize);
    connect(reply, &QNetworkReply::finished, this, [this, reply, handler = std::move(handler)] {
        reply->deleteLater();
        m_reply = nullptr;
        const bool isUsable = reply->error() == QNetworkReply::NoError &&
                              reply->bytesAvailable() <= artwork::maximumBytes;
        handler(isUsable ? reply->readAll() : QByteArray());
    });
}

void ArtworkDownload::cancel()
{
    if (QNetworkReply *const reply = std::exchange(m_reply, nullptr)) {
        reply->disconnect(this);
        reply->abort();
        reply->deleteLater();
    }
}

void ArtworkDownload::checkSize()
{
    if (!m_reply)
        return;
    const auto announced = m_reply->header(QNetworkRequest::ContentLengthHeader).toLongLong();
    if (announced > artwork::maximumBytes || m_reply->bytesAvailable() > artwork::maximumBytes)
        // Finishes it, with an error; but not here, since Qt goes on to report from inside the
        // reply.
        QMetaObject::invokeMethod(m_reply, &QNetworkReply::abort, Qt::QueuedConnection);
}

} // namespace velmora
