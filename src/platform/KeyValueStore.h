#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace velmora
{

/// The user's defaults store. Values are remembered at once and written out before the next turn
/// of the main loop; a store that cannot be written keeps them in memory. Reads never fail: a value
/// that is absent or of another type reads as nothing.
class KeyValueStore
{
public:
    KeyValueStore() = default;
    KeyValueStore(const KeyValueStore &) = delete;
    KeyValueStore &operator=(const KeyValueStore &) = delete;
    virtual ~KeyValueStore() = default;

    [[nodiscard]] virtual std::optional<bool> boolean(const QString &key) const = 0;
    /// Finite numbers only.
    [[nodiscard]] virtual std::optional<double> number(const QString &key) const = 0;
    /// 0 where the key is absent or holds no integer.
    [[nodiscard]] virtual qint64 integer(const QString &key) const = 0;
    [[nodiscard]] virtual std::optional<QString> string(const QString &key) const = 0;
    [[nodiscard]] virtual std::optional<QByteArray> data(const QString &key) const = 0;

    virtual void setBoolean(const QString &key, bool value) = 0;
    virtual void setNumber(const QString &key, double value) = 0;
    virtual void setInteger(const QString &key, qint64 value) = 0;
    virtual void setString(const QString &key, const QString &value) = 0;
    virtual void setData(const QString &key, const QByteArray &value) = 0;
};

} // namespace velmora
