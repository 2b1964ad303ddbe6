#pragma once

#include "drop/DropActionsService.h"
#include "media/MediaRemoteService.h"
#include "platform/Platform.h"
#include "services/CalendarService.h"
#include "services/PomodoroService.h"
#include "services/ScreenCount.h"
#include "services/SystemMonitorService.h"
#include "services/TodoService.h"

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
    Q_PROPERTY(velmora::MediaRemoteService *mediaService READ mediaService CONSTANT FINAL)
    Q_PROPERTY(velmora::CalendarService *calendarService READ calendarService CONSTANT FINAL)
    Q_PROPERTY(velmora::TodoService *todoService READ todoService CONSTANT FINAL)
    Q_PROPERTY(velmora::PomodoroService *pomodoroService READ pomodoroService CONSTANT FINAL)
    Q_PROPERTY(velmora::DropActionsService *dropService READ dropService CONSTANT FINAL)

public:
    explicit NotchServices(const Platform &platform)
        : m_clock(*platform.clock)
        , m_screenCount(*platform.clock, *platform.screens)
        , m_mediaService(*platform.clock, *platform.media, *platform.http, *platform.store)
        , m_systemMonitor(*platform.clock, *platform.statistics, *platform.sound)
        , m_calendarService(*platform.clock, *platform.calendar)
        , m_todoService(*platform.clock, *platform.store, *platform.reminders)
        , m_pomodoroService(*platform.clock, *platform.store, *platform.notifications)
        , m_dropService(*platform.store,
                        {*platform.files, *platform.images, *platform.processes,
                         *platform.applications, *platform.volumes, *platform.sharing})
    {
    }

    [[nodiscard]] Clock *clock() { return &m_clock; }
    [[nodiscard]] ScreenCount *screenCount() { return &m_screenCount; }
    [[nodiscard]] SystemMonitorService *systemMonitor() { return &m_systemMonitor; }
    [[nodiscard]] MediaRemoteService *mediaService() { return &m_mediaService; }
    [[nodiscard]] CalendarService *calendarService() { return &m_calendarService; }
    [[nodiscard]] TodoService *todoService() { return &m_todoService; }
    [[nodiscard]] PomodoroService *pomodoroService() { return &m_pomodoroService; }
    [[nodiscard]] DropActionsService *dropService() { return &m_dropService; }

private:
    Clock &m_clock;
    ScreenCount m_screenCount;
    MediaRemoteService m_mediaService;
    SystemMonitorService m_systemMonitor;
    CalendarService m_calendarService;
    TodoService m_todoService;
    PomodoroService m_pomodoroService;
    DropActionsService m_dropService;
};

} // namespace velmora
