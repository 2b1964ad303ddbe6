#pragma once

#include <QByteArrayList>
#include <QString>
#include <QStringList>

namespace velmora
{

/// Which network interfaces are hardware (wired, wireless, mobile), and their names "en0", "en1",
/// …. Loopback, bridges, tunnels and the like have no device behind them.
class PhysicalInterfaces
{
public:
    /// `sysRoot` is where sysfs is mounted.
    explicit PhysicalInterfaces(const QString &sysRoot);

    /// Names for the kernel's, in the same order; empty where one is no hardware. The file system
    /// is asked only if they differ from those of the last call.
    [[nodiscard]] const QStringList &namesFor(const QByteArrayList &kernelNames);

private:
    [[nodiscard]] bool isPhysical(const QByteArray &name) const;
    [[nodiscard]] QString numberedName(const QByteArray &name);

    QString m_classFolder;
    QByteArrayList m_kernelNames;
    QStringList m_names;
    QByteArrayList m_numbered; ///< place = number; never taken back, so names are stable
};

} // namespace velmora
