#pragma once

#include "platform/FileActions.h"
#include "platform/linux/files/FileContent.h"

namespace velmora
{

/// The work on single items, in the calling thread. All throw FileFailure; paths are absolute.

void makeFolders(const QByteArray &path);

/// Takes away what copies into this folder have left there whose process was killed.
void tidyFolder(const QByteArray &path);

/// Into an existing folder, under the first name of the rule that is free. A copy is made under
/// another name and takes its own when it is complete.
void copyItem(const QByteArray &item, const QByteArray &folder, NameRule rule,
              FileContent &content);

/// The same. The source goes only when all of it has arrived.
void moveItem(const QByteArray &item, const QByteArray &folder, NameRule rule,
              FileContent &content);

/// To the user's trash.
void trashItem(const QByteArray &item);

/// Where nothing is at this moment.
[[nodiscard]] QByteArray freePath(const QByteArray &wanted, NameRule rule);

} // namespace velmora
