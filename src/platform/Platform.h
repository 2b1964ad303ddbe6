#pragma once

#include "platform/Applications.h"
#include "platform/CalendarStore.h"
#include "platform/ChildProcesses.h"
#include "platform/Clock.h"
#include "platform/FileActions.h"
#include "platform/FileDrags.h"
#include "platform/HttpGetter.h"
#include "platform/ImageConverter.h"
#include "platform/KeyValueStore.h"
#include "platform/LoginItem.h"
#include "platform/MediaRemote.h"
#include "platform/OverlayShell.h"
#include "platform/Pointer.h"
#include "platform/ReminderStore.h"
#include "platform/Screens.h"
#include "platform/Sharing.h"
#include "platform/SoundOutput.h"
#include "platform/StatusItem.h"
#include "platform/SystemStatistics.h"
#include "platform/UserNotifications.h"
#include "platform/Volumes.h"

#include <memory>

namespace velmora
{

/// All that the program asks of the machine it runs on. Made once, before everything else, and
/// gone after everything else; each part of the program is handed the few roles that it needs.
struct Platform {
    std::unique_ptr<Clock> clock;
    std::unique_ptr<KeyValueStore> store;
    std::unique_ptr<Screens> screens;
    std::unique_ptr<Pointer> pointer;
    std::unique_ptr<FileDrags> drags;
    std::unique_ptr<OverlayShell> shell;
    std::unique_ptr<SystemStatistics> statistics;
    std::unique_ptr<SoundOutput> sound;
    std::unique_ptr<HttpGetter> http;
    std::unique_ptr<MediaRemote> media;
    std::unique_ptr<CalendarStore> calendar;
    std::unique_ptr<ReminderStore> reminders;
    std::unique_ptr<UserNotifications> notifications;
    std::unique_ptr<FileActions> files;
    std::unique_ptr<ImageConverter> images;
    std::unique_ptr<ChildProcesses> processes;
    std::unique_ptr<Applications> applications;
    std::unique_ptr<Volumes> volumes;
    std::unique_ptr<Sharing> sharing;
    std::unique_ptr<LoginItem> loginItem;
    std::unique_ptr<StatusItem> statusItem;
};

} // namespace velmora
