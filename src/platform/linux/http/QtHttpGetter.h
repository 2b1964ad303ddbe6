#pragma once

#include "platform/Clock.h"
#include "platform/HttpGetter.h"

#include <QHash>
#include <QList>
#include <QString>

#include <memory>

class QNetworkAccessManager;

namespace velmora
{

/// The network machinery is made for the first request: many a session never has one.
class QtHttpGetter final : public HttpGetter
{
public:
    /// The clock has to outlive the object.
    explicit QtHttpGetter(Clock &clock);
    ~QtHttpGetter() override;

    [[nodiscard]] HttpHandle get(const HttpRequest &request, Handler handler) override;

private:
    class Fetch;

    void leave(Fetch &fetch);

    Clock &m_clock;
    std::unique_ptr<QNetworkAccessManager> m_network;
    /// By kind. The first one is running, the last one is next.
    QHash<QString, QList<Fetch *>> m_fetches;
};

} // namespace velmora
