#pragma once

#include <QMap>
#include <QString>
#include <QVariant>
#include <QVariantMap>

#include <optional>

namespace velmora
{

/// What a message of another program holds, read with its type checked first: QtDBus neither checks
/// nor forgives.

/// The entries of an a{sv}; nothing for any other type. Of a dictionary without measure only the
/// beginning is read.
[[nodiscard]] std::optional<QVariantMap> toDictionary(const QVariant &value);

/// Objects by their paths with their interfaces and properties (a{oa{sa{sv}}}); empty for any other
/// type. Limited as above.
[[nodiscard]] QMap<QString, QMap<QString, QVariantMap>> toObjects(const QVariant &value);

/// A string or an object path; empty for any other type.
[[nodiscard]] QString toText(const QVariant &value);

/// Any finite number; nothing for any other type.
[[nodiscard]] std::optional<double> toNumber(const QVariant &value);

} // namespace velmora
