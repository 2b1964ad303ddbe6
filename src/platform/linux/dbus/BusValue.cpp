#include "platform/linux/dbus/BusValue.h"

#include <QDBusArgument>
#include <QDBusObjectPath>
#include <QDBusVariant>

#include <cmath>

namespace velmora
{

namespace
{

constexpr int maximumEntries = 256; // real ones have about twenty
constexpr int maximumObjects = 4096;

/// Only the beginning of a map without measure.
template<typename Read>
auto readMap(const QDBusArgument &argument, int limit, Read read)
{
    QMap<QString, decltype(read(argument))> entries;
    argument.beginMap();
    for (int i = 0; i < limit && !argument.atEnd(); ++i) {
        argument.beginMapEntry();
        const QString key = toText(argument.asVariant());
        entries.insert(key, read(argument));
        argument.endMapEntry();
    }
    argument.endMap(); // frees what beginMap has made
    return entries;
}

/// Some players wrap a value twice.
QVariant unwrapped(QVariant value)
{
    for (int layer = 0; layer < 4 && value.metaType() == QMetaType::fromType<QDBusVariant>();
         ++layer)
        value = value.value<QDBusVariant>().variant();
    return value;
}

QVariantMap readDictionary(const QDBusArgument &argument)
{
    return readMap(argument, maximumEntries,
                   [](const QDBusArgument &value) { return unwrapped(value.asVariant()); });
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
    return readDictionary(argument);
}

QMap<QString, QMap<QString, QVariantMap>> toObjects(const QVariant &value)
{
    if (value.metaType() != QMetaType::fromType<QDBusArgument>())
        return {};
    const auto argument = value.value<QDBusArgument>();
    if (argument.currentSignature() != QLatin1String("a{oa{sa{sv}}}"))
        return {};
    return readMap(argument, maximumObjects, [](const QDBusArgument &object) {
        return readMap(object, maximumEntries, readDictionary);
    });
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
