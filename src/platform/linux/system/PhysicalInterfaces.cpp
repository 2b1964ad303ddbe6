#include "platform/linux/system/PhysicalInterfaces.h"

#include <algorithm>
#include <net/if.h>
#include <unistd.h>
#include <utility>

namespace velmora
{

PhysicalInterfaces::PhysicalInterfaces(std::string sysRoot)
    : m_classFolder(std::move(sysRoot) + "/class/net/")
{
}

void PhysicalInterfaces::update(const std::vector<std::string_view> &names)
{
    if (std::equal(names.begin(), names.end(), m_kernelNames.begin(), m_kernelNames.end()))
        return;
    m_kernelNames.assign(names.begin(), names.end());
    m_names.clear();
    for (const std::string &name : m_kernelNames)
        m_names.push_back(isPhysical(name) ? numberedName(name) : QString());
}

const QString &PhysicalInterfaces::nameAt(std::size_t position) const
{
    return m_names.at(position);
}

bool PhysicalInterfaces::isPhysical(std::string_view name) const
{
    if (name.empty() || name.size() >= IFNAMSIZ || name.find('/') != std::string_view::npos)
        return false;
    const std::string device = m_classFolder + std::string(name) + "/device";
    return ::access(device.c_str(), F_OK) == 0;
}

QString PhysicalInterfaces::numberedName(const std::string &name)
{
    auto found = std::find(m_numbered.begin(), m_numbered.end(), name);
    if (found == m_numbered.end())
        found = m_numbered.insert(found, name);
    return QStringLiteral("en%1").arg(std::distance(m_numbered.begin(), found));
}

} // namespace velmora
