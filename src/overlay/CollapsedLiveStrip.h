#pragma once

#include "config/NotchServices.h"
#include "overlay/LiveSlide.h"
#include "platform/Clock.h"

#include <QObject>
#include <QQmlParserStatus>
#include <QtQml/qqmlregistration.h>

namespace velmora
{

/// What the collapsed notch shows at a time: which slide, the volume in its place, a short notice
/// over it. Lives as long as the strip's view, and begins afresh with it.
class CollapsedLiveStrip : public QObject, public QQmlParserStatus
{
    Q_OBJECT
    QML_ELEMENT
    Q_INTERFACES(QQmlParserStatus)
    Q_PROPERTY(velmora::NotchServices *services MEMBER m_services REQUIRED FINAL)
    /// What is to be told at first: of dropped files, while no strip was there.
    Q_PROPERTY(QString missedStatus MEMBER m_missedStatus FINAL)
    Q_PROPERTY(int slideCount READ slideCount NOTIFY slideChanged FINAL)
    /// The slide on show, from 0. Another one is another slide, whatever it looks like.
    Q_PROPERTY(int currentIndex READ currentIndex NOTIFY slideChanged FINAL)
    Q_PROPERTY(velmora::LiveSlideLook look READ look NOTIFY slideChanged FINAL)
    Q_PROPERTY(bool showVolume READ showVolume WRITE setShowVolume NOTIFY showVolumeChanged FINAL)
    /// Out of use for a moment, the volume makes room for the slides.
    Q_PROPERTY(bool isVolumeInUse MEMBER m_isVolumeInUse WRITE setVolumeInUse FINAL)
    Q_PROPERTY(bool hasNotice READ hasNotice NOTIFY noticeTextChanged FINAL)
    Q_PROPERTY(QString noticeText READ noticeText NOTIFY noticeTextChanged FINAL)

public:
    using QObject::QObject;

    void classBegin() override {}
    void componentComplete() override;

    [[nodiscard]] int slideCount() const { return m_slideCount; }
    [[nodiscard]] int currentIndex() const;
    [[nodiscard]] LiveSlideLook look() const { return m_look; }
    [[nodiscard]] bool showVolume() const { return m_showVolume; }
    void setShowVolume(bool show);
    void setVolumeInUse(bool inUse);
    [[nodiscard]] bool hasNotice() const { return !m_noticeText.isEmpty(); }
    [[nodiscard]] QString noticeText() const { return m_noticeText; }

    /// Shows a text for three seconds, in the place of an earlier one.
    void showNotice(const QString &text);

Q_SIGNALS:
    void slideChanged();
    void showVolumeChanged();
    void noticeTextChanged();

private:
    void rotate();
    void updateSlides();
    void watchVolume();
    void screensChanged();
    void setNoticeText(const QString &text);

    NotchServices *m_services = nullptr;
    QString m_missedStatus;
    int m_rotationIndex = 0;
    int m_slideCount = 0;
    int m_shownIndex = 0;
    LiveSlideLook m_look;
    bool m_showVolume = false;
    bool m_isVolumeInUse = false;
    QString m_noticeText;
    int m_screenCount = 0;
    TimerHandle m_rotationClock;
    TimerHandle m_noticeTask;
    TimerHandle m_volumeTask;
};

} // namespace velmora
