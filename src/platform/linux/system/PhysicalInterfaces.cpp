#include "platform/linux/system/PhysicalInterfaces.h"

#include <QFile>

namespace velmora
{

PhysicalInterfaces::PhysicalInterfaces(const QString &sysRoot)
    : m_classFolder(sysRoot + QLatin1String("/class/net/"))
{
}

const QStringList &PhysicalInterfaces::namesFor(const QByteArrayList &kernelNames)
{
    if (kernelNames != m_kernelNames) {
        m_kernelNames = kernelNames;
        m_names.clear();
        for (const QByteArray &name : kernelNames)
            m_names.append(isPhysical(name) ? numberedName(name) : QString());
    }
    return m_names;
}

bool PhysicalInterfaces::isPhysical(const QByteArray &name) const
{
    return !name.isEmpty() && !name.contains('/') &&
           QFile::exists(m_classFolder + QFile::decodeName(name) + QLatin1String("/device"));
}

QString PhysicalInterfaces::numberedName(const QByteArray &name)
{
    if (!m_numbered.contains(name))
        m_numbered.append(name);
    return QStringLiteral("en%1").arg(m_numbered.indexOf(name));
}

} // namespace velmora
