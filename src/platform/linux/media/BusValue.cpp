#include "platform/linux/media/BusValue.h"

#include <QDBusArgument>
#include <QDBusObjectPath>
#include <QDBusVariant>

#include <cmath>

namespace velmora
{

namespace
{

constexpr int maximumEntries = 256; // real players send about twenty

/// Some players wrap a value twice.
QVariant unwrapped(QVariant value)
{
    for (int layer = 0; layer < 4 && value.metaType() == QMetaType::fromType<QDBusVariant>();
         ++layer)
        value = value.value<QDBusVariant>().variant();
    return value;
}

} // namespace

std::optional<QVariantMap> toDictionary(const QVariant &value)
{
    const QVariant inner = unwrapped(value);
    if (inner.typeId() == QMetaType::QVariantMap)
        return inner.toMap();
    if (inner.metaType() != QMetaType::fromType<QDBusArgument>())
        return std::nullopt;
    const auto argument = inner.value<QDBusArgument>();
    if (argument.currentSignature() != QLatin1String("a{sv}"))
        return std::nullopt;
    QVariantMap entries;
    argument.beginMap();
    for (int i = 0; i < maximumEntries && !argument.atEnd(); ++i) {
        QString key;
        QDBusVariant entry;
        argument.beginMapEntry();
        argument >> key >> entry;
        argument.endMapEntry();
        entries.insert(key, entry.variant());
    }
    argument.endMap(); // frees what beginMap has made
    return entries;
}

QString toText(const QVariant &value)
{
    const QVariant inner = unwrapped(value);
    if (inner.typeId() == QMetaType::QString)
        return inner.toString();
    if (inner.metaType() == QMetaType::fromType<QDBusObjectPath>())
        return inner.value<QDBusObjectPath>().path();
    return {};
}

std::optional<double> toNumber(const QVariant &value)
{
    const QVariant inner = unwrapped(value);
    switch (inner.typeId()) {
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::UChar:
    case QMetaType::Double: {
        const double number = inner.toDouble();
        return std::isfinite(number) ? std::optional(number) : std::nullopt;
    }
    default:
        return std::nullopt;
    }
}

} // namespace velmora
