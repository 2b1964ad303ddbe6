#pragma once

#include "platform/HttpGetter.h"

#include <QObject>

#include <utility>
#include <vector>

namespace velmora
{

/// A network of one test's making. Without pages no answer ever comes.
class FakeHttpGetter final : public HttpGetter
{
public:
    /// What an address answers; nothing is a failure.
    std::function<std::optional<QByteArray>(const QString &url)> pages;
    std::vector<HttpRequest> requests; ///< all that were made
    int waiting = 0;                   ///< those that have no answer yet

    [[nodiscard]] HttpHandle get(const HttpRequest &request, Handler handler) override
    {
        requests.push_back(request);
        auto fetch = std::make_unique<Fetch>(waiting);
        if (pages)
            QMetaObject::invokeMethod(
                fetch.get(),
                [page = pages(QString::fromLatin1(request.url.toEncoded())),
                 handler = std::move(handler)] {
                    handler(page ? std::optional(HttpAnswer{200, *page}) : std::nullopt);
                },
                Qt::QueuedConnection);
        return fetch;
    }

    /// Requests so far whose address contains this.
    [[nodiscard]] int count(const QString &part) const
    {
        int count = 0;
        for (const auto &request : requests)
            count += request.url.toString().contains(part) ? 1 : 0;
        return count;
    }

private:
    class Fetch final : public QObject, public HttpFetch
    {
    public:
        explicit Fetch(int &waiting)
            : m_waiting(waiting)
        {
            ++m_waiting;
        }
        ~Fetch() override { --m_waiting; }

    private:
        int &m_waiting;
    };
};

} // namespace velmora
