#pragma once

#include "platform/Clock.h"
#include "platform/HttpGetter.h"
#include "platform/linux/Throttle.h"

#include <QCache>
#include <QImage>
#include <QObject>
#include <QString>
#include <QThreadPool>

#include <functional>
#include <memory>

namespace velmora
{

/// What a load has brought.
struct Cover {
    QString key;  ///< names the content, for the cache: changes when a file is written anew
    QImage image; ///< null if it could not be had, or is in the cache
};

/// The cover of the one track that is shown. However fast the wishes change, one load runs at a
/// time, and the next is for the newest wish. Files are read and pictures decoded beside the main
/// loop; everything else, the answers too, happens on it.
class ArtworkLoader : public QObject
{
    Q_OBJECT

public:
    enum class State { None, Loading, Ready, Failed };

    /// Clock and getter have to outlive the object.
    ArtworkLoader(Clock &clock, HttpGetter &http);
    ArtworkLoader(const ArtworkLoader &) = delete;
    ArtworkLoader &operator=(const ArtworkLoader &) = delete;
    ~ArtworkLoader() override;

    /// A new track with this cover: a path, or an address with file:, http:, https: or data:; empty
    /// if it has none. The file behind the same address may be another one meanwhile.
    void want(const QString &address);

    [[nodiscard]] State state() const { return m_state; }
    [[nodiscard]] const QImage &image() const { return m_image; } ///< null unless ready

Q_SIGNALS:
    /// What was wanted last is ready now, or has failed.
    void settled();

private:
    void startNext();
    void startFile(const QString &path);
    void startDownload(const QString &address);
    void decodeAside(std::function<Cover()> decoding);
    void finish(const Cover &result);

    Clock &m_clock;
    HttpGetter &m_http;
    QString m_wanted;
    State m_state = State::None;
    QImage m_image;

    bool m_isRunning = false;
    bool m_isWaiting = false; ///< the wish came after the start of the load that runs
    quint64 m_load = 0;       ///< results of a load that was given up are of no interest
    TimerHandle m_patience;
    QCache<QString, QImage> m_cache; ///< by what names the content; costs are kilobytes
    HttpHandle m_download;           ///< null while none is under way
    QString m_downloading;
    std::unique_ptr<QThreadPool> m_threads;
    Throttle m_starts;
};

} // namespace velmora
