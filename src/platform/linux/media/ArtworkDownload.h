#pragma once

#include <QByteArray>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QObject>
#include <QUrl>

#include <functional>
#include <memory>

namespace velmora
{

/// Fetches one cover at a time over HTTP. The network machinery is made when it is first needed:
/// many players never point anywhere but to files.
class ArtworkDownload : public QObject
{
    Q_OBJECT

public:
    using Handler = std::function<void(const QByteArray &bytes)>;

    ArtworkDownload() = default;
    ArtworkDownload(const ArtworkDownload &) = delete;
    ArtworkDownload &operator=(const ArtworkDownload &) = delete;
    ~ArtworkDownload() override;

    /// Cancels a download that is under way. The handler gets nothing if this one fails.
    void start(const QUrl &url, Handler handler);
    void cancel();
    [[nodiscard]] bool isRunning() const { return m_reply; }

private:
    void checkSize();

    std::unique_ptr<QNetworkAccessManager> m_network;
    QNetworkReply *m_reply = nullptr; ///< owned; deleted by the main loop
};

} // namespace velmora
