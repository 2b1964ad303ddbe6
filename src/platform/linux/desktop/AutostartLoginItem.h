#pragma once

#include "platform/LoginItem.h"

#include <QString>

#include <optional>

namespace velmora
{

/// Starting the program at login by an entry in the user's autostart folder.
class AutostartLoginItem : public LoginItem
{
public:
    /// `program`: the absolute path that is started.
    explicit AutostartLoginItem(QString program);

    [[nodiscard]] std::optional<QString> registerItem() override;

private:
    QString m_program;
};

} // namespace velmora
