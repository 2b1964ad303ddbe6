#pragma once

#include "platform/Clock.h"

#include <QLocale>
#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

namespace velmora
{

/// Time and date as the clock widget shows them, kept up to date as long as it lives: a tick at
/// each full second, so that the minute turns when it turns.
class ClockModel : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(velmora::Clock *clock READ clock WRITE setClock NOTIFY clockChanged REQUIRED FINAL)
    Q_PROPERTY(QString time READ time NOTIFY timeChanged FINAL) ///< "HH:mm", whatever the locale
    Q_PROPERTY(QString date READ date NOTIFY dateChanged FINAL) ///< "EEE, MMM d" in the locale

public:
    using QObject::QObject;

    [[nodiscard]] Clock *clock() const { return m_clock; }
    void setClock(Clock *clock);
    [[nodiscard]] QString time() const { return m_time; }
    [[nodiscard]] QString date() const { return m_date; }

Q_SIGNALS:
    void clockChanged();
    void timeChanged();
    void dateChanged();

private:
    void tick();

    Clock *m_clock = nullptr;
    TimerHandle m_timer;
    QString m_time;
    QString m_date;
};

} // namespace velmora
