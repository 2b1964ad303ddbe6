#pragma once

#include <QString>

namespace velmora
{

/// One message to the user. A later one with the same identifier takes the place of the earlier.
struct UserNotification {
    QString identifier;
    QString title;
    QString body;
    bool hasSound = false; ///< with the desktop's usual sound for messages
};

/// The desktop's notifications. Calls return at once; without a daemon nothing is shown.
class UserNotifications
{
public:
    UserNotifications() = default;
    UserNotifications(const UserNotifications &) = delete;
    UserNotifications &operator=(const UserNotifications &) = delete;
    virtual ~UserNotifications() = default;

    /// Asks the user's leave where the desktop knows such a thing. The answer is not told.
    virtual void requestAuthorization() = 0;

    /// Delivers at once.
    virtual void add(const UserNotification &notification) = 0;
};

} // namespace velmora
