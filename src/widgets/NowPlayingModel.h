#pragma once

#include "media/MediaRemoteService.h"
#include "platform/Clock.h"

#include <QObject>
#include <QQmlParserStatus>
#include <QString>
#include <QVariant>
#include <QtQml/qqmlregistration.h>

namespace velmora
{

/// "m:ss", with as many minutes as it takes; "0:00" for what is no time.
[[nodiscard]] QString playbackTimeText(double seconds);

/// What the media widget shows, kept up to date as long as it lives: it asks for news each second,
/// and moves the position on whenever that can be seen.
class NowPlayingModel : public QObject, public QQmlParserStatus
{
    Q_OBJECT
    QML_ELEMENT
    Q_INTERFACES(QQmlParserStatus)
    Q_PROPERTY(velmora::MediaRemoteService *service MEMBER m_service REQUIRED FINAL)
    Q_PROPERTY(velmora::Clock *clock MEMBER m_clock REQUIRED FINAL)
    /// Length of the progress bar in pixels of the display: its position is computed to a quarter.
    Q_PROPERTY(qreal barPixels MEMBER m_barPixels FINAL)

    /// Another key is another track; empty: there is none.
    Q_PROPERTY(QString trackKey READ trackKey NOTIFY changed FINAL)
    Q_PROPERTY(bool hasTrack READ hasTrack NOTIFY changed FINAL)
    Q_PROPERTY(QString title READ title NOTIFY changed FINAL)
    Q_PROPERTY(QString artist READ artist NOTIFY changed FINAL)
    /// Another key is another cover, or none; tracks may share one.
    Q_PROPERTY(int coverKey READ coverKey NOTIFY coverChanged FINAL)
    /// A QImage, which the views' linter knows nothing of.
    Q_PROPERTY(QVariant artwork READ artwork NOTIFY coverChanged FINAL)
    Q_PROPERTY(bool hasArtwork READ hasArtwork NOTIFY coverChanged FINAL)
    Q_PROPERTY(bool isPlaying READ isPlaying NOTIFY changed FINAL)
    Q_PROPERTY(bool hasDuration READ hasDuration NOTIFY changed FINAL)
    Q_PROPERTY(QString durationText READ durationText NOTIFY changed FINAL)
    Q_PROPERTY(qreal progress READ progress NOTIFY progressChanged FINAL) ///< 0 to 1
    Q_PROPERTY(QString positionText READ positionText NOTIFY positionTextChanged FINAL)

public:
    using QObject::QObject;

    void classBegin() override {}
    void componentComplete() override;

    [[nodiscard]] QString trackKey() const { return m_shown.title + m_shown.artist; }
    [[nodiscard]] bool hasTrack() const { return !trackKey().isEmpty(); }
    [[nodiscard]] QString title() const;
    [[nodiscard]] QString artist() const { return m_shown.artist.simplified(); }
    [[nodiscard]] int coverKey() const { return m_coverKey; }
    [[nodiscard]] QVariant artwork() const { return m_cover; }
    [[nodiscard]] bool hasArtwork() const { return !m_cover.isNull(); }
    [[nodiscard]] bool isPlaying() const { return m_shown.isPlaying; }
    [[nodiscard]] bool hasDuration() const { return m_shown.duration > 0; }
    [[nodiscard]] QString durationText() const { return playbackTimeText(m_shown.duration); }
    [[nodiscard]] double progress() const { return m_progress; }
    [[nodiscard]] QString positionText() const { return m_positionText; }

Q_SIGNALS:
    void changed();
    void coverChanged();
    void progressChanged();
    void positionTextChanged();

private:
    void takeNews();
    void takeCover();
    void setCover(const QImage &cover);
    void movePosition();

    MediaRemoteService *m_service = nullptr;
    Clock *m_clock = nullptr;
    qreal m_barPixels = 100;
    NowPlayingInfo m_shown;
    QImage m_cover;
    int m_coverKey = 0;
    TimerHandle m_coverWait; ///< for the one of a new track
    double m_progress = 0;
    QString m_positionText;
    TimerHandle m_poll;
    TimerHandle m_nextMove;
};

} // namespace velmora
