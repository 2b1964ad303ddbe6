#pragma once

#include <QString>

#include <optional>

namespace velmora
{

/// Starting the program at login.
class LoginItem
{
public:
    LoginItem() = default;
    LoginItem(const LoginItem &) = delete;
    LoginItem &operator=(const LoginItem &) = delete;
    virtual ~LoginItem() = default;

    /// Nothing on success, else what went wrong.
    [[nodiscard]] virtual std::optional<QString> registerItem() = 0;
};

} // namespace velmora
