#pragma once

#include <sys/stat.h>

namespace velmora
{

/// What a copy takes over besides content: owner where that is allowed, extended attributes (access
/// lists among them), permissions and times. What the target's file system does not know, or does
/// not let us set, is left out.

/// For an open file or folder. Has to come after the content, which changes the time.
void copyAttributes(int from, int to, const struct stat &info);

/// For an entry that is not opened: a link, a pipe, a device.
void copyEntryAttributes(int folder, const char *name, const struct stat &info);

} // namespace velmora
