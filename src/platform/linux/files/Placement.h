#pragma once

#include "platform/FileActions.h"

namespace velmora
{

/// Giving an item its final name, without ever replacing anything, also if two programs do it at
/// the same moment.

/// What `place` works on: the item at one name below one folder goes below another folder.
struct Placing {
    int fromFolder;
    QByteArray fromName;
    int toFolder;
    QByteArray wantedName;
};

/// Renames to the first name of the rule that is free. Returns 0 or an errno value, and then has
/// done nothing.
[[nodiscard]] int place(const Placing &placing, NameRule rule);

} // namespace velmora
