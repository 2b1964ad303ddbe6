#pragma once

#include <QByteArray>

#include <ctime>

namespace velmora
{

/// What is not complete yet lies under a hidden name that tells who is at work on it, so that the
/// remains of a process that was killed can be told from what another one is writing.

/// A process, among all that may see a folder.
struct PartOwner {
    QByteArray machine; ///< which others cannot be mistaken for; empty if that is not known
    QByteArray boot;    ///< of that machine, and the name space of its process numbers
    qint64 pid = 0;
    quint64 start = 0;      ///< in ticks of the kernel since the boot
    time_t bootSeconds = 0; ///< when this boot began

    [[nodiscard]] static PartOwner self();
};

/// A name that nobody has.
[[nodiscard]] QByteArray temporaryName(const PartOwner &owner = PartOwner::self());

/// Removes from an open folder what this user's processes have left there that are no more. Nothing
/// else is touched: neither names of another form, nor what was made on another machine.
void removeLeftovers(int folder, const PartOwner &self = PartOwner::self());

} // namespace velmora
