#pragma once

#include "platform/UserNotifications.h"

#include <vector>

namespace velmora
{

/// Keeps what the user would have seen.
struct FakeNotifications final : UserNotifications {
    int requests = 0; ///< for authorization
    std::vector<UserNotification> added;

    void requestAuthorization() override { ++requests; }
    void add(const UserNotification &notification) override { added.push_back(notification); }
};

} // namespace velmora
