#pragma once

#include "platform/Clock.h"

#include <QObject>
#include <QQmlParserStatus>
#include <QString>
#include <QtQml/qqmlregistration.h>

namespace velmora
{

/// Time and date as the clock widget shows them, kept up to date as long as it lives: a tick at
/// each full second, so that the minute turns when it turns.
class ClockModel : public QObject, public QQmlParserStatus
{
    Q_OBJECT
    QML_ELEMENT
    Q_INTERFACES(QQmlParserStatus)
    Q_PROPERTY(velmora::Clock *clock MEMBER m_clock REQUIRED FINAL)
    Q_PROPERTY(QString time READ time NOTIFY changed FINAL) ///< "HH:mm", whatever the locale
    Q_PROPERTY(QString date READ date NOTIFY changed FINAL) ///< "EEE, MMM d" in the locale

public:
    using QObject::QObject;

    void classBegin() override {}
    void componentComplete() override { tick(); }

    [[nodiscard]] QString time() const { return m_time; }
    [[nodiscard]] QString date() const { return m_date; }

Q_SIGNALS:
    void changed();

private:
    void tick();

    Clock *m_clock = nullptr;
    TimerHandle m_timer;
    QString m_time;
    QString m_date;
};

} // namespace velmora
