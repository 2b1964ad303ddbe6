#pragma once

#include "platform/Clock.h"

#include <QObject>
#include <QQmlParserStatus>
#include <QString>
#include <QtQml/qqmlregistration.h>

namespace velmora
{

/// The to and fro of a text that is too long for its place: it rests, slides to the left at 36
/// points a second until its end has come in, rests, and begins again. A text that fits, or nearly,
/// stands still.
class MarqueeMotion : public QObject, public QQmlParserStatus
{
    Q_OBJECT
    QML_ELEMENT
    Q_INTERFACES(QQmlParserStatus)
    Q_PROPERTY(velmora::Clock *clock MEMBER m_clock REQUIRED FINAL)
    // It begins anew when one of these changes: the place grows along with the panel. Points.
    Q_PROPERTY(QString text MEMBER m_text NOTIFY changed REQUIRED FINAL)
    Q_PROPERTY(qreal textWidth MEMBER m_textWidth NOTIFY changed REQUIRED FINAL)
    Q_PROPERTY(qreal frameWidth MEMBER m_frameWidth NOTIFY changed REQUIRED FINAL)
    /// How far the text has moved: 0 or less, points.
    Q_PROPERTY(qreal offset READ offset NOTIFY offsetChanged FINAL)
    /// Whether the text begins at the right: all of it is mirrored then, once it is too long.
    Q_PROPERTY(bool isRightToLeft READ isRightToLeft NOTIFY changed FINAL)

public:
    using QObject::QObject;

    void classBegin() override {}
    void componentComplete() override;

    [[nodiscard]] bool isRightToLeft() const { return m_text.isRightToLeft(); }
    [[nodiscard]] qreal offset() const { return m_offset; }

Q_SIGNALS:
    void changed();
    void offsetChanged();

private:
    void restart();
    void measure();
    void slide();
    void slideStep();
    void jumpBack();
    void setOffset(qreal offset);

    Clock *m_clock = nullptr;
    QString m_text;
    qreal m_textWidth = 0;
    qreal m_frameWidth = 0;
    qreal m_offset = 0;
    qreal m_distance = 0;
    std::chrono::nanoseconds m_slideBegan{0};
    TimerHandle m_timer;
};

} // namespace velmora
