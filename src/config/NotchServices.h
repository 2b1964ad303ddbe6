#pragma once

#include "platform/Clock.h"
#include "services/PomodoroService.h"
#include "services/SystemMonitorService.h"

#include <QObject>
#include <QtQml/qqml.h>

namespace velmora
{

/// Time, for views that show it.
struct ClockForView {
    Q_GADGET
    QML_FOREIGN(velmora::Clock)
    QML_NAMED_ELEMENT(Clock)
    QML_UNCREATABLE("Handed down to the views")
};

/// The services that all overlays share, as they are handed down the tree of views. They are made
/// in the order of the members, and they outlive every overlay.
class NotchServices : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Handed down to the views")
    Q_PROPERTY(velmora::Clock *clock READ clock CONSTANT FINAL)
    Q_PROPERTY(velmora::SystemMonitorService *systemMonitor READ systemMonitor CONSTANT FINAL)
    Q_PROPERTY(velmora::PomodoroService *pomodoroService READ pomodoroService CONSTANT FINAL)

public:
    NotchServices(Clock &clock, SystemStatistics &statistics, SoundOutput &sound,
                  KeyValueStore &store, UserNotifications &notifications)
        : m_clock(clock)
        , m_systemMonitor(clock, statistics, sound)
        , m_pomodoroService(clock, store, notifications)
    {
    }

    [[nodiscard]] Clock *clock() { return &m_clock; }
    [[nodiscard]] SystemMonitorService *systemMonitor() { return &m_systemMonitor; }
    [[nodiscard]] PomodoroService *pomodoroService() { return &m_pomodoroService; }

private:
    Clock &m_clock;
    SystemMonitorService m_systemMonitor;
    PomodoroService m_pomodoroService;
};

} // namespace velmora
