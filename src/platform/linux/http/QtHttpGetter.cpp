#include "platform/linux/http/QtHttpGetter.h"

#include <QHostAddress>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>

#include <utility>

namespace velmora
{

namespace
{

constexpr int maximumRedirections = 5;

bool isSecure(const QUrl &url)
{
    return url.isValid() && !url.host().isEmpty() && url.scheme() == u"https";
}

bool isOnLoopback(const QUrl &url)
{
    return url.isValid() && url.scheme() == u"http" && QHostAddress(url.host()).isLoopback();
}

QNetworkRequest networkRequest(const QUrl &url)
{
    QNetworkRequest request(url);
    // Qt's own policies end in answers of their own making where they end.
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                         QNetworkRequest::ManualRedirectPolicy);
    for (const auto attribute :
         {QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::CookieSaveControlAttribute,
          QNetworkRequest::AuthenticationReuseAttribute})
        request.setAttribute(attribute, QNetworkRequest::Manual);
    // A few bytes shall not unpack into many.
    request.setRawHeader("Accept-Encoding", "identity");
    return request;
}

} // namespace

class QtHttpGetter::Fetch final : public QObject, public HttpFetch
{
public:
    Fetch(QtHttpGetter &getter, HttpRequest request, Handler handler)
        : m_getter(getter)
        , m_request(std::move(request))
        , m_handler(std::move(handler))
    {
    }
    Fetch(const Fetch &) = delete;
    Fetch &operator=(const Fetch &) = delete;
    ~Fetch() override
    {
        dropReply();
        m_getter.leave(*this);
    }

    [[nodiscard]] const QString &kind() const { return m_request.kind; }

    void start()
    {
        if (!isSecure(m_request.url) && !isOnLoopback(m_request.url)) {
            fail();
            return;
        }
        m_patience = m_getter.m_clock.after(m_request.patience, [this] { finish({}); });
        open(m_request.url);
    }

private:
    void open(const QUrl &url)
    {
        m_reply = m_getter.m_network->get(networkRequest(url));
        m_reply->setReadBufferSize(m_request.limit + 1);
        connect(m_reply, &QNetworkReply::metaDataChanged, this, &Fetch::checkSize);
        connect(m_reply, &QNetworkReply::readyRead, this, &Fetch::checkSize);
        connect(m_reply, &QNetworkReply::finished, this, &Fetch::takeReply);
    }

    void redirect(const QUrl &target)
    {
        dropReply();
        // Nothing on the net may point to a service of this machine.
        const bool isAllowed =
            isSecure(target) || (isOnLoopback(m_request.url) && isOnLoopback(target));
        if (isAllowed && m_redirections++ < maximumRedirections)
            open(target);
        else
            finish({});
    }

    [[nodiscard]] bool isTooLarge() const
    {
        const auto announced = m_reply->header(QNetworkRequest::ContentLengthHeader).toLongLong();
        return announced > m_request.limit || m_reply->bytesAvailable() > m_request.limit;
    }

    void checkSize()
    {
        if (isTooLarge())
            fail();
    }

    /// Not at once: the reply goes on to report after its signal.
    void fail()
    {
        QMetaObject::invokeMethod(
            this, [this] { finish({}); }, Qt::QueuedConnection);
    }

    void takeReply()
    {
        const auto target = m_reply->attribute(QNetworkRequest::RedirectionTargetAttribute);
        if (target.isValid()) {
            redirect(m_reply->url().resolved(target.toUrl()));
            return;
        }
        const int status = m_reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
        // What is no error of the connection is one that the server tells, with a page about it.
        const auto error = m_reply->error();
        const bool isAnswered = status != 0 && (error == QNetworkReply::NoError ||
                                                error >= QNetworkReply::ContentAccessDenied);
        if (isAnswered && !isTooLarge())
            finish(HttpAnswer{status, m_reply->readAll()});
        else
            finish({});
    }

    void finish(const std::optional<HttpAnswer> &answer)
    {
        const Handler handler = std::exchange(m_handler, nullptr);
        if (!handler)
            return;
        m_patience.reset();
        dropReply();
        m_getter.leave(*this);
        handler(answer); // last, since it may destroy this
    }

    void dropReply()
    {
        if (QNetworkReply *const reply = std::exchange(m_reply, nullptr)) {
            reply->disconnect(this);
            reply->abort();
            reply->deleteLater();
        }
    }

    QtHttpGetter &m_getter;
    HttpRequest m_request;
    Handler m_handler;
    TimerHandle m_patience;
    int m_redirections = 0;
    QNetworkReply *m_reply = nullptr;
};

QtHttpGetter::QtHttpGetter(Clock &clock)
    : m_clock(clock)
{
}

QtHttpGetter::~QtHttpGetter() = default;

HttpHandle QtHttpGetter::get(const HttpRequest &request, Handler handler)
{
    if (!m_network)
        m_network = std::make_unique<QNetworkAccessManager>();
    auto fetch = std::make_unique<Fetch>(*this, request, std::move(handler));
    auto &fetches = m_fetches[request.kind];
    fetches.append(fetch.get());
    if (fetches.size() == 1)
        fetch->start();
    return fetch;
}

void QtHttpGetter::leave(Fetch &fetch)
{
    auto &fetches = m_fetches[fetch.kind()];
    const bool wasRunning = fetches.value(0) == &fetch;
    fetches.removeOne(&fetch);
    if (wasRunning && !fetches.isEmpty()) {
        fetches.move(fetches.size() - 1, 0);
        fetches.front()->start();
    }
}

} // namespace velmora
