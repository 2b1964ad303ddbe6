#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace velmora
{

struct HttpRequest {
    QUrl url;                 ///< https; http on loopback only
    QString kind;             ///< requests of one kind wait for each other, the newest least
    qint64 limit = 1'000'000; ///< bytes of the body; a larger one is a failure
    std::chrono::seconds patience{30}; ///< for the whole request, once it is under way
};

struct HttpAnswer {
    int status = 0;
    QByteArray body;
};

/// A request that waits or is under way. Destroying it cancels it; its handler is not called then.
class HttpFetch
{
public:
    HttpFetch() = default;
    HttpFetch(const HttpFetch &) = delete;
    HttpFetch &operator=(const HttpFetch &) = delete;
    virtual ~HttpFetch() = default;
};

using HttpHandle = std::unique_ptr<HttpFetch>;

/// Gets small things from the network, without cookies or anything else that is remembered. Main
/// thread only. Has to outlive its requests.
class HttpGetter
{
public:
    /// Nothing: there was no complete answer, or one that is not allowed. Called once, on the main
    /// loop, never inside `get`; may destroy its own request.
    using Handler = std::function<void(const std::optional<HttpAnswer> &answer)>;

    HttpGetter() = default;
    HttpGetter(const HttpGetter &) = delete;
    HttpGetter &operator=(const HttpGetter &) = delete;
    virtual ~HttpGetter() = default;

    /// An error page is an answer too. Redirections are followed, within https.
    [[nodiscard]] virtual HttpHandle get(const HttpRequest &request, Handler handler) = 0;
};

} // namespace velmora
