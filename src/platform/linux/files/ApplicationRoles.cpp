#include "platform/linux/files/ApplicationRoles.h"

#include <algorithm>
#include <array>

namespace velmora
{

namespace
{

struct Role {
    const char *identifier;
    const char *contentType;
};

// On this desktop nobody is "the" music player: whom the user has play music is.
constexpr std::array<Role, 1> roles{{
    {"com.apple.Music", "audio/mpeg"},
}};

} // namespace

QByteArray contentTypeForRole(const QString &identifier)
{
    const auto *const found = std::find_if(roles.begin(), roles.end(), [&](const Role &role) {
        return identifier == QLatin1String(role.identifier);
    });
    return found == roles.end() ? QByteArray() : QByteArray(found->contentType);
}

} // namespace velmora
