#pragma once

#include "platform/Platform.h"
#include "support/FakeCalendar.h"
#include "support/FakeDropRoles.h"
#include "support/FakeHttpGetter.h"
#include "support/FakeMediaRemote.h"
#include "support/FakeNotifications.h"
#include "support/FakeScreens.h"
#include "support/FakeSystem.h"
#include "support/MemoryStore.h"
#include "support/VirtualClock.h"

namespace velmora
{

/// A machine of doubles, as far as logic without windows asks for one.
struct FakePlatform {
    FakeDropRoles drops; ///< has to outlive the roles, which it answers for
    Platform roles;
    VirtualClock &clock = put(roles.clock, std::make_unique<VirtualClock>());
    MemoryStore &store = put(roles.store, std::make_unique<MemoryStore>());
    FakeScreens &screens = put(roles.screens, std::make_unique<FakeScreens>());
    FakeStatistics &statistics = put(roles.statistics, std::make_unique<FakeStatistics>());
    FakeSound &sound = put(roles.sound, std::make_unique<FakeSound>());
    FakeHttpGetter &http = put(roles.http, std::make_unique<FakeHttpGetter>());
    FakeMediaRemote &media = put(roles.media, std::make_unique<FakeMediaRemote>());
    FakeCalendarStore &calendar = put(roles.calendar, std::make_unique<FakeCalendarStore>());
    FakeReminderStore &reminders = put(roles.reminders, std::make_unique<FakeReminderStore>());
    FakeNotifications &notifications =
        put(roles.notifications, std::make_unique<FakeNotifications>());

    FakePlatform() { drops.install(roles); }

private:
    template<typename Role, typename Double>
    static Double &put(std::unique_ptr<Role> &role, std::unique_ptr<Double> fake)
    {
        Double &reference = *fake;
        role = std::move(fake);
        return reference;
    }
};

} // namespace velmora
