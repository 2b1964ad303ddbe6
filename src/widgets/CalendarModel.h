#pragma once

#include "platform/Clock.h"
#include "services/CalendarService.h"

#include <QColor>
#include <QObject>
#include <QQmlParserStatus>
#include <QString>
#include <QtQml/qqmlregistration.h>

namespace velmora
{

/// A colour of the same hue that can be read on black.
[[nodiscard]] QColor onBlack(const QColor &color);

/// The event card of the calendar widget: the event under way, or else the next one. As long as it
/// lives it has the events read anew at each full minute, when its texts change.
class CalendarModel : public QObject, public QQmlParserStatus
{
    Q_OBJECT
    QML_ELEMENT
    Q_INTERFACES(QQmlParserStatus)
    Q_PROPERTY(velmora::CalendarService *service MEMBER m_service REQUIRED FINAL)
    Q_PROPERTY(velmora::Clock *clock MEMBER m_clock REQUIRED FINAL)
    Q_PROPERTY(Content content READ content NOTIFY changed FINAL)
    Q_PROPERTY(bool isLive READ isLive NOTIFY changed FINAL)
    Q_PROPERTY(QColor color READ color NOTIFY changed FINAL)
    Q_PROPERTY(QString status READ status NOTIFY changed FINAL) ///< beside the dot
    Q_PROPERTY(QString more READ more NOTIFY changed FINAL)     ///< how many others there are
    Q_PROPERTY(QString title READ title NOTIFY changed FINAL)
    Q_PROPERTY(QString detail READ detail NOTIFY changed FINAL)

public:
    enum class Content { Unauthorized, Event, Nothing };
    Q_ENUM(Content)

    using QObject::QObject;

    void classBegin() override {}
    void componentComplete() override;

    [[nodiscard]] Content content() const { return m_content; }
    [[nodiscard]] bool isLive() const { return m_isLive; }
    [[nodiscard]] QColor color() const { return m_color; }
    [[nodiscard]] QString status() const { return m_status; }
    [[nodiscard]] QString more() const { return m_more; }
    [[nodiscard]] QString title() const { return m_title; }
    [[nodiscard]] QString detail() const { return m_detail; }

Q_SIGNALS:
    void changed();

private:
    void update();
    void show(const CalendarEventInfo &event);
    void tick();
    void scheduleTick();

    CalendarService *m_service = nullptr;
    Clock *m_clock = nullptr;
    Content m_content = Content::Unauthorized;
    bool m_isLive = false;
    QColor m_color;
    QString m_status;
    QString m_more;
    QString m_title;
    QString m_detail;
    TimerHandle m_timer;
};

} // namespace velmora
