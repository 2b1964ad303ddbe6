#pragma once

#include "platform/CalendarStore.h"
#include "platform/ReminderStore.h"
#include "platform/linux/dbus/BusConnection.h"

#include <memory>

namespace velmora
{

/// The two roles over the same calendars.
struct CalendarStores {
    std::unique_ptr<CalendarStore> events;
    std::unique_ptr<ReminderStore> reminders;
};

/// The calendars of this desktop: those in folders of iCalendar files, the own one at
/// $XDG_DATA_HOME/velmora/calendars and `folders`, with colons between them, and those of Evolution
/// Data Server where the bus can start it. Nothing is read, and no thread runs, before something is
/// asked for.
[[nodiscard]] CalendarStores makeCalendarStores(BusConnection &bus, const QString &folders);

} // namespace velmora
