#pragma once

#include <QString>

#include <string>
#include <string_view>
#include <vector>

namespace velmora
{

/// Which network interfaces are hardware (wired, wireless, mobile), and their names "en0", "en1",
/// …. Loopback, bridges, tunnels and the like have no device behind them.
class PhysicalInterfaces
{
public:
    /// `sysRoot` is where sysfs is mounted.
    explicit PhysicalInterfaces(std::string sysRoot);

    /// Takes the kernel's names in the kernel's order. The file system is asked only if they differ
    /// from those of the last call.
    void update(const std::vector<std::string_view> &names);

    /// The name for the interface at this place of the last `update`; empty if it is no hardware.
    [[nodiscard]] const QString &nameAt(std::size_t position) const;

private:
    [[nodiscard]] bool isPhysical(std::string_view name) const;
    [[nodiscard]] QString numberedName(const std::string &name);

    std::string m_classFolder;
    std::vector<std::string> m_kernelNames;
    std::vector<QString> m_names;
    std::vector<std::string> m_numbered; ///< place = number; never taken back, so names are stable
};

} // namespace velmora
