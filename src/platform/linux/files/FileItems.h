#pragma once

#include "platform/FileActions.h"
#include "platform/linux/files/FileFailure.h"

#include <gio/gio.h>

namespace velmora
{

/// The work on single items, in the calling thread. All throw FileFailure or a
/// filesystem_error; paths are absolute.

void makeFolders(const QByteArray &path);

/// Into an existing folder, under the first name of the rule that is free. A copy is made under
/// another name and takes its own when it is complete.
void copyItem(const QByteArray &item, const QByteArray &folder, NameRule rule,
              GCancellable *cancellable);

/// The same. The source goes only when all of it has arrived.
void moveItem(const QByteArray &item, const QByteArray &folder, NameRule rule,
              GCancellable *cancellable);

/// Renames to the first name of the rule for `wanted` that is free, and returns it. Nothing is ever
/// replaced, also if two programs do this at the same moment.
QByteArray placeItem(const QByteArray &item, const QByteArray &wanted, NameRule rule);

/// To the user's trash.
void trashItem(const QByteArray &item);

/// Adds an item where it belongs.
void addArchiveItem(const QByteArray &item, ArchiveItems &items);

} // namespace velmora
